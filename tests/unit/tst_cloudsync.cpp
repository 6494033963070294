#include "core/CloudSync.h"
#include "platform/PropertyList.h"
#include "platform/SettingsKeys.h"
#include "platform/linux/SyncFolderKeyValueStore.h"
#include "support/PlistFixtures.h"
#include "support/TestAgent.h"

#include <QTemporaryDir>
#include <QTest>

#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using PlistFixtures::readFile;
using PlistFixtures::writeFile;

namespace {

// One machine: its own settings, its store in the shared folder, and the mirror between them.
struct Machine
{
    Machine(const QString& home, const QString& folder)
        : store(t.defaults, t.log, home), sync(t.defaults, store, t.log)
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
    return PropertyList::parse(readFile(folder + u"/corvella-settings.plist"_s))
        .value_or(QVariant())
        .toMap()
        .value(u"values"_s)
        .toMap();
}

} // namespace

class TestCloudSync : public QObject
{
    Q_OBJECT
private slots:
    void copiesLeftBySyncToolsAreMergedBack_data();
    void copiesLeftBySyncToolsAreMergedBack();
    void twoWritersAtOnceLoseNothing();
    void onlyTheSharedSettingsCrossOfTheirKind_data();
    void onlyTheSharedSettingsCrossOfTheirKind();
    void filesThatAreNotTheStoreAreLeftAlone_data();
    void filesThatAreNotTheStoreAreLeftAlone();
    void theFolderDecidesTheAccount_data();
    void theFolderDecidesTheAccount();
};

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
    QTest::newRow("half-synced copy")
        << u"corvella-settings.sync-conflict-1.plist"_s << newer.left(40) << false;
    QTest::newRow("Dropbox") << u"corvella-settings (Ann's conflicted copy 2026-11-22 (1)).plist"_s << newer
                             << true;
}

// A copy that reads is merged (newest value of each key) and removed; one that does not is left
// alone. Neither breaks the mirror.
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
    QTRY_COMPARE(QFile::exists(folder + u'/' + name), !merged);
    a.t.defaults.setBool(false, SettingsKeys::showInMenu);
    QTRY_COMPARE(storedValues(folder).value(SettingsKeys::showInMenu), QVariant(false));
    QCOMPARE(storedValues(folder).value(SettingsKeys::hideOnLaunch), QVariant(merged));
}

void TestCloudSync::onlyTheSharedSettingsCrossOfTheirKind_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("crosses");
    QTest::newRow("a shared switch") << SettingsKeys::hideOnLaunch << QVariant(true) << true;
    QTest::newRow("the selection") << SettingsKeys::settings
                                   << QVariant(QVariantMap{{u"Firefox:cookies"_s, true}}) << true;
    QTest::newRow("the check interval")
        << SettingsKeys::scheduledCheckInterval << QVariant(qint64(3600)) << true;
    QTest::newRow("the kept sites") << SettingsKeys::keptSites
                                    << QVariant(QVariantList{u"mail.example"_s, u"127.0.0.1"_s}) << true;
    QTest::newRow("a kept site that is no host name")
        << SettingsKeys::keptSites << QVariant(QVariantList{u"mail.example"_s, u"../x"_s}) << false;
    QTest::newRow("a switch as text") << SettingsKeys::hideOnLaunch << QVariant(u"YES"_s) << false;
    QTest::newRow("a selection of text")
        << SettingsKeys::settings << QVariant(QVariantMap{{u"Firefox:cookies"_s, u"1"_s}}) << false;
    QTest::newRow("the home folder") << SettingsKeys::userFolder << QVariant(u"/home/u/Sync/fake"_s) << false;
    QTest::newRow("activation") << SettingsKeys::enabledBrowsers
                                << QVariant(QVariantList{u"org.mozilla.firefox"_s}) << false;
    QTest::newRow("protection") << SettingsKeys::isRunning << QVariant(true) << false;
    QTest::newRow("the sync folder") << SettingsKeys::syncFolder << QVariant(u"/"_s) << false;
    QTest::newRow("a grant") << u"bd_file:///"_s << QVariant(QByteArray(R"({"path":"/"})")) << false;
}

// Whoever can write the synced folder can change what the user could change in the shared panes, and
// nothing else: not where Corvella cleans, what it may touch, or whether it runs.
void TestCloudSync::onlyTheSharedSettingsCrossOfTheirKind()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(bool, crosses);
    QTemporaryDir root;
    const QString folder = root.filePath(u"Sync"_s);
    QVERIFY(QDir().mkpath(folder));
    Machine a(root.path(), folder), b(root.path(), folder);
    a.sync.start();
    // The other device writes after this one has shared its own settings (written at once, but seen
    // through the folder by the other store): the later write is the one that stays.
    QTRY_VERIFY(storedValues(folder).contains(SettingsKeys::scheduledCheckInterval));
    QVERIFY(b.store.synchronize());
    const std::optional<QVariant> before = a.t.defaults.objectForKey(key);
    b.store.setObject(value, key); // another device wrote it
    QVERIFY(b.store.synchronize());
    QTRY_COMPARE(a.store.dictionaryRepresentation().value(key), value);
    if (crosses) {
        QTRY_COMPARE(a.t.defaults.objectForKey(key), std::optional(value));
    } else {
        QCOMPARE(a.t.defaults.objectForKey(key), before);
        QVERIFY(
            a.t.log.lines().join(u'\n').contains(u"\"%1\" from the synced folder was ignored"_s.arg(key)));
    }
}

void TestCloudSync::filesThatAreNotTheStoreAreLeftAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("kind");
    const QString copy = u"corvella-settings.sync-conflict-20261122-101010-ABCDEFG.plist"_s;
    QTest::newRow("the store, a link to a dotfile") << u"corvella-settings.plist"_s << u"link"_s;
    QTest::newRow("a conflict copy, a link") << copy << u"link"_s;
    QTest::newRow("a conflict copy over 1 MiB") << copy << u"large"_s;
    QTest::newRow("a conflict copy nested 60,000 deep") << copy << u"deep"_s;
    QTest::newRow("the user's own backup") << u"corvella-settings-backup.plist"_s << u"file"_s;
}

// Such a file is neither read nor written nor removed, and the file a link leads to stays as it was.
void TestCloudSync::filesThatAreNotTheStoreAreLeftAlone()
{
    QFETCH(QString, name);
    QFETCH(QString, kind);
    QTemporaryDir root;
    const QString folder = root.filePath(u"Sync"_s);
    QVERIFY(QDir().mkpath(folder));
    const QByteArray newer = *PropertyList::toXml(QVariantMap{
        {u"values"_s, QVariantMap{{SettingsKeys::hideOnLaunch, true},
                                  {u"junk"_s, u"x"_s.repeated(kind == u"large"_s ? 1100000 : 1)}}},
        {u"modified"_s,
         QVariantMap{{SettingsKeys::hideOnLaunch, QDateTime::currentMSecsSinceEpoch() + 60000}}}});
    const QString path = folder + u'/' + name, dotfile = root.filePath(u".bashrc"_s);
    writeFile(dotfile, kind == u"link"_s ? newer : QByteArray("alias ls='ls -F'\n"));
    if (kind == u"link"_s)
        QVERIFY(QFile::link(u"../.bashrc"_s, path));
    else
        writeFile(path, kind == u"deep"_s
                            ? "<?xml version=\"1.0\"?><plist>" + QByteArray("<array>").repeated(60000)
                            : newer);
    const QByteArray dotfileBytes = readFile(dotfile), bytes = readFile(path);

    Machine a(root.path(), folder);
    a.sync.start();
    a.t.defaults.setBool(false, SettingsKeys::showInMenu);
    QTest::qWait(400);
    QVERIFY(!a.t.defaults.boolForKey(SettingsKeys::hideOnLaunch));
    QCOMPARE(QFileInfo(path).isSymLink(), kind == u"link"_s);
    QCOMPARE(readFile(path), bytes);
    QCOMPARE(readFile(dotfile), dotfileBytes);
    // The store itself unreadable: nothing is shared until it is mended, and the user is told.
    if (name == SyncFolderKeyValueStore::kFileName)
        QVERIFY(a.t.log.lines().join(u'\n').contains(u"was left as it is and nothing is shared"_s));
    else
        QCOMPARE(storedValues(folder).value(SettingsKeys::showInMenu), QVariant(false));
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
    // Someone else holds a lock on the shared folder: it is not the writers' lock.
    const int held = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
    QVERIFY(held >= 0 && ::flock(held, LOCK_EX) == 0);
    std::thread first(writer, std::ref(a), u"a"_s), second(writer, std::ref(b), u"b"_s);
    first.join();
    second.join();
    ::close(held);
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
    QTest::newRow("a file") << u"HOME/Sync/notes.txt"_s << 0;
}

void TestCloudSync::theFolderDecidesTheAccount()
{
    QFETCH(QString, chosen);
    QFETCH(int, status);
    QTemporaryDir root;
    QVERIFY(QDir().mkpath(root.filePath(u"Sync"_s)));
    writeFile(root.filePath(u"Sync/notes.txt"_s), "x");
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

QTEST_MAIN(TestCloudSync)
#include "tst_cloudsync.moc"
