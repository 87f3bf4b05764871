#include "support/notification_server.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QStandardPaths>
#include <QtTest/QTest>
#include <stdexcept>

namespace tintoral::test {
namespace {

constexpr QLatin1String kService("org.freedesktop.Notifications");
constexpr QLatin1String kPath("/org/freedesktop/Notifications");
constexpr QLatin1String kConnection("notification server");
constexpr QLatin1String kBarrier("Barrier");
constexpr int kPatience = 10000;

constexpr std::string_view kBusConfig =
    "<busconfig><type>session</type><auth>EXTERNAL</auth><listen>unix:tmpdir=/tmp</listen>"
    "<policy context='default'><allow send_destination='*'/><allow eavesdrop='true'/><allow "
    "own='*'/></policy>"
    "</busconfig>";

}  // namespace

bool hasMessageBus() {
    return !QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty();
}

SessionBus::SessionBus() {
    const auto config = folder_ / "bus.conf";
    writeFile(config, kBusConfig);
    daemon_.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                   QStringLiteral("--config-file=") + QString::fromStdString(config.string())});
    if (!daemon_.waitForReadyRead(kPatience)) throw std::runtime_error("no message bus");
    qputenv("DBUS_SESSION_BUS_ADDRESS", daemon_.readAllStandardOutput().trimmed());
}

SessionBus::~SessionBus() {
    daemon_.kill();
    daemon_.waitForFinished();
}

QString SessionBus::address() {
    return qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
}

NotificationServer::NotificationServer()
    : connection_(QDBusConnection::connectToBus(SessionBus::address(), kConnection)) {
    connection_.registerVirtualObject(kPath, this);
    connection_.registerService(kService);
}

NotificationServer::~NotificationServer() {
    QDBusConnection::disconnectFromBus(kConnection);
}

// One connection's messages stay in order: an answer to this one comes after all before it.
QStringList NotificationServer::takeLog() {
    const QDBusPendingCall barrier = QDBusConnection::sessionBus().asyncCall(
        QDBusMessage::createMethodCall(kService, kPath, kService, kBarrier));
    if (!QTest::qWaitFor([&] { return barrier.isFinished(); }, kPatience)) log_ << "no answer";
    QCoreApplication::processEvents();
    return std::exchange(log_, {});
}

void NotificationServer::click(uint id) {
    signal("ActivationToken", {id, QStringLiteral("token")});
    signal("ActionInvoked", {id, QStringLiteral("default")});
    dismiss(id);
}

void NotificationServer::dismiss(uint id) {
    constexpr uint kByThePerson = 2;
    signal("NotificationClosed", {id, kByThePerson});
}

bool NotificationServer::handleMessage(const QDBusMessage& message,
                                       const QDBusConnection& connection) {
    const QVariantList& arguments = message.arguments();
    QVariantList answer;
    if (message.member() == u"Notify") answer << notify(arguments);
    if (message.member() == u"CloseNotification")
        log_ << QStringLiteral("-%1").arg(arguments.value(0).toUInt());
    return connection.send(message.createReply(answer));
}

uint NotificationServer::notify(const QVariantList& arguments) {
    const uint replaced = arguments.value(1).toUInt();
    const uint id = replaced != 0 ? replaced : ++lastId_;
    const QString body = arguments.value(4).toString().replace(QLatin1Char('\n'), QLatin1Char('|'));
    log_ << QStringLiteral("%1%2 %3")
                .arg(QLatin1String(replaced != 0 ? "~" : "+"))
                .arg(id)
                .arg(body);
    lastArguments_ = arguments;
    return id;
}

void NotificationServer::signal(const char* name, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createSignal(kPath, kService, QLatin1String(name));
    message.setArguments(arguments);
    connection_.send(message);
}

}  // namespace tintoral::test
