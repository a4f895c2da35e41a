#include "ThreadPriority.h"
#include "PrivateSessionBus.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTest>

#include <optional>

namespace tambrel {
namespace {

/// A service that grants or refuses whatever it is asked.
class StandInService : public QDBusVirtualObject {
public:
    StandInService(QDBusConnection bus, const QString& name, const QString& path, bool grants)
        : bus_(std::move(bus)), grants_(grants) {
        EXPECT_TRUE(bus_.registerVirtualObject(path, this));
        EXPECT_TRUE(bus_.registerService(name));
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        heard = (message.interface() + "." + message.member()).toStdString();
        for (const QVariant& word : message.arguments())
            heard += std::string(" ") + word.typeName() + " " + word.toString().toStdString();
        return bus_.send(grants_ ? message.createReply()
                                 : message.createErrorReply(QDBusError::AccessDenied, "no"));
    }
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    std::string heard;

private:
    QDBusConnection bus_;
    bool grants_;
};

std::optional<QDBusConnection> systemBus;

TEST(ThreadPriorityTest, IsAskedOfThePortalAndElseOfRealtimeKit) {
    for (const bool grants : {true, false}) {
        SCOPED_TRACE(grants ? "granted" : "refused");
        PrivateSessionBus session, system;
        systemBus = system.connect();
        StandInService portal(session.connect(), "org.freedesktop.portal.Desktop",
                              "/org/freedesktop/portal/desktop", grants);
        StandInService realtimeKit(system.connect(), "org.freedesktop.RealtimeKit1",
                                   "/org/freedesktop/RealtimeKit1", true);
        const ThreadPriority priority(session.connect(), [] { return *systemBus; });
        priority.raise(1234567890123);
        ASSERT_TRUE(QTest::qWaitFor([&] { return !(grants ? portal : realtimeKit).heard.empty(); }, 30'000));
        EXPECT_EQ(portal.heard, "org.freedesktop.portal.Realtime.MakeThreadHighPriorityWithPID qulonglong " +
                                    std::to_string(QCoreApplication::applicationPid()) +
                                    " qulonglong 1234567890123 int -11");
        EXPECT_EQ(realtimeKit.heard, grants
                                         ? ""
                                         : "org.freedesktop.RealtimeKit1.MakeThreadHighPriority qulonglong "
                                           "1234567890123 int -11");
    }
    systemBus.reset();
}

} // namespace
} // namespace tambrel
