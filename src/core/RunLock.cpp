#include "core/RunLock.h"

#include "platform/SystemLog.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {
// Short enough that a stop request is heard at once, long enough to cost nothing while waiting.
constexpr int kPollMs = 50;
} // namespace

QString RunLock::pathForHome(const QString& home)
{
    return QDir(home).filePath(QStringLiteral(".config/corvella/removal.lock"));
}

RunLock::RunLock(const QString& path, SystemLog& log, const Wait& wait)
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
    // Polled rather than blocking, so a wait can always be given up.
    QElapsedTimer clock;
    clock.start();
    bool announced = false;
    for (;;) {
        if (::flock(m_fd, LOCK_EX | LOCK_NB) == 0)
            return;
        if (errno != EWOULDBLOCK && errno != EINTR) {
            log.log(QStringLiteral("Corvella could not take its run lock %1: %2")
                        .arg(path, QString::fromLocal8Bit(std::strerror(errno))));
            return;
        }
        if (!announced) {
            announced = true;
            if (wait.waiting)
                wait.waiting();
        }
        if ((wait.stop && wait.stop()) || (wait.timeoutMs >= 0 && clock.elapsed() >= wait.timeoutMs)) {
            m_held = false;
            return;
        }
        QThread::msleep(kPollMs);
    }
}

RunLock::RunLock(const QString& path, SystemLog& log) : RunLock(path, log, Wait()) {}

RunLock::~RunLock()
{
    if (m_fd >= 0)
        ::close(m_fd);
}
