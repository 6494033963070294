#include "sandbox/SecureDelete.h"
#include "support/PlistFixtures.h"
#include "support/Unprivileged.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestSecureDelete : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void eachPassOverwritesTheWholeFile_data();
    void eachPassOverwritesTheWholeFile();
    void wipeKeepsNameAndSizeAndNeverWrites0xFF();
    void nothingToWipeSucceeds();
    void aFolderIsNeverOverwritten();
    void anUnknownPassWritesNothing();
    void aFileThatCannotBeOpenedForWritingFails();
    void aLinkIsNeverWrittenThrough();

private:
    QByteArray contents(const QString& path)
    {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_file;
    QByteArray m_original;
};

void TestSecureDelete::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_file = m_dir->filePath(QStringLiteral("Cookies"));
    m_original = QByteArray(3000, 'x');
    QVERIFY(PlistFixtures::writeFile(m_file, m_original));
}

void TestSecureDelete::eachPassOverwritesTheWholeFile_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("pass");
    QTest::addColumn<char>("byte");
    QTest::newRow("0x55, three writes") << 3000 << 1 << char(0x55);
    QTest::newRow("0xAA, one write") << 1024 << 2 << char(0xAA);
    QTest::newRow("0x55, a short file") << 7 << 1 << char(0x55);
    QTest::newRow("empty file") << 0 << 2 << char(0);
}

void TestSecureDelete::eachPassOverwritesTheWholeFile()
{
    QFETCH(int, size);
    QFETCH(int, pass);
    QFETCH(char, byte);
    QVERIFY(PlistFixtures::writeFile(m_file, QByteArray(size, 'x')));
    QVERIFY(SecureDelete::wipe(m_file, pass));
    QCOMPARE(contents(m_file), QByteArray(size, byte));
}

void TestSecureDelete::wipeKeepsNameAndSizeAndNeverWrites0xFF()
{
    QVERIFY(SecureDelete::wipe(m_file));
    const QByteArray after = contents(m_file);
    QCOMPARE(after.size(), m_original.size());
    QVERIFY(!after.contains(char(0xFF)));
    QVERIFY(after != QByteArray(3000, char(0xAA))); // the random pass ran last
    QVERIFY(SecureDelete::wipeContentsofDir(m_file));
}

void TestSecureDelete::nothingToWipeSucceeds()
{
    QVERIFY(SecureDelete::wipe(m_dir->filePath(QStringLiteral("missing"))));
    QVERIFY(SecureDelete::wipeContentsofDir(m_dir->filePath(QStringLiteral("missing"))));
}

void TestSecureDelete::aFolderIsNeverOverwritten()
{
    QVERIFY(SecureDelete::wipe(m_dir->path()));
    QCOMPARE(contents(m_file), m_original);
}

void TestSecureDelete::anUnknownPassWritesNothing()
{
    QVERIFY(!SecureDelete::wipe(m_file, 4));
    QVERIFY(!SecureDelete::wipe(m_file, 0));
    QCOMPARE(contents(m_file), m_original);
}

void TestSecureDelete::aFileThatCannotBeOpenedForWritingFails()
{
    QVERIFY(QFile::setPermissions(m_file,
                                  QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther));
    QVERIFY(QFile::setPermissions(m_dir->path(), QFileDevice::Permissions(0x7777)));
    const QString file = m_file;
    QVERIFY(asUnprivilegedUser([file] { return !SecureDelete::wipe(file); }));
    QCOMPARE(contents(m_file), m_original);
}

void TestSecureDelete::aLinkIsNeverWrittenThrough()
{
    const QString link = m_dir->filePath(QStringLiteral("link"));
    QVERIFY(QFile::link(m_file, link));
    QVERIFY(!SecureDelete::wipe(link));
    QCOMPARE(contents(m_file), m_original);
}

QTEST_GUILESS_MAIN(TestSecureDelete)
#include "tst_securedelete.moc"
