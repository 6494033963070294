#include "cleaners/CookieCleaner.h"

#include "catalogue/BrowserCatalogue.h"
#include "cleaners/CurrentLayouts.h"
#include "cleaners/KeptSites.h"
#include "cleaners/Profiles.h"
#include "cleaners/SiteRows.h"
#include "sandbox/HelperScripts.h"
#include "sandbox/Sandbox.h"

namespace {
const QString kOriginBoundCerts = QStringLiteral("/Origin Bound Certs");
} // namespace

namespace KeptCookies {

void chromium(const CleanerServices& services, const QString& database, const KeptSites& kept)
{
    if (kept.isEmpty()) {
        services.sandbox.remove(database);
        return;
    }
    // A partitioned cookie stays when its own host and the site it was set under are both kept.
    SiteRows::keepOnly(services, database, QStringLiteral("cookies"),
                       {QStringLiteral("host_key"), QStringLiteral("top_frame_site_key")}, kept,
                       [&kept](const QVariantMap& row) {
                           const QString top = row.value(QStringLiteral("top_frame_site_key")).toString();
                           return kept.keepsHost(row.value(QStringLiteral("host_key")).toString()) &&
                                  (top.isEmpty() || kept.keepsOrigin(top));
                       });
}

void firefox(const CleanerServices& services, const QString& profile, const KeptSites& kept)
{
    const QString cookies = profile + QStringLiteral("/cookies.sqlite");
    const QString permissions = profile + QStringLiteral("/permissions.sqlite");
    if (kept.isEmpty()) {
        services.sandbox.remove(cookies);
        services.sandbox.remove(permissions);
        return;
    }
    SiteRows::keepOnly(
        services, cookies, QStringLiteral("moz_cookies"),
        {QStringLiteral("host"), QStringLiteral("originAttributes")}, kept, [&kept](const QVariantMap& row) {
            return kept.keepsHost(row.value(QStringLiteral("host")).toString()) &&
                   kept.keepsFirefoxAttributes(row.value(QStringLiteral("originAttributes")).toString());
        });
    // Every table that names sites: the permissions by origin, the user's interactions with
    // sites, and the table older versions kept by host, which Firefox leaves beside the new one.
    for (const QString& table : SiteRows::tablesWithColumn(services, permissions, QStringLiteral("origin")))
        SiteRows::keepOnly(services, permissions, table, {QStringLiteral("origin")}, kept,
                           [&kept](const QVariantMap& row) {
                               return kept.keepsFirefoxOrigin(row.value(QStringLiteral("origin")).toString());
                           });
    for (const QString& table : SiteRows::tablesWithColumn(services, permissions, QStringLiteral("host")))
        SiteRows::keepOnly(services, permissions, table, {QStringLiteral("host")}, kept,
                           [&kept](const QVariantMap& row) {
                               return kept.keepsHost(row.value(QStringLiteral("host")).toString());
                           });
}

QStringList sitesWithCookies(const CleanerServices& services, const QString& browser)
{
    QStringList databases;
    QString sql;
    if (BrowserCatalogue::isFirefoxFamily(browser)) {
        for (const QString& profile : Profiles::firefox(services, browser))
            databases.append(profile + QStringLiteral("/cookies.sqlite"));
        sql = QStringLiteral("SELECT DISTINCT host AS h FROM moz_cookies");
    } else if (BrowserCatalogue::isChromiumFamily(browser)) {
        for (const QString& profile : Profiles::chromiumFamily(services, browser))
            databases << profile + QStringLiteral("/Cookies") << profile + QStringLiteral("/Network/Cookies");
        sql = QStringLiteral("SELECT DISTINCT host_key AS h FROM cookies");
    }
    QStringList hosts;
    for (const QString& database : std::as_const(databases)) {
        if (!services.sandbox.fileExists(database))
            continue;
        for (const QVariantMap& row :
             services.sandbox.returnArrayFromSql(sql, database).value_or(QList<QVariantMap>())) {
            QString host = row.value(QStringLiteral("h")).toString();
            if (host.startsWith(QLatin1Char('.')))
                host.remove(0, 1);
            hosts.append(host);
        }
    }
    return KeptSites::normalisedList(hosts);
}

} // namespace KeptCookies

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
    if (BrowserCatalogue::isFirefoxFamily(browser)) {
        // Every entry counts as a profile; removing what is not there does nothing.
        for (const QString& profile : Profiles::firefox(m_services, browser))
            KeptCookies::firefox(m_services, profile, KeptSites::forFirefoxProfile(m_services, profile));
        CurrentLayouts::supplement(m_services, browser, QStringLiteral("cookies"));
        return;
    }
    if (!BrowserCatalogue::isChromiumFamily(browser))
        return;
    // The channel identifiers' rows go before any cookie file.
    deleteChromeChannelID(browser);
    for (const QString& profile : Profiles::chromiumFamily(m_services, browser))
        KeptCookies::chromium(m_services, profile + QStringLiteral("/Cookies"),
                              KeptSites::forChromiumProfile(m_services, profile));
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
    const QString root = Profiles::dataRoot(m_services, whichBrowser);
    if (!BrowserCatalogue::isChromiumFamily(whichBrowser) || root.isEmpty())
        return;
    QString folder = root;
    if (!BrowserCatalogue::hasSingleProfile(whichBrowser)) {
        const std::optional<QString> child = m_services.sandbox.childPath(root, profile);
        if (!child)
            return;
        folder = *child;
    }
    m_services.sandbox.runSqlThenVacuum({QStringLiteral("DELETE FROM channel_id;")},
                                        folder + kOriginBoundCerts);
}
