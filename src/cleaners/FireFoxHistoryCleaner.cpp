#include "cleaners/FireFoxHistoryCleaner.h"

#include "cleaners/FirefoxSearchEngines.h"
#include "cleaners/HistoryCleaner.h"
#include "cleaners/KeptSites.h"
#include "cleaners/Profiles.h"
#include "cleaners/SiteRows.h"
#include "cleaners/SplicedSql.h"
#include "sandbox/Sandbox.h"

FireFoxHistoryCleaner::FireFoxHistoryCleaner(const CleanerServices& services) : m_services(services) {}

void FireFoxHistoryCleaner::clearFireFoxHistoryOfType(const QString& ofType, const QString& browser)
{
    // Firefox keeps no page previews of its own: the profiles are not even listed.
    if (ofType == QLatin1String("webpage"))
        return;
    for (const QString& profile : Profiles::firefoxFolders(m_services, browser))
        clearProfile(profile, ofType);
}

void FireFoxHistoryCleaner::clearProfile(const QString& profile, const QString& ofType)
{
    Sandbox& sandbox = m_services.sandbox;
    const auto in = [&](const char* name) -> QString {
        return profile + QLatin1Char('/') + QLatin1String(name);
    };
    const QString places = in("places.sqlite");
    // Each statement may count on the ones before (places are found through their visits), so the
    // rest waits for the next run when one fails.
    const auto runOnPlaces = [&](std::initializer_list<const char*> statements) {
        for (const char* statement : statements) {
            if (!sandbox.runSql(QLatin1String(statement), places))
                return;
        }
    };
    if (ofType == QLatin1String("downloads")) {
        clearDownloads(profile);
    } else if (ofType == QLatin1String("forms")) {
        sandbox.remove(in("formhistory.sqlite"));
    } else if (ofType == QLatin1String("history")) {
        sandbox.removeFiles({in("sessionstore.js"), in("sessionstore-backups"), in("sessionstore.bak")});
        // The first statement finds the places through their visits, so it runs before the visits go;
        // it spares every place a bookmark points to.
        runOnPlaces(
            {"DELETE FROM moz_places WHERE id IN ( SELECT id FROM ( SELECT * FROM moz_places, "
             "moz_historyvisits WHERE moz_places.id = moz_historyvisits.place_id ) WHERE id NOT IN "
             "(SELECT place_id FROM moz_historyvisits WHERE id IN ( SELECT id FROM ( SELECT * FROM "
             "moz_historyvisits, moz_bookmarks WHERE moz_historyvisits.place_id = moz_bookmarks.fk ))))",
             "DELETE FROM moz_historyvisits WHERE id > -1",
             "DELETE FROM moz_inputhistory WHERE place_id > -1", "DELETE FROM moz_hosts WHERE id > -1",
             "UPDATE moz_places SET visit_count = 0, frecency = 0 WHERE last_visit_date IS NOT NULL",
             "UPDATE moz_places SET last_visit_date = NULL WHERE last_visit_date IS NOT NULL", "VACUUM;"});
    } else if (ofType == QLatin1String("favicons")) {
        runOnPlaces({"DELETE FROM moz_favicons WHERE id > -1",
                     "UPDATE moz_places SET favicon_id = NULL WHERE favicon_id > 0 ", "VACUUM;"});
        sandbox.removeFiles({in("favicons.sqlite"), in("favicons.sqlite-wal"), in("favicons.sqlite-shm")});
    } else if (ofType == QLatin1String("websitePrefs")) {
        // The sites' preferences go; those for every site (groupID NULL: the default zoom, say) are
        // the user's settings and stay.
        const QString prefs = in("content-prefs.sqlite");
        const KeptSites kept = KeptSites::forFirefoxProfile(m_services, profile);
        if (kept.isEmpty() && sandbox.fileExists(prefs)) {
            sandbox.runSqlThenVacuum({QStringLiteral("DELETE FROM prefs WHERE groupID IS NOT NULL"),
                                      QStringLiteral("DELETE FROM groups")},
                                     prefs);
        } else if (SiteRows::tablesWithColumn(m_services, prefs, QStringLiteral("name"))
                       .contains(QStringLiteral("groups"))) {
            // The kept sites' groups (a group is named by its site) and their preferences stay.
            SiteRows::keepOnly(m_services, prefs, QStringLiteral("groups"), {QStringLiteral("name")}, kept,
                               [&kept](const QVariantMap& row) {
                                   return kept.keepsHost(row.value(QStringLiteral("name")).toString());
                               });
            sandbox.runSqlThenVacuum(
                {QStringLiteral("DELETE FROM prefs WHERE groupID IS NOT NULL AND groupID NOT "
                                "IN (SELECT id FROM groups)")},
                prefs);
        }
    } else if (ofType == QLatin1String("searchEngines")) {
        // The engines added from sites go; the user's choice among Firefox's own stays.
        const QString engines = in("search.json.mozlz4");
        const std::optional<QByteArray> bytes = sandbox.dataWithContentsOfFile(engines);
        const FirefoxSearchEngines::Result result =
            bytes ? FirefoxSearchEngines::withoutSitesEngines(*bytes)
                  : FirefoxSearchEngines::Result{FirefoxSearchEngines::Outcome::Unchanged, {}};
        if (result.outcome == FirefoxSearchEngines::Outcome::Rewritten)
            sandbox.write(result.bytes, engines);
        else if (result.outcome == FirefoxSearchEngines::Outcome::Unreadable)
            sandbox.remove(engines);
    }
}

void FireFoxHistoryCleaner::clearDownloads(const QString& profile)
{
    Sandbox& sandbox = m_services.sandbox;
    const QString downloads = profile + QStringLiteral("/downloads.sqlite");
    const QString places = profile + QStringLiteral("/places.sqlite");
    QList<QVariantMap> rows;
    if (sandbox.fileExists(downloads))
        rows = sandbox.returnArrayFromSql(QStringLiteral("SELECT name FROM moz_downloads;"), downloads)
                   .value_or(QList<QVariantMap>());
    // The downloads' list names the places to remove, so it goes only once they are gone.
    bool placesDone = true;
    if (sandbox.fileExists(places) && !rows.isEmpty()) {
        placesDone = sandbox.runSql(QStringLiteral("DELETE FROM moz_annos WHERE id > -1"), places);
        for (const QVariantMap& row : rows) {
            const QVariant name = row.value(QStringLiteral("name"));
            if (!placesDone || !name.isValid() || name.isNull())
                continue;
            if (const auto sql = SplicedSql::statement(
                    m_services, QStringLiteral("DELETE FROM moz_places WHERE title = '%@';"),
                    {name.toString()}, places))
                placesDone = sandbox.runSql(*sql, places);
        }
        sandbox.runSql(QStringLiteral("VACUUM;"), places);
    }
    if (placesDone)
        sandbox.remove(downloads);
    HistoryCleaner::clearDownloadHistory(sandbox);
}
