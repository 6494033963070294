#include "platform/linux/FreedesktopNotificationCenter.h"

#include "platform/SystemLog.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kInterface = QStringLiteral("org.freedesktop.Notifications");

} // namespace

FreedesktopNotificationCenter::FreedesktopNotificationCenter(SystemLog& log, QObject* parent)
    : UserNotificationCenter(parent), m_log(log)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    // QtDBus offers only the string-based form for bus signals. Any sender: the server may be
    // started on demand, after this connection is made.
    bus.connect(QString(), kPath, kInterface, QStringLiteral("ActionInvoked"), this,
                SLOT(onActionInvoked(quint32, QString)));
    bus.connect(QString(), kPath, kInterface, QStringLiteral("NotificationClosed"), this,
                SLOT(onNotificationClosed(quint32, quint32)));
}

void FreedesktopNotificationCenter::deliver(const UserNotification& notification)
{
    QMetaObject::invokeMethod(
        this, [this, notification] { post(notification); }, Qt::QueuedConnection);
}

void FreedesktopNotificationCenter::post(const UserNotification& notification)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        logInstead(notification);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Notify"));
    // The "default" action is a click on the notification itself, not a button; without it the
    // click would not be reported.
    const QStringList actions{QStringLiteral("default"), QString()};
    // The icon and the desktop entry by the application's id, as installed; a server shows the icon
    // and groups the notifications under Corvella's entry.
    const QString appId = QStringLiteral("com.tovanex.Corvella6");
    const QVariantMap hints{{QStringLiteral("desktop-entry"), appId}};
    call << QStringLiteral("Corvella") << quint32(0) << appId << notification.title << notification.subtitle
         << actions << hints << qint32(-1);
    // Asynchronous, so a stuck notification server never stops the agent.
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, notification] {
        const QDBusPendingReply<quint32> reply = *watcher;
        if (reply.isError())
            logInstead(notification);
        else
            m_delivered.insert(reply.value());
        watcher->deleteLater();
    });
}

void FreedesktopNotificationCenter::logInstead(const UserNotification& notification)
{
    m_log.log(notification.title + QStringLiteral(": ") + notification.subtitle);
}

void FreedesktopNotificationCenter::removeDeliveredNotification(quint32 id)
{
    m_delivered.remove(id);
    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("CloseNotification"));
    call << id;
    QDBusConnection::sessionBus().asyncCall(call);
}

void FreedesktopNotificationCenter::onActionInvoked(quint32 id, const QString&)
{
    if (m_delivered.contains(id))
        emit didActivateNotification(id);
}

void FreedesktopNotificationCenter::onNotificationClosed(quint32 id, quint32)
{
    m_delivered.remove(id);
}
