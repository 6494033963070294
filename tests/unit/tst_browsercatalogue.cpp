#include "catalogue/BrowserCatalogue.h"
#include "platform/SettingsKeys.h"
#include "platform/fake/FakeWorkspace.h"
#include "support/TestHome.h"

#include <QSignalSpy>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

using Catalogue = BrowserCatalogue;

class TestBrowserCatalogue : public QObject
{
    Q_OBJECT
private slots:
    void recognisesQuittingBrowsers_data();
    void recognisesQuittingBrowsers();
    void enabledOnlyForExactKeys();
    void browsersChangedDropsUninstalledBrowsersForGood();
    void userProfilesFromLocalState_data();
    void userProfilesFromLocalState();
    void aRunningBrowserIsRecognised_data();
    void aRunningBrowserIsRecognised();

private:
    void enable(TestHome& home, const QStringList& ids)
    {
        home.t.defaults.setObject(QVariant(ids).toList(), SettingsKeys::enabledBrowsers);
    }
};

void TestBrowserCatalogue::recognisesQuittingBrowsers_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("bundleIdentifier");
    QTest::addColumn<QString>("browser"); // "" when ignored
    QTest::newRow("Safari") << u"Safari"_s << u"com.apple.Safari"_s << u"Safari"_s;
    QTest::newRow("Chrome by name only") << u"Google Chrome"_s << u"x.y"_s << u"Google Chrome"_s;
    QTest::newRow("Chromium") << u"Chromium"_s << u"org.chromium.Chromium"_s << u"Chromium"_s;
    QTest::newRow("Firefox") << u"Firefox"_s << u""_s << u"Firefox"_s;
    QTest::newRow("Opera Beta by identifier")
        << u"Opera Beta"_s << u"com.operasoftware.Opera"_s << u"Opera"_s;
    QTest::newRow("Opera name, other identifier") << u"Opera"_s << u"com.opera.other"_s << u""_s;
    QTest::newRow("Canary is not Chrome")
        << u"Google Chrome Canary"_s << u"com.google.Chrome.canary"_s << u""_s;
    QTest::newRow("case matters") << u"firefox"_s << u"org.mozilla.firefox"_s << u""_s;
    QTest::newRow("Brave by identifier") << u"brave"_s << u"com.brave.Browser"_s << u"Brave"_s;
    QTest::newRow("Chrome Beta is not Chrome")
        << u"Google Chrome Beta"_s << u"com.google.Chrome.beta"_s << u"Google Chrome Beta"_s;
    QTest::newRow("nothing") << u""_s << u""_s << u""_s;
}

void TestBrowserCatalogue::recognisesQuittingBrowsers()
{
    QFETCH(QString, name);
    QFETCH(QString, bundleIdentifier);
    QFETCH(QString, browser);
    QVariantMap userInfo;
    if (!name.isEmpty())
        userInfo.insert(u"NSApplicationName"_s, name);
    if (!bundleIdentifier.isEmpty())
        userInfo.insert(u"NSApplicationBundleIdentifier"_s, bundleIdentifier);
    QCOMPARE(Catalogue::browserForTerminatedApplication(userInfo).value_or(QString()), browser);
}

void TestBrowserCatalogue::enabledOnlyForExactKeys()
{
    TestHome home;
    FakeWorkspace workspace;
    Catalogue catalogue(workspace, home.t.defaults, home.sandbox);
    enable(home, {Catalogue::safariID, Catalogue::operaID});
    QVERIFY(catalogue.checkIfBrowserEnabled(u"Safari"_s));
    QVERIFY(catalogue.checkIfBrowserEnabled(u"Opera"_s));
    QVERIFY(!catalogue.checkIfBrowserEnabled(u"Safari-disabled"_s));
    QVERIFY(!catalogue.checkIfBrowserEnabled(u"Firefox"_s));
    QVERIFY(!catalogue.checkIfBrowserEnabled(u"Operaa"_s));
    // A channel whose name starts with the stable browser's is a browser of its own.
    enable(home, {Catalogue::googleChromeID});
    QVERIFY(!catalogue.checkIfBrowserEnabled(u"Google Chrome Beta"_s));
    QCOMPARE(Catalogue::browserIDFor(u"Google Chrome Beta-disabled"_s), u"com.google.Chrome.beta"_s);
}

void TestBrowserCatalogue::browsersChangedDropsUninstalledBrowsersForGood()
{
    TestHome home;
    FakeWorkspace workspace;
    Catalogue catalogue(workspace, home.t.defaults, home.sandbox);
    QSignalSpy changed(&catalogue, &Catalogue::browserContentArrayChanged);
    workspace.setInstalled({Catalogue::safariID, Catalogue::firefoxID});
    // Activated Firefox first: rewritten in detection order, Chrome (uninstalled) dropped.
    enable(home, {Catalogue::firefoxID, Catalogue::googleChromeID, Catalogue::safariID});
    catalogue.browsersChanged();
    QCOMPARE(changed.size(), 0); // a second later, not at once
    QTRY_COMPARE(changed.size(), 1);
    QCOMPARE(home.t.defaults.arrayForKey(SettingsKeys::enabledBrowsers),
             QVariantList({Catalogue::safariID, Catalogue::firefoxID}));
    workspace.setInstalled({Catalogue::safariID, Catalogue::firefoxID, Catalogue::googleChromeID});
    catalogue.browsersChanged();
    QTRY_COMPARE(changed.size(), 2);
    QCOMPARE(home.t.defaults.arrayForKey(SettingsKeys::enabledBrowsers),
             QVariantList({Catalogue::safariID, Catalogue::firefoxID}));
}

void TestBrowserCatalogue::userProfilesFromLocalState_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<QByteArray>("localState"); // empty: no file
    QTest::addColumn<QVariantMap>("profiles");
    const QByteArray two =
        R"({"profile":{"info_cache":{"Default":{"name":"Person 1"},"Profile 2":{"name":"Work","x":1}}}})";
    QTest::newRow("Chrome") << u"Google Chrome"_s << two
                            << QVariantMap{{u"Default"_s, u"Person 1"_s}, {u"Profile 2"_s, u"Work"_s}};
    QTest::newRow("entry without a name")
        << u"Chromium"_s << QByteArray(R"({"profile":{"info_cache":{"Default":{},"P":{"name":"N"}}}})")
        << QVariantMap{{u"P"_s, u"N"_s}};
    for (const auto& [name, bytes] : {std::pair{"no info_cache", R"({"profile":{}})"},
                                      {"broken JSON", R"({"profile":{"info_cache":)"},
                                      {"not UTF-8", "\xff\xfe{}"},
                                      {"a list at the top", "[1,2]"},
                                      {"no file", ""}})
        QTest::newRow(name) << u"Chromium"_s << QByteArray(bytes) << QVariantMap();
}

void TestBrowserCatalogue::userProfilesFromLocalState()
{
    QFETCH(QString, browser);
    QFETCH(QByteArray, localState);
    QFETCH(QVariantMap, profiles);
    TestHome home;
    FakeWorkspace workspace;
    Catalogue catalogue(workspace, home.t.defaults, home.sandbox);
    const QString folder = browser == Catalogue::googleChrome ? u"Google/Chrome"_s : browser;
    if (!localState.isEmpty())
        home.file(u"Library/Application Support/%1/Local State"_s.arg(folder), localState);
    QCOMPARE(catalogue.userProfiles(browser), profiles);
}

void TestBrowserCatalogue::aRunningBrowserIsRecognised_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<QString>("lockFile"); // below the home; "" for none
    QTest::addColumn<QString>("lockTarget");
    QTest::addColumn<bool>("processRuns");
    QTest::addColumn<bool>("running");
    const QString self = QString::number(::getpid());
    const QString chromiumLock = u"Library/Application Support/Chromium/SingletonLock"_s;
    const QString firefoxLock = u"Library/Application Support/Firefox/Profiles/a.default/lock"_s;
    QTest::newRow("nothing") << u"Chromium"_s << u""_s << u""_s << false << false;
    QTest::newRow("its process") << u"Chromium"_s << u""_s << u""_s << true << true;
    QTest::newRow("live lock") << u"Chromium"_s << chromiumLock << QString(u"host-name-"_s + self) << false
                               << true;
    QTest::newRow("lock left by a crash")
        << u"Chromium"_s << chromiumLock << u"host-999999999"_s << false << false;
    QTest::newRow("unreadable lock") << u"Chromium"_s << chromiumLock << u"garbage"_s << false << true;
    QTest::newRow("a lock that is no link") << u"Chromium"_s << chromiumLock << u""_s << false << true;
    QTest::newRow("Firefox profile lock")
        << u"Firefox"_s << firefoxLock << QString(u"127.0.1.1:+"_s + self) << false << true;
    QTest::newRow("Firefox stale lock")
        << u"Firefox"_s << firefoxLock << u"127.0.1.1:+999999999"_s << false << false;
}

void TestBrowserCatalogue::aRunningBrowserIsRecognised()
{
    QFETCH(QString, browser);
    QFETCH(QString, lockFile);
    QFETCH(QString, lockTarget);
    QFETCH(bool, processRuns);
    QFETCH(bool, running);
    TestHome home;
    FakeWorkspace workspace;
    Catalogue catalogue(workspace, home.t.defaults, home.sandbox);
    home.file(u"Library/Application Support/Firefox/Profiles/a.default/prefs.js"_s);
    if (!lockFile.isEmpty()) {
        home.folder(QFileInfo(lockFile).path());
        if (lockTarget.isEmpty())
            home.file(lockFile);
        else
            QVERIFY(QFile::link(lockTarget, home.path(lockFile)));
    }
    if (processRuns)
        workspace.setRunning({{browser, Catalogue::browserIDFor(browser), 42}});
    QCOMPARE(catalogue.browserIsRunning(browser), running);
}

QTEST_GUILESS_MAIN(TestBrowserCatalogue)
#include "tst_browsercatalogue.moc"
