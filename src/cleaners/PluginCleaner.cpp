#include "cleaners/PluginCleaner.h"

#include "catalogue/BrowserCatalogue.h"
#include "cleaners/Profiles.h"
#include "sandbox/Sandbox.h"

namespace {

// The Chromium-family browsers with profiles keep plug-in data in each; Opera keeps none of its own.
bool hasPepperData(const QString& browser)
{
    return BrowserCatalogue::isChromiumFamily(browser) && !BrowserCatalogue::hasSingleProfile(browser);
}

} // namespace

PluginCleaner::PluginCleaner(const CleanerServices& services) : m_services(services) {}

void PluginCleaner::removeFlash(const QString& browser)
{
    if (hasPepperData(browser)) {
        clearChromeFlash(browser);
        return;
    }
    m_services.sandbox.remove(flashFolder);
}

void PluginCleaner::clearChromeFlash(const QString& browser)
{
    if (!hasPepperData(browser))
        return;
    for (const QString& profile : Profiles::chromiumFamily(m_services, browser))
        m_services.sandbox.remove(profile + QStringLiteral("/Pepper Data"));
}

void PluginCleaner::removeSilverlight()
{
    m_services.sandbox.remove(silverlightFolder);
}
