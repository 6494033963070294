#include "support/BrowserFixtures.h"

#include "sandbox/Sqlite.h"
#include "support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <leveldb/db.h>

#include <memory>

using namespace Qt::StringLiterals;

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
    const auto rows = db.executeQuery(u"SELECT count(*) AS n FROM "_s + table);
    return rows && !rows->isEmpty() ? rows->first().value(u"n"_s).toLongLong() : -1;
}

QString column(const QString& database, const QString& sql)
{
    Sqlite db;
    QStringList values;
    if (db.openExisting(database, true)) {
        for (const QVariantMap& row : db.executeQuery(sql).value_or(QList<QVariantMap>()))
            values.append(row.first().toString());
    }
    return values.join(u',');
}

QStringList paths(const char* compact)
{
    static const QList<std::pair<QString, QString>> aliases{
        {u"chrome/"_s, QLatin1String(kChromeRoot) + QLatin1Char('/')},
        {u"chromium/"_s, QLatin1String(kChromiumRoot) + QLatin1Char('/')},
        {u"opera/"_s, QLatin1String(kOperaRoot) + QLatin1Char('/')},
        {u"firefox/"_s, QLatin1String(kFirefoxProfiles) + QLatin1Char('/')},
        {u"safari/"_s, u"Library/Safari/"_s}};
    QStringList list = QString::fromUtf8(compact).split(u", "_s, Qt::SkipEmptyParts);
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
        QVERIFY2(!home.exists(path), qPrintable(u"still there: "_s + path));
    for (const QString& path : kept)
        QVERIFY2(home.exists(path), qPrintable(u"gone: "_s + path));
}

void localState(const TestHome& home, const QString& root, const QStringList& profiles)
{
    QStringList entries;
    for (const QString& profile : profiles)
        entries.append(u"\"%1\":{\"name\":\"Person %1\"}"_s.arg(profile));
    home.file(root + u"/Local State"_s,
              u"{\"profile\":{\"info_cache\":{%1}}}"_s.arg(entries.join(u',')).toUtf8());
}

void chromiumProfile(const TestHome& home, const QString& folder)
{
    const QString cookies = u"CREATE TABLE cookies (host_key TEXT, name TEXT, value TEXT)"_s;
    const QString cookieRow = u"INSERT INTO cookies VALUES ('.example.org', 'sid', '1')"_s;
    database(home, folder + u"/Cookies"_s, {cookies, cookieRow});
    database(home, folder + u"/Network/Cookies"_s, {cookies, cookieRow});
    database(home, folder + u"/Origin Bound Certs"_s,
             {u"CREATE TABLE origin_bound_certs (origin TEXT)"_s,
              u"INSERT INTO origin_bound_certs VALUES ('example.org')"_s,
              u"CREATE TABLE channel_id (host TEXT)"_s, u"INSERT INTO channel_id VALUES ('example.org')"_s});
    home.file(folder + u"/Network/Trust Tokens"_s);
    home.file(folder + u"/DIPS"_s);
    home.file(folder + u"/Bookmarks"_s, "{\"roots\":{}}");
    database(home, folder + u"/Login Data"_s,
             {u"CREATE TABLE logins (origin_url TEXT)"_s,
              u"INSERT INTO logins VALUES ('https://example.org/')"_s});
}

void firefoxProfile(const TestHome& home, const QString& name, const QString& profilesRoot)
{
    const QString folder = profilesRoot + QLatin1Char('/') + name;
    database(
        home, folder + u"/cookies.sqlite"_s,
        {u"CREATE TABLE moz_cookies (host TEXT)"_s, u"INSERT INTO moz_cookies VALUES ('.example.org')"_s});
    database(home, folder + u"/permissions.sqlite"_s, {u"CREATE TABLE moz_perms (origin TEXT)"_s});
    database(home, folder + u"/places.sqlite"_s, {u"CREATE TABLE moz_bookmarks (id INTEGER)"_s});
    home.file(folder + u"/bounce-tracking-protection.sqlite"_s);
    home.file(folder + u"/logins.json"_s, "{\"logins\":[]}");
    home.file(folder + u"/prefs.js"_s);
}

void chromiumHistory(const TestHome& home, const QString& folder)
{
    database(
        home, folder + u"/History"_s,
        {QStringLiteral(
             "CREATE TABLE urls(id INTEGER PRIMARY KEY AUTOINCREMENT,url LONGVARCHAR,title "
             "LONGVARCHAR,visit_count INTEGER DEFAULT 0 NOT NULL,typed_count INTEGER DEFAULT 0 NOT "
             "NULL,last_visit_time INTEGER NOT NULL,hidden INTEGER DEFAULT 0 NOT NULL)"),
         QStringLiteral(
             "CREATE TABLE visits(id INTEGER PRIMARY KEY AUTOINCREMENT,url INTEGER NOT "
             "NULL,visit_time INTEGER NOT NULL,from_visit INTEGER,transition INTEGER DEFAULT 0 NOT "
             "NULL,segment_id INTEGER,visit_duration INTEGER DEFAULT 0 NOT NULL)"),
         u"CREATE TABLE visit_source(id INTEGER PRIMARY KEY,source INTEGER NOT NULL)"_s,
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
         u"INSERT INTO visit_source VALUES (1,0)"_s,
         u"INSERT INTO keyword_search_terms VALUES (3,2,'x','x')"_s,
         u"INSERT INTO downloads VALUES (1,'g','/home/u/a.zip','/home/u/a.zip',1)"_s,
         u"INSERT INTO segments VALUES (1,'http://a.example/',1)"_s,
         u"INSERT INTO segment_usage VALUES (1,1,13300000000000000,1)"_s});
    database(
        home, folder + u"/Web Data"_s,
        {QStringLiteral("CREATE TABLE keywords (id INTEGER PRIMARY KEY,short_name VARCHAR NOT NULL,keyword "
                        "VARCHAR NOT NULL,url VARCHAR NOT NULL,date_created INTEGER DEFAULT 0)"),
         QStringLiteral("CREATE TABLE autofill (name VARCHAR, value VARCHAR, value_lower VARCHAR, "
                        "date_created INTEGER DEFAULT 0, date_last_used INTEGER DEFAULT 0, count INTEGER "
                        "DEFAULT 1, PRIMARY KEY (name, value))"),
         u"CREATE TABLE autofill_profiles (guid VARCHAR PRIMARY KEY, date_modified INTEGER)"_s,
         QStringLiteral("CREATE TABLE credit_cards (guid VARCHAR PRIMARY KEY, name_on_card VARCHAR, "
                        "expiration_month INTEGER, expiration_year INTEGER, card_number_encrypted BLOB)"),
         QStringLiteral("CREATE TABLE token_service (service VARCHAR PRIMARY KEY NOT NULL,encrypted_token "
                        "BLOB)"),
         QStringLiteral(
             "INSERT INTO keywords VALUES (2,'DuckDuckGo','duckduckgo.com','https://duckduckgo.com/"
             "?q={searchTerms}',0),(3,'Mine','mine.example','https://mine.example/?q={searchTerms}',"
             "13300000000000000)"),
         u"INSERT INTO autofill VALUES ('email','me@example.org','me@example.org',1,1,1)"_s,
         u"INSERT INTO autofill_profiles VALUES ('a-guid',1)"_s,
         u"INSERT INTO credit_cards VALUES ('c-guid','Me',1,2030,x'00')"_s,
         u"INSERT INTO token_service VALUES ('AccountId-1',x'00')"_s});
}

void firefoxPlaces(const TestHome& home, const QString& name, const QStringList& downloads)
{
    const QString folder = QLatin1String(kFirefoxProfiles) + QLatin1Char('/') + name;
    database(
        home, folder + u"/places.sqlite"_s,
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
         u"INSERT INTO moz_inputhistory VALUES (2,'vis',1)"_s,
         u"INSERT INTO moz_annos VALUES (1,1,1,'note')"_s});
    if (downloads.isEmpty())
        return;
    QStringList statements{u"CREATE TABLE moz_downloads (id INTEGER PRIMARY KEY, name TEXT)"_s};
    for (QString download : downloads)
        statements << u"INSERT INTO moz_downloads (name) VALUES ('%1')"_s.arg(
            download.replace(QLatin1Char('\''), u"''"_s));
    database(home, folder + u"/downloads.sqlite"_s, statements);
}

void siteDatabases(const TestHome& home, const QString& folder, const QStringList& origins)
{
    QStringList statements{u"CREATE TABLE Databases (origin TEXT, name TEXT)"_s,
                           u"CREATE TABLE Origins (origin TEXT)"_s};
    for (const QString& origin : origins) {
        QString quoted = origin;
        quoted.replace(QLatin1Char('\''), u"''"_s);
        statements << u"INSERT INTO Databases VALUES ('%1', 'db')"_s.arg(quoted)
                   << u"INSERT INTO Origins VALUES ('%1')"_s.arg(quoted);
        home.file(folder + QLatin1Char('/') + origin + u"/0000000000000001.db"_s);
    }
    database(home, folder + u"/Databases.db"_s, statements);
}

void localStorageFiles(const TestHome& home, const QString& folder, const QStringList& names)
{
    for (const QString& name : names) {
        home.file(folder + QLatin1Char('/') + name);
        home.file(folder + QLatin1Char('/') + name + u"-journal"_s);
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
    QStringList statements{u"CREATE TABLE webappsstore2 (originKey TEXT, scope TEXT, key TEXT)"_s};
    for (QString scope : scopes)
        statements << u"INSERT INTO webappsstore2 VALUES ('k', '%1', 'v')"_s.arg(
            scope.replace(QLatin1Char('\''), u"''"_s));
    database(home, folder + u"/webappsstore.sqlite"_s, statements);
    for (const char* kind : {"default", "temporary", "permanent"})
        home.file(folder + u"/storage/"_s + QLatin1String(kind) + u"/https+++example.org/ls/data.sqlite"_s);
    home.file(folder + u"/storage.sqlite"_s);
}

} // namespace BrowserFixtures
