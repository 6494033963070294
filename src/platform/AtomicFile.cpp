#include "platform/AtomicFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <cstring>
#include <dirent.h>
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

// Gives an unnamed file (O_TMPFILE) a free name from `pattern` (ending in "XXXXXX"), for the rename.
bool link(int fd, QByteArray& pattern)
{
    static const char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    const QByteArray self = "/proc/self/fd/" + QByteArray::number(fd);
    for (int attempt = 0; attempt < 100; ++attempt) {
        QByteArray name = pattern;
        for (qsizetype i = name.size() - 6; i < name.size(); ++i)
            name[i] = letters[QRandomGenerator::global()->bounded(int(sizeof letters) - 1)];
        if (::linkat(AT_FDCWD, self.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW) == 0) {
            pattern = name;
            return true;
        }
        if (errno != EEXIST)
            return false;
    }
    return false;
}

// Removes the temporary files a writer of this file left when it was killed between naming its new
// file and the rename (a moment, but it happens). Writers of one file take turns (the settings lock,
// the run lock), so none of these belongs to a live writer.
void removeLeftovers(const QByteArray& folder, const QByteArray& prefix)
{
    DIR* dir = ::opendir(folder.constData());
    if (!dir)
        return;
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name.size() == prefix.size() + 6 && name.startsWith(prefix))
            ::unlinkat(::dirfd(dir), entry->d_name, 0);
    }
    ::closedir(dir);
}

} // namespace

namespace AtomicFile {

namespace {

std::optional<QByteArray> readFile(const QString& path, QString* error, qint64 maxBytes, bool ownFileOnly)
{
    auto fail = [error](const QString& reason) -> std::optional<QByteArray> {
        if (error)
            *error = reason;
        return std::nullopt;
    };
    // Non-blocking, so a FIFO put in a file's place cannot hang the reader.
    const int fd = ::open(QFile::encodeName(path).constData(),
                          O_RDONLY | O_NONBLOCK | O_CLOEXEC | (ownFileOnly ? O_NOFOLLOW : 0));
    if (fd < 0)
        return fail(errno == ELOOP && ownFileOnly ? QStringLiteral("a link, not a file")
                                                  : errorText("cannot open", errno));
    struct stat st
    {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return fail(QStringLiteral("not a regular file"));
    }
    if (ownFileOnly && st.st_uid != ::geteuid()) {
        ::close(fd);
        return fail(QStringLiteral("owned by another user"));
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

QString writeFile(const QString& path, const QByteArray& bytes, mode_t newFileMode, bool followLink)
{
    QString target = path;
    if (followLink && QFileInfo(path).isSymLink() && QFileInfo::exists(path))
        target = QFileInfo(path).canonicalFilePath();
    const QByteArray native = QFile::encodeName(target);
    const qsizetype slash = native.lastIndexOf('/');
    const QByteArray folder = slash < 0 ? QByteArray(".") : slash == 0 ? QByteArray("/") : native.left(slash);

    mode_t mode = newFileMode;
    struct stat st
    {};
    if (::lstat(native.constData(), &st) == 0 && S_ISREG(st.st_mode))
        mode = st.st_mode & 07777;

    // The new file has no name while it is written, where the file system allows (O_TMPFILE), so a
    // program killed before the rename leaves nothing behind; it is named just before the rename,
    // through /proc (without it, a sandbox or a bare container, the file is named from the start).
    QByteArray temporary = folder + "/." + native.mid(slash + 1) + ".corvella-XXXXXX";
    int fd = ::access("/proc/self/fd", X_OK) == 0
                 ? ::open(folder.constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600)
                 : -1;
    bool named = fd < 0;
    if (named)
        fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0)
        return errorText("cannot create a temporary file", errno);
    auto fail = [&](const char* what) {
        const int saved = errno;
        ::close(fd);
        if (named)
            ::unlink(temporary.constData());
        return errorText(what, saved);
    };
    if (::fchmod(fd, mode) != 0)
        return fail("cannot set the permissions");
    if (!writeAll(fd, bytes))
        return fail("cannot write");
    if (::fsync(fd) != 0)
        return fail("cannot sync");
    if (!named && !(named = link(fd, temporary)))
        return fail("cannot name the temporary file");
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
    removeLeftovers(folder, "." + native.mid(slash + 1) + ".corvella-");
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

} // namespace

std::optional<QByteArray> read(const QString& path, QString* error, qint64 maxBytes)
{
    return readFile(path, error, maxBytes, false);
}

std::optional<QByteArray> readOwnFile(const QString& path, QString* error, qint64 maxBytes)
{
    return readFile(path, error, maxBytes, true);
}

QString write(const QString& path, const QByteArray& bytes, mode_t newFileMode)
{
    return writeFile(path, bytes, newFileMode, true);
}

QString replaceName(const QString& path, const QByteArray& bytes, mode_t newFileMode)
{
    return writeFile(path, bytes, newFileMode, false);
}

} // namespace AtomicFile
