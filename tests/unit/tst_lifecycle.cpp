#include "platform/SettingsKeys.h"
#include "support/TestAgent.h"
#include "support/TestHome.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class TestLifecycle : public QObject
{
    Q_OBJECT
private slots:
    void theFirstLaunchOpensThePopoverAndDoesNotWatch();
    void laterLaunchesWatchOnceTheHomeIsGranted_data();
    void laterLaunchesWatchOnceTheHomeIsGranted();
    void safariGetsItsScriptsAndTheScriptsUrlShowsTheirFolder();
    void withoutAnActivatedBrowserTheUserIsAsked();
    void launchedFromLoginWithHideOnLaunchShowsNoWindow();
    void terminationStopsTheWatchAndTheObservations();
};

void TestLifecycle::theFirstLaunchOpensThePopoverAndDoesNotWatch()
{
    TestHome home;
    TestAgent agent(home.t);
    QSignalSpy popover(&agent.app, &AppDelegate::popoverRequested);
    agent.app.applicationWillFinishLaunching();
    agent.app.applicationDidFinishLaunching();
    QCOMPARE(home.t.defaults.objectForKey(SettingsKeys::firstRun), std::optional<QVariant>(false));
    QCOMPARE(agent.folderWatch.starts, 0);
    QCOMPARE(popover.size(), 0);
    QTRY_COMPARE(popover.size(), 1);
}

void TestLifecycle::laterLaunchesWatchOnceTheHomeIsGranted_data()
{
    QTest::addColumn<QString>("grant");
    QTest::newRow("recorded before the launch") << u"recorded"_s;
    QTest::newRow("refused, then given when tried again") << u"asked again"_s;
    QTest::newRow("refused, then given by corvella-clean meanwhile") << u"elsewhere"_s;
}

void TestLifecycle::laterLaunchesWatchOnceTheHomeIsGranted()
{
    QFETCH(QString, grant);
    TestHome home(grant == u"recorded"_s);
    home.t.defaults.setBool(false, SettingsKeys::firstRun);
    TestAgent agent(home.t);
    agent.app.applicationWillFinishLaunching();
    agent.app.applicationDidFinishLaunching();
    QCOMPARE(agent.app.watchingApplicationsFolder(), grant == u"recorded"_s);
    if (grant != u"recorded"_s) {
        QVERIFY(home.t.log.lines().contains(u"Corvella Sandbox has denied access to /Applications"_s));
        QCOMPARE(agent.folderWatch.starts, 0);
        agent.panel.requests.clear();
        if (grant == u"asked again"_s) {
            agent.panel.answer(home.path());
            agent.app.watchApplicationsFolder();
        } else { // the grant lands in the shared settings
            home.panel.answer(home.path());
            QVERIFY(home.sandbox.enableAccess());
            QVERIFY(agent.panel.requests.isEmpty());
        }
    }
    QVERIFY(agent.app.watchingApplicationsFolder());
    QCOMPARE(agent.folderWatch.watchedPaths, QStringList{u"/Applications"_s});
    QCOMPARE(agent.folderWatch.latency, 3000);
    agent.app.watchApplicationsFolder(); // once is enough
    QCOMPARE(agent.folderWatch.starts, 1);
}

void TestLifecycle::safariGetsItsScriptsAndTheScriptsUrlShowsTheirFolder()
{
    TestHome home;
    home.t.defaults.setBool(false, SettingsKeys::firstRun);
    TestAgent agent(home.t);
    agent.app.applicationDidFinishLaunching();
    const QString folder = u"Library/Application Scripts/com.tovanex.Corvella6"_s;
    QVERIFY(!home.exists(folder)); // no Safari, no scripts
    home.t.defaults.setObject(QVariantList{u"com.apple.Safari"_s}, SettingsKeys::enabledBrowsers);
    QVERIFY(home.exists(folder + u"/clearCookies.sh"_s) && home.exists(folder + u"/clearSafariCache.sh"_s));

    QVERIFY(agent.app.handleURLEvent(u"COM.TOVANEX.CORVELLA.SCRIPTS://OpenScriptsFolder"_s));
    QCOMPARE(agent.workspace.revealed, QList<QUrl>{QUrl::fromLocalFile(home.path(folder))});
    QVERIFY(!agent.app.handleURLEvent(u"https://example.org/"_s));
    QCOMPARE(agent.workspace.revealed.size(), 1);
}

void TestLifecycle::withoutAnActivatedBrowserTheUserIsAsked()
{
    TestHome home;
    TestAgent agent(home.t);
    QSignalSpy ask(&agent.app, &AppDelegate::browserPopoverRequested);
    agent.app.checkEnabledBrowsers();
    QTRY_COMPARE(ask.size(), 1);
    home.t.defaults.setObject(QVariantList{u"org.mozilla.firefox"_s}, SettingsKeys::enabledBrowsers);
    agent.app.checkEnabledBrowsers();
    QTest::qWait(1200);
    QCOMPARE(ask.size(), 1);
}

void TestLifecycle::launchedFromLoginWithHideOnLaunchShowsNoWindow()
{
    for (const bool fromLogin : {false, true}) {
        TestHome home;
        home.t.defaults.setBool(true, SettingsKeys::hideOnLaunch);
        TestAgent agent(home.t);
        if (fromLogin)
            agent.workspace.setRunning({{u"Corvella Login Helper"_s, u"com.tovanex.Corvella6Helper"_s, 9}});
        QSignalSpy window(&agent.app, &AppDelegate::windowRequested);
        agent.app.applicationWillFinishLaunching();
        QCOMPARE(agent.app.openedFromLogin(), fromLogin);
        agent.app.applicationDidFinishLaunching();
        QCOMPARE(window.size(), fromLogin ? 0 : 1);
        agent.app.applicationDidBecomeActive();
        QVERIFY(!agent.app.openedFromLogin());
    }
}

void TestLifecycle::terminationStopsTheWatchAndTheObservations()
{
    TestHome home;
    home.t.defaults.setBool(false, SettingsKeys::firstRun);
    home.t.defaults.setBool(true, SettingsKeys::isRunning);
    home.t.defaults.setObject(QVariantList{u"org.mozilla.firefox"_s}, SettingsKeys::enabledBrowsers);
    TestAgent agent(home.t);
    agent.app.setRunDelays(10, 20);
    agent.app.applicationDidFinishLaunching();
    QVERIFY(agent.folderWatch.isWatching());
    agent.app.applicationWillTerminate();
    QVERIFY(!agent.folderWatch.isWatching());
    home.t.defaults.setObject(QVariantMap{{u"Firefox:cache"_s, true}}, SettingsKeys::settings);
    QVERIFY(agent.app.settingsController().content().isEmpty());
    agent.workspace.terminate(u"Firefox"_s, u"org.mozilla.firefox"_s);
    QTest::qWait(100);
    QVERIFY(agent.cleaners.calls().isEmpty());
}

QTEST_GUILESS_MAIN(TestLifecycle)
#include "tst_lifecycle.moc"
