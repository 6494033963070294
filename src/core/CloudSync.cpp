#include "core/CloudSync.h"

#include "platform/CloudKeyValueStore.h"
#include "platform/SettingsKeys.h"
#include "platform/UserDefaults.h"

const QStringList CloudSync::keys{SettingsKeys::showInMenu,           SettingsKeys::hideDock,
                                  SettingsKeys::loginStart,           SettingsKeys::secureDeleteData,
                                  SettingsKeys::hideOnLaunch,         SettingsKeys::settings,
                                  SettingsKeys::displayNotifications, SettingsKeys::scheduledCheckInterval,
                                  SettingsKeys::automaticallyUpdate,  SettingsKeys::enableAutomaticChecks};

CloudSync::CloudSync(UserDefaults& defaults, CloudKeyValueStore& store) : m_defaults(defaults), m_store(store)
{}

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
