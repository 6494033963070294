#include "app/SingleInstance.h"

#include <QTemporaryDir>
#include <QTest>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class TestSingleInstance : public QObject
{
    Q_OBJECT
private slots:
    void aFolderOthersCouldUseIsRefused_data();
    void aFolderOthersCouldUseIsRefused();
};

void TestSingleInstance::aFolderOthersCouldUseIsRefused_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("refused");
    QTest::newRow("not there yet: made private") << u"missing"_s << false;
    QTest::newRow("open to others") << u"0755"_s << true;
    QTest::newRow("another user's") << u"other"_s << true;
}

// Another local user who makes /tmp/corvella-<uid> first must not receive the agent's hand-over.
void TestSingleInstance::aFolderOthersCouldUseIsRefused()
{
    QFETCH(QString, kind);
    QFETCH(bool, refused);
    QTemporaryDir root;
    const QString folder = root.filePath(u"corvella"_s);
    if (kind != u"missing"_s)
        QVERIFY(::mkdir(QFile::encodeName(folder).constData(), 0700) == 0);
    if (kind == u"0755"_s)
        QVERIFY(::chmod(QFile::encodeName(folder).constData(), 0755) == 0); // whatever the umask
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

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "tst_singleinstance.moc"
