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
    void linksInCacheFoldersGoAsLinks();
    void aFirefoxProfileListedElsewhereIsCleanedAsTheOthers();
    void preferencesLoseOnlyTheNetworkPredictions_data();
    void preferencesLoseOnlyTheNetworkPredictions();
};

void TestCacheCleaner::eachBrowserLosesItsCaches_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<QStringList>("gone");
    QTest::addColumn<QStringList>("kept");
    const QString container = u"Library/Containers/com.apple.Safari/Data/Library/Caches/"_s;
    QTest::newRow("Safari, its cookie and HSTS lists included")
        << u"Safari"_s
        << kShared + QStringList{u"Library/Caches/com.apple.Safari/Cache.db"_s,
                                 u"Library/Caches/com.apple.Safari/Cache.db-wal"_s,
                                 u"Library/Caches/com.apple.Safari/fsCachedData/1"_s,
                                 u"Library/Cookies/Cookies.plist"_s,
                                 u"Library/Cookies/HSTS.plist"_s,
                                 u"Library/Safari/Template Icons/a.png"_s,
                                 container + u"WebKit/z"_s,
                                 container + u"com.apple.Safari/fsCachedData/q"_s,
                                 u"Library/Caches/CloudKit/com.apple.Safari/db/file"_s}
        << QStringList{container + u"com.apple.Safari/Extensions/e"_s,
                       u"Library/Cookies/Cookies.binarycookies"_s,
                       u"Library/Caches/CloudKit/com.apple.Safari/com.apple.SafariBookmarksSyncAgent/s"_s};
    QTest::newRow("Opera: its whole cache root")
        << u"Opera"_s
        << kShared + QStringList{u"Library/Caches/com.operasoftware.Opera/Cache/data_0"_s,
                                 kOpera + u"/GPUCache/d"_s, kOpera + u"/Service Worker/ScriptCache/s"_s,
                                 kOpera + u"/DawnCache/d"_s}
        << QStringList{kOpera + u"/Cookies"_s, kOpera + u"/Bookmarks"_s};
    QTest::newRow("Google Chrome: the profiles of Local State")
        << u"Google Chrome"_s
        << kShared + QStringList{u"Library/Caches/Google/Chrome/Default/Cache/data_0"_s,
                                 kChrome + u"/Default/GPUCache/d"_s,
                                 kChrome + u"/Default/Pepper Data/Shockwave Flash/CacheWritableAdobeRoot/c"_s,
                                 kChrome + u"/GrShaderCache/g"_s}
        << QStringList{u"Library/Caches/Google/Chrome/Profile 9/Cache/data_0"_s,
                       kChrome + u"/Default/Cookies"_s,
                       kChrome + u"/Default/Pepper Data/Shockwave Flash/WritableRoot/w"_s};
    QTest::newRow("Firefox")
        << u"Firefox"_s
        << kShared + QStringList{u"Library/Caches/Firefox/Profiles/a.default/cache2/entries/e"_s,
                                 kFirefox + u"/a.default/SiteSecurityServiceState.txt"_s,
                                 kFirefox + u"/a.default/AlternateServices.bin"_s}
        << QStringList{kFirefox + u"/a.default/places.sqlite"_s, kFirefox + u"/a.default/cookies.sqlite"_s};
    QTest::newRow("an unknown key: the shared caches only")
        << u"Netscape"_s << kShared << QStringList{u"Library/Caches/com.apple.Safari/Cache.db"_s};
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
    for (const QString& path : gone)
        QVERIFY2(!home.exists(path), qPrintable(path));
    for (const QString& path : kept)
        QVERIFY2(home.exists(path), qPrintable(path));
    if (browser == u"Safari"_s) // the CloudKit cache keeps its folders
        QVERIFY(home.exists(u"Library/Caches/CloudKit/com.apple.Safari/db"_s));
    if (browser == u"Opera"_s) // the cache cleaner's channel-identifier wipe
        QCOMPARE(F::rowCount(home.path(kOpera + u"/Origin Bound Certs"_s), u"channel_id"_s), 0);
}

void TestCacheCleaner::linksInCacheFoldersGoAsLinks()
{
    TestHome home;
    F::localState(home, kChrome, {u"Default"_s});
    const QString target = home.file(u"Documents/keep.txt"_s, "mine");
    QDir().mkpath(home.path(u"Library/Caches/Google/Chrome/Default/Cache"_s));
    QVERIFY(QFile::link(target, home.path(u"Library/Caches/Google/Chrome/Default/Cache/link"_s)));
    QVERIFY(QFile::link(home.path(u"Documents"_s),
                        home.path(u"Library/Caches/Google/Chrome/Default/folder-link"_s)));
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    BrowserCleaners({home.sandbox, catalogue, home.t.defaults, home.t.log})
        .removeBrowserCache(u"Google Chrome"_s);
    QVERIFY(!QFileInfo::exists(home.path(u"Library/Caches/Google/Chrome/Default"_s)));
    QCOMPARE(home.read(u"Documents/keep.txt"_s), QByteArray("mine"));
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
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    QCOMPARE(catalogue.firefoxProfiles(u"Firefox"_s), (QStringList{u"a.default"_s, elsewhere}));
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
