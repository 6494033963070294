#include "cleaners/PluginCleaner.h"

#include "cleaners/Profiles.h"
#include "core/BrowserCatalogue.h"
#include "sandbox/Sandbox.h"

PluginCleaner::PluginCleaner(const CleanerServices& services) : m_services(services) {}

void PluginCleaner::removeFlash(const QString& browser)
{
    if (browser == BrowserCatalogue::googleChrome || browser == BrowserCatalogue::chromium) {
        clearChromeFlash(browser);
        return;
    }
    m_services.sandbox.remove(flashFolder);
}

void PluginCleaner::clearChromeFlash(const QString& browser)
{
    if (browser != BrowserCatalogue::googleChrome && browser != BrowserCatalogue::chromium)
        return;
    for (const QString& profile : Profiles::chromiumFamily(m_services, browser))
        m_services.sandbox.remove(profile + QStringLiteral("/Pepper Data"));
}

void PluginCleaner::removeSilverlight()
{
    m_services.sandbox.remove(silverlightFolder);
}
