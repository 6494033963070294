#pragma once

#include "cleaners/CleanerServices.h"

#include <QStringList>

#include <optional>

// Statements that take values from browser data (origins, scopes, download names) in place of "%@".
namespace SplicedSql {

// The statement with "%@" replaced by the values joined with "','". A value holding a quote could
// change what the statement deletes: then no statement (the one it would have broken anyway), and a
// log line naming the database.
std::optional<QString> statement(const CleanerServices& services, const QString& format,
                                 const QStringList& values, const QString& database);

} // namespace SplicedSql
