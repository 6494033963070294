#include "platform/SettingsKeys.h"
#include "sandbox/SecureDelete.h"
#include "support/PlistFixtures.h"
#include "support/TestHome.h"
#include "support/Unprivileged.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestSecureDelete : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void whatCannotBeOverwrittenStaysAsItWas();
    void aFileSharedByAnotherHardLinkIsOnlyUnlinked();
    void wipesFilesItCannotNameByPath_data();
    void wipesFilesItCannotNameByPath();
    void theOverwriteReachesTheDiskBeforeTheUnlink();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_file;
    QByteArray m_original;
};

void TestSecureDelete::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_file = m_dir->filePath(u"Cookies"_s);
    m_original = QByteArray(3000, 'x');
    QVERIFY(PlistFixtures::writeFile(m_file, m_original));
}

// A link is never written through; a file the user may not write fails the wipe and keeps its bytes.
void TestSecureDelete::whatCannotBeOverwrittenStaysAsItWas()
{
    const QString link = m_dir->filePath(u"link"_s);
    QVERIFY(QFile::link(m_file, link));
    QVERIFY(!SecureDelete::wipe(link));
    QVERIFY(QFile::setPermissions(m_file,
                                  QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther));
    QVERIFY(QFile::setPermissions(m_dir->path(), QFileDevice::Permissions(0x7777)));
    const QString file = m_file;
    QVERIFY(asUnprivilegedUser([file] { return !SecureDelete::wipe(file); }));
    QCOMPARE(PlistFixtures::readFile(m_file), m_original);
}

void TestSecureDelete::aFileSharedByAnotherHardLinkIsOnlyUnlinked()
{
    TestHome home;
    home.t.defaults.setBool(true, SettingsKeys::secureDeleteData);
    const QString cookies = home.file(u"Library/Cookies/Cookies.binarycookies"_s, m_original);
    // The other name lies outside the home folder: its content is not Corvella's to destroy.
    const QString outside = m_dir->filePath(u"backup"_s);
    QVERIFY(::link(QFile::encodeName(cookies).constData(), QFile::encodeName(outside).constData()) == 0);
    home.sandbox.remove(u"~/Library/Cookies/Cookies.binarycookies"_s);
    QVERIFY(!QFile::exists(cookies));
    QCOMPARE(PlistFixtures::readFile(outside), m_original);
    QCOMPARE(home.t.log.lines().filter(u"other hard links"_s).size(), 1);
}

void TestSecureDelete::wipesFilesItCannotNameByPath_data()
{
    QTest::addColumn<QByteArray>("relative");
    QTest::newRow("a name that is not UTF-8") << QByteArray("Library/Caches/Firefox/cache2/\xff\xfe-entry");
    QByteArray deep("Library/Caches/Firefox");
    while (deep.size() < 4200) // past PATH_MAX
        deep += "/a-folder-name-of-forty-characters-or-so";
    QTest::newRow("a path past PATH_MAX") << deep + "/entry";
}

void TestSecureDelete::wipesFilesItCannotNameByPath()
{
    QFETCH(QByteArray, relative);
    TestHome home;
    home.t.defaults.setBool(true, SettingsKeys::secureDeleteData);
    // Made component by component, as no single call takes a path that long.
    int dir = ::open(QFile::encodeName(home.path()).constData(), O_RDONLY | O_DIRECTORY);
    const QList<QByteArray> parts = relative.split('/');
    for (qsizetype i = 0; i + 1 < parts.size(); ++i) {
        ::mkdirat(dir, parts.at(i).constData(), 0700);
        const int next = ::openat(dir, parts.at(i).constData(), O_RDONLY | O_DIRECTORY);
        ::close(dir);
        dir = next;
    }
    QVERIFY(dir >= 0);
    const int fd = ::openat(dir, parts.last().constData(), O_RDWR | O_CREAT, 0600);
    ::close(dir);
    QCOMPARE(::write(fd, m_original.constData(), size_t(m_original.size())), ssize_t(m_original.size()));
    // The descriptor outlives the unlink and shows what the wipe left in the data.
    home.sandbox.remove(u"~/Library/Caches/Firefox"_s);
    QVERIFY(!home.exists(u"Library/Caches/Firefox"_s));
    QByteArray left(m_original.size(), 0);
    QCOMPARE(::pread(fd, left.data(), size_t(left.size()), 0), ssize_t(left.size()));
    ::close(fd);
    QVERIFY(left.count('x') < 100); // random bytes, not what was there
    QVERIFY(!left.contains(char(0xFF)));
}

void TestSecureDelete::theOverwriteReachesTheDiskBeforeTheUnlink()
{
    // A real ext4 file system in an image, so what is on the "device" can be read afterwards.
    const QString image = m_dir->filePath(u"disk.img"_s);
    const QString mountPoint = m_dir->filePath(u"mnt"_s);
    QDir().mkpath(mountPoint);
    QFile(image).open(QIODevice::WriteOnly);
    QFile(image).resize(8 * 1024 * 1024);
    if (::geteuid() != 0 || QProcess::execute(u"mkfs.ext4"_s, {u"-q"_s, u"-F"_s, image}) != 0 ||
        QProcess::execute(u"mount"_s, {u"-o"_s, u"loop"_s, image, mountPoint}) != 0)
        QSKIP("an ext4 image cannot be mounted here (needs root and loop devices)");
    const QByteArray secret = QByteArray("CORVELLA-SECRET-").repeated(4096); // 64 KiB
    const QString file = mountPoint + u"/Cookies"_s;
    QVERIFY(PlistFixtures::writeFile(file, secret));
    ::sync();
    // What the file layer does: wipe, then unlink at once.
    QVERIFY(SecureDelete::wipe(file));
    QVERIFY(QFile::remove(file));
    QCOMPARE(QProcess::execute(u"umount"_s, {mountPoint}), 0);
    QFile device(image);
    QVERIFY(device.open(QIODevice::ReadOnly));
    QCOMPARE(device.readAll().count("CORVELLA-SECRET-"), 0);
}

QTEST_GUILESS_MAIN(TestSecureDelete)
#include "tst_securedelete.moc"
