#include "platform/AtomicFile.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString errorText(const char* what, int error)
{
    return QStringLiteral("%1: %2").arg(QLatin1String(what), QString::fromLocal8Bit(std::strerror(error)));
}

bool writeAll(int fd, const QByteArray& bytes)
{
    const char* data = bytes.constData();
    qsizetype left = bytes.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, size_t(left));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            if (written == 0)
                errno = ENOSPC;
            return false;
        }
        data += written;
        left -= written;
    }
    return true;
}

} // namespace

namespace AtomicFile {

std::optional<QByteArray> read(const QString& path, QString* error, qint64 maxBytes)
{
    auto fail = [error](const QString& reason) -> std::optional<QByteArray> {
        if (error)
            *error = reason;
        return std::nullopt;
    };
    // Non-blocking, so a FIFO put in a file's place cannot hang the reader.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return fail(errorText("cannot open", errno));
    struct stat st
    {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return fail(QStringLiteral("not a regular file"));
    }
    if (st.st_size > maxBytes) {
        ::close(fd);
        return fail(QStringLiteral("larger than %1 bytes").arg(maxBytes));
    }
    QByteArray bytes;
    bytes.reserve(qsizetype(st.st_size));
    char buffer[64 * 1024];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            const int saved = errno;
            ::close(fd);
            return fail(errorText("cannot read", saved));
        }
        if (got == 0)
            break;
        if (bytes.size() + got > maxBytes) { // it grew while being read
            ::close(fd);
            return fail(QStringLiteral("larger than %1 bytes").arg(maxBytes));
        }
        bytes.append(buffer, got);
    }
    ::close(fd);
    return bytes;
}

QString write(const QString& path, const QByteArray& bytes, mode_t newFileMode)
{
    QString target = path;
    if (QFileInfo(path).isSymLink() && QFileInfo::exists(path))
        target = QFileInfo(path).canonicalFilePath();
    const QByteArray native = QFile::encodeName(target);
    const qsizetype slash = native.lastIndexOf('/');
    const QByteArray folder = slash < 0 ? QByteArray(".") : slash == 0 ? QByteArray("/") : native.left(slash);

    mode_t mode = newFileMode;
    struct stat st
    {};
    if (::stat(native.constData(), &st) == 0)
        mode = st.st_mode & 07777;

    QByteArray temporary = folder + "/." + native.mid(slash + 1) + ".corvella-XXXXXX";
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0)
        return errorText("cannot create a temporary file", errno);
    auto fail = [&](const char* what) {
        const int saved = errno;
        ::close(fd);
        ::unlink(temporary.constData());
        return errorText(what, saved);
    };
    if (::fchmod(fd, mode) != 0)
        return fail("cannot set the permissions");
    if (!writeAll(fd, bytes))
        return fail("cannot write");
    if (::fsync(fd) != 0)
        return fail("cannot sync");
    if (::close(fd) != 0) {
        const int saved = errno;
        ::unlink(temporary.constData());
        return errorText("cannot close", saved);
    }
    if (::rename(temporary.constData(), native.constData()) != 0) {
        const int saved = errno;
        ::unlink(temporary.constData());
        return errorText("cannot replace the file", saved);
    }
    // The rename itself must reach the disk too; file systems that cannot sync a folder say EINVAL.
    const int dirFd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirFd >= 0) {
        const bool synced = ::fsync(dirFd) == 0 || errno == EINVAL;
        const int saved = errno;
        ::close(dirFd);
        if (!synced)
            return errorText("cannot sync the folder", saved);
    }
    return QString();
}

} // namespace AtomicFile
