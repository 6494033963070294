#include "platform/linux/PlistFileDefaultsBackend.h"

#include "platform/AtomicFile.h"
#include "platform/PropertyList.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

PlistFileDefaultsBackend::PlistFileDefaultsBackend(const QString& filePath, QObject* parent)
    : UserDefaultsBackend(parent), m_filePath(filePath)
{
    // Private when Corvella makes it; a folder that exists keeps the permissions its owner chose.
    const QString folder = QFileInfo(m_filePath).absolutePath();
    if (!QFileInfo::exists(folder) && QDir().mkpath(folder))
        QFile::setPermissions(folder,
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    // Editors and atomic writers replace the file, so the folder is watched as well; a burst of
    // events (write, rename) becomes one reload.
    m_settle.setSingleShot(true);
    m_settle.setInterval(50);
    connect(&m_settle, &QTimer::timeout, this, [this] {
        watch();
        emit changedOnDisk();
    });
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_settle, qOverload<>(&QTimer::start));
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_settle, qOverload<>(&QTimer::start));
    watch();
}

PlistFileDefaultsBackend::~PlistFileDefaultsBackend()
{
    if (m_lockFd >= 0)
        ::close(m_lockFd);
}

// Private when Corvella makes it; a folder that exists keeps the permissions its owner chose.
void PlistFileDefaultsBackend::makeFolder()
{
    const QString folder = QFileInfo(m_filePath).absolutePath();
    if (!QFileInfo::exists(folder) && QDir().mkpath(folder))
        QFile::setPermissions(folder,
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

// While the settings folder is gone (a user deleted ~/.config/corvella), its nearest existing
// ancestor is watched instead, so the folder and file made again are noticed.
void PlistFileDefaultsBackend::watch()
{
    QString folder = QFileInfo(m_filePath).absolutePath();
    while (!QFileInfo(folder).isDir() && folder.size() > 1)
        folder = QFileInfo(folder).absolutePath();
    QStringList wanted{folder};
    if (QFileInfo::exists(m_filePath))
        wanted.append(m_filePath);
    const QStringList watched = m_watcher.directories() + m_watcher.files();
    for (const QString& path : watched) {
        if (!wanted.contains(path))
            m_watcher.removePath(path);
    }
    for (const QString& path : std::as_const(wanted)) {
        if (!watched.contains(path))
            m_watcher.addPath(path);
    }
}

std::optional<QVariantMap> PlistFileDefaultsBackend::read()
{
    // An editor that saves in place (truncate, then write) leaves a half-written file for a moment:
    // read again a few times before calling it unreadable.
    for (int attempt = 0;; ++attempt) {
        if (!QFileInfo::exists(m_filePath) && !QFileInfo(m_filePath).isSymLink())
            return QVariantMap();
        const std::optional<QByteArray> bytes = AtomicFile::read(m_filePath);
        if (auto domain = bytes ? parse(*bytes) : std::nullopt)
            return domain;
        if (attempt == kReadAttempts - 1)
            return std::nullopt;
        QThread::msleep(kReadRetryMs);
    }
}

std::optional<QVariantMap> PlistFileDefaultsBackend::parse(const QByteArray& bytes)
{
    const auto value = PropertyList::parse(bytes);
    if (value && value->typeId() == QMetaType::QVariantMap)
        return value->toMap();
    return std::nullopt;
}

bool PlistFileDefaultsBackend::write(const QVariantMap& domain)
{
    const auto xml = PropertyList::toXml(domain);
    if (!xml) {
        m_error = QStringLiteral("a value cannot be stored in a property list");
        return false;
    }
    makeFolder(); // deleted while Corvella runs
    m_error = AtomicFile::write(m_filePath, *xml, 0600);
    return m_error.isEmpty();
}

QString PlistFileDefaultsBackend::quarantine()
{
    const QString stamp = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString target = m_filePath + QStringLiteral(".unreadable-") + stamp;
    for (int n = 2; QFileInfo::exists(target); ++n)
        target = m_filePath + QStringLiteral(".unreadable-") + stamp + QLatin1Char('-') + QString::number(n);
    return QFile::rename(m_filePath, target) ? target : QString();
}

void PlistFileDefaultsBackend::lock()
{
    if (m_lockDepth++ > 0)
        return;
    // A lock file deleted with its folder no longer excludes anyone: open the one there now.
    const QByteArray lockPath = QFile::encodeName(m_filePath + QStringLiteral(".lock"));
    struct stat held
    {
    }, there{};
    if (m_lockFd >= 0 && (::fstat(m_lockFd, &held) != 0 || ::stat(lockPath.constData(), &there) != 0 ||
                          held.st_ino != there.st_ino || held.st_dev != there.st_dev)) {
        ::close(m_lockFd);
        m_lockFd = -1;
    }
    if (m_lockFd < 0) {
        makeFolder();
        m_lockFd = ::open(lockPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    }
    // Without a lock file (read-only folder) writes still work, only unserialised.
    if (m_lockFd >= 0) {
        while (::flock(m_lockFd, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
}

void PlistFileDefaultsBackend::unlock()
{
    if (--m_lockDepth > 0)
        return;
    if (m_lockFd >= 0)
        ::flock(m_lockFd, LOCK_UN);
}
