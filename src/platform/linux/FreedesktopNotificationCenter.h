#pragma once

#include "platform/UserNotificationCenter.h"

#include <QSet>

class SystemLog;

// Notifications through the desktop's notification server (org.freedesktop.Notifications on the
// session bus). Without a session bus or a server, the text goes to the log instead.
class FreedesktopNotificationCenter final : public UserNotificationCenter
{
    Q_OBJECT
public:
    explicit FreedesktopNotificationCenter(SystemLog& log, QObject* parent = nullptr);

    void deliver(const UserNotification& notification) override;
    void removeDeliveredNotification(quint32 id) override;

private slots:
    void onActionInvoked(quint32 id, const QString& action);
    void onNotificationClosed(quint32 id, quint32 reason);

private:
    void post(const UserNotification& notification);
    void logInstead(const UserNotification& notification);

    SystemLog& m_log;
    QSet<quint32> m_delivered;
};
