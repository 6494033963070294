#include "sandbox/Sqlite.h"
#include "support/TestHome.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QTest>

#include <sqlite3.h>

using namespace Qt::StringLiterals;

class TestSqlite : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void onlyTheFirstStatementRuns();
    void aMissingDatabaseIsNeverCreated();
    void failuresGiveEmptyResults_data();
    void failuresGiveEmptyResults();
    void aLockedDatabaseReturnsQuicklyUnchanged();
    void aStatementRunningWhenTheBrowserStartsIsUndone();

private:
    int count(const QString& table)
    {
        const auto rows = m_home->sandbox.returnArrayFromSql(u"SELECT COUNT(*) AS n FROM "_s + table, m_db);
        return rows && !rows->isEmpty() ? rows->first().value(u"n"_s).toInt() : -1;
    }
    std::unique_ptr<TestHome> m_home;
    QString m_db;
};

void TestSqlite::init()
{
    m_home = std::make_unique<TestHome>();
    m_db = m_home->folder(u"Library/Application Support/Chromium/Default"_s) + u"/Cookies"_s;
    Sqlite db;
    QVERIFY(db.open(m_db));
    QVERIFY(db.executeNonQuery(
        u"CREATE TABLE cookies (id INTEGER, host TEXT, value BLOB, ratio REAL, note TEXT)"_s));
    QVERIFY(db.executeNonQuery(u"INSERT INTO cookies VALUES (42, 'example.org', x'00ff10', 1.5, NULL)"_s));
    QVERIFY(db.executeNonQuery(u"INSERT INTO cookies VALUES (2, 'tracker.test', x'', 0.25, 'n')"_s));
    QVERIFY(db.executeNonQuery(u"CREATE TABLE empty (id INTEGER)"_s));
}

void TestSqlite::onlyTheFirstStatementRuns()
{
    m_home->sandbox.runSql(u"DELETE FROM cookies WHERE id = 42; DELETE FROM cookies WHERE id = 2"_s, m_db);
    const auto rows = m_home->sandbox.returnArrayFromSql(u"SELECT id FROM cookies"_s, m_db);
    const QList<QVariantMap> expected{QVariantMap{{u"id"_s, u"2"_s}}};
    QCOMPARE(*rows, expected);
}

void TestSqlite::aMissingDatabaseIsNeverCreated()
{
    const QString folder = m_home->folder(u"Library/Application Support/Chromium/Profile 1"_s);
    const QString missing = folder + u"/Cookies"_s;
    m_home->sandbox.runSql(u"DELETE FROM cookies"_s, missing);
    QCOMPARE(*m_home->sandbox.returnArrayFromSql(u"SELECT 1"_s, missing), QList<QVariantMap>());
    QVERIFY(QDir(folder).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
    QVERIFY(m_home->t.log.lines().isEmpty());
}

void TestSqlite::failuresGiveEmptyResults_data()
{
    QTest::addColumn<QString>("sql");
    QTest::newRow("no rows") << "SELECT * FROM empty";
    QTest::newRow("syntax error") << "SELEC * FRM cookies";
    QTest::newRow("missing table") << "SELECT * FROM moz_places";
}

void TestSqlite::failuresGiveEmptyResults()
{
    QFETCH(QString, sql);
    const auto rows = m_home->sandbox.returnArrayFromSql(sql, m_db);
    QVERIFY(rows);
    QVERIFY(rows->isEmpty());
    QVERIFY(!m_home->sandbox.returnArrayFromSql(sql, QString()));
}

void TestSqlite::aLockedDatabaseReturnsQuicklyUnchanged()
{
    Sqlite browser;
    QVERIFY(browser.open(m_db));
    QVERIFY(browser.beginTransaction());
    QVERIFY(browser.executeNonQuery(u"UPDATE cookies SET host = host"_s));

    QElapsedTimer timer;
    timer.start();
    m_home->sandbox.runSql(u"DELETE FROM cookies"_s, m_db);
    QVERIFY2(timer.elapsed() < 5000, "a locked database must not hold the removal run");

    QVERIFY(browser.rollback());
    QCOMPARE(count(u"cookies"_s), 2);
}

void TestSqlite::aStatementRunningWhenTheBrowserStartsIsUndone()
{
    // Most of a minute of work if it ran to the end; the browser is seen at the first look (50 ms).
    const QString slow =
        QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < "
                       "100000000) DELETE FROM cookies WHERE id IN (SELECT i FROM n)");
    m_home->sandbox.runStop().arm([] { return true; });
    QVERIFY(!m_home->sandbox.runSql(slow, m_db));
    QVERIFY(m_home->sandbox.runStop().disarm());
    QCOMPARE(count(u"cookies"_s), 2);
    QVERIFY(m_home->sandbox.runSql(u"DELETE FROM cookies WHERE id = 2"_s, m_db));
    QCOMPARE(count(u"cookies"_s), 1);
}

QTEST_GUILESS_MAIN(TestSqlite)
#include "tst_sqlite.moc"
