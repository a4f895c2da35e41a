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
constexpr const char* plays = "Playback state changed to playing";

/// No window is open yet.
class FirstStartTest : public DesktopSessionTest {
protected:
    /// What a client of the desktop calls; its exit status.
    [[nodiscard]] int call(const QString& method, const QStringList& words) const {
        return session.run(QStringList{"call", "--session", "--dest", DesktopSession::identifier,
                                       "--object-path", DesktopSession::objectPath, "--method",
                                       "org.freedesktop.Application." + method} +
                               words,
                           "gdbus");
    }
    [[nodiscard]] QString address(const char* song) const {
        return "file://" + QString::fromStdString((session.songs() / song).string());
    }
};

/// A window is open, on a session bus.
class HandOverTest : public FirstStartTest {
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
    const std::string songs = session.songs().string();
    const struct {
        std::string file;
        const char* shown;
        std::string argument;
    } rows[] = {
        {"Grüße 50%41#b?c&d.MID", "Grüße 50%41#b?c&d.MID", "Grüße 50%41#b?c&d.MID"},
        {"\xFF\xFE.mid", "\uFFFD\uFFFD.mid", "\xFF\xFE.mid"},
        {"one\ntwo.mid", "one", "one\ntwo.mid"},
        {"-x.mid", "-x.mid", "../songs/-x.mid"},
        {"whole.mid", "whole.mid", songs + "/whole.mid"},
        {"\xE9 %.mid", "\uFFFD %.mid", "file://" + songs + "/%e9%20%25.mid"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.argument);
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

TEST_F(HandOverTest, TakesTwentyFilesInASecond) {
    constexpr int count = 20;
    std::vector<DesktopSession::Program> others;
    for (int i = 0; i < count; ++i) {
        session.writeSong("song " + std::to_string(i) + ".mid");
        others.push_back(session.start({QString("song %1.mid").arg(i)}));
    }
    for (const auto& other : others)
        EXPECT_EQ(DesktopSession::statusOf(*other), 0);
    EXPECT_EQ(session.count("Loading song "), count);
    const auto lines = session.log();
    const auto last = std::find_if(lines.rbegin(), lines.rend(),
                                   [](const std::string& line) { return line.starts_with("Loading song "); });
    const std::string name = last->substr(8, last->find(" |") - 8);
    EXPECT_TRUE(session.logs("Loaded " + name + "; ")) << "the last one wins";
    EXPECT_EQ(session.count(launched), 1);
}

TEST_F(HandOverTest, DisturbsNothingThatPlaysUnlessThereIsAFileToOpen) {
    const auto act = [&](const char* name) { return call("ActivateAction", {name, "[]", "{}"}); };
    EXPECT_EQ(act("play-pause"), 0);
    EXPECT_TRUE(session.logs(plays));
    EXPECT_EQ(session.run({}), 0);
    auto useless = session.start({"--play", "notes.txt"});
    EXPECT_EQ(DesktopSession::statusOf(*useless), 0);
    EXPECT_EQ(DesktopSession::errorsOf(*useless), "tambrel: notes.txt: Not a file that Tambrel opens.\n");
    EXPECT_TRUE(session.logs("No supported MIDI URLs found"));
    EXPECT_EQ(call("Activate", {"{'desktop-startup-id': <'one_TIME2'>}"}), 0);
    EXPECT_EQ(act("dance"), 0);
    EXPECT_EQ(session.count("Playback state changed to idle"), 1) << "that of the song's loading";

    session.writeSong("a b.mid");
    const QString uris = "['https://a.example/x.mid', '" + address("a%20b.mid") + "']";
    EXPECT_EQ(call("Open", {uris, "{'activation-token': <'none'>}"}), 0);
    EXPECT_TRUE(session.logs("Loaded a b.mid; "));
    session.writeSong("next.mid");
    EXPECT_EQ(session.run({"--play", "notes.txt", "next.mid", "song.mid"}), 0);
    EXPECT_TRUE(session.logs("Loaded next.mid; "));
    EXPECT_TRUE(session.logs(plays, 2));
    EXPECT_EQ(act("stop"), 0);
    EXPECT_TRUE(session.logs("User Action: Clicked Stop button or menu item"));
    EXPECT_EQ(session.count(plays), 2) << "not the one that was only to be opened";
    EXPECT_EQ(session.count(launched), 1);
}

TEST_F(HandOverTest, OpensASecondWindowWhenThatIsWanted) {
    auto second = session.start({"--new-instance", "song.mid"});
    EXPECT_TRUE(session.logs("Loaded song.mid; ", 2));
    EXPECT_EQ(session.count(launched), 2);
    EXPECT_EQ(session.run({"song.mid"}), 0) << "the first window still has the name";
    EXPECT_EQ(DesktopSession::end(*second), 0);
    EXPECT_TRUE(session.hasMarker()) << "the first window's";
}

TEST_F(HandOverTest, PlaysWithoutTheBusThatWasThere) {
    EXPECT_EQ(call("ActivateAction", {"play-pause", "[]", "{}"}), 0);
    EXPECT_TRUE(session.logs(plays));
    session.endBus();
    auto second = session.start({"--play", "song.mid"});
    EXPECT_TRUE(session.logs(plays, 2)) << "and without one, everybody has a window";
    EXPECT_EQ(session.count(launched), 2);
    EXPECT_EQ(first->state(), QProcess::Running);
    EXPECT_EQ(DesktopSession::end(*second), 0);
    EXPECT_EQ(DesktopSession::errorsOf(*second), "");
}

TEST_F(HandOverTest, NeedsADisplayForAWindowOnly) {
    session.set("QT_QPA_PLATFORM", "");
    const struct {
        const char* name;
        QStringList arguments;
        int status;
        const char* errors;
    } rows[] = {
        {"a window of its own", {"--new-instance", "song.mid"}, 1, "tambrel: There is no display.\n"},
        {"a window that is there", {"song.mid"}, 0, ""},
        {"a picture", {"--screenshot", "a.png", "song.mid"}, 0, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        auto program = session.start(row.arguments);
        EXPECT_EQ(DesktopSession::statusOf(*program), row.status);
        EXPECT_EQ(DesktopSession::errorsOf(*program), row.errors);
    }
    EXPECT_TRUE(std::filesystem::exists(session.songs() / "a.png"));
    auto needsNone = session.start({"--new-instance", "-platform", "offscreen"});
    EXPECT_TRUE(session.logs(begun, 2));
    EXPECT_EQ(DesktopSession::end(*needsNone), 0);
}

TEST_F(FirstStartTest, LosesNothingThatTheBusBringsAtItsStart) {
    session.startBus();
    session.makeActivatable();
    session.writeSong("a.mid");
    EXPECT_EQ(call("Open", {"['" + address("a.mid") + "']", "{}"}), 0);
    EXPECT_TRUE(session.logs("Loaded a.mid; "));
    EXPECT_EQ(session.run({"--user", "call", "org.mpris.MediaPlayer2.tambrel", "/org/mpris/MediaPlayer2",
                           "org.mpris.MediaPlayer2", "Quit"},
                          "busctl"),
              0);
    EXPECT_TRUE(session.logs(ended));
}

TEST_F(FirstStartTest, LosesNothingThatComesWhenTheWindowHasBeenClosed) {
    session.startBus();
    session.writeSong("a.mid");
    auto program = session.start({"--play", "a.mid"});
    ASSERT_TRUE(session.logs(plays));
    auto bus = QDBusConnection::connectToBus(session.busAddress(), "asking");
    bus.send(QDBusMessage::createMethodCall("org.mpris.MediaPlayer2.tambrel", "/org/mpris/MediaPlayer2",
                                            "org.mpris.MediaPlayer2", "Quit"));
    auto open = QDBusMessage::createMethodCall(DesktopSession::identifier, DesktopSession::objectPath,
                                               "org.freedesktop.Application", "Open");
    open << QStringList(address("a.mid")) << QVariantMap();
    EXPECT_EQ(bus.call(open, QDBus::Block, 30'000).type(), QDBusMessage::ErrorMessage);
    auto second = session.start({"a.mid"});
    EXPECT_TRUE(session.logs("Loaded a.mid; ", 2));
    EXPECT_EQ(session.count(launched), 2);
    EXPECT_EQ(DesktopSession::statusOf(*program), 0);
    EXPECT_THAT(session.log(), Contains(StartsWith("Stopping playback and returning to zero")));
    EXPECT_EQ(DesktopSession::end(*second), 0);
    QDBusConnection::disconnectFromBus("asking");
}

TEST_F(FirstStartTest, HasAWindowOfItsOwnWhereTheOwnerOfTheNameDoesNotAnswer) {
    session.writeSong("a.mid");
    session.startBus();
    auto mute = QDBusConnection::connectToBus(session.busAddress(), "mute");
    EXPECT_TRUE(mute.registerService(DesktopSession::identifier));
    auto program = session.start({"a.mid"});
    EXPECT_TRUE(session.logs("Loaded a.mid; "));
    EXPECT_EQ(DesktopSession::end(*program), 0);
    EXPECT_EQ(DesktopSession::errorsOf(*program), "");
    QDBusConnection::disconnectFromBus("mute");
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
