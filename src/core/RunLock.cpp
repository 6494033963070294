#include "core/RunLock.h"

#include "platform/SystemLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

QString RunLock::pathForHome(const QString& home)
{
    return QDir(home).filePath(QStringLiteral(".config/corvella/removal.lock"));
}

RunLock::RunLock(const QString& path, SystemLog& log)
{
    if (path.isEmpty())
        return;
    QDir().mkpath(QFileInfo(path).absolutePath());
    m_fd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (m_fd < 0) {
        log.log(QStringLiteral("Corvella could not open its run lock %1: %2")
                    .arg(path, QString::fromLocal8Bit(std::strerror(errno))));
        return;
    }
    while (::flock(m_fd, LOCK_EX) != 0 && errno == EINTR) {
    }
}

RunLock::~RunLock()
{
    if (m_fd >= 0)
        ::close(m_fd);
}
