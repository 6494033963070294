#include "support/BrowserFixtures.h"

#include "sandbox/Sqlite.h"
#include "support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

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

QStringList paths(const char* compact)
{
    static const QList<std::pair<QString, QString>> aliases{
        {QStringLiteral("chrome/"), QLatin1String(kChromeRoot) + QLatin1Char('/')},
        {QStringLiteral("chromium/"), QLatin1String(kChromiumRoot) + QLatin1Char('/')},
        {QStringLiteral("opera/"), QLatin1String(kOperaRoot) + QLatin1Char('/')},
        {QStringLiteral("firefox/"), QLatin1String(kFirefoxProfiles) + QLatin1Char('/')},
        {QStringLiteral("safari/"), QStringLiteral("Library/Safari/")}};
    QStringList list = QString::fromUtf8(compact).split(QStringLiteral(", "), Qt::SkipEmptyParts);
    for (QString& path : list) {
        for (const auto& [alias, folder] : aliases) {
            if (path.startsWith(alias))
                path.replace(0, alias.size(), folder);
        }
    }
    return list;
}

void expectGoneAndKept(const TestHome& home, const QStringList& gone, const QStringList& kept)
{
    for (const QString& path : gone)
        QVERIFY2(!home.exists(path), qPrintable(QStringLiteral("still there: ") + path));
    for (const QString& path : kept)
        QVERIFY2(home.exists(path), qPrintable(QStringLiteral("gone: ") + path));
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

void firefoxProfile(const TestHome& home, const QString& name, const QString& profilesRoot)
{
    const QString folder = profilesRoot + QLatin1Char('/') + name;
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

void chromiumHistory(const TestHome& home, const QString& folder)
{
    database(
        home, folder + QStringLiteral("/History"),
        {QStringLiteral(
             "CREATE TABLE urls(id INTEGER PRIMARY KEY AUTOINCREMENT,url LONGVARCHAR,title "
             "LONGVARCHAR,visit_count INTEGER DEFAULT 0 NOT NULL,typed_count INTEGER DEFAULT 0 NOT "
             "NULL,last_visit_time INTEGER NOT NULL,hidden INTEGER DEFAULT 0 NOT NULL)"),
         QStringLiteral(
             "CREATE TABLE visits(id INTEGER PRIMARY KEY AUTOINCREMENT,url INTEGER NOT "
             "NULL,visit_time INTEGER NOT NULL,from_visit INTEGER,transition INTEGER DEFAULT 0 NOT "
             "NULL,segment_id INTEGER,visit_duration INTEGER DEFAULT 0 NOT NULL)"),
         QStringLiteral("CREATE TABLE visit_source(id INTEGER PRIMARY KEY,source INTEGER NOT NULL)"),
         QStringLiteral("CREATE TABLE keyword_search_terms (keyword_id INTEGER NOT NULL,url_id INTEGER NOT "
                        "NULL,term LONGVARCHAR NOT NULL,normalized_term LONGVARCHAR NOT NULL)"),
         QStringLiteral("CREATE TABLE downloads (id INTEGER PRIMARY KEY,guid VARCHAR NOT NULL,current_path "
                        "LONGVARCHAR NOT NULL,target_path LONGVARCHAR NOT NULL,start_time INTEGER NOT NULL)"),
         QStringLiteral(
             "CREATE TABLE segments (id INTEGER PRIMARY KEY,name VARCHAR,url_id INTEGER NON NULL)"),
         QStringLiteral("CREATE TABLE segment_usage (id INTEGER PRIMARY KEY,segment_id INTEGER NOT "
                        "NULL,time_slot INTEGER NOT NULL,visit_count INTEGER DEFAULT 0 NOT NULL)"),
         QStringLiteral("INSERT INTO urls VALUES (1,'https://a.example/','A',1,0,13300000000000000,0),"
                        "(2,'https://b.example/?q=x','B',1,1,13300000000000001,0)"),
         QStringLiteral("INSERT INTO visits VALUES (1,1,13300000000000000,0,805306376,1,0),"
                        "(2,2,13300000000000001,0,805306369,0,0)"),
         QStringLiteral("INSERT INTO visit_source VALUES (1,0)"),
         QStringLiteral("INSERT INTO keyword_search_terms VALUES (3,2,'x','x')"),
         QStringLiteral("INSERT INTO downloads VALUES (1,'g','/home/u/a.zip','/home/u/a.zip',1)"),
         QStringLiteral("INSERT INTO segments VALUES (1,'http://a.example/',1)"),
         QStringLiteral("INSERT INTO segment_usage VALUES (1,1,13300000000000000,1)")});
    database(
        home, folder + QStringLiteral("/Web Data"),
        {QStringLiteral("CREATE TABLE keywords (id INTEGER PRIMARY KEY,short_name VARCHAR NOT NULL,keyword "
                        "VARCHAR NOT NULL,url VARCHAR NOT NULL,date_created INTEGER DEFAULT 0)"),
         QStringLiteral("CREATE TABLE autofill (name VARCHAR, value VARCHAR, value_lower VARCHAR, "
                        "date_created INTEGER DEFAULT 0, date_last_used INTEGER DEFAULT 0, count INTEGER "
                        "DEFAULT 1, PRIMARY KEY (name, value))"),
         QStringLiteral("CREATE TABLE autofill_profiles (guid VARCHAR PRIMARY KEY, date_modified INTEGER)"),
         QStringLiteral("CREATE TABLE credit_cards (guid VARCHAR PRIMARY KEY, name_on_card VARCHAR, "
                        "expiration_month INTEGER, expiration_year INTEGER, card_number_encrypted BLOB)"),
         QStringLiteral("CREATE TABLE token_service (service VARCHAR PRIMARY KEY NOT NULL,encrypted_token "
                        "BLOB)"),
         QStringLiteral(
             "INSERT INTO keywords VALUES (2,'DuckDuckGo','duckduckgo.com','https://duckduckgo.com/"
             "?q={searchTerms}',0),(3,'Mine','mine.example','https://mine.example/?q={searchTerms}',"
             "13300000000000000)"),
         QStringLiteral("INSERT INTO autofill VALUES ('email','me@example.org','me@example.org',1,1,1)"),
         QStringLiteral("INSERT INTO autofill_profiles VALUES ('a-guid',1)"),
         QStringLiteral("INSERT INTO credit_cards VALUES ('c-guid','Me',1,2030,x'00')"),
         QStringLiteral("INSERT INTO token_service VALUES ('AccountId-1',x'00')")});
}

void firefoxPlaces(const TestHome& home, const QString& name, const QStringList& downloads)
{
    const QString folder = QLatin1String(kFirefoxProfiles) + QLatin1Char('/') + name;
    database(
        home, folder + QStringLiteral("/places.sqlite"),
        {QStringLiteral(
             "CREATE TABLE moz_places (id INTEGER PRIMARY KEY, url LONGVARCHAR, title LONGVARCHAR, "
             "rev_host LONGVARCHAR, visit_count INTEGER DEFAULT 0, hidden INTEGER DEFAULT 0 NOT NULL, "
             "typed INTEGER DEFAULT 0 NOT NULL, frecency INTEGER DEFAULT -1 NOT NULL, last_visit_date "
             "INTEGER , guid TEXT, foreign_count INTEGER DEFAULT 0 NOT NULL, url_hash INTEGER DEFAULT 0 "
             "NOT NULL , description TEXT, preview_image_url TEXT, site_name TEXT, origin_id INTEGER)"),
         QStringLiteral(
             "CREATE TABLE moz_historyvisits (id INTEGER PRIMARY KEY, from_visit INTEGER, place_id "
             "INTEGER, visit_date INTEGER, visit_type INTEGER, session INTEGER, source INTEGER DEFAULT 0 "
             "NOT NULL, triggeringPlaceId INTEGER)"),
         QStringLiteral(
             "CREATE TABLE moz_bookmarks (id INTEGER PRIMARY KEY, type INTEGER, fk INTEGER DEFAULT NULL, "
             "parent INTEGER, position INTEGER, title LONGVARCHAR, keyword_id INTEGER, folder_type TEXT, "
             "dateAdded INTEGER, lastModified INTEGER, guid TEXT)"),
         QStringLiteral(
             "CREATE TABLE moz_inputhistory (place_id INTEGER NOT NULL, input LONGVARCHAR NOT NULL, "
             "use_count INTEGER, PRIMARY KEY (place_id, input))"),
         QStringLiteral("CREATE TABLE moz_annos (id INTEGER PRIMARY KEY, place_id INTEGER NOT NULL, "
                        "anno_attribute_id INTEGER, content LONGVARCHAR)"),
         QStringLiteral(
             "INSERT INTO moz_places (id, url, title, visit_count, frecency, last_visit_date) VALUES "
             "(1,'https://kept.example/','Kept',3,200,1700000000000000),"
             "(2,'https://visited.example/','Visited',1,100,1700000000000001),"
             "(3,'https://never.example/','Never',0,-1,NULL),(4,'file:///a','a.zip',0,0,NULL),"
             "(5,'file:///b','b.pdf',0,0,NULL),(6,'file:///c','it''s.txt',0,0,NULL)"),
         QStringLiteral("INSERT INTO moz_historyvisits (id, place_id, visit_date, visit_type) VALUES "
                        "(1,1,1700000000000000,1),(2,2,1700000000000001,1)"),
         QStringLiteral("INSERT INTO moz_bookmarks (id, type, fk, parent, title) VALUES (1,2,NULL,0,'root'),"
                        "(2,1,1,1,'Kept'),(3,1,3,1,'Never')"),
         QStringLiteral("INSERT INTO moz_inputhistory VALUES (2,'vis',1)"),
         QStringLiteral("INSERT INTO moz_annos VALUES (1,1,1,'note')")});
    if (downloads.isEmpty())
        return;
    QStringList statements{QStringLiteral("CREATE TABLE moz_downloads (id INTEGER PRIMARY KEY, name TEXT)")};
    for (QString download : downloads)
        statements << QStringLiteral("INSERT INTO moz_downloads (name) VALUES ('%1')")
                          .arg(download.replace(QLatin1Char('\''), QStringLiteral("''")));
    database(home, folder + QStringLiteral("/downloads.sqlite"), statements);
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
    QMap<QByteArray, QByteArray> entries;
    for (const QByteArray& key : keys)
        entries.insert(key, "value");
    levelDb(home, folder, entries);
}

void levelDb(const TestHome& home, const QString& folder, const QMap<QByteArray, QByteArray>& entries)
{
    QDir().mkpath(home.path(folder));
    leveldb::Options options;
    options.create_if_missing = true;
    leveldb::DB* raw = nullptr;
    if (!leveldb::DB::Open(options, QFile::encodeName(home.path(folder)).toStdString(), &raw).ok())
        return;
    const std::unique_ptr<leveldb::DB> db(raw);
    for (auto it = entries.cbegin(); it != entries.cend(); ++it)
        db->Put(leveldb::WriteOptions(), leveldb::Slice(it.key().constData(), size_t(it.key().size())),
                leveldb::Slice(it.value().constData(), size_t(it.value().size())));
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
