#include "app/SingleInstance.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLocalSocket>
#include <QLockFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <thread>

#include <pwd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class TestSingleInstance : public QObject
{
    Q_OBJECT
private slots:
    void aFolderOthersCouldUseIsRefused_data();
    void aFolderOthersCouldUseIsRefused();
    void aPeerThatNeverEndsItsLineCannotHoldTheStart();
    void theAgentDropsAPeerThatSendsNoRequest();
};

void TestSingleInstance::aFolderOthersCouldUseIsRefused_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("refused");
    QTest::newRow("not there yet: made private") << u"missing"_s << false;
    QTest::newRow("private") << u"0700"_s << false;
    QTest::newRow("open to others") << u"0755"_s << true;
    QTest::newRow("a link to a private folder") << u"link"_s << true;
    QTest::newRow("another user's") << u"other"_s << true;
}

// Another local user who makes /tmp/corvella-<uid> first must not receive the agent's hand-over.
void TestSingleInstance::aFolderOthersCouldUseIsRefused()
{
    QFETCH(QString, kind);
    QFETCH(bool, refused);
    QTemporaryDir root;
    const QString folder = root.filePath(u"corvella"_s);
    if (kind == u"0700"_s || kind == u"0755"_s || kind == u"other"_s)
        QVERIFY(::mkdir(QFile::encodeName(folder).constData(), kind == u"0755"_s ? 0755 : 0700) == 0);
    if (kind == u"0755"_s)
        QVERIFY(::chmod(QFile::encodeName(folder).constData(), 0755) == 0); // whatever the umask
    if (kind == u"link"_s) {
        QVERIFY(::mkdir(QFile::encodeName(root.filePath(u"private"_s)).constData(), 0700) == 0);
        QVERIFY(QFile::link(root.filePath(u"private"_s), folder));
    }
    if (kind == u"other"_s) {
        const passwd* nobody = ::getpwnam("nobody");
        if (::getuid() != 0 || !nobody)
            QSKIP("needs root to give a folder to another user");
        QVERIFY(::chown(QFile::encodeName(folder).constData(), nobody->pw_uid, nobody->pw_gid) == 0);
    }
    SingleInstance instance(folder);
    const SingleInstance::Claim claim = instance.claim("activate");
    QCOMPARE(claim == SingleInstance::Claim::Refused, refused);
    if (!refused) {
        QCOMPARE(claim, SingleInstance::Claim::Agent);
        QCOMPARE(QFileInfo(folder).permissions() & 0x7777, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                               QFileDevice::ExeOwner | QFileDevice::ReadUser |
                                                               QFileDevice::WriteUser | QFileDevice::ExeUser);
    }
    QCOMPARE(QFileInfo::exists(folder + u"/agent.socket"_s), !refused);
}

// A process at the agent's socket that answers a byte at a time and never ends its line: the start
// gives up on it within seconds instead of waiting forever.
void TestSingleInstance::aPeerThatNeverEndsItsLineCannotHoldTheStart()
{
    QTemporaryDir root;
    const QString folder = root.filePath(u"corvella"_s);
    QVERIFY(::mkdir(QFile::encodeName(folder).constData(), 0700) == 0);
    QLockFile held(folder + u"/agent.lock"_s);
    QVERIFY(held.tryLock(0));

    const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(folder + u"/agent.socket"_s);
    QVERIFY(size_t(path.size()) < sizeof address.sun_path);
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    QVERIFY(::bind(server, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0);
    QVERIFY(::listen(server, 4) == 0);
    std::atomic<bool> done = false;
    std::thread peer([&] {
        const int client = ::accept(server, nullptr, nullptr);
        while (!done && client >= 0 && ::write(client, "1", 1) == 1)
            ::usleep(100 * 1000);
        if (client >= 0)
            ::close(client);
    });

    SingleInstance instance(folder);
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(instance.claim("activate"), SingleInstance::Claim::HandedOver);
    done = true;
    peer.join();
    ::close(server);
    QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(instance.runningPid(), 0);
}

void TestSingleInstance::theAgentDropsAPeerThatSendsNoRequest()
{
    QTemporaryDir root;
    SingleInstance agent(root.filePath(u"corvella"_s));
    QCOMPARE(agent.claim("activate"), SingleInstance::Claim::Agent);
    QSignalSpy requests(&agent, &SingleInstance::requestReceived);

    QLocalSocket endless;
    endless.connectToServer(root.filePath(u"corvella/agent.socket"_s));
    QVERIFY(endless.waitForConnected(1000));
    endless.write(QByteArray(SingleInstance::kMaxLine + 10, 'x'));
    QTRY_COMPARE_WITH_TIMEOUT(endless.state(), QLocalSocket::UnconnectedState, 2000);

    QLocalSocket silent; // connects and says nothing
    silent.connectToServer(root.filePath(u"corvella/agent.socket"_s));
    QVERIFY(silent.waitForConnected(1000));
    QTRY_COMPARE_WITH_TIMEOUT(silent.state(), QLocalSocket::UnconnectedState, 6000);

    QLocalSocket good;
    good.connectToServer(root.filePath(u"corvella/agent.socket"_s));
    QVERIFY(good.waitForConnected(1000));
    good.write("corvella://show\n");
    QTRY_COMPARE(requests.size(), 1);
    QCOMPARE(requests.at(0).at(0).toByteArray(), "corvella://show"_ba);
}

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "tst_singleinstance.moc"
