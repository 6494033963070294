#include "core/CloudSync.h"

#include "cleaners/KeptSites.h"
#include "platform/CloudKeyValueStore.h"
#include "platform/SettingsKeys.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"

#include <algorithm>

const QStringList CloudSync::keys{SettingsKeys::showInMenu,
                                  SettingsKeys::hideDock,
                                  SettingsKeys::loginStart,
                                  SettingsKeys::secureDeleteData,
                                  SettingsKeys::hideOnLaunch,
                                  SettingsKeys::settings,
                                  SettingsKeys::displayNotifications,
                                  SettingsKeys::scheduledCheckInterval,
                                  SettingsKeys::automaticallyUpdate,
                                  SettingsKeys::enableAutomaticChecks,
                                  SettingsKeys::keptSites};

CloudSync::CloudSync(UserDefaults& defaults, CloudKeyValueStore& store, SystemLog& log)
    : m_defaults(defaults), m_store(store), m_log(log)
{}

bool CloudSync::isSharedValue(const QString& key, const QVariant& value)
{
    if (!keys.contains(key))
        return false;
    if (key == SettingsKeys::scheduledCheckInterval)
        return value.typeId() == QMetaType::LongLong && value.toLongLong() >= 0;
    if (key == SettingsKeys::keptSites) { // host names as they are stored, and not too many
        const QVariantList sites = value.toList();
        return value.typeId() == QMetaType::QVariantList && sites.size() <= 10000 &&
               std::all_of(sites.cbegin(), sites.cend(), [](const QVariant& site) {
                   return site.typeId() == QMetaType::QString &&
                          KeptSites::normalised(site.toString()) == site.toString();
               });
    }
    if (key != SettingsKeys::settings)
        return value.typeId() == QMetaType::Bool;
    if (value.typeId() != QMetaType::QVariantMap)
        return false;
    const QVariantMap selection = value.toMap();
    for (auto it = selection.cbegin(); it != selection.cend(); ++it) {
        // A browser or category this version does not know is fine (a newer machine's); a shape that
        // is no "Browser:category" entry is not.
        const QString& entry = it.key();
        const qsizetype colon = entry.indexOf(QLatin1Char(':'));
        if (it->typeId() != QMetaType::Bool || colon <= 0 || colon + 1 == entry.size() ||
            entry.indexOf(QLatin1Char(':'), colon + 1) >= 0 || entry.size() > 100)
            return false;
        for (const QChar c : entry) {
            if (!c.isPrint())
                return false;
        }
    }
    return true;
}

CloudSync::~CloudSync()
{
    stop();
}

void CloudSync::start()
{
    stop();
    m_fromCloud = QObject::connect(&m_store, &CloudKeyValueStore::didChangeExternally, &m_store,
                                   [this] { updateFromiCloud(); });
    observeDefaults();
    m_store.synchronize();
    // Without these two a machine that turns sync on first would share nothing until a setting changed,
    // and one joining later would push its own defaults over the shared choices.
    updateFromiCloud();
    updateToiCloud();
}

void CloudSync::stop()
{
    QObject::disconnect(m_fromCloud);
    QObject::disconnect(m_toCloud);
    m_fromCloud = {};
    m_toCloud = {};
}

void CloudSync::observeDefaults()
{
    m_toCloud =
        QObject::connect(&m_defaults, &UserDefaults::defaultsChanged, &m_store, [this] { updateToiCloud(); });
}

void CloudSync::updateToiCloud()
{
    const QVariantMap all = m_defaults.dictionaryRepresentation();
    for (auto it = all.cbegin(); it != all.cend(); ++it) {
        if (keys.contains(it.key()))
            m_store.setObject(it.value(), it.key());
    }
    m_store.synchronize();
}

void CloudSync::updateFromiCloud()
{
    const bool observing = bool(m_toCloud);
    QObject::disconnect(m_toCloud);
    m_toCloud = {};
    QVariantMap changed;
    const QVariantMap stored = m_store.dictionaryRepresentation();
    for (auto it = stored.cbegin(); it != stored.cend(); ++it) {
        if (!isSharedValue(it.key(), it.value())) {
            if (!m_logged.contains(it.key()) && m_logged.size() < 100) {
                m_logged.insert(it.key());
                m_log.log(QStringLiteral("Corvella Sync: \"%1\" from the synced folder was ignored: %2")
                              .arg(it.key().left(100), keys.contains(it.key())
                                                           ? QStringLiteral("not a value of its kind")
                                                           : QStringLiteral("not a shared setting")));
            }
            continue;
        }
        const auto mine = m_defaults.objectForKey(it.key());
        if (!mine || *mine != it.value() || mine->typeId() != it.value().typeId())
            changed.insert(it.key(), it.value());
    }
    if (!changed.isEmpty())
        m_defaults.setObjects(changed); // one write for all of them
    m_defaults.synchronize();
    if (observing)
        observeDefaults();
}
