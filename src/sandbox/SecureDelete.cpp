#include "sandbox/SecureDelete.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool exists(const QByteArray& path)
{
    struct stat st
    {};
    return ::stat(path.constData(), &st) == 0;
}

bool allPasses(const QString& path)
{
    return SecureDelete::wipe(path, 1) && SecureDelete::wipe(path, 2) && SecureDelete::wipe(path, 3);
}

} // namespace

namespace SecureDelete {

bool wipe(const QString& path, int phase)
{
    unsigned char buffer[1024];
    if (phase == 1) {
        std::fill(std::begin(buffer), std::end(buffer), 0x55);
    } else if (phase == 2) {
        std::fill(std::begin(buffer), std::end(buffer), 0xAA);
    } else if (phase == 3) {
        std::random_device entropy;
        std::mt19937 generator(entropy());
        for (unsigned char& byte : buffer)
            byte = static_cast<unsigned char>(generator() % 255); // 0..254: 0xFF never occurs
    } else {
        return false;
    }

    // O_NOFOLLOW: a link is never written through, so a link out of the home folder stays harmless.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct stat st
    {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return false;
    }
    // Only the low 32 bits of the size count, as the wipe has always done.
    uint32_t remaining = static_cast<uint32_t>(st.st_size);
    while (remaining > 0) {
        const size_t chunk = std::min<size_t>(remaining, sizeof buffer);
        const ssize_t written = ::write(fd, buffer, chunk);
        if (written < 0 && errno == EINTR)
            continue;
        // A write that fails outright would fail again for ever: the pass fails instead of spinning.
        if (written <= 0) {
            ::close(fd);
            return false;
        }
        remaining -= static_cast<uint32_t>(written);
    }
    return ::close(fd) == 0;
}

bool wipe(const QString& path)
{
    const QByteArray native = QFile::encodeName(path);
    if (!exists(native))
        return true;
    struct stat st
    {};
    if (::stat(native.constData(), &st) == 0 && S_ISDIR(st.st_mode))
        return true; // a folder's files are removed plainly by the caller
    return allPasses(path);
}

bool wipeContentsofDir(const QString& path)
{
    if (!exists(QFile::encodeName(path)))
        return true;
    return allPasses(path);
}

} // namespace SecureDelete
