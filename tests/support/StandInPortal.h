#pragma once

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTest>

#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace tambrel {

/// Stands in for the desktop portal, and writes down what it is asked. It answers when it is told to.
class StandInPortal : public QDBusVirtualObject {
public:
    explicit StandInPortal(QDBusConnection bus) : bus_(std::move(bus)) {
        EXPECT_TRUE(
            bus_.registerVirtualObject("/org/freedesktop/portal/desktop", this, QDBusConnection::SubPath));
        EXPECT_TRUE(bus_.registerService("org.freedesktop.portal.Desktop"));
    }

    ~StandInPortal() override {
        bus_.unregisterService("org.freedesktop.portal.Desktop");
        bus_.unregisterObject("/org/freedesktop/portal/desktop", QDBusConnection::UnregisterTree);
    }
    StandInPortal(const StandInPortal&) = delete;
    StandInPortal& operator=(const StandInPortal&) = delete;

    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        const QString member = message.interface() + "." + message.member();
        if (member == "test.Portal.Mark")
            return bus_.send(message.createReply());
        if (member == "org.freedesktop.portal.Inhibit.Inhibit") {
            const auto words = message.arguments();
            const auto options = qdbus_cast<QVariantMap>(words.at(2));
            const auto text = QString("Inhibit(%1, %2, %3)")
                                  .arg(words.at(0).toString())
                                  .arg(words.at(1).toUInt())
                                  .arg(options["reason"].toString());
            log.push_back(text.toStdString());
            message.setDelayedReply(true);
            waiting.push_back(message);
            return true;
        }
        log.push_back((message.member() + " " + message.path().section('/', -1)).toStdString());
        return member == "org.freedesktop.portal.Request.Close";
    }
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    /// Waits for the question, if need be.
    void answer() { bus_.send(question().createReply(request("r" + std::to_string(++requests_)))); }
    void refuse() { bus_.send(question().createErrorReply(QDBusError::AccessDenied, "no")); }

    [[nodiscard]] std::string last() const { return log.empty() ? "" : log.back(); }

    std::vector<std::string> log;
    std::deque<QDBusMessage> waiting;

private:
    QDBusMessage question() {
        EXPECT_TRUE(QTest::qWaitFor([&] { return !waiting.empty(); }, 30'000));
        const QDBusMessage first = waiting.front();
        waiting.pop_front();
        return first;
    }
    static QVariant request(const std::string& name) {
        return QVariant::fromValue(
            QDBusObjectPath("/org/freedesktop/portal/desktop/request/1_1/" + QString::fromStdString(name)));
    }

    QDBusConnection bus_;
    int requests_ = 0;
};

} // namespace tambrel
