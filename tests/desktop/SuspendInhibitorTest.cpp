#include "SuspendInhibitor.h"
#include "PrivateSessionBus.h"
#include "StandInPortal.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDBusPendingCall>

#include <optional>

namespace tambrel {
namespace {

using ::testing::ElementsAreArray;

class SuspendInhibitorTest : public ::testing::Test {
protected:
    /// Waits for all that was sent on the inhibitor's connection, and for what that has caused.
    void settle(const QString& service, const QString& path, const QString& interface,
                const QString& method) {
        for (int way = 0; way < 2; ++way) {
            const auto mark = QDBusMessage::createMethodCall(service, path, interface, method);
            const QDBusPendingCall call = connection.asyncCall(mark);
            EXPECT_TRUE(QTest::qWaitFor([&] { return call.isFinished(); }, 30'000));
            EXPECT_FALSE(call.isError()) << call.error().message().toStdString();
            QCoreApplication::processEvents();
        }
    }
    void settleWithBus() {
        settle("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId");
    }

    /// p plays, s stops, a has the portal answer, r has it refuse, e ends the program, . lets messages
    /// arrive.
    void act(StandInPortal& portal, const std::string& steps) {
        for (const char step : steps + ".") {
            if (step == 'p' || step == 's')
                inhibitor->setInhibiting(step == 'p');
            else if (step == 'a')
                portal.answer();
            else if (step == 'r')
                portal.refuse();
            else if (step == 'e')
                inhibitor.reset();
            else
                settle("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", "test.Portal",
                       "Mark");
        }
    }

    const std::string inhibit = "Inhibit(x11:1a, 4, A song is playing)";
    PrivateSessionBus bus;
    QDBusConnection connection = bus.connect();
    std::optional<SuspendInhibitor> inhibitor{std::in_place, "x11:1a", "A song is playing", connection};
};

TEST_F(SuspendInhibitorTest, AsksWhenPlayingBeginsAndGivesBackWhenItEnds) {
    const struct {
        const char* title;
        const char* steps;
        std::vector<std::string> heard;
    } rows[] = {
        {"stops without having played", "s", {}},
        {"stops before the answer", "psa", {inhibit, "Close r1"}},
        {"stops and plays before the answer", "pspa", {inhibit}},
        {"plays, plays on, stops and plays", "pa.pp.s.pa", {inhibit, "Close r1", inhibit}},
        {"the program ends in the middle of a song", "pa.e", {inhibit, "Close r1"}},
        {"is refused and asks again at the next song", "pr.pspa.s", {inhibit, inhibit, "Close r1"}},
        {"is refused after it has stopped", "psr.p", {inhibit, inhibit}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.title);
        inhibitor.emplace("x11:1a", "A song is playing", connection);
        settleWithBus(); // The one before may still have had something to close.
        StandInPortal portal(bus.connect());
        act(portal, row.steps);
        EXPECT_THAT(portal.log, ElementsAreArray(row.heard));
    }
}

TEST_F(SuspendInhibitorTest, AsksAPortalThatWasNotThereBefore) {
    inhibitor->setInhibiting(true);
    settleWithBus();
    StandInPortal late(bus.connect());
    act(late, "spa");
    EXPECT_THAT(late.log, ElementsAreArray({inhibit}));
}

} // namespace
} // namespace tambrel
