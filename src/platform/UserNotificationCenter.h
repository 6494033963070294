#pragma once

#include <QObject>
#include <QString>

// A notification for the user: a title and a subtitle, no buttons, no sound, delivered now.
struct UserNotification
{
    QString title;
    QString subtitle;
};

// Posts notifications to the desktop. deliver() is safe from any thread.
class UserNotificationCenter : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    virtual void deliver(const UserNotification& notification) = 0;
    // Takes a delivered notification off the screen and out of the desktop's list.
    virtual void removeDeliveredNotification(quint32 id) = 0;

signals:
    // The user clicked the notification.
    void didActivateNotification(quint32 id);
};
