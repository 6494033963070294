// A stand-in for the desktop's notification server on a private session bus: it prints each
// notification it is asked to show ("<ms since epoch>|<summary>|<body>|<icon>|<desktop entry>") and
// otherwise behaves.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDateTime>
#include <QObject>
#include <QVariantMap>

#include <cstdio>

using namespace Qt::StringLiterals;

class NotificationServer : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public slots:
    uint Notify(const QString&, uint, const QString& icon, const QString& summary, const QString& body,
                const QStringList&, const QVariantMap& hints, int)
    {
        std::printf("%lld|%s|%s|%s|%s\n", static_cast<long long>(QDateTime::currentMSecsSinceEpoch()),
                    qPrintable(summary), qPrintable(body), qPrintable(icon),
                    qPrintable(hints.value(u"desktop-entry"_s).toString()));
        std::fflush(stdout);
        return ++m_lastId;
    }
    QStringList GetCapabilities() { return {u"body"_s, u"actions"_s}; }
    void CloseNotification(uint) {}

private:
    uint m_lastId = 0;
};

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    NotificationServer server;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(u"/org/freedesktop/Notifications"_s, &server, QDBusConnection::ExportAllSlots) ||
        !bus.registerService(u"org.freedesktop.Notifications"_s)) {
        std::fprintf(stderr, "fake-notification-server: cannot register on the session bus\n");
        return 1;
    }
    std::fprintf(stderr, "fake-notification-server: ready\n");
    return QCoreApplication::exec();
}

#include "FakeNotificationServer.moc"
