#include "cleaners/BrowserCleaners.h"

BrowserCleaners::BrowserCleaners(const CleanerServices& services)
    : m_services(services), m_scripts(services.sandbox, services.log), m_cookies(services, m_scripts),
      m_storage(services), m_plugins(services), m_cache(services, m_scripts, m_cookies),
      m_history(services, m_scripts)
{}

void BrowserCleaners::removeCookies(const QString& browser)
{
    m_cookies.removeCookies(browser);
}

void BrowserCleaners::removeNonFavLocalStorage(const QString& browser)
{
    m_storage.removeNonFavLocalStorage(browser);
}

void BrowserCleaners::removeFlash(const QString& browser)
{
    m_plugins.removeFlash(browser);
}

void BrowserCleaners::removeSilverlight()
{
    m_plugins.removeSilverlight();
}

void BrowserCleaners::removeBrowserCache(const QString& browser)
{
    m_cache.removeBrowserCache(browser);
}

void BrowserCleaners::removeBrowserHistory(const QString& browser, const QString& ofType)
{
    m_history.removeBrowserHistory(browser, ofType);
}
