#pragma once

#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include <functional>
#include <optional>

struct sqlite3;
struct sqlite3_stmt;

// One SQLite connection. Rows come back as maps from column name to value, by storage class:
// INTEGER as its decimal text, FLOAT as a double, TEXT as a string, BLOB as bytes, NULL as
// Sqlite::null() (a value of its own, never an absent entry).
class Sqlite
{
public:
    Sqlite();
    explicit Sqlite(const QString& file);
    ~Sqlite();
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;

    static QVariant null();
    static bool isNull(const QVariant& value);
    static QString version();
    static QString createUuid();

    // Busy answers are retried while busyRetryTimeout is below the retry count, so 0 or more
    // means no retry (one 20 µs pause), and a negative value retries without end.
    qint64 busyRetryTimeout() const { return m_busyRetryTimeout; }
    void setBusyRetryTimeout(qint64 timeout) { m_busyRetryTimeout = timeout; }
    QString filePath() const { return m_filePath; }
    sqlite3* db() const { return m_db; }

    bool open(const QString& path);
    // Opens a database that exists, never creating one; read-only, not even a journal can change it.
    bool openExisting(const QString& path, bool readOnly);
    // Whether SQLite itself says the first statement of the text cannot change the database.
    bool isReadOnly(const QString& sql);
    // For a preview, asked without changing anything: whether the statement could change what the
    // database holds. VACUUM only compacts; a statement that does not prepare (no such table) fails,
    // and a DELETE or UPDATE of an empty table changes nothing.
    bool couldChangeRows(const QString& sql);
    // Whether the file is a SQLite database (its header says so); a zero-byte file is not.
    static bool isDatabaseFile(const QString& path);
    void close();
    // While the connection is open, a running statement asks the check every few thousand of SQLite's
    // steps and, when it answers true, stops; SQLite undoes what the statement did and it fails
    // (wasInterrupted tells it from other failures).
    void interruptWhen(std::function<bool()> check);
    bool wasInterrupted() const;

    // Runs only the first statement of the text; no value when it does not prepare. Throws
    // std::out_of_range when the statement has more parameters than arguments.
    std::optional<QList<QVariantMap>> executeQuery(const QString& sql, const QVariantList& arguments = {});
    bool executeNonQuery(const QString& sql, const QVariantList& arguments = {});
    bool beginTransaction() { return executeNonQuery(QStringLiteral("BEGIN EXCLUSIVE TRANSACTION;")); }
    bool beginDeferredTransaction() { return executeNonQuery(QStringLiteral("BEGIN DEFERRED TRANSACTION;")); }
    bool commit() { return executeNonQuery(QStringLiteral("COMMIT TRANSACTION;")); }
    bool rollback() { return executeNonQuery(QStringLiteral("ROLLBACK TRANSACTION;")); }
    int errorCode() const;
    QString errorMessage() const;
    // Whether the last failure lay with the file or the disk (read-only, full, busy, damaged), not
    // with the statement (a table an older browser lacks).
    bool failedOnTheFile() const;

    bool prepareSql(const QString& sql, sqlite3_stmt** inStatament);
    bool executeStatament(sqlite3_stmt* statement);
    void bindObject(const QVariant& object, int toColumn, sqlite3_stmt* inStatament);
    bool hasData(sqlite3_stmt* statement);
    std::optional<QVariant> columnData(sqlite3_stmt* statement, int columnIndex) const;
    QString columnName(sqlite3_stmt* statement, int columnIndex) const;

private:
    void bindArguments(sqlite3_stmt* statement, const QVariantList& arguments);

    std::function<bool()> m_interruptWhen;
    qint64 m_busyRetryTimeout = 0;
    QString m_filePath;
    sqlite3* m_db = nullptr;
};
