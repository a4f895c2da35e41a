#include "BugReportTexts.h"
#include "CharacterCount.h"
#include "TambrelBetaLog.h"
#include "TestFiles.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QUrlQuery>

#include <system_error>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr std::int64_t reportTime = 1'700'000'000;

/// Keeps its text, as the real window does.
class TextWindow : public TambrelDebugWindow {
public:
    TextWindow(int& shown, std::string& text) : shown_(shown), text_(text) {}
    void append(std::string_view text) override { text_ += text; }
    [[nodiscard]] std::string text() const override { return text_; }
    void showInFront() override { ++shown_; }

private:
    int& shown_;
    std::string& text_;
};

/// A log whose reports go to a mail program, a clipboard and a file manager that only take notes.
class BugReportsTest : public ::testing::Test {
protected:
    TambrelBetaLog& start() {
        log.configure(
            {.info = info,
             .settings = settings,
             .ask = {},
             .copyToClipboard =
                 [this](const QString& text) {
                     order += "clipboard ";
                     clipboard = text.toStdString();
                 },
             .composeEmail =
                 [this](const EmailDraft& draft, const std::function<void()>& whenThereIsNone) {
                     order += "email ";
                     drafts.push_back(draft);
                     if (!hasMailService)
                         whenThereIsNone();
                 },
             .openLink =
                 [this](const QUrl& url) {
                     order += "link ";
                     links.push_back(url);
                 },
             .revealFile = [this](const QUrl& url) { links.push_back(url); },
             .beep = [this] { ++beeps; },
             .makeDebugWindow =
                 [this](TambrelBetaLog&) { return std::make_unique<TextWindow>(timesShown, shownText); },
             .profiler = {.tools = {}, .computer = [] { return computer; }},
             .folder = folder,
             .environment = [](const char*) { return std::nullopt; },
             .now = [] { return std::chrono::system_clock::from_time_t(reportTime); }});
        return log;
    }

    void allowFile() { settings.setValue("TambrelBetaLogFileEnabled", true); }

    void writeLog(const std::string& text) const {
        ASSERT_TRUE(QDir().mkpath(folder));
        QFile file(folder + "/Tambrel-beta-log.txt");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.data(), static_cast<qint64>(text.size()));
    }

    /// What a mail program reads from the only link.
    [[nodiscard]] std::string linkedBody() const {
        return links.empty() ? "none"
                             : QUrlQuery(links.back())
                                   .queryItemValue("body", QUrl::FullyDecoded)
                                   .replace("\r\n", "\n")
                                   .toStdString();
    }

    [[nodiscard]] std::string body(const std::string& report) const {
        return "TYPE YOUR NOTES HERE:\n\nDo not enter any text below this line!\n\n" + std::string(75, '_') +
               "\n\n" + appInfo + "\n\nMacintosh Info:\nCollected: " + stamp + "\n\n" +
               "system_profiler unavailable: system_profiler returned no text.\nmacOS: ☃ 12\n"
               "Computer Name: Unknown\nProcessor Count: 2\nPhysical Memory: 1 MB\n\n" +
               report;
    }

    static inline const ComputerFacts computer{
        .systemVersion = "☃ 12", .processorCount = 2, .physicalMemory = 1 << 20};
    int argumentCount = 1;
    char argument[6] = "tests";
    char* arguments[2] = {argument, nullptr};
    QCoreApplication application{argumentCount, arguments};
    QTemporaryDir home;
    QSettings settings{home.filePath("settings.ini"), QSettings::IniFormat};
    QString folder = home.filePath("data/Beta Logs");
    ApplicationInfo info{.diagnosticsSwitch = true};
    bool hasMailService = true;

    std::string order; // Of what left the program.
    std::string clipboard = "untouched";
    std::vector<EmailDraft> drafts;
    std::vector<QUrl> links;
    int beeps = 0;
    int timesShown = 0;
    std::string shownText; // The debugging window's.

    const std::string stamp =
        makeMediumDateTimeFormatter("C")(std::chrono::system_clock::from_time_t(reportTime));
    const std::string appInfo = "Tambrel App Info:\nApp Name: Tambrel\nVersion: Unknown\nBuild: Unknown\n"
                                "Bundle Identifier: Unknown\nDiagnostics Enabled: YES\nCollected: " +
                                stamp;
    const QString attachment = folder + "/Tambrel-beta-report-" +
                               QDateTime::fromSecsSinceEpoch(reportTime).toString("yyyyMMdd-HHmmss") + ".txt";
    TambrelBetaLog log; // Last, so that it ends first.
};

TEST_F(BugReportsTest, MailTheWholeLogOrAttachWhatIsTooLongForAnEmail) {
    const auto room = 6000 - static_cast<int>(characterCount(body("")));
    const struct {
        const char* name;
        const char* character;
        int characters;
        bool isAttached;
    } rows[] = {
        {"6000 characters", "x", room, false},
        {"6001 characters", "x", room + 1, true},
        {"6000 characters of three bytes", "☃", room, false},
        {"6001 characters of three bytes", "☃", room + 1, true},
        {"empty log", "x", 0, false},
    };
    allowFile();
    start();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        drafts.clear();
        order.clear();
        clipboard = "untouched";
        QFile::remove(attachment);
        std::string text;
        for (int i = 0; i < row.characters; ++i)
            text += row.character;
        writeLog(text);
        log.emailCompleteBugReport();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !drafts.empty(); }, 30'000));
        const auto full = body(text);
        EXPECT_EQ(drafts[0].recipient, TambrelBetaLog::emailAddress);
        EXPECT_EQ(drafts[0].subject, "Tambrel Bug Report!");
        EXPECT_EQ(drafts[0].body,
                  row.isAttached ? tailEmailBodyForOversizedReport(full, "Tambrel", 3500) : full);
        EXPECT_EQ(drafts[0].attachment.has_value(), row.isAttached);
        EXPECT_EQ(order, row.isAttached ? "clipboard email " : "email ");
        EXPECT_EQ(clipboard, row.isAttached ? full : "untouched");
        EXPECT_EQ(content(attachment.toStdString()), row.isAttached ? full : "");
        if (row.isAttached) {
            EXPECT_EQ(drafts[0].attachment, QUrl::fromLocalFile(attachment));
        }
    }
    EXPECT_THAT(links, IsEmpty());
}

TEST_F(BugReportsTest, FallBackOnTheWindowsTextWithoutAReadableLog) {
    start().showDebugWindow();
    const auto windowText = "Tambrel Debugging Window opened.\n[" + stamp +
                            "] User Opened Debugging Window | TambrelBetaLog.showDebugWindow\n";
    const struct {
        const char* name;
        bool isAllowed;
        std::string logText; // Empty: a folder is in its place.
        std::string report;
    } rows[] = {
        {"readable", true, "logged", "logged"},
        {"file logging off", false, "logged", windowText},
        {"not UTF-8", true, "\xff", windowText},
        {"not a file", true, "", windowText},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        drafts.clear();
        settings.setValue("TambrelBetaLogFileEnabled", row.isAllowed);
        writeLog(row.logText);
        if (row.logText.empty()) {
            QFile::remove(folder + "/Tambrel-beta-log.txt");
            ASSERT_TRUE(QDir().mkpath(folder + "/Tambrel-beta-log.txt"));
        }
        log.emailCompleteBugReport();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !drafts.empty(); }, 30'000));
        EXPECT_EQ(drafts[0].body, body(row.report));
    }
}

TEST_F(BugReportsTest, GoWithoutAnAttachmentThatCannotBeWritten) {
    ASSERT_TRUE(QFile(home.filePath("plain")).open(QIODevice::WriteOnly));
    folder = home.filePath("plain") + "/Beta Logs";
    start().showDebugWindow();
    for (int i = 0; i < 100; ++i)
        log.procedure("A.b", std::string(70, 'x'));
    log.emailCompleteBugReport();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !drafts.empty(); }, 30'000));
    EXPECT_THAT(drafts[0].body, StartsWith("TYPE YOUR NOTES HERE:\n\nThe full Tambrel"));
    EXPECT_EQ(drafts[0].attachment, std::nullopt);
    EXPECT_THAT(clipboard, StartsWith(body("Tambrel Debugging Window opened.\n")));
    EXPECT_THAT(shownText, EndsWith("| A.b\n[" + stamp + "] betaLOG email attachment write failed: " +
                                    std::generic_category().message(ENOTDIR) + '\n'));
}

TEST_F(BugReportsTest, ReplaceAnAttachmentOfTheSameSecond) {
    allowFile();
    start();
    for (const std::string character : {"a", "b"}) {
        drafts.clear();
        std::string text;
        for (int i = 0; i < 7000; ++i)
            text += character;
        writeLog(text);
        log.emailCompleteBugReport();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !drafts.empty(); }, 30'000));
        EXPECT_EQ(content(attachment.toStdString()), body(text));
    }
    EXPECT_THAT(QDir(folder).entryList({"Tambrel-beta-report-*"}),
                ElementsAre(QFileInfo(attachment).fileName()));
}

TEST_F(BugReportsTest, OpenAMailLinkWhereThereIsNoMailService) {
    hasMailService = false;
    allowFile();
    start();
    const std::string text = "50% & more? \"yes\" 'no' #1 a+b=c ☃\nnext\r\nlast";
    writeLog(text);
    log.emailCompleteBugReport();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !links.empty(); }, 30'000));
    EXPECT_EQ(order, "email link ");
    EXPECT_EQ(linkedBody(), body("50% & more? \"yes\" 'no' #1 a+b=c ☃\nnext\nlast"));
    const auto encoded = links[0].toEncoded().toStdString();
    EXPECT_THAT(encoded,
                StartsWith("mailto:support@kestrune.example?subject=Tambrel%20Bug%20Report%21&body=TYPE%20"
                           "YOUR%20NOTES%20HERE%3A%0D%0A%0D%0ADo%20not"));
    EXPECT_THAT(encoded,
                EndsWith("50%25%20%26%20more%3F%20%22yes%22%20%27no%27%20%231%20a%2Bb%3Dc%20%E2%98%83"
                         "%0D%0Anext%0D%0Alast"));
}

TEST_F(BugReportsTest, MailTheWindowsTextThroughALinkAndCopyItAlways) {
    const auto compact = compactMacintoshInfoReport(computer, stamp);
    const auto room = 3500 - static_cast<int>(characterCount(body("")));
    const std::string longText(static_cast<std::size_t>(room) + 1, 'x');
    const struct {
        const char* name;
        std::string text;
        std::string report;
        std::string mailed;
    } rows[] = {
        {"short", "one\ntwo ☃\n", "one\ntwo ☃\n", body("one\ntwo ☃\n")},
        {"empty", "", "No debug entries recorded yet.", body("No debug entries recorded yet.")},
        {"blanks", " \n\n", "No debug entries recorded yet.", body("No debug entries recorded yet.")},
        {"3500 characters", longText.substr(1), longText.substr(1), body(longText.substr(1))},
        {"3501 characters", longText, longText, debugWindowEmailBody(longText, appInfo, compact, 3500)},
    };
    start();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        links.clear();
        order.clear();
        log.emailDebugWindowText(row.text);
        ASSERT_TRUE(QTest::qWaitFor([&] { return !links.empty(); }, 30'000));
        EXPECT_EQ(order, "clipboard link ");
        EXPECT_EQ(clipboard, body(row.report));
        EXPECT_EQ(linkedBody(), row.mailed);
    }
    EXPECT_THAT(drafts, IsEmpty());
    EXPECT_FALSE(QFile::exists(folder));
}

TEST_F(BugReportsTest, RevealTheLogFileIfItIsThere) {
    start().revealBetaLogFile();
    ASSERT_TRUE(QTest::qWaitFor([&] { return beeps == 1; }, 30'000));
    allowFile();
    log.revealBetaLogFile();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !links.empty(); }, 30'000));
    EXPECT_THAT(links, ElementsAre(QUrl::fromLocalFile(folder + "/Tambrel-beta-log.txt")));
    EXPECT_THAT(content(links[0].toLocalFile().toStdString()),
                EndsWith("] User Clicked Reveal Beta Log File | TambrelBetaLog.revealBetaLogFile\n"));
    EXPECT_EQ(beeps, 1);
}

TEST_F(BugReportsTest, KeepOneWindowWithEverythingSinceItWasFirstShown) {
    allowFile();
    start().procedure("A.b", "before");
    log.showDebugWindow();
    log.procedure("A.b", "between");
    log.showDebugWindow();
    EXPECT_EQ(timesShown, 2);
    bool areEntriesWritten = false;
    log.inStore([](const auto&) { return 0; }, [&](int) { areEntriesWritten = true; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return areEntriesWritten; }, 30'000));
    writeLog(std::string(1, '\xff')); // So that the report takes the window's text.
    log.emailCompleteBugReport();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !drafts.empty(); }, 30'000));
    const auto opened = '[' + stamp + "] User Opened Debugging Window | TambrelBetaLog.showDebugWindow\n";
    EXPECT_THAT(drafts[0].body, EndsWith("\n\nTambrel Debugging Window opened.\n" + opened + '[' + stamp +
                                         "] between | A.b\n" + opened));
}

} // namespace
} // namespace tambrel
