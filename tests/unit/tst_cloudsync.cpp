#include "core/CloudSync.h"
#include "platform/PropertyList.h"
#include "platform/SettingsKeys.h"
#include "platform/linux/SyncFolderKeyValueStore.h"
#include "support/TestAgent.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <thread>

using namespace Qt::StringLiterals;

namespace {

// One machine: its own settings, its store in the shared folder, and the mirror between them.
struct Machine
{
    Machine(const QString& home, const QString& folder)
        : store(t.defaults, t.log, home), sync(t.defaults, store)
    {
        AppDelegate::initialize(t.defaults);
        t.defaults.setObject(folder, SettingsKeys::syncFolder);
    }
    TestDefaults t;
    SyncFolderKeyValueStore store;
    CloudSync sync;
};

QVariantMap storedValues(const QString& folder)
{
    QFile file(folder + u"/corvella-settings.plist"_s);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return PropertyList::parse(file.readAll()).value_or(QVariant()).toMap().value(u"values"_s).toMap();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

} // namespace

class TestCloudSync : public QObject
{
    Q_OBJECT
private slots:
    void twoHomesSharingOneFolderShareTheirSettings();
    void copiesLeftBySyncToolsAreMergedBack_data();
    void copiesLeftBySyncToolsAreMergedBack();
    void twoWritersAtOnceLoseNothing();
    void theFolderDecidesTheAccount_data();
    void theFolderDecidesTheAccount();
    void syncWithoutAnAccountTurnsItselfOffAndSaysSo();
};

void TestCloudSync::twoHomesSharingOneFolderShareTheirSettings()
{
    QTemporaryDir root;
    const QString folder = root.filePath(u"Sync"_s);
    QVERIFY(QDir().mkpath(folder));
    Machine a(root.path(), folder), b(root.path(), folder);
    a.t.defaults.setBool(false, SettingsKeys::showInMenu); // chosen before sync was on: it joins too
    a.sync.start();
    b.sync.start();
    QCOMPARE(b.t.defaults.boolForKey(SettingsKeys::showInMenu), false);

    // Any change pushes all the shared settings, and only those.
    a.t.defaults.setBool(true, SettingsKeys::showInMenu);
    QStringList stored = storedValues(folder).keys();
    QStringList shared = CloudSync::keys;
    stored.sort();
    shared.sort();
    QCOMPARE(stored, shared);
    QTRY_COMPARE(b.t.defaults.boolForKey(SettingsKeys::showInMenu), true);

    // A value a third machine stored under a key outside the list still arrives.
    Machine c(root.path(), folder);
    c.store.setObject(u"from c"_s, u"noteFromAnotherMachine"_s);
    QVERIFY(c.store.synchronize());
    QTRY_COMPARE(a.t.defaults.stringForKey(u"noteFromAnotherMachine"_s), u"from c"_s);
    QTRY_COMPARE(b.t.defaults.stringForKey(u"noteFromAnotherMachine"_s), u"from c"_s);

    // What stays with the machine stays.
    a.t.defaults.setBool(true, SettingsKeys::isRunning);
    b.t.defaults.setBool(true, SettingsKeys::hideDock);
    QTRY_COMPARE(a.t.defaults.boolForKey(SettingsKeys::hideDock), true);
    QVERIFY(!b.t.defaults.boolForKey(SettingsKeys::isRunning));

    b.sync.stop();
    a.t.defaults.setBool(false, SettingsKeys::hideDock);
    QTest::qWait(400);
    QVERIFY(b.t.defaults.boolForKey(SettingsKeys::hideDock));
}

void TestCloudSync::copiesLeftBySyncToolsAreMergedBack_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("merged");
    const QByteArray newer = *PropertyList::toXml(QVariantMap{
        {u"values"_s, QVariantMap{{SettingsKeys::hideOnLaunch, true}}},
        {u"modified"_s,
         QVariantMap{{SettingsKeys::hideOnLaunch, QDateTime::currentMSecsSinceEpoch() + 60000}}}});
    QTest::newRow("Syncthing") << u"corvella-settings.sync-conflict-20261122-101010-ABCDEFG.plist"_s << newer
                               << true;
    QTest::newRow("Nextcloud") << u"corvella-settings (conflicted copy 2026-11-22 101010).plist"_s << newer
                               << true;
    QTest::newRow("half-synced copy")
        << u"corvella-settings.sync-conflict-1.plist"_s << newer.left(40) << false;
    QTest::newRow("the file itself broken") << u"corvella-settings.plist"_s << QByteArray("<?xml ") << false;
}

// A copy that reads is merged (newest value of each key) and removed; one that does not is left
// alone; a broken settings file is replaced. None of them breaks the mirror.
void TestCloudSync::copiesLeftBySyncToolsAreMergedBack()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(bool, merged);
    QTemporaryDir root;
    const QString folder = root.filePath(u"Sync"_s);
    QVERIFY(QDir().mkpath(folder));
    Machine a(root.path(), folder);
    a.sync.start();
    writeFile(folder + u'/' + name, bytes);
    QTRY_COMPARE(a.t.defaults.boolForKey(SettingsKeys::hideOnLaunch), merged);
    QTRY_COMPARE(QFile::exists(folder + u'/' + name), !merged || name == u"corvella-settings.plist"_s);
    a.t.defaults.setBool(false, SettingsKeys::showInMenu);
    QTRY_COMPARE(storedValues(folder).value(SettingsKeys::showInMenu), QVariant(false));
    QCOMPARE(storedValues(folder).value(SettingsKeys::hideOnLaunch), QVariant(merged));
}

void TestCloudSync::twoWritersAtOnceLoseNothing()
{
    QTemporaryDir root;
    const QString folder = root.filePath(u"Sync"_s);
    QVERIFY(QDir().mkpath(folder));
    Machine a(root.path(), folder), b(root.path(), folder);
    constexpr int kWrites = 60;
    const auto writer = [](Machine& machine, const QString& key) {
        for (int i = 1; i <= kWrites; ++i) {
            machine.store.setObject(i, key);
            machine.store.synchronize();
        }
    };
    std::thread first(writer, std::ref(a), u"a"_s), second(writer, std::ref(b), u"b"_s);
    first.join();
    second.join();
    const QVariantMap values = storedValues(folder);
    QCOMPARE(values.value(u"a"_s).toInt(), kWrites);
    QCOMPARE(values.value(u"b"_s).toInt(), kWrites);
    QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{u"corvella-settings.plist"_s});
}

void TestCloudSync::theFolderDecidesTheAccount_data()
{
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<int>("status");
    QTest::newRow("none chosen") << QString() << 3;
    QTest::newRow("a folder in the home") << u"HOME/Sync"_s << 1;
    QTest::newRow("written with a tilde") << u"~/Sync"_s << 1;
    QTest::newRow("not mounted yet") << u"HOME/Share"_s << 0;
    QTest::newRow("outside the home") << u"/tmp"_s << 3;
    QTest::newRow("a link out of the home") << u"HOME/Out"_s << 3;
    QTest::newRow("a file") << u"HOME/Sync/corvella-settings.plist"_s << 0;
}

void TestCloudSync::theFolderDecidesTheAccount()
{
    QFETCH(QString, chosen);
    QFETCH(int, status);
    QTemporaryDir root;
    QVERIFY(QDir().mkpath(root.filePath(u"Sync"_s)));
    writeFile(root.filePath(u"Sync/corvella-settings.plist"_s), "x");
    QVERIFY(QFile::link(u"/tmp"_s, root.filePath(u"Out"_s)));
    TestDefaults t;
    t.defaults.setObject(chosen.replace(u"HOME"_s, root.path()), SettingsKeys::syncFolder);
    SyncFolderKeyValueStore store(t.defaults, t.log, root.path());
    std::optional<int> answer;
    store.accountStatus([&answer](CloudKeyValueStore::AccountStatus s) { answer = int(s); });
    QVERIFY(!answer); // later, never from inside the call
    QTRY_VERIFY(answer);
    QCOMPARE(*answer, status);
    QCOMPARE(store.synchronize(), status == 1);
}

void TestCloudSync::syncWithoutAnAccountTurnsItselfOffAndSaysSo()
{
    TestDefaults t;
    t.defaults.setBool(true, SettingsKeys::iCloudSync);
    TestAgent agent(t);
    agent.cloudStore.status = CloudKeyValueStore::AccountStatus::NoAccount;
    QSignalSpy alert(&agent.app, &AppDelegate::iCloudAlertRequested);
    agent.app.applicationWillFinishLaunching();
    agent.app.applicationDidFinishLaunching();
    QTRY_COMPARE(alert.size(), 1);
    QVERIFY(!t.defaults.boolForKey(SettingsKeys::iCloudSync));
    QVERIFY(!agent.app.cloudSync().isStarted());
    QVERIFY(!t.defaults.objectForKey(SettingsKeys::hideiCloudAlert));
    agent.app.iCloudAlertClosed(true);
    QVERIFY(t.defaults.boolForKey(SettingsKeys::hideiCloudAlert));

    // Once there is somewhere to sync to, turning it on starts it, and a value from elsewhere arrives.
    agent.cloudStore.status = CloudKeyValueStore::AccountStatus::Available;
    t.defaults.setBool(true, SettingsKeys::iCloudSync);
    QTRY_VERIFY(agent.app.cloudSync().isStarted());
    QCOMPARE(alert.size(), 1);
    agent.cloudStore.storeFromElsewhere(true, SettingsKeys::hideOnLaunch);
    QVERIFY(t.defaults.boolForKey(SettingsKeys::hideOnLaunch));
    t.defaults.setBool(false, SettingsKeys::iCloudSync);
    QTRY_VERIFY(!agent.app.cloudSync().isStarted());
}

QTEST_MAIN(TestCloudSync)
#include "tst_cloudsync.moc"
