#include "support/SmallFileSystem.h"

#include <QFile>

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

SmallFileSystem::SmallFileSystem(int kibibytes)
{
    const QByteArray options = "size=" + QByteArray::number(kibibytes) + "k,mode=0755";
    m_mounted = m_dir.isValid() && ::mount("tmpfs", QFile::encodeName(m_dir.path()).constData(), "tmpfs", 0,
                                           options.constData()) == 0;
}

SmallFileSystem::~SmallFileSystem()
{
    if (m_mounted)
        ::umount2(QFile::encodeName(m_dir.path()).constData(), MNT_DETACH);
}

QString SmallFileSystem::path(const QString& relative) const
{
    return relative.isEmpty() ? m_dir.path() : m_dir.path() + QLatin1Char('/') + relative;
}

void SmallFileSystem::fill() const
{
    const int fd =
        ::open(QFile::encodeName(path(u"filler"_s)).constData(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    static const char block[4096] = {};
    while (::write(fd, block, sizeof block) > 0) {
    }
    while (::write(fd, block, 1) > 0) {
    }
    ::close(fd);
}

bool SmallFileSystem::makeReadOnly(const QString& relative) const
{
    // A read-only bind mount of the folder: what is open stays open, every new write fails (EROFS).
    const QByteArray folder = QFile::encodeName(path(relative));
    return m_mounted && ::mount(folder.constData(), folder.constData(), nullptr, MS_BIND, nullptr) == 0 &&
           ::mount(nullptr, folder.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
}
