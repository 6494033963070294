#include "support/BrowserFixtures.h"

#include "sandbox/Sqlite.h"
#include "support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <leveldb/db.h>

#include <memory>

namespace BrowserFixtures {

QString database(const TestHome& home, const QString& relative, const QStringList& statements)
{
    const QString path = home.path(relative);
    QDir().mkpath(QFileInfo(path).path());
    Sqlite db(path);
    for (const QString& statement : statements)
        db.executeNonQuery(statement);
    return path;
}

qint64 rowCount(const QString& database, const QString& table)
{
    Sqlite db;
    if (!db.openExisting(database, true))
        return -1;
    const auto rows = db.executeQuery(QStringLiteral("SELECT count(*) AS n FROM ") + table);
    return rows && !rows->isEmpty() ? rows->first().value(QStringLiteral("n")).toLongLong() : -1;
}

void localState(const TestHome& home, const QString& root, const QStringList& profiles)
{
    QStringList entries;
    for (const QString& profile : profiles)
        entries.append(QStringLiteral("\"%1\":{\"name\":\"Person %1\"}").arg(profile));
    home.file(root + QStringLiteral("/Local State"),
              QStringLiteral("{\"profile\":{\"info_cache\":{%1}}}").arg(entries.join(u',')).toUtf8());
}

void chromiumProfile(const TestHome& home, const QString& folder)
{
    const QString cookies = QStringLiteral("CREATE TABLE cookies (host_key TEXT, name TEXT, value TEXT)");
    const QString cookieRow = QStringLiteral("INSERT INTO cookies VALUES ('.example.org', 'sid', '1')");
    database(home, folder + QStringLiteral("/Cookies"), {cookies, cookieRow});
    database(home, folder + QStringLiteral("/Network/Cookies"), {cookies, cookieRow});
    database(home, folder + QStringLiteral("/Origin Bound Certs"),
             {QStringLiteral("CREATE TABLE origin_bound_certs (origin TEXT)"),
              QStringLiteral("INSERT INTO origin_bound_certs VALUES ('example.org')"),
              QStringLiteral("CREATE TABLE channel_id (host TEXT)"),
              QStringLiteral("INSERT INTO channel_id VALUES ('example.org')")});
    home.file(folder + QStringLiteral("/Network/Trust Tokens"));
    home.file(folder + QStringLiteral("/DIPS"));
    home.file(folder + QStringLiteral("/Bookmarks"), "{\"roots\":{}}");
    database(home, folder + QStringLiteral("/Login Data"),
             {QStringLiteral("CREATE TABLE logins (origin_url TEXT)"),
              QStringLiteral("INSERT INTO logins VALUES ('https://example.org/')")});
}

void firefoxProfile(const TestHome& home, const QString& name)
{
    const QString folder = QLatin1String(kFirefoxProfiles) + QLatin1Char('/') + name;
    database(home, folder + QStringLiteral("/cookies.sqlite"),
             {QStringLiteral("CREATE TABLE moz_cookies (host TEXT)"),
              QStringLiteral("INSERT INTO moz_cookies VALUES ('.example.org')")});
    database(home, folder + QStringLiteral("/permissions.sqlite"),
             {QStringLiteral("CREATE TABLE moz_perms (origin TEXT)")});
    database(home, folder + QStringLiteral("/places.sqlite"),
             {QStringLiteral("CREATE TABLE moz_bookmarks (id INTEGER)")});
    home.file(folder + QStringLiteral("/bounce-tracking-protection.sqlite"));
    home.file(folder + QStringLiteral("/logins.json"), "{\"logins\":[]}");
    home.file(folder + QStringLiteral("/prefs.js"));
}

void siteDatabases(const TestHome& home, const QString& folder, const QStringList& origins)
{
    QStringList statements{QStringLiteral("CREATE TABLE Databases (origin TEXT, name TEXT)"),
                           QStringLiteral("CREATE TABLE Origins (origin TEXT)")};
    for (const QString& origin : origins) {
        QString quoted = origin;
        quoted.replace(QLatin1Char('\''), QStringLiteral("''"));
        statements << QStringLiteral("INSERT INTO Databases VALUES ('%1', 'db')").arg(quoted)
                   << QStringLiteral("INSERT INTO Origins VALUES ('%1')").arg(quoted);
        home.file(folder + QLatin1Char('/') + origin + QStringLiteral("/0000000000000001.db"));
    }
    database(home, folder + QStringLiteral("/Databases.db"), statements);
}

void localStorageFiles(const TestHome& home, const QString& folder, const QStringList& names)
{
    for (const QString& name : names) {
        home.file(folder + QLatin1Char('/') + name);
        home.file(folder + QLatin1Char('/') + name + QStringLiteral("-journal"));
    }
}

void levelDb(const TestHome& home, const QString& folder, const QList<QByteArray>& keys)
{
    QDir().mkpath(home.path(folder));
    leveldb::Options options;
    options.create_if_missing = true;
    leveldb::DB* raw = nullptr;
    if (!leveldb::DB::Open(options, QFile::encodeName(home.path(folder)).toStdString(), &raw).ok())
        return;
    const std::unique_ptr<leveldb::DB> db(raw);
    for (const QByteArray& key : keys)
        db->Put(leveldb::WriteOptions(), leveldb::Slice(key.constData(), size_t(key.size())), "value");
}

QList<QByteArray> levelDbKeys(const QString& folder)
{
    QList<QByteArray> keys;
    leveldb::DB* raw = nullptr;
    if (!leveldb::DB::Open(leveldb::Options(), QFile::encodeName(folder).toStdString(), &raw).ok())
        return keys;
    const std::unique_ptr<leveldb::DB> db(raw);
    const std::unique_ptr<leveldb::Iterator> it(db->NewIterator(leveldb::ReadOptions()));
    for (it->SeekToFirst(); it->Valid(); it->Next())
        keys.append(QByteArray(it->key().data(), qsizetype(it->key().size())));
    return keys;
}

void firefoxStorage(const TestHome& home, const QString& name, const QStringList& scopes)
{
    const QString folder = QLatin1String(kFirefoxProfiles) + QLatin1Char('/') + name;
    QStringList statements{
        QStringLiteral("CREATE TABLE webappsstore2 (originKey TEXT, scope TEXT, key TEXT)")};
    for (QString scope : scopes)
        statements << QStringLiteral("INSERT INTO webappsstore2 VALUES ('k', '%1', 'v')")
                          .arg(scope.replace(QLatin1Char('\''), QStringLiteral("''")));
    database(home, folder + QStringLiteral("/webappsstore.sqlite"), statements);
    for (const char* kind : {"default", "temporary", "permanent"})
        home.file(folder + QStringLiteral("/storage/") + QLatin1String(kind) +
                  QStringLiteral("/https+++example.org/ls/data.sqlite"));
    home.file(folder + QStringLiteral("/storage.sqlite"));
}

} // namespace BrowserFixtures
