#pragma once

#include <QMetaObject>
#include <QSet>
#include <QStringList>
#include <QVariant>

class CloudKeyValueStore;
class SystemLog;
class UserDefaults;

// Mirrors the shared settings between this machine's defaults and the store the user's machines share.
// The store is outside input (anyone who can write the synced folder writes it): only the shared
// settings come in, each of its own kind; nothing there sets the home folder, grants, activation,
// protection, the layout or the sync folder. Holds its two observations and the keys it has logged.
class CloudSync
{
public:
    // The settings that follow the user, in this order; the rest stays with the machine.
    static const QStringList keys;

    CloudSync(UserDefaults& defaults, CloudKeyValueStore& store, SystemLog& log);
    ~CloudSync();
    CloudSync(const CloudSync&) = delete;
    CloudSync& operator=(const CloudSync&) = delete;

    // Observes both sides; a machine joining takes what the others stored, then adds what they lack.
    void start();
    void stop();
    bool isStarted() const { return bool(m_fromCloud); }

    // Every shared setting to the store (on any change of any setting).
    void updateToiCloud();
    // The shared settings in the store to the defaults, without pushing them back; anything else in the
    // store is left there (and logged once).
    void updateFromiCloud();

    // Whether a value from the store may become this shared setting: a switch is a boolean, the check
    // interval a whole number, "settings" a dictionary of "Browser:category" to booleans.
    static bool isSharedValue(const QString& key, const QVariant& value);

private:
    void observeDefaults();

    UserDefaults& m_defaults;
    CloudKeyValueStore& m_store;
    SystemLog& m_log;
    QSet<QString> m_logged;
    QMetaObject::Connection m_fromCloud;
    QMetaObject::Connection m_toCloud;
};
