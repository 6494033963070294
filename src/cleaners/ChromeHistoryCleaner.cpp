#include "cleaners/ChromeHistoryCleaner.h"

#include "cleaners/HistoryCleaner.h"
#include "cleaners/KeptSites.h"
#include "cleaners/Profiles.h"
#include "sandbox/Sandbox.h"

using namespace Qt::StringLiterals;

ChromeHistoryCleaner::ChromeHistoryCleaner(const CleanerServices& services) : m_services(services) {}

void ChromeHistoryCleaner::clearChromeHistory(const QString& browser, const QString& ofType)
{
    // The profile list is read anew each time, so a profile made since the last run is cleaned too.
    for (const QString& profile : Profiles::chromiumFamily(m_services, browser))
        clearProfile(profile, ofType);
}

void ChromeHistoryCleaner::clearProfile(const QString& profile, const QString& ofType)
{
    Sandbox& sandbox = m_services.sandbox;
    const auto in = [&](const char* name) -> QString {
        return profile + QLatin1Char('/') + QLatin1String(name);
    };
    if (ofType == QLatin1String("history")) {
        for (const char* name :
             {"History Provider Cache", "Archived History", "Current Session", "Current Tabs", "Last Session",
              "Last Tabs", "Visited Links", "Shortcuts", "session.db", "session.dbak", "session.db-journal"})
            sandbox.remove(in(name));
        sandbox.runSqlThenVacuum(
            {u"DELETE FROM keyword_search_terms WHERE keyword_id > -1"_s, u"DELETE FROM urls WHERE id > -1"_s,
             u"DELETE FROM visit_source WHERE id > -1"_s, u"DELETE FROM visits WHERE id > -1"_s},
            in("History"));
        // A "session.dbak" inside each "History…" entry, on purpose: the companions themselves
        // ("History-journal") stay, since the database they belong to stays.
        for (const QString& name : sandbox.folderContentsOf(profile)) {
            if (!name.startsWith(QLatin1String("History")) || name == QLatin1String("History"))
                continue;
            if (const auto entry = sandbox.childPath(profile, name))
                sandbox.remove(*entry + QStringLiteral("/session.dbak"));
        }
    } else if (ofType == QLatin1String("downloads")) {
        sandbox.runSqlThenVacuum({u"DELETE FROM segment_usage WHERE id > -1"_s,
                                  u"DELETE FROM segments WHERE id > -1"_s,
                                  u"DELETE FROM downloads WHERE id > -1"_s},
                                 in("History"));
        HistoryCleaner::clearDownloadHistory(sandbox);
    } else if (ofType == QLatin1String("favicons")) {
        sandbox.removeFiles({in("Favicons"), in("Thumbnails"), in("Favicons") + QStringLiteral("-journal"),
                             in("Thumbnails") + QStringLiteral("-journal")});
    } else if (ofType == QLatin1String("forms")) {
        sandbox.runSqlThenVacuum({u"DELETE FROM autofill WHERE name > -1"_s,
                                  u"DELETE FROM autofill_dates WHERE pair_id > -1"_s,
                                  u"DELETE FROM autofill_profile_emails WHERE guid > -1"_s,
                                  u"DELETE FROM autofill_profile_names WHERE guid > -1"_s,
                                  u"DELETE FROM autofill_profile_phones WHERE guid > -1"_s,
                                  u"DELETE FROM autofill_profiles WHERE guid > -1"_s,
                                  u"DELETE FROM autofill_profiles_trash WHERE guid > -1"_s,
                                  u"DELETE FROM credit_cards WHERE guid > -1"_s},
                                 in("Web Data"));
    } else if (ofType == QLatin1String("webpage")) {
        sandbox.removeFiles({in("Top Sites"), in("thumbnails.db")});
    } else if (ofType == QLatin1String("websitePrefs")) {
        const KeptSites kept = KeptSites::forChromiumProfile(m_services, profile);
        if (kept.isEmpty()) {
            sandbox.removeChromeZoomSettings(in("Preferences"));
        } else { // the kept sites' zoom levels and content settings stay
            sandbox.removeJsonMembers(
                in("Preferences"),
                {{u"partition"_s, u"per_host_zoom_levels"_s, u"*"_s},
                 {u"profile"_s, u"content_settings"_s, u"exceptions"_s, u"*"_s}},
                [&kept](const QString& key) { return !kept.keepsChromiumPattern(key); });
            sandbox.reportKept(in("Preferences"), kept.takeMatched());
        }
    } else if (ofType == QLatin1String("searchEngines")) {
        // The engines that came with the browser have no creation date and stay.
        sandbox.runSqlThenVacuum({u"DELETE FROM keywords WHERE keywords.date_created != 0"_s},
                                 in("Web Data"));
    }
}
