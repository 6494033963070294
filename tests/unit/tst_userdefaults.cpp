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

class TestUserDefaults : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void keepsValuesAcrossInstances();
    void fallsBackToRegisteredValuesAndAbsentRules();
    void signalsEachChangeWithOldAndNewValue();
    void picksUpAChangeMadeByAnotherProcess();
    void keepsAnUnreadableFileBesideAndStartsEmpty();
    void keepsItsValuesWhileTheFileIsMidWrite();
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
    const QVariantMap settings{{QStringLiteral("Firefox:cookies"), true},
                               {QStringLiteral("Firefox:cache"), false}};
    {
        auto defaults = open(log);
        defaults->setBool(true, QStringLiteral("isRunning"));
        defaults->setObject(QVariantList{QStringLiteral("org.mozilla.firefox")},
                            QStringLiteral("enabledBrowsers"));
        defaults->setObject(settings, QStringLiteral("settings"));
        defaults->setObject(QByteArray("\x01\x02"), QStringLiteral("bd_file:///home/ann/"));
        defaults->setBool(true, QStringLiteral("gone"));
        defaults->removeObjectForKey(QStringLiteral("gone"));
    }
    QVERIFY(m_file.endsWith(QStringLiteral(".config/corvella/com.tovanex.Corvella6.plist")));
    QFile file(m_file);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("<plist version=\"1.0\">"));
    QCOMPARE(file.permissions() & (QFileDevice::ReadOther | QFileDevice::ReadGroup),
             QFileDevice::Permissions());

    auto reopened = open(log);
    QVERIFY(reopened->boolForKey(QStringLiteral("isRunning")));
    QCOMPARE(reopened->arrayForKey(QStringLiteral("enabledBrowsers")),
             QVariantList{QStringLiteral("org.mozilla.firefox")});
    QCOMPARE(reopened->dictionaryForKey(QStringLiteral("settings")), settings);
    QCOMPARE(reopened->dataForKey(QStringLiteral("bd_file:///home/ann/")), QByteArray("\x01\x02"));
    QVERIFY(!reopened->objectForKey(QStringLiteral("gone")));
    QVERIFY(log.lines().isEmpty());
}

void TestUserDefaults::fallsBackToRegisteredValuesAndAbsentRules()
{
    TestDefaults t;
    UserDefaults& d = t.defaults;
    d.registerDefaults(
        {{QStringLiteral("showInMenu"), true}, {QStringLiteral("name"), QStringLiteral("registered")}});
    QVERIFY(d.boolForKey(QStringLiteral("showInMenu")));
    d.setBool(false, QStringLiteral("showInMenu"));
    QVERIFY(!d.boolForKey(QStringLiteral("showInMenu")));
    d.removeObjectForKey(QStringLiteral("showInMenu"));
    QVERIFY(d.boolForKey(QStringLiteral("showInMenu")));
    QVERIFY(!t.backend->read()->contains(QStringLiteral("showInMenu")));

    // Absent, or of another kind: false, empty, no value.
    QVERIFY(!d.boolForKey(QStringLiteral("absent")));
    QVERIFY(d.arrayForKey(QStringLiteral("absent")).isEmpty());
    QVERIFY(d.dictionaryForKey(QStringLiteral("name")).isEmpty());
    QVERIFY(!d.stringForKey(QStringLiteral("absent")));
    QCOMPARE(d.stringForKey(QStringLiteral("name")), QStringLiteral("registered"));
    QVERIFY(!d.dataForKey(QStringLiteral("name")));
    // "Empty" and "no value" stay apart.
    d.setObject(QString(QLatin1String("")), QStringLiteral("empty"));
    QCOMPARE(d.stringForKey(QStringLiteral("empty")), QString());
    QVERIFY(d.stringForKey(QStringLiteral("empty")).has_value());
    QVERIFY(!d.setObject(QVariant(QPointF()), QStringLiteral("point")));
    QVERIFY(!d.objectForKey(QStringLiteral("point")));
}

void TestUserDefaults::signalsEachChangeWithOldAndNewValue()
{
    TestDefaults t;
    t.defaults.registerDefaults({{QStringLiteral("hideDock"), true}});
    QSignalSpy values(&t.defaults, &UserDefaults::valueChanged);
    QSignalSpy domain(&t.defaults, &UserDefaults::defaultsChanged);

    t.defaults.setBool(false, QStringLiteral("hideDock"));
    QCOMPARE(values.size(), 1);
    QCOMPARE(values[0][0].toString(), QStringLiteral("hideDock"));
    QCOMPARE(values[0][1], QVariant(true));
    QCOMPARE(values[0][2], QVariant(false));
    QCOMPARE(domain.size(), 1);

    // The same value again changes nothing: no signal, no write.
    const int writes = t.backend->writes();
    t.defaults.setBool(false, QStringLiteral("hideDock"));
    QCOMPARE(values.size(), 1);
    QCOMPARE(t.backend->writes(), writes);

    t.defaults.removeObjectForKey(QStringLiteral("hideDock"));
    QCOMPARE(values.size(), 2);
    QCOMPARE(values[1][2], QVariant(true));
}

void TestUserDefaults::picksUpAChangeMadeByAnotherProcess()
{
    MemoryLog log;
    auto agent = open(log);
    agent->setBool(false, QStringLiteral("isRunning"));
    QSignalSpy values(agent.get(), &UserDefaults::valueChanged);

    auto other = open(log); // the command-line cleaner, say
    other->setBool(true, QStringLiteral("isRunning"));

    QTRY_VERIFY_WITH_TIMEOUT(agent->boolForKey(QStringLiteral("isRunning")), 5000);
    QCOMPARE(values.size(), 1);
    QCOMPARE(values[0][0].toString(), QStringLiteral("isRunning"));

    // A user's editor that rewrites the file in place.
    QVariantMap edited = other->dictionaryRepresentation();
    edited.insert(QStringLiteral("displayNotifications"), true);
    QVERIFY(PlistFixtures::writeFile(m_file, PlistFixtures::binary(edited)));
    QTRY_VERIFY_WITH_TIMEOUT(agent->boolForKey(QStringLiteral("displayNotifications")), 5000);
}

void TestUserDefaults::keepsAnUnreadableFileBesideAndStartsEmpty()
{
    const QByteArray broken("<?xml version=\"1.0\"?><plist><dict><key>isRunning</key><tr");
    QVERIFY(PlistFixtures::writeFile(m_file, broken));
    MemoryLog log;
    auto defaults = open(log);
    QVERIFY(!defaults->boolForKey(QStringLiteral("isRunning")));
    QCOMPARE(log.lines().size(), 1);

    const QStringList kept = QDir(QFileInfo(m_file).absolutePath())
                                 .entryList({QStringLiteral("com.tovanex.Corvella6.plist.unreadable-*")});
    QCOMPARE(kept.size(), 1);
    QFile keptFile(QFileInfo(m_file).absolutePath() + QLatin1Char('/') + kept.first());
    QVERIFY(keptFile.open(QIODevice::ReadOnly));
    QCOMPARE(keptFile.readAll(), broken);
    QVERIFY(log.lines().first().contains(kept.first()));

    defaults->setBool(true, QStringLiteral("isRunning"));
    QVERIFY(open(log)->boolForKey(QStringLiteral("isRunning")));
    QCOMPARE(log.lines().size(), 1);
}

void TestUserDefaults::keepsItsValuesWhileTheFileIsMidWrite()
{
    TestDefaults t(QVariantMap{{QStringLiteral("isRunning"), true}});
    t.backend->changeExternally(std::nullopt);
    QVERIFY(t.defaults.boolForKey(QStringLiteral("isRunning")));
    QVERIFY(t.backend->quarantined().isEmpty());

    // Still unreadable when we write: it is set aside, and our values carry on.
    t.defaults.setBool(true, QStringLiteral("displayNotifications"));
    QCOMPARE(t.backend->quarantined().size(), 1);
    QVERIFY(t.backend->read()->value(QStringLiteral("isRunning")).toBool());
    QVERIFY(t.backend->read()->value(QStringLiteral("displayNotifications")).toBool());
}

void TestUserDefaults::signalsOnTheMainThreadWhenWrittenFromAWorker()
{
    TestDefaults t;
    QThread* seenOn = nullptr;
    connect(
        &t.defaults, &UserDefaults::valueChanged, this, [&] { seenOn = QThread::currentThread(); },
        Qt::DirectConnection);
    std::unique_ptr<QThread> worker(
        QThread::create([&] { t.defaults.setBool(true, QStringLiteral("isRunning")); }));
    worker->start();
    QVERIFY(worker->wait(10000));
    QTRY_VERIFY(seenOn != nullptr);
    QCOMPARE(seenOn, QThread::currentThread());
}

void TestUserDefaults::anEditorSavingInPlaceIsNotTakenForABrokenFile()
{
    MemoryLog log;
    auto defaults = open(log);
    QVERIFY(defaults->setBool(true, QStringLiteral("isRunning")));
    const QByteArray edited = *PropertyList::toXml(QVariantMap{{QStringLiteral("editorKey"), true}});
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
        defaults->setBool(i % 2, QStringLiteral("isRunning"));
    editor.join();
    const QStringList setAside =
        QDir(QFileInfo(m_file).absolutePath()).entryList({QStringLiteral("*.unreadable-*")}, QDir::Files);
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
    QVERIFY(defaults->setObject(QVariantList{QStringLiteral("org.mozilla.firefox")},
                                QStringLiteral("enabledBrowsers")));
    QFile original(file);
    QVERIFY(original.open(QIODevice::ReadOnly));
    const QByteArray before = original.readAll();
    if (fullDisk)
        disk.fill();
    else
        QVERIFY(disk.makeReadOnly(QStringLiteral(".config/corvella")));
    QVERIFY(!defaults->setObject(QString(5000, QLatin1Char('x')), QStringLiteral("padding")));
    QVERIFY(!defaults->objectForKey(QStringLiteral("padding")));
    QVERIFY(original.seek(0));
    QCOMPARE(original.readAll(), before);
    QCOMPARE(log.lines().filter(QStringLiteral("could not save its settings")).size(), 1);
    // The file still reads: a later start keeps every choice.
    auto reopened = std::make_unique<UserDefaults>(std::make_unique<PlistFileDefaultsBackend>(file), log);
    QCOMPARE(reopened->arrayForKey(QStringLiteral("enabledBrowsers")).size(), 1);
}

QTEST_GUILESS_MAIN(TestUserDefaults)
#include "tst_userdefaults.moc"
