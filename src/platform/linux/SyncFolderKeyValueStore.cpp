#include "platform/linux/SyncFolderKeyValueStore.h"

#include "platform/AtomicFile.h"
#include "platform/PropertyList.h"
#include "platform/SettingsKeys.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

const QString kValues = QStringLiteral("values");
const QString kModified = QStringLiteral("modified");

// Excludes this user's other writers (the agents of other sessions) for one read-merge-write. The lock
// is a file of the user's own settings folder: a lock on the synced folder could be held by anyone who
// can read that folder, and would stop sync for good.
class WriterLock
{
public:
    explicit WriterLock(const QString& path)
    {
        QDir().mkpath(QFileInfo(path).path());
        m_fd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
        // Never waits long: a writer that hangs (a stalled network share) must not hang the agent.
        for (int attempt = 0; m_fd >= 0 && attempt < 200; ++attempt) {
            if (::flock(m_fd, LOCK_EX | LOCK_NB) == 0) {
                m_held = true;
                return;
            }
            if (errno != EWOULDBLOCK && errno != EINTR)
                return;
            QThread::msleep(10);
        }
    }
    ~WriterLock()
    {
        if (m_fd >= 0)
            ::close(m_fd); // releases the lock
    }
    bool held() const { return m_held; }

private:
    int m_fd;
    bool m_held = false;
};

// What a sync tool names the copy it keeps when two machines changed the file at once: Syncthing
// "corvella-settings.sync-conflict-20261122-101010-ABCDEFG.plist", Nextcloud "corvella-settings (conflicted
// copy 2026-11-22 101010).plist", Dropbox "corvella-settings (Ann's conflicted copy 2026-11-22).plist",
// ownCloud "corvella-settings_conflict-20261122-101010.plist". Only these are merged and removed: a
// "corvella-settings-backup.plist" of the user's is the user's.
bool isConflictCopy(const QString& name)
{
    static const QRegularExpression names(
        QStringLiteral("^corvella-settings(\\.sync-conflict-\\d{8}-\\d{6}-[A-Z0-9]{7}"
                       "| \\([^()/]*conflicted copy[^()/]*( \\(\\d+\\))?\\)"
                       "|_conflict-\\d{8}-\\d{6})\\.plist$"));
    return names.match(name).hasMatch();
}

} // namespace

bool SyncFolderKeyValueStore::Entry::operator==(const Entry& other) const
{
    return modified == other.modified && value == other.value && value.typeId() == other.value.typeId();
}

SyncFolderKeyValueStore::SyncFolderKeyValueStore(UserDefaults& defaults, SystemLog& log, const QString& home,
                                                 QObject* parent)
    : CloudKeyValueStore(parent), m_defaults(defaults), m_log(log), m_home(home),
      m_lockPath(QFileInfo(UserDefaults::filePathForHome(home)).path() + QStringLiteral("/sync.lock"))
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(200);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_settle, qOverload<>(&QTimer::start));
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_settle, qOverload<>(&QTimer::start));
    connect(&m_settle, &QTimer::timeout, this, [this] { synchronize(); });
}

SyncFolderKeyValueStore::~SyncFolderKeyValueStore() = default;

SyncFolderKeyValueStore::FolderCheck SyncFolderKeyValueStore::checkFolder(const QString& chosen,
                                                                          const QString& home)
{
    const QString path = chosen.startsWith(QLatin1String("~/")) ? home + chosen.mid(1) : chosen;
    const QFileInfo info(path);
    if (chosen.isEmpty())
        return {FolderCheck::None, path};
    if (!info.isAbsolute())
        return {FolderCheck::NotAFullPath, path};
    if (!info.isDir())
        return {FolderCheck::Missing, path};
    const QString folder = info.canonicalFilePath();
    const QString root = QFileInfo(home).canonicalFilePath();
    if (root.isEmpty() || !QString(folder + QLatin1Char('/')).startsWith(root + QLatin1Char('/')))
        return {FolderCheck::OutsideHome, path};
    return {FolderCheck::Usable, folder};
}

SyncFolderKeyValueStore::FolderCheck SyncFolderKeyValueStore::chosenFolder()
{
    const FolderCheck check =
        checkFolder(m_defaults.stringForKey(SettingsKeys::syncFolder).value_or(QString()), m_home);
    if (check.kind == FolderCheck::NotAFullPath || check.kind == FolderCheck::Missing)
        logOnce(QStringLiteral("Corvella Sync: the synced folder %1 cannot be found").arg(check.path));
    if (check.kind == FolderCheck::OutsideHome)
        logOnce(QStringLiteral("Corvella Sync: the synced folder %1 is outside the home folder; "
                               "Corvella writes nowhere else")
                    .arg(check.path));
    return check;
}

QVariantMap SyncFolderKeyValueStore::dictionaryRepresentation() const
{
    QMutexLocker locker(&m_mutex);
    QVariantMap values;
    for (auto it = m_entries.cbegin(); it != m_entries.cend(); ++it)
        values.insert(it.key(), it->value);
    return values;
}

void SyncFolderKeyValueStore::setObject(const QVariant& value, const QString& forKey)
{
    const auto normal = PropertyList::normalized(value);
    if (!normal)
        return;
    QMutexLocker locker(&m_mutex);
    Entry& entry = m_entries[forKey];
    if (entry.value == *normal && entry.value.typeId() == normal->typeId())
        return; // every change of any setting pushes every shared key: only real changes get a new time
    entry.value = *normal;
    entry.modified = std::max(QDateTime::currentMSecsSinceEpoch(), entry.modified + 1);
}

bool SyncFolderKeyValueStore::synchronize()
{
    const FolderCheck check = chosenFolder();
    if (check.kind != FolderCheck::Usable)
        return false;
    const QString folder = check.path;
    if (QThread::currentThread() == thread())
        watch(folder);
    else
        QMetaObject::invokeMethod(this, [this, folder] { watch(folder); });

    WriterLock lock(m_lockPath);
    if (!lock.held()) {
        logOnce(QStringLiteral("Corvella Sync: the lock %1 cannot be taken").arg(m_lockPath));
        return false;
    }
    const QString path = folder + QLatin1Char('/') + kFileName;
    QString problem;
    const std::optional<Entries> stored = readEntries(path, &problem);
    if (!stored && (QFileInfo::exists(path) || QFileInfo(path).isSymLink())) {
        // Whatever it is, it is not replaced: it may be a link to a file of the user's, or a newer
        // version's file; the user is told, and nothing is shared until it reads.
        logOnce(QStringLiteral("Corvella Sync: %1 was left as it is and nothing is shared (%2)")
                    .arg(path, problem));
        return false;
    }
    Entries merged = stored.value_or(Entries());
    QStringList copies;
    for (const QString& name : QDir(folder).entryList(QDir::Files | QDir::System)) {
        if (!isConflictCopy(name))
            continue;
        // A copy that does not read (still being written, a link, too large) is left alone.
        const QString copy = folder + QLatin1Char('/') + name;
        if (const auto entries = readEntries(copy, &problem)) {
            mergeInto(merged, *entries);
            copies.append(copy);
        } else {
            logOnce(QStringLiteral("Corvella Sync: %1 was left as it is (%2)").arg(copy, problem));
        }
    }

    QMutexLocker locker(&m_mutex);
    const Entries before = m_entries;
    mergeInto(merged, m_entries);
    if (!stored || merged != *stored) {
        const QString error = AtomicFile::replaceName(path, serialized(merged));
        if (!error.isEmpty()) {
            m_log.log(QStringLiteral("Corvella Sync: could not save %1: %2").arg(path, error));
            return false;
        }
    }
    for (const QString& copy : std::as_const(copies))
        QFile::remove(copy); // merged into the file just written
    m_entries = merged;
    m_lastLogged.clear();
    bool arrived = false;
    for (auto it = merged.cbegin(); it != merged.cend() && !arrived; ++it)
        arrived = !before.contains(it.key()) || !(before.value(it.key()) == *it);
    locker.unlock();
    if (arrived)
        emit didChangeExternally();
    return true;
}

void SyncFolderKeyValueStore::accountStatus(std::function<void(AccountStatus)> completion)
{
    // A chosen folder that is missing may be a share not mounted yet; one outside the home never works.
    const FolderCheck::Kind kind = chosenFolder().kind;
    const AccountStatus status = kind == FolderCheck::Usable    ? AccountStatus::Available
                                 : kind == FolderCheck::Missing ? AccountStatus::CouldNotDetermine
                                                                : AccountStatus::NoAccount;
    QMetaObject::invokeMethod(
        this, [completion, status] { completion(status); }, Qt::QueuedConnection);
}

std::optional<SyncFolderKeyValueStore::Entries> SyncFolderKeyValueStore::readEntries(const QString& path,
                                                                                     QString* problem)
{
    const auto bytes = AtomicFile::readOwnFile(path, problem, kMaxFileBytes);
    if (!bytes)
        return std::nullopt;
    auto entries = parseEntries(*bytes);
    if (!entries && problem)
        *problem = QStringLiteral("not a settings file");
    return entries;
}

std::optional<SyncFolderKeyValueStore::Entries> SyncFolderKeyValueStore::parseEntries(const QByteArray& bytes)
{
    const auto root = PropertyList::parse(bytes);
    if (!root || root->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    const QVariantMap values = root->toMap().value(kValues).toMap();
    const QVariantMap modified = root->toMap().value(kModified).toMap();
    Entries entries;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        entries.insert(it.key(), {it.value(), modified.value(it.key()).toLongLong()});
    return entries;
}

QByteArray SyncFolderKeyValueStore::serialized(const Entries& entries)
{
    QVariantMap values, modified;
    for (auto it = entries.cbegin(); it != entries.cend(); ++it) {
        values.insert(it.key(), it->value);
        modified.insert(it.key(), it->modified);
    }
    return PropertyList::toXml(QVariantMap{{kValues, values}, {kModified, modified}}).value_or(QByteArray());
}

// Newest value of each key wins; a tie goes the same way on every machine.
void SyncFolderKeyValueStore::mergeInto(Entries& into, const Entries& from)
{
    for (auto it = from.cbegin(); it != from.cend(); ++it) {
        const auto mine = into.constFind(it.key());
        const bool newer =
            mine == into.cend() || it->modified > mine->modified ||
            (it->modified == mine->modified && PropertyList::toXml(it->value).value_or(QByteArray()) >
                                                   PropertyList::toXml(mine->value).value_or(QByteArray()));
        if (newer)
            into.insert(it.key(), *it);
    }
}

void SyncFolderKeyValueStore::watch(const QString& folder)
{
    if (m_watchedFolder != folder) {
        if (!m_watcher.files().isEmpty())
            m_watcher.removePaths(m_watcher.files());
        if (!m_watchedFolder.isEmpty())
            m_watcher.removePath(m_watchedFolder);
        m_watchedFolder = folder;
        m_watcher.addPath(folder);
    }
    // The folder sees a file replaced; the file itself sees a tool that writes in place. A replaced file
    // drops out of the watch, so it is added again.
    const QString path = folder + QLatin1Char('/') + kFileName;
    if (!m_watcher.files().contains(path) && QFileInfo::exists(path))
        m_watcher.addPath(path);
}

void SyncFolderKeyValueStore::logOnce(const QString& line)
{
    QMutexLocker locker(&m_mutex);
    if (line == m_lastLogged)
        return;
    m_lastLogged = line;
    locker.unlock();
    m_log.log(line);
}
