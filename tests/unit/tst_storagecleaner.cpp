#include "catalogue/BrowserCatalogue.h"
#include "cleaners/StorageCleaner.h"
#include "platform/SettingsKeys.h"
#include "platform/fake/FakeWorkspace.h"
#include "sandbox/RemovalPreview.h"
#include "support/BrowserFixtures.h"
#include "support/TestHome.h"

#include <QFile>
#include <QTest>

#include <leveldb/db.h>

using namespace Qt::StringLiterals;

namespace F = BrowserFixtures;

namespace {

const QString kChrome = QLatin1String(F::kChromeRoot);
const QString kOpera = QLatin1String(F::kOperaRoot);
const QString kFirefox = QLatin1String(F::kFirefoxProfiles);

struct Lines final : RemovalPreview
{
    void record(const QString& action, const QString& path, qint64, const QString& detail) override
    {
        lines.append(QString(action + u' ' + path.section(u'/', -1) + u' ' + detail).trimmed());
    }
    QStringList lines;
};

struct StorageHome
{
    StorageHome() { home.t.defaults.setBool(false, SettingsKeys::cleanCurrentLayouts); }
    void clean(const QString& browser, RemovalPreview* preview = nullptr)
    {
        Sandbox sandbox({home.t.defaults, home.bookmarks, home.panel, home.t.log, preview});
        BrowserCatalogue catalogue(workspace, home.t.defaults, sandbox);
        StorageCleaner({sandbox, catalogue, home.t.defaults, home.t.log}).removeNonFavLocalStorage(browser);
    }
    TestHome home;
    FakeWorkspace workspace;
};

} // namespace

class TestStorageCleaner : public QObject
{
    Q_OBJECT
private slots:
    void sitesGoExtensionsStay_data();
    void sitesGoExtensionsStay();
    void firefoxScopesAndProfiles();
    void chromiumLocalStorageKeepsOnlyExtensionKeys();
    void serviceWorkersOfSitesGoThoseOfExtensionsStay();
    void storageBucketsOfSitesGoThoseOfExtensionsStay_data();
    void storageBucketsOfSitesGoThoseOfExtensionsStay();
};

void TestStorageCleaner::sitesGoExtensionsStay_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<QString>("databases");    // the folder of Databases.db
    QTest::addColumn<QString>("localStorage"); // its local storage folder
    QTest::addColumn<QString>("indexedDB");
    QTest::newRow("Safari") << u"Safari"_s << u"Library/Safari/Databases"_s
                            << u"Library/Safari/LocalStorage"_s << u"Library/Safari/Databases/___IndexedDB"_s;
    QTest::newRow("Google Chrome") << u"Google Chrome"_s << kChrome + u"/Default/databases"_s
                                   << kChrome + u"/Default/Local Storage"_s
                                   << kChrome + u"/Default/IndexedDB"_s;
    QTest::newRow("Opera, at its root")
        << u"Opera"_s << kOpera + u"/databases"_s << kOpera + u"/Local Storage"_s << kOpera + u"/IndexedDB"_s;
}

void TestStorageCleaner::sitesGoExtensionsStay()
{
    QFETCH(QString, browser);
    QFETCH(QString, databases);
    QFETCH(QString, localStorage);
    QFETCH(QString, indexedDB);
    StorageHome h;
    F::localState(h.home, kChrome, {u"Default"_s});
    const QString extension =
        browser == u"Safari"_s ? u"safari-extension_com.x_0"_s : u"chrome-extension_abc_0"_s;
    F::siteDatabases(h.home, databases, {u"https_a.org_0"_s, extension, u"http_b.org_0"_s});
    F::localStorageFiles(h.home, localStorage,
                         {u"https_a.org_0.localstorage"_s, extension + u".localstorage"_s});
    h.home.file(localStorage + u"/leveldb/000003.log"_s);
    h.home.file(indexedDB + u"/https_a.org_0.indexeddb.leveldb/LOG"_s);
    h.home.file(indexedDB + u"/https_a.org_0.indexeddb.blob/1/00/1"_s);
    const QString extensionDatabase = indexedDB + u"/chrome-extension_abc_0.indexeddb.leveldb/LOG"_s;
    h.home.file(extensionDatabase);
    h.clean(browser);

    F::expectGoneAndKept(h.home,
                         {databases + u"/https_a.org_0"_s, databases + u"/http_b.org_0"_s,
                          localStorage + u"/https_a.org_0.localstorage"_s,
                          localStorage + u"/https_a.org_0.localstorage-journal"_s,
                          indexedDB + u"/https_a.org_0.indexeddb.leveldb"_s,
                          indexedDB + u"/https_a.org_0.indexeddb.blob"_s},
                         {databases + u'/' + extension, localStorage + u'/' + extension + u".localstorage"_s,
                          localStorage + u"/leveldb/000003.log"_s});
    QCOMPARE(h.home.exists(extensionDatabase), browser != u"Safari"_s); // Safari's IndexedDB goes whole
    QCOMPARE(F::column(h.home.path(databases + u"/Databases.db"_s), u"SELECT origin FROM Databases"_s),
             extension);
}

// Add-ons' storage (in containers too) and Firefox's internal origins stay in every profile; a scope
// holding a quote is never sent in a statement.
void TestStorageCleaner::firefoxScopesAndProfiles()
{
    StorageHome h;
    h.home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    F::firefoxProfile(h.home, u"a.default"_s);
    F::firefoxProfile(h.home, u"b.work"_s);
    F::firefoxStorage(h.home, u"a.default"_s, {u"gro.a.:https:443"_s, u"moz-safe-about+home"_s});
    F::firefoxStorage(h.home, u"b.work"_s, {u"gro.b.:http:80"_s, u"gro.'x.:http:80"_s});
    h.home.file(kFirefox + u"/profiles.ini"_s);
    // Per-origin storage folders: the sites', an add-on's (in a container too) and Firefox's own.
    const QStringList sites{u"storage/default/https+++a.org/idb/1.sqlite"_s,
                            u"storage/default/http+++b.org^userContextId=2/ls/data.sqlite"_s,
                            u"storage/temporary/https+++c.org/cache/caches.sqlite"_s,
                            u"storage/permanent/https+++d.org/idb/2.sqlite"_s};
    const QStringList own{
        u"storage/default/moz-extension+++0b1c/idb/3647222921wleabcEoxlt-eengsairo.sqlite"_s,
        u"storage/default/moz-extension+++0b1c^userContextId=4294967295/idb/x.sqlite"_s,
        u"storage/permanent/chrome/idb/2918063365piupsah.sqlite"_s,
        u"storage/default/moz-safe-about+++home/ls/data.sqlite"_s};
    for (const QString& profile : {u"a.default"_s, u"b.work"_s}) {
        for (const QString& file : sites + own)
            h.home.file(kFirefox + u'/' + profile + u'/' + file);
    }
    Lines preview;
    h.clean(u"Firefox"_s, &preview);
    // The second profile's statement names the first's scopes too; a quoted scope skips it.
    QVERIFY(preview.lines.contains(
        u"change webappsstore.sqlite DELETE FROM webappsstore2 WHERE scope IN ('gro.a.:https:443');"_s));
    QVERIFY(h.home.t.log.lines().filter(u"holds a quote"_s).size() == 1);

    h.clean(u"Firefox"_s);
    QCOMPARE(F::column(h.home.path(kFirefox + u"/a.default/webappsstore.sqlite"_s),
                       u"SELECT scope FROM webappsstore2"_s),
             u"moz-safe-about+home"_s);
    for (const QString& profile : {u"a.default"_s, u"b.work"_s}) {
        for (const QString& site : sites) {
            const QString gone = site.section(u'/', 0, 2);
            QVERIFY2(!h.home.exists(kFirefox + u'/' + profile + u'/' + gone), qPrintable(profile + gone));
        }
        for (const QString& kept : own)
            QVERIFY2(h.home.exists(kFirefox + u'/' + profile + u'/' + kept), qPrintable(profile + kept));
        QVERIFY(!h.home.exists(kFirefox + u'/' + profile + u"/storage.sqlite"_s));
        QVERIFY(h.home.exists(kFirefox + u'/' + profile + u"/places.sqlite"_s));
    }
    QVERIFY(h.home.exists(kFirefox + u"/profiles.ini"_s));
}

void TestStorageCleaner::chromiumLocalStorageKeepsOnlyExtensionKeys()
{
    StorageHome h;
    h.home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    const QString store = kOpera + u"/Local Storage/leveldb"_s;
    const QList<QByteArray> extension{QByteArray("META:chrome-extension://abc"),
                                      QByteArray("_chrome-extension://abc\0\x01key", 28)};
    F::levelDb(h.home, store,
               extension + QList<QByteArray>{"VERSION", "META:https://clinic.example",
                                             "METAACCESS:https://clinic.example",
                                             QByteArray("_https://clinic.example\0\x01visits", 31)});
    // While the browser holds the store, it is left as it is.
    {
        leveldb::DB* held = nullptr;
        QVERIFY(
            leveldb::DB::Open(leveldb::Options(), QFile::encodeName(h.home.path(store)).toStdString(), &held)
                .ok());
        h.clean(u"Opera"_s);
        delete held;
        QCOMPARE(F::levelDbKeys(h.home.path(store)).size(), 6);
        QCOMPARE(h.home.t.log.lines().filter(u"left "_s).size(), 1);
    }
    h.clean(u"Opera"_s);
    QList<QByteArray> expected = extension + QList<QByteArray>{"VERSION"};
    std::sort(expected.begin(), expected.end());
    QCOMPARE(F::levelDbKeys(h.home.path(store)), expected);
}

void TestStorageCleaner::serviceWorkersOfSitesGoThoseOfExtensionsStay()
{
    // Keys and file names as Chromium 156 wrote them for a site and an extension, each with a worker.
    StorageHome h;
    h.home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    const QString workers = kOpera + u"/Service Worker"_s;
    const QByteArray ext = "chrome-extension://lcfj/", site = "http://clinic.example/";
    const QMap<QByteArray, QByteArray> kept{{"INITDATA_NEXT_REGISTRATION_ID", "2"},
                                            {"INITDATA_UNIQUE_ORIGIN:" + ext, ""},
                                            {QByteArray("REG:" + ext + '\0' + "0"), "reg " + ext},
                                            {"REGID_TO_ORIGIN:0", ext},
                                            {QByteArray("RES:0\0"
                                                        "0",
                                                        7),
                                             "=" + ext + "worker.js"}};
    QMap<QByteArray, QByteArray> entries = kept;
    entries.insert({{"INITDATA_UNIQUE_ORIGIN:" + site, ""},
                    {QByteArray("REG:" + site + '\0' + "1"), "reg " + site},
                    {"REGID_TO_ORIGIN:1", site},
                    {QByteArray("REG_USER_DATA:1\0push", 20), "subscription"},
                    {QByteArray("REG_HAS_USER_DATA:push\0"
                                "1",
                                24),
                     ""},
                    {QByteArray("RES:1\0"
                                "1",
                                7),
                     "+" + site + "sw.js"}});
    F::levelDb(h.home, workers + u"/Database"_s, entries);
    h.home.file(workers + u"/ScriptCache/2cc80dabc69f58b6_0"_s); // resource 0, the extension's
    h.home.file(workers + u"/ScriptCache/4cb013792b196a35_0"_s); // resource 1, the site's
    h.home.file(workers + u"/CacheStorage/e6c8/index.txt"_s, "&" + ext);
    h.home.file(workers + u"/CacheStorage/8cd0/index.txt"_s, "&" + site);
    h.clean(u"Opera"_s);
    QCOMPARE(F::levelDbKeys(h.home.path(workers + u"/Database"_s)), kept.keys());
    QVERIFY(h.home.exists(workers + u"/ScriptCache/2cc80dabc69f58b6_0"_s));
    QVERIFY(!h.home.exists(workers + u"/ScriptCache/4cb013792b196a35_0"_s));
    QVERIFY(h.home.exists(workers + u"/CacheStorage/e6c8/index.txt"_s));
    QVERIFY(!h.home.exists(workers + u"/CacheStorage/8cd0"_s));
}

void TestStorageCleaner::storageBucketsOfSitesGoThoseOfExtensionsStay_data()
{
    QTest::addColumn<bool>("readable");
    QTest::newRow("their database names each bucket's origin") << true;
    QTest::newRow("no database to name them: every bucket goes") << false;
}

// Storage buckets, each in a folder by its id, named in the "QuotaManager" database as Chromium 156
// writes it: the extension's default bucket (1), a site's bucket (2), the extension's bucket in a
// site's frame (3: partitioned by that site), an unknown folder.
void TestStorageCleaner::storageBucketsOfSitesGoThoseOfExtensionsStay()
{
    QFETCH(bool, readable);
    StorageHome h;
    h.home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    const QString buckets = kOpera + u"/WebStorage"_s;
    if (readable) {
        F::database(h.home, buckets + u"/QuotaManager"_s,
                    {u"CREATE TABLE buckets(id INTEGER PRIMARY KEY AUTOINCREMENT, storage_key TEXT NOT NULL, "
                     "host TEXT NOT NULL, name TEXT NOT NULL)"_s,
                     u"INSERT INTO buckets VALUES (1, 'chrome-extension://lcfj/', 'lcfj', '_default'), "
                     "(2, 'http://clinic.example/', 'clinic.example', 'inbox'), "
                     "(4, 'chrome-extension://lcfj/^0https://clinic.example', 'lcfj', 'framed'), "
                     "(5, 'chrome-extension://lcfj/', 'lcfj', 'vault')"_s});
    } else {
        h.home.file(buckets + u"/QuotaManager"_s, "not a database: clinic.example");
    }
    for (const char* bucket : {"2/IndexedDB/indexeddb.leveldb/LOG", "4/CacheStorage/index.txt",
                               "5/IndexedDB/indexeddb.leveldb/LOG", "9/x"})
        h.home.file(buckets + u'/' + QLatin1String(bucket));
    h.clean(u"Opera"_s);
    QCOMPARE(h.home.exists(buckets + u"/5/IndexedDB/indexeddb.leveldb/LOG"_s), readable);
    for (const char* gone : {"/2", "/4", "/9"})
        QVERIFY2(!h.home.exists(buckets + QLatin1String(gone)), gone);
    if (readable)
        QCOMPARE(F::column(h.home.path(buckets + u"/QuotaManager"_s), u"SELECT id FROM buckets"_s), u"1,5"_s);
}

QTEST_GUILESS_MAIN(TestStorageCleaner)
#include "tst_storagecleaner.moc"
