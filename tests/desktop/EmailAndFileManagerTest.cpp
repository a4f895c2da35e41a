#include "EmailComposer.h"
#include "FileRevealer.h"
#include "PortalEmail.h"
#include "PrivateSessionBus.h"
#include "RecentFiles.h"
#include "SessionBus.h"
#include "TestFiles.h"

#include <gmock/gmock.h>

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QFile>
#include <QStandardPaths>
#include <QTimer>
#include <QUrlQuery>

#include <unistd.h>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A program on D-Bus that records its calls and answers as the test says.
class BusService : public QDBusVirtualObject {
public:
    BusService(const QDBusConnection& bus, const QString& name, const QString& path) : bus_(bus) {
        EXPECT_TRUE(bus_.registerVirtualObject(path, this));
        EXPECT_TRUE(bus_.registerService(name));
    }

    QList<QDBusMessage> calls;
    bool refuses = false;
    std::function<void()> ending = {}; ///< Called when a portal has accepted a call.
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
        if (ending)
            QTimer::singleShot(0, this, ending);
        else
            bus.send(signal);
        return bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(path))));
    }
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

private:
    QDBusConnection bus_;
};

class EmailTest : public ::testing::Test {
protected:
    /// A program that notes its arguments, each ended by a NUL, and its status.
    [[nodiscard]] QString mailProgram(int status) const {
        const auto script = "#!/bin/sh\nprintf '%s\\0' \"$@\" >'" + files.path("received").string() +
                            "'\nexit " + std::to_string(status) + '\n';
        QString path = files.write("xdg-email", Bytes(script.begin(), script.end())).c_str();
        EXPECT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        return path;
    }

    /// Whether the sender took the draft.
    [[nodiscard]] bool isTaken(const EmailSender& sender) { return isTaken(sender, draft); }
    [[nodiscard]] static bool isTaken(const EmailSender& sender, const EmailDraft& sent) {
        std::optional<bool> answer;
        sender(sent, [&](bool taken) {
            EXPECT_FALSE(answer) << "a second answer";
            answer = taken;
        });
        EXPECT_TRUE(QTest::qWaitFor([&] { return answer.has_value(); }, 30'000));
        QTest::qWait(0);
        return answer.value_or(false);
    }

    TestFiles files;
    const std::string attachment = files.write("Bericht ☃.txt", {'r', 'e', 'p', 'o', 'r', 't'});
    const EmailDraft draft{.recipient = "support@kestrune.example",
                           .subject = "Tambrel Bug Report!",
                           .body = "line \"one\"\n$HOME 'two' ☃ 5% & a+b #?\nC:\\new\\cut \\0101\n",
                           .attachment = QUrl::fromLocalFile(QString::fromStdString(attachment))};
};

// Through the real xdg-email, to a mail program that records its arguments: no text of the report is among
// them.
TEST_F(EmailTest, GoesThroughXdgEmailAsAFileUnlessThatFails) {
    const QString bodyFile = files.path("body & ☃.txt").c_str();
    EXPECT_FALSE(isTaken(emailByXdgEmail(bodyFile, mailProgram(3))));
    EXPECT_FALSE(isTaken(emailByXdgEmail(bodyFile, files.path("missing").c_str())));
    const auto program = QStandardPaths::findExecutable("xdg-email");
    if (program.isEmpty())
        GTEST_SKIP() << "xdg-email is not installed";
    auto unattached = draft;
    unattached.attachment.reset();
    for (const auto& sent : {draft, unattached}) {
        qputenv("MAILER", mailProgram(0).toUtf8());
        EXPECT_TRUE(isTaken(emailByXdgEmail(bodyFile, program), sent));
        qunsetenv("MAILER");
        const auto received = QByteArray::fromStdString(content(files.path("received"))).split('\0');
        ASSERT_EQ(received.size(), 2);
        const QUrl link(received[0], QUrl::StrictMode);
        EXPECT_EQ(link.scheme() + ':' + link.path(), "mailto:support@kestrune.example");
        const auto value = [query = QUrlQuery(link)](const char* key) {
            return query.queryItemValue(key, QUrl::FullyDecoded);
        };
        EXPECT_EQ(value("subject").toStdString(), draft.subject);
        EXPECT_EQ(value("body"), "");
        EXPECT_EQ(value("attach"), sent.attachment ? QString::fromStdString(attachment) : bodyFile);
    }
    EXPECT_EQ(content(files.path("body & ☃.txt")), draft.body);
    EXPECT_EQ(QFile::permissions(bodyFile) & (QFile::ReadOther | QFile::ReadGroup), 0);
    EXPECT_FALSE(isTaken(emailByXdgEmail(bodyFile + "/no folder", program), unattached));
}

// Qt connects too, and libdbus would start a bus; a mail program may have one started.
TEST(SessionBusTest, IsNeitherStartedNorForbiddenToOthersWhereThereIsNone) {
    for (const char* variable : {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"})
        qunsetenv(variable);
    EXPECT_FALSE(sessionBus().isConnected());
    EXPECT_FALSE(qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS"));
    const auto busOfQt = QDBusConnection::sessionBus();
    EXPECT_FALSE(busOfQt.isConnected());
    EXPECT_FALSE(busOfQt.lastError().message().contains("autolaunch"));
}

TEST_F(EmailTest, GoesToThePortalWithItsAttachmentOrNotAtAll) {
    PrivateSessionBus bus;
    BusService portal(bus.connect(), "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop");
    portal.response = 0;
    EXPECT_TRUE(isTaken(emailByPortal(bus.connect())));
    std::filesystem::remove(attachment);
    EXPECT_FALSE(isTaken(emailByPortal(bus.connect())));
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
    EXPECT_EQ(content("/proc/self/fd/" + std::to_string(descriptors[0].fileDescriptor())), "report");
}

TEST_F(EmailTest, IsTakenByAPortalUnlessItFails) {
    PrivateSessionBus bus;
    const QString name = "org.freedesktop.portal.Desktop";
    auto service = bus.connect();
    BusService portal(service, name, "/org/freedesktop/portal/desktop");
    const auto leave = [&] { service.unregisterService(name); };
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
        EXPECT_EQ(isTaken(emailByPortal(player)), row.isTaken);
    }
    PrivateSessionBus empty;
    EXPECT_FALSE(isTaken(emailByPortal(empty.connect())));
    EXPECT_FALSE(isTaken(emailByPortal(QDBusConnection("without a bus"))));
}

TEST(FileRevealer, AsksTheFileManagerOrOpensTheFolder) {
    const auto file = QUrl::fromLocalFile("/home/a b/Beta Logs/Tambrel ☃.txt");
    QList<QUrl> opened;
    const auto open = [&](const QUrl& url) { opened << url; };
    PrivateSessionBus bus;
    const auto player = bus.connect();
    BusService manager(bus.connect(), "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1");
    revealFile(player, file, open);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !manager.calls.isEmpty(); }, 30'000));
    const auto& call = manager.calls.at(0);
    EXPECT_EQ(call.interface() + '.' + call.member(), "org.freedesktop.FileManager1.ShowItems");
    EXPECT_EQ(call.arguments(),
              QVariantList({QStringList("file:///home/a%20b/Beta%20Logs/Tambrel%20%E2%98%83.txt"), ""}));
    EXPECT_THAT(opened, IsEmpty());

    manager.refuses = true;
    revealFile(player, QUrl("file:///refused/a"), open);
    revealFile(QDBusConnection("without a bus"), file, open);
    EXPECT_TRUE(QTest::qWaitFor([&] { return opened.size() == 2; }, 30'000));
    EXPECT_THAT(opened, ElementsAre(QUrl::fromLocalFile("/home/a b/Beta Logs"), QUrl("file:///refused")));
}

TEST(RecentFilesTest, LeaveAloneWhatIsNoListOfThem) {
    const RecentFile file{"file:///a.mid", "audio/midi"};
    for (const char* list : {"A text.", "<xbel>", "<html/>", "<xbel></bel>"})
        EXPECT_EQ(RecentFiles::withFile(list, file, QDateTime::currentDateTime()), "") << list;
    EXPECT_NE(RecentFiles::withFile("", file, QDateTime::currentDateTime()), "");
}

} // namespace
} // namespace tambrel
