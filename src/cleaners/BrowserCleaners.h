#pragma once

#include "cleaners/CacheCleaner.h"
#include "cleaners/CleanerServices.h"
#include "cleaners/Cleaners.h"
#include "cleaners/CookieCleaner.h"
#include "cleaners/HistoryCleaner.h"
#include "cleaners/PluginCleaner.h"
#include "cleaners/StorageCleaner.h"
#include "sandbox/HelperScripts.h"
#include "sandbox/Sandbox.h"

#include <QSet>

// The cleaners of the five browsers' data, working only through the file layer: the one dispatcher
// a removal run calls, handing each category to its unit. A browser installed in several ways (from
// the distribution, as a Flatpak, as a Snap) is cleaned in the folders of each install that has any.
class BrowserCleaners final : public Cleaners
{
public:
    explicit BrowserCleaners(const CleanerServices& services);

    void removeCookies(const QString& browser) override;
    void removeNonFavLocalStorage(const QString& browser) override;
    void removeFlash(const QString& browser) override;
    void removeSilverlight() override;
    void removeBrowserCache(const QString& browser) override;
    void removeBrowserHistory(const QString& browser, const QString& ofType) override;

private:
    // Every cleaner, over one install's folders.
    struct Units
    {
        Units(const Sandbox& installSandbox, const CleanerServices& services,
              const std::optional<BrowserInstall>& install);

        Sandbox sandbox;
        CleanerServices services;
        HelperScripts scripts;
        CookieCleaner cookies;
        StorageCleaner storage;
        PluginCleaner plugins;
        CacheCleaner cache;
        HistoryCleaner history;
    };
    void forEachInstall(const QString& browser, const std::function<void(Units&)>& run);
    // A Firefox profile listed outside the home folder is left alone: said once.
    void reportProfilesOutsideHome(Sandbox& sandbox, const BrowserInstall& install);

    CleanerServices m_services;
    QSet<QString> m_reportedOutsideHome;
};
