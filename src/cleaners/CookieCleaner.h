#pragma once

#include "cleaners/CleanerServices.h"

#include <QString>
#include <QStringList>

class HelperScripts;
class KeptSites;

namespace KeptCookies {
// A Chromium-family cookie database ("Cookies", "Network/Cookies") with only the kept sites' rows.
void chromium(const CleanerServices& services, const QString& database, const KeptSites& kept);
// A Firefox profile's "cookies.sqlite" and "permissions.sqlite" (every table that names sites) with
// only the kept sites' rows.
void firefox(const CleanerServices& services, const QString& profile, const KeptSites& kept);
// The sites that hold cookies in the browser's profiles now, normalised, for the user to pick from.
QStringList sitesWithCookies(const CleanerServices& services, const QString& browser);
} // namespace KeptCookies

// Every cookie of a browser, in every profile Corvella knows of, and the channel identifiers that
// Chromium-family browsers keep beside them; Firefox's per-site permissions go with its cookies. Only
// the kept sites' cookies and permissions stay (without kept sites the files go whole).
class CookieCleaner
{
public:
    CookieCleaner(const CleanerServices& services, HelperScripts& scripts);

    void removeCookies(const QString& browser);
    // Empties "origin_bound_certs" in every profile's "Origin Bound Certs", before any cookie file goes.
    void deleteChromeChannelID(const QString& browser);
    // For the cache cleaner, per profile: empties "channel_id" and compacts the database, if it exists.
    void deleteChromeChannelIDforProfilePath(const QString& profile, const QString& whichBrowser);

private:
    CleanerServices m_services;
    HelperScripts& m_scripts;
};
