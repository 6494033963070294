#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <sys/types.h>

// Reading and replacing the small files Corvella reads whole and writes (its settings, browser
// preference files, property lists), safe against special files and failing disks.
namespace AtomicFile {

// Larger JSON or property-list files are not something a browser or Corvella writes.
constexpr qint64 kMaxReadBytes = 64 * 1024 * 1024;

// The bytes of a regular file (links followed), read without blocking; no value, with the reason in
// `error`, for a missing file, a FIFO, a device, a folder, or a file over the limit.
std::optional<QByteArray> read(const QString& path, QString* error = nullptr,
                               qint64 maxBytes = kMaxReadBytes);

// The same for a file that may come from someone else (a synced folder): only a regular file of this
// user at the name itself; a link there is refused, not followed.
std::optional<QByteArray> readOwnFile(const QString& path, QString* error = nullptr,
                                      qint64 maxBytes = kMaxReadBytes);

// Replaces the file atomically: readers see the old file or the new one. Every write, the sync of the
// file and the rename are checked, and the folder is synced after the rename, so a full disk or any
// failure leaves the old file exactly as it was. The new file keeps the old one's permissions, or gets
// `newFileMode` when there is none. A link is written through to its target. What a writer of the
// same file killed in the middle left behind is removed (writers of one file must take turns).
// The reason of a failure, or an empty string when the file was replaced.
QString write(const QString& path, const QByteArray& bytes, mode_t newFileMode = 0600);

// The same, but what is at the name itself is replaced: a link there is never written through.
QString replaceName(const QString& path, const QByteArray& bytes, mode_t newFileMode = 0600);

} // namespace AtomicFile
