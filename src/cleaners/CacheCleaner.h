#pragma once

#include "cleaners/CleanerServices.h"

#include <QString>

class CookieCleaner;
class HelperScripts;

// Browser caches. Safari's branch also takes its cookie and HSTS lists (cache by design) and runs
// its cache script; every branch ends with the Flash Player and QuickTime download caches.
class CacheCleaner
{
public:
    CacheCleaner(const CleanerServices& services, HelperScripts& scripts, CookieCleaner& cookies);

    void removeBrowserCache(const QString& browser);
    // Every file below Safari's CloudKit cache, folders kept.
    void clearCloudKitCache();
    // Safari's caches in its container, its extensions kept.
    void clearMojaveCache();
    void clearFireFoxCache(const QString& browser);
    void clearChromeCache(const QString& browser);

private:
    CleanerServices m_services;
    HelperScripts& m_scripts;
    CookieCleaner& m_cookies;
};
