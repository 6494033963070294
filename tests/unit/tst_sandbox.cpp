#include "platform/PathLayout.h"
#include "platform/SettingsKeys.h"
#include "sandbox/AppSandboxFileAccess.h"
#include "sandbox/AppSandboxFileAccessPersist.h"
#include "sandbox/FileUrl.h"
#include "sandbox/HelperScripts.h"
#include "sandbox/ProblemReport.h"
#include "sandbox/RemovalPreview.h"
#include "sandbox/Sqlite.h"
#include "support/PlistFixtures.h"
#include "support/TestHome.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

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
    void remove_data();
    void remove();
    void removingADatabaseTakesItsCompanions();
    void nothingOutsideTheHomeIsChanged();
    void unsafeNamesAreRefused_data();
    void unsafeNamesAreRefused();
    void aFileThatIsNoDatabaseIsNeverWritten_data();
    void aFileThatIsNoDatabaseIsNeverWritten();
    void specialFilesReadAsNothing_data();
    void specialFilesReadAsNothing();
    void onlyTheChosenFolderIsRecorded();
    void linkedRootsAreTheBrowsersLinksBelowThemAreNot_data();
    void linkedRootsAreTheBrowsersLinksBelowThemAreNot();
    void helperScriptsAreInstalledOnceAndRunBounded();
    void aRecordThatNoLongerMatchesItsFolderGrantsNothing_data();
    void aRecordThatNoLongerMatchesItsFolderGrantsNothing();
};

void TestSandbox::remove_data()
{
    QTest::addColumn<QString>("target"); // "below X": the files below X
    QTest::addColumn<QStringList>("gone");
    QTest::addColumn<QStringList>("kept");
    QTest::newRow("a file") << "dir/file" << paths("dir/file") << paths("dir dir/other");
    QTest::newRow("a whole tree") << "dir" << paths("dir dir/sub/deep/f dir/.hidden") << paths("target/t");
    QTest::newRow("a link to a folder") << "link" << paths("link") << paths("target target/t");
    QTest::newRow("a missing path") << "nothing" << paths("") << paths("dir/file");
    // Browsers' lock files are links to "host-pid", which names no file at all.
    QTest::newRow("a dangling link") << "SingletonLock" << paths("SingletonLock") << paths("dir");
    QTest::newRow("files below: folders and the bookmarks sync agent's data stay")
        << "below Caches" << paths("Caches/a/b.txt Caches/.hidden")
        << paths("Caches/a Caches/com.apple.SafariBookmarksSyncAgent/c.txt "
                 "Caches/x/com.apple.SafariBookmarksSyncAgent.db");
}

void TestSandbox::remove()
{
    QFETCH(QString, target);
    QFETCH(QStringList, gone);
    QFETCH(QStringList, kept);
    TestHome home;
    for (const QString& file : paths("dir/file dir/other dir/.hidden dir/sub/deep/f target/t Caches/a/b.txt "
                                     "Caches/.hidden Caches/com.apple.SafariBookmarksSyncAgent/c.txt "
                                     "Caches/x/com.apple.SafariBookmarksSyncAgent.db"))
        home.file(file);
    QVERIFY(QFile::link(home.path(u"target"_s), home.path(u"link"_s)));
    QVERIFY(QFile::link(u"myhost-4242"_s, home.path(u"SingletonLock"_s)));

    if (target.startsWith(u"below "_s))
        home.sandbox.removeRecursiveSubFilesFor(u"~/"_s + target.mid(6));
    else
        home.sandbox.remove(u"~/"_s + target);
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
        home.file(u"Default/"_s + QLatin1String(name));
    home.sandbox.remove(u"~/Default/Cookies"_s);
    QCOMPARE(QDir(home.path(u"Default"_s)).entryList(QDir::Files), QStringList{u"Cookies-backup"_s});
    // A journal outliving its database (a run killed between the two) would be played into the next.
    home.file(u"Default/Cookies-journal"_s);
    home.sandbox.remove(u"~/Default/Cookies"_s);
    QVERIFY(!home.exists(u"Default/Cookies-journal"_s));
    // The browser seen starting right after the database went (looks: the change, the database, then
    // its journal) does not part the two either.
    home.file(u"Default/Cookies"_s);
    home.file(u"Default/Cookies-journal"_s);
    int looks = 0;
    home.sandbox.runStop().arm([&] { return ++looks > 2; }, 0);
    home.sandbox.remove(u"~/Default/Cookies"_s);
    home.sandbox.runStop().disarm();
    QVERIFY(!home.exists(u"Default/Cookies"_s));
    QVERIFY(!home.exists(u"Default/Cookies-journal"_s));
}

void TestSandbox::nothingOutsideTheHomeIsChanged()
{
    TestHome home;
    QTemporaryDir outside;
    const QString victim = outside.filePath(u"keep/victim"_s);
    PlistFixtures::writeFile(victim, "keep");
    QVERIFY(QFile::link(victim, home.path(u"Preferences"_s)));
    home.folder(u"Cache"_s);
    QVERIFY(QFile::link(outside.filePath(u"keep"_s), home.path(u"Cache/escape"_s)));
    home.t.defaults.setBool(true, SettingsKeys::secureDeleteData);

    home.sandbox.remove(victim);
    home.sandbox.remove(u"~"_s);
    home.sandbox.remove(u"~/"_s);
    home.sandbox.removeRecursiveSubFilesFor(outside.path());
    home.sandbox.write(u"changed"_s, victim);
    home.sandbox.write(u"changed"_s, u"~/Preferences"_s); // through a link
    // Links out of the home are removed as links, never followed, also when overwriting first.
    home.sandbox.removeRecursiveSubFilesFor(u"~/Cache"_s);
    QVERIFY(!home.exists(u"Cache/escape"_s));
    QVERIFY(QFile::link(outside.filePath(u"keep"_s), home.path(u"Cache/escape"_s)));
    home.sandbox.remove(u"~/Cache"_s);
    QVERIFY(!home.exists(u"Cache"_s));

    QVERIFY(QFileInfo(home.path()).isDir());
    QCOMPARE(PlistFixtures::readFile(victim), QByteArray("keep"));
    QVERIFY(home.t.log.lines().size() >= 5);
    QVERIFY(home.t.log.lines().first().contains(u"outside the home folder"_s));
}

void TestSandbox::unsafeNamesAreRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << "";
    QTest::newRow("dot") << ".";
    QTest::newRow("dot dot") << "..";
    QTest::newRow("slash") << "a/b";
    QTest::newRow("NUL") << QString(u"a"_s + QChar(0) + u"b"_s);
}

void TestSandbox::unsafeNamesAreRefused()
{
    QFETCH(QString, name);
    TestHome home;
    home.file(u"Local Storage/keep"_s);
    QVERIFY(!home.sandbox.childPath(u"~/Local Storage"_s, name));
    QCOMPARE(home.t.log.lines().size(), 1);
    QCOMPARE(home.sandbox.childPath(u"~/Profiles/"_s, u"abc.default"_s), u"~/Profiles/abc.default"_s);

    // A composed path that steps out is refused by the file layer itself.
    home.sandbox.remove(u"~/Local Storage/../Local Storage"_s);
    home.sandbox.remove(u"~/Local Storage/."_s);
    QVERIFY(home.exists(u"Local Storage/keep"_s));
    QCOMPARE(home.t.log.lines().size(), 3);
}

namespace {
struct ListedPreview final : RemovalPreview
{
    void record(const QString& action, const QString& path, qint64 bytes, const QString& detail) override
    {
        lines.append(u"%1 %2 %3 %4"_s.arg(action, path).arg(bytes).arg(detail).trimmed());
    }
    QStringList lines;
};
} // namespace

void TestSandbox::aPreviewReportsAndChangesNothing()
{
    TestHome home;
    ListedPreview preview;
    Sandbox sandbox({home.t.defaults, home.bookmarks, home.panel, home.t.log, &preview});
    home.file(u"Cookies/a"_s, "12345");
    home.file(u"Cache/x/y"_s, "123");
    home.file(u"Cache/z"_s, "1");
    const QString db = home.path(u"History.db"_s);
    {
        Sqlite sqlite(db);
        sqlite.executeQuery(u"CREATE TABLE t (v)"_s);
        sqlite.executeQuery(u"INSERT INTO t VALUES (1)"_s);
    }
    const qint64 dbSize = QFileInfo(db).size();
    sandbox.remove(u"~/Cookies"_s);
    sandbox.removeRecursiveSubFilesFor(u"~/Cache"_s);
    sandbox.write(QByteArray("new"), u"~/Cookies/a"_s);
    sandbox.runSql(u"DELETE FROM t"_s, u"~/History.db"_s);
    // Reading still works, so a preview walks the same steps as a real run.
    QCOMPARE(sandbox.returnArrayFromSql(u" select v from t"_s, u"~/History.db"_s)->size(), 1);
    QCOMPARE(preview.lines, QStringList({u"remove %1 5"_s.arg(home.path(u"Cookies"_s)),
                                         u"remove files below %1 4"_s.arg(home.path(u"Cache"_s)),
                                         u"write %1 3"_s.arg(home.path(u"Cookies/a"_s)),
                                         u"change %1 %2 DELETE FROM t"_s.arg(db).arg(dbSize)}));
    QCOMPARE(home.read(u"Cookies/a"_s), QByteArray("12345"));
    QVERIFY(home.exists(u"Cache/x/y"_s) && home.exists(u"Cache/z"_s));
    QCOMPARE(Sqlite(db).executeQuery(u"SELECT v FROM t"_s)->size(), 1);
}

void TestSandbox::aFileThatIsNoDatabaseIsNeverWritten_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("sql");
    QTest::newRow("zero bytes, create") << QByteArray() << u"CREATE TABLE x (a)"_s;
    QTest::newRow("JSON") << QByteArray("{\"a\":1}") << u"VACUUM"_s;
}

void TestSandbox::aFileThatIsNoDatabaseIsNeverWritten()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, sql);
    TestHome home;
    home.file(u"Web Data"_s, content);
    home.sandbox.runSql(sql, u"~/Web Data"_s);
    QCOMPARE(home.read(u"Web Data"_s), content);
    QCOMPARE(QDir(home.path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"Web Data"_s});
}

void TestSandbox::specialFilesReadAsNothing_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("FIFO") << u"fifo"_s;
    QTest::newRow("link to /dev/zero") << u"zero"_s;
}

void TestSandbox::specialFilesReadAsNothing()
{
    QFETCH(QString, kind);
    TestHome home;
    const QString path = home.path(u"Local State"_s);
    if (kind == QLatin1String("fifo"))
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    else
        QVERIFY(QFile::link(u"/dev/zero"_s, path));
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!home.sandbox.contentsOf(u"~/Local State"_s));
    QVERIFY(!home.sandbox.dataWithContentsOfFile(u"~/Local State"_s));
    QVERIFY(home.sandbox.dictionaryWithContentsOfFile(u"~/Local State"_s).isEmpty());
    QVERIFY(clock.elapsed() < 1000);
}

void TestSandbox::onlyTheChosenFolderIsRecorded()
{
    TestHome home;
    home.file(u"Library/Caches/https_secret-clinic.example_0.indexeddb.leveldb/LOG"_s);
    home.sandbox.remove(u"~/Library/Caches/https_secret-clinic.example_0.indexeddb.leveldb"_s);
    home.sandbox.write(QByteArray("{}"), u"~/Library/Preferences.json"_s);
    home.sandbox.fileExists(u"~/Library/Caches"_s);
    auto records = [&] {
        return home.t.defaults.dictionaryRepresentation().keys().filter(
            AppSandboxFileAccessPersist::keyPrefix);
    };
    const QStringList homeOnly{
        AppSandboxFileAccessPersist::keyForBookmarkDataForURL(FileUrl::forPath(home.path()))};
    QCOMPARE(records(), homeOnly);
    // Records below the granted folder that earlier versions wrote go at the next start, also those
    // of folders that no longer exist (their keys end in "/").
    for (const QString& below : {u"Library/Caches/x"_s, u"Library/gone/"_s})
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
    const QString real = outside.filePath(u"real"_s);
    QVERIFY(QDir().mkpath(real + QLatin1Char('/') + QFileInfo(target).path().mid(linked.size())));
    QVERIFY(PlistFixtures::writeFile(real + target.mid(linked.size()), "visited"));
    if (!ownedByUser)
        QCOMPARE(::chown(QFile::encodeName(real).constData(), 65534, 65534), 0);
    QVERIFY(QDir().mkpath(QFileInfo(home.path(linked)).path()));
    QVERIFY(QFile::link(real, home.path(linked)));
    // The file layer of the install whose roots these are.
    ProblemReport problems;
    Sandbox sandbox = Sandbox({home.t.defaults, home.bookmarks, home.panel, home.t.log, nullptr, &problems})
                          .forRoots({u"~/.config/chromium"_s, u"~/.cache/chromium"_s});
    sandbox.remove(u"~/"_s + target);
    QCOMPARE(!QFile::exists(real + target.mid(linked.size())), removed);
    QCOMPARE(home.t.log.lines().filter(u"outside the home folder"_s).isEmpty(), removed);
    QCOMPARE(problems.lines().isEmpty(), removed); // what corvella-clean warns about
}

void TestSandbox::helperScriptsAreInstalledOnceAndRunBounded()
{
    TestHome home;
    const QString folder = u"Library/Application Scripts/com.tovanex.Corvella6/"_s;
    HelperScripts scripts(home.sandbox, home.t.log, 500);
    scripts.installAll();
    for (const QString& name :
         {HelperScripts::clearCookies, HelperScripts::clearSafariHistory, HelperScripts::clearSafariCache})
        QVERIFY2(home.read(folder + name).startsWith("#!/bin/sh"), qPrintable(name));
    // The user's own version stays, and is what runs, with HOME set to the real home.
    home.file(folder + HelperScripts::clearCookies, "touch \"$HOME/ran\"\nexit 3\n");
    QVERIFY(scripts.checkForScriptInFolder(HelperScripts::clearCookies));
    QVERIFY(scripts.executeScript(HelperScripts::clearCookies));
    QVERIFY(home.exists(u"ran"_s));
    home.file(folder + HelperScripts::clearSafariCache, "sleep 30\n");
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!scripts.executeScript(HelperScripts::clearSafariCache));
    QVERIFY(clock.elapsed() < 5000);
    QVERIFY(!home.t.log.lines().filter(u"stopped the script"_s).isEmpty());
}

void TestSandbox::aRecordThatNoLongerMatchesItsFolderGrantsNothing_data()
{
    QTest::addColumn<QString>("change");
    QTest::newRow("another folder took its place") << u"replace"_s;
    QTest::newRow("a link now leads elsewhere") << u"relink"_s;
    QTest::newRow("a record made up elsewhere") << u"forge"_s;
}

// A grant is the user's choice of one folder: a record whose path now holds another folder (or that
// someone wrote into the settings) is cleared, and the user is asked again.
void TestSandbox::aRecordThatNoLongerMatchesItsFolderGrantsNothing()
{
    QFETCH(QString, change);
    TestHome home(false);
    const QString folder = home.folder(u"profile"_s), link = home.path(u"ann"_s);
    home.folder(u"elsewhere/profile"_s);
    QVERIFY(QFile::link(folder, link));
    const QString granted = change == u"relink"_s ? link : folder;
    const auto access = [&home] {
        return AppSandboxFileAccess::fileAccess({home.t.defaults, home.bookmarks, home.panel});
    };
    if (change == u"forge"_s) {
        home.t.defaults.setObject(
            QByteArray(R"({"path":")" + folder.toUtf8() + R"(","device":"1","inode":"2"})"),
            AppSandboxFileAccessPersist::keyForBookmarkDataForURL(FileUrl::forPath(granted)));
    } else { // as a granted access records it: inside an open access to the path
        home.bookmarks.startAccessing(granted);
        QVERIFY(access().persistPermissionPath(granted));
        home.bookmarks.stopAccessing(granted);
        QVERIFY(access().hasPermissionForFilePath(granted));
    }
    QDir dir(home.path());
    if (change == u"replace"_s)
        QVERIFY(dir.rmdir(u"profile"_s) && dir.rename(u"elsewhere/profile"_s, u"profile"_s));
    if (change == u"relink"_s)
        QVERIFY(QFile::remove(link) && QFile::link(home.path(u"elsewhere/profile"_s), link));

    const QString cookies = granted + u"/cookies.sqlite"_s;
    QVERIFY(!access().hasPermissionForFilePath(cookies));
    QVERIFY(!access().requestAccessPermissionsForFilePath(cookies, true, [](const QUrl&, const auto&) {}));
    QCOMPARE(home.panel.requests.size(), 1);
}

QTEST_GUILESS_MAIN(TestSandbox)
#include "tst_sandbox.moc"
