// A message bus of the test's own, and a desktop's notification server on it.
#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStringList>
#include <QVariantMap>

#include "support/temporary_folder.h"

namespace tintoral::test {

// False where no message bus is installed.
bool hasMessageBus();

// A session bus for this process, which must not have asked for one before. Throws
// std::runtime_error when it is not there within 10 s.
class SessionBus {
  public:
    SessionBus();
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    static QString address();

  private:
    TemporaryFolder folder_;
    QProcess daemon_;
};

class NotificationServer : public QDBusVirtualObject {
  public:
    NotificationServer();
    ~NotificationServer() override;

    // What it has been asked since the last call, in order: "+ID BODY" for a new notification, "~ID
    // BODY" for one that is replaced, "-ID" for one that is closed; with line breaks as "|".
    QStringList takeLog();

    // The arguments of the last notification.
    const QVariantList& lastArguments() const { return lastArguments_; }

    // As a person does it. The desktop gives its permission to take the focus, then tells of the
    // click.
    void click(uint id);
    // As a person closes it, or time does.
    void dismiss(uint id);

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    QString introspect(const QString&) const override { return {}; }

  private:
    void signal(const char* name, const QVariantList& arguments);
    uint notify(const QVariantList& arguments);

    QDBusConnection connection_;
    QStringList log_;
    QVariantList lastArguments_;
    uint lastId_ = 0;
};

}  // namespace tintoral::test
