#include "platform/linux/PlistFileDefaultsBackend.h"

#include "platform/PropertyList.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

PlistFileDefaultsBackend::PlistFileDefaultsBackend(const QString& filePath, QObject* parent)
    : UserDefaultsBackend(parent), m_filePath(filePath)
{
    QDir().mkpath(QFileInfo(m_filePath).absolutePath());
    QFile::setPermissions(QFileInfo(m_filePath).absolutePath(),
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

void PlistFileDefaultsBackend::watch()
{
    const QString folder = QFileInfo(m_filePath).absolutePath();
    if (!m_watcher.directories().contains(folder))
        m_watcher.addPath(folder);
    if (QFileInfo::exists(m_filePath) && !m_watcher.files().contains(m_filePath))
        m_watcher.addPath(m_filePath);
}

std::optional<QVariantMap> PlistFileDefaultsBackend::read()
{
    QFile file(m_filePath);
    if (!file.exists())
        return QVariantMap();
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const auto value = PropertyList::parse(file.readAll());
    if (!value || value->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return value->toMap();
}

bool PlistFileDefaultsBackend::write(const QVariantMap& domain)
{
    const auto xml = PropertyList::toXml(domain);
    if (!xml)
        return false;
    QSaveFile file(m_filePath);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(*xml);
    return file.commit();
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
    if (m_lockFd < 0) {
        const QByteArray lockPath = QFile::encodeName(m_filePath + QStringLiteral(".lock"));
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
