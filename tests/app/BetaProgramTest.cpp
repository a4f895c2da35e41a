#include "DesktopSession.h"
#include "ExpectedText.h"

#include <QImage>
#include <QRegularExpression>
#include <QUrl>

#include <csignal>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace tambrel {
namespace {

using testing::clipBytes;
using testing::smfBytes;
using testing::TrackBuilder;

/// The whole program with somebody who uses it, and what there is to see of it from outside.
class BetaProgramTest : public DesktopSessionTest {
protected:
    BetaProgramTest() {
        QFile::remove(session.home().filePath(DesktopSession::defaultsFile));
        session.writeProgram(
            "xdg-email", "printf '%s\\n' \"$@\" >\"$HOME/writing\" && mv \"$HOME/writing\" \"$HOME/mail\"\n");
        for (const char* tool : {"lscpu", "free", "uname", "grep"})
            session.writeProgram(tool, "echo \"${0##*/} $*\"\n");
    }

    /// Ends the test where something does not happen.
    void waitFor(const std::function<bool()>& condition) const {
        if (!QTest::qWaitFor(condition, 30'000))
            throw std::runtime_error("Nothing more happens after\n" + masked());
    }
    void note(const QString& text) { seen += text.toUtf8() + '\n'; }
    void noteLog() {
        const auto log = QByteArray::fromStdString(session.log());
        seen += log.mid(std::exchange(logged, log.size()));
    }
    void noteCommand(const QStringList& words) { note("\n$ tambrel " + words.join(' ')); }

    /// What the user does, what there is to see of it, and what is new in the log.
    void does(const QString& what) {
        note("\n> " + what);
        tell(what);
    }
    void tell(const QString& command) {
        run->write(command.toUtf8() + '\n');
        for (QByteArray line; !line.startsWith("done ");) {
            waitFor([&] { return run->canReadLine(); });
            line = run->readLine();
            seen += line.startsWith("done ") ? "[" + line.mid(5).chopped(1) + "]\n" : line;
        }
        noteLog();
        expectBeginning(masked(), "app/life.txt");
    }
    void starts(const QStringList& words = {}) {
        noteCommand(words);
        const int sessions = session.count("Application Session Started");
        run = session.start(words);
        if (logged > 0) // Else there is a question first.
            waitFor([&] { return session.count("Application Session Started") > sessions; });
    }
    /// Another start, which ends by itself.
    void handsOver(const QStringList& words) {
        noteCommand(words);
        const auto outcome = session.run(words);
        note(QString::fromStdString(outcome.errors) + "status " + QString::number(outcome.status));
        tell("wait");
    }
    void calls(const QString& method, const QStringList& words) {
        note("\n$ gdbus " + method + ' ' + words.join(' '));
        const auto outcome = method.startsWith("org.mpris") ? session.callPlayer(method, words)
                                                            : session.callApplication(method, words);
        note(QString::fromStdString(outcome.output + outcome.errors).trimmed());
        tell("wait");
    }
    void ends(int signal) {
        note(QString("\n(") + strsignal(signal) + ")");
        ::kill(static_cast<pid_t>(run->processId()), signal);
        hasEnded();
    }
    void hasEnded() {
        const int status = DesktopSession::statusOf(*run);
        noteLog();
        note(QString::fromStdString(DesktopSession::errorsOf(*run)) + "status " + QString::number(status));
        noteFiles();
        expectBeginning(masked(), "app/life.txt");
    }
    void noteFiles() {
        const auto settings = QString::fromStdString(session.content(DesktopSession::defaultsFile));
        note("settings: " + settings.split('\n').filter(QRegularExpression("BetaLog|Folder")).join(' '));
        note("files: " +
             QDir(session.home().filePath(DesktopSession::logFolder)).entryList(QDir::Files).join(' '));
    }
    /// With the log in the attached report left out.
    void noteMail() {
        const auto mail = [this] { return QByteArray::fromStdString(session.content("mail")); };
        waitFor([&] { return !mail().isEmpty(); });
        const auto report =
            session.content(mail().split('\n').value(2).mid(session.home().path().size() + 1));
        note("\nmail:\n" + QUrl::fromPercentEncoding(mail()).chopped(1));
        const auto log = report.find("Tambrel betaLOG\n");
        ASSERT_NE(log, std::string::npos) << report;
        EXPECT_TRUE(session.log().starts_with(report.substr(log)));
        note("attached:\n" + QString::fromStdString(report.substr(0, log)) + "(the log)");
    }

    [[nodiscard]] QString address(const char* song) const {
        return "file://" + QString::fromStdString(session.song(song));
    }

    /// With what differs from run to run and from computer to computer left out.
    [[nodiscard]] std::string masked() const {
        auto text = QString::fromUtf8(seen).replace(session.home().path(), "~");
        text.replace(QRegularExpression("[A-Z][a-z]{2} \\d+, \\d{4}, \\d\\d:\\d\\d:\\d\\d"), "(time)");
        text.replace(QRegularExpression("\\d{8}-\\d{6}"), "(time)");
        text.replace(QRegularExpression("^((Version|Build|macOS|Computer Name|Processor Count|Physical "
                                        "Memory):) .*$",
                                        QRegularExpression::MultilineOption),
                     "\\1 (some)");
        return text.toStdString();
    }

    QByteArray seen;
    qsizetype logged = 0;
    DesktopSession::Program run;
};

TEST_F(BetaProgramTest, LivesThroughEverythingAsItDidBefore) {
    const auto write = [this](const char* name, const Bytes& bytes) {
        session.write(QString("songs/") + name,
                      {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())});
    };
    const auto song = [](std::uint32_t ticks) {
        return smfBytes(
            1, 480,
            {TrackBuilder().tempo(0, 500'000).key(0, 2, false).noteOn(0, 9, 36).noteOff(ticks, 9, 36),
             TrackBuilder().program(0, 1, 33).noteOn(0, 1, 40).noteOff(480, 1, 40)});
    };
    write("minute.mid", song(57'600));
    write("second.MID", song(960));
    write("two words.mid", song(57'600));
    write("clip.midi2", clipBytes({0xF0200000, 0, 0, 0, 0x20903C64, 0x0040E100, 0x20803C00}));
    write("cut.clip", clipBytes({0x40}));
    write("broken.mid", {'M', 'T', 'h', 'd'});
    write("format 2.mid", smfBytes(2, 480, {TrackBuilder().endOfTrack()}));
    write("notes.txt", {'?'});

    starts(); // For the first time.
    does("answer");
    ends(SIGTERM); // Before there is an answer.
    starts();
    does("answer Escape");
    ends(SIGHUP);
    starts(); // Without a question.
    does("click Play");
    ends(SIGTERM);
    QFile::remove(session.home().filePath(DesktopSession::defaultsFile));
    starts();
    does("answer Return");

    for (const char* action :
         {"click Play", "click Stop", "click RTZ", "click Loudness", "click Loudness On"})
        does(action);
    does("drop " + address("minute.mid"));
    for (const char* action :
         {"press Space", "click Loudness", "click Pause", "click RTZ", "seek 0.5", "click Loudness",
          "click Resume", "press Ctrl+.", "press Ctrl+R", "click Clear"})
        does(action);
    does("press Ctrl+O");
    does("choose");
    does("press Ctrl+O");
    does("choose " + QString::fromStdString(session.song("notes.txt")));
    session.home().mkpath("more");
    const QString chosen = session.home().filePath("more/second.MID");
    QFile::copy(QString::fromStdString(session.song("second.MID")), chosen);
    does("choose " + chosen);
    does("playout");

    handsOver({});
    handsOver({"--play", "notes.txt", "two words.mid", "minute.mid"});
    handsOver({"--play", "notes.txt"});
    calls("ActivateAction", {"play-pause", "[]", "{}"});
    calls("ActivateAction", {"stop", "[]", "{}"});
    calls("Open", {"['https://a.example/a.mid', '" + address("two%20words.mid") + "']", "{'play': <true>}"});
    calls("org.mpris.MediaPlayer2.Player.Pause", {});
    calls("org.mpris.MediaPlayer2.Player.OpenUri", {"'" + address("clip.midi2") + "'"});
    calls("org.mpris.MediaPlayer2.Player.OpenUri", {"'" + address("notes.txt") + "'"});
    for (const char* failing : {"missing.mid", "broken.mid", "format 2.mid", "cut.clip"})
        handsOver({failing});

    does("press Ctrl+B");
    for (const char* button : {"White Background", "Copy Text"})
        does(QString("click ") + button);
    does("paste");
    does("click Email Window Text");
    does("link");
    does("click Clear Window");
    does("click Email Window Text");
    does("link");
    does("paste");
    does("click Reveal Log");
    does("link");
    ends(SIGKILL);

    starts();
    does("answer");
    ends(SIGINT);
    starts();
    does("answer Email Report");
    noteMail();
    ends(SIGTERM);

    starts({"notes.txt", "minute.mid", "second.MID"});
    does("wait");
    const auto other = session.start({"--new-instance"});
    waitFor([&] { return session.markers().size() == 2; });
    other->kill();
    EXPECT_TRUE(session.callPlayer("org.mpris.MediaPlayer2.Quit").errors.empty());
    note("\n(Another window is killed, and this one closed.)");
    hasEnded();
    starts();
    does("answer Not Now");
    ends(SIGTERM);

    for (const QStringList& how : {QStringList("../still.png"), {"../playing.png", "--playing"}}) {
        noteCommand(QStringList("--screenshot") + how + QStringList("minute.mid"));
        run = session.start(QStringList("--screenshot") + how + QStringList("minute.mid"));
        const int status = DesktopSession::statusOf(*run);
        note(run->readAllStandardError() + "status " + QString::number(status)); // Qt's warnings included.
    }
    const auto inPicture = [&](const QString& name, const QRect& part) {
        return QImage(session.home().filePath(name)).copy(part);
    };
    const QRect title(0, 0, 150, 40), counter(0, 136, 314, 60), play(0, 430, 100, 50),
        activity(310, 0, 170, 44);
    EXPECT_EQ(inPicture("still.png", title), inPicture("playing.png", title));
    for (const QRect& part : {counter, play, activity})
        EXPECT_NE(inPicture("still.png", part), inPicture("playing.png", part));
    session.set("TAMBREL_SOUNDFONT", "/no/such/bank.sf2");
    starts({"minute.mid"});
    does("wait");
    does("press Ctrl+O");
    does("choose");
    ends(SIGTERM);
    EXPECT_TRUE(isExpected(masked(), "app/life.txt"));
}

TEST_F(BetaProgramTest, SaysThatFluidSynthIsMissingAndGoesOn) {
    const std::string sentence = "Could not prepare MIDI playback: "
                                 "The synthesizer library libfluidsynth.so.3 could not be loaded.";
    session.setDefaults("");
    session.writeSong("minute.mid");
    session.write("libfluidsynth.so.3", "");
    session.set("LD_LIBRARY_PATH", session.home().path());
    run = session.start({"--play", "minute.mid"});
    EXPECT_TRUE(session.logs(sentence));
    EXPECT_EQ(session.callApplication("Activate", {"{}"}).errors, "");
    EXPECT_EQ(DesktopSession::end(*run), 0);
    EXPECT_THAT(DesktopSession::errorsOf(*run), ::testing::HasSubstr("tambrel: " + sentence));
}

} // namespace
} // namespace tambrel
