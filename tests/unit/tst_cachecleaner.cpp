#include "catalogue/BrowserCatalogue.h"
#include "cleaners/BrowserCleaners.h"
#include "platform/SettingsKeys.h"
#include "platform/fake/FakeWorkspace.h"
#include "support/BrowserFixtures.h"
#include "support/PlistFixtures.h"
#include "support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace F = BrowserFixtures;

namespace {
const QString kChrome = QLatin1String(F::kChromeRoot);
const QString kOpera = QLatin1String(F::kOperaRoot);
const QString kFirefox = QLatin1String(F::kFirefoxProfiles);
const QByteArray kPreferences =
    R"({"profile":{"name":"x"},"net":{"http_server_properties":{"servers":[{"https://a.org":{}}]},"network_prediction_options":2},"dns_prefetching":{"host":["a.org"]},"bookmark_bar":{"show":true}})";
const QStringList kShared{u"Library/Caches/Adobe/Flash Player/x"_s,
                          u"Library/Caches/QuickTime/downloads/y"_s};
} // namespace

class TestCacheCleaner : public QObject
{
    Q_OBJECT
private slots:
    void eachBrowserLosesItsCaches_data();
    void eachBrowserLosesItsCaches();
    void aFirefoxProfileListedElsewhereIsCleanedAsTheOthers();
    void preferencesLoseOnlyTheNetworkPredictions_data();
    void preferencesLoseOnlyTheNetworkPredictions();
};

void TestCacheCleaner::eachBrowserLosesItsCaches_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<QStringList>("gone");
    QTest::addColumn<QStringList>("kept");
    const auto row = [](const char* name, const char* browser, const char* gone, const char* kept) {
        QTest::newRow(name) << QString::fromLatin1(browser) << kShared + F::paths(gone) << F::paths(kept);
    };
    row("Safari, its cookie and HSTS lists included", "Safari",
        "Library/Caches/com.apple.Safari/Cache.db, Library/Caches/com.apple.Safari/Cache.db-wal, "
        "Library/Caches/com.apple.Safari/fsCachedData/1, Library/Cookies/Cookies.plist, "
        "Library/Cookies/HSTS.plist, safari/Template Icons/a.png, "
        "Library/Containers/com.apple.Safari/Data/Library/Caches/WebKit/z, "
        "Library/Containers/com.apple.Safari/Data/Library/Caches/com.apple.Safari/fsCachedData/q, "
        "Library/Caches/CloudKit/com.apple.Safari/db/file",
        "Library/Containers/com.apple.Safari/Data/Library/Caches/com.apple.Safari/Extensions/e, "
        "Library/Cookies/Cookies.binarycookies, "
        "Library/Caches/CloudKit/com.apple.Safari/com.apple.SafariBookmarksSyncAgent/s");
    row("Opera: its whole cache root", "Opera",
        "Library/Caches/com.operasoftware.Opera/Cache/data_0, opera/GPUCache/d, "
        "opera/Service Worker/ScriptCache/s, opera/DawnCache/d",
        "opera/Cookies, opera/Bookmarks");
    row("Google Chrome: the profiles of Local State", "Google Chrome",
        "Library/Caches/Google/Chrome/Default/Cache/data_0, chrome/Default/GPUCache/d, "
        "chrome/Default/Pepper Data/Shockwave Flash/CacheWritableAdobeRoot/c, chrome/GrShaderCache/g",
        "Library/Caches/Google/Chrome/Profile 9/Cache/data_0, chrome/Default/Cookies, "
        "chrome/Default/Pepper Data/Shockwave Flash/WritableRoot/w");
    row("Firefox", "Firefox",
        "Library/Caches/Firefox/Profiles/a.default/cache2/entries/e, "
        "firefox/a.default/SiteSecurityServiceState.txt, firefox/a.default/AlternateServices.bin",
        "firefox/a.default/places.sqlite, firefox/a.default/cookies.sqlite");
    row("an unknown key: the shared caches only", "Netscape", "", "Library/Caches/com.apple.Safari/Cache.db");
}

void TestCacheCleaner::eachBrowserLosesItsCaches()
{
    QFETCH(QString, browser);
    QFETCH(QStringList, gone);
    QFETCH(QStringList, kept);
    TestHome home;
    home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    F::localState(home, kChrome, {u"Default"_s});
    F::chromiumProfile(home, kChrome + u"/Default"_s);
    F::chromiumProfile(home, kOpera);
    F::firefoxProfile(home, u"a.default"_s);
    for (const QString& path : gone + kept)
        home.file(path);
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    BrowserCleaners({home.sandbox, catalogue, home.t.defaults, home.t.log}).removeBrowserCache(browser);
    F::expectGoneAndKept(home, gone, kept);
    if (browser == u"Safari"_s) // the CloudKit cache keeps its folders
        QVERIFY(home.exists(u"Library/Caches/CloudKit/com.apple.Safari/db"_s));
    if (browser == u"Opera"_s) // the cache cleaner's channel-identifier wipe
        QCOMPARE(F::rowCount(home.path(kOpera + u"/Origin Bound Certs"_s), u"channel_id"_s), 0);
}

// profiles.ini may list a profile by its full path (IsRelative=0): one in the home folder is cleaned like
// those in the profiles folder, its cache being in its own folder; one outside is reported and left.
void TestCacheCleaner::aFirefoxProfileListedElsewhereIsCleanedAsTheOthers()
{
    TestHome home;
    QTemporaryDir outsideHome;
    F::firefoxProfile(home, u"a.default"_s);
    const QString elsewhere = home.folder(u"elsewhere/abs.profile"_s);
    const QString outside = outsideHome.path() + u"/out.profile"_s;
    for (const QString& profile : {elsewhere, outside}) {
        for (const char* file : {"/cookies.sqlite", "/prefs.js", "/cache2/entries/e", "/startupCache/s",
                                 "/storage/default/https+++a.org/idb/1.sqlite", "/places.sqlite"})
            PlistFixtures::writeFile(profile + QLatin1String(file), "x");
    }
    home.file(kFirefox + u"/profiles.ini"_s,
              u"[General]\nStartWithLastProfile=1\n\n"
              "[Profile0]\nName=default\nIsRelative=1\nPath=a.default\n\n"
              "[Profile1]\nName=abs\nIsRelative=0\nPath=%1\n\n"
              "[Profile2]\nName=out\nIsRelative=0\nPath=%2\n"_s.arg(elsewhere, outside)
                  .toUtf8());
    // installs.ini names the profile an install uses by default, by its full path when it lies elsewhere.
    const QString installs = home.folder(u"elsewhere/installs.profile"_s);
    home.file(kFirefox + u"/installs.ini"_s,
              u"[4F96D1932A9F858E]\nDefault=%1\nLocked=1\n"_s.arg(installs).toUtf8());
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    QCOMPARE(catalogue.firefoxProfiles(u"Firefox"_s), (QStringList{u"a.default"_s, elsewhere, installs}));
    BrowserCleaners cleaners({home.sandbox, catalogue, home.t.defaults, home.t.log});
    cleaners.removeCookies(u"Firefox"_s);
    cleaners.removeBrowserCache(u"Firefox"_s);
    cleaners.removeNonFavLocalStorage(u"Firefox"_s);

    for (const char* gone : {"/cookies.sqlite", "/cache2", "/startupCache", "/storage/default/https+++a.org"})
        QVERIFY2(!QFileInfo::exists(elsewhere + QLatin1String(gone)), gone);
    QVERIFY(QFileInfo::exists(elsewhere + u"/places.sqlite"_s));
    for (const char* kept : {"/cookies.sqlite", "/cache2/entries/e", "/storage/default/https+++a.org"})
        QVERIFY2(QFileInfo::exists(outside + QLatin1String(kept)), kept);
    QCOMPARE(home.t.log.lines().filter(u"left the Firefox profile %1 alone"_s.arg(outside)).size(), 1);
}

void TestCacheCleaner::preferencesLoseOnlyTheNetworkPredictions_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("keys kept in order")
        << kPreferences
        << QByteArray(
               R"({"profile":{"name":"x"},"net":{"network_prediction_options":2},"bookmark_bar":{"show":true}})");
    QTest::newRow("not JSON") << QByteArray("{broken") << QByteArray("{}");
}

void TestCacheCleaner::preferencesLoseOnlyTheNetworkPredictions()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    TestHome home;
    home.file(kOpera + u"/Preferences"_s, before);
    home.sandbox.removeExtraChromeCacheData(u"~/"_s + kOpera + u"/Preferences"_s);
    QCOMPARE(home.read(kOpera + u"/Preferences"_s), after);
    home.sandbox.removeExtraChromeCacheData(u"~/"_s + kOpera + u"/Missing"_s);
    QVERIFY(!home.exists(kOpera + u"/Missing"_s));
}

QTEST_GUILESS_MAIN(TestCacheCleaner)
#include "tst_cachecleaner.moc"
