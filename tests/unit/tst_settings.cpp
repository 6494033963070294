#include "core/AppDelegate.h"
#include "platform/RealHomeDirectory.h"
#include "platform/SettingsKeys.h"
#include "support/PlistFixtures.h"
#include "support/TestAgent.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class TestSettings : public QObject
{
    Q_OBJECT
private slots:
    void initializeRegistersTheShippedDefaultsAndTheRealHome();
    void aMissingDefaultsResourceRegistersNothing();
    void theMirrorHoldsWhatIsSelectedNow();
    void protectionCannotBeOnWithoutABrowser();
};

void TestSettings::initializeRegistersTheShippedDefaultsAndTheRealHome()
{
    qputenv("HOME", "/nonexistent/not-the-home");
    TestDefaults t;
    AppDelegate::initialize(t.defaults);
    QCOMPARE(t.defaults.stringForKey(SettingsKeys::userFolder),
             QString::fromUtf8(getpwuid(getuid())->pw_dir));
    QCOMPARE(t.defaults.stringForKey(SettingsKeys::userFolder), RealHomeDirectory());
    // Written to the store, not only registered.
    QVERIFY(t.backend->read()->contains(SettingsKeys::userFolder));
    QVERIFY(t.defaults.boolForKey(SettingsKeys::showInMenu));
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

void TestSettings::aMissingDefaultsResourceRegistersNothing()
{
    QTemporaryDir dir;
    const QString broken = dir.filePath(u"Defaults.plist"_s);
    QVERIFY(PlistFixtures::writeFile(broken, "<plist><dict><key>showInMenu</key>"));
    for (const QString& resource : {broken, dir.filePath(u"missing.plist"_s)}) {
        TestDefaults t;
        AppDelegate::initialize(t.defaults, resource);
        QVERIFY(!t.defaults.boolForKey(SettingsKeys::showInMenu));
        QVERIFY(t.defaults.dictionaryForKey(SettingsKeys::settings).isEmpty());
        QVERIFY(t.defaults.stringForKey(SettingsKeys::userFolder));
    }
}

// The selection the removal runs read: only entries that are true, replaced as a whole at each change
// (the popover's, the command-line cleaner's, a synced copy's), until the agent stops observing.
void TestSettings::theMirrorHoldsWhatIsSelectedNow()
{
    TestDefaults t;
    t.defaults.setObject(QVariantMap{{u"Safari:cookies"_s, true},
                                     {u"Safari:cache"_s, false},
                                     {u"Firefox:history"_s, 1},
                                     {u"Firefox:cache"_s, u"true"_s}},
                         SettingsKeys::settings);
    TestAgent agent(t);
    AppDelegate& app = agent.app;
    app.startObservingSettings();
    QCOMPARE(app.settingsController().content(), (QVariantMap{{u"Safari:cookies"_s, true}}));
    t.defaults.setObject(QVariantMap{{u"Chromium:cache"_s, true}}, SettingsKeys::settings);
    QCOMPARE(app.settingsController().content().keys(), QStringList{u"Chromium:cache"_s});
    t.backend->changeExternally(
        QVariantMap{{SettingsKeys::settings, QVariantMap{{u"Opera:history"_s, true}}}});
    QCOMPARE(app.settingsController().content().keys(), QStringList{u"Opera:history"_s});
    // A choice in the popover: the stored dictionary keeps its false entries, the mirror only true ones.
    app.setCategorySelected(u"Firefox"_s, u"history"_s, true);
    app.setCategorySelected(u"Opera"_s, u"history"_s, false);
    QCOMPARE(app.settingsController().content().keys(), QStringList{u"Firefox:history"_s});
    QCOMPARE(t.backend->read()->value(SettingsKeys::settings).toMap(),
             (QVariantMap{{u"Firefox:history"_s, true}, {u"Opera:history"_s, false}}));
    app.stopObservingSettings();
    t.defaults.setObject(QVariantMap{}, SettingsKeys::settings);
    QCOMPARE(app.settingsController().content().size(), 1);
}

void TestSettings::protectionCannotBeOnWithoutABrowser()
{
    TestDefaults t;
    TestAgent agent(t);
    AppDelegate& app = agent.app;
    QSignalSpy enabled(&app, &AppDelegate::mainSwitchEnabledChanged);
    t.defaults.setObject(QVariantList{u"org.mozilla.firefox"_s}, SettingsKeys::enabledBrowsers);
    t.defaults.setBool(true, SettingsKeys::isRunning);
    app.checkEnabledButton();
    QVERIFY(app.isValid());
    QVERIFY(t.defaults.boolForKey(SettingsKeys::isRunning));

    t.defaults.setObject(QVariantList{}, SettingsKeys::enabledBrowsers);
    app.checkEnabledButton();
    QVERIFY(!app.isValid());
    QVERIFY(!t.defaults.boolForKey(SettingsKeys::isRunning));
    QCOMPARE(enabled.size(), 2);
    QCOMPARE(enabled.last().first(), QVariant(false));
}

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
