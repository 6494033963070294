#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "platform/fake/MemoryLog.h"
#include "platform/linux/PlistFileDefaultsBackend.h"
#include "support/PlistFixtures.h"
#include "support/SmallFileSystem.h"
#include "support/TestDefaults.h"
#include <atomic>
#include <thread>

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

class TestUserDefaults : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void keepsValuesAcrossInstances();
    void fallsBackToRegisteredValuesAndRefusesOtherKinds();
    void signalsEachChangeWithOldAndNewValue();
    void picksUpAChangeMadeByAnotherProcess();
    void keepsAnUnreadableFileBesideAndStartsEmpty();
    void keepsItsValuesWhileTheFileIsMidWrite();
    void twoWritersAtOnceLoseNothing();
    void signalsOnTheMainThreadWhenWrittenFromAWorker();
    void makesItsFolderPrivateButLeavesAnExistingOneAlone();
    void anEditorSavingInPlaceIsNotTakenForABrokenFile();
    void aChangeThatCannotBeSavedLeavesTheFileAndTheValuesAsTheyWere_data();
    void aChangeThatCannotBeSavedLeavesTheFileAndTheValuesAsTheyWere();

private:
    std::unique_ptr<UserDefaults> open(MemoryLog& log)
    {
        return std::make_unique<UserDefaults>(std::make_unique<PlistFileDefaultsBackend>(m_file), log);
    }
    QTemporaryDir m_dir;
    QString m_file;
};

void TestUserDefaults::init()
{
    QVERIFY(m_dir.isValid());
    m_file = UserDefaults::filePathForHome(m_dir.path());
    QFile::remove(m_file);
}

void TestUserDefaults::keepsValuesAcrossInstances()
{
    MemoryLog log;
    const QVariantMap settings{{u"Firefox:cookies"_s, true}, {u"Firefox:cache"_s, false}};
    {
        auto defaults = open(log);
        defaults->setBool(true, u"isRunning"_s);
        defaults->setObject(QVariantList{u"org.mozilla.firefox"_s}, u"enabledBrowsers"_s);
        defaults->setObject(settings, u"settings"_s);
        defaults->setObject(QByteArray("\x01\x02"), u"bd_file:///home/ann/"_s);
        defaults->setBool(true, u"gone"_s);
        defaults->removeObjectForKey(u"gone"_s);
    }
    QVERIFY(m_file.endsWith(u".config/corvella/com.tovanex.Corvella6.plist"_s));
    QVERIFY(PlistFixtures::readFile(m_file).contains("<plist version=\"1.0\">"));
    QCOMPARE(QFile::permissions(m_file) & (QFileDevice::ReadOther | QFileDevice::ReadGroup),
             QFileDevice::Permissions());

    auto reopened = open(log);
    QVERIFY(reopened->boolForKey(u"isRunning"_s));
    QCOMPARE(reopened->arrayForKey(u"enabledBrowsers"_s), QVariantList{u"org.mozilla.firefox"_s});
    QCOMPARE(reopened->dictionaryForKey(u"settings"_s), settings);
    QCOMPARE(reopened->dataForKey(u"bd_file:///home/ann/"_s), QByteArray("\x01\x02"));
    QVERIFY(!reopened->objectForKey(u"gone"_s));
    QVERIFY(log.lines().isEmpty());
}

void TestUserDefaults::fallsBackToRegisteredValuesAndRefusesOtherKinds()
{
    TestDefaults t;
    UserDefaults& d = t.defaults;
    d.registerDefaults({{u"showInMenu"_s, true}});
    QVERIFY(d.boolForKey(u"showInMenu"_s));
    d.setBool(false, u"showInMenu"_s);
    QVERIFY(!d.boolForKey(u"showInMenu"_s));
    d.removeObjectForKey(u"showInMenu"_s);
    QVERIFY(d.boolForKey(u"showInMenu"_s));
    QVERIFY(!t.backend->read()->contains(u"showInMenu"_s));

    // Each getter's answer for every kind of value is the settings fuzz target's property; a value of no
    // kind a property list holds is refused.
    QVERIFY(!d.setObject(QVariant(QPointF()), u"point"_s));
    QVERIFY(!d.objectForKey(u"point"_s));
}

void TestUserDefaults::signalsEachChangeWithOldAndNewValue()
{
    TestDefaults t;
    t.defaults.registerDefaults({{u"hideDock"_s, true}});
    QSignalSpy values(&t.defaults, &UserDefaults::valueChanged);
    QSignalSpy domain(&t.defaults, &UserDefaults::defaultsChanged);

    t.defaults.setBool(false, u"hideDock"_s);
    QCOMPARE(values.size(), 1);
    QCOMPARE(values[0][0].toString(), u"hideDock"_s);
    QCOMPARE(values[0][1], QVariant(true));
    QCOMPARE(values[0][2], QVariant(false));
    QCOMPARE(domain.size(), 1);

    // The same value again changes nothing: no signal, no write.
    const int writes = t.backend->writes();
    t.defaults.setBool(false, u"hideDock"_s);
    QCOMPARE(values.size(), 1);
    QCOMPARE(t.backend->writes(), writes);

    t.defaults.removeObjectForKey(u"hideDock"_s);
    QCOMPARE(values.size(), 2);
    QCOMPARE(values[1][2], QVariant(true));
}

void TestUserDefaults::picksUpAChangeMadeByAnotherProcess()
{
    MemoryLog log;
    auto agent = open(log);
    agent->setBool(false, u"isRunning"_s);
    QSignalSpy values(agent.get(), &UserDefaults::valueChanged);

    auto other = open(log); // the command-line cleaner, say
    other->setBool(true, u"isRunning"_s);

    QTRY_VERIFY_WITH_TIMEOUT(agent->boolForKey(u"isRunning"_s), 5000);
    QCOMPARE(values.size(), 1);
    QCOMPARE(values[0][0].toString(), u"isRunning"_s);

    // A user's editor that rewrites the file in place.
    QVariantMap edited = other->dictionaryRepresentation();
    edited.insert(u"displayNotifications"_s, true);
    QVERIFY(PlistFixtures::writeFile(m_file, PlistFixtures::binary(edited)));
    QTRY_VERIFY_WITH_TIMEOUT(agent->boolForKey(u"displayNotifications"_s), 5000);
}

void TestUserDefaults::keepsAnUnreadableFileBesideAndStartsEmpty()
{
    const QByteArray broken("<?xml version=\"1.0\"?><plist><dict><key>isRunning</key><tr");
    QVERIFY(PlistFixtures::writeFile(m_file, broken));
    MemoryLog log;
    auto defaults = open(log);
    QVERIFY(!defaults->boolForKey(u"isRunning"_s));
    QCOMPARE(log.lines().size(), 1);

    const QStringList kept =
        QDir(QFileInfo(m_file).absolutePath()).entryList({u"com.tovanex.Corvella6.plist.unreadable-*"_s});
    QCOMPARE(kept.size(), 1);
    QCOMPARE(PlistFixtures::readFile(QFileInfo(m_file).absolutePath() + u'/' + kept.first()), broken);
    QVERIFY(log.lines().first().contains(kept.first()));

    defaults->setBool(true, u"isRunning"_s);
    QVERIFY(open(log)->boolForKey(u"isRunning"_s));
    QCOMPARE(log.lines().size(), 1);
}

void TestUserDefaults::keepsItsValuesWhileTheFileIsMidWrite()
{
    TestDefaults t(QVariantMap{{u"isRunning"_s, true}});
    t.backend->changeExternally(std::nullopt);
    QVERIFY(t.defaults.boolForKey(u"isRunning"_s));
    QVERIFY(t.backend->quarantined().isEmpty());

    // Still unreadable when we write: it is set aside, and our values carry on.
    t.defaults.setBool(true, u"displayNotifications"_s);
    QCOMPARE(t.backend->quarantined().size(), 1);
    QVERIFY(t.backend->read()->value(u"isRunning"_s).toBool());
    QVERIFY(t.backend->read()->value(u"displayNotifications"_s).toBool());
}

// The agent and corvella-clean, say, each writing its own keys at the same moment.
void TestUserDefaults::twoWritersAtOnceLoseNothing()
{
    MemoryLog log;
    auto agent = open(log), cli = open(log);
    const auto writer = [](UserDefaults* defaults, const QString& prefix) {
        for (int i = 0; i < 40; ++i)
            defaults->setObject(i, prefix + QString::number(i));
    };
    std::thread a(writer, agent.get(), u"agent."_s), b(writer, cli.get(), u"cli."_s);
    a.join();
    b.join();
    const QVariantMap all = open(log)->dictionaryRepresentation();
    for (int i = 0; i < 40; ++i)
        QVERIFY(all.value(u"agent."_s + QString::number(i)) == i &&
                all.value(u"cli."_s + QString::number(i)) == i);
}

void TestUserDefaults::signalsOnTheMainThreadWhenWrittenFromAWorker()
{
    TestDefaults t;
    QThread* seenOn = nullptr;
    connect(
        &t.defaults, &UserDefaults::valueChanged, this, [&] { seenOn = QThread::currentThread(); },
        Qt::DirectConnection);
    std::unique_ptr<QThread> worker(QThread::create([&] { t.defaults.setBool(true, u"isRunning"_s); }));
    worker->start();
    QVERIFY(worker->wait(10000));
    QTRY_VERIFY(seenOn != nullptr);
    QCOMPARE(seenOn, QThread::currentThread());
}

void TestUserDefaults::anEditorSavingInPlaceIsNotTakenForABrokenFile()
{
    MemoryLog log;
    auto defaults = open(log);
    QVERIFY(defaults->setBool(true, u"isRunning"_s));
    const QByteArray edited = *PropertyList::toXml(QVariantMap{{u"editorKey"_s, true}});
    std::atomic<bool> done = false;
    // Truncates, then writes in two parts, as editors that save in place do.
    std::thread editor([&] {
        for (int i = 0; i < 60; ++i) {
            QFile file(m_file);
            if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
                continue;
            file.write(edited.left(edited.size() / 2));
            file.flush();
            QThread::msleep(3);
            file.write(edited.mid(edited.size() / 2));
            file.close();
            QThread::msleep(2);
        }
        done = true;
    });
    for (int i = 0; !done; ++i)
        defaults->setBool(i % 2, u"isRunning"_s);
    editor.join();
    const QStringList setAside =
        QDir(QFileInfo(m_file).absolutePath()).entryList({u"*.unreadable-*"_s}, QDir::Files);
    QVERIFY2(setAside.isEmpty(), qPrintable(setAside.join(u' ')));
}

void TestUserDefaults::makesItsFolderPrivateButLeavesAnExistingOneAlone()
{
    MemoryLog log;
    const QString folder = QFileInfo(m_file).absolutePath();
    QDir(folder).removeRecursively();
    open(log);
    const auto owner = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
    QCOMPARE(QFile::permissions(folder) &
                 ~(QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser),
             owner);
    // The user chose read-and-enter only for the owner, and group access: kept at every start.
    const auto chosen = QFileDevice::ReadOwner | QFileDevice::ExeOwner | QFileDevice::ReadGroup;
    QVERIFY(QFile::setPermissions(folder, chosen));
    open(log);
    QCOMPARE(QFile::permissions(folder) &
                 ~(QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser),
             chosen);
    QFile::setPermissions(folder, owner);
}

void TestUserDefaults::aChangeThatCannotBeSavedLeavesTheFileAndTheValuesAsTheyWere_data()
{
    QTest::addColumn<bool>("fullDisk"); // else: a settings folder that cannot be written
    QTest::newRow("full disk") << true;
    QTest::newRow("read-only file system") << false;
}

void TestUserDefaults::aChangeThatCannotBeSavedLeavesTheFileAndTheValuesAsTheyWere()
{
    QFETCH(bool, fullDisk);
    SmallFileSystem disk;
    if (!disk.isMounted())
        QSKIP("a small file system cannot be mounted here (needs root)");
    const QString file = UserDefaults::filePathForHome(disk.path());
    MemoryLog log;
    auto defaults = std::make_unique<UserDefaults>(std::make_unique<PlistFileDefaultsBackend>(file), log);
    QVERIFY(defaults->setObject(QVariantList{u"org.mozilla.firefox"_s}, u"enabledBrowsers"_s));
    const QByteArray before = PlistFixtures::readFile(file);
    if (fullDisk)
        disk.fill();
    else
        QVERIFY(disk.makeReadOnly(u".config/corvella"_s));
    QVERIFY(!defaults->setObject(QString(5000, QLatin1Char('x')), u"padding"_s));
    QVERIFY(!defaults->objectForKey(u"padding"_s));
    QCOMPARE(PlistFixtures::readFile(file), before);
    QCOMPARE(log.lines().filter(u"could not save its settings"_s).size(), 1);
    // The file still reads: a later start keeps every choice.
    auto reopened = std::make_unique<UserDefaults>(std::make_unique<PlistFileDefaultsBackend>(file), log);
    QCOMPARE(reopened->arrayForKey(u"enabledBrowsers"_s).size(), 1);
}

QTEST_GUILESS_MAIN(TestUserDefaults)
#include "tst_userdefaults.moc"
