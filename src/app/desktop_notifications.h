// Bubbles of the desktop: org.freedesktop.Notifications on the session bus (Desktop Notifications
// 1.2 of freedesktop.org).
//
// Every call returns at once; what the server answers comes over the main loop. Without a bus or a
// server nothing is shown, and nothing is said about it but failed().
#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <map>
#include <optional>

class QDBusPendingCall;

namespace tintoral {

class DesktopNotifications : public QObject {
    Q_OBJECT

  public:
    struct Content {
        QString summary;  // both plain text; markup in them is shown as it stands
        QString body;

        friend bool operator==(const Content&, const Content&) = default;
    };

    DesktopNotifications() = default;
    // Withdraws what is shown: without the program a click would lead nowhere.
    ~DesktopNotifications() override;

    // Shows a notification; one of the same key that is shown gives way to it.
    void show(const QString& key, const Content& content);
    // Changes the one of that key; does nothing when it is not shown (any more).
    void refresh(const QString& key, const Content& content);
    // Takes the one of that key back.
    void withdraw(const QString& key);

  Q_SIGNALS:
    // The person clicked a notification; the token is the permission to take the focus, or empty.
    void clicked(const QByteArray& activationToken);
    // The notification of that key cannot be shown.
    void failed(const QString& key);

  private Q_SLOTS:
    void notificationClosed(uint id, uint reason);
    void actionInvoked(uint id, const QString& action);
    void keepActivationToken(uint id, const QString& token);

  private:
    struct Notice {
        uint id = 0;                    // the server's, once it has answered
        bool isSent = false;            // and not answered yet
        Content sent;                   // what the server has
        std::optional<Content> wanted;  // what it shall have; nothing: withdrawn
    };
    using Notices = std::map<QString, Notice>;

    void listenOnce();
    void bringUpToDate(const QString& key);
    void answered(const QString& key, const QDBusPendingCall& call);
    Notices::iterator findShown(uint id);

    Notices notices_;
    QByteArray activationToken_;
    bool isListening_ = false;
};

}  // namespace tintoral
