#include "EmailComposer.h"
#include "FileRevealer.h"
#include "PortalEmail.h"
#include "PrivateSessionBus.h"
#include "SessionBus.h"

#include <gmock/gmock.h>

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrlQuery>

#include <unistd.h>

namespace tambrel {
namespace {

using ::testing::IsEmpty;

/// A program on the bus that notes what it is asked for, and answers as it is told.
class BusService : public QDBusVirtualObject {
public:
    BusService(const QDBusConnection& bus, const QString& name, const QString& path) : bus_(bus) {
        EXPECT_TRUE(bus_.registerVirtualObject(path, this));
        EXPECT_TRUE(bus_.registerService(name));
    }

    QList<QDBusMessage> calls;
    bool refuses = false;
    std::function<void()> ending = {}; ///< What happens to a portal that has accepted a call.
    std::optional<uint> response = {}; ///< Of a portal.

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
        calls << call;
        if (refuses)
            return bus.send(call.createErrorReply(QDBusError::Failed, "No."));
        if (!response)
            return bus.send(call.createReply());
        const auto token = qdbus_cast<QVariantMap>(call.arguments().at(1)).value("handle_token").toString();
        const QString path = "/org/freedesktop/portal/desktop/request/" +
                             call.service().mid(1).replace('.', '_') + '/' + token;
        auto signal = QDBusMessage::createTargetedSignal(call.service(), path,
                                                         "org.freedesktop.portal.Request", "Response");
        signal << *response << QVariantMap();
        if (ending) {
            bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(path))));
            QTimer::singleShot(0, this, ending);
            return true;
        }
        return bus.send(signal) && bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(path))));
    }
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

private:
    QDBusConnection bus_;
};

class EmailTest : public ::testing::Test {
protected:
    /// A program that notes its arguments, each ended by a NUL, and its status.
    [[nodiscard]] QString mailProgram(int status) const {
        QFile script(home.filePath("xdg-email"));
        EXPECT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nprintf '%s\\0' \"$@\" >'" + home.filePath("received").toUtf8() + "'\nexit " +
                     QByteArray::number(status) + '\n');
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return script.fileName();
    }

    [[nodiscard]] std::vector<std::string> received() const {
        QFile file(home.filePath("received"));
        std::vector<std::string> arguments;
        if (file.open(QIODevice::ReadOnly))
            for (const auto& argument : file.readAll().split('\0'))
                arguments.push_back(argument.toStdString());
        return arguments;
    }

    void writeAttachment() const {
        QFile file(attachment);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("report") == 6);
    }

    /// Whether the way took the draft.
    [[nodiscard]] bool isTaken(const EmailWay& way) {
        std::optional<bool> answer;
        way(draft, [&](bool taken) {
            EXPECT_FALSE(answer) << "a second answer";
            answer = taken;
        });
        EXPECT_TRUE(QTest::qWaitFor([&] { return answer.has_value(); }, 30'000));
        QTest::qWait(0);
        return answer.value_or(false);
    }

    QTemporaryDir home;
    const QString attachment = home.filePath("Bericht ☃.txt");
    const EmailDraft draft{.recipient = "support@kestrune.example",
                           .subject = "Tambrel Bug Report!",
                           .body = "line \"one\"\n$HOME 'two' ☃ 5% & a+b #?\nC:\\new\\cut \\0101\n",
                           .attachment = QUrl::fromLocalFile(attachment)};
};

// Through the real program, to a mail program that only takes notes.
TEST_F(EmailTest, GoesThroughXdgEmailLetterByLetter) {
    const auto program = QStandardPaths::findExecutable("xdg-email");
    if (program.isEmpty())
        GTEST_SKIP() << "xdg-email is not installed";
    writeAttachment();
    qputenv("MAILER", mailProgram(0).toUtf8());
    EXPECT_TRUE(isTaken(xdgEmailWay(program)));
    qunsetenv("MAILER");
    const auto arguments = received();
    ASSERT_EQ(arguments.size(), 2u);
    const QUrl link(QString::fromStdString(arguments[0]), QUrl::StrictMode);
    EXPECT_EQ(link.scheme() + ':' + link.path(), "mailto:support@kestrune.example");
    const auto value = [query = QUrlQuery(link)](const char* key) {
        return query.queryItemValue(key, QUrl::FullyDecoded).replace("\r\n", "\n").toStdString();
    };
    EXPECT_EQ(value("subject"), draft.subject);
    EXPECT_EQ(value("body"), draft.body);
    EXPECT_EQ(value("attach"), attachment.toStdString());
}

TEST_F(EmailTest, IsNotTakenByAProgramThatFailsOrIsNotThere) {
    EXPECT_FALSE(isTaken(xdgEmailWay(mailProgram(3))));
    EXPECT_FALSE(isTaken(xdgEmailWay(home.filePath("missing"))));
}

// The toolkit connects too, and would have a bus started; a mail program may.
TEST(SessionBusTest, IsNeitherStartedNorForbiddenToOthersWhereThereIsNone) {
    for (const char* variable : {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"})
        qunsetenv(variable);
    EXPECT_FALSE(sessionBus().isConnected());
    EXPECT_FALSE(qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS"));
    const auto toolkits = QDBusConnection::sessionBus();
    EXPECT_FALSE(toolkits.isConnected());
    EXPECT_FALSE(toolkits.lastError().message().contains("autolaunch"));
}

TEST_F(EmailTest, GoesToThePortalWithItsAttachment) {
    PrivateSessionBus bus;
    writeAttachment();
    BusService portal(bus.connect(), "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop");
    portal.response = 0;
    EXPECT_TRUE(isTaken(portalEmailWay(bus.connect())));
    ASSERT_EQ(portal.calls.size(), 1);
    const auto& call = portal.calls[0];
    EXPECT_EQ(call.interface() + '.' + call.member(), "org.freedesktop.portal.Email.ComposeEmail");
    EXPECT_EQ(call.signature(), "sa{sv}");
    const auto options = qdbus_cast<QVariantMap>(call.arguments().at(1));
    EXPECT_EQ(options["address"].toString().toStdString(), draft.recipient);
    EXPECT_EQ(options["subject"].toString().toStdString(), draft.subject);
    EXPECT_EQ(options["body"].toString().toStdString(), draft.body);
    const auto descriptors = qdbus_cast<QList<QDBusUnixFileDescriptor>>(options["attachment_fds"]);
    ASSERT_EQ(descriptors.size(), 1);
    char content[16] = {};
    EXPECT_EQ(read(descriptors[0].fileDescriptor(), content, sizeof(content)), 6);
    EXPECT_STREQ(content, "report");
}

TEST_F(EmailTest, IsTakenByAPortalUnlessItFails) {
    writeAttachment();
    PrivateSessionBus bus;
    const QString name = "org.freedesktop.portal.Desktop";
    auto service = bus.connect();
    BusService portal(service, name, "/org/freedesktop/portal/desktop");
    const auto leave = [&] { EXPECT_TRUE(service.unregisterService(name)); };
    const struct {
        const char* name;
        bool refuses;
        uint response;
        std::function<void()> ending;
        bool isTaken;
    } rows[] = {
        {"user cancels", false, 1, {}, true},
        {"portal fails later", false, 2, {}, false},
        {"portal refuses", true, 0, {}, false},
        {"portal accepts and dies", false, 0, leave, false},
        {"bus dies after that", false, 0, [&] { bus.end(); }, false},
    };
    const auto player = bus.connect();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        service.registerService(name);
        portal.refuses = row.refuses;
        portal.response = row.response;
        portal.ending = row.ending;
        EXPECT_EQ(isTaken(portalEmailWay(player)), row.isTaken);
    }
    PrivateSessionBus empty;
    EXPECT_FALSE(isTaken(portalEmailWay(empty.connect())));
    EXPECT_FALSE(isTaken(portalEmailWay(QDBusConnection("without a bus"))));
}

TEST_F(EmailTest, IsNotTakenByAPortalThatCannotHaveTheAttachment) {
    PrivateSessionBus bus;
    BusService portal(bus.connect(), "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop");
    portal.response = 0;
    EXPECT_FALSE(isTaken(portalEmailWay(bus.connect())));
    EXPECT_THAT(portal.calls, IsEmpty());
}

TEST_F(EmailTest, TriesOneWayAfterAnotherUntilItIsTaken) {
    std::string order;
    const auto way = [&order](const char* name, bool taken) {
        return [&order, name, taken](const EmailDraft&, const std::function<void(bool)>& answer) {
            order += name;
            answer(taken);
        };
    };
    const auto none = [&] { order += "none"; };
    composeEmail(draft, {way("a", false), way("b", true), way("c", true)}, none);
    EXPECT_EQ(std::exchange(order, {}), "ab");
    composeEmail(draft, {way("a", false), way("b", false)}, none);
    EXPECT_EQ(std::exchange(order, {}), "abnone");
    composeEmail(draft, {}, none);
    EXPECT_EQ(order, "none");
}

TEST(FileRevealer, AsksTheFileManagerOrOpensTheFolder) {
    const auto file = QUrl::fromLocalFile("/home/a b/Beta Logs/Tambrel ☃.txt");
    std::vector<QUrl> opened;
    const auto open = [&](const QUrl& url) { opened.push_back(url); };
    PrivateSessionBus bus;
    const auto player = bus.connect();
    {
        BusService manager(bus.connect(), "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1");
        revealFile(player, file, open);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !manager.calls.isEmpty(); }, 30'000));
        const auto& call = manager.calls.at(0);
        EXPECT_EQ(call.interface() + '.' + call.member(), "org.freedesktop.FileManager1.ShowItems");
        EXPECT_EQ(call.arguments(),
                  QVariantList({QStringList("file:///home/a%20b/Beta%20Logs/Tambrel%20%E2%98%83.txt"), ""}));
        EXPECT_THAT(opened, IsEmpty());

        manager.refuses = true;
        revealFile(player, file, open);
        EXPECT_TRUE(QTest::qWaitFor([&] { return opened.size() == 1; }, 30'000));
    }
    revealFile(QDBusConnection("without a bus"), file, open);
    EXPECT_TRUE(QTest::qWaitFor([&] { return opened.size() == 2; }, 30'000));
    for (const QUrl& folder : opened)
        EXPECT_EQ(folder, QUrl::fromLocalFile("/home/a b/Beta Logs"));
}

} // namespace
} // namespace tambrel
