#pragma once

#include <QString>

// The entry points a removal run calls, one per data family. Each takes the browser key, does
// what applies to that browser, handles and logs its own failures, and reports nothing back.
class Cleaners
{
public:
    virtual ~Cleaners() = default;

    virtual void removeCookies(const QString& browser) = 0;
    virtual void removeNonFavLocalStorage(const QString& browser) = 0;
    virtual void removeFlash(const QString& browser) = 0;
    // Silverlight keeps one store for every browser.
    virtual void removeSilverlight() = 0;
    virtual void removeBrowserCache(const QString& browser) = 0;
    // ofType: "history", "favicons", "webpage", "forms", "downloads", "websitePrefs" or "searchEngines".
    virtual void removeBrowserHistory(const QString& browser, const QString& ofType) = 0;
};
