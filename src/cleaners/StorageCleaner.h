#pragma once

#include "cleaners/CleanerServices.h"
#include "cleaners/KeptSites.h"

#include <QStringList>

// Site storage: web databases, local storage, IndexedDB, and Firefox's storage database and folders.
// Only sites' storage goes: what extensions and add-ons store, and the browser's own storage, stay in
// every one of them (Safari's IndexedDB goes whole), and so does the kept sites' storage.
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
    // The per-origin folders of Firefox's storage that belong to sites ("https+++example.org",
    // "http+++example.org^userContextId=2"), not to add-ons or Firefox itself.
    static QStringList mozillaSiteFolders(const QStringList& names);

private:
    void safari();
    void chromiumProfile(const QString& folder, const QString& browser);
    void firefox(const QString& browser);
    // Removes the named entries of the folder (names that are no single component are skipped).
    void removeEntries(const QString& folder, const QStringList& names);
    // Runs the statement with "%@" replaced by the values (see SplicedSql).
    void runWithList(const QString& format, const QStringList& values, const QString& database);
    QStringList column(const QString& sql, const QString& name, const QString& database);
    // The names whose site is not kept (a preview says which kept sites the store in `where` keeps).
    QStringList notKept(const QStringList& names, const KeptSites& kept,
                        bool (KeptSites::*keeps)(QStringView) const, const QString& where);

    CleanerServices m_services;
};
