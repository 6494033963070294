#pragma once

#include "platform/UserNotificationCenter.h"

#include <QMutex>

// Keeps what was delivered and removed, so tests can count notifications.
class RecordingNotificationCenter final : public UserNotificationCenter
{
    Q_OBJECT
public:
    void deliver(const UserNotification& notification) override
    {
        QMutexLocker lock(&m_mutex);
        m_delivered.append(notification);
    }
    void removeDeliveredNotification(quint32 id) override
    {
        QMutexLocker lock(&m_mutex);
        m_removed.append(id);
    }
    QList<UserNotification> delivered() const
    {
        QMutexLocker lock(&m_mutex);
        return m_delivered;
    }
    QList<quint32> removed() const
    {
        QMutexLocker lock(&m_mutex);
        return m_removed;
    }

private:
    mutable QMutex m_mutex;
    QList<UserNotification> m_delivered;
    QList<quint32> m_removed;
};
