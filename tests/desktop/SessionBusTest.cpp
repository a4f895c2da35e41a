#include "DesktopSession.h"
#include "ExpectedText.h"
#include "StandInPortal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QRegularExpression>

#include <csignal>

namespace tambrel {
namespace {

using ::testing::HasSubstr;

constexpr const char* launched = "Application launch procedure started";
constexpr const char* begun = "Application Session Started";
constexpr const char* plays = "Playback state changed to playing";

class SessionBusTest : public DesktopSessionTest {
protected:
    [[nodiscard]] QString address(const char* song) const {
        return "file://" + QString::fromStdString(session.song(song));
    }
    void expectNormalEnd(QProcess& tambrel) const {
        EXPECT_EQ(DesktopSession::end(tambrel), 0);
        EXPECT_EQ(DesktopSession::errorsOf(tambrel), "");
        EXPECT_EQ(session.markers(), QStringList());
        EXPECT_EQ(session.count("Possible previous crash"), 0);
    }
};

/// The signals that the program sends on D-Bus, as `gdbus monitor` prints them.
class BusMonitor {
public:
    BusMonitor(const DesktopSession& session, const QString& name)
        : monitor_(session.start({"monitor", "--session", "--dest", name}, "gdbus")) {
        static_cast<void>(until("is owned by"));
    }
    ~BusMonitor() {
        monitor_->kill();
        monitor_->waitForFinished();
    }
    BusMonitor(const BusMonitor&) = delete;
    BusMonitor& operator=(const BusMonitor&) = delete;

    /// The lines up to the first one with this text, that one included.
    [[nodiscard]] QString until(const QString& text) {
        QString lines;
        while (QTest::qWaitFor([&] { return monitor_->canReadLine(); }, 10'000)) {
            const auto line = QString::fromUtf8(monitor_->readLine());
            lines += line;
            if (line.contains(text))
                return lines;
        }
        ADD_FAILURE() << text.toStdString() << " has not been said, but:\n" << lines.toStdString();
        return lines;
    }

private:
    DesktopSession::Program monitor_;
};

/// A list in which a song is already.
QByteArray recentFilesOfOthers(const QString& song) {
    return QByteArray(R"(<?xml version="1.0"?>
<!DOCTYPE xbel>
<xbel version="1.0" xmlns:bookmark="http://www.freedesktop.org/standards/desktop-bookmarks"
 xmlns:mime="http://www.freedesktop.org/standards/shared-mime-info"><!-- Ours & theirs -->
  <bookmark href="file:///a&amp;b.txt" added="2020-01-01T00:00:00Z" modified="2020-01-01T00:00:00Z">
    <title>A &lt; B</title>
    <info><metadata owner="http://freedesktop.org"><mime:mime-type type="text/plain"/><bookmark:applications>
      <bookmark:application name="Tambrel" exec="&apos;tambrel %u&apos;" count="1"/></bookmark:applications></metadata></info>
  </bookmark>
  <bookmark href=")") +
           song.toUtf8() + R"(" added="2020-01-01T00:00:00Z" visited="2020-01-01T00:00:00Z">
    <info><metadata owner="http://freedesktop.org"><mime:mime-type type="audio/midi"/><bookmark:applications>
      <bookmark:application name="Tambrel" exec="&apos;tambrel %u&apos;" count="4"/>
      <bookmark:application name="Files" exec="&apos;files %u&apos;" count="3"/></bookmark:applications></metadata></info>
  </bookmark>
</xbel>
)";
}

TEST_F(SessionBusTest, AnswersAndTellsWhatItDidBefore) {
    session.writeSong("minute \xC3\xA9.mid");
    session.writeSong("second.mid", 1);
    session.write("songs/broken.mid", "MThd");
    const QString recentFiles = ".local/share/recently-used.xbel";
    session.home().mkpath(".local/share");
    session.write(recentFiles, recentFilesOfOthers(address("second.mid")));
    StandInPortal portal(QDBusConnection::connectToBus(session.busAddress(), "portal"));
    const auto tambrel = session.start({});
    BusMonitor monitor(session, "org.mpris.MediaPlayer2.tambrel");

    const QString minute = address("minute%20%C3%A9.mid");
    const QString thisSong = "/software/kestrune/tambrel/song/1";
    const QString playing = "'Playing'";
    const QString paused = "'Paused'";
    const QString stopped = "'Stopped'";
    const QString aboutPlayer = "org.mpris.MediaPlayer2.Player";
    const struct {
        const char* method;
        QStringList words = {};
        QString told = {};       ///< To be waited for, if anything is.
        const char* portal = ""; ///< The same, of what the portal is asked.
    } rows[] = {
        {"Properties.GetAll", {"org.mpris.MediaPlayer2"}},
        {"Properties.GetAll", {aboutPlayer}},
        {"Player.PlayPause"},
        {"Player.Play"},
        {"Player.Seek", {"int64 1"}},
        {"Player.OpenUri", {"file:///a.txt"}},
        {"Player.OpenUri", {"file://elsewhere/a.mid"}},
        {"Player.OpenUri", {"https://a.example/a.mid"}},
        {"Player.OpenUri", {minute}, playing, "Inhibit"},
        {"Player.Play"},
        {"Properties.Get", {aboutPlayer, "PlaybackStatus"}},
        {"Player.Pause", {}, paused, "Close"},
        {"Player.Pause"},
        {"Properties.Set", {aboutPlayer, "Volume", "<0.25>"}, "'Volume'"},
        {"Properties.Set", {aboutPlayer, "Volume", "<7.5>"}, "'Volume'"},
        {"Properties.Set", {aboutPlayer, "Volume", "<-1.0>"}, "'Volume'"},
        {"Player.SetPosition", {thisSong, "int64 30000000"}, "Seeked"},
        {"Properties.GetAll", {aboutPlayer}},
        {"Properties.Set", {aboutPlayer, "LoopStatus", "<'Playlist'>"}, "'LoopStatus'"},
        {"Properties.Set", {aboutPlayer, "LoopStatus", "<'Dance'>"}},
        {"Properties.Set", {aboutPlayer, "LoopStatus", "<'Track'>"}},
        {"Player.SetPosition", {thisSong, "int64 59900000"}, "Seeked"},
        {"Player.Play", {}, "Seeked", "Inhibit"}, // From the beginning again.
        {"Properties.Set", {aboutPlayer, "LoopStatus", "<'None'>"}, "'LoopStatus'"},
        {"Player.Pause", {}, paused, "Close"},
        {"Player.SetPosition", {thisSong, "int64 60000000"}, "Seeked"},
        {"Player.Seek", {"int64 -2500000"}, "Seeked"},
        {"Player.Seek", {"int64 2500000"}, "Seeked"},
        {"Player.Seek", {"int64 1"}},
        {"Player.Seek", {"int64 9223372036854775807"}},
        {"Player.SetPosition", {thisSong, "int64 60000001"}},
        {"Player.SetPosition", {thisSong, "int64 -1"}},
        {"Player.SetPosition", {thisSong + "0", "int64 1"}},
        {"Player.Seek", {"int64 -9223372036854775808"}, "Seeked"},
        {"Player.Next"},
        {"Player.Previous"},
        {"Player.Stop", {}, stopped},
        {"Player.SetPosition", {thisSong, "int64 5000000"}, "Seeked"},
        {"Player.PlayPause", {}, "Seeked", "Inhibit"},
        {"Player.Stop", {}, "Seeked", "Close"},
        {"Application.ActivateAction", {"play-pause", "[]", "{}"}, playing, "Inhibit"},
        {"Application.ActivateAction", {"dance", "[]", "{}"}},
        {"Application.Activate", {"{'desktop-startup-id': <'one_TIME2'>}"}},
        {"Application.Open", {"['https://a.example/x.mid']", "{}"}},
        {"Application.Open", {"['" + address("second.mid") + "', '" + minute + "']", "{}"}, stopped, "Close"},
        {"Application.ActivateAction", {"play-pause", "[]", "{}"}, "Seeked", "Inhibit"}, // To its end.
        {"Application.ActivateAction", {"stop", "[]", "{}"}},
        {"Application.Open",
         {"['" + minute + "']", "{'play': <true>, 'activation-token': <'none'>}"},
         playing},
        {"Player.OpenUri", {address("broken.mid")}, stopped},
        {"Raise"},
        {"Quit"},
    };
    QString seen;
    const std::string expected = "desktop/session-bus.txt";
    const auto masked = [&] {
        auto text = QString(seen).replace(session.home().path(), "~");
        return text
            .replace(QRegularExpression("int64 5\\d{6},"), "int64 (5 seconds and what has been played),")
            .replace(QRegularExpression("int64 [1-9]\\d{1,6},"), "int64 (what has been played),")
            .toStdString();
    };
    for (const auto& row : rows) {
        const QString method = row.method;
        seen += "\n> " + method + ' ' + row.words.join(' ') + '\n';
        const auto [status, answer, errors] =
            method.startsWith("Application.") ? session.callApplication(method.section('.', 1), row.words)
            : method.startsWith("Properties.")
                ? session.callPlayer("org.freedesktop.DBus." + method, row.words)
                : session.callPlayer("org.mpris.MediaPlayer2." + method, row.words);
        seen += QString::fromStdString(answer + errors);
        expectBeginning(masked(), expected);
        if (!row.told.isEmpty())
            seen += monitor.until(row.told);
        if (*row.portal == 'I')
            portal.answer();
        EXPECT_TRUE(QTest::qWaitFor([&] { return portal.last().starts_with(row.portal); }, 30'000))
            << seen.toStdString();
        if (*row.portal != '\0')
            seen += "portal: " + QString::fromStdString(portal.last()) + '\n';
    }
    seen += QString("status %1\n").arg(DesktopSession::statusOf(*tambrel)) +
            QString::fromStdString(DesktopSession::errorsOf(*tambrel)) +
            QString::fromStdString(session.content(recentFiles))
                .replace(QRegularExpression("\"20(?!20)[^\"]*Z\""), "\"(now)\"");
    EXPECT_TRUE(isExpected(masked(), expected));
    QDBusConnection::disconnectFromBus("portal");
}

TEST_F(SessionBusTest, OpensFilesOfEveryNameInTheWindowThatIsThere) {
    session.writeSong("song.mid");
    const auto first = session.start({"song.mid"});
    ASSERT_TRUE(session.logs("Loaded song.mid; "));
    const struct {
        std::string file;
        const char* shown;
        std::string argument;
    } rows[] = {
        {"Grüße 50%41#b?c&d.MID", "Grüße 50%41#b?c&d.MID", "Grüße 50%41#b?c&d.MID"},
        {"\xFF\xFE.mid", "\uFFFD\uFFFD.mid", "\xFF\xFE.mid"},
        {"one\ntwo.mid", "one", "one\ntwo.mid"},
        {"-x.mid", "-x.mid", "../songs/-x.mid"},
        {"whole.mid", "whole.mid", session.song("whole.mid")},
        {"\xE9 %.mid", "\uFFFD %.mid", "file://" + session.song("%e9%20%25.mid").string()},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.argument);
        session.writeSong(row.file);
        // A shell passes on what no QString can hold.
        QStringList octal;
        for (const char c : row.argument)
            octal << QString("\\%1").arg(static_cast<unsigned char>(c), 3, 8, QChar('0'));
        const auto second = session.run(
            {"-c", "exec \"$0\" \"$(printf '" + octal.join("") + "')\"", TAMBREL_PROGRAM}, "/bin/sh");
        EXPECT_EQ(second.status, 0);
        EXPECT_EQ(second.errors, "");
        EXPECT_TRUE(session.logs(std::string("Loaded ") + row.shown));
    }
    EXPECT_EQ(session.count(launched), 1);
    expectNormalEnd(*first);
    EXPECT_EQ(QFile::permissions(session.home().filePath(".local/share/recently-used.xbel")),
              QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
}

TEST_F(SessionBusTest, PlaysWithoutTheBusThatWasThere) {
    session.writeSong("song.mid");
    const auto first = session.start({"--play", "song.mid"});
    ASSERT_TRUE(session.logs(plays));
    session.endBus();
    const auto second = session.start({"--play", "song.mid"});
    EXPECT_TRUE(session.logs(plays, 2)) << "and without one, everybody has a window";
    EXPECT_EQ(session.markers().size(), 2);
    EXPECT_EQ(DesktopSession::end(*second), 0);
    EXPECT_EQ(first->state(), QProcess::Running);
    expectNormalEnd(*first);
}

TEST_F(SessionBusTest, NeedsADisplayForAWindowOnly) {
    session.writeSong("song.mid");
    const auto first = session.start({});
    ASSERT_TRUE(session.logs(begun));
    session.set("QT_QPA_PLATFORM", "");
    const struct {
        const char* name;
        QStringList arguments;
        int status;
        const char* errors;
    } rows[] = {
        {"a window of its own", {"--new-instance", "song.mid"}, 1, "tambrel: There is no display.\n"},
        {"a window that is there", {"song.mid"}, 0, ""},
        {"a file that is not", {"none.mid"}, 1, "tambrel: none.mid: No such file or directory\n"},
        {"one of two", {"none.mid", "song.mid"}, 1, "tambrel: none.mid: No such file or directory\n"},
        {"a picture", {"--screenshot", "a.png", "song.mid"}, 0, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto outcome = session.run(row.arguments);
        EXPECT_EQ(outcome.status, row.status);
        EXPECT_EQ(outcome.errors, row.errors);
    }
    EXPECT_TRUE(std::filesystem::exists(session.song("a.png")));
    const auto needsNone = session.start({"--new-instance", "-platform", "offscreen"});
    EXPECT_TRUE(session.logs(begun, 2));
    const auto own = QString("org.mpris.MediaPlayer2.tambrel.instance%1").arg(needsNone->processId());
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            return session.call(own, "/org/mpris/MediaPlayer2", "org.mpris.MediaPlayer2.Raise").status == 0;
        },
        60'000));
    EXPECT_EQ(DesktopSession::end(*needsNone), 0);
    EXPECT_EQ(session.run({"song.mid"}).status, 0) << "the first window still has the name";
    expectNormalEnd(*first);
}

TEST_F(SessionBusTest, LosesNothingThatTheBusBringsAtItsStart) {
    session.makeActivatable();
    session.writeSong("a.mid");
    auto bus = QDBusConnection::connectToBus(session.busAddress(), "asking");
    const auto ask = [&bus](const char* method, const QVariantList& words) {
        auto call = QDBusMessage::createMethodCall(DesktopSession::identifier, DesktopSession::objectPath,
                                                   "org.freedesktop.Application", method);
        call.setArguments(words);
        bus.send(call);
    };
    ask("Open", {QStringList(address("a.mid")), QVariantMap()});
    ask("ActivateAction", {"play-pause", QVariantList(), QVariantMap()});
    EXPECT_TRUE(session.logs("Loaded a.mid; "));
    EXPECT_TRUE(session.logs(plays)) << "when it is there";
    EXPECT_EQ(session.count("User Action: Clicked"), 0);
    EXPECT_EQ(session.callPlayer("org.mpris.MediaPlayer2.Quit").status, 0);
    EXPECT_TRUE(session.logs("Application Session Ended Normally"));
    QDBusConnection::disconnectFromBus("asking");
}

TEST_F(SessionBusTest, LosesNothingThatComesWhenTheWindowHasBeenClosed) {
    session.writeSong("a.mid");
    const auto closed = session.start({"--play", "a.mid"});
    ASSERT_TRUE(session.logs(plays));
    auto bus = QDBusConnection::connectToBus(session.busAddress(), "asking");
    bus.send(QDBusMessage::createMethodCall("org.mpris.MediaPlayer2.tambrel", "/org/mpris/MediaPlayer2",
                                            "org.mpris.MediaPlayer2", "Quit"));
    auto open = QDBusMessage::createMethodCall(DesktopSession::identifier, DesktopSession::objectPath,
                                               "org.freedesktop.Application", "Open");
    open << QStringList(address("a.mid")) << QVariantMap();
    EXPECT_EQ(bus.call(open, QDBus::Block, 30'000).type(), QDBusMessage::ErrorMessage);
    const auto second = session.start({"a.mid"});
    EXPECT_TRUE(session.logs("Loaded a.mid; ", 2));
    EXPECT_EQ(session.count(launched), 2);
    EXPECT_EQ(DesktopSession::statusOf(*closed), 0);
    EXPECT_THAT(session.log(), HasSubstr("] Stopping playback and returning to zero"));
    expectNormalEnd(*second);
    QDBusConnection::disconnectFromBus("asking");
}

TEST_F(SessionBusTest, HasAWindowOfItsOwnWhereTheFirstIsStuckWhichIsAskedOnce) {
    const std::string opened = "User Action: Opened Tambrel from Finder with 1 URL(s)";
    session.writeSong("a.mid");
    const auto first = session.start({});
    ASSERT_TRUE(session.logs(begun));
    kill(static_cast<pid_t>(first->processId()), SIGSTOP);
    const auto second = session.start({"a.mid"});
    EXPECT_TRUE(session.logs("Loaded a.mid; "));
    EXPECT_EQ(DesktopSession::end(*second), 0);
    EXPECT_EQ(DesktopSession::errorsOf(*second),
              "tambrel: The window that is open does not answer; this is another one.\n");
    kill(static_cast<pid_t>(first->processId()), SIGCONT);
    EXPECT_TRUE(session.logs(opened));
    EXPECT_EQ(session.run({"a.mid"}).status, 0);
    EXPECT_TRUE(session.logs(opened, 2));
    EXPECT_EQ(session.count(opened), 2);
    expectNormalEnd(*first);
}

TEST_F(SessionBusTest, ReopensWhereItWas) {
    session.write("two.json", R"({"screens": [
        {"name": "left", "x": 0, "y": 0, "width": 1000, "height": 800, "logicalDpi": 96, "dpr": 1},
        {"name": "right", "x": 1000, "y": 0, "width": 900, "height": 700, "logicalDpi": 96, "dpr": 1}]})");
    const QString two = "offscreen:configfile=" + session.home().filePath("two.json");
    const QString one = "offscreen"; // 800 by 800.
    const struct {
        const char* name;
        const char* saved;
        QString platform;
        int left, right, top, bottom; // Where the content's top left may be.
    } rows[] = {
        {"never opened", "", two, 255, 265, 120, 165},
        {"on the first screen", "{{300, 200}, {480, 500}}", two, 300, 300, 200, 200},
        {"on the second screen", "{{1300, 100}, {480, 500}}", two, 1300, 1300, 100, 100},
        {"over its edge", "{{1600, 100}, {480, 500}}", two, 1420, 1420, 100, 100},
        {"the second screen is gone", "{{1300, 100}, {480, 500}}", one, 155, 165, 120, 165},
        {"garbage", "over there", one, 155, 165, 120, 165},
        {"garbage numbers", "{{nan, inf}, {-1, 0}}", one, 155, 165, 120, 165},
    };
    int times = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        session.setDefaults(QByteArray("TambrelMainWindowFrame=\"") + row.saved + "\"\n");
        QString firstTime;
        for (const char* time : {"once", "again"}) {
            SCOPED_TRACE(time);
            auto program = session.start({"-platform", row.platform});
            EXPECT_TRUE(session.logs(begun, ++times));
            EXPECT_EQ(DesktopSession::end(*program), 0);
            const auto text = QString::fromStdString(session.content(DesktopSession::defaultsFile));
            const auto place = QRegularExpression("\"\\{\\{(-?\\d+), (-?\\d+)\\}, \\{480, ").match(text);
            ASSERT_TRUE(place.hasMatch()) << text.toStdString();
            const int x = place.captured(1).toInt();
            const int y = place.captured(2).toInt();
            EXPECT_TRUE(x >= row.left && x <= row.right) << x;
            EXPECT_TRUE(y >= row.top && y <= row.bottom) << y;
            EXPECT_TRUE(firstTime.isEmpty() || firstTime == place.captured()) << "it creeps";
            firstTime = place.captured();
        }
    }
}

} // namespace
} // namespace tambrel
