#include "cleaners/BrowserCleaners.h"
#include "core/BrowserCatalogue.h"
#include "platform/PathLayout.h"
#include "platform/SettingsKeys.h"
#include "platform/fake/FakeWorkspace.h"
#include "support/BrowserFixtures.h"
#include "support/TestHome.h"

#include <QDirIterator>
#include <QTest>

using namespace Qt::StringLiterals;
namespace F = BrowserFixtures;

namespace {

// Every file below the home folder, relative to it.
QSet<QString> filesIn(const TestHome& home)
{
    QSet<QString> files;
    QDirIterator it(home.path(), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.insert(it.next().mid(home.path().size() + 1));
    return files;
}

// Files beside the browsers' folders that belong to nobody's browser data.
const QStringList kBystanders{u"Documents/notes.txt"_s,
                              u".var/app/org.chromium.Chromium/data/keep"_s,
                              u".var/app/org.chromium.Chromium/config/keep"_s,
                              u"snap/chromium/common/keep"_s,
                              u"snap/chromium/current/.config/keep"_s,
                              u".var/app/org.mozilla.firefox/Downloads/keep"_s,
                              u"snap/firefox/common/Downloads/keep"_s,
                              u".cache/keep"_s};

} // namespace

class TestBrowserInstalls : public QObject
{
    Q_OBJECT
private slots:
    void eachInstallIsCleanedAndNothingBesideIt_data();
    void eachInstallIsCleanedAndNothingBesideIt();
    void aRunningInstallStopsTheRun();
};

void TestBrowserInstalls::eachInstallIsCleanedAndNothingBesideIt_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<QStringList>("profiles"); // with each profile's cache folder after it
    QTest::newRow("Chromium: distribution, Flatpak, Snap")
        << u"Chromium"_s
        << QStringList{u".config/chromium/Default"_s,
                       u".cache/chromium/Default"_s,
                       u".var/app/org.chromium.Chromium/config/chromium/Default"_s,
                       u".var/app/org.chromium.Chromium/cache/chromium/Default"_s,
                       u"snap/chromium/common/chromium/Default"_s,
                       u"snap/chromium/common/.cache/chromium/Default"_s};
    QTest::newRow("Chromium, only as a Snap")
        << u"Chromium"_s
        << QStringList{u"snap/chromium/common/chromium/Default"_s,
                       u"snap/chromium/common/.cache/chromium/Default"_s};
    QTest::newRow("Google Chrome as a Flatpak")
        << u"Google Chrome"_s
        << QStringList{u".var/app/com.google.Chrome/config/google-chrome/Default"_s,
                       u".var/app/com.google.Chrome/cache/google-chrome/Default"_s};
    QTest::newRow("Opera as a Flatpak: its root is its profile")
        << u"Opera"_s
        << QStringList{u".var/app/com.opera.Opera/config/opera"_s, u".var/app/com.opera.Opera/cache/opera"_s};
    QTest::newRow("Firefox: distribution, Flatpak, Snap")
        << u"Firefox"_s
        << QStringList{u".mozilla/firefox/a.default"_s,
                       u".cache/mozilla/firefox/a.default"_s,
                       u".var/app/org.mozilla.firefox/.mozilla/firefox/a.default"_s,
                       u".var/app/org.mozilla.firefox/cache/mozilla/firefox/a.default"_s,
                       u"snap/firefox/common/.mozilla/firefox/a.default"_s,
                       u"snap/firefox/common/.cache/mozilla/firefox/a.default"_s};
    QTest::newRow("Firefox in ~/.config/mozilla")
        << u"Firefox"_s
        << QStringList{u".config/mozilla/firefox/a.default"_s, u".cache/mozilla/firefox/a.default"_s};
}

void TestBrowserInstalls::eachInstallIsCleanedAndNothingBesideIt()
{
    QFETCH(QString, browser);
    QFETCH(QStringList, profiles);
    TestHome home;
    home.t.defaults.setObject(PathLayout::linux_, SettingsKeys::browserLayout);
    home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    for (const QString& path : kBystanders)
        home.file(path);
    const bool firefox = browser == u"Firefox"_s;
    const auto relative = [&](const QString& path) { return path.mid(home.path().size() + 1); };
    QSet<QString> expected;
    for (qsizetype i = 0; i < profiles.size(); i += 2) {
        const QString& profile = profiles.at(i);
        if (profile.endsWith(u"/Default"_s))
            F::localState(home, profile.chopped(8), {u"Default"_s});
        for (const char* kept : {"/Bookmarks", "/places.sqlite", "/logins.json", "/Login Data"})
            home.file(profile + QLatin1String(kept));
        const QStringList gone = firefox ? QStringList{u"/cookies.sqlite"_s, u"/sessionstore.jsonlz4"_s}
                                         : QStringList{u"/Cookies"_s, u"/Sessions/Session_1"_s};
        for (const QString& name : gone)
            expected.insert(relative(home.file(profile + name)));
        expected.insert(relative(home.file(profiles.at(i + 1) + u"/Cache/entry"_s)));
    }
    const QSet<QString> before = filesIn(home);
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    BrowserCleaners cleaners({home.sandbox, catalogue, home.t.defaults, home.t.log});
    cleaners.removeCookies(browser);
    cleaners.removeBrowserCache(browser);
    cleaners.removeBrowserHistory(browser, u"history"_s);
    QCOMPARE(before - filesIn(home), expected);
}

void TestBrowserInstalls::aRunningInstallStopsTheRun()
{
    TestHome home;
    home.t.defaults.setObject(PathLayout::linux_, SettingsKeys::browserLayout);
    home.folder(u".config/chromium"_s);
    const QString flatpak = home.folder(u".var/app/org.chromium.Chromium/config/chromium"_s);
    const QString lock = flatpak + u"/SingletonLock"_s;
    QVERIFY(QFile::link(u"host-%1"_s.arg(QCoreApplication::applicationPid()), lock));
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    QVERIFY(catalogue.browserIsRunning(u"Chromium"_s));
    QFile::remove(lock);
    QVERIFY(!catalogue.browserIsRunning(u"Chromium"_s));
}

QTEST_GUILESS_MAIN(TestBrowserInstalls)
#include "tst_browserinstalls.moc"
