#include "catalogue/BrowserCatalogue.h"
#include "cleaners/BrowserCleaners.h"
#include "platform/SettingsKeys.h"
#include "platform/fake/FakeWorkspace.h"
#include "sandbox/HelperScripts.h"
#include "sandbox/RemovalPreview.h"
#include "support/BrowserFixtures.h"
#include "support/TestHome.h"

#include <QElapsedTimer>
#include <QTest>

using namespace Qt::StringLiterals;

namespace F = BrowserFixtures;

namespace {

const QString kChrome = QLatin1String(F::kChromeRoot);
const QString kChromium = QLatin1String(F::kChromiumRoot);
const QString kOpera = QLatin1String(F::kOperaRoot);
const QString kFirefox = QLatin1String(F::kFirefoxProfiles);

// Every browser's profiles in one home: Chrome with two profiles in "Local State" and a third that is
// not, Chromium with one, Opera's root profile, a Firefox profile beside a plain file, Safari's cookies.
struct CookieHome
{
    CookieHome()
    {
        F::localState(home, kChrome, {u"Default"_s, u"Profile 1"_s});
        for (const QString& profile : {u"Default"_s, u"Profile 1"_s, u"Profile 9"_s})
            F::chromiumProfile(home, kChrome + u'/' + profile);
        F::localState(home, kChromium, {u"Default"_s});
        F::chromiumProfile(home, kChromium + u"/Default"_s);
        F::chromiumProfile(home, kOpera);
        F::firefoxProfile(home, u"a1.default-esr"_s);
        home.file(kFirefox + u"/profiles.ini"_s);
        home.file(u"Library/Cookies/Cookies.binarycookies"_s);
        home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    }
    BrowserCleaners cleaners(Sandbox& sandbox)
    {
        return BrowserCleaners({sandbox, catalogue, home.t.defaults, home.t.log});
    }

    TestHome home;
    FakeWorkspace workspace;
    BrowserCatalogue catalogue{workspace, home.t.defaults, home.sandbox};
};

} // namespace

class TestCookieCleaner : public QObject
{
    Q_OBJECT
private slots:
    void eachBrowserLosesItsCookiesAndKeepsTheRest_data();
    void eachBrowserLosesItsCookiesAndKeepsTheRest();
    void theCacheCleanersChannelWipe();
    void helperScriptsAreInstalledOnceAndRunBounded();
};

void TestCookieCleaner::eachBrowserLosesItsCookiesAndKeepsTheRest_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<bool>("currentLayouts");
    QTest::addColumn<QStringList>("gone");
    QTest::addColumn<QStringList>("kept");
    QTest::addColumn<QStringList>("emptiedCertTables"); // "origin_bound_certs" rows removed in these
    const auto row = [](const char* name, const char* browser, bool currentLayouts, const char* gone,
                        const char* kept, const char* emptied) {
        const QStringList everywhere =
            F::paths("chrome/Default/Bookmarks, chrome/Default/Login Data, "
                     "firefox/a1.default-esr/places.sqlite, firefox/a1.default-esr/logins.json");
        QTest::newRow(name) << QString::fromLatin1(browser) << currentLayouts << F::paths(gone)
                            << everywhere + F::paths(kept) << F::paths(emptied);
    };
    row("Google Chrome: the profiles of Local State only", "Google Chrome", true,
        "chrome/Default/Cookies, chrome/Profile 1/Cookies, chrome/Default/Network/Cookies, chrome/Profile "
        "1/DIPS, "
        "chrome/Default/Network/Trust Tokens",
        "chrome/Profile 9/Cookies, chromium/Default/Cookies, opera/Cookies, "
        "Library/Cookies/Cookies.binarycookies",
        "chrome/Default, chrome/Profile 1");
    row("Chromium", "Chromium", true, "chromium/Default/Cookies, chromium/Default/Network/Cookies",
        "chrome/Default/Cookies", "chromium/Default");
    row("Opera: its root is its only profile", "Opera", true, "opera/Cookies, opera/Network/Cookies",
        "chrome/Default/Cookies", "opera/");
    row("Chromium without the current layouts", "Chromium", false, "chromium/Default/Cookies",
        "chromium/Default/Network/Cookies", "chromium/Default");
    row("Firefox: permissions go with the cookies", "Firefox", true,
        "firefox/a1.default-esr/cookies.sqlite, firefox/a1.default-esr/permissions.sqlite, "
        "firefox/a1.default-esr/bounce-tracking-protection.sqlite",
        "firefox/profiles.ini, chrome/Default/Cookies", "");
    row("Safari", "Safari", true, "Library/Cookies/Cookies.binarycookies", "chrome/Default/Cookies", "");
    row("an unknown key does nothing", "Netscape", true, "",
        "chrome/Default/Cookies, Library/Cookies/Cookies.binarycookies", "");
}

void TestCookieCleaner::eachBrowserLosesItsCookiesAndKeepsTheRest()
{
    QFETCH(QString, browser);
    QFETCH(bool, currentLayouts);
    QFETCH(QStringList, gone);
    QFETCH(QStringList, kept);
    QFETCH(QStringList, emptiedCertTables);
    CookieHome h;
    h.home.t.defaults.setBool(currentLayouts, SettingsKeys::cleanCurrentLayouts);
    h.cleaners(h.home.sandbox).removeCookies(browser);
    F::expectGoneAndKept(h.home, gone, kept);
    for (const QString& folder : F::paths("chrome/Default, chrome/Profile 1, chromium/Default, opera/")) {
        const QString certs = h.home.path(folder + u"/Origin Bound Certs"_s);
        QCOMPARE(F::rowCount(certs, u"origin_bound_certs"_s), emptiedCertTables.contains(folder) ? 0 : 1);
        QCOMPARE(F::rowCount(certs, u"channel_id"_s), 1); // the cache cleaner's, not this one's
    }
}

void TestCookieCleaner::theCacheCleanersChannelWipe()
{
    CookieHome h;
    BrowserCleaners cleaners = h.cleaners(h.home.sandbox);
    HelperScripts scripts(h.home.sandbox, h.home.t.log);
    CookieCleaner cookies({h.home.sandbox, h.catalogue, h.home.t.defaults, h.home.t.log}, scripts);
    cookies.deleteChromeChannelIDforProfilePath(u"Default"_s, u"Google Chrome"_s);
    cookies.deleteChromeChannelIDforProfilePath(u"Ignored"_s, u"Opera"_s);
    cookies.deleteChromeChannelIDforProfilePath(u"Missing"_s, u"Chromium"_s);
    cookies.deleteChromeChannelIDforProfilePath(u".."_s, u"Chromium"_s);
    QCOMPARE(F::rowCount(h.home.path(kChrome + u"/Default/Origin Bound Certs"_s), u"channel_id"_s), 0);
    QCOMPARE(F::rowCount(h.home.path(kOpera + u"/Origin Bound Certs"_s), u"channel_id"_s), 0);
    QCOMPARE(F::rowCount(h.home.path(kChrome + u"/Profile 1/Origin Bound Certs"_s), u"channel_id"_s), 1);
    QVERIFY(!h.home.exists(kChromium + u"/Missing"_s)); // no database is created
}

void TestCookieCleaner::helperScriptsAreInstalledOnceAndRunBounded()
{
    TestHome home;
    const QString folder = u"Library/Application Scripts/com.tovanex.Corvella6/"_s;
    HelperScripts scripts(home.sandbox, home.t.log, 500);
    scripts.installAll();
    for (const QString& name :
         {HelperScripts::clearCookies, HelperScripts::clearSafariHistory, HelperScripts::clearSafariCache})
        QVERIFY2(home.read(folder + name).startsWith("#!/bin/sh"), qPrintable(name));
    // The user's own version stays, and is what runs, with HOME set to the real home.
    home.file(folder + HelperScripts::clearCookies, "touch \"$HOME/ran\"\nexit 3\n");
    QVERIFY(scripts.checkForScriptInFolder(HelperScripts::clearCookies));
    QVERIFY(scripts.executeScript(HelperScripts::clearCookies));
    QVERIFY(home.exists(u"ran"_s));
    home.file(folder + HelperScripts::clearSafariCache, "sleep 30\n");
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!scripts.executeScript(HelperScripts::clearSafariCache));
    QVERIFY(clock.elapsed() < 5000);
    QVERIFY(!home.t.log.lines().filter(u"stopped the script"_s).isEmpty());
    // The shipped scripts are harmless where there is no Safari.
    QFile::remove(home.path(folder + HelperScripts::clearSafariHistory));
    QVERIFY(scripts.executeScript(HelperScripts::clearSafariHistory));
}

QTEST_GUILESS_MAIN(TestCookieCleaner)
#include "tst_cookiecleaner.moc"
