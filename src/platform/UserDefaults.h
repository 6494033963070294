#pragma once

#include <QMutex>
#include <QObject>
#include <QVariantMap>

#include <memory>
#include <optional>

class SystemLog;
class UserDefaultsBackend;

// The agent's settings domain "com.tovanex.Corvella6": a persistent domain kept by a backend,
// over a registration (fallback) domain held in memory. Safe from any thread; the change
// signals are always delivered on the thread that owns the object (the main thread).
class UserDefaults : public QObject
{
    Q_OBJECT
public:
    static inline const QString kDomain = QStringLiteral("com.tovanex.Corvella6");

    // The Linux location of the domain below a home folder: ~/.config/corvella/<domain>.plist.
    static QString filePathForHome(const QString& home);

    UserDefaults(std::unique_ptr<UserDefaultsBackend> backend, SystemLog& log, QObject* parent = nullptr);
    ~UserDefaults() override;

    void registerDefaults(const QVariantMap& registration);
    // A value for this process only, above the stored one and never stored (a command-line option).
    void setArgument(const QVariant& value, const QString& forKey);

    // The value in the persistent domain, else the registered one, else no value.
    std::optional<QVariant> objectForKey(const QString& key) const;
    // Absent or of another kind: false, empty list, empty map, no value, 0.
    bool boolForKey(const QString& key) const;
    QVariantList arrayForKey(const QString& key) const;
    QVariantMap dictionaryForKey(const QString& key) const;
    std::optional<QString> stringForKey(const QString& key) const;
    std::optional<QByteArray> dataForKey(const QString& key) const;
    qint64 integerForKey(const QString& key) const;
    // Both domains merged, the persistent one winning.
    QVariantMap dictionaryRepresentation() const;

    // False, and nothing changed, for a value a property list cannot hold or a change that could not
    // be saved (a full disk, a folder that cannot be written); the failure is logged.
    bool setObject(const QVariant& value, const QString& forKey);
    bool setBool(bool value, const QString& forKey) { return setObject(QVariant(value), forKey); }
    // Several values in one write; nothing changed when one of them cannot be stored.
    bool setObjects(const QVariantMap& values);
    bool removeObjectForKey(const QString& key);
    // Several keys in one write.
    bool removeObjectsForKeys(const QStringList& keys);
    // Picks up what other processes stored; false when the store cannot be read.
    bool synchronize();

signals:
    // The effective value of one key changed; an absent side is an invalid QVariant.
    void valueChanged(const QString& key, const QVariant& oldValue, const QVariant& newValue);
    // Anything in the domain changed.
    void defaultsChanged();

private:
    // Each key with its new value (no value: removed), applied in one write.
    bool change(const QMap<QString, std::optional<QVariant>>& changes);
    bool reload();
    void announce(const QVariantMap& before, const QVariantMap& after);

    std::unique_ptr<UserDefaultsBackend> m_backend;
    SystemLog& m_log;
    QString m_lastWriteError; // of the last write, while writes fail
    mutable QMutex m_mutex;
    QVariantMap m_persistent;
    QVariantMap m_registration;
    QVariantMap m_arguments;
};
