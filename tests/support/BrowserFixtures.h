#pragma once

#include <QStringList>

struct TestHome;

// Browser profiles as the browsers lay them out, made by code in a test home (macOS layout): real
// SQLite databases in the browsers' table shapes, "Local State" files, property lists. Later cleaner
// tests add what their families need here.
namespace BrowserFixtures {

inline const char kChromeRoot[] = "Library/Application Support/Google/Chrome";
inline const char kChromiumRoot[] = "Library/Application Support/Chromium";
inline const char kOperaRoot[] = "Library/Application Support/com.operasoftware.Opera";
inline const char kFirefoxProfiles[] = "Library/Application Support/Firefox/Profiles";

// Paths below a test home in one line, separated by ", "; an entry may start with "chrome/",
// "chromium/", "opera/", "firefox/" or "safari/", which stand for those browsers' folders.
QStringList paths(const char* compact);
// Checks that each of `gone` is missing from the home and each of `kept` is there.
void expectGoneAndKept(const TestHome& home, const QStringList& gone, const QStringList& kept);

// A SQLite database made from the statements; returns its full path.
QString database(const TestHome& home, const QString& relative, const QStringList& statements);
// One row in each table, so "emptied" can be told from "missing".
qint64 rowCount(const QString& database, const QString& table);
// The first column of the query's rows, joined with ","; "" when the database cannot be read.
QString column(const QString& database, const QString& sql);

// "Local State" of a Chrome or Chromium root, listing the profile folders.
void localState(const TestHome& home, const QString& root, const QStringList& profiles);
// A Chromium-family profile folder (the root itself for Opera) with cookies, channel identifiers,
// today's network folder, and what must survive a cookie removal (bookmarks, saved passwords).
void chromiumProfile(const TestHome& home, const QString& folder);
// A Firefox profile with its cookies, permissions, saved logins and bookmarks database.
void firefoxProfile(const TestHome& home, const QString& name,
                    const QString& profilesRoot = QLatin1String(kFirefoxProfiles));

// A Chromium-family profile's "History" (two visited pages with their visits, a search term, a download
// with its segment) and "Web Data" (a search engine that came with the browser and one the user added,
// form entries, an address, a card, a sign-in token), in the browser's table shapes.
void chromiumHistory(const TestHome& home, const QString& folder);
// A Firefox profile's "places.sqlite" in Firefox's table shapes. Places: 1 visited and bookmarked,
// 2 visited, 3 never visited, 4..6 titled "a.zip", "b.pdf", "it's.txt"; one visit each for 1 and 2, a
// typed input, an annotation. And a "downloads.sqlite" naming the downloads, unless there are none.
void firefoxPlaces(const TestHome& home, const QString& name, const QStringList& downloads);

// Site storage in a folder: a "Databases.db" (tables Databases and, for Safari, Origins) listing the
// origins, each with its folder; and local storage files (each with a "-journal") in `localStorage`.
void siteDatabases(const TestHome& home, const QString& folder, const QStringList& origins);
void localStorageFiles(const TestHome& home, const QString& folder, const QStringList& names);
// A LevelDB store (Chromium's "Local Storage/leveldb") holding the keys, each with a value; and its keys.
void levelDb(const TestHome& home, const QString& folder, const QList<QByteArray>& keys);
void levelDb(const TestHome& home, const QString& folder, const QMap<QByteArray, QByteArray>& entries);
QList<QByteArray> levelDbKeys(const QString& folder);
// A Firefox profile's "webappsstore.sqlite" with one row per scope, and its storage folders.
void firefoxStorage(const TestHome& home, const QString& name, const QStringList& scopes);

} // namespace BrowserFixtures
