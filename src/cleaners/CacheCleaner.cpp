#include "cleaners/CacheCleaner.h"

#include "catalogue/BrowserCatalogue.h"
#include "cleaners/CookieCleaner.h"
#include "cleaners/CurrentLayouts.h"
#include "cleaners/Profiles.h"
#include "sandbox/HelperScripts.h"
#include "sandbox/Sandbox.h"

namespace {

const QString kSafariCaches = QStringLiteral("~/Library/Caches/com.apple.Safari");
const QString kSafariContainerCaches =
    QStringLiteral("~/Library/Containers/com.apple.Safari/Data/Library/Caches/");

} // namespace

CacheCleaner::CacheCleaner(const CleanerServices& services, HelperScripts& scripts, CookieCleaner& cookies)
    : m_services(services), m_scripts(scripts), m_cookies(cookies)
{}

void CacheCleaner::removeBrowserCache(const QString& browser)
{
    Sandbox& sandbox = m_services.sandbox;
    if (browser == BrowserCatalogue::safari) {
        sandbox.removeFiles(
            {kSafariCaches + QStringLiteral("/Cache.db"), kSafariCaches + QStringLiteral("/fsCachedData"),
             kSafariCaches + QStringLiteral("/WebKit"), kSafariCaches + QStringLiteral("/WebKitCache"),
             QStringLiteral("~/Library/Cookies/Cookies.plist"),
             QStringLiteral("~/Library/Cookies/HSTS.plist"),
             QStringLiteral("~/Library/Safari/Template Icons"),
             kSafariCaches + QStringLiteral("/TabSnapshots")});
        clearCloudKitCache();
        clearMojaveCache();
        for (const char* name : {"cache_set.dmp", "Cache.db-shm", "Cache.db-wal", "Cache.db-journal"})
            sandbox.remove(kSafariCaches + QLatin1Char('/') + QLatin1String(name));
        m_scripts.executeScript(HelperScripts::clearSafariCache);
    } else if (BrowserCatalogue::isChromiumFamily(browser)) {
        clearChromeCache(browser);
        CurrentLayouts::supplement(m_services, browser, QStringLiteral("cache"));
    } else if (BrowserCatalogue::isFirefoxFamily(browser)) {
        clearFireFoxCache(browser);
        CurrentLayouts::supplement(m_services, browser, QStringLiteral("cache"));
    }
    // Shared by every browser, an unknown one included.
    sandbox.remove(QStringLiteral("~/Library/Caches/Adobe/Flash Player"));
    sandbox.remove(QStringLiteral("~/Library/Caches/QuickTime/downloads"));
}

void CacheCleaner::clearCloudKitCache()
{
    const QString cloudKit = QStringLiteral("~/Library/Caches/CloudKit/com.apple.Safari");
    if (m_services.sandbox.fileExists(cloudKit))
        m_services.sandbox.removeRecursiveSubFilesFor(cloudKit);
}

void CacheCleaner::clearMojaveCache()
{
    Sandbox& sandbox = m_services.sandbox;
    sandbox.remove(kSafariContainerCaches + QStringLiteral("CloudKit"));
    sandbox.remove(kSafariContainerCaches + QStringLiteral("WebKit"));
    const QString caches = kSafariContainerCaches + QStringLiteral("com.apple.Safari");
    for (const QString& name : sandbox.folderContentsOf(caches)) {
        if (name == QLatin1String("Extensions"))
            continue;
        if (const auto entry = sandbox.childPath(caches, name))
            sandbox.remove(*entry);
    }
}

void CacheCleaner::clearFireFoxCache(const QString& browser)
{
    Sandbox& sandbox = m_services.sandbox;
    const QString cacheRoot = Profiles::cacheRoot(m_services, browser);
    for (const QString& name : sandbox.folderContentsOf(cacheRoot)) {
        if (const auto profileCache = sandbox.childPath(cacheRoot, name))
            sandbox.remove(*profileCache);
    }
    for (const QString& profile : Profiles::firefox(m_services, browser))
        sandbox.remove(profile + QStringLiteral("/SiteSecurityServiceState.txt"));
    // What a profile in the profiles folder keeps in its cache folder, one elsewhere keeps in its own,
    // and so does one Firefox was started on by its path ("--profile") without listing it.
    for (const QString& profile : Profiles::firefox(m_services, browser)) {
        for (const char* name : {"cache2", "startupCache", "thumbnails", "safebrowsing", "jumpListCache"})
            sandbox.remove(profile + QLatin1Char('/') + QLatin1String(name));
    }
}

void CacheCleaner::clearChromeCache(const QString& browser)
{
    Sandbox& sandbox = m_services.sandbox;
    const QString cacheRoot = Profiles::cacheRoot(m_services, browser);
    const QString dataRoot = Profiles::dataRoot(m_services, browser);
    if (!BrowserCatalogue::isChromiumFamily(browser) || cacheRoot.isEmpty())
        return;
    if (BrowserCatalogue::hasSingleProfile(browser))
        sandbox.remove(dataRoot + QStringLiteral("/GPUCache"));
    for (const QString& key : Profiles::chromiumFamilyKeys(m_services, browser)) {
        const QString profile = Profiles::profileFolder(dataRoot, key);
        sandbox.remove(profile + QStringLiteral("/Pepper Data/Shockwave Flash/CacheWritableAdobeRoot"));
        sandbox.remove(Profiles::profileFolder(cacheRoot, key));
        for (const char* name : {"Application Cache", "GPUCache", "TransportSecurity", "Service Worker",
                                 "Network Action Predictor", "Network Action Predictor-journal",
                                 "QuotaManager", "QuotaManager-journal"})
            sandbox.remove(profile + QLatin1Char('/') + QLatin1String(name));
        sandbox.removeExtraChromeCacheData(profile + QStringLiteral("/Preferences"));
        m_cookies.deleteChromeChannelIDforProfilePath(key, browser);
    }
}
