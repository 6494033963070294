#pragma once

#include "cleaners/ChromeHistoryCleaner.h"
#include "cleaners/CleanerServices.h"
#include "cleaners/FireFoxHistoryCleaner.h"
#include "cleaners/SafariHistoryCleaner.h"

class Sandbox;

// The history group ("history", "favicons", "webpage", "forms", "downloads", "websitePrefs",
// "searchEngines"), one category of one browser per call, handed to the browser's family.
class HistoryCleaner
{
public:
    HistoryCleaner(const CleanerServices& services, HelperScripts& scripts);

    void removeBrowserHistory(const QString& browser, const QString& ofType);
    // The system's records of downloaded files, whichever browser downloaded them.
    static void clearDownloadHistory(Sandbox& sandbox);

private:
    CleanerServices m_services;
    SafariHistoryCleaner m_safari;
    ChromeHistoryCleaner m_chrome;
    FireFoxHistoryCleaner m_firefox;
};
