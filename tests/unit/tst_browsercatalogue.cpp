#include "catalogue/BrowserCatalogue.h"
#include "platform/PathLayout.h"
#include "platform/SettingsKeys.h"
#include "platform/fake/FakeWorkspace.h"
#include "support/BrowserFixtures.h"
#include "support/CleanCli.h"
#include "support/PlistFixtures.h"
#include "support/TestHome.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

using Catalogue = BrowserCatalogue;

namespace F = BrowserFixtures;
using BrowserTable::Family;

namespace {

// Files beside the browsers' folders that belong to nobody's browser data.
const QStringList kBystanders{u"Documents/notes.txt"_s,
                              u".var/app/com.brave.Browser/data/keep"_s,
                              u".var/app/org.chromium.Chromium/config/keep"_s,
                              u"snap/brave/common/keep"_s,
                              u"snap/brave/7/.config/keep"_s,
                              u".var/app/org.mozilla.firefox/Downloads/keep"_s,
                              u"snap/firefox/common/Downloads/keep"_s,
                              u".cache/keep"_s,
                              u".config/keep"_s};

// Every file below the home folder, relative to it, with a digest of its contents.
QMap<QString, QByteArray> filesIn(const QString& home)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(home, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(path.mid(home.size() + 1),
                     QCryptographicHash::hash(PlistFixtures::readFile(path), QCryptographicHash::Sha1));
    }
    return files;
}

// Two profiles in the family's shape below the roots (relative to the home folder): what the cleaners
// remove, rewrite and keep in each.
void familyFixture(const TestHome& home, const BrowserTable::Browser& browser, const QString& data,
                   const QString& cache)
{
    if (browser.family == Family::Firefox) {
        home.file(data + u"/profiles.ini"_s, "[Profile0]\nName=a\nIsRelative=1\nPath=a.default\n");
        for (const QString& profile : {u"a.default"_s, u"b.work"_s}) {
            F::firefoxProfile(home, profile, data);
            for (const char* name :
                 {"/sessionstore.jsonlz4", "/formhistory.sqlite", "/favicons.sqlite",
                  "/extensions/kept@example.xpi", "/storage/default/https+++a.example/ls/data.sqlite"})
                home.file(data + u'/' + profile + QLatin1String(name));
            home.file(cache + u'/' + profile + u"/cache2/entries/A1"_s);
        }
        return;
    }
    const QStringList profiles =
        browser.singleProfile ? QStringList{QString()} : QStringList{u"Default"_s, u"Profile 1"_s};
    F::localState(home, data, browser.singleProfile ? QStringList{} : profiles);
    for (const QString& key : profiles) {
        const QString profile = key.isEmpty() ? data : data + u'/' + key;
        F::chromiumProfile(home, profile);
        F::chromiumHistory(home, profile);
        home.file(profile + u"/Preferences"_s, R"({"net":{"network_prediction_options":1},"homepage":"x"})");
        for (const char* name :
             {"/Sessions/Session_1", "/Favicons", "/Top Sites", "/Visited Links",
              "/Extensions/abc/1.0/manifest.json", "/Local Extension Settings/abc/000003.log",
              "/Pepper Data/Shockwave Flash/x"})
            home.file(profile + QLatin1String(name));
        home.file((key.isEmpty() ? cache : cache + u'/' + key) + u"/Cache/Cache_Data/data_0"_s);
    }
}

// What a clean of every category did to the home folder: each file removed or changed, named by its
// root ("data/...", "cache/..."), or by its own path when it lies outside both.
QMap<QString, QString> effectOfAClean(const BrowserTable::Browser& browser, const QString& data,
                                      const QString& cache, const QStringList& revisions = {})
{
    Cli cli;
    cli.home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    for (const QString& path : kBystanders)
        cli.home.file(path);
    QStringList roots{data, cache};
    if (revisions.isEmpty()) {
        familyFixture(cli.home, browser, data, cache);
    } else {
        // Every revision of a Snap keeps its copy; "current" links to the newest.
        for (const QString& revision : revisions)
            familyFixture(cli.home, browser, QString(data).replace(u"/*/"_s, u'/' + revision + u'/'), cache);
        QFile::link(revisions.last(), cli.home.path(data.section(u"/*/"_s, 0, 0) + u"/current"_s));
    }
    const QMap<QString, QByteArray> before = filesIn(cli.home.path());
    QStringList arguments{u"--layout"_s, PathLayout::linux_, browser.name};
    arguments += SettingsKeys::categories;
    if (cli.run(arguments) != CleanCommand::Success)
        qWarning() << cli.err;
    const QMap<QString, QByteArray> after = filesIn(cli.home.path());
    // "data/..." below the data root ("data@6/..." below a Snap revision's), "cache/..." below the cache.
    const auto label = [&](const QString& path) -> QString {
        const QString pattern = QRegularExpression::escape(data).replace(u"\\*"_s, u"([^/]+)"_s);
        const QRegularExpressionMatch match = QRegularExpression(u"^"_s + pattern + u"/"_s).match(path);
        if (match.hasMatch())
            return (revisions.isEmpty() ? u"data/"_s : u"data@"_s + match.captured(1) + u'/') +
                   path.mid(match.capturedLength());
        return path.startsWith(cache + u'/') ? u"cache/"_s + path.mid(cache.size() + 1) : path;
    };
    QMap<QString, QString> effect;
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        if (after.value(it.key()) != it.value())
            effect.insert(label(it.key()), after.contains(it.key()) ? u"changed"_s : u"removed"_s);
    }
    for (auto it = after.cbegin(); it != after.cend(); ++it) {
        if (!before.contains(it.key()))
            effect.insert(label(it.key()), u"added"_s);
    }
    return effect;
}

} // namespace

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

// Where each browser keeps its data and cache, install by install, as the browsers document it (a "*"
// is a Snap revision); written out here, not read from the table, so a wrong row in it shows.
namespace {

const char* const kInstalls[] = {
    "Firefox | .mozilla/firefox | .cache/mozilla/firefox",
    "Firefox | .config/mozilla/firefox | .cache/mozilla/firefox",
    "Firefox | .var/app/org.mozilla.firefox/.mozilla/firefox | "
    ".var/app/org.mozilla.firefox/cache/mozilla/firefox",
    "Firefox | .var/app/org.mozilla.firefox/config/mozilla/firefox | "
    ".var/app/org.mozilla.firefox/cache/mozilla/firefox",
    "Firefox | snap/firefox/common/.mozilla/firefox | snap/firefox/common/.cache/mozilla/firefox",
    "Google Chrome | .config/google-chrome | .cache/google-chrome",
    "Google Chrome | .var/app/com.google.Chrome/config/google-chrome | "
    ".var/app/com.google.Chrome/cache/google-chrome",
    "Chromium | .config/chromium | .cache/chromium",
    "Chromium | .var/app/org.chromium.Chromium/config/chromium | "
    ".var/app/org.chromium.Chromium/cache/chromium",
    "Chromium | .var/app/io.github.ungoogled_software.ungoogled_chromium/config/chromium | "
    ".var/app/io.github.ungoogled_software.ungoogled_chromium/cache/chromium",
    "Chromium | snap/chromium/common/chromium | snap/chromium/common/.cache/chromium",
    "Opera | .config/opera | .cache/opera",
    "Opera | .var/app/com.opera.Opera/config/opera | .var/app/com.opera.Opera/cache/opera",
    "Opera | snap/opera/*/.config/opera | snap/opera/common/.cache/opera",
    "Brave | .config/BraveSoftware/Brave-Browser | .cache/BraveSoftware/Brave-Browser",
    "Brave | .var/app/com.brave.Browser/config/BraveSoftware/Brave-Browser | "
    ".var/app/com.brave.Browser/cache/BraveSoftware/Brave-Browser",
    "Brave | snap/brave/*/.config/BraveSoftware/Brave-Browser | "
    "snap/brave/common/.cache/BraveSoftware/Brave-Browser",
    "Vivaldi | .config/vivaldi | .cache/vivaldi",
    "Vivaldi | .var/app/com.vivaldi.Vivaldi/config/vivaldi | .var/app/com.vivaldi.Vivaldi/cache/vivaldi",
    "Vivaldi | snap/vivaldi/*/.config/vivaldi | snap/vivaldi/common/.cache/vivaldi",
    "Microsoft Edge | .config/microsoft-edge | .cache/microsoft-edge",
    "Microsoft Edge | .var/app/com.microsoft.Edge/config/microsoft-edge | "
    ".var/app/com.microsoft.Edge/cache/microsoft-edge",
    "Google Chrome Beta | .config/google-chrome-beta | .cache/google-chrome-beta",
    "Google Chrome Dev | .config/google-chrome-unstable | .cache/google-chrome-unstable",
    "Microsoft Edge Beta | .config/microsoft-edge-beta | .cache/microsoft-edge-beta",
    "Microsoft Edge Dev | .config/microsoft-edge-dev | .cache/microsoft-edge-dev",
    "LibreWolf | .librewolf | .cache/librewolf",
    "LibreWolf | .config/librewolf/librewolf | .cache/librewolf",
    "LibreWolf | .var/app/io.gitlab.librewolf-community/.librewolf | "
    ".var/app/io.gitlab.librewolf-community/cache/librewolf",
    "Waterfox | .waterfox | .cache/waterfox",
    "Waterfox | .var/app/net.waterfox.waterfox/.waterfox | .var/app/net.waterfox.waterfox/cache/waterfox",
    "Floorp | .floorp | .cache/floorp",
    "Floorp | .var/app/one.ablaze.floorp/.floorp | .var/app/one.ablaze.floorp/cache/floorp",
};

QStringList install(const char* row)
{
    return QString::fromLatin1(row).split(u" | "_s);
}

} // namespace

void TestBrowserCatalogue::everyInstallIsCleanedAsItsFamilyIs_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<QString>("data");
    QTest::addColumn<QString>("cache");
    for (const char* row : kInstalls)
        QTest::addRow("%s", row) << install(row).at(0) << install(row).at(1) << install(row).at(2);
}

// Chromium's and Firefox's own folders are the reference: every other row and install, given the same
// profiles, loses exactly the same files, and nothing else in the home folder changes.
void TestBrowserCatalogue::everyInstallIsCleanedAsItsFamilyIs()
{
    QFETCH(QString, browser);
    QFETCH(QString, data);
    QFETCH(QString, cache);
    const BrowserTable::Browser* row = BrowserTable::find(browser);
    const BrowserTable::Browser* reference = BrowserTable::find(row->family == Family::Firefox ? u"Firefox"_s
                                                                : row->singleProfile           ? u"Opera"_s
                                                                                     : u"Chromium"_s);
    const BrowserTable::Install& native = reference->installs.first();
    static QHash<QString, QMap<QString, QString>> expected;
    if (!expected.contains(reference->name)) {
        const QMap<QString, QString> effect =
            effectOfAClean(*reference, native.dataRoots.first(), native.cacheRoot);
        // What the family's cleaners are known to remove and to keep.
        const QString profile = row->family == Family::Firefox ? u"data/a.default/"_s
                                : row->singleProfile           ? u"data/"_s
                                                               : u"data/Profile 1/"_s;
        for (const QString& gone : row->family == Family::Firefox
                                       ? QStringList{u"cookies.sqlite"_s, u"sessionstore.jsonlz4"_s}
                                       : QStringList{u"Cookies"_s, u"Sessions/Session_1"_s, u"Favicons"_s})
            QCOMPARE(effect.value(profile + gone), u"removed"_s);
        for (const QString& kept : row->family == Family::Firefox
                                       ? QStringList{u"logins.json"_s, u"extensions/kept@example.xpi"_s}
                                       : QStringList{u"Bookmarks"_s, u"Extensions/abc/1.0/manifest.json"_s,
                                                     u"Local Extension Settings/abc/000003.log"_s})
            QVERIFY2(!effect.contains(profile + kept), qPrintable(kept));
        QVERIFY(std::any_of(effect.keyBegin(), effect.keyEnd(),
                            [](const QString& name) { return name.startsWith(u"cache/"_s); }));
        for (auto it = effect.cbegin(); it != effect.cend(); ++it)
            QVERIFY2(it.key().startsWith(u"data/"_s) || it.key().startsWith(u"cache/"_s),
                     qPrintable(it.key()));
        expected.insert(reference->name, effect);
    }
    const QStringList revisions = data.contains(u"/*/"_s) ? QStringList{u"6"_s, u"7"_s} : QStringList{};
    const QMap<QString, QString> effect = effectOfAClean(*row, data, cache, revisions);
    QMap<QString, QString> wanted = expected.value(reference->name);
    if (!revisions.isEmpty()) {
        // Each revision's copy is cleaned; they share one cache.
        const QMap<QString, QString> once = wanted;
        wanted.clear();
        for (auto it = once.cbegin(); it != once.cend(); ++it) {
            if (!it.key().startsWith(u"data/"_s)) {
                wanted.insert(it.key(), it.value());
                continue;
            }
            for (const QString& revision : revisions)
                wanted.insert(u"data@"_s + revision + it.key().mid(4), it.value());
        }
    }
    QCOMPARE(effect, wanted);
}

QTEST_GUILESS_MAIN(TestBrowserCatalogue)
#include "tst_browsercatalogue.moc"
