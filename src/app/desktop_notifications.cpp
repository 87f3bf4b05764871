#include "app/desktop_notifications.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QStringList>
#include <QVariantMap>
#include <algorithm>

namespace tintoral {
namespace {

constexpr QLatin1String kService("org.freedesktop.Notifications");
constexpr QLatin1String kPath("/org/freedesktop/Notifications");
constexpr QLatin1String kClick("default");  // the action of the bubble as a whole

QDBusMessage callOf(const char* method) {
    return QDBusMessage::createMethodCall(kService, kPath, kService, QLatin1String(method));
}

QDBusMessage notifyCall(uint replacedId, const DesktopNotifications::Content& content) {
    constexpr uchar kNormalUrgency = 1;
    constexpr int kServersOwnTimeOut = -1;
    const QString application = QGuiApplication::desktopFileName();
    const QVariantMap hints{{QStringLiteral("desktop-entry"), application},
                            {QStringLiteral("urgency"), QVariant::fromValue(kNormalUrgency)}};
    QDBusMessage call = callOf("Notify");
    call.setArguments({QGuiApplication::applicationDisplayName(), replacedId, application,
                       content.summary, content.body.toHtmlEscaped(),
                       QStringList{kClick, QStringLiteral("Show")}, hints, kServersOwnTimeOut});
    return call;
}

void closeNotification(uint id) {
    QDBusMessage call = callOf("CloseNotification");
    call.setArguments({id});
    call.setAutoStartService(false);
    QDBusConnection::sessionBus().send(call);
}

}  // namespace

DesktopNotifications::~DesktopNotifications() {
    for (const auto& [key, notice] : notices_) {
        if (notice.id != 0) closeNotification(notice.id);
    }
}

void DesktopNotifications::show(const QString& key, const Content& content) {
    if (!QDBusConnection::sessionBus().isConnected()) {
        Q_EMIT failed(key);
        return;
    }
    listenOnce();
    notices_[key].wanted = content;
    bringUpToDate(key);
}

void DesktopNotifications::refresh(const QString& key, const Content& content) {
    if (notices_.contains(key)) show(key, content);
}

void DesktopNotifications::withdraw(const QString& key) {
    const auto at = notices_.find(key);
    if (at == notices_.end()) return;
    at->second.wanted.reset();
    bringUpToDate(key);
}

// From whatever sender: asking for the present owner of the service's name would wait for the bus.
void DesktopNotifications::listenOnce() {
    if (std::exchange(isListening_, true)) return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    const auto listen = [&](const char* signal, const char* slot) {
        bus.connect({}, kPath, kService, QLatin1String(signal), this, slot);
    };
    listen("NotificationClosed", SLOT(notificationClosed(uint, uint)));
    listen("ActionInvoked", SLOT(actionInvoked(uint, QString)));
    listen("ActivationToken", SLOT(keepActivationToken(uint, QString)));
}

// While a call is under way the id to replace or close is not known: its answer leads here again.
void DesktopNotifications::bringUpToDate(const QString& key) {
    Notice& notice = notices_[key];
    if (notice.isSent) return;
    if (!notice.wanted) {
        if (notice.id != 0) closeNotification(notice.id);
        notices_.erase(key);
    } else if (notice.id == 0 || notice.sent != *notice.wanted) {
        notice.sent = *notice.wanted;
        notice.isSent = true;
        auto* watcher = new QDBusPendingCallWatcher(
            QDBusConnection::sessionBus().asyncCall(notifyCall(notice.id, notice.sent)), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, key, watcher] {
            watcher->deleteLater();
            answered(key, *watcher);
        });
    }
}

void DesktopNotifications::answered(const QString& key, const QDBusPendingCall& call) {
    const QDBusPendingReply<uint> reply = call;
    if (reply.isError() || reply.value() == 0) {  // 0 is no id
        notices_.erase(key);
        Q_EMIT failed(key);
        return;
    }
    Notice& notice = notices_[key];
    notice.isSent = false;
    notice.id = reply.value();
    bringUpToDate(key);
}

DesktopNotifications::Notices::iterator DesktopNotifications::findShown(uint id) {
    return std::ranges::find_if(
        notices_, [id](const auto& entry) { return id != 0 && entry.second.id == id; });
}

void DesktopNotifications::notificationClosed(uint id, uint) {
    const auto at = findShown(id);
    if (at == notices_.end()) return;
    if (at->second.isSent) {
        at->second.id = 0;
    } else {
        notices_.erase(at);
    }
}

void DesktopNotifications::actionInvoked(uint id, const QString& action) {
    if (action == kClick && findShown(id) != notices_.end())
        Q_EMIT clicked(std::exchange(activationToken_, {}));
}

// Comes before the click that it belongs to.
void DesktopNotifications::keepActivationToken(uint id, const QString& token) {
    if (findShown(id) != notices_.end()) activationToken_ = token.toUtf8();
}

}  // namespace tintoral
