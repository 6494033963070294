#pragma once

#include "cleaners/KeptSites.h"
#include "sandbox/LevelDbStore.h"

#include <QSet>

#include <memory>

// Which entries of Chromium's per-origin stores belong to web sites. Extensions keep theirs
// ("chrome-extension://..."), so they go on working after a clean, and so do the kept sites.
namespace SiteEntries {

bool isExtension(const QByteArray& origin);

// "Local Storage/leveldb": keys "_<origin>\0<key>", "META:<origin>", "METAACCESS:<origin>"; "VERSION"
// names no origin and stays.
LevelDbStore::KeyFilter localStorage(const KeptSites& kept);

// "Service Worker/Database": a site's registrations ("REG:<origin>\0<id>", "REGID_TO_ORIGIN:<id>" ->
// origin, "INITDATA_UNIQUE_ORIGIN:<origin>"), the user data kept for them ("REG_USER_DATA:<id>\0...",
// "REG_HAS_USER_DATA:...\0<id>") and their scripts ("RES:<version>\0<resource>" -> the script's URL).
// A fresh filter for each store: it learns the sites' registration ids on the way, which the store's
// key order lists before their user data; the ids of the sites' script resources go to `resources`.
LevelDbStore::KeyFilter serviceWorkers(const KeptSites& kept,
                                       const std::shared_ptr<QSet<QByteArray>>& resources);

// The file name (without its "_0", "_1", "_s" ending) of a script-cache entry: the disk cache names
// an entry by the first 8 bytes of the SHA-1 of its key, read as a little-endian number, in hex.
QString scriptCacheEntry(const QByteArray& resource);

} // namespace SiteEntries
