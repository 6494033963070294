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

// Where each install keeps a profile, and a file beside it that belongs to nobody's browser data.
const QStringList kChromium{u".config/chromium"_s, u".var/app/org.chromium.Chromium/config/chromium"_s,
                            u"snap/chromium/common/chromium"_s};
const QStringList kChromiumCache{u".cache/chromium"_s, u".var/app/org.chromium.Chromium/cache/chromium"_s,
                                 u"snap/chromium/common/.cache/chromium"_s};
const QStringList kFirefox{u".mozilla/firefox"_s, u".var/app/org.mozilla.firefox/.mozilla/firefox"_s,
                           u"snap/firefox/common/.mozilla/firefox"_s};
const QStringList kFirefoxCache{u".cache/mozilla/firefox"_s,
                                u".var/app/org.mozilla.firefox/cache/mozilla/firefox"_s,
                                u"snap/firefox/common/.cache/mozilla/firefox"_s};
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
    QTest::addColumn<QStringList>("installs"); // the indexes of kChromium / kFirefox present
    QTest::newRow("Chromium, all three") << u"Chromium"_s << QStringList{u"0"_s, u"1"_s, u"2"_s};
    QTest::newRow("Chromium, only as a Snap") << u"Chromium"_s << QStringList{u"2"_s};
    QTest::newRow("Firefox, all three") << u"Firefox"_s << QStringList{u"0"_s, u"1"_s, u"2"_s};
    QTest::newRow("Firefox, only as a Flatpak") << u"Firefox"_s << QStringList{u"1"_s};
}

void TestBrowserInstalls::eachInstallIsCleanedAndNothingBesideIt()
{
    QFETCH(QString, browser);
    QFETCH(QStringList, installs);
    TestHome home;
    home.t.defaults.setObject(PathLayout::linux_, SettingsKeys::browserLayout);
    home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    for (const QString& path : kBystanders)
        home.file(path);
    QSet<QString> expected;
    const bool firefox = browser == u"Firefox"_s;
    for (const QString& index : installs) {
        const int i = index.toInt();
        const QString profile = firefox ? kFirefox[i] + u"/a.default"_s : kChromium[i] + u"/Default"_s;
        const QString cache =
            firefox ? kFirefoxCache[i] + u"/a.default"_s : kChromiumCache[i] + u"/Default"_s;
        if (!firefox)
            F::localState(home, kChromium[i], {u"Default"_s});
        for (const char* kept : {"/Bookmarks", "/places.sqlite", "/logins.json", "/Login Data"})
            home.file(profile + QLatin1String(kept));
        const QStringList gone = firefox ? QStringList{u"/cookies.sqlite"_s, u"/sessionstore.jsonlz4"_s}
                                         : QStringList{u"/Cookies"_s, u"/Sessions/Session_1"_s};
        for (const QString& name : gone)
            expected.insert(home.file(profile + name).mid(home.path().size() + 1));
        expected.insert(home.file(cache + u"/cache2/entry"_s).mid(home.path().size() + 1));
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
    home.folder(kChromium[0]);
    const QString lock = home.path(kChromium[1] + u"/SingletonLock"_s);
    home.folder(kChromium[1]);
    QVERIFY(QFile::link(u"host-%1"_s.arg(QCoreApplication::applicationPid()), lock));
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    QVERIFY(catalogue.browserIsRunning(u"Chromium"_s));
    QFile::remove(lock);
    QVERIFY(!catalogue.browserIsRunning(u"Chromium"_s));
}

QTEST_GUILESS_MAIN(TestBrowserInstalls)
#include "tst_browserinstalls.moc"
