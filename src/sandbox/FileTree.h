#pragma once

#include <QString>

#include <functional>
#include <string>

// Removal of files and folder trees through directory descriptors (openat/unlinkat): links are
// removed as links and never followed, and no work is done per entry beyond what removal needs.
namespace FileTree {

// Called for each regular file before it is deleted, with the folder it is in (open at dirFd), its
// name there, and its full path as the file system has it (for messages: decoding it for every file
// would cost more than the removal); false keeps the file.
using FileGate = std::function<bool(int dirFd, const char* name, const std::string& nativePath)>;

// Removes a file, a link, or a folder with everything below it. True when the item is gone.
bool removeItem(const QString& path, const FileGate& gate = {});

// Deletes every file and link below the folder, at every depth, keeping all folders. Entries whose
// name contains `spared` are left alone, with everything below them.
void removeFilesBelow(const QString& folder, const QString& spared, const FileGate& gate = {});

} // namespace FileTree
