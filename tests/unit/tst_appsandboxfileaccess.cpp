#include "platform/fake/ScriptedOpenPanel.h"
#include "platform/linux/InodeBookmarks.h"
#include "sandbox/AppSandboxFileAccess.h"
#include "sandbox/AppSandboxFileAccessOpenSavePanelDelegate.h"
#include "sandbox/AppSandboxFileAccessPersist.h"
#include "sandbox/FileUrl.h"
#include "support/TestDefaults.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

class TestAppSandboxFileAccess : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void theNearestRecordedGrantAboveAPathWins();
    void aCancelledPanelRunsNothing();
    void aRecordThatNoLongerMatchesItsFolderGrantsNothing_data();
    void aRecordThatNoLongerMatchesItsFolderGrantsNothing();
    void thePanelRunsOnTheMainThreadForAWorker();

private:
    AppSandboxFileAccess access()
    {
        return AppSandboxFileAccess::fileAccess({m_t->defaults, m_bookmarks, m_panel});
    }
    QString home() const { return m_home->path(); }
    // Records a grant the way a granted access does: inside an open access to the path.
    std::optional<QByteArray> recordGrant(const QString& path)
    {
        m_bookmarks.startAccessing(path);
        const auto record = access().persistPermissionPath(path);
        m_bookmarks.stopAccessing(path);
        return record;
    }
    QUrl folderUrl(const QString& path) const { return QUrl::fromLocalFile(path + QLatin1Char('/')); }
    // Runs a request for the path and says which URL the action was given (empty when it did not run).
    QUrl request(const QString& path, bool* granted = nullptr)
    {
        QUrl permitted;
        const bool ok = access().requestAccessPermissionsForFilePath(
            path, true, [&](const QUrl& url, const std::optional<QByteArray>&) { permitted = url; });
        if (granted)
            *granted = ok;
        return permitted;
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<TestDefaults> m_t;
    InodeBookmarks m_bookmarks;
    ScriptedOpenPanel m_panel;
};

void TestAppSandboxFileAccess::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    QVERIFY(m_home->isValid());
    m_t = std::make_unique<TestDefaults>();
    m_panel = ScriptedOpenPanel();
}

// The nearest recorded folder above a path grants it; a grant of "/" covers every path, unasked.
void TestAppSandboxFileAccess::theNearestRecordedGrantAboveAPathWins()
{
    QVERIFY(QDir(home()).mkpath(u"a/b"_s));
    AppSandboxFileAccessPersist persist(m_t->defaults);
    persist.setBookmarkData("home", folderUrl(home()));
    persist.setBookmarkData("a", folderUrl(home() + u"/a"_s));
    QCOMPARE(persist.bookmarkDataForURL(QUrl::fromLocalFile(home() + u"/a/b/c"_s)), QByteArray("a"));
    persist.clearBookmarkDataForURL(folderUrl(home() + u"/a"_s));
    QCOMPARE(persist.bookmarkDataForURL(QUrl::fromLocalFile(home() + u"/a/b"_s)), QByteArray("home"));
    persist.clearBookmarkDataForURL(folderUrl(home()));
    persist.setBookmarkData(*recordGrant(u"/"_s), QUrl::fromLocalFile(u"/"_s));
    QCOMPARE(request(home() + u"/a"_s), QUrl::fromLocalFile(u"/"_s));
    QVERIFY(m_panel.requests.isEmpty());
}

void TestAppSandboxFileAccess::aCancelledPanelRunsNothing()
{
    m_panel.answer(std::nullopt);
    bool ran = false;
    QVERIFY(!access().accessFilePath(home(), true, [&] { ran = true; }));
    QVERIFY(!ran);
    QVERIFY(!AppSandboxFileAccessPersist(m_t->defaults).bookmarkDataForURL(QUrl::fromLocalFile(home())));
    // Asked again at the next request.
    QVERIFY(!access().accessFilePath(home(), true, [&] { ran = true; }));
    QCOMPARE(m_panel.requests.size(), 2);
}

void TestAppSandboxFileAccess::aRecordThatNoLongerMatchesItsFolderGrantsNothing_data()
{
    QTest::addColumn<QString>("change");
    QTest::newRow("another folder took its place") << u"replace"_s;
    QTest::newRow("the folder is gone") << u"remove"_s;
    QTest::newRow("a link now leads elsewhere") << u"relink"_s;
    QTest::newRow("a record made up elsewhere") << u"forge"_s;
}

// A grant is the user's choice of one folder: a record whose path now holds another folder (or that
// someone wrote into the settings) is cleared, and the user is asked again.
void TestAppSandboxFileAccess::aRecordThatNoLongerMatchesItsFolderGrantsNothing()
{
    QFETCH(QString, change);
    QDir dir(home());
    const QString folder = home() + u"/profile"_s, link = home() + u"/ann"_s;
    QVERIFY(dir.mkpath(u"profile"_s) && dir.mkpath(u"elsewhere/profile"_s));
    QVERIFY(QFile::link(folder, link));
    const QString granted = change == QLatin1String("relink") ? link : folder;
    const QString key = AppSandboxFileAccessPersist::keyForBookmarkDataForURL(FileUrl::forPath(granted));
    if (change == QLatin1String("forge")) {
        m_t->defaults.setObject(
            QByteArray(R"({"path":")" + folder.toUtf8() + R"(","device":"1","inode":"2"})"), key);
    } else {
        QVERIFY(recordGrant(granted));
        QVERIFY(access().hasPermissionForFilePath(granted));
    }
    if (change == QLatin1String("replace") || change == QLatin1String("remove"))
        QVERIFY(dir.rmdir(u"profile"_s));
    if (change == QLatin1String("replace"))
        QVERIFY(dir.rename(u"elsewhere/profile"_s, u"profile"_s));
    if (change == QLatin1String("relink"))
        QVERIFY(QFile::remove(link) && QFile::link(home() + u"/elsewhere/profile"_s, link));

    QVERIFY(!access().hasPermissionForFilePath(granted + u"/cookies.sqlite"_s));
    bool ran = true;
    request(granted + u"/cookies.sqlite"_s, &ran);
    QVERIFY(!ran);
    QCOMPARE(m_panel.requests.size(), 1);
}

void TestAppSandboxFileAccess::thePanelRunsOnTheMainThreadForAWorker()
{
    m_panel.answer(home());
    bool granted = false;
    std::unique_ptr<QThread> worker(
        QThread::create([&] { granted = access().accessFilePath(home(), true, [] {}); }));
    worker->start();
    QTRY_VERIFY_WITH_TIMEOUT(worker->isFinished(), 10000);
    QVERIFY(granted);
    QCOMPARE(m_panel.threads, QList<QThread*>{QThread::currentThread()});
}

QTEST_GUILESS_MAIN(TestAppSandboxFileAccess)
#include "tst_appsandboxfileaccess.moc"
