#pragma once

#include <QString>

// Overwrites a file in place, three times (0x55, 0xAA, random bytes), before the file layer
// deletes it. It never deletes anything itself.
namespace SecureDelete {

// True when nothing exists at the path, or it was overwritten completely. A folder is never
// overwritten (its files are removed plainly afterwards) and never fails.
bool wipe(const QString& path);
// One pass (1, 2 or 3) over the whole file; true when it was written and closed without error.
bool wipe(const QString& path, int phase);
// All three passes on the path, taken as one file; true when nothing exists at it or all succeed.
bool wipeContentsofDir(const QString& path);

} // namespace SecureDelete
