#include "sandbox/Sqlite.h"
#include <fcntl.h>
#include <sys/stat.h>

#include <QDateTime>
#include <QFile>
#include <QRegularExpression>
#include <QUuid>

#include <sqlite3.h>

#include <cstring>
#include <stdexcept>
#include <unistd.h>

namespace {

// Calls a SQLite function, retrying a busy answer by the wrapper's rule.
template <class Call> int withBusyRetry(qint64 busyRetryTimeout, Call call)
{
    qint64 retry = 0;
    for (;;) {
        const int rc = call();
        if (rc != SQLITE_BUSY)
            return rc;
        usleep(20);
        if (retry == busyRetryTimeout)
            return rc;
        if (busyRetryTimeout < retry) {
            ++retry;
            continue;
        }
        return rc;
    }
}

} // namespace

Sqlite::Sqlite() : m_busyRetryTimeout(1) {}

// Opening at construction leaves the retry setting at 0, as it always has.
Sqlite::Sqlite(const QString& file)
{
    open(file);
}

Sqlite::~Sqlite()
{
    close();
}

QVariant Sqlite::null()
{
    return QVariant::fromValue(nullptr);
}

bool Sqlite::isNull(const QVariant& value)
{
    return value.typeId() == QMetaType::Nullptr;
}

QString Sqlite::version()
{
    return QString::fromUtf8(sqlite3_libversion());
}

QString Sqlite::createUuid()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

bool Sqlite::open(const QString& path)
{
    close();
    const int rc = sqlite3_open(path.toUtf8().constData(), &m_db);
    if (rc != SQLITE_OK)
        return false;
    m_filePath = path;
    return true;
}

bool Sqlite::openExisting(const QString& path, bool readOnly)
{
    close();
    const int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    if (sqlite3_open_v2(path.toUtf8().constData(), &m_db, flags, nullptr) != SQLITE_OK) {
        sqlite3_close(m_db);
        m_db = nullptr;
        return false;
    }
    m_filePath = path;
    return true;
}

bool Sqlite::isReadOnly(const QString& sql)
{
    sqlite3_stmt* statement = nullptr;
    if (!prepareSql(sql, &statement))
        return false;
    const bool readOnly = sqlite3_stmt_readonly(statement) != 0;
    sqlite3_finalize(statement);
    return readOnly;
}

bool Sqlite::couldChangeRows(const QString& sql)
{
    if (sql.trimmed().startsWith(QLatin1String("VACUUM"), Qt::CaseInsensitive))
        return false;
    sqlite3_stmt* statement = nullptr;
    if (!prepareSql(sql, &statement))
        return false;
    sqlite3_finalize(statement);
    static const QRegularExpression target(
        QStringLiteral(R"(^\s*(?:DELETE\s+FROM|UPDATE(?:\s+OR\s+\w+)?)\s+["`\[]?(\w+)["`\]]?\s)"),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = target.match(sql + QLatin1Char(' '));
    if (!match.hasMatch())
        return true;
    const auto rows = executeQuery(QStringLiteral("SELECT 1 FROM \"%1\" LIMIT 1").arg(match.captured(1)));
    return !rows || !rows->isEmpty();
}

bool Sqlite::isDatabaseFile(const QString& path)
{
    static const char header[] = "SQLite format 3"; // and its NUL: 16 bytes
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct stat st
    {};
    char start[sizeof header] = {};
    const bool database = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) &&
                          ::read(fd, start, sizeof start) == ssize_t(sizeof start) &&
                          std::memcmp(start, header, sizeof header) == 0;
    ::close(fd);
    return database;
}

void Sqlite::close()
{
    if (m_db) {
        qint64 retry = 0;
        for (;;) {
            if (sqlite3_close(m_db) != SQLITE_BUSY)
                break;
            usleep(20);
            const qint64 count = retry++;
            if (m_busyRetryTimeout >= count) {
                // Still busy: let SQLite release the handle once its last statement is gone.
                sqlite3_close_v2(m_db);
                break;
            }
        }
    }
    m_db = nullptr;
    m_filePath.clear();
}

void Sqlite::interruptWhen(std::function<bool()> check)
{
    m_interruptWhen = std::move(check);
    if (!m_db)
        return;
    constexpr int kStepsBetweenChecks = 4000;
    sqlite3_progress_handler(
        m_db, m_interruptWhen ? kStepsBetweenChecks : 0,
        [](void* self) { return static_cast<Sqlite*>(self)->m_interruptWhen() ? 1 : 0; }, this);
}

bool Sqlite::wasInterrupted() const
{
    return m_db && sqlite3_errcode(m_db) == SQLITE_INTERRUPT;
}

int Sqlite::errorCode() const
{
    return sqlite3_errcode(m_db);
}

bool Sqlite::failedOnTheFile() const
{
    switch (sqlite3_errcode(m_db) & 0xff) {
    case SQLITE_PERM:
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_READONLY:
    case SQLITE_IOERR:
    case SQLITE_CORRUPT:
    case SQLITE_FULL:
    case SQLITE_CANTOPEN:
    case SQLITE_NOTADB:
        return true;
    default:
        return false;
    }
}

QString Sqlite::errorMessage() const
{
    return QString::fromUtf8(sqlite3_errmsg(m_db));
}

bool Sqlite::prepareSql(const QString& sql, sqlite3_stmt** inStatament)
{
    const QByteArray utf8 = sql.toUtf8();
    const int rc = withBusyRetry(m_busyRetryTimeout, [&] {
        return sqlite3_prepare_v2(m_db, utf8.constData(), -1, inStatament, nullptr);
    });
    return rc == SQLITE_OK && *inStatament;
}

bool Sqlite::executeStatament(sqlite3_stmt* statement)
{
    const int rc = withBusyRetry(m_busyRetryTimeout, [&] { return sqlite3_step(statement); });
    return rc == SQLITE_OK || rc == SQLITE_DONE;
}

bool Sqlite::hasData(sqlite3_stmt* statement)
{
    return withBusyRetry(m_busyRetryTimeout, [&] { return sqlite3_step(statement); }) == SQLITE_ROW;
}

void Sqlite::bindObject(const QVariant& object, int toColumn, sqlite3_stmt* inStatament)
{
    switch (object.typeId()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        sqlite3_bind_null(inStatament, toColumn);
        return;
    case QMetaType::QByteArray: {
        // The caller's bytes outlive the statement, so SQLite need not copy them.
        const QByteArray* bytes = static_cast<const QByteArray*>(object.constData());
        sqlite3_bind_blob(inStatament, toColumn, bytes->constData(), static_cast<int>(bytes->size()),
                          SQLITE_STATIC);
        return;
    }
    case QMetaType::QDateTime:
        sqlite3_bind_double(inStatament, toColumn, object.toDateTime().toMSecsSinceEpoch() / 1000.0);
        return;
    case QMetaType::Bool:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        sqlite3_bind_int(inStatament, toColumn, object.toBool() ? 1 : 0);
        return;
    case QMetaType::Int:
    case QMetaType::LongLong:
        sqlite3_bind_int64(inStatament, toColumn, object.toLongLong());
        return;
    case QMetaType::Float:
    case QMetaType::Double:
        sqlite3_bind_double(inStatament, toColumn, object.toDouble());
        return;
    case QMetaType::QString: {
        const QByteArray text = object.toString().toUtf8();
        sqlite3_bind_text(inStatament, toColumn, text.constData(),
                          static_cast<int>(std::strlen(text.constData())), SQLITE_TRANSIENT);
        return;
    }
    default: {
        const QByteArray text = object.toString().toUtf8();
        sqlite3_bind_text(inStatament, toColumn, text.constData(), static_cast<int>(text.size()),
                          SQLITE_TRANSIENT);
        return;
    }
    }
}

std::optional<QVariant> Sqlite::columnData(sqlite3_stmt* statement, int columnIndex) const
{
    switch (sqlite3_column_type(statement, columnIndex)) {
    case SQLITE_INTEGER: {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, columnIndex));
        return QVariant(text ? QString::fromUtf8(text) : QString(QLatin1String("")));
    }
    case SQLITE_FLOAT:
        return QVariant(sqlite3_column_double(statement, columnIndex));
    case SQLITE_TEXT: {
        // Read as a C string: the text ends at its first NUL.
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, columnIndex));
        return QVariant(QString::fromUtf8(text ? text : ""));
    }
    case SQLITE_BLOB: {
        const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, columnIndex));
        return QVariant(QByteArray(bytes, sqlite3_column_bytes(statement, columnIndex)));
    }
    case SQLITE_NULL:
        return null();
    default:
        return std::nullopt;
    }
}

QString Sqlite::columnName(sqlite3_stmt* statement, int columnIndex) const
{
    return QString::fromUtf8(sqlite3_column_name(statement, columnIndex));
}

void Sqlite::bindArguments(sqlite3_stmt* statement, const QVariantList& arguments)
{
    const int count = sqlite3_bind_parameter_count(statement);
    if (arguments.size() < count) {
        sqlite3_finalize(statement);
        throw std::out_of_range("Sqlite: the statement has more parameters than arguments");
    }
    for (int i = 1; i <= count; ++i)
        bindObject(arguments.at(i - 1), i, statement);
}

std::optional<QList<QVariantMap>> Sqlite::executeQuery(const QString& sql, const QVariantList& arguments)
{
    sqlite3_stmt* statement = nullptr;
    if (!prepareSql(sql, &statement))
        return std::nullopt;
    bindArguments(statement, arguments);
    QList<QVariantMap> rows;
    const int columns = sqlite3_column_count(statement);
    while (hasData(statement)) {
        QVariantMap row;
        for (int i = 0; i < columns; ++i)
            row.insert(columnName(statement, i), columnData(statement, i).value_or(QVariant()));
        rows.append(row);
    }
    sqlite3_finalize(statement);
    return rows;
}

bool Sqlite::executeNonQuery(const QString& sql, const QVariantList& arguments)
{
    sqlite3_stmt* statement = nullptr;
    if (!prepareSql(sql, &statement))
        return false;
    bindArguments(statement, arguments);
    const bool ok = executeStatament(statement);
    sqlite3_finalize(statement);
    return ok;
}
