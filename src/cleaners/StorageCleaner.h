#pragma once

#include "cleaners/CleanerServices.h"

#include <QStringList>

// Site storage: web databases, local storage, IndexedDB, and Firefox's storage database and folders.
// The storage of browser extensions is kept in the site databases and local storage; IndexedDB and
// Firefox's storage folders go whole.
class StorageCleaner
{
public:
    explicit StorageCleaner(const CleanerServices& services);

    void removeNonFavLocalStorage(const QString& browser);

    // Every origin but the extensions' ("chrome-extension_", "safari-extension_"), in order.
    static QStringList databaseArray(const QStringList& origins);
    // The ".localstorage" files, without the browser's own extensions'.
    static QStringList localStorageArray(const QStringList& names, const QString& browser);
    // The Firefox scopes of sites (those holding ".:"); the others stay in the store.
    static QStringList mozillaLocalStorage(const QStringList& scopes);

private:
    void safari();
    void chromiumProfile(const QString& folder, const QString& browser);
    void firefox();
    // Runs the statement with "%@" replaced by the values (see SplicedSql).
    void runWithList(const QString& format, const QStringList& values, const QString& database);
    QStringList column(const QString& sql, const QString& name, const QString& database);

    CleanerServices m_services;
};
