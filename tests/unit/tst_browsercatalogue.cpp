#include "catalogue/BrowserCatalogue.h"
#include "platform/PathLayout.h"
#include "platform/SettingsKeys.h"
#include "platform/fake/FakeWorkspace.h"
#include "support/BrowserFixtures.h"
#include "support/CleanCli.h"
#include "support/TestHome.h"

#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

using Catalogue = BrowserCatalogue;

namespace F = BrowserFixtures;
using BrowserTable::Family;

class TestBrowserCatalogue : public QObject
{
    Q_OBJECT
private slots:
    void recognisesQuittingBrowsers_data();
    void recognisesQuittingBrowsers();
    void userProfilesFromLocalState_data();
    void userProfilesFromLocalState();
    void aRunningBrowserIsRecognised_data();
    void aRunningBrowserIsRecognised();

    void everyInstallIsCleanedAsItsFamilyIs_data();
    void everyInstallIsCleanedAsItsFamilyIs();
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
    QTest::newRow("Brave by identifier") << u"brave"_s << u"com.brave.Browser"_s << u"Brave"_s;
    QTest::newRow("Chrome Beta is not Chrome")
        << u"Google Chrome Beta"_s << u"com.google.Chrome.beta"_s << u"Google Chrome Beta"_s;
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

void TestBrowserCatalogue::userProfilesFromLocalState_data()
{
    QTest::addColumn<QByteArray>("localState"); // empty: no file
    QTest::addColumn<QVariantMap>("profiles");
    QTest::newRow("an entry without a name is no profile")
        << QByteArray(R"({"profile":{"info_cache":{"Default":{},"P":{"name":"N","x":1}}}})")
        << QVariantMap{{u"P"_s, u"N"_s}};
    for (const auto& [name, bytes] : {std::pair{"broken JSON", R"({"profile":{"info_cache":)"},
                                      {"not UTF-8", "\xff\xfe{}"},
                                      {"no file", ""}})
        QTest::newRow(name) << QByteArray(bytes) << QVariantMap();
}

void TestBrowserCatalogue::userProfilesFromLocalState()
{
    QFETCH(QByteArray, localState);
    QFETCH(QVariantMap, profiles);
    TestHome home;
    FakeWorkspace workspace;
    Catalogue catalogue(workspace, home.t.defaults, home.sandbox);
    if (!localState.isEmpty())
        home.file(u"Library/Application Support/Chromium/Local State"_s, localState);
    QCOMPARE(catalogue.userProfiles(u"Chromium"_s), profiles);
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
    // Every install's locks count, on this system's layout (its folders hold their family's files).
    const QString live = u"host-"_s + self;
    QTest::newRow("Chromium's Flatpak")
        << u"Chromium"_s << u".var/app/org.chromium.Chromium/config/chromium/SingletonLock"_s << live << false
        << true;
    QTest::newRow("a Snap revision of Brave")
        << u"Brave"_s << u"snap/brave/12/.config/BraveSoftware/Brave-Browser/SingletonLock"_s << live << false
        << true;
    QTest::newRow("a LibreWolf profile")
        << u"LibreWolf"_s << u".librewolf/q.default/lock"_s << live << false << true;
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
        const QString folder = QFileInfo(lockFile).path();
        home.folder(folder);
        if (!lockFile.startsWith(u"Library/"_s)) { // an install on this system's layout, with its files
            home.t.defaults.setObject(PathLayout::linux_, SettingsKeys::browserLayout);
            if (browser == u"LibreWolf"_s)
                home.file(folder + u"/prefs.js"_s);
            else
                F::localState(home, folder, {});
        }
        if (lockTarget.isEmpty())
            home.file(lockFile);
        else
            QVERIFY(QFile::link(lockTarget, home.path(lockFile)));
    }
    if (processRuns)
        workspace.setRunning({{browser, Catalogue::browserIDFor(browser), 42}});
    QCOMPARE(catalogue.browserIsRunning(browser), running);
}

void TestBrowserCatalogue::everyInstallIsCleanedAsItsFamilyIs_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<QString>("data"); // the data root; "*" stands for each revision of a Snap
    QTest::addColumn<QString>("cache");
    QTest::newRow("a Snap's revisions, one cache")
        << u"Brave"_s << u"snap/brave/*/.config/BraveSoftware/Brave-Browser"_s
        << u"snap/brave/common/.cache/BraveSoftware/Brave-Browser"_s;
    QTest::newRow("a Snap of a single-profile browser")
        << u"Opera"_s << u"snap/opera/*/.config/opera"_s << u"snap/opera/common/.cache/opera"_s;
    QTest::newRow("a Flatpak") << u"Chromium"_s << u".var/app/org.chromium.Chromium/config/chromium"_s
                               << u".var/app/org.chromium.Chromium/cache/chromium"_s;
    QTest::newRow("a Firefox fork's Flatpak")
        << u"LibreWolf"_s << u".var/app/io.gitlab.librewolf-community/.librewolf"_s
        << u".var/app/io.gitlab.librewolf-community/cache/librewolf"_s;
    QTest::newRow("Firefox's Snap") << u"Firefox"_s << u"snap/firefox/common/.mozilla/firefox"_s
                                    << u"snap/firefox/common/.cache/mozilla/firefox"_s;
}

// Every install of a browser, in any of the shapes Linux packages give it, loses its sites' cookies
// and cache and keeps its bookmarks and passwords; files beside it, of the same package, stay.
void TestBrowserCatalogue::everyInstallIsCleanedAsItsFamilyIs()
{
    QFETCH(QString, browser);
    QFETCH(QString, data);
    QFETCH(QString, cache);
    Cli cli;
    TestHome& home = cli.home;
    const BrowserTable::Browser& row = *BrowserTable::find(browser);
    const bool firefox = row.family == Family::Firefox, single = row.singleProfile,
               snap = data.contains(u'*');
    const QStringList bystanders{u".var/app/org.chromium.Chromium/config/keep"_s,
                                 u"snap/brave/7/.config/keep"_s, u"snap/firefox/common/Downloads/keep"_s,
                                 u".cache/keep"_s};
    for (const QString& path : bystanders)
        home.file(path);
    QStringList profiles;
    for (const QString& revision : snap ? QStringList{u"6"_s, u"7"_s} : QStringList{u""_s}) {
        const QString root = QString(data).replace(u'*', revision);
        if (firefox) {
            F::firefoxProfile(home, u"a.default"_s, root);
            profiles.append(root + u"/a.default"_s);
        } else {
            F::localState(home, root, single ? QStringList{} : QStringList{u"Default"_s});
            profiles.append(single ? root : root + u"/Default"_s);
            F::chromiumProfile(home, profiles.last());
        }
    }
    if (snap) // "current" links to the newest revision
        QVERIFY(QFile::link(u"7"_s, home.path(data.section(u"/*/"_s, 0, 0) + u"/current"_s)));
    const QString cached =
        cache + (firefox ? u"/a.default/cache2/entries/A1"_s
                         : (single ? u""_s : u"/Default"_s) + u"/Cache/Cache_Data/data_0"_s);
    home.file(cached);
    QCOMPARE(cli.run({u"--layout"_s, PathLayout::linux_, browser, u"cookies"_s, u"cache"_s}),
             int(CleanCommand::Success));

    QVERIFY(!home.exists(cached));
    for (const QString& profile : profiles) {
        F::expectGoneAndKept(home, {profile + (firefox ? u"/cookies.sqlite"_s : u"/Cookies"_s)},
                             {profile + (firefox ? u"/logins.json"_s : u"/Bookmarks"_s),
                              profile + (firefox ? u"/places.sqlite"_s : u"/Login Data"_s)});
    }
    for (const QString& path : bystanders)
        QVERIFY2(home.exists(path), qPrintable(path));
}

QTEST_GUILESS_MAIN(TestBrowserCatalogue)
#include "tst_browsercatalogue.moc"
