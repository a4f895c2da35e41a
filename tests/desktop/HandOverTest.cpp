#include "DesktopSession.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QRegularExpression>

#include <algorithm>

namespace tambrel {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* launched = "Application launch procedure started";
constexpr const char* begun = "Application Session Started";
constexpr const char* crashed = "Possible previous crash or forced quit detected";
constexpr const char* ended = "Application Session Ended Normally";

/// A window is open, on a session bus.
class HandOverTest : public DesktopSessionTest {
protected:
    HandOverTest() {
        session.startBus();
        session.writeSong("song.mid");
        first = session.start({"song.mid"});
        EXPECT_TRUE(session.logs("Loaded song.mid; "));
    }
    ~HandOverTest() override {
        EXPECT_EQ(DesktopSession::end(*first), 0);
        EXPECT_EQ(session.count(ended), session.count(begun));
        EXPECT_EQ(session.count(crashed), 0);
        EXPECT_FALSE(session.hasMarker());
        EXPECT_EQ(DesktopSession::errorsOf(*first), "");
    }

    DesktopSession::Program first;
};

TEST_F(HandOverTest, OpensFilesOfEveryNameInTheWindowThatIsThere) {
    const struct {
        const char* name;
        std::string file;
        const char* shown;
        std::string argument;
    } rows[] = {
        {"blanks", "with a blank.mid", "with a blank.mid", "with a blank.mid"},
        {"percent signs", "100%.mid", "100%.mid", "100%.mid"},
        {"what looks like an escape", "50%41.mid", "50%41.mid", "50%41.mid"},
        {"marks of addresses", "a#b?c&d=e.mid", "a#b?c&d=e.mid", "a#b?c&d=e.mid"},
        {"letters of the world", "Grüße 音楽.mid", "Grüße 音楽.mid", "Grüße 音楽.mid"},
        {"no UTF-8", "\xFF\xFE.mid", "\uFFFD\uFFFD.mid", "\xFF\xFE.mid"},
        {"a new line", "one\ntwo.mid", "one", "one\ntwo.mid"},
        {"capitals", "LOUD.MID", "LOUD.MID", "./LOUD.MID"},
        {"the way round", "round.mid", "round.mid", "../songs/round.mid"},
        {"an absolute path", "whole.mid", "whole.mid", (session.songs() / "whole.mid").string()},
        {"an address", "an address%.mid", "an address%.mid",
         "file://" + session.songs().string() + "/an%20address%25.mid"},
        {"an address that is no UTF-8", "\xE9.mid", "\uFFFD.mid",
         "file://" + session.songs().string() + "/%e9.mid"},
        {"something like an option", "-x.mid", "-x.mid", "./-x.mid"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        session.writeSong(row.file);
        // A shell passes on what no QString can hold.
        QStringList octal;
        for (const char c : row.argument)
            octal << QString("\\%1").arg(static_cast<unsigned char>(c), 3, 8, QChar('0'));
        auto second = session.start(
            {"-c", "exec \"$0\" \"$(printf '" + octal.join("") + "')\"", TAMBREL_PROGRAM}, "/bin/sh");
        EXPECT_EQ(DesktopSession::statusOf(*second), 0);
        EXPECT_EQ(DesktopSession::errorsOf(*second), "");
        EXPECT_TRUE(session.logs(std::string("Loaded ") + row.shown));
    }
    EXPECT_EQ(session.count(launched), 1);
}

TEST_F(HandOverTest, OpensTheFirstOfSeveralAndComplainsOfTheOthers) {
    session.writeSong("second.mid");
    auto second = session.start({"notes.txt", "second.mid", "third.mid"});
    EXPECT_EQ(DesktopSession::statusOf(*second), 0);
    EXPECT_EQ(DesktopSession::errorsOf(*second), "tambrel: notes.txt: Not a file that Tambrel opens.\n");
    EXPECT_TRUE(session.logs("Loaded second.mid; "));
    EXPECT_THAT(session.log(), Contains("User Action: Opened Tambrel from Finder with 3 URL(s) | "
                                        "AppDelegate.application(_:open:)"));
    EXPECT_EQ(session.run({"notes.txt"}), 0);
    EXPECT_TRUE(session.logs("No supported MIDI URLs found"));
    EXPECT_EQ(session.count("Loading third.mid"), 0);
}

TEST_F(HandOverTest, TakesTwentyFilesInASecond) {
    constexpr int count = 20;
    std::vector<DesktopSession::Program> others;
    for (int i = 0; i < count; ++i) {
        session.writeSong("song " + std::to_string(i) + ".mid");
        others.push_back(session.start({QString("song %1.mid").arg(i)}));
    }
    for (const auto& other : others)
        EXPECT_EQ(DesktopSession::statusOf(*other), 0);
    EXPECT_EQ(session.count("User Action: Opened Tambrel from Finder with 1 URL(s)"), count);
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(session.count("Loading song " + std::to_string(i) + ".mid"), 1) << i;
    const auto lines = session.log();
    const auto last = std::find_if(lines.rbegin(), lines.rend(),
                                   [](const std::string& line) { return line.starts_with("Loading song "); });
    const std::string name = last->substr(8, last->find(" |") - 8);
    EXPECT_TRUE(session.logs("Loaded " + name + "; ")) << "the last one wins";
    EXPECT_EQ(session.count(launched), 1);
}

TEST_F(HandOverTest, DisturbsNothingThatPlaysUnlessThereIsAFileToOpen) {
    const QString action = QString("%1.ActivateAction").arg("org.freedesktop.Application");
    const auto act = [&](const char* name) {
        return session.run({"call", "--session", "--dest", DesktopSession::identifier, "--object-path",
                            DesktopSession::objectPath, "--method", action, name, "[]", "{}"},
                           "gdbus");
    };
    EXPECT_EQ(act("play-pause"), 0);
    EXPECT_TRUE(session.logs("Playback state changed to playing"));
    EXPECT_EQ(session.run({}), 0);
    EXPECT_EQ(session.run({"--play", "notes.txt"}), 0);
    EXPECT_EQ(act("dance"), 0);
    EXPECT_EQ(session.count("Playback state changed to idle"), 1) << "that of the song's loading";

    session.writeSong("silent.mid");
    EXPECT_EQ(session.run({"silent.mid"}), 0);
    EXPECT_TRUE(session.logs("Loaded silent.mid; "));
    session.writeSong("next.mid");
    EXPECT_EQ(session.run({"--play", "next.mid"}), 0);
    EXPECT_TRUE(session.logs("Loaded next.mid; "));
    EXPECT_TRUE(session.logs("Playback state changed to playing", 2));
    EXPECT_EQ(act("stop"), 0);
    EXPECT_TRUE(session.logs("User Action: Clicked Stop button or menu item"));
    EXPECT_EQ(session.count("Playback state changed to playing"), 2) << "not silent.mid";
    EXPECT_EQ(session.count(launched), 1);
}

TEST_F(HandOverTest, ServesTheClientsOfTheDesktop) {
    session.writeSong("a b.mid");
    const QString uri = "file://" + QString::fromStdString(session.songs().string()) + "/a%20b.mid";
    EXPECT_EQ(session.run({"--user", "call", DesktopSession::identifier, DesktopSession::objectPath,
                           "org.freedesktop.Application", "Open", "asa{sv}", "2", "https://a.example/x.mid",
                           uri, "1", "activation-token", "s", "none"},
                          "busctl"),
              0);
    EXPECT_TRUE(session.logs("Loaded a b.mid; "));
    EXPECT_EQ(session.run({"call", "--session", "--dest", DesktopSession::identifier, "--object-path",
                           DesktopSession::objectPath, "--method", "org.freedesktop.Application.Activate",
                           "{'desktop-startup-id': <'one_TIME2'>}"},
                          "gdbus"),
              0);
    auto interface = session.start({"introspect", "--session", "--xml", "--dest", DesktopSession::identifier,
                                    "--object-path", DesktopSession::objectPath},
                                   "gdbus");
    EXPECT_EQ(DesktopSession::statusOf(*interface), 0);
    const std::string xml = interface->readAllStandardOutput().toStdString();
    for (const char* method : {"Activate", "Open", "ActivateAction"})
        EXPECT_THAT(xml, HasSubstr(std::string("<method name=\"") + method + "\""));
}

TEST_F(HandOverTest, OpensASecondWindowWhenThatIsWanted) {
    auto second = session.start({"--new-instance", "song.mid"});
    EXPECT_TRUE(session.logs("Loaded song.mid; ", 2));
    EXPECT_EQ(session.count(launched), 2);
    EXPECT_EQ(session.run({"song.mid"}), 0) << "the first window still has the name";
    EXPECT_EQ(DesktopSession::end(*second), 0);
    EXPECT_TRUE(session.hasMarker()) << "the first window's";
    EXPECT_EQ(session.run({"--screenshot", "a.png", "song.mid"}), 0);
    EXPECT_TRUE(std::filesystem::exists(session.songs() / "a.png"));
}

TEST_F(HandOverTest, OutlivesTheBus) {
    session.endBus();
    auto second = session.start({"song.mid"});
    EXPECT_TRUE(session.logs("Loaded song.mid; ", 2)) << "and without one, everybody has a window";
    EXPECT_EQ(session.count(launched), 2);
    EXPECT_EQ(first->state(), QProcess::Running);
    EXPECT_EQ(DesktopSession::end(*second), 0);
}

/// No window is open yet.
using FirstStartTest = DesktopSessionTest;

TEST_F(FirstStartTest, LosesNothingThatTheBusBringsAtItsStart) {
    session.startBus();
    session.makeActivatable();
    session.writeSong("a.mid");
    const QString uri = "file://" + QString::fromStdString(session.songs().string()) + "/a.mid";
    EXPECT_EQ(session.run({"call", "--session", "--dest", DesktopSession::identifier, "--object-path",
                           DesktopSession::objectPath, "--method", "org.freedesktop.Application.Open",
                           "['" + uri + "']", "{}"},
                          "gdbus"),
              0);
    EXPECT_TRUE(session.logs("Loaded a.mid; "));
    auto bus = QDBusConnection::connectToBus(session.busAddress(), "asking");
    const auto reply =
        bus.call(QDBusMessage::createMethodCall("org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                                                "GetConnectionUnixProcessID")
                 << DesktopSession::identifier);
    ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage);
    const int process = reply.arguments().value(0).toInt();
    QDBusConnection::disconnectFromBus("asking");
    EXPECT_EQ(kill(process, SIGTERM), 0);
    EXPECT_TRUE(session.logs(ended));
}

TEST_F(FirstStartTest, LosesNothingThatComesWhenTheWindowHasBeenClosed) {
    session.startBus();
    session.writeSong("a.mid");
    auto program = session.start({"--play", "a.mid"});
    ASSERT_TRUE(session.logs("Playback state changed to playing"));
    auto bus = QDBusConnection::connectToBus(session.busAddress(), "asking");
    bus.send(QDBusMessage::createMethodCall("org.mpris.MediaPlayer2.tambrel", "/org/mpris/MediaPlayer2",
                                            "org.mpris.MediaPlayer2", "Quit"));
    const QString uri = "file://" + QString::fromStdString((session.songs() / "a.mid").string());
    auto open = QDBusMessage::createMethodCall(DesktopSession::identifier, DesktopSession::objectPath,
                                               "org.freedesktop.Application", "Open");
    open << QStringList(uri) << QVariantMap();
    EXPECT_EQ(bus.call(open, QDBus::Block, 30'000).type(), QDBusMessage::ErrorMessage);
    auto second = session.start({"a.mid"});
    EXPECT_TRUE(session.logs("Loaded a.mid; ", 2));
    EXPECT_EQ(session.count(launched), 2);
    EXPECT_EQ(DesktopSession::statusOf(*program), 0);
    EXPECT_THAT(session.log(), Contains(StartsWith("Stopping playback and returning to zero")));
    EXPECT_EQ(DesktopSession::end(*second), 0);
    QDBusConnection::disconnectFromBus("asking");
}

TEST_F(FirstStartTest, HasAWindowOfItsOwnWhereThereIsNobodyToHandOverTo) {
    session.writeSong("a.mid");
    const struct {
        const char* name;
        std::function<void()> prepare;
    } rows[] = {
        {"no bus", [] {}},
        {"an address that leads nowhere",
         [this] { session.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere"); }},
        {"a name whose owner does not answer",
         [this] {
             session.startBus();
             auto mute = QDBusConnection::connectToBus(session.busAddress(), "mute");
             EXPECT_TRUE(mute.registerService(DesktopSession::identifier));
         }},
    };
    int times = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        row.prepare();
        auto program = session.start({"a.mid"});
        EXPECT_TRUE(session.logs("Loaded a.mid; ", ++times));
        EXPECT_EQ(DesktopSession::end(*program), 0);
        EXPECT_EQ(DesktopSession::errorsOf(*program), "");
    }
    QDBusConnection::disconnectFromBus("mute");
}

TEST_F(FirstStartTest, SaysSoWhereThereIsNoDisplay) {
    session.startBus();
    session.writeSong("a.mid");
    auto first = session.start({});
    EXPECT_TRUE(session.logs(begun));
    session.set("QT_QPA_PLATFORM", "");
    const struct {
        const char* name;
        QStringList arguments;
        int status;
        const char* errors;
    } rows[] = {
        {"a window of its own", {"--new-instance", "a.mid"}, 1, "tambrel: There is no display.\n"},
        {"a window that is there", {"a.mid"}, 0, ""},
        {"a picture", {"--screenshot", "a.png", "a.mid"}, 0, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        auto program = session.start(row.arguments);
        EXPECT_EQ(DesktopSession::statusOf(*program), row.status);
        EXPECT_EQ(DesktopSession::errorsOf(*program), row.errors);
    }
    EXPECT_TRUE(session.logs("Loaded a.mid; "));
    auto needsNone = session.start({"--new-instance", "-platform", "offscreen"});
    EXPECT_TRUE(session.logs(begun, 2));
    EXPECT_EQ(DesktopSession::end(*needsNone), 0);
    EXPECT_EQ(DesktopSession::end(*first), 0);
}

TEST_F(FirstStartTest, ReopensWhereItWas) {
    QFile screens(QString::fromStdString((session.songs() / "two.json").string()));
    ASSERT_TRUE(screens.open(QIODevice::WriteOnly));
    screens.write(R"({"screens": [
        {"name": "left", "x": 0, "y": 0, "width": 1000, "height": 800, "logicalDpi": 96, "dpr": 1},
        {"name": "right", "x": 1000, "y": 0, "width": 900, "height": 700, "logicalDpi": 96, "dpr": 1}]})");
    screens.close();
    const QString two = "offscreen:configfile=" + screens.fileName();
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
        session.setDefaults(QString("TambrelMainWindowFrame=\"%1\"\n").arg(row.saved));
        QString firstTime;
        for (const char* time : {"once", "again"}) {
            SCOPED_TRACE(time);
            auto program = session.start({"-platform", row.platform});
            EXPECT_TRUE(session.logs(begun, ++times));
            EXPECT_EQ(DesktopSession::end(*program), 0);
            QFile defaults(session.defaultsFile());
            ASSERT_TRUE(defaults.open(QIODevice::ReadOnly));
            const QString text = defaults.readAll();
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
