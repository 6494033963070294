#include "cleaners/SafariHistoryCleaner.h"

#include "cleaners/HistoryCleaner.h"
#include "sandbox/HelperScripts.h"
#include "sandbox/Sandbox.h"

#include <QVariantList>

namespace {

const QString kSafari = QStringLiteral("~/Library/Safari/");
const QString kLastSession = QStringLiteral("~/Library/Safari/LastSession.plist");
const QString kTopSites = QStringLiteral("~/Library/Safari/TopSites.plist");

QStringList inSafari(std::initializer_list<const char*> names)
{
    QStringList paths;
    for (const char* name : names)
        paths.append(kSafari + QLatin1String(name));
    return paths;
}

} // namespace

SafariHistoryCleaner::SafariHistoryCleaner(const CleanerServices& services, HelperScripts& scripts)
    : m_services(services), m_scripts(scripts)
{}

void SafariHistoryCleaner::clearSafariHistoryOfType(const QString& ofType)
{
    Sandbox& sandbox = m_services.sandbox;
    if (ofType == QLatin1String("history")) {
        QStringList paths = inSafari({"History.plist"});
        paths.append(QStringLiteral("~/Library/Caches/Metadata/Safari/History"));
        paths += inSafari({"HistoryIndex.sk", "SearchDescriptions.plist", "History.db", "History.db-lock",
                           "History.db-wal", "History.db-shm", "WebFeedSources.plist",
                           "RecentlyClosedTabs.plist", "KnownSitesUsingPlugIns.plist", "PlugInOrigins.plist",
                           "PlugInUpdateInfo.plist", "CloudTabs.db", "CloudTabs.db-shm", "CloudTabs.db-wal"});
        sandbox.removeFiles(paths);
        clearSafariLastSessionData();
        keepPinnedTopSites();
        // Last, so that every file step is done even when the script cannot run.
        m_scripts.executeScript(HelperScripts::clearSafariHistory);
    } else if (ofType == QLatin1String("favicons")) {
        sandbox.removeFiles(inSafari({"WebpageIcons.db", "WebpageIcons.db-wal", "WebpageIcons.db-shm",
                                      "Touch Icons", "Touch Icons Cache", "Favicon Cache"}));
    } else if (ofType == QLatin1String("webpage")) {
        sandbox.remove(QStringLiteral("~/Library/Caches/com.apple.Safari/Webpage Previews"));
    } else if (ofType == QLatin1String("forms")) {
        sandbox.removeFiles(inSafari({"Form Values", "AutoFillCorrections.db", "AutoFillCorrections.db-wal",
                                      "CloudAutoFillCorrections.db", "CloudAutoFillCorrections.db-wal"}));
    } else if (ofType == QLatin1String("downloads")) {
        sandbox.remove(kSafari + QStringLiteral("Downloads.plist"));
        HistoryCleaner::clearDownloadHistory(sandbox);
    } else if (ofType == QLatin1String("websitePrefs")) {
        QStringList paths =
            inSafari({"PerSitePreferences.db", "PerSitePreferences.db-wal", "PerSitePreferences.db-shm",
                      "RemoteNotifications", "LocationPermissions.plist", "UserNotificationPermissions.plist",
                      "UserMediaPermissions.plist"});
        paths.append(QStringLiteral("~/Library/Caches/com.apple.Safari/RemoteNotifications"));
        paths += inSafari({"PerSiteZoomPreferences.plist"});
        sandbox.removeFiles(paths);
    }
}

void SafariHistoryCleaner::clearSafariLastSessionData()
{
    Sandbox& sandbox = m_services.sandbox;
    if (!sandbox.fileExists(kLastSession))
        return;
    QVariantMap session = sandbox.dictionaryWithContentsOfFile(kLastSession);
    if (!session.contains(QStringLiteral("SessionPinnedTabs"))) {
        sandbox.remove(kLastSession);
        return;
    }
    const QVariantList windows = session.value(QStringLiteral("SessionWindows")).toList();
    if (windows.isEmpty())
        return;
    QVariantMap first = windows.first().toMap();
    first.remove(QStringLiteral("TabStates"));
    session.insert(QStringLiteral("SessionWindows"), QVariantList{first});
    sandbox.write(session, kLastSession);
}

void SafariHistoryCleaner::keepPinnedTopSites()
{
    QVariantMap topSites = m_services.sandbox.dictionaryWithContentsOfFile(kTopSites);
    QVariantList pinned;
    for (const QVariant& site : topSites.value(QStringLiteral("TopSites")).toList()) {
        // Strict: the integer 1 or the string "YES" is not a pin.
        const QVariant isPinned = site.toMap().value(QStringLiteral("TopSiteIsPinned"));
        if (isPinned.typeId() == QMetaType::Bool && isPinned.toBool())
            pinned.append(site);
    }
    topSites.insert(QStringLiteral("TopSites"), pinned);
    m_services.sandbox.write(topSites, kTopSites);
}
