#include "cleaners/CurrentLayouts.h"

#include "cleaners/Profiles.h"
#include "core/BrowserCatalogue.h"
#include "platform/SettingsKeys.h"
#include "platform/UserDefaults.h"
#include "sandbox/Sandbox.h"

namespace {

enum class Family
{
    Chromium, // Google Chrome, Chromium, Opera
    Firefox,
};

// One row: below each profile folder, remove a path, run statements on a database there, or delete
// the sites' keys from a LevelDB store there.
struct Step
{
    Family family;
    const char* category;
    const char* path;
    QStringList sql = {}; // empty: remove the path (unless siteKeys)
    bool siteKeys = false;
    bool onceBelowDataRoot = false; // not per profile: once, below the browser's data root
};

// Chromium's local storage keys name their origin: "_<origin>\0<key>", "META:<origin>",
// "METAACCESS:<origin>"; "VERSION" names none. The sites' keys go, the extensions' stay.
bool isSiteKey(const QByteArray& key)
{
    QByteArray origin;
    if (key.startsWith('_'))
        origin = key.mid(1, key.indexOf('\0') < 0 ? -1 : key.indexOf('\0') - 1);
    else if (key.startsWith("META:"))
        origin = key.mid(5);
    else if (key.startsWith("METAACCESS:"))
        origin = key.mid(11);
    return !origin.isEmpty() && !origin.startsWith("chrome-extension://");
}

const QList<Step>& steps()
{
    static const QList<Step> table{
        {Family::Chromium, "cookies", "Network/Cookies", {}},
        {Family::Chromium, "cookies", "Trust Tokens", {}},
        {Family::Chromium, "cookies", "Network/Trust Tokens", {}},
        {Family::Chromium, "cookies", "Reporting and NEL", {}},
        {Family::Chromium, "cookies", "Network/Reporting and NEL", {}},
        {Family::Chromium, "cookies", "DIPS", {}},
        {Family::Chromium, "cookies", "Device Bound Sessions", {}},
        {Family::Chromium, "cookies", "MediaDeviceSalts", {}},
        {Family::Firefox, "cookies", "bounce-tracking-protection.sqlite", {}},
        {Family::Chromium, "databases", "Local Storage/leveldb", {}, true},
        {Family::Chromium, "databases", "Session Storage", {}},
        {Family::Chromium, "databases", "File System", {}},
        {Family::Chromium, "databases", "blob_storage", {}},
        {Family::Chromium, "databases", "WebStorage", {}},
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
        {Family::Chromium, "cache", "GrShaderCache", {}, false, true},
        {Family::Chromium, "cache", "GraphiteDawnCache", {}, false, true},
        {Family::Chromium, "cache", "ShaderCache", {}, false, true},
        {Family::Chromium, "cache", "GPUPersistentCache", {}, false, true},
        {Family::Firefox, "cache", "AlternateServices.bin", {}},
        {Family::Firefox, "cache", "AlternateServices.txt", {}},
        {Family::Firefox, "cache", "SiteSecurityServiceState.bin", {}},
        {Family::Firefox, "cache", "netpredictions.sqlite", {}},
        {Family::Firefox, "cache", "shader-cache", {}},
        {Family::Firefox, "databases", "storage/ls-archive.sqlite", {}},
        {Family::Firefox, "databases", "storage.sqlite", {}},
        {Family::Firefox, "databases", "serviceworker.txt", {}},
    };
    return table;
}

} // namespace

namespace CurrentLayouts {

void supplement(const CleanerServices& services, const QString& browser, const QString& category)
{
    if (!services.defaults.boolForKey(SettingsKeys::cleanCurrentLayouts))
        return;
    const bool firefox = browser == BrowserCatalogue::firefox;
    const QStringList profiles =
        firefox ? Profiles::firefox(services) : Profiles::chromiumFamily(services, browser);
    const Family family = firefox ? Family::Firefox : Family::Chromium;
    const auto apply = [&](const Step& step, const QString& folder) {
        const QString path = folder + QLatin1Char('/') + QLatin1String(step.path);
        if (step.siteKeys) {
            services.sandbox.removeLevelDbKeys(path, isSiteKey);
        } else if (step.sql.isEmpty()) {
            services.sandbox.remove(path);
        } else {
            for (const QString& statement : step.sql)
                services.sandbox.runSql(statement, path);
            services.sandbox.runSql(QStringLiteral("VACUUM;"), path);
        }
    };
    for (const QString& profile : profiles) {
        for (const Step& step : steps()) {
            if (step.family == family && category == QLatin1String(step.category) && !step.onceBelowDataRoot)
                apply(step, profile);
        }
    }
    const QString dataRoot = BrowserCatalogue::chromiumDataRoot(browser);
    for (const Step& step : steps()) {
        if (step.family == family && category == QLatin1String(step.category) && step.onceBelowDataRoot &&
            !dataRoot.isEmpty())
            apply(step, dataRoot);
    }
}

} // namespace CurrentLayouts
