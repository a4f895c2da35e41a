#include "BetaLogTesting.h"
#include "CharacterCount.h"

#include <QDateTime>
#include <QUrlQuery>

#include <system_error>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class BugReportsTest : public BetaLogTest {
protected:
    BugReportsTest() {
        profiler.computer = [] {
            return ComputerFacts{.systemVersion = "☃ 12", .processorCount = 2, .physicalMemory = 1 << 20};
        };
    }

    void writeLog(const std::string& text) const {
        ASSERT_TRUE(QDir().mkpath(folder));
        QFile file(logFile);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.data(), static_cast<qint64>(text.size()));
    }

    /// The draft of a report on the whole log.
    [[nodiscard]] EmailDraft mailed() {
        drafts.clear();
        log.emailCompleteBugReport();
        settle(log); // The texts.
        settle(log); // The attachment.
        return drafts.at(0);
    }

    [[nodiscard]] std::string body(const std::string& report) const {
        return head + "\n\nsystem_profiler unavailable: system_profiler returned no text.\n" + computer +
               "\n\n" + report;
    }

    const std::string head = "TYPE YOUR NOTES HERE:\n\nDo not enter any text below this line!\n\n" +
                             std::string(75, '_') +
                             "\n\nTambrel App Info:\nApp Name: Tambrel\nVersion: Unknown\nBuild: Unknown\n"
                             "Bundle Identifier: Unknown\nDiagnostics Enabled: YES\nCollected: " +
                             stamp + "\n\nMacintosh Info:\nCollected: " + stamp;
    const std::string computer =
        "macOS: ☃ 12\nComputer Name: Unknown\nProcessor Count: 2\nPhysical Memory: 1 MB";
};

TEST_F(BugReportsTest, MailTheWholeLogOrAttachWhatIsTooLongForAnEmail) {
    const auto room = 6000 - characterCount(body(""));
    const struct {
        const char* name;
        const char* character;
        std::int64_t characters;
        bool isAttached;
    } rows[] = {
        {"6000 characters of three bytes", "☃", room, false},
        {"6001 characters of three bytes", "☃", room + 1, true},
        {"an attachment of the same second", "x", room + 1, true},
    };
    const auto attachment = QFileInfo(folder + QDateTime::fromSecsSinceEpoch(time).toString(
                                                   "/'Tambrel-beta-report-'yyyyMMdd-HHmmss'.txt'"));
    allowFile();
    startRun();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        order.clear();
        std::string text;
        for (int i = 0; i < row.characters; ++i)
            text += row.character;
        writeLog(text);
        const auto draft = mailed();
        const auto full = body(text);
        EXPECT_EQ(draft.recipient, "support@kestrune.example");
        EXPECT_EQ(draft.subject, "Tambrel Bug Report!");
        const std::string tail(lastCharacters(text, 3350));
        EXPECT_THAT(draft.body, EndsWith(row.isAttached ? "body delivery.]\n\n" + tail : full));
        EXPECT_EQ(order, row.isAttached ? "clipboard email " : "email ");
        EXPECT_EQ(clipboard, row.isAttached ? full : "");
        EXPECT_EQ(content(attachment.filePath().toStdString()), row.isAttached ? full : "");
        EXPECT_EQ(draft.attachment,
                  row.isAttached ? std::optional(QUrl::fromLocalFile(attachment.filePath())) : std::nullopt);
    }
    EXPECT_THAT(QDir(folder).entryList({"Tambrel-beta-report-*"}), ElementsAre(attachment.fileName()));
    EXPECT_THAT(links, IsEmpty());
}

TEST_F(BugReportsTest, FallBackOnTheTextOfTheOnlyWindowWithoutAReadableLog) {
    startRun();
    log.procedure("A.b", "before");
    log.showDebugWindow();
    log.procedure("A.b", "between");
    log.showDebugWindow();
    const auto opened = line("User Opened Debugging Window | TambrelBetaLog.showDebugWindow");
    const auto shown = "Tambrel Debugging Window opened.\n" + opened + line("between | A.b") + opened;
    writeLog("logged");
    EXPECT_EQ(mailed().body, body(shown)) << "it is not allowed";
    allowFile();
    writeLog("\xff");
    EXPECT_EQ(mailed().body, body(shown)) << "it is no UTF-8";
    ASSERT_TRUE(QFile::remove(logFile) && QDir().mkpath(logFile));
    EXPECT_EQ(mailed().body, body(shown)) << "it is a folder";
}

TEST_F(BugReportsTest, GoWithoutAnAttachmentThatCannotBeWritten) {
    ASSERT_TRUE(QFile(home.filePath("plain")).open(QIODevice::WriteOnly));
    folder = home.filePath("plain") + "/Beta Logs";
    startRun();
    log.showDebugWindow();
    log.procedure("A.b", std::string(7000, 'x'));
    const auto draft = mailed();
    EXPECT_THAT(draft.body, StartsWith("TYPE YOUR NOTES HERE:\n\nThe full Tambrel"));
    EXPECT_EQ(draft.attachment, std::nullopt);
    EXPECT_THAT(clipboard, StartsWith(body("Tambrel Debugging Window opened.\n")));
    EXPECT_THAT(window, EndsWith("| A.b\n" + line("betaLOG email attachment write failed: " +
                                                  std::generic_category().message(ENOTDIR))));
}

TEST_F(BugReportsTest, OpenAMailLinkWhereThereIsNoMailService) {
    hasMailService = false;
    allowFile();
    startRun();
    writeLog("50% & more? \"yes\" 'no' #1 a+b=c ☃\nnext\r\nlast");
    static_cast<void>(mailed());
    EXPECT_EQ(order, "email link ");
    const auto encoded = links.at(0).toEncoded().toStdString();
    EXPECT_THAT(encoded,
                StartsWith("mailto:support@kestrune.example?subject=Tambrel%20Bug%20Report%21&body=TYPE%20"
                           "YOUR%20NOTES%20HERE%3A%0D%0A%0D%0ADo%20not"));
    EXPECT_THAT(encoded,
                EndsWith("50%25%20%26%20more%3F%20%22yes%22%20%27no%27%20%231%20a%2Bb%3Dc%20%E2%98%83"
                         "%0D%0Anext%0D%0Alast"));
}

TEST_F(BugReportsTest, MailTheWindowsTextThroughALinkAndCopyItAlways) {
    const auto compactHead = head + '\n' + computer + "\n\nDebug Console Text:";
    const std::string end =
        "\n[The full Tambrel beta report was copied to the Clipboard before this email opened. If anything "
        "important is missing here, paste the Clipboard contents into this message.]";
    const std::string kept(static_cast<std::size_t>(3500 - characterCount(compactHead + end)), 'x');
    const auto compact =
        compactHead + "[Earlier debug console entries were truncated for reliable email body delivery.]\n\n" +
        kept + end;
    const std::string longText(static_cast<std::size_t>(3501 - characterCount(body(""))), 'x');
    const struct {
        const char* name;
        std::string text;
        std::string report;
        std::string mailed;
    } rows[] = {
        {"blanks", " \t\r\n\u00a0\u2003\u2028", "No debug entries recorded yet.",
         body("No debug entries recorded yet.")},
        {"3500 characters", longText.substr(1), longText.substr(1), body(longText.substr(1))},
        {"3501 characters", longText, longText, compact},
    };
    startRun();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        links.clear();
        order.clear();
        log.emailDebugWindowText(row.text);
        settle(log);
        EXPECT_EQ(order, "clipboard link ");
        EXPECT_EQ(clipboard, body(row.report));
        EXPECT_EQ(
            QUrlQuery(links.at(0)).queryItemValue("body", QUrl::FullyDecoded).remove('\r').toStdString(),
            row.mailed);
    }
    EXPECT_THAT(drafts, IsEmpty());
    EXPECT_FALSE(QFile::exists(folder));
}

TEST_F(BugReportsTest, RevealTheLogFileIfItIsThere) {
    startRun();
    log.revealBetaLogFile();
    settle(log);
    EXPECT_EQ(beeps, 1);
    allowFile();
    log.revealBetaLogFile();
    settle(log);
    EXPECT_THAT(links, ElementsAre(QUrl::fromLocalFile(logFile)));
    EXPECT_THAT(content(logFile.toStdString()),
                EndsWith(line("User Clicked Reveal Beta Log File | TambrelBetaLog.revealBetaLogFile")));
    EXPECT_EQ(beeps, 1);
}

} // namespace
} // namespace tambrel
