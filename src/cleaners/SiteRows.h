#pragma once

#include "cleaners/CleanerServices.h"

#include <QString>
#include <QVariantMap>

#include <functional>

class KeptSites;

// Rows of a browser's database that name sites (cookies, permissions, storage scopes), kept or removed
// one by one when the user keeps some sites.
namespace SiteRows {

// Deletes the rows of the table that `kept` does not keep, by their row ids (no value from a row
// reaches SQL), then compacts the database so no removed row lingers in free pages. `kept` sees the
// row's `columns` that the table has. A database whose table cannot be read goes whole, as it would
// without kept sites (the browser makes a new one). `table` is a name of the code's or a checked one.
// A preview says which of `sites` the table keeps.
void keepOnly(const CleanerServices& services, const QString& database, const QString& table,
              const QStringList& columns, const KeptSites& sites,
              const std::function<bool(const QVariantMap& row)>& kept);

// The tables of the database that have the column (names of letters, digits and "_" only; no other
// name from the file reaches SQL).
QStringList tablesWithColumn(const CleanerServices& services, const QString& database, const QString& column);

} // namespace SiteRows
