#include "platform/linux/DBusDistributedNotificationCenter.h"

#include <QDBusConnection>
#include <QDBusMessage>

DBusDistributedNotificationCenter::DBusDistributedNotificationCenter(QObject* parent)
    : DistributedNotificationCenter(parent)
{
    QDBusConnection::sessionBus().connect(QString(), path, interface, member, this,
                                          SLOT(received(QString, QString)));
}

void DBusDistributedNotificationCenter::postNotificationName(const QString& name, const QString& object)
{
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, member);
    signal << name << object;
    QDBusConnection::sessionBus().send(signal);
}

void DBusDistributedNotificationCenter::received(const QString& name, const QString& object)
{
    emit notificationPosted(name, object);
}
