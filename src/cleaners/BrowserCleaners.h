#pragma once

#include "cleaners/Cleaners.h"

class BrowserCatalogue;
class Sandbox;
class SystemLog;
class UserDefaults;

// The services the cleaners work with.
struct CleanerServices
{
    Sandbox& sandbox;
    BrowserCatalogue& catalogue;
    UserDefaults& defaults;
    SystemLog& log;
};

// The cleaners of the five browsers' data, working only through the file layer.
// The data families are filled in one by one; until a family is, its entry point removes nothing.
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
};
