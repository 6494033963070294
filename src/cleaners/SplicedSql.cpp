#include "cleaners/SplicedSql.h"

#include "platform/SystemLog.h"
#include "sandbox/Sandbox.h"

namespace SplicedSql {

std::optional<QString> statement(const CleanerServices& services, const QString& format,
                                 const QStringList& values, const QString& database)
{
    for (const QString& value : values) {
        if (value.contains(QLatin1Char('\''))) {
            services.log.log(QStringLiteral("Corvella skipped a statement on %1: a value in it holds a quote")
                                 .arg(services.sandbox.nativePath(database).value_or(database)));
            return std::nullopt;
        }
    }
    QString sql = format;
    sql.replace(QStringLiteral("%@"), values.join(QStringLiteral("','")));
    return sql;
}

} // namespace SplicedSql
