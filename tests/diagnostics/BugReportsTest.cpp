#include "BetaLogTesting.h"
#include "CharacterCount.h"
#include "ExpectedText.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QUrlQuery>

namespace tambrel {
namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

class BugReportsTest : public BetaLogTest {
protected:
    BugReportsTest() {
        profiler.computer = [] {
            return ComputerFacts{.systemVersion = "☃ 12", .processorCount = 2, .physicalMemory = 1 << 20};
        };
        allowFile();
        startRun();
    }

    void writeLog(const std::string& text) const {
        ASSERT_TRUE(QDir().mkpath(folder));
        QFile file(logFile);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.data(), static_cast<qint64>(text.size()));
    }
    static std::string repeated(const std::string& text, std::int64_t times) {
        std::string all;
        while (times-- > 0)
            all += text;
        return all;
    }

    /// Reports the whole log, or this text of the window, and records all that leaves the program.
    void report(const std::string& what, const std::optional<std::string>& windowText = {}) {
        drafts.clear();
        links.clear();
        order.clear();
        clipboard.clear();
        window.clear();
        if (windowText)
            log.emailDebugWindowText(*windowText);
        else
            log.emailCompleteBugReport();
        settle(log); // The texts.
        settle(log); // The attachment.
        seen += "\n== " + what + "\nThere left: " + order + '\n';
        for (const auto& draft : drafts) {
            seen += "To: " + draft.recipient + "\nSubject: " + draft.subject + '\n' + draft.body + "\n--\n";
            if (draft.attachment)
                seen += "Attached: " + draft.attachment->toLocalFile().toStdString() + '\n' +
                        content(draft.attachment->toLocalFile().toStdString()) + "\n--\n";
        }
        for (const QUrl& link : links)
            seen += "Link: " + link.toEncoded().toStdString() + '\n';
        if (!clipboard.empty())
            seen +=
                clipboard == lastAttached() ? "Clipboard: the same\n" : "Clipboard: " + clipboard + "\n--\n";
        seen += window;
    }
    [[nodiscard]] std::string lastAttached() const {
        return drafts.empty() || !drafts.back().attachment
                   ? ""
                   : content(drafts.back().attachment->toLocalFile().toStdString());
    }

    /// Without the private folder, and with repeated letters counted.
    [[nodiscard]] std::string readable() const {
        auto text = QString::fromStdString(seen).replace(home.path(), "~");
        const auto moment = QString::fromStdString(stamp);
        text.replace(moment, "(time)").replace(QString(QUrl::toPercentEncoding(moment)), "(time)");
        text.replace(QRegularExpression("\\d{8}-\\d{6}"), "(time)");
        const QRegularExpression sameLetters("(☃|x|%E2%98%83)\\1{20,}");
        for (auto found = sameLetters.match(text); found.hasMatch(); found = sameLetters.match(text))
            text.replace(found.capturedStart(), found.capturedLength(),
                         QString("(%1 times %2)")
                             .arg(found.capturedLength() / found.capturedLength(1))
                             .arg(found.captured(1)));
        return text.toStdString();
    }

    std::string seen;
};

TEST_F(BugReportsTest, LeaveTheProgramAsTheyDidBefore) {
    writeLog("");
    log.emailCompleteBugReport();
    settle(log);
    const auto room = 6000 - characterCount(drafts.at(0).body);
    writeLog(repeated("☃", room));
    report("6000 characters of three bytes");
    writeLog(repeated("☃", room + 1));
    report("6001 characters of three bytes");
    writeLog(repeated("x", room + 1));
    report("An attachment of the same second");

    log.showDebugWindow();
    writeLog("\xff");
    report("A log that is no UTF-8");
    ASSERT_TRUE(QFile::remove(logFile) && QDir().mkpath(logFile));
    report("A log that is a folder");
    allowFile(false);
    report("A log that is not allowed");
    report("A window of blanks", " \t\r\n\u00a0\u2003\u2028");
    const auto windowRoom =
        3500 + characterCount("No debug entries recorded yet.") - characterCount(clipboard);
    report("A window of 3500 characters", repeated("x", windowRoom));
    report("A window of 3501 characters", repeated("x", windowRoom + 1));

    hasMailService = false;
    report("No mail service");
    report("No mail service, a window", "50% & more? \"yes\" 'no' #1 a+b=c ☃\nnext\r\nlast");
    EXPECT_TRUE(isExpected(readable(), "diagnostics/reports.txt"));
}

// Linux hands a program 128 KiB in one argument at most.
TEST_F(BugReportsTest, StayShortEnoughForALinkWhateverTheirLetters) {
    const std::string letter = "a" + repeated("\u0301", 40);
    const auto text = repeated(letter, 1000);
    const auto bodyOfLink = [&](const QUrl& link) {
        EXPECT_LT(link.toEncoded().size(), 128 * 1024 - 1);
        return QUrlQuery(link).queryItemValue("body", QUrl::FullyDecoded).remove('\r').toStdString();
    };
    hasMailService = false;
    writeLog(text);
    report("A log");
    EXPECT_EQ(order, "clipboard email link ");
    EXPECT_THAT(clipboard, EndsWith("\n\n" + text));
    EXPECT_EQ(lastAttached(), clipboard);
    const auto seconds = QDateTime::fromSecsSinceEpoch(time).toString("yyyyMMdd-HHmmss");
    EXPECT_EQ(drafts.at(0).attachment->fileName(), "Tambrel-beta-report-" + seconds + ".txt");
    EXPECT_EQ(drafts.at(0).body, bodyOfLink(links.at(0)));
    log.emailDebugWindowText(text);
    settle(log);
    EXPECT_THAT(clipboard, EndsWith("\n\n" + text));
    const std::string notice =
        "[Earlier report entries were truncated for reliable email body delivery.]\n\n";
    for (const QUrl& link : links) {
        EXPECT_THAT(bodyOfLink(link), StartsWith(notice + letter));
        EXPECT_THAT(bodyOfLink(link), EndsWith(letter));
    }
}

TEST_F(BugReportsTest, RevealTheLogFileIfItIsThere) {
    allowFile(false);
    log.revealBetaLogFile();
    settle(log);
    EXPECT_EQ(beeps, 1);
    allowFile();
    log.revealBetaLogFile();
    settle(log);
    EXPECT_EQ(links, std::vector{QUrl::fromLocalFile(logFile)});
    EXPECT_EQ(beeps, 1);
}

} // namespace
} // namespace tambrel
