#include "cleaners/StorageCleaner.h"

#include "catalogue/BrowserCatalogue.h"
#include "cleaners/CurrentLayouts.h"
#include "cleaners/Profiles.h"
#include "cleaners/SplicedSql.h"
#include "sandbox/Sandbox.h"

namespace {

const QString kSafariDatabases = QStringLiteral("~/Library/Safari/Databases");
const QString kSafariLocalStorage = QStringLiteral("~/Library/Safari/LocalStorage");
const QString kLocalStorageSuffix = QStringLiteral(".localstorage");

} // namespace

StorageCleaner::StorageCleaner(const CleanerServices& services) : m_services(services) {}

QStringList StorageCleaner::notKept(const QStringList& names, const KeptSites& kept,
                                    bool (KeptSites::*keeps)(QStringView) const, const QString& where)
{
    if (kept.isEmpty())
        return names;
    QStringList removed;
    kept.takeMatched();
    for (const QString& name : names) {
        if (!(kept.*keeps)(name))
            removed.append(name);
    }
    m_services.sandbox.reportKept(where, kept.takeMatched());
    return removed;
}

QStringList StorageCleaner::databaseArray(const QStringList& origins)
{
    QStringList kept;
    for (const QString& origin : origins) {
        if (!origin.startsWith(QLatin1String("chrome-extension_")) &&
            !origin.startsWith(QLatin1String("safari-extension_")))
            kept.append(origin);
    }
    return kept;
}

QStringList StorageCleaner::localStorageArray(const QStringList& names, const QString& browser)
{
    const QString spared = browser == BrowserCatalogue::safari ? QStringLiteral("safari-extension_")
                           : !BrowserCatalogue::isChromiumFamily(browser)
                               ? QString()
                               : QStringLiteral("chrome-extension_");
    QStringList kept;
    for (const QString& name : names) {
        if (name.endsWith(kLocalStorageSuffix) && (spared.isEmpty() || !name.startsWith(spared)))
            kept.append(name);
    }
    return kept;
}

QStringList StorageCleaner::mozillaSiteFolders(const QStringList& names)
{
    QStringList sites;
    for (const QString& name : names) {
        if (name.startsWith(QLatin1String("http+++")) || name.startsWith(QLatin1String("https+++")))
            sites.append(name);
    }
    return sites;
}

void StorageCleaner::removeEntries(const QString& folder, const QStringList& names)
{
    QStringList paths;
    for (const QString& name : names) {
        if (const auto path = m_services.sandbox.childPath(folder, name))
            paths.append(*path);
    }
    if (!paths.isEmpty())
        m_services.sandbox.removeFiles(paths);
}

QStringList StorageCleaner::mozillaLocalStorage(const QStringList& scopes)
{
    QStringList sites;
    for (const QString& scope : scopes) {
        if (scope.contains(QLatin1String(".:")))
            sites.append(scope);
    }
    return sites;
}

void StorageCleaner::removeNonFavLocalStorage(const QString& browser)
{
    if (browser == BrowserCatalogue::safari) {
        safari();
        return;
    }
    if (BrowserCatalogue::isFirefoxFamily(browser)) {
        firefox(browser);
        CurrentLayouts::supplement(m_services, browser, QStringLiteral("databases"));
        return;
    }
    if (!BrowserCatalogue::isChromiumFamily(browser))
        return;
    for (const QString& profile : Profiles::chromiumFamily(m_services, browser))
        chromiumProfile(profile, browser);
    CurrentLayouts::supplement(m_services, browser, QStringLiteral("databases"));
}

void StorageCleaner::safari()
{
    Sandbox& sandbox = m_services.sandbox;
    // Site databases: their folders first, then their rows.
    const QString databases = kSafariDatabases + QStringLiteral("/Databases.db");
    if (sandbox.fileExists(databases)) {
        const QStringList origins = databaseArray(
            column(QStringLiteral("SELECT origin FROM Databases;"), QStringLiteral("origin"), databases));
        QStringList folders;
        for (const QString& origin : origins) {
            if (const auto folder = sandbox.childPath(kSafariDatabases, origin))
                folders.append(*folder);
        }
        if (!folders.isEmpty()) {
            sandbox.removeFiles(folders);
            runWithList(QStringLiteral("DELETE FROM Databases WHERE origin IN ('%@');"), origins, databases);
            runWithList(QStringLiteral("DELETE FROM Origins WHERE origin IN ('%@');"), origins, databases);
            sandbox.runSql(QStringLiteral("VACUUM;"), databases);
        }
    }
    // Local storage files, then their origins in the tracker.
    QStringList files, origins;
    for (const QString& name :
         localStorageArray(sandbox.folderContentsOf(kSafariLocalStorage), BrowserCatalogue::safari)) {
        if (const auto file = sandbox.childPath(kSafariLocalStorage, name)) {
            files.append(*file);
            origins.append(name.chopped(kLocalStorageSuffix.size()));
        }
    }
    if (!files.isEmpty()) {
        sandbox.removeFiles(files);
        const QString tracker = kSafariLocalStorage + QStringLiteral("/StorageTracker.db");
        if (sandbox.fileExists(tracker)) {
            runWithList(QStringLiteral("DELETE FROM Origins WHERE origin IN ('%@');"), origins, tracker);
            sandbox.runSql(QStringLiteral("VACUUM;"), tracker);
        }
    }
    const QString indexedDB = kSafariDatabases + QStringLiteral("/___IndexedDB");
    if (sandbox.fileExists(indexedDB))
        sandbox.remove(indexedDB);
}

void StorageCleaner::chromiumProfile(const QString& folder, const QString& browser)
{
    Sandbox& sandbox = m_services.sandbox;
    const KeptSites kept = KeptSites::forChromiumProfile(m_services, folder);
    // Site databases: their rows first (even with no origin left to name), then their folders.
    const QString databasesFolder = folder + QStringLiteral("/databases");
    const QString databases = databasesFolder + QStringLiteral("/Databases.db");
    if (sandbox.fileExists(databases)) {
        const QStringList origins =
            notKept(databaseArray(column(QStringLiteral("SELECT origin FROM Databases;"),
                                         QStringLiteral("origin"), databases)),
                    kept, &KeptSites::keepsChromiumOriginName, databasesFolder);
        runWithList(QStringLiteral("DELETE FROM Databases WHERE origin IN ('%@');"), origins, databases);
        sandbox.runSql(QStringLiteral("VACUUM;"), databases);
        QStringList folders;
        for (const QString& origin : origins) {
            if (const auto path = sandbox.childPath(databasesFolder, origin))
                folders.append(*path);
        }
        if (!folders.isEmpty())
            sandbox.removeFiles(folders);
    }
    const QString localStorage = folder + QStringLiteral("/Local Storage");
    if (sandbox.fileExists(localStorage)) {
        QStringList files;
        for (const QString& name : notKept(localStorageArray(sandbox.folderContentsOf(localStorage), browser),
                                           kept, &KeptSites::keepsChromiumOriginName, localStorage)) {
            if (const auto file = sandbox.childPath(localStorage, name))
                files << *file << *file + QStringLiteral("-journal");
        }
        if (!files.isEmpty())
            sandbox.removeFiles(files);
    }
    // Each site's databases go; the extensions' ("chrome-extension_<id>_0.indexeddb.leveldb") are
    // where extensions keep what they store, and stay.
    const QString indexedDB = folder + QStringLiteral("/IndexedDB");
    if (sandbox.fileExists(indexedDB))
        removeEntries(indexedDB, notKept(databaseArray(sandbox.folderContentsOf(indexedDB)), kept,
                                         &KeptSites::keepsChromiumOriginName, indexedDB));
}

void StorageCleaner::firefox(const QString& browser)
{
    Sandbox& sandbox = m_services.sandbox;
    // Gathered across profiles, never emptied between them: a later profile's statement also names
    // the earlier profiles' scopes, which only lengthens it.
    QStringList scopes;
    for (const QString& profile : Profiles::firefoxFolders(m_services, browser)) {
        const KeptSites kept = KeptSites::forFirefoxProfile(m_services, profile);
        const QString store = profile + QStringLiteral("/webappsstore.sqlite");
        if (sandbox.fileExists(store)) {
            scopes += column(QStringLiteral("SELECT * FROM webappsstore2;"), QStringLiteral("scope"), store);
            runWithList(QStringLiteral("DELETE FROM webappsstore2 WHERE scope IN ('%@');"),
                        notKept(mozillaLocalStorage(scopes), kept, &KeptSites::keepsFirefoxScope, store),
                        store);
            sandbox.runSql(QStringLiteral("VACUUM;"), store);
        }
        // A folder per origin: the sites' go; the add-ons' ("moz-extension+++<uuid>", where
        // browser.storage.local lives) and Firefox's own ("chrome", "moz-safe-about+++home") stay.
        for (const char* kind : {"default", "temporary", "permanent"}) {
            const QString folder = profile + QStringLiteral("/storage/") + QLatin1String(kind);
            if (sandbox.fileExists(folder))
                removeEntries(folder, notKept(mozillaSiteFolders(sandbox.folderContentsOf(folder)), kept,
                                              &KeptSites::keepsFirefoxOriginFolder, folder));
        }
    }
}

void StorageCleaner::runWithList(const QString& format, const QStringList& values, const QString& database)
{
    if (const std::optional<QString> sql = SplicedSql::statement(m_services, format, values, database))
        m_services.sandbox.runSql(*sql, database);
}

QStringList StorageCleaner::column(const QString& sql, const QString& name, const QString& database)
{
    QStringList values;
    for (const QVariantMap& row :
         m_services.sandbox.returnArrayFromSql(sql, database).value_or(QList<QVariantMap>())) {
        const QVariant value = row.value(name);
        // A row without a value names nothing.
        if (value.isValid() && value.typeId() != QMetaType::Nullptr)
            values.append(value.toString());
    }
    return values;
}
