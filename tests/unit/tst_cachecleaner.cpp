#include "catalogue/BrowserCatalogue.h"
#include "cleaners/BrowserCleaners.h"
#include "platform/fake/FakeWorkspace.h"
#include "support/BrowserFixtures.h"
#include "support/PlistFixtures.h"
#include "support/TestHome.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace F = BrowserFixtures;

namespace {
const QString kFirefox = QLatin1String(F::kFirefoxProfiles);
} // namespace

class TestCacheCleaner : public QObject
{
    Q_OBJECT
private slots:
    void aFirefoxProfileListedElsewhereIsCleanedAsTheOthers();
};

// profiles.ini may list a profile by its full path (IsRelative=0): one in the home folder is cleaned like
// those in the profiles folder, its cache being in its own folder; one outside is reported and left.
void TestCacheCleaner::aFirefoxProfileListedElsewhereIsCleanedAsTheOthers()
{
    TestHome home;
    QTemporaryDir outsideHome;
    F::firefoxProfile(home, u"a.default"_s);
    const QString elsewhere = home.folder(u"elsewhere/abs.profile"_s);
    const QString outside = outsideHome.path() + u"/out.profile"_s;
    for (const QString& profile : {elsewhere, outside}) {
        for (const char* file : {"/cookies.sqlite", "/prefs.js", "/cache2/entries/e", "/startupCache/s",
                                 "/storage/default/https+++a.org/idb/1.sqlite", "/places.sqlite"})
            PlistFixtures::writeFile(profile + QLatin1String(file), "x");
    }
    home.file(kFirefox + u"/profiles.ini"_s,
              u"[General]\nStartWithLastProfile=1\n\n"
              "[Profile0]\nName=default\nIsRelative=1\nPath=a.default\n\n"
              "[Profile1]\nName=abs\nIsRelative=0\nPath=%1\n\n"
              "[Profile2]\nName=out\nIsRelative=0\nPath=%2\n"_s.arg(elsewhere, outside)
                  .toUtf8());
    // installs.ini names the profile an install uses by default, by its full path when it lies elsewhere.
    const QString installs = home.folder(u"elsewhere/installs.profile"_s);
    home.file(kFirefox + u"/installs.ini"_s,
              u"[4F96D1932A9F858E]\nDefault=%1\nLocked=1\n"_s.arg(installs).toUtf8());
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    QCOMPARE(catalogue.firefoxProfiles(u"Firefox"_s), (QStringList{u"a.default"_s, elsewhere, installs}));
    BrowserCleaners cleaners({home.sandbox, catalogue, home.t.defaults, home.t.log});
    cleaners.removeCookies(u"Firefox"_s);
    cleaners.removeBrowserCache(u"Firefox"_s);
    cleaners.removeNonFavLocalStorage(u"Firefox"_s);

    for (const char* gone : {"/cookies.sqlite", "/cache2", "/startupCache", "/storage/default/https+++a.org"})
        QVERIFY2(!QFileInfo::exists(elsewhere + QLatin1String(gone)), gone);
    QVERIFY(QFileInfo::exists(elsewhere + u"/places.sqlite"_s));
    for (const char* kept : {"/cookies.sqlite", "/cache2/entries/e", "/storage/default/https+++a.org"})
        QVERIFY2(QFileInfo::exists(outside + QLatin1String(kept)), kept);
    QCOMPARE(home.t.log.lines().filter(u"left the Firefox profile %1 alone"_s.arg(outside)).size(), 1);
}

QTEST_GUILESS_MAIN(TestCacheCleaner)
#include "tst_cachecleaner.moc"
