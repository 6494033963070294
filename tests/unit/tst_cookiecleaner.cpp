#include "catalogue/BrowserCatalogue.h"
#include "cleaners/BrowserCleaners.h"
#include "platform/fake/FakeWorkspace.h"
#include "sandbox/HelperScripts.h"
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

// Chrome with two profiles in "Local State" and a third that is not, Chromium with one, Opera's root
// profile.
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
    void theCacheCleanersChannelWipe();
    void helperScriptsAreInstalledOnceAndRunBounded();
};

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
