#include "platform/PathLayout.h"
#include "platform/SettingsKeys.h"
#include "sandbox/AppSandboxFileAccessPersist.h"
#include "sandbox/FileUrl.h"
#include "sandbox/ProblemReport.h"
#include "sandbox/RemovalPreview.h"
#include "sandbox/Sqlite.h"
#include "support/PlistFixtures.h"
#include "support/SmallFileSystem.h"
#include "support/TestHome.h"
#include "support/Unprivileged.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {
// "a b c" as a list of relative paths.
QStringList paths(const char* spaceSeparated)
{
    return QString::fromUtf8(spaceSeparated).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}
} // namespace

class TestSandbox : public QObject
{
    Q_OBJECT
private slots:
    void aPreviewReportsAndChangesNothing();
    void refusedAccessGivesEmptyResultsAndALogLine();
    void theHomeGrantIsAskedForOnceOnTheMainThread();
    void remove_data();
    void remove();
    void removingADatabaseTakesItsCompanions();
    void linksOutOfTheHomeAreRemovedNeverFollowed();
    void nothingOutsideTheHomeIsChanged();
    void unsafeNamesAreRefused_data();
    void unsafeNamesAreRefused();
    void removeRecursiveSubFilesKeepsFoldersAndSyncAgentData();
    void secureDeleteKeepsAFileItCannotOverwrite();
    void writeIsAtomicAndKeepsPermissions();
    void aFailedWriteLeavesTheOldFile();
    void sqlThatWouldChangeADatabaseDoesNotRunInAPreview_data();
    void sqlThatWouldChangeADatabaseDoesNotRunInAPreview();
    void aFileThatIsNoDatabaseIsNeverWritten_data();
    void aFileThatIsNoDatabaseIsNeverWritten();
    void specialFilesReadAsNothing_data();
    void specialFilesReadAsNothing();
    void onlyTheChosenFolderIsRecorded();
    void linkedRootsAreTheBrowsersLinksBelowThemAreNot_data();
    void linkedRootsAreTheBrowsersLinksBelowThemAreNot();
    void danglingLinksAreRemoved();
    void linuxLayoutMapsReferencePaths_data();
    void linuxLayoutMapsReferencePaths();
};

void TestSandbox::refusedAccessGivesEmptyResultsAndALogLine()
{
    TestHome home(false);
    home.file(QStringLiteral("Library/Cookies/Cookies.binarycookies"));
    Sandbox& s = home.sandbox;
    const QString expanded = home.path(QStringLiteral("Library/Cookies/Cookies.binarycookies"));
    const QString file = QStringLiteral("~/Library/Cookies/Cookies.binarycookies");

    QCOMPARE(s.contentsOf(file), QString(QLatin1String("")));
    QCOMPARE(s.dataWithContentsOfFile(file), QByteArray());
    QVERIFY(!s.fileExists(file));
    QVERIFY(s.folderContentsOf(QStringLiteral("~/Library/Cookies")).isEmpty());
    s.remove(file);
    QVERIFY(home.exists(QStringLiteral("Library/Cookies/Cookies.binarycookies")));
    s.write(QStringLiteral("x"), file);
    QCOMPARE(home.read(QStringLiteral("Library/Cookies/Cookies.binarycookies")), QByteArray("data"));

    const QStringList lines = home.t.log.lines();
    QCOMPARE(lines.size(), 6);
    QCOMPARE(lines.first(), QStringLiteral("Corvella Sandbox has denied access to ") + expanded);
    QCOMPARE(lines.last(), QStringLiteral("Cookie Sandbox has denied access to ") + expanded);
    QCOMPARE(home.panel.requests.size(), 6); // asked each time, never remembered

    // On this system's layout the line names the real file, not its reference path.
    home.t.defaults.setObject(PathLayout::linux_, SettingsKeys::browserLayout);
    s.fileExists(QStringLiteral("~/Library/Preferences/Macromedia/Flash Player/settings.sol"));
    QCOMPARE(home.t.log.lines().last(),
             QStringLiteral("Corvella Sandbox has denied access to ") +
                 home.path(QStringLiteral(".macromedia/Flash_Player/settings.sol")));
}

void TestSandbox::theHomeGrantIsAskedForOnceOnTheMainThread()
{
    TestHome home(false);
    home.panel.answer(home.path());
    home.file(QStringLiteral("a"));
    QVERIFY(home.sandbox.fileExists(QStringLiteral("~/a")));
    QVERIFY(home.sandbox.fileExists(QStringLiteral("~/a")));
    QVERIFY(home.sandbox.enableAccess());
    QCOMPARE(home.panel.requests.size(), 1);
    QCOMPARE(home.panel.requests.first().directory, home.path());
    QCOMPARE(home.panel.threads.first(), QThread::currentThread());
}

void TestSandbox::remove_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QStringList>("gone");
    QTest::addColumn<QStringList>("kept");
    QTest::newRow("a file") << "dir/file" << paths("dir/file") << paths("dir dir/other");
    QTest::newRow("a whole tree") << "dir" << paths("dir dir/sub/deep/f dir/.hidden") << paths("target/t");
    QTest::newRow("a link to a folder") << "link" << paths("link") << paths("target target/t");
    QTest::newRow("a missing path") << "nothing" << paths("") << paths("dir/file");
}

void TestSandbox::remove()
{
    QFETCH(QString, target);
    QFETCH(QStringList, gone);
    QFETCH(QStringList, kept);
    TestHome home;
    home.file(QStringLiteral("dir/file"));
    home.file(QStringLiteral("dir/other"));
    home.file(QStringLiteral("dir/.hidden"));
    home.file(QStringLiteral("dir/sub/deep/f"));
    home.file(QStringLiteral("target/t"));
    QVERIFY(QFile::link(home.path(QStringLiteral("target")), home.path(QStringLiteral("link"))));

    home.sandbox.remove(QStringLiteral("~/") + target);
    for (const QString& path : gone)
        QVERIFY2(!home.exists(path), qPrintable(path));
    for (const QString& path : kept)
        QVERIFY2(home.exists(path), qPrintable(path));
    QVERIFY(home.t.log.lines().isEmpty());
}

void TestSandbox::removingADatabaseTakesItsCompanions()
{
    TestHome home;
    for (const char* name : {"Cookies", "Cookies-journal", "Cookies-wal", "Cookies-shm", "Cookies-backup"})
        home.file(QStringLiteral("Default/") + QLatin1String(name));
    home.sandbox.remove(QStringLiteral("~/Default/Cookies"));
    QCOMPARE(QDir(home.path(QStringLiteral("Default"))).entryList(QDir::Files),
             QStringList{QStringLiteral("Cookies-backup")});
    // A journal outliving its database (a run killed between the two) would be played into the next.
    home.file(QStringLiteral("Default/Cookies-journal"));
    home.sandbox.remove(QStringLiteral("~/Default/Cookies"));
    QVERIFY(!home.exists(QStringLiteral("Default/Cookies-journal")));
    // The browser seen starting right after the database went (looks: the change, the database, then
    // its journal) does not part the two either.
    home.file(QStringLiteral("Default/Cookies"));
    home.file(QStringLiteral("Default/Cookies-journal"));
    int looks = 0;
    home.sandbox.runStop().arm([&] { return ++looks > 2; }, 0);
    home.sandbox.remove(QStringLiteral("~/Default/Cookies"));
    home.sandbox.runStop().disarm();
    QVERIFY(!home.exists(QStringLiteral("Default/Cookies")));
    QVERIFY(!home.exists(QStringLiteral("Default/Cookies-journal")));
}

void TestSandbox::linksOutOfTheHomeAreRemovedNeverFollowed()
{
    TestHome home;
    QTemporaryDir outside;
    PlistFixtures::writeFile(outside.filePath(QStringLiteral("keep/precious")), "precious");
    home.folder(QStringLiteral("Cache"));
    QVERIFY(QFile::link(outside.filePath(QStringLiteral("keep")), home.path(QStringLiteral("Cache/escape"))));
    home.t.defaults.setBool(true, SettingsKeys::secureDeleteData);
    home.sandbox.removeRecursiveSubFilesFor(QStringLiteral("~/Cache"));
    QVERIFY(!home.exists(QStringLiteral("Cache/escape")));
    QVERIFY(QFile::exists(outside.filePath(QStringLiteral("keep/precious"))));

    QVERIFY(QFile::link(outside.filePath(QStringLiteral("keep")), home.path(QStringLiteral("Cache/escape"))));
    home.sandbox.remove(QStringLiteral("~/Cache"));
    QVERIFY(!home.exists(QStringLiteral("Cache")));
    QFile precious(outside.filePath(QStringLiteral("keep/precious")));
    QVERIFY(precious.open(QIODevice::ReadOnly));
    QCOMPARE(precious.readAll(), QByteArray("precious"));
}

void TestSandbox::nothingOutsideTheHomeIsChanged()
{
    TestHome home;
    QTemporaryDir outside;
    const QString victim = outside.filePath(QStringLiteral("victim"));
    PlistFixtures::writeFile(victim, "keep");
    QVERIFY(QFile::link(victim, home.path(QStringLiteral("Preferences"))));

    home.sandbox.remove(victim);
    home.sandbox.remove(QStringLiteral("~"));
    home.sandbox.remove(QStringLiteral("~/"));
    home.sandbox.removeRecursiveSubFilesFor(outside.path());
    home.sandbox.write(QStringLiteral("changed"), victim);
    home.sandbox.write(QStringLiteral("changed"), QStringLiteral("~/Preferences")); // through a link
    QVERIFY(QFile::exists(victim));
    QVERIFY(QFileInfo(home.path()).isDir());
    QFile f(victim);
    QVERIFY(f.open(QIODevice::ReadOnly));
    QCOMPARE(f.readAll(), QByteArray("keep"));
    QVERIFY(home.t.log.lines().size() >= 5);
    QVERIFY(home.t.log.lines().first().contains(QStringLiteral("outside the home folder")));
}

void TestSandbox::unsafeNamesAreRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << "";
    QTest::newRow("dot") << ".";
    QTest::newRow("dot dot") << "..";
    QTest::newRow("slash") << "a/b";
    QTest::newRow("NUL") << QString(QStringLiteral("a") + QChar(0) + QStringLiteral("b"));
}

void TestSandbox::unsafeNamesAreRefused()
{
    QFETCH(QString, name);
    TestHome home;
    home.file(QStringLiteral("Local Storage/keep"));
    QVERIFY(!home.sandbox.childPath(QStringLiteral("~/Local Storage"), name));
    QCOMPARE(home.t.log.lines().size(), 1);
    QCOMPARE(home.sandbox.childPath(QStringLiteral("~/Profiles/"), QStringLiteral("abc.default")),
             QStringLiteral("~/Profiles/abc.default"));

    // A composed path that steps out is refused by the file layer itself.
    home.sandbox.remove(QStringLiteral("~/Local Storage/../Local Storage"));
    home.sandbox.remove(QStringLiteral("~/Local Storage/."));
    QVERIFY(home.exists(QStringLiteral("Local Storage/keep")));
    QCOMPARE(home.t.log.lines().size(), 3);
}

void TestSandbox::removeRecursiveSubFilesKeepsFoldersAndSyncAgentData()
{
    TestHome home;
    home.file(QStringLiteral("Caches/a/b.txt"));
    home.file(QStringLiteral("Caches/.hidden"));
    home.file(QStringLiteral("Caches/com.apple.SafariBookmarksSyncAgent/c.txt"));
    home.file(QStringLiteral("Caches/x/com.apple.SafariBookmarksSyncAgent.db"));
    home.sandbox.removeRecursiveSubFilesFor(QStringLiteral("~/Caches"));
    QVERIFY(!home.exists(QStringLiteral("Caches/a/b.txt")));
    QVERIFY(!home.exists(QStringLiteral("Caches/.hidden")));
    QVERIFY(QFileInfo(home.path(QStringLiteral("Caches/a"))).isDir());
    QVERIFY(home.exists(QStringLiteral("Caches/com.apple.SafariBookmarksSyncAgent/c.txt")));
    QVERIFY(home.exists(QStringLiteral("Caches/x/com.apple.SafariBookmarksSyncAgent.db")));
}

void TestSandbox::secureDeleteKeepsAFileItCannotOverwrite()
{
    TestHome home;
    const QString locked = home.file(QStringLiteral("Default/locked"), "secret");
    const QString plain = home.file(QStringLiteral("Default/plain"), "secret");
    QVERIFY(QFile::setPermissions(plain, QFileDevice::Permissions(0x6666)));
    QVERIFY(QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::ReadOther));
    for (const QString& folder : {home.path(), home.path(QStringLiteral("Default"))})
        QVERIFY(QFile::setPermissions(folder, QFileDevice::Permissions(0x7777)));
    home.t.defaults.setBool(true, SettingsKeys::secureDeleteData);
    QVERIFY(asUnprivilegedUser([&] {
        home.sandbox.remove(QStringLiteral("~/Default/locked"));
        home.sandbox.remove(QStringLiteral("~/Default/plain"));
        return true;
    }));
    QCOMPARE(home.read(QStringLiteral("Default/locked")), QByteArray("secret"));
    QVERIFY(!home.exists(QStringLiteral("Default/plain")));

    // Without secure deletion the same file goes.
    home.t.defaults.setBool(false, SettingsKeys::secureDeleteData);
    QVERIFY(asUnprivilegedUser([&] {
        home.sandbox.remove(QStringLiteral("~/Default/locked"));
        return true;
    }));
    QVERIFY(!home.exists(QStringLiteral("Default/locked")));
}

void TestSandbox::writeIsAtomicAndKeepsPermissions()
{
    TestHome home;
    const QString prefs = home.file(QStringLiteral("Default/Preferences"), "{}");
    QVERIFY(QFile::setPermissions(prefs,
                                  QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup));
    const QVariantMap dict{
        {QStringLiteral("TopSites"), QVariantList{QStringLiteral("https://example.org/")}}};
    home.sandbox.write(dict, QStringLiteral("~/Default/Preferences"));
    QCOMPARE(home.sandbox.dictionaryWithContentsOfFile(QStringLiteral("~/Default/Preferences")), dict);
    QCOMPARE(QFile::permissions(prefs), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                            QFileDevice::ReadGroup | QFileDevice::ReadUser |
                                            QFileDevice::WriteUser);
    home.sandbox.write(QByteArray("{\"a\":1}"), QStringLiteral("~/Default/Preferences"));
    QCOMPARE(home.read(QStringLiteral("Default/Preferences")), QByteArray("{\"a\":1}"));
    // No temporary file is left beside it.
    QCOMPARE(QDir(home.path(QStringLiteral("Default"))).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("Preferences")});
}

void TestSandbox::linuxLayoutMapsReferencePaths_data()
{
    QTest::addColumn<QString>("reference");
    QTest::addColumn<QString>("native"); // empty: no counterpart
    // The browser table names each install's own folders; their reference paths map to nothing.
    QTest::newRow("a browser's reference root") << "Library/Application Support/Chromium/Default/Cookies"
                                                << "";
    QTest::newRow("Flash") << "Library/Preferences/Macromedia/Flash Player/#SharedObjects"
                           << ".macromedia/Flash_Player/#SharedObjects";
    QTest::newRow("scripts") << "Library/Application Scripts/com.tovanex.Corvella6/clearCookies.sh"
                             << ".local/share/corvella/scripts/clearCookies.sh";
    QTest::newRow("whole components only") << "Library/Preferences/Macromedia/Flash Player2/x"
                                           << "";
    QTest::newRow("Safari") << "Library/Safari/History.db"
                            << "";
    QTest::newRow("outside Library") << ".config/chromium/Local State"
                                     << ".config/chromium/Local State";
}

void TestSandbox::linuxLayoutMapsReferencePaths()
{
    QFETCH(QString, reference);
    QFETCH(QString, native);
    TestHome home;
    home.t.defaults.setObject(PathLayout::linux_, SettingsKeys::browserLayout);
    const auto mapped = PathLayout::nativePath(PathLayout::linux_, home.path(), home.path(reference));
    QCOMPARE(mapped.value_or(QString()), native.isEmpty() ? QString() : home.path(native));
    QCOMPARE(PathLayout::nativePath(PathLayout::macOS, home.path(), home.path(reference)),
             home.path(reference));

    // The file layer acts on the native path, and on nothing when there is none.
    home.file(reference);
    if (!native.isEmpty())
        home.file(native);
    home.sandbox.remove(QStringLiteral("~/") + reference);
    if (native.isEmpty()) {
        QVERIFY(home.exists(reference));
    } else {
        QVERIFY(!home.exists(native));
        QCOMPARE(home.exists(reference), reference != native); // the macOS-style copy is not this system's
    }
}

namespace {
struct ListedPreview final : RemovalPreview
{
    void record(const QString& action, const QString& path, qint64 bytes, const QString& detail) override
    {
        lines.append(QStringLiteral("%1 %2 %3 %4").arg(action, path).arg(bytes).arg(detail).trimmed());
    }
    QStringList lines;
};
} // namespace

void TestSandbox::aPreviewReportsAndChangesNothing()
{
    TestHome home;
    ListedPreview preview;
    Sandbox sandbox({home.t.defaults, home.bookmarks, home.panel, home.t.log, &preview});
    home.file(QStringLiteral("Cookies/a"), "12345");
    home.file(QStringLiteral("Cache/x/y"), "123");
    home.file(QStringLiteral("Cache/z"), "1");
    const QString db = home.path(QStringLiteral("History.db"));
    {
        Sqlite sqlite(db);
        sqlite.executeQuery(QStringLiteral("CREATE TABLE t (v)"));
        sqlite.executeQuery(QStringLiteral("INSERT INTO t VALUES (1)"));
    }
    const qint64 dbSize = QFileInfo(db).size();
    sandbox.remove(QStringLiteral("~/Cookies"));
    sandbox.removeRecursiveSubFilesFor(QStringLiteral("~/Cache"));
    sandbox.write(QByteArray("new"), QStringLiteral("~/Cookies/a"));
    sandbox.runSql(QStringLiteral("DELETE FROM t"), QStringLiteral("~/History.db"));
    // Reading still works, so a preview walks the same steps as a real run.
    QCOMPARE(sandbox.returnArrayFromSql(QStringLiteral(" select v from t"), QStringLiteral("~/History.db"))
                 ->size(),
             1);
    QCOMPARE(preview.lines,
             QStringList({QStringLiteral("remove %1 5").arg(home.path(QStringLiteral("Cookies"))),
                          QStringLiteral("remove files below %1 4").arg(home.path(QStringLiteral("Cache"))),
                          QStringLiteral("write %1 3").arg(home.path(QStringLiteral("Cookies/a"))),
                          QStringLiteral("change %1 %2 DELETE FROM t").arg(db).arg(dbSize)}));
    QCOMPARE(home.read(QStringLiteral("Cookies/a")), QByteArray("12345"));
    QVERIFY(home.exists(QStringLiteral("Cache/x/y")) && home.exists(QStringLiteral("Cache/z")));
    QCOMPARE(Sqlite(db).executeQuery(QStringLiteral("SELECT v FROM t"))->size(), 1);
}

void TestSandbox::aFailedWriteLeavesTheOldFile()
{
    SmallFileSystem disk;
    if (!disk.isMounted())
        QSKIP("a small file system cannot be mounted here (needs root)");
    TestHome home(true, disk.path());
    const QString prefs = home.file(QStringLiteral("Default/Preferences"), "{\"homepage\":\"kept\"}");
    disk.fill();
    home.sandbox.write(QByteArray(20000, ' '), QStringLiteral("~/Default/Preferences"));
    QFile file(prefs);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("{\"homepage\":\"kept\"}"));
    QCOMPARE(QDir(home.path(QStringLiteral("Default"))).entryList(QDir::Files | QDir::Hidden).size(), 1);
    QVERIFY(!home.t.log.lines().filter(QStringLiteral("could not write")).isEmpty());
}

void TestSandbox::sqlThatWouldChangeADatabaseDoesNotRunInAPreview_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<bool>("listed");
    QTest::newRow("select") << QStringLiteral("SELECT v FROM t") << false;
    QTest::newRow("reading pragma") << QStringLiteral("PRAGMA user_version") << false;
    QTest::newRow("setting pragma") << QStringLiteral("PRAGMA user_version=7") << true;
    QTest::newRow("journal mode") << QStringLiteral("PRAGMA journal_mode=WAL") << true;
    QTest::newRow("delete") << QStringLiteral("DELETE FROM t") << true;
    QTest::newRow("update") << QStringLiteral("UPDATE t SET v = 2 WHERE v = 1") << true;
    // What would change nothing is not listed: a preview says what would go.
    QTest::newRow("delete from an empty table") << QStringLiteral("DELETE FROM empty WHERE v = 1") << false;
    QTest::newRow("quoted empty table") << QStringLiteral("UPDATE \"empty\" SET v = 2") << false;
    QTest::newRow("no such table") << QStringLiteral("DELETE FROM gone") << false;
    QTest::newRow("vacuum") << QStringLiteral("VACUUM") << false;
}

void TestSandbox::sqlThatWouldChangeADatabaseDoesNotRunInAPreview()
{
    QFETCH(QString, sql);
    QFETCH(bool, listed);
    TestHome home;
    const QString db = home.path(QStringLiteral("History"));
    {
        Sqlite sqlite(db);
        sqlite.executeQuery(QStringLiteral("CREATE TABLE t (v)"));
        sqlite.executeQuery(QStringLiteral("CREATE TABLE empty (v)"));
        sqlite.executeQuery(QStringLiteral("INSERT INTO t VALUES (1)"));
    }
    const QByteArray before = home.read(QStringLiteral("History"));
    ListedPreview preview;
    Sandbox sandbox({home.t.defaults, home.bookmarks, home.panel, home.t.log, &preview});
    sandbox.runSql(sql, QStringLiteral("~/History"));
    QCOMPARE(preview.lines.size(), listed ? 1 : 0);
    QCOMPARE(home.read(QStringLiteral("History")), before);
    QVERIFY(!home.exists(QStringLiteral("History-wal")));
}

void TestSandbox::aFileThatIsNoDatabaseIsNeverWritten_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("sql");
    QTest::newRow("zero bytes, create") << QByteArray() << QStringLiteral("CREATE TABLE x (a)");
    QTest::newRow("zero bytes, vacuum") << QByteArray() << QStringLiteral("VACUUM");
    QTest::newRow("zero bytes, pragma") << QByteArray() << QStringLiteral("PRAGMA user_version=7");
    QTest::newRow("JSON") << QByteArray("{\"a\":1}") << QStringLiteral("VACUUM");
}

void TestSandbox::aFileThatIsNoDatabaseIsNeverWritten()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, sql);
    TestHome home;
    home.file(QStringLiteral("Web Data"), content);
    home.sandbox.runSql(sql, QStringLiteral("~/Web Data"));
    QCOMPARE(home.read(QStringLiteral("Web Data")), content);
    QCOMPARE(QDir(home.path()).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("Web Data")});
}

void TestSandbox::specialFilesReadAsNothing_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("FIFO") << QStringLiteral("fifo");
    QTest::newRow("link to /dev/zero") << QStringLiteral("zero");
    QTest::newRow("folder") << QStringLiteral("folder");
}

void TestSandbox::specialFilesReadAsNothing()
{
    QFETCH(QString, kind);
    TestHome home;
    const QString path = home.path(QStringLiteral("Local State"));
    if (kind == QLatin1String("fifo"))
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    else if (kind == QLatin1String("zero"))
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), path));
    else
        home.folder(QStringLiteral("Local State"));
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!home.sandbox.contentsOf(QStringLiteral("~/Local State")));
    QVERIFY(!home.sandbox.dataWithContentsOfFile(QStringLiteral("~/Local State")));
    QVERIFY(home.sandbox.dictionaryWithContentsOfFile(QStringLiteral("~/Local State")).isEmpty());
    QVERIFY(clock.elapsed() < 1000);
}

void TestSandbox::onlyTheChosenFolderIsRecorded()
{
    TestHome home;
    home.file(QStringLiteral("Library/Caches/https_secret-clinic.example_0.indexeddb.leveldb/LOG"));
    home.sandbox.remove(QStringLiteral("~/Library/Caches/https_secret-clinic.example_0.indexeddb.leveldb"));
    home.sandbox.write(QByteArray("{}"), QStringLiteral("~/Library/Preferences.json"));
    home.sandbox.fileExists(QStringLiteral("~/Library/Caches"));
    auto records = [&] {
        return home.t.defaults.dictionaryRepresentation().keys().filter(
            AppSandboxFileAccessPersist::keyPrefix);
    };
    const QStringList homeOnly{
        AppSandboxFileAccessPersist::keyForBookmarkDataForURL(FileUrl::forPath(home.path()))};
    QCOMPARE(records(), homeOnly);
    // Records below the granted folder that earlier versions wrote go at the next start, also those
    // of folders that no longer exist (their keys end in "/").
    for (const QString& below : {QStringLiteral("Library/Caches/x"), QStringLiteral("Library/gone/")})
        home.t.defaults.setObject(QByteArray("old"), AppSandboxFileAccessPersist::keyForBookmarkDataForURL(
                                                         QUrl::fromLocalFile(home.path(below))));
    QVERIFY(AppSandboxFileAccessPersist(home.t.defaults).removeRecordsBelowGrants());
    QCOMPARE(records(), homeOnly);
}

void TestSandbox::linkedRootsAreTheBrowsersLinksBelowThemAreNot_data()
{
    QTest::addColumn<QString>("linked"); // relative to the home: the link made to the outside folder
    QTest::addColumn<QString>("target"); // the path removed, on this system's layout
    QTest::addColumn<bool>("ownedByUser");
    QTest::addColumn<bool>("removed");
    QTest::newRow("~/.cache on another disk") << ".cache"
                                              << ".cache/chromium/Default/Cache" << true << true;
    QTest::newRow("the browser's own folder") << ".config/chromium"
                                              << ".config/chromium/Default/History" << true << true;
    QTest::newRow("a root linked to someone else's folder")
        << ".cache/chromium"
        << ".cache/chromium/Default/Cache" << false << false;
    QTest::newRow("a link below a root") << ".config/chromium/Default"
                                         << ".config/chromium/Default/History" << true << false;
}

void TestSandbox::linkedRootsAreTheBrowsersLinksBelowThemAreNot()
{
    QFETCH(QString, linked);
    QFETCH(QString, target);
    QFETCH(bool, ownedByUser);
    QFETCH(bool, removed);
    TestHome home;
    home.t.defaults.setObject(PathLayout::linux_, SettingsKeys::browserLayout);
    QTemporaryDir outside;
    const QString real = outside.filePath(QStringLiteral("real"));
    QVERIFY(QDir().mkpath(real + QLatin1Char('/') + QFileInfo(target).path().mid(linked.size())));
    QVERIFY(PlistFixtures::writeFile(real + target.mid(linked.size()), "visited"));
    if (!ownedByUser)
        QCOMPARE(::chown(QFile::encodeName(real).constData(), 65534, 65534), 0);
    QVERIFY(QDir().mkpath(QFileInfo(home.path(linked)).path()));
    QVERIFY(QFile::link(real, home.path(linked)));
    // The file layer of the install whose roots these are.
    ProblemReport problems;
    Sandbox sandbox =
        Sandbox({home.t.defaults, home.bookmarks, home.panel, home.t.log, nullptr, &problems})
            .forRoots({QStringLiteral("~/.config/chromium"), QStringLiteral("~/.cache/chromium")});
    sandbox.remove(QStringLiteral("~/") + target);
    QCOMPARE(!QFile::exists(real + target.mid(linked.size())), removed);
    QCOMPARE(home.t.log.lines().filter(QStringLiteral("outside the home folder")).isEmpty(), removed);
    QCOMPARE(problems.lines().isEmpty(), removed); // what corvella-clean warns about
}

void TestSandbox::danglingLinksAreRemoved()
{
    TestHome home;
    // Browsers' lock files are links to "host-pid", which names no file at all.
    QVERIFY(QFile::link(QStringLiteral("myhost-4242"), home.path(QStringLiteral("SingletonLock"))));
    QVERIFY(QFile::link(QStringLiteral("/nonexistent/target"), home.path(QStringLiteral("outside"))));
    home.sandbox.remove(QStringLiteral("~/SingletonLock"));
    home.sandbox.remove(QStringLiteral("~/outside"));
    QVERIFY(QDir(home.path()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).isEmpty());
}

QTEST_GUILESS_MAIN(TestSandbox)
#include "tst_sandbox.moc"
