// A stand-in for the panel's tray host on a private session bus: it accepts StatusNotifierItem
// registrations, and prints the labels of each registered item's exported menu
// (com.canonical.dbusmenu) when the item registers and whenever its menu says it changed:
// "menu: <label>|<label>|...", and what its icon shows: "icon: name=<IconName> light=<n> dark=<n>",
// counting the opaque pixels of its largest pixmap that a dark panel (light ones) and a light panel
// (dark ones) would show.

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

// The labels of a dbusmenu layout, depth first: (ia{sv}av).
void collectLabels(const QDBusArgument& argument, QStringList& labels)
{
    int id = 0;
    QVariantMap properties;
    argument.beginStructure();
    argument >> id >> properties;
    if (properties.contains(u"label"_s))
        labels.append(properties.value(u"label"_s).toString());
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        collectLabels(child.variant().value<QDBusArgument>(), labels);
    }
    argument.endArray();
    argument.endStructure();
}

} // namespace

class Watcher : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)
public:
    bool hostRegistered() const { return true; }
    int protocolVersion() const { return 0; }
    QStringList items() const { return m_items; }

public slots:
    void RegisterStatusNotifierItem(const QString& service, const QDBusMessage& message)
    {
        // An item names its bus name or its object path; the sender is the bus name either way.
        const QString path = service.startsWith(QLatin1Char('/')) ? service : u"/StatusNotifierItem"_s;
        m_items.append(message.service() + path);
        std::printf("registered: %s\n", qPrintable(message.service()));
        std::fflush(stdout);
        m_service = message.service();
        m_itemPath = path;
        QTimer::singleShot(300, this, &Watcher::printMenu);
        QTimer::singleShot(300, this, &Watcher::printIcon);
    }
    void RegisterStatusNotifierHost(const QString&) {}
    void menuChanged() { QTimer::singleShot(100, this, &Watcher::printMenu); }

private:
    void printIcon()
    {
        QDBusConnection bus = QDBusConnection::sessionBus();
        QDBusMessage call = QDBusMessage::createMethodCall(m_service, m_itemPath,
                                                           u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s);
        call << u"org.kde.StatusNotifierItem"_s;
        const QDBusMessage reply = bus.call(call);
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
            return;
        const QVariantMap properties = qdbus_cast<QVariantMap>(reply.arguments().at(0));
        int light = 0, dark = 0, largest = 0;
        const QDBusArgument pixmaps = properties.value(u"IconPixmap"_s).value<QDBusArgument>();
        pixmaps.beginArray();
        while (!pixmaps.atEnd()) {
            int width = 0, height = 0;
            QByteArray argb; // network byte order
            pixmaps.beginStructure();
            pixmaps >> width >> height >> argb;
            pixmaps.endStructure();
            if (width <= largest || argb.size() < width * height * 4)
                continue;
            largest = width;
            light = dark = 0;
            for (int i = 0; i < width * height; ++i) {
                const auto* p = reinterpret_cast<const unsigned char*>(argb.constData()) + 4 * i;
                if (p[0] < 200)
                    continue;
                const int lightness = (p[1] * 299 + p[2] * 587 + p[3] * 114) / 1000;
                light += lightness > 190;
                dark += lightness < 70;
            }
        }
        pixmaps.endArray();
        std::printf("icon: name=%s light=%d dark=%d\n",
                    qPrintable(properties.value(u"IconName"_s).toString()), light, dark);
        std::fflush(stdout);
    }

    void printMenu()
    {
        QDBusConnection bus = QDBusConnection::sessionBus();
        QDBusInterface item(m_service, m_itemPath, u"org.kde.StatusNotifierItem"_s, bus);
        const QString menuPath = item.property("Menu").value<QDBusObjectPath>().path();
        if (menuPath.isEmpty()) {
            std::printf("menu: none\n");
            std::fflush(stdout);
            return;
        }
        if (!m_watchingMenu) {
            m_watchingMenu = true;
            for (const char* signal : {"LayoutUpdated", "ItemsPropertiesUpdated"})
                bus.connect(m_service, menuPath, u"com.canonical.dbusmenu"_s, QLatin1String(signal), this,
                            SLOT(menuChanged()));
        }
        QDBusMessage call =
            QDBusMessage::createMethodCall(m_service, menuPath, u"com.canonical.dbusmenu"_s, u"GetLayout"_s);
        call << 0 << -1 << QStringList{u"label"_s};
        const QDBusMessage reply = bus.call(call);
        QStringList labels;
        if (reply.type() == QDBusMessage::ReplyMessage && reply.arguments().size() == 2)
            collectLabels(reply.arguments().at(1).value<QDBusArgument>(), labels);
        std::printf("menu: %s\n", qPrintable(labels.join(QLatin1Char('|'))));
        std::fflush(stdout);
    }

    QStringList m_items;
    QString m_service;
    QString m_itemPath;
    bool m_watchingMenu = false;
};

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    Watcher watcher;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(u"/StatusNotifierWatcher"_s, &watcher,
                            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties) ||
        !bus.registerService(u"org.kde.StatusNotifierWatcher"_s)) {
        std::fprintf(stderr, "fake-status-notifier-watcher: cannot register on the session bus\n");
        return 1;
    }
    std::fprintf(stderr, "fake-status-notifier-watcher: ready\n");
    return QCoreApplication::exec();
}

#include "FakeStatusNotifierWatcher.moc"
