#pragma once

#include "cleaners/CleanerServices.h"

#include <QString>

// Today's browsers keep much of each category where the browsers of around 2019 did not (Chromium's
// cookies in "Network/Cookies", say). After a cleaner's own steps, this removes the same category's
// data in those places, from a table, while "cleanCurrentLayouts" is on. It keeps what the cleaners
// keep: extension data, bookmarks, pinned items, passwords, sign-in tokens.
namespace CurrentLayouts {

void supplement(const CleanerServices& services, const QString& browser, const QString& category);

} // namespace CurrentLayouts
