#include "cleaners/SiteRows.h"

#include "cleaners/KeptSites.h"
#include "sandbox/Sandbox.h"

#include <QRegularExpression>

namespace SiteRows {

void keepOnly(const CleanerServices& services, const QString& database, const QString& table,
              const QStringList& columns, const KeptSites& sites,
              const std::function<bool(const QVariantMap& row)>& kept)
{
    Sandbox& sandbox = services.sandbox;
    if (!sandbox.fileExists(database))
        return;
    if (sandbox.returnArrayFromSql(QStringLiteral("SELECT count(*) AS n FROM ") + table, database)
            .value_or(QList<QVariantMap>())
            .isEmpty()) {
        sandbox.remove(database);
        return;
    }
    // Only the columns that name sites are read (not the cookies' values), those the table has.
    QStringList read{QStringLiteral("rowid AS corvella_row")};
    for (const QVariantMap& info :
         sandbox.returnArrayFromSql(QStringLiteral("PRAGMA table_info(%1)").arg(table), database)
             .value_or(QList<QVariantMap>())) {
        const QString column = info.value(QStringLiteral("name")).toString();
        if (columns.contains(column))
            read.append(column);
    }
    QStringList removed;
    sites.takeMatched();
    for (const QVariantMap& row :
         sandbox
             .returnArrayFromSql(QStringLiteral("SELECT %1 FROM %2").arg(read.join(QLatin1Char(',')), table),
                                 database)
             .value_or(QList<QVariantMap>())) {
        if (!kept(row))
            removed.append(QString::number(row.value(QStringLiteral("corvella_row")).toLongLong()));
    }
    sandbox.reportKept(database, sites.takeMatched());
    if (removed.isEmpty())
        return;
    QStringList statements;
    constexpr qsizetype chunk = 500; // SQLite's statements stay short
    for (qsizetype at = 0; at < removed.size(); at += chunk) {
        statements.append(QStringLiteral("DELETE FROM %1 WHERE rowid IN (%2)")
                              .arg(table, removed.mid(at, chunk).join(QLatin1Char(','))));
    }
    sandbox.runSqlThenVacuum(statements, database);
}

QStringList tablesWithColumn(const CleanerServices& services, const QString& database, const QString& column)
{
    static const QRegularExpression plainName(QStringLiteral("^[A-Za-z0-9_]+$"));
    QStringList tables;
    for (const QVariantMap& table :
         services.sandbox
             .returnArrayFromSql(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"),
                                 database)
             .value_or(QList<QVariantMap>())) {
        const QString name = table.value(QStringLiteral("name")).toString();
        if (!plainName.match(name).hasMatch())
            continue;
        for (const QVariantMap& info :
             services.sandbox.returnArrayFromSql(QStringLiteral("PRAGMA table_info(%1)").arg(name), database)
                 .value_or(QList<QVariantMap>())) {
            if (info.value(QStringLiteral("name")).toString() == column)
                tables.append(name);
        }
    }
    return tables;
}

} // namespace SiteRows
