#include "cleaners/BrowserCleaners.h"

#include "core/BrowserCatalogue.h"
#include "platform/SystemLog.h"

BrowserCleaners::Units::Units(const Sandbox& installSandbox, const CleanerServices& base)
    : sandbox(installSandbox), services{sandbox, base.catalogue, base.defaults, base.log,
                                        base.keptForThisRun},
      scripts(sandbox, base.log), cookies(services, scripts), storage(services), plugins(services),
      cache(services, scripts, cookies), history(services, scripts)
{}

BrowserCleaners::BrowserCleaners(const CleanerServices& services) : m_services(services) {}

void BrowserCleaners::forEachInstall(const QString& browser, const std::function<void(Units&)>& run)
{
    const QString root = browser == BrowserCatalogue::firefox ? BrowserCatalogue::firefoxProfilesRoot
                                                              : BrowserCatalogue::chromiumDataRoot(browser);
    const QList<PathLayout::Install> installs = root.isEmpty()
                                                    ? QList<PathLayout::Install>{PathLayout::Install::Native}
                                                    : m_services.sandbox.installsOf(root);
    for (const PathLayout::Install install : installs) {
        Units units(m_services.sandbox.forInstall(install), m_services);
        if (browser == BrowserCatalogue::firefox)
            reportProfilesOutsideHome(units.sandbox);
        run(units);
    }
}

void BrowserCleaners::reportProfilesOutsideHome(Sandbox& sandbox)
{
    for (const auto& profile : BrowserCatalogue::firefoxProfilesElsewhere(sandbox)) {
        if (!profile.inside && !m_reportedOutsideHome.contains(profile.path)) {
            m_reportedOutsideHome.insert(profile.path);
            m_services.log.log(QStringLiteral("Corvella left the Firefox profile %1 alone: it lies outside "
                                              "the home folder, where Corvella changes nothing")
                                   .arg(profile.path));
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
