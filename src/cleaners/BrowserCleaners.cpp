#include "cleaners/BrowserCleaners.h"

BrowserCleaners::BrowserCleaners(const CleanerServices& services) : m_services(services) {}

void BrowserCleaners::removeCookies(const QString&) {}

void BrowserCleaners::removeNonFavLocalStorage(const QString&) {}

void BrowserCleaners::removeFlash(const QString&) {}

void BrowserCleaners::removeSilverlight() {}

void BrowserCleaners::removeBrowserCache(const QString&) {}

void BrowserCleaners::removeBrowserHistory(const QString&, const QString&) {}
