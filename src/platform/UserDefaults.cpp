#include "platform/UserDefaults.h"

#include "platform/PropertyList.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaultsBackend.h"

#include <QDir>
#include <QSet>
#include <QThread>

namespace {

QVariantMap merged(const QVariantMap& registration, const QVariantMap& persistent)
{
    QVariantMap all = registration;
    for (auto it = persistent.cbegin(); it != persistent.cend(); ++it)
        all.insert(it.key(), it.value());
    return all;
}

// Holds the backend's cross-process lock for one read-modify-write.
class BackendLock
{
public:
    explicit BackendLock(UserDefaultsBackend& backend) : m_backend(backend) { m_backend.lock(); }
    ~BackendLock() { m_backend.unlock(); }
    BackendLock(const BackendLock&) = delete;
    BackendLock& operator=(const BackendLock&) = delete;

private:
    UserDefaultsBackend& m_backend;
};

} // namespace

QString UserDefaults::filePathForHome(const QString& home)
{
    return QDir(home).filePath(QStringLiteral(".config/corvella/") + kDomain + QStringLiteral(".plist"));
}

UserDefaults::UserDefaults(std::unique_ptr<UserDefaultsBackend> backend, SystemLog& log, QObject* parent)
    : QObject(parent), m_backend(std::move(backend)), m_log(log)
{
    std::optional<QVariantMap> stored;
    {
        BackendLock lock(*m_backend);
        stored = m_backend->read();
        if (!stored) {
            const QString keptAs = m_backend->quarantine();
            m_log.log(QStringLiteral("The settings could not be read; the unreadable file was kept as \"%1\" "
                                     "and Corvella starts from its default settings.")
                          .arg(keptAs));
        }
    }
    m_persistent = stored.value_or(QVariantMap());
    connect(m_backend.get(), &UserDefaultsBackend::changedOnDisk, this, [this] { reload(); });
}

UserDefaults::~UserDefaults() = default;

void UserDefaults::registerDefaults(const QVariantMap& registration)
{
    QMutexLocker lock(&m_mutex);
    for (auto it = registration.cbegin(); it != registration.cend(); ++it) {
        if (auto value = PropertyList::normalized(it.value()))
            m_registration.insert(it.key(), *value);
    }
}

void UserDefaults::setArgument(const QVariant& value, const QString& forKey)
{
    QMutexLocker lock(&m_mutex);
    if (auto normalized = PropertyList::normalized(value))
        m_arguments.insert(forKey, *normalized);
}

std::optional<QVariant> UserDefaults::objectForKey(const QString& key) const
{
    QMutexLocker lock(&m_mutex);
    if (auto it = m_arguments.constFind(key); it != m_arguments.cend())
        return *it;
    if (auto it = m_persistent.constFind(key); it != m_persistent.cend())
        return *it;
    if (auto it = m_registration.constFind(key); it != m_registration.cend())
        return *it;
    return std::nullopt;
}

bool UserDefaults::boolForKey(const QString& key) const
{
    const auto value = objectForKey(key);
    if (!value)
        return false;
    switch (value->typeId()) {
    case QMetaType::Bool:
        return value->toBool();
    case QMetaType::LongLong:
    case QMetaType::Double:
        return value->toDouble() != 0;
    case QMetaType::QString: {
        const QString s = value->toString().trimmed().toLower();
        return s == QLatin1String("yes") || s == QLatin1String("true") || s.toLongLong() != 0;
    }
    default:
        return false;
    }
}

QVariantList UserDefaults::arrayForKey(const QString& key) const
{
    const auto value = objectForKey(key);
    return value && value->typeId() == QMetaType::QVariantList ? value->toList() : QVariantList();
}

QVariantMap UserDefaults::dictionaryForKey(const QString& key) const
{
    const auto value = objectForKey(key);
    return value && value->typeId() == QMetaType::QVariantMap ? value->toMap() : QVariantMap();
}

std::optional<QString> UserDefaults::stringForKey(const QString& key) const
{
    const auto value = objectForKey(key);
    if (!value || value->typeId() != QMetaType::QString)
        return std::nullopt;
    return value->toString();
}

std::optional<QByteArray> UserDefaults::dataForKey(const QString& key) const
{
    const auto value = objectForKey(key);
    if (!value || value->typeId() != QMetaType::QByteArray)
        return std::nullopt;
    return value->toByteArray();
}

qint64 UserDefaults::integerForKey(const QString& key) const
{
    const auto value = objectForKey(key);
    if (!value)
        return 0;
    switch (value->typeId()) {
    case QMetaType::Bool:
    case QMetaType::LongLong:
    case QMetaType::Double:
    case QMetaType::QString:
        return value->toLongLong();
    default:
        return 0;
    }
}

QVariantMap UserDefaults::dictionaryRepresentation() const
{
    QMutexLocker lock(&m_mutex);
    return merged(m_registration, m_persistent);
}

bool UserDefaults::setObject(const QVariant& value, const QString& forKey)
{
    auto normal = PropertyList::normalized(value);
    if (!normal)
        return false;
    return change({{forKey, normal}});
}

bool UserDefaults::setObjects(const QVariantMap& values)
{
    QMap<QString, std::optional<QVariant>> changes;
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        auto normal = PropertyList::normalized(it.value());
        if (!normal)
            return false;
        changes.insert(it.key(), normal);
    }
    return change(changes);
}

bool UserDefaults::removeObjectForKey(const QString& key)
{
    return change({{key, std::nullopt}});
}

bool UserDefaults::removeObjectsForKeys(const QStringList& keys)
{
    QMap<QString, std::optional<QVariant>> changes;
    for (const QString& key : keys)
        changes.insert(key, std::nullopt);
    return change(changes);
}

// Applies one key's change on top of what the store holds now, so writers of other keys (another
// process included) lose nothing. What could not be saved did not happen: the values stay as they
// are on disk, and the caller learns it.
bool UserDefaults::change(const QMap<QString, std::optional<QVariant>>& changes)
{
    QVariantMap before, after;
    {
        QMutexLocker lock(&m_mutex);
        BackendLock storeLock(*m_backend);
        before = merged(m_registration, m_persistent);
        std::optional<QVariantMap> stored = m_backend->read();
        if (!stored) {
            const QString keptAs = m_backend->quarantine();
            m_log.log(QStringLiteral("The settings file had become unreadable; it was kept as \"%1\".")
                          .arg(keptAs));
        }
        QVariantMap domain = stored.value_or(m_persistent);
        for (auto it = changes.cbegin(); it != changes.cend(); ++it) {
            if (it.value())
                domain.insert(it.key(), *it.value());
            else
                domain.remove(it.key());
        }
        if ((!stored || domain != *stored) && !m_backend->write(domain)) {
            // Said once for as long as the reason lasts: on a full disk every change fails alike.
            if (m_backend->errorString() != m_lastWriteError) {
                m_lastWriteError = m_backend->errorString();
                m_log.log(QStringLiteral("Corvella could not save its settings (%1): %2")
                              .arg(changes.keys().join(QStringLiteral(", ")), m_lastWriteError));
            }
            return false;
        }
        m_lastWriteError.clear();
        m_persistent = domain;
        after = merged(m_registration, m_persistent);
    }
    announce(before, after);
    return true;
}

bool UserDefaults::synchronize()
{
    return reload();
}

bool UserDefaults::reload()
{
    QVariantMap before, after;
    {
        QMutexLocker lock(&m_mutex);
        std::optional<QVariantMap> stored;
        {
            BackendLock storeLock(*m_backend);
            stored = m_backend->read();
        }
        // An unreadable store may be in the middle of another program's non-atomic write: keep
        // what we have; the next write sets it aside if it is still broken then.
        if (!stored)
            return false;
        before = merged(m_registration, m_persistent);
        m_persistent = *stored;
        after = merged(m_registration, m_persistent);
    }
    announce(before, after);
    return true;
}

void UserDefaults::announce(const QVariantMap& before, const QVariantMap& after)
{
    QList<std::tuple<QString, QVariant, QVariant>> changes;
    QSet<QString> keys(before.keyBegin(), before.keyEnd());
    for (auto it = after.keyBegin(); it != after.keyEnd(); ++it)
        keys.insert(*it);
    for (const QString& key : keys) {
        const QVariant oldValue = before.value(key), newValue = after.value(key);
        if (oldValue != newValue || oldValue.typeId() != newValue.typeId())
            changes.append({key, oldValue, newValue});
    }
    if (changes.isEmpty())
        return;
    auto deliver = [this, changes] {
        for (const auto& [key, oldValue, newValue] : changes)
            emit valueChanged(key, oldValue, newValue);
        emit defaultsChanged();
    };
    if (QThread::currentThread() == thread())
        deliver();
    else
        QMetaObject::invokeMethod(this, deliver, Qt::QueuedConnection);
}
