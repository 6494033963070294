#pragma once

#include <QObject>
#include <QVariantMap>

#include <optional>

// Where the persistent defaults domain lives. The store is shared with other processes (the
// command-line cleaner, a user's editor), so every write is a read-modify-write under lock().
class UserDefaultsBackend : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    // The stored domain; an empty map when nothing is stored yet; no value when a store exists but
    // cannot be read as a dictionary.
    virtual std::optional<QVariantMap> read() = 0;
    // Replaces the stored domain atomically: a reader sees the old or the new domain, never a mix.
    // False, with the old domain kept as it was, when it could not be written.
    virtual bool write(const QVariantMap& domain) = 0;
    // Why the last write failed.
    virtual QString errorString() const { return QString(); }
    // Moves an unreadable store aside so nothing the user had is destroyed; its new name.
    virtual QString quarantine() = 0;
    // Excludes the other writers of the same store (other processes included).
    virtual void lock() = 0;
    virtual void unlock() = 0;

signals:
    // Someone else may have changed the store.
    void changedOnDisk();
};
