#pragma once

#include "cleaners/CacheCleaner.h"
#include "cleaners/CleanerServices.h"
#include "cleaners/Cleaners.h"
#include "cleaners/CookieCleaner.h"
#include "cleaners/HistoryCleaner.h"
#include "cleaners/PluginCleaner.h"
#include "cleaners/StorageCleaner.h"
#include "sandbox/HelperScripts.h"

// The cleaners of the five browsers' data, working only through the file layer: the one dispatcher
// a removal run calls, handing each category to its unit.
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
    CleanerServices m_services;
    HelperScripts m_scripts;
    CookieCleaner m_cookies;
    StorageCleaner m_storage;
    PluginCleaner m_plugins;
    CacheCleaner m_cache;
    HistoryCleaner m_history;
};
