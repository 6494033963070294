#include "catalogue/BrowserCatalogue.h"
#include "cleaners/BrowserCleaners.h"
#include "cleaners/KeptSites.h"
#include "platform/SettingsKeys.h"
#include "platform/fake/FakeWorkspace.h"
#include "support/BrowserFixtures.h"
#include "support/TestHome.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace F = BrowserFixtures;

namespace {

const QString kChrome = QLatin1String(F::kChromeRoot) + u"/Default"_s;
const QString kFirefox = QLatin1String(F::kFirefoxProfiles) + u"/a.default"_s;

// A run of cookies, storage and website preferences with example.com kept, and with or without the sites the
// browser's own settings always allow cookies for.
void clean(TestHome& home, const QString& browser)
{
    QFETCH_GLOBAL(bool, exceptions);
    home.t.defaults.setBool(exceptions, SettingsKeys::keepBrowserExceptions);
    home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    home.t.defaults.setObject(QVariantList{u"example.com"_s}, SettingsKeys::keptSites);
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    BrowserCleaners cleaners({home.sandbox, catalogue, home.t.defaults, home.t.log});
    cleaners.removeCookies(browser);
    cleaners.removeNonFavLocalStorage(browser);
    cleaners.removeBrowserHistory(browser, u"websitePrefs"_s);
}

} // namespace

class TestKeptSites : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase_data();
    void entriesAreStoredNormalised_data();
    void entriesAreStoredNormalised();
    void storesNamesMatchTheKeptSites_data();
    void storesNamesMatchTheKeptSites();
    void chromiumKeepsTheKeptSitesCookiesAndStorage();
    void firefoxKeepsTheKeptSitesInEveryContainer();
    void keptSitesKeepTheirWebsitePreferences();
};

// Every test twice: the browsers' own exceptions kept (the default), then not.
void TestKeptSites::initTestCase_data()
{
    QTest::addColumn<bool>("exceptions");
    QTest::newRow("with the browsers' exceptions") << true;
    QTest::newRow("without") << false;
}

void TestKeptSites::entriesAreStoredNormalised_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("stored"); // empty: refused
    QTest::newRow("case") << u" Mail.Example.COM "_s << u"mail.example.com"_s;
    QTest::newRow("international") << u"bücher.de"_s << u"xn--bcher-kva.de"_s;
    QTest::newRow("IPv6") << u"[::1]"_s << u"::1"_s;
    QTest::newRow("a URL") << u"https://example.com/"_s << QString();
    QTest::newRow("a port") << u"example.com:8080"_s << QString();
    QTest::newRow("a quote") << u"it's.com"_s << QString();
    QTest::newRow("a label's hyphen") << u"-example.com"_s << QString();
    QTest::newRow("empty") << u"  "_s << QString();
}

void TestKeptSites::entriesAreStoredNormalised()
{
    QFETCH(QString, entry);
    QFETCH(QString, stored);
    QCOMPARE(KeptSites::normalised(entry).value_or(QString()), stored);
    QStringList refused;
    QCOMPARE(KeptSites::normalisedList({entry, entry.toUpper()}, &refused).size(), stored.isEmpty() ? 0 : 1);
    QCOMPARE(refused.size(), stored.isEmpty() ? 2 : 0);
}

void TestKeptSites::storesNamesMatchTheKeptSites_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("kept");
    const auto row = [](const char* kind, const char* name, bool kept) {
        QTest::addRow("%s %s", kind, name) << QString::fromLatin1(kind) << QString::fromUtf8(name) << kept;
    };
    row("host", ".Example.com", true);
    row("host", "mail.example.com", true);
    row("host", "notexample.com", false);
    row("host", "example.com.other.org", false);
    row("host", "127.0.0.10", false);
    row("host", "localhost", true);
    row("host", "[::1]", true);
    row("origin", "https://mail.example.com:8443/", true);
    row("origin", "https://example.com/^0https://example.com", true);
    row("origin", "https://example.com/^0https://other.org", false);
    row("origin", "https://other.org/^0https://example.com", false);
    row("origin", "https://example.com/^112^234", false);
    row("chromium", "https_mail.example.com_0.indexeddb.leveldb", true);
    row("chromium", "http_127.0.0.1_8080.localstorage", true);
    row("chromium", "http_notexample.com_0", false);
    row("firefox", "https+++example.com^userContextId=2", true);
    row("firefox", "https+++example.com^partitionKey=%28https%2Cexample.com%29", true);
    row("firefox", "https+++example.com^partitionKey=%28https%2Cother.org%29", false);
    row("firefox", "https+++other.org^partitionKey=%28https%2Cexample.com%29", false);
    row("firefox", "https+++example.com^firstPartyDomain=other.org", false);
    row("firefox origin", "https://example.com^userContextId=1", true);
    row("scope", "moc.elpmaxe.:https:443", true);
}

// The kept sites example.com (with subdomains), 127.0.0.1, localhost and ::1 (those hosts alone).
void TestKeptSites::storesNamesMatchTheKeptSites()
{
    QFETCH(QString, kind);
    QFETCH(QString, name);
    QFETCH(bool, kept);
    const KeptSites sites({u"example.com"_s, u"127.0.0.1"_s, u"localhost"_s, u"::1"_s});
    const bool keeps = kind == u"host"_s       ? sites.keepsHost(name)
                       : kind == u"origin"_s   ? sites.keepsOrigin(name)
                       : kind == u"chromium"_s ? sites.keepsChromiumOriginName(name)
                       : kind == u"firefox"_s  ? sites.keepsFirefoxOriginFolder(name)
                       : kind == u"scope"_s    ? sites.keepsFirefoxScope(name)
                                               : sites.keepsFirefoxOrigin(name);
    QCOMPARE(keeps, kept);
    QVERIFY(!KeptSites().keepsHost(name));
}

// Cookies and site storage of the kept site example.com (its subdomains, a partition under another
// site), of other.org, and of bank.example, which the user told Chromium to always allow cookies for.
void TestKeptSites::chromiumKeepsTheKeptSitesCookiesAndStorage()
{
    QFETCH_GLOBAL(bool, exceptions);
    TestHome home;
    F::localState(home, QLatin1String(F::kChromeRoot), {u"Default"_s});
    home.file(
        kChrome + u"/Preferences"_s,
        R"({"profile":{"content_settings":{"exceptions":{"cookies":{"[*.]bank.example,*":{"setting":1},)"
        R"("https://other.org:443,*":{"setting":2}}}}}})");
    for (const char* cookies : {"/Cookies", "/Network/Cookies"}) {
        F::database(home, kChrome + QLatin1String(cookies),
                    {u"CREATE TABLE cookies (host_key TEXT, top_frame_site_key TEXT, name TEXT)"_s,
                     u"INSERT INTO cookies VALUES ('.example.com', '', 'a'), ('mail.example.com', '', 'b'), "
                     "('.other.org', '', 'c'), ('.example.com', 'https://other.org', 'd'), "
                     "('notexample.com', '', 'e'), ('login.bank.example', '', 'f')"_s});
    }
    for (const char* indexedDB :
         {"https_mail.example.com_0.indexeddb.leveldb", "https_other.org_0.indexeddb.leveldb"})
        home.file(kChrome + u"/IndexedDB/"_s + QLatin1String(indexedDB) + u"/LOG"_s);
    const QList<QByteArray> kept{"META:https://example.com", "VERSION",
                                 QByteArray("_https://example.com\0k", 22)};
    F::levelDb(home, kChrome + u"/Local Storage/leveldb"_s,
               kept + QList<QByteArray>{"META:https://other.org", QByteArray("_https://other.org\0k", 20)});
    // File systems: a folder per origin, named in the "Origins" store; an extension's stays too.
    const QString fileSystem = kChrome + u"/File System"_s;
    const QMap<QByteArray, QByteArray> keptFolders{{"LAST_PATH", "002"},
                                                   {"ORIGIN:https_mail.example.com_0", "000"},
                                                   {"ORIGIN:chrome-extension_abc_0", "002"}};
    QMap<QByteArray, QByteArray> origins = keptFolders;
    origins.insert("ORIGIN:https_other.org_0", "001");
    F::levelDb(home, fileSystem + u"/Origins"_s, origins);
    for (const char* file : {"000/t/00/00000001", "001/t/00/00000001", "002/p/00/00000001", "003/t/x"})
        home.file(fileSystem + u'/' + QLatin1String(file));
    clean(home, u"Google Chrome"_s);

    QCOMPARE(F::levelDbKeys(home.path(fileSystem + u"/Origins"_s)), keptFolders.keys());
    for (const char* folder : {"000", "002"})
        QVERIFY2(home.exists(fileSystem + u'/' + QLatin1String(folder)), folder);
    for (const char* folder : {"001", "003"})
        QVERIFY2(!home.exists(fileSystem + u'/' + QLatin1String(folder)), folder);
    for (const char* cookies : {"/Cookies", "/Network/Cookies"})
        QCOMPARE(F::column(home.path(kChrome + QLatin1String(cookies)), u"SELECT name FROM cookies"_s),
                 exceptions ? u"a,b,f"_s : u"a,b"_s);
    QVERIFY(home.exists(kChrome + u"/IndexedDB/https_mail.example.com_0.indexeddb.leveldb/LOG"_s));
    QVERIFY(!home.exists(kChrome + u"/IndexedDB/https_other.org_0.indexeddb.leveldb"_s));
    QList<QByteArray> left = F::levelDbKeys(home.path(kChrome + u"/Local Storage/leveldb"_s));
    std::sort(left.begin(), left.end());
    QList<QByteArray> expected = kept;
    std::sort(expected.begin(), expected.end());
    QCOMPARE(left, expected);
}

// The same in Firefox, with containers; bank.example has a "cookie" permission set to allow.
void TestKeptSites::firefoxKeepsTheKeptSitesInEveryContainer()
{
    QFETCH_GLOBAL(bool, exceptions);
    TestHome home;
    F::database(home, kFirefox + u"/cookies.sqlite"_s,
                {u"CREATE TABLE moz_cookies (id INTEGER PRIMARY KEY, originAttributes TEXT, host TEXT)"_s,
                 u"INSERT INTO moz_cookies (originAttributes, host) VALUES ('', '.example.com'), "
                 "('^userContextId=1', 'mail.example.com'), ('', '.other.org'), "
                 "('^partitionKey=%28https%2Cother.org%29', '.example.com'), ('', 'bank.example')"_s});
    F::database(
        home, kFirefox + u"/permissions.sqlite"_s,
        {u"CREATE TABLE moz_perms (id INTEGER PRIMARY KEY, origin TEXT, type TEXT, permission INTEGER)"_s,
         u"INSERT INTO moz_perms (origin, type, permission) VALUES "
         "('https://example.com^userContextId=1', 'camera', 1), ('https://other.org', 'cookie', 2), "
         "('https://bank.example', 'cookie', 1)"_s,
         u"CREATE TABLE moz_origin_interactions (origin TEXT PRIMARY KEY, lastInteractionTime INTEGER)"_s,
         u"INSERT INTO moz_origin_interactions VALUES ('https://mail.example.com', 1), ('https://other.org', 1)"_s});
    F::firefoxStorage(home, u"a.default"_s, {u"moc.elpmaxe.:https:443"_s, u"gro.rehto.:https:443"_s});
    for (const char* origin :
         {"https+++example.com", "https+++example.com^userContextId=1", "https+++other.org",
          "https+++example.com^partitionKey=%28https%2Cother.org%29"})
        home.file(kFirefox + u"/storage/default/"_s + QLatin1String(origin) + u"/ls/data.sqlite"_s);
    clean(home, u"Firefox"_s);

    QCOMPARE(F::column(home.path(kFirefox + u"/cookies.sqlite"_s), u"SELECT host FROM moz_cookies"_s),
             exceptions ? u".example.com,mail.example.com,bank.example"_s
                        : u".example.com,mail.example.com"_s);
    QCOMPARE(F::column(home.path(kFirefox + u"/permissions.sqlite"_s), u"SELECT origin FROM moz_perms"_s),
             exceptions ? u"https://example.com^userContextId=1,https://bank.example"_s
                        : u"https://example.com^userContextId=1"_s);
    QCOMPARE(F::column(home.path(kFirefox + u"/permissions.sqlite"_s),
                       u"SELECT origin FROM moz_origin_interactions"_s),
             u"https://mail.example.com"_s);
    QCOMPARE(F::column(home.path(kFirefox + u"/webappsstore.sqlite"_s), u"SELECT scope FROM webappsstore2"_s),
             u"moc.elpmaxe.:https:443"_s);
    QCOMPARE(home.exists(kFirefox + u"/storage/default/https+++example.com"_s), true);
    QCOMPARE(home.exists(kFirefox + u"/storage/default/https+++example.com^userContextId=1"_s), true);
    QCOMPARE(home.exists(kFirefox + u"/storage/default/https+++other.org"_s), false);
    QCOMPARE(home.exists(kFirefox +
                         u"/storage/default/https+++example.com^partitionKey=%28https%2Cother.org%29"_s),
             false);
}

// Their zoom levels and content settings in Chromium, their site preferences in Firefox; a setting
// between a kept site and another goes, and the settings for every site stay.
void TestKeptSites::keptSitesKeepTheirWebsitePreferences()
{
    TestHome home;
    F::localState(home, QLatin1String(F::kChromeRoot), {u"Default"_s});
    home.file(
        kChrome + u"/Preferences"_s,
        R"({"partition":{"default_zoom_level":{"x":1.0},"per_host_zoom_levels":{"x":{"mail.example.com":)"
        R"({"zoom_level":2.0},"other.org":{"zoom_level":3.0}}}},"profile":{"content_settings":{"exceptions":)"
        R"({"geolocation":{"https://example.com:443,*":{"setting":1},"https://other.org:443,*":{"setting":1},)"
        R"("https://example.com:443,https://other.org:443":{"setting":1}}}}}})");
    F::database(
        home, kFirefox + u"/content-prefs.sqlite"_s,
        {u"CREATE TABLE groups (id INTEGER PRIMARY KEY, name TEXT NOT NULL)"_s,
         u"CREATE TABLE prefs (id INTEGER PRIMARY KEY, groupID INTEGER, settingID INTEGER, value BLOB)"_s,
         u"INSERT INTO groups VALUES (1, 'mail.example.com'), (2, 'other.org')"_s,
         u"INSERT INTO prefs VALUES (1, 1, 1, 1.5), (2, 2, 1, 2.0), (3, NULL, 1, 1.1)"_s});
    clean(home, u"Google Chrome"_s);
    clean(home, u"Firefox"_s);

    const QByteArray kept =
        R"({"partition":{"default_zoom_level":{"x":1.0},"per_host_zoom_levels":{"x":{"mail.example.com":)"
        R"({"zoom_level":2.0}}}},"profile":{"content_settings":{"exceptions":)"
        R"({"geolocation":{"https://example.com:443,*":{"setting":1}}}}}})";
    QCOMPARE(home.read(kChrome + u"/Preferences"_s), kept);
    QCOMPARE(F::column(home.path(kFirefox + u"/content-prefs.sqlite"_s), u"SELECT id FROM prefs"_s),
             u"1,3"_s);
    QCOMPARE(F::column(home.path(kFirefox + u"/content-prefs.sqlite"_s), u"SELECT name FROM groups"_s),
             u"mail.example.com"_s);
}

QTEST_GUILESS_MAIN(TestKeptSites)
#include "tst_keptsites.moc"
