#include "cleaners/CurrentLayouts.h"

#include "catalogue/BrowserCatalogue.h"
#include "cleaners/ChromiumSession.h"
#include "cleaners/CookieCleaner.h"
#include "cleaners/FirefoxSession.h"
#include "cleaners/KeptSites.h"
#include "cleaners/Profiles.h"
#include "cleaners/SiteEntries.h"
#include "cleaners/SiteRows.h"
#include "platform/SettingsKeys.h"
#include "platform/UserDefaults.h"
#include "sandbox/Sandbox.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

enum class Family
{
    Chromium, // Google Chrome, Chromium, Opera
    Firefox,
};

// Where a row's path starts.
enum class Base
{
    Profile,      // each profile folder
    ProfileCache, // each profile's cache folder
    DataRoot,     // once, the browser's data root
};

// One row: remove a path (its last component may be a glob: "?", "*"), or run statements on a
// database there, or delete keys from a JSON file there, or delete the sites' entries from a LevelDB
// store there, or apply a rule of its own there.
struct Step
{
    Family family;
    const char* category;
    const char* path;
    QStringList sql = {};                                               // each statement, then "VACUUM;"
    QList<QStringList> jsonKeys = {};                                   // each a path through nested objects
    LevelDbStore::KeyFilter (*siteEntries)(const KeptSites&) = nullptr; // a fresh filter for each store
    void (*custom)(const CleanerServices&, const QString& path, const KeptSites& kept) = nullptr;
    Base base = Base::Profile;
};

// The session goes with history, but for its pinned tabs (Firefox restores them at every start); the
// session cookies in it stay too while cookies are not chosen.
void keepPinnedTabs(const CleanerServices& services, const QString& path, const KeptSites&)
{
    const std::optional<QByteArray> session = services.sandbox.dataWithContentsOfFile(path);
    const bool keepCookies =
        !services.defaults.dictionaryForKey(SettingsKeys::settings)
             .value(SettingsKeys::settingsKey(services.install->browser, QStringLiteral("cookies")))
             .toBool();
    const std::optional<QByteArray> pinned =
        session ? FirefoxSession::withOnlyPinnedTabs(*session, keepCookies) : std::nullopt;
    if (pinned)
        services.sandbox.write(*pinned, path);
    else
        services.sandbox.remove(path);
}

// The sessions go with history, but for their pinned tabs, which the browser restores when it continues
// where the user left off; the recently closed tabs ("Tabs_<time>") and everything else there go.
void keepPinnedChromiumTabs(const CleanerServices& services, const QString& folder, const KeptSites&)
{
    Sandbox& sandbox = services.sandbox;
    for (const QString& name : sandbox.folderContentsOf(folder)) {
        const std::optional<QString> path = sandbox.childPath(folder, name);
        if (!path)
            continue;
        const std::optional<QByteArray> session =
            name.startsWith(u"Session_"_s) ? sandbox.dataWithContentsOfFile(*path) : std::nullopt;
        const std::optional<QByteArray> pinned =
            session ? ChromiumSession::withOnlyPinnedTabs(*session) : std::nullopt;
        if (pinned)
            sandbox.write(*pinned, *path);
        else
            sandbox.remove(*path);
    }
}

// The sites' service workers, the extensions' kept: their registrations, the caches they filled
// (a folder per origin, named by its "index.txt"), and their scripts in the script cache.
void removeSiteWorkers(const CleanerServices& services, const QString& folder, const KeptSites& kept)
{
    Sandbox& sandbox = services.sandbox;
    const auto resources = std::make_shared<QSet<QByteArray>>();
    sandbox.removeLevelDbKeys(folder + u"/Database"_s, SiteEntries::serviceWorkers(kept, resources));
    for (const QByteArray& resource : std::as_const(*resources)) {
        const QString entry = folder + u"/ScriptCache/"_s + SiteEntries::scriptCacheEntry(resource);
        for (const char* stream : {"_0", "_1", "_s"})
            sandbox.remove(entry + QLatin1String(stream));
    }
    const QString caches = folder + u"/CacheStorage"_s;
    for (const QString& name : sandbox.folderContentsOf(caches)) {
        const std::optional<QString> cache = sandbox.childPath(caches, name);
        const QByteArray index =
            cache ? sandbox.dataWithContentsOfFile(*cache + u"/index.txt"_s).value_or(QByteArray())
                  : QByteArray();
        const qsizetype scheme = index.indexOf("://");
        qsizetype origin = scheme;
        while (origin > 0 && QChar::isLetter(index.at(origin - 1)))
            --origin;
        if (scheme >= 0 && !index.contains("chrome-extension://") &&
            !kept.keepsOrigin(QString::fromUtf8(index.mid(origin))))
            sandbox.remove(*cache);
    }
}

// The file systems sites keep (the origin private file system among them): a folder per origin
// ("File System/000"), named in the "Origins" store ("ORIGIN:https_a.org_0" -> "000"). The sites'
// go, folders and entries; the extensions' and the kept sites' stay. A store that cannot be read
// takes the whole folder with it, as without kept sites.
void keepExtensionFileSystems(const CleanerServices& services, const QString& folder, const KeptSites& kept)
{
    Sandbox& sandbox = services.sandbox;
    const auto read = std::make_shared<bool>(false);
    const auto keptFolders = std::make_shared<QSet<QString>>();
    sandbox.removeLevelDbKeys(
        folder + u"/Origins"_s, [&kept, read, keptFolders](const QByteArray& key, const QByteArray& value) {
            *read = true;
            if (!key.startsWith("ORIGIN:"))
                return false; // "LAST_PATH", the store's own
            const QString origin = QString::fromUtf8(key.mid(7));
            if (origin.startsWith(u"chrome-extension_"_s) || kept.keepsChromiumOriginName(origin)) {
                keptFolders->insert(QString::fromUtf8(value));
                return false;
            }
            return true;
        });
    if (!*read) {
        sandbox.remove(folder);
        return;
    }
    for (const QString& name : sandbox.folderContentsOf(folder)) {
        if (name == u"Origins"_s || keptFolders->contains(name))
            continue;
        if (const std::optional<QString> path = sandbox.childPath(folder, name))
            sandbox.remove(*path);
    }
}

// The storage buckets ("WebStorage/<id>/", named in its "QuotaManager" database by their origin): the
// sites' go, folders and rows, the extensions' own stay. Partitioned keys ("…^0<top-level site>") are a
// site's; the kept sites' stay too. Without a database to name them, every bucket goes.
void keepExtensionBuckets(const CleanerServices& services, const QString& folder, const KeptSites& kept)
{
    Sandbox& sandbox = services.sandbox;
    const QString quotaManager = folder + u"/QuotaManager"_s;
    const auto keptRow = [&kept](const QVariantMap& row) {
        const QString key = row.value(u"storage_key"_s).toString();
        return (key.startsWith(u"chrome-extension://"_s) && !key.contains(u'^')) || kept.keepsOrigin(key);
    };
    QStringList keptIds;
    for (const QVariantMap& row :
         sandbox.returnArrayFromSql(u"SELECT id, storage_key FROM buckets"_s, quotaManager)
             .value_or(QList<QVariantMap>())) {
        if (keptRow(row))
            keptIds.append(row.value(u"id"_s).toString());
    }
    for (const QString& name : sandbox.folderContentsOf(folder)) {
        if (name.startsWith(u"QuotaManager"_s) || keptIds.contains(name))
            continue;
        if (const std::optional<QString> path = sandbox.childPath(folder, name))
            sandbox.remove(*path);
    }
    SiteRows::keepOnly(services, quotaManager, u"buckets"_s, {u"storage_key"_s}, kept, keptRow);
}

const QList<Step>& steps()
{
    static const QList<Step> table{
        {Family::Chromium, "cookies", "Network/Cookies", {}, {}, nullptr, KeptCookies::chromium},
        {Family::Chromium, "cookies", "Trust Tokens", {}},
        {Family::Chromium, "cookies", "Network/Trust Tokens", {}},
        {Family::Chromium, "cookies", "Reporting and NEL", {}},
        {Family::Chromium, "cookies", "Network/Reporting and NEL", {}},
        {Family::Chromium, "cookies", "DIPS", {}},
        {Family::Chromium, "cookies", "Device Bound Sessions", {}},
        {Family::Chromium, "cookies", "MediaDeviceSalts", {}},
        {Family::Firefox, "cookies", "bounce-tracking-protection.sqlite", {}},
        {Family::Chromium, "databases", "Local Storage/leveldb", {}, {}, SiteEntries::localStorage},
        {Family::Chromium, "databases", "Service Worker", {}, {}, nullptr, removeSiteWorkers},
        {Family::Chromium, "databases", "Session Storage", {}},
        {Family::Chromium, "databases", "File System", {}, {}, nullptr, keepExtensionFileSystems},
        {Family::Chromium, "databases", "blob_storage", {}},
        {Family::Chromium, "databases", "WebStorage", {}, {}, nullptr, keepExtensionBuckets},
        {Family::Chromium, "databases", "SharedStorage", {}},
        {Family::Chromium, "databases", "InterestGroups", {}},
        {Family::Chromium, "databases", "BrowsingTopicsSiteData", {}},
        {Family::Chromium, "databases", "Conversions", {}},
        {Family::Chromium, "databases", "PrivateAggregation", {}},
        {Family::Chromium, "databases", "AggregationService", {}},
        {Family::Chromium, "databases", "KAnonymityService", {}},
        {Family::Chromium, "databases", "Site Characteristics Database", {}},
        {Family::Chromium, "cache", "DawnCache", {}},
        {Family::Chromium, "cache", "DawnGraphiteCache", {}},
        {Family::Chromium, "cache", "DawnWebGPUCache", {}},
        {Family::Chromium, "cache", "Shared Dictionary", {}},
        {Family::Chromium, "cache", "Network Persistent State", {}},
        {Family::Chromium, "cache", "Network/Network Persistent State", {}},
        {Family::Chromium, "cache", "Network/TransportSecurity", {}},
        {Family::Chromium, "cache", "SCT Auditing Pending Reports", {}},
        {Family::Chromium, "cache", "GrShaderCache", {}, {}, nullptr, nullptr, Base::DataRoot},
        {Family::Chromium, "cache", "GraphiteDawnCache", {}, {}, nullptr, nullptr, Base::DataRoot},
        {Family::Chromium, "cache", "ShaderCache", {}, {}, nullptr, nullptr, Base::DataRoot},
        {Family::Chromium, "cache", "GPUPersistentCache", {}, {}, nullptr, nullptr, Base::DataRoot},
        {Family::Firefox, "cache", "AlternateServices.bin", {}},
        {Family::Firefox, "cache", "AlternateServices.txt", {}},
        {Family::Firefox, "cache", "SiteSecurityServiceState.bin", {}},
        {Family::Firefox, "cache", "netpredictions.sqlite", {}},
        {Family::Firefox, "cache", "shader-cache", {}},
        {Family::Firefox, "databases", "storage/ls-archive.sqlite", {}},
        {Family::Firefox, "databases", "storage.sqlite", {}},
        {Family::Firefox, "databases", "serviceworker.txt", {}},
        {Family::Chromium, "history", "Sessions", {}, {}, nullptr, keepPinnedChromiumTabs},
        {Family::Chromium, "history", "Sessions_Encrypted"},
        {Family::Chromium, "history",
         "History Index ????"
         "-??"}, // split: "??-" would be a trigraph
        {Family::Chromium, "history", "HistoryEmbeddings"},
        {Family::Chromium, "history", "Visited Links"},
        {Family::Chromium,
         "history",
         "History",
         {u"DELETE FROM visited_links"_s, u"DELETE FROM content_annotations"_s,
          u"DELETE FROM context_annotations"_s, u"DELETE FROM clusters"_s,
          u"DELETE FROM clusters_and_visits"_s, u"DELETE FROM cluster_keywords"_s,
          u"DELETE FROM cluster_visit_duplicates"_s}},
        // What the browser learnt from visits; the user's own per-site choices stay.
        {Family::Chromium,
         "history",
         "Preferences",
         {},
         {{u"zerosuggest"_s, u"cachedresults"_s},
          {u"zerosuggest"_s, u"cachedresults_with_url"_s},
          {u"prefetch"_s, u"search_prefetch"_s, u"cache"_s},
          {u"profile"_s, u"content_settings"_s, u"exceptions"_s, u"site_engagement"_s},
          {u"profile"_s, u"content_settings"_s, u"exceptions"_s, u"media_engagement"_s},
          {u"profile"_s, u"content_settings"_s, u"exceptions"_s, u"app_banner"_s}}},
        {Family::Chromium, "history", "shared_proto_db"},
        {Family::Chromium, "history", "segmentation_platform", {}, {}, nullptr, nullptr, Base::DataRoot},
        {Family::Chromium,
         "forms",
         "Web Data",
         {u"DELETE FROM autocomplete"_s, u"DELETE FROM addresses"_s, u"DELETE FROM address_type_tokens"_s,
          u"DELETE FROM contact_info"_s, u"DELETE FROM contact_info_type_tokens"_s,
          u"DELETE FROM local_addresses"_s, u"DELETE FROM local_addresses_type_tokens"_s,
          u"DELETE FROM local_stored_cvc"_s, u"DELETE FROM local_ibans"_s,
          u"DELETE FROM autofill_ai_entities"_s, u"DELETE FROM autofill_ai_attributes"_s}},
        {Family::Chromium,
         "downloads",
         "History",
         {u"DELETE FROM downloads_url_chains"_s, u"DELETE FROM downloads_slices"_s}},
        {Family::Chromium, "downloads", "DownloadMetadata"},
        {Family::Firefox, "history", "sessionstore.jsonlz4", {}, {}, nullptr, keepPinnedTabs},
        {Family::Firefox, "history", "sessionCheckpoints.json"},
        {Family::Firefox,
         "history",
         "places.sqlite",
         {u"DELETE FROM moz_places_metadata"_s, u"DELETE FROM moz_places_metadata_search_queries"_s,
          u"DELETE FROM moz_historyvisits_extra"_s, u"DELETE FROM moz_previews_tombstones"_s,
          // A place without an origin must not make NOT IN match nothing.
          u"DELETE FROM moz_origins WHERE id NOT IN (SELECT origin_id FROM moz_places WHERE origin_id IS NOT NULL)"_s,
          u"DELETE FROM moz_annos WHERE place_id NOT IN (SELECT id FROM moz_places)"_s}},
        {Family::Firefox, "history", "SiteSecurityServiceState.bin"},
        {Family::Firefox, "webpage", "thumbnails", {}, {}, nullptr, nullptr, Base::ProfileCache},
        {Family::Firefox, "downloads", "downloads.json"},
        {Family::Firefox,
         "downloads",
         "places.sqlite",
         {u"DELETE FROM moz_annos WHERE anno_attribute_id IN (SELECT id FROM moz_anno_attributes WHERE name "
          u"LIKE "
          u"'downloads/%')"_s,
          u"DELETE FROM moz_historyvisits WHERE visit_type = 7"_s}},
    };
    return table;
}

// A profile's folder and its cache folder, as reference paths.
struct Folders
{
    QString profile;
    QString cache;
};

QList<Folders> profileFolders(const CleanerServices& services, const QString& browser)
{
    QList<Folders> folders;
    const QString dataRoot = Profiles::dataRoot(services, browser);
    const QString cacheRoot = Profiles::cacheRoot(services, browser);
    if (BrowserCatalogue::isFirefoxFamily(browser)) {
        const QStringList elsewhere = Profiles::firefoxElsewhere(services, browser);
        for (const QString& profile : Profiles::firefox(services, browser)) {
            folders.append({profile, elsewhere.contains(profile)
                                         ? profile // it keeps its cache in its own folder
                                         : cacheRoot + u'/' + profile.section(u'/', -1)});
        }
        return folders;
    }
    for (const QString& key : Profiles::chromiumFamilyKeys(services, browser))
        folders.append({Profiles::profileFolder(dataRoot, key), Profiles::profileFolder(cacheRoot, key)});
    return folders;
}

// The row's path below the folder; a glob in its last component gives every entry that matches.
QStringList targets(const CleanerServices& services, const QString& folder, const QString& path)
{
    const QString full = folder + u'/' + path;
    const qsizetype slash = full.lastIndexOf(u'/');
    const QString name = full.mid(slash + 1);
    if (!name.contains(u'?') && !name.contains(u'*'))
        return {full};
    const QString parent = full.left(slash);
    const QRegularExpression glob(QRegularExpression::wildcardToRegularExpression(name));
    QStringList matches;
    for (const QString& entry : services.sandbox.folderContentsOf(parent)) {
        if (glob.match(entry).hasMatch()) {
            if (const std::optional<QString> match = services.sandbox.childPath(parent, entry))
                matches.append(*match);
        }
    }
    return matches;
}

void apply(const CleanerServices& services, const Step& step, const QString& folder)
{
    Sandbox& sandbox = services.sandbox;
    const QStringList paths = targets(services, folder, QLatin1String(step.path));
    // The sites a profile keeps, read only for the rules that keep some.
    const KeptSites kept = paths.isEmpty() || !(step.siteEntries || step.custom) ? KeptSites()
                           : step.family == Family::Firefox ? KeptSites::forFirefoxProfile(services, folder)
                                                            : KeptSites::forChromiumProfile(services, folder);
    for (const QString& path : paths) {
        kept.takeMatched();
        if (step.siteEntries) {
            sandbox.removeLevelDbKeys(path, step.siteEntries(kept));
            sandbox.reportKept(path, kept.takeMatched());
        } else if (step.custom) {
            step.custom(services, path, kept);
            sandbox.reportKept(path, kept.takeMatched());
        } else if (!step.jsonKeys.isEmpty()) {
            sandbox.removeJsonKeys(path, step.jsonKeys);
        } else if (!step.sql.isEmpty()) {
            sandbox.runSqlThenVacuum(step.sql, path);
        } else {
            sandbox.remove(path);
        }
    }
}

} // namespace

namespace CurrentLayouts {

void supplement(const CleanerServices& base, const QString& browser, const QString& category)
{
    if (!base.defaults.boolForKey(SettingsKeys::cleanCurrentLayouts))
        return;
    const bool firefox = BrowserCatalogue::isFirefoxFamily(browser);
    if (!firefox && !BrowserCatalogue::isChromiumFamily(browser))
        return;
    // The steps read which browser (and which of its settings) they work for from the services.
    CleanerServices services = base;
    services.install = Profiles::install(base, browser);
    const QString dataRoot = services.install->dataRoot;
    const Family family = firefox ? Family::Firefox : Family::Chromium;
    const QList<Folders> profiles = profileFolders(services, browser);
    for (const Step& step : steps()) {
        if (step.family != family || category != QLatin1String(step.category))
            continue;
        if (step.base == Base::DataRoot)
            apply(services, step, dataRoot);
        for (const Folders& folders : profiles) {
            if (step.base != Base::DataRoot)
                apply(services, step, step.base == Base::Profile ? folders.profile : folders.cache);
        }
    }
}

} // namespace CurrentLayouts
