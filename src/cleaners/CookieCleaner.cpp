#include "cleaners/CookieCleaner.h"

#include "cleaners/CurrentLayouts.h"
#include "cleaners/Profiles.h"
#include "core/BrowserCatalogue.h"
#include "sandbox/HelperScripts.h"
#include "sandbox/Sandbox.h"

namespace {
const QString kOriginBoundCerts = QStringLiteral("/Origin Bound Certs");
} // namespace

CookieCleaner::CookieCleaner(const CleanerServices& services, HelperScripts& scripts)
    : m_services(services), m_scripts(scripts)
{}

void CookieCleaner::removeCookies(const QString& browser)
{
    Sandbox& sandbox = m_services.sandbox;
    if (browser == BrowserCatalogue::safari) {
        sandbox.remove(QStringLiteral("~/Library/Cookies/Cookies.binarycookies"));
        m_scripts.executeScript(HelperScripts::clearCookies);
        return;
    }
    if (browser == BrowserCatalogue::firefox) {
        // Every entry counts as a profile; removing what is not there does nothing.
        for (const QString& profile : Profiles::firefox(m_services)) {
            sandbox.remove(profile + QStringLiteral("/cookies.sqlite"));
            sandbox.remove(profile + QStringLiteral("/permissions.sqlite"));
        }
        CurrentLayouts::supplement(m_services, browser, QStringLiteral("cookies"));
        return;
    }
    if (BrowserCatalogue::chromiumDataRoot(browser).isEmpty())
        return;
    // The channel identifiers' rows go before any cookie file.
    deleteChromeChannelID(browser);
    for (const QString& profile : Profiles::chromiumFamily(m_services, browser))
        sandbox.remove(profile + QStringLiteral("/Cookies"));
    CurrentLayouts::supplement(m_services, browser, QStringLiteral("cookies"));
}

void CookieCleaner::deleteChromeChannelID(const QString& browser)
{
    for (const QString& profile : Profiles::chromiumFamily(m_services, browser))
        m_services.sandbox.runSql(QStringLiteral("DELETE FROM origin_bound_certs;"),
                                  profile + kOriginBoundCerts);
}

void CookieCleaner::deleteChromeChannelIDforProfilePath(const QString& profile, const QString& whichBrowser)
{
    const QString root = BrowserCatalogue::chromiumDataRoot(whichBrowser);
    if (root.isEmpty())
        return;
    QString folder = root;
    if (whichBrowser != BrowserCatalogue::opera) {
        const std::optional<QString> child = m_services.sandbox.childPath(root, profile);
        if (!child)
            return;
        folder = *child;
    }
    m_services.sandbox.runSqlThenVacuum({QStringLiteral("DELETE FROM channel_id;")},
                                        folder + kOriginBoundCerts);
}
