#include "sandbox/SecureDelete.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The largest write size a caller may ask for; the buffer is filled once per pass.
constexpr size_t kLargestWrite = 64 * 1024;

// The folder and the last component of a path, the folder opened for *at calls; -1 when it cannot be.
struct Parent
{
    explicit Parent(const QString& path)
    {
        const QByteArray native = QFile::encodeName(path);
        const qsizetype slash = native.lastIndexOf('/');
        name = slash < 0 ? native : native.mid(slash + 1);
        const QByteArray folder = slash < 0    ? QByteArray(".")
                                  : slash == 0 ? QByteArray("/")
                                               : native.left(slash);
        fd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }
    ~Parent()
    {
        if (fd >= 0)
            ::close(fd);
    }
    Parent(const Parent&) = delete;
    Parent& operator=(const Parent&) = delete;

    int fd = -1;
    QByteArray name;
};

void fillPattern(unsigned char* buffer, size_t size, int phase)
{
    if (phase == 1) {
        std::fill(buffer, buffer + size, 0x55);
    } else if (phase == 2) {
        std::fill(buffer, buffer + size, 0xAA);
    } else {
        std::random_device entropy;
        std::mt19937 generator(entropy());
        for (size_t i = 0; i < size; ++i)
            buffer[i] = static_cast<unsigned char>(generator() % 255); // 0..254: 0xFF never occurs
    }
}

bool writeRange(int fd, const unsigned char* buffer, size_t writeSize, off_t from, off_t to)
{
    while (from < to) {
        const size_t chunk = size_t(std::min<off_t>(to - from, off_t(writeSize)));
        const ssize_t written = ::pwrite(fd, buffer, chunk, from);
        if (written < 0 && errno == EINTR)
            continue;
        // A write that fails outright would fail again for ever: the pass fails instead of spinning.
        if (written <= 0)
            return false;
        from += written;
    }
    return true;
}

// One pass over the data of the file (the holes of a sparse file stay holes), then synced, so the
// kernel cannot drop it when the file is unlinked.
bool pass(int fd, int phase, off_t size, size_t writeSize)
{
    static thread_local unsigned char buffer[kLargestWrite];
    writeSize = std::clamp<size_t>(writeSize, 1, kLargestWrite);
    fillPattern(buffer, writeSize, phase);
    off_t offset = 0;
    while (offset < size) {
        off_t data = ::lseek(fd, offset, SEEK_DATA);
        if (data < 0 && errno == ENXIO)
            break; // only a hole is left
        off_t hole = data < 0 ? size : ::lseek(fd, data, SEEK_HOLE);
        if (data < 0) // no hole support: all of it is data
            data = offset;
        if (hole < 0 || hole > size)
            hole = size;
        if (!writeRange(fd, buffer, writeSize, data, hole))
            return false;
        offset = hole;
    }
    return ::fsync(fd) == 0;
}

// The regular file, opened for writing without following a link; -1 when it cannot be.
int openForWipe(int dirFd, const QByteArray& name, struct stat& st)
{
    const int fd = ::openat(dirFd, name.constData(), O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return -1;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return -1;
    }
    return fd;
}

bool wipeOpen(int fd, const struct stat& st, size_t writeSize)
{
    for (int phase = 1; phase <= 3; ++phase) {
        if (!pass(fd, phase, st.st_size, writeSize))
            return false;
    }
    return true;
}

} // namespace

namespace SecureDelete {

Outcome wipeAt(int dirFd, const QByteArray& name, size_t writeSize)
{
    struct stat st
    {};
    if (::fstatat(dirFd, name.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT ? Outcome::Nothing : Outcome::Failed;
    if (S_ISDIR(st.st_mode))
        return Outcome::Nothing;
    const int fd = openForWipe(dirFd, name, st);
    if (fd < 0)
        return Outcome::Failed;
    if (st.st_nlink > 1) {
        ::close(fd);
        return Outcome::SharedByLinks;
    }
    const bool wiped = wipeOpen(fd, st, writeSize);
    return ::close(fd) == 0 && wiped ? Outcome::Wiped : Outcome::Failed;
}

bool wipe(const QString& path, int phase)
{
    if (phase < 1 || phase > 3)
        return false;
    const Parent parent(path);
    struct stat st
    {};
    const int fd = parent.fd < 0 ? -1 : openForWipe(parent.fd, parent.name, st);
    if (fd < 0)
        return false;
    const bool written = pass(fd, phase, st.st_size, documentedWriteSize);
    return ::close(fd) == 0 && written;
}

bool wipe(const QString& path)
{
    const Parent parent(path);
    return parent.fd >= 0 && wipeAt(parent.fd, parent.name) != Outcome::Failed;
}

bool wipeContentsofDir(const QString& path)
{
    const Parent parent(path);
    if (parent.fd < 0)
        return false;
    struct stat st
    {};
    if (::fstatat(parent.fd, parent.name.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT)
        return true;
    const int fd = openForWipe(parent.fd, parent.name, st);
    if (fd < 0)
        return false;
    const bool wiped = wipeOpen(fd, st, documentedWriteSize);
    return ::close(fd) == 0 && wiped;
}

} // namespace SecureDelete
