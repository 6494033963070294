#include "cleaners/SiteEntries.h"

#include <QCryptographicHash>

#include <algorithm>
#include <cctype>

namespace {

// The part after the prefix up to the first NUL; empty when the key has another prefix.
QByteArray field(const QByteArray& key, const char* prefix)
{
    if (!key.startsWith(prefix))
        return {};
    const QByteArray rest = key.mid(qsizetype(qstrlen(prefix)));
    const qsizetype end = rest.indexOf('\0');
    return end < 0 ? rest : rest.left(end);
}

// A site's origin (or storage key) that is not kept.
bool isSite(const QByteArray& origin, const KeptSites& kept)
{
    return !origin.isEmpty() && !SiteEntries::isExtension(origin) &&
           !kept.keepsOrigin(QString::fromUtf8(origin));
}

// The URL inside a value ("…http://a.org/sw.js…"), for its host: from the letters before "://".
QByteArray urlIn(const QByteArray& value)
{
    qsizetype start = value.indexOf("://");
    while (start > 0 && std::isalpha(static_cast<unsigned char>(value.at(start - 1))))
        --start;
    return start < 0 ? QByteArray() : value.mid(start);
}

} // namespace

namespace SiteEntries {

bool isExtension(const QByteArray& origin)
{
    return origin.startsWith("chrome-extension://");
}

LevelDbStore::KeyFilter localStorage(const KeptSites& kept)
{
    return [kept](const QByteArray& key, const QByteArray&) {
        if (key.startsWith('_'))
            return isSite(field(key, "_"), kept);
        return isSite(field(key, "META:"), kept) || isSite(field(key, "METAACCESS:"), kept);
    };
}

LevelDbStore::KeyFilter serviceWorkers(const KeptSites& kept,
                                       const std::shared_ptr<QSet<QByteArray>>& resources)
{
    const auto sites = std::make_shared<QSet<QByteArray>>(); // the sites' registration ids
    return [kept, sites, resources](const QByteArray& key, const QByteArray& value) {
        if (key.startsWith("REGID_TO_ORIGIN:")) {
            if (!isSite(value, kept))
                return false;
            sites->insert(field(key, "REGID_TO_ORIGIN:"));
            return true;
        }
        if (key.startsWith("REG_USER_DATA:"))
            return sites->contains(field(key, "REG_USER_DATA:"));
        if (key.startsWith("REG_HAS_USER_DATA:"))
            return sites->contains(key.mid(key.lastIndexOf('\0') + 1));
        if (key.startsWith("RES:")) { // the value names the script's URL
            if (!value.contains("://") || value.contains("chrome-extension://") ||
                kept.keepsOrigin(QString::fromUtf8(urlIn(value))))
                return false;
            resources->insert(key.mid(key.lastIndexOf('\0') + 1));
            return true;
        }
        return isSite(field(key, "REG:"), kept) || isSite(field(key, "INITDATA_UNIQUE_ORIGIN:"), kept);
    };
}

QString scriptCacheEntry(const QByteArray& resource)
{
    const QByteArray digest = QCryptographicHash::hash(resource, QCryptographicHash::Sha1);
    QByteArray number = digest.left(8);
    std::reverse(number.begin(), number.end());
    return QString::fromLatin1(number.toHex());
}

} // namespace SiteEntries
