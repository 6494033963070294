#include "cleaners/HistoryCleaner.h"

#include "catalogue/BrowserCatalogue.h"
#include "cleaners/CurrentLayouts.h"
#include "sandbox/Sandbox.h"

HistoryCleaner::HistoryCleaner(const CleanerServices& services, HelperScripts& scripts)
    : m_services(services), m_safari(services, scripts), m_chrome(services), m_firefox(services)
{}

void HistoryCleaner::removeBrowserHistory(const QString& browser, const QString& ofType)
{
    if (browser == BrowserCatalogue::safari) {
        m_safari.clearSafariHistoryOfType(ofType);
        return;
    }
    if (BrowserCatalogue::isChromiumFamily(browser))
        m_chrome.clearChromeHistory(browser, ofType);
    else if (BrowserCatalogue::isFirefoxFamily(browser))
        m_firefox.clearFireFoxHistoryOfType(ofType, browser);
    else
        return;
    CurrentLayouts::supplement(m_services, browser, ofType);
}

void HistoryCleaner::clearDownloadHistory(Sandbox& sandbox)
{
    sandbox.remove(QStringLiteral("~/Library/Preferences/com.apple.LaunchServices.QuarantineEvents"));
    sandbox.remove(QStringLiteral("~/Library/Preferences/com.apple.LaunchServices.QuarantineEventsV2"));
}
