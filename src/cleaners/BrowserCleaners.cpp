#include "cleaners/BrowserCleaners.h"

#include "catalogue/BrowserCatalogue.h"
#include "platform/SystemLog.h"

BrowserCleaners::Units::Units(const Sandbox& installSandbox, const CleanerServices& base,
                              const std::optional<BrowserInstall>& install)
    : sandbox(installSandbox), services{sandbox,  base.catalogue,      base.defaults,
                                        base.log, base.keptForThisRun, install},
      scripts(sandbox, base.log), cookies(services, scripts), storage(services), plugins(services),
      cache(services, scripts, cookies), history(services, scripts)
{}

BrowserCleaners::BrowserCleaners(const CleanerServices& services) : m_services(services) {}

void BrowserCleaners::forEachInstall(const QString& browser, const std::function<void(Units&)>& run)
{
    // Safari, and the shared plug-in folders, have no installs: one pass over the reference paths.
    if (!BrowserCatalogue::isChromiumFamily(browser) && !BrowserCatalogue::isFirefoxFamily(browser)) {
        Units units(m_services.sandbox, m_services, std::nullopt);
        run(units);
        return;
    }
    for (const BrowserInstall& install : BrowserCatalogue::installsOf(m_services.sandbox, browser)) {
        Units units(m_services.sandbox.forRoots({install.dataRoot, install.cacheRoot}), m_services, install);
        if (BrowserCatalogue::isFirefoxFamily(browser))
            reportProfilesOutsideHome(units.sandbox, install);
        run(units);
    }
}

void BrowserCleaners::reportProfilesOutsideHome(Sandbox& sandbox, const BrowserInstall& install)
{
    for (const auto& profile : BrowserCatalogue::firefoxProfilesElsewhere(sandbox, install.dataRoot)) {
        if (!profile.inside && !m_reportedOutsideHome.contains(profile.path)) {
            m_reportedOutsideHome.insert(profile.path);
            m_services.log.log(QStringLiteral("Corvella left the %1 profile %2 alone: it lies outside "
                                              "the home folder, where Corvella changes nothing")
                                   .arg(install.browser, profile.path));
        }
    }
}

void BrowserCleaners::removeCookies(const QString& browser)
{
    forEachInstall(browser, [&](Units& units) { units.cookies.removeCookies(browser); });
}

void BrowserCleaners::removeNonFavLocalStorage(const QString& browser)
{
    forEachInstall(browser, [&](Units& units) { units.storage.removeNonFavLocalStorage(browser); });
}

void BrowserCleaners::removeFlash(const QString& browser)
{
    forEachInstall(browser, [&](Units& units) { units.plugins.removeFlash(browser); });
}

void BrowserCleaners::removeSilverlight()
{
    forEachInstall(QString(), [&](Units& units) { units.plugins.removeSilverlight(); });
}

void BrowserCleaners::removeBrowserCache(const QString& browser)
{
    forEachInstall(browser, [&](Units& units) { units.cache.removeBrowserCache(browser); });
}

void BrowserCleaners::removeBrowserHistory(const QString& browser, const QString& ofType)
{
    forEachInstall(browser, [&](Units& units) { units.history.removeBrowserHistory(browser, ofType); });
}
