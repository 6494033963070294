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
    TestHome home;
    F::localState(home, kChrome, {u"Default"_s, u"Profile 1"_s});
    F::localState(home, kChromium, {u"Default"_s});
    for (const QString& profile :
         QStringList{kChrome + u"/Default"_s, kChrome + u"/Profile 1"_s, kChromium + u"/Default"_s, kOpera})
        F::chromiumProfile(home, profile);
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    HelperScripts scripts(home.sandbox, home.t.log);
    CookieCleaner cookies({home.sandbox, catalogue, home.t.defaults, home.t.log}, scripts);
    cookies.deleteChromeChannelIDforProfilePath(u"Default"_s, u"Google Chrome"_s);
    cookies.deleteChromeChannelIDforProfilePath(u"Ignored"_s, u"Opera"_s);
    cookies.deleteChromeChannelIDforProfilePath(u"Missing"_s, u"Chromium"_s);
    cookies.deleteChromeChannelIDforProfilePath(u".."_s, u"Chromium"_s);
    QCOMPARE(F::rowCount(home.path(kChrome + u"/Default/Origin Bound Certs"_s), u"channel_id"_s), 0);
    QCOMPARE(F::rowCount(home.path(kOpera + u"/Origin Bound Certs"_s), u"channel_id"_s), 0);
    QCOMPARE(F::rowCount(home.path(kChrome + u"/Profile 1/Origin Bound Certs"_s), u"channel_id"_s), 1);
    QVERIFY(!home.exists(kChromium + u"/Missing"_s)); // no database is created
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
