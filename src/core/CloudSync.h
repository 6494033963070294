#pragma once

#include <QMetaObject>
#include <QStringList>

class CloudKeyValueStore;
class UserDefaults;

// Mirrors the shared settings between this machine's defaults and the store the user's machines share.
// Holds nothing but its two observations.
class CloudSync
{
public:
    // The settings that follow the user, in this order; the rest stays with the machine.
    static const QStringList keys;

    CloudSync(UserDefaults& defaults, CloudKeyValueStore& store);
    ~CloudSync();
    CloudSync(const CloudSync&) = delete;
    CloudSync& operator=(const CloudSync&) = delete;

    // Observes both sides; a machine joining takes what the others stored, then adds what they lack.
    void start();
    void stop();
    bool isStarted() const { return bool(m_fromCloud); }

    // Every shared setting to the store (on any change of any setting).
    void updateToiCloud();
    // Everything in the store to the defaults, shared list or not, without pushing it back.
    void updateFromiCloud();

private:
    void observeDefaults();

    UserDefaults& m_defaults;
    CloudKeyValueStore& m_store;
    QMetaObject::Connection m_fromCloud;
    QMetaObject::Connection m_toCloud;
};
