#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>

// Overwrites a file in place, three times (0x55, 0xAA, random bytes), before the file layer
// deletes it. It never deletes anything itself. Every pass is written through to the disk before
// the next one (and before the unlink that follows), works on one descriptor opened from the
// parent folder without following links, and leaves the holes of a sparse file alone.
namespace SecureDelete {

enum class Outcome
{
    Wiped,
    Nothing,       // no file there, or a folder (its files are removed plainly by the caller)
    SharedByLinks, // another hard link names the same data: overwriting it would destroy that file
    Failed,        // could not be opened or written: the file must be kept
};

// A file is overwritten in writes of this size, as the design says; larger writes (up to 64 KiB)
// are for measuring what they would gain.
inline constexpr size_t documentedWriteSize = 1024;

// All three passes over the regular file `name` in the folder open at dirFd.
Outcome wipeAt(int dirFd, const QByteArray& name, size_t writeSize = documentedWriteSize);

// The same for a path. True unless the wipe failed (a file shared by links is not overwritten).
bool wipe(const QString& path);
// One pass (1, 2 or 3) over the whole file; true when it was written and synced without error.
bool wipe(const QString& path, int phase);
// All three passes on the path, taken as one file; true when nothing exists at it or all succeed.
bool wipeContentsofDir(const QString& path);

} // namespace SecureDelete
