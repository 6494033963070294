#include "sandbox/FileTree.h"

#include <QFile>

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Walk
{
    const FileTree::FileGate& gate;
    std::string path; // kept only when the gate needs full paths
    QByteArray spared;
    bool keepFolders = false;
};

unsigned char entryType(int dirFd, const dirent* entry)
{
    if (entry->d_type != DT_UNKNOWN)
        return entry->d_type;
    struct stat st
    {};
    if (::fstatat(dirFd, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0)
        return DT_UNKNOWN;
    if (S_ISDIR(st.st_mode))
        return DT_DIR;
    if (S_ISREG(st.st_mode))
        return DT_REG;
    return DT_LNK; // anything else is removed like a link: the entry itself
}

bool passesGate(Walk& walk, int dirFd, const char* name, unsigned char type)
{
    if (!walk.gate || type != DT_REG)
        return true;
    const size_t length = walk.path.size();
    walk.path.append("/").append(name);
    const bool pass = walk.gate(dirFd, name, walk.path);
    walk.path.resize(length);
    return pass;
}

// Empties the folder open at dirFd (owned here); true when everything that had to go is gone.
bool emptyFolder(int dirFd, Walk& walk)
{
    DIR* dir = ::fdopendir(dirFd);
    if (!dir) {
        ::close(dirFd);
        return false;
    }
    bool complete = true;
    while (const dirent* entry = ::readdir(dir)) {
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        if (!walk.spared.isEmpty() && std::strstr(name, walk.spared.constData()))
            continue;
        const unsigned char type = entryType(::dirfd(dir), entry);
        if (type == DT_UNKNOWN) {
            complete = false;
            continue;
        }
        if (type == DT_DIR) {
            const int child = ::openat(::dirfd(dir), name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (child < 0) {
                complete = false;
                continue;
            }
            const size_t length = walk.path.size();
            if (walk.gate)
                walk.path.append("/").append(name);
            const bool emptied = emptyFolder(child, walk);
            walk.path.resize(length);
            if (!walk.keepFolders)
                complete = (emptied && ::unlinkat(::dirfd(dir), name, AT_REMOVEDIR) == 0) && complete;
            continue;
        }
        if (!passesGate(walk, ::dirfd(dir), name, type) || ::unlinkat(::dirfd(dir), name, 0) != 0)
            complete = false;
    }
    ::closedir(dir);
    return complete;
}

} // namespace

namespace FileTree {

bool removeItem(const QString& path, const FileGate& gate)
{
    const QByteArray native = QFile::encodeName(path);
    struct stat st
    {};
    if (::lstat(native.constData(), &st) != 0)
        return true;
    if (!S_ISDIR(st.st_mode)) {
        if (gate && S_ISREG(st.st_mode)) {
            const qsizetype slash = native.lastIndexOf('/');
            const QByteArray folder = slash <= 0 ? QByteArray("/") : native.left(slash);
            const int dirFd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            const bool pass = dirFd >= 0 && gate(dirFd, native.constData() + slash + 1, native.toStdString());
            if (dirFd >= 0)
                ::close(dirFd);
            if (!pass)
                return false;
        }
        return ::unlink(native.constData()) == 0;
    }
    const int fd = ::open(native.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return false;
    Walk walk{gate, gate ? native.toStdString() : std::string(), {}, false};
    const bool emptied = emptyFolder(fd, walk);
    return emptied && ::rmdir(native.constData()) == 0;
}

void removeFilesBelow(const QString& folder, const QString& spared, const FileGate& gate)
{
    const QByteArray native = QFile::encodeName(folder);
    const int fd = ::open(native.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return;
    Walk walk{gate, gate ? native.toStdString() : std::string(), QFile::encodeName(spared), true};
    emptyFolder(fd, walk);
}

} // namespace FileTree
