#include "core/RemovalRun.h"
#include "core/RunLock.h"
#include "platform/SettingsKeys.h"
#include "support/TestAgent.h"
#include "support/TestHome.h"

#include <QElapsedTimer>
#include <QTest>
#include <QThread>

#include <csignal>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

// The controller on a temporary home, protecting Safari and Firefox.
struct ProtectedAgent
{
    ProtectedAgent()
    {
        home.t.defaults.setBool(true, SettingsKeys::isRunning);
        home.t.defaults.setBool(true, SettingsKeys::displayNotifications);
        home.t.defaults.setObject(QVariantList{u"com.apple.Safari"_s, u"org.mozilla.firefox"_s},
                                  SettingsKeys::enabledBrowsers);
        agent.app.setRunDelays(50, 300);
        agent.app.startObservingSettings();
        QObject::connect(&agent.workspace, &Workspace::didTerminateApplication, &agent.app,
                         &AppDelegate::appTerminated);
    }
    void select(const QVariantMap& settings) { home.t.defaults.setObject(settings, SettingsKeys::settings); }
    void quit(const QString& name, const QString& id = QString()) { agent.workspace.terminate(name, id); }

    TestHome home;
    TestAgent agent{home.t};
};

class TestRemovalRun : public QObject
{
    Q_OBJECT
private slots:
    void notificationTexts_data();
    void notificationTexts();
    void whatAQuitSetsOff_data();
    void whatAQuitSetsOff();
    void withoutAccessARunRemovesNothingAndSaysSoOnce();
    void aBrowserStartingDuringARunStopsItsChanges();
    void aRunWaitsForTheLockHeldByAnotherProcess_data();
    void aRunWaitsForTheLockHeldByAnotherProcess();
};

void TestRemovalRun::notificationTexts_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<QStringList>("labels");
    QTest::addColumn<QString>("text");
    QTest::newRow("percent signs stay") << u"B%1%@"_s << QStringList{u"%2"_s} << u"%2 removed from B%1%@"_s;
}

void TestRemovalRun::notificationTexts()
{
    QFETCH(QString, browser);
    QFETCH(QStringList, labels);
    QFETCH(QString, text);
    QCOMPARE(RemovalRun::notificationText(browser, labels), text);
}

void TestRemovalRun::whatAQuitSetsOff_data()
{
    QTest::addColumn<QString>("quitting"); // name, and identifier after a "|"
    QTest::addColumn<QString>("key");      // a setting changed before or after the quit, if any
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("beforeTheQuit");
    QTest::addColumn<int>("runs");
    QTest::addColumn<int>("notifications");
    QTest::newRow("protection off") << u"Firefox"_s << SettingsKeys::isRunning << QVariant(false) << true << 0
                                    << 0;
    QTest::newRow("running again at once") << u"Firefox"_s << u"running"_s << QVariant() << true << 0 << 0;
    // Read at the quit: switching them off in the next seconds does not reach these runs.
    QTest::newRow("notifications off after the quit")
        << u"Firefox"_s << SettingsKeys::displayNotifications << QVariant(false) << false << 2 << 1;
    QTest::newRow("protection off after the quit")
        << u"Firefox"_s << SettingsKeys::isRunning << QVariant(false) << false << 0 << 0;
}

void TestRemovalRun::whatAQuitSetsOff()
{
    QFETCH(QString, quitting);
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(bool, beforeTheQuit);
    ProtectedAgent p;
    p.select({{u"Firefox:cache"_s, true}, {u"Chromium:cache"_s, true}});
    if (key == u"running")
        p.agent.workspace.setRunning({{u"Firefox"_s, u"org.mozilla.firefox"_s, 4242}});
    else if (beforeTheQuit && !key.isEmpty())
        p.home.t.defaults.setObject(value, key);
    p.quit(quitting.section(u'|', 0, 0), quitting.section(u'|', 1));
    if (!beforeTheQuit)
        p.home.t.defaults.setObject(value, key);
    QTest::qWait(600);
    QVERIFY(p.agent.app.waitForRuns(1000));
    QTEST(int(p.agent.cleaners.calls().size()), "runs");
    QTEST(int(p.agent.notifications.delivered().size()), "notifications");
    if (key == u"running") // skipped, and the log says so for each run
        QCOMPARE(p.home.t.log.lines().filter(u"skipped removing data of Firefox: it is running"_s).size(), 2);
}

void TestRemovalRun::withoutAccessARunRemovesNothingAndSaysSoOnce()
{
    TestHome home(false);
    TestAgent agent(home.t);
    home.t.defaults.setBool(true, SettingsKeys::isRunning);
    home.t.defaults.setObject(QVariantList{u"org.mozilla.firefox"_s}, SettingsKeys::enabledBrowsers);
    home.t.defaults.setObject(QVariantMap{{u"Firefox:cache"_s, true}}, SettingsKeys::settings);
    agent.app.startObservingSettings();
    for (int i = 0; i < 2; ++i)
        agent.app.clearData(u"Firefox"_s, true);
    QVERIFY(agent.app.waitForRuns(2000));
    QVERIFY(agent.cleaners.calls().isEmpty());
    QCOMPARE(agent.notifications.delivered().size(), 1);
    QVERIFY(agent.notifications.delivered().first().subtitle.contains(u"no access to your home folder"_s));
    QVERIFY(agent.panel.requests.isEmpty()); // never asks from a run
}

void TestRemovalRun::aBrowserStartingDuringARunStopsItsChanges()
{
    TestHome home;
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    home.file(u"cookies.sqlite"_s);
    home.file(u"cache2/entries/A"_s);
    RecordingCleaners cleaners;
    // Firefox starts while its cookies are removed; what comes after must not touch its files.
    cleaners.during = [&](const QString& call) {
        if (call.startsWith(u"removeCookies"_s)) {
            home.sandbox.remove(u"~/cookies.sqlite"_s);
            workspace.setRunning({{u"Firefox"_s, u"org.mozilla.firefox"_s, 4242}});
            QThread::msleep(RunStop::kLookIntervalMs + 10);
        } else if (call.startsWith(u"removeBrowserCache"_s)) {
            home.sandbox.removeRecursiveSubFilesFor(u"~/cache2"_s);
        } else {
            home.sandbox.write(QByteArray("{}"), u"~/written.json"_s);
            home.sandbox.createDirectory(u"~/made"_s);
        }
    };
    RemovalRunServices run{cleaners, catalogue, home.t.log, QString()};
    run.stop = &home.sandbox.runStop();
    const RunOutcome outcome = RemovalRun::perform(
        u"Firefox"_s,
        [] {
            return QVariantMap{
                {u"Firefox:cookies"_s, true}, {u"Firefox:cache"_s, true}, {u"Firefox:history"_s, true}};
        },
        run);
    QCOMPARE(outcome.status, RunOutcome::BrowserStarted);
    QVERIFY(!home.exists(u"cookies.sqlite"_s));
    QVERIFY(home.exists(u"cache2/entries/A"_s));
    QVERIFY(!home.exists(u"written.json"_s));
    QVERIFY(!home.exists(u"made"_s));
    QCOMPARE(
        home.t.log.lines().filter(u"stopped removing data of Firefox: it started during the run"_s).size(),
        1);
    workspace.setRunning({}); // the next run, once it has quit, is a whole one again
    const auto cacheOnly = [] { return QVariantMap{{u"Firefox:cache"_s, true}}; };
    QCOMPARE(RemovalRun::perform(u"Firefox"_s, cacheOnly, run).status, RunOutcome::Done);
    QVERIFY(!home.exists(u"cache2/entries/A"_s));
}

// Another process holds the run lock for the given time; returns its pid once it holds it.
static pid_t holdRunLock(TestHome& home, int ms)
{
    int ready[2];
    if (::pipe(ready) != 0)
        return -1;
    const pid_t child = ::fork();
    if (child == 0) {
        const RunLock held(RunLock::pathForHome(home.path()), home.t.log);
        [[maybe_unused]] auto written = ::write(ready[1], "x", 1);
        ::usleep(useconds_t(ms) * 1000);
        ::_exit(0);
    }
    char byte;
    return ::read(ready[0], &byte, 1) == 1 ? child : -1;
}

void TestRemovalRun::aRunWaitsForTheLockHeldByAnotherProcess_data()
{
    QTest::addColumn<bool>("quitWhileWaiting");
    QTest::newRow("the lock is freed") << false;
    QTest::newRow("the agent quits meanwhile") << true;
}

void TestRemovalRun::aRunWaitsForTheLockHeldByAnotherProcess()
{
    QFETCH(bool, quitWhileWaiting);
    TestHome home;
    const pid_t child = holdRunLock(home, quitWhileWaiting ? 5000 : 400);
    QVERIFY(child > 0);
    TestAgent agent(home.t, RunLock::pathForHome(home.path()));
    home.t.defaults.setBool(true, SettingsKeys::isRunning);
    home.t.defaults.setObject(QVariantList{u"com.operasoftware.Opera"_s}, SettingsKeys::enabledBrowsers);
    home.t.defaults.setObject(QVariantMap{{u"Opera:cache"_s, true}}, SettingsKeys::settings);
    agent.app.startObservingSettings();
    QElapsedTimer clock;
    clock.start();
    agent.app.clearData(u"Opera"_s, false);
    if (quitWhileWaiting) {
        QTest::qWait(200);
        agent.app.applicationWillTerminate(); // must not wait for the other process
        QVERIFY2(clock.elapsed() < 1500, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(agent.cleaners.calls().isEmpty());
        ::kill(child, SIGKILL);
    } else {
        QVERIFY(agent.app.waitForRuns(5000));
        QVERIFY(clock.elapsed() >= 300);
        QCOMPARE(agent.cleaners.calls(), QStringList{u"removeBrowserCache Opera"_s});
    }
    ::waitpid(child, nullptr, 0);
}

QTEST_GUILESS_MAIN(TestRemovalRun)
#include "tst_removalrun.moc"
