#pragma once

#include <QObject>
#include <QString>

// Notifications between programs of the user's session (the agent and its login helper), delivered
// at once.
class DistributedNotificationCenter : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    virtual void postNotificationName(const QString& name, const QString& object) = 0;

signals:
    // A notification another program (or this one) posted.
    void notificationPosted(const QString& name, const QString& object);
};
