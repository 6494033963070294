#include "sandbox/SecureDelete.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// The largest pattern a caller may ask for.
constexpr size_t kLargestWrite = 64 * 1024;
// The pattern is written repeated in blocks of about this size: the bytes on disk are the same as with
// one write per pattern, but 1 KiB writes made a wipe half again as slow as shred.
constexpr size_t kBlock = 1024 * 1024;

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

// Writes the pattern repeated over the range, from its first byte, in writes as large as the buffer
// (which holds the pattern repeated); a short write goes on where it stopped in the pattern.
bool writeRange(int fd, const std::vector<unsigned char>& buffer, size_t patternSize, off_t from, off_t to)
{
    for (off_t at = from; at < to;) {
        const size_t phase = size_t((at - from) % off_t(patternSize));
        const size_t chunk = size_t(std::min<off_t>(to - at, off_t(buffer.size() - phase)));
        const ssize_t written = ::pwrite(fd, buffer.data() + phase, chunk, at);
        if (written < 0 && errno == EINTR)
            continue;
        // A write that fails outright would fail again for ever: the pass fails instead of spinning.
        if (written <= 0)
            return false;
        at += written;
    }
    return true;
}

// One pass over the data of the file (the holes of a sparse file stay holes), then synced, so the
// kernel cannot drop it when the file is unlinked.
bool pass(int fd, int phase, off_t size, size_t writeSize)
{
    writeSize = std::clamp<size_t>(writeSize, 1, kLargestWrite);
    // Whole patterns, no more than the file needs.
    const size_t patterns = std::clamp<size_t>(size_t(std::min<off_t>(size, off_t(kBlock))) / writeSize + 1,
                                               1, std::max<size_t>(1, kBlock / writeSize));
    std::vector<unsigned char> buffer(patterns * writeSize);
    fillPattern(buffer.data(), writeSize, phase);
    for (size_t copy = 1; copy < patterns; ++copy)
        std::copy_n(buffer.begin(), writeSize, buffer.begin() + long(copy * writeSize));
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
