#include "core/AppDelegate.h"
#include "platform/RealHomeDirectory.h"
#include "platform/SettingsKeys.h"
#include "support/TestAgent.h"
#include "support/TestHome.h"

#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

// The agent over fakes of every platform service: its launches, its settings, start at login, its end.
class TestLifecycle : public QObject
{
    Q_OBJECT
private slots:
    void laterLaunchesWatchOnceTheHomeIsGranted_data();
    void laterLaunchesWatchOnceTheHomeIsGranted();
    void launchedFromLoginWithHideOnLaunchShowsNoWindow();
    void initializeRegistersTheShippedDefaultsAndTheRealHome();
};

void TestLifecycle::laterLaunchesWatchOnceTheHomeIsGranted_data()
{
    QTest::addColumn<QString>("grant");
    QTest::newRow("recorded before the launch") << u"recorded"_s;
    QTest::newRow("refused, then given when tried again") << u"asked again"_s;
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
        agent.panel.answer(home.path());
        agent.app.watchApplicationsFolder();
    }
    QVERIFY(agent.app.watchingApplicationsFolder());
    QCOMPARE(agent.folderWatch.watchedPaths, QStringList{u"/Applications"_s});
    QCOMPARE(agent.folderWatch.latency, 3000);
    agent.app.watchApplicationsFolder(); // once is enough
    QCOMPARE(agent.folderWatch.starts, 1);
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

void TestLifecycle::initializeRegistersTheShippedDefaultsAndTheRealHome()
{
    const auto restore = qScopeGuard([home = qgetenv("HOME")] { qputenv("HOME", home); });
    qputenv("HOME", "/nonexistent/not-the-home");
    TestDefaults t;
    AppDelegate::initialize(t.defaults);
    QCOMPARE(t.defaults.stringForKey(SettingsKeys::userFolder),
             QString::fromUtf8(getpwuid(getuid())->pw_dir));
    QCOMPARE(t.defaults.stringForKey(SettingsKeys::userFolder), RealHomeDirectory());
    // Written to the store, not only registered.
    QVERIFY(t.backend->read()->contains(SettingsKeys::userFolder));
    // The first launch is recognised by the absence of "firstRun": the shipped defaults never set it.
    QVERIFY(!t.defaults.objectForKey(SettingsKeys::firstRun));
    // Every other browser of the table starts with its family's choices.
    const QVariantMap settings = t.defaults.dictionaryForKey(SettingsKeys::settings);
    for (const char* category : {"cache", "downloads", "flash"}) {
        const QString key = QLatin1String(category);
        QCOMPARE(settings.value(u"Brave:"_s + key), settings.value(u"Chromium:"_s + key));
        QCOMPARE(settings.value(u"Floorp:"_s + key), settings.value(u"Firefox:"_s + key));
    }
    QVERIFY(settings.value(u"Brave:cache"_s).isValid());
}

QTEST_GUILESS_MAIN(TestLifecycle)
#include "tst_lifecycle.moc"
