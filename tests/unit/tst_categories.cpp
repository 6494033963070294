#include "catalogue/BrowserCatalogue.h"
#include "cleaners/BrowserCleaners.h"
#include "cleaners/MozLz4.h"
#include "core/RemovalRun.h"
#include "platform/SettingsKeys.h"
#include "platform/fake/FakeWorkspace.h"
#include "support/BrowserFixtures.h"
#include "support/PlistFixtures.h"
#include "support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace Qt::StringLiterals;

namespace F = BrowserFixtures;

namespace {

const QString kChrome = QLatin1String(F::kChromeRoot);
const QString kChromium = QLatin1String(F::kChromiumRoot);
const QString kOpera = QLatin1String(F::kOperaRoot);
const QString kFirefox = QLatin1String(F::kFirefoxProfiles);

// The categories run against one home through the removal run's own loop, as a quit would run them.
void clean(TestHome& home, const QString& browser, const QStringList& categories)
{
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    BrowserCleaners cleaners({home.sandbox, catalogue, home.t.defaults, home.t.log});
    QVariantMap choices;
    for (const QString& category : categories)
        choices.insert(SettingsKeys::settingsKey(browser, category), true);
    RemovalRun::performCategoryLoop(browser, choices, cleaners);
}

// Chromium's session files, as the browser writes them: "SNSS", a version, then commands (a 16-bit
// size, an id, a payload of 32-bit numbers or a "pickle": its size, then numbers and padded strings).
QByteArray ints(std::initializer_list<qint32> values)
{
    QByteArray bytes;
    for (const qint32 value : values)
        bytes.append(reinterpret_cast<const char*>(&value), 4);
    return bytes;
}

QByteArray snssCommand(quint8 id, const QByteArray& payload)
{
    const quint16 size = quint16(payload.size() + 1);
    return QByteArray(reinterpret_cast<const char*>(&size), 2) + char(id) + payload;
}

QByteArray pickleString(const QByteArray& text)
{
    return ints({qint32(text.size())}) + text + QByteArray((4 - text.size() % 4) % 4, '\0');
}

// A page of a tab's history: its address, saved page state, referrer, whether data was posted.
QByteArray navigation(qint32 tab, qint32 index, const QByteArray& url, const QByteArray& state = "s",
                      const QByteArray& referrer = "", bool posted = true)
{
    const QByteArray body = ints({tab, index}) + pickleString(url) + ints({0}) + pickleString(state) +
                            ints({0, posted}) + pickleString(referrer) + ints({2}) + pickleString(url) +
                            ints({0, 7, 7, 0, 200});
    return ints({qint32(body.size())}) + body;
}

QList<std::pair<int, QByteArray>> snssCommands(const QByteArray& file)
{
    QList<std::pair<int, QByteArray>> commands;
    for (qsizetype at = 8; at + 3 <= file.size();) {
        const auto size = qFromLittleEndian<quint16>(file.constData() + at);
        commands.append({quint8(file.at(at + 2)), file.mid(at + 3, size - 1)});
        at += 2 + size;
    }
    return commands;
}

} // namespace

class TestCategories : public QObject
{
    Q_OBJECT
private slots:
    void eachCategoryRemovesItsFiles_data();
    void eachCategoryRemovesItsFiles();
    void databasesKeepWhatTheCategorySpares_data();
    void databasesKeepWhatTheCategorySpares();
    void preferencesRewritesKeepEverythingElse_data();
    void preferencesRewritesKeepEverythingElse();
    void firefoxSessionKeepsOnlyItsPinnedTabs_data();
    void firefoxSessionKeepsOnlyItsPinnedTabs();
    void chromiumSessionKeepsOnlyItsPinnedTabs_data();
    void chromiumSessionKeepsOnlyItsPinnedTabs();
    void firefoxKeepsItsOwnSearchEnginesAndTheChosenDefault_data();
    void firefoxKeepsItsOwnSearchEnginesAndTheChosenDefault();
    void aFirefoxProfileListedElsewhereIsCleanedAsTheOthers();
};

void TestCategories::eachCategoryRemovesItsFiles_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<QString>("category");
    QTest::addColumn<QStringList>("gone");
    QTest::addColumn<QStringList>("kept");
    const auto row = [](const char* name, const char* browser, const char* category, const char* gone,
                        const char* kept) {
        QTest::newRow(name) << QString::fromLatin1(browser) << QString::fromLatin1(category) << F::paths(gone)
                            << F::paths(kept);
    };
    const char* everything = "safari/History.db, safari/Form Values/f, chrome/Default/Top Sites, "
                             "chrome/Default/Favicons, firefox/a.default/formhistory.sqlite, "
                             "firefox/a.default/search.json.mozlz4";
    row("Safari history", "Safari", "history",
        "safari/History.db-wal, Library/Caches/Metadata/Safari/History/h, safari/CloudTabs.db-shm",
        "safari/Bookmarks.plist, safari/Downloads.plist");
    row("Safari forms, each database with its companions", "Safari", "forms",
        "safari/Form Values/f, safari/CloudAutoFillCorrections.db-wal, safari/AutoFillCorrections.db-shm",
        "safari/Bookmarks.plist");
    row("Safari downloads with the system's records", "Safari", "downloads",
        "safari/Downloads.plist, Library/Preferences/com.apple.LaunchServices.QuarantineEvents, "
        "Library/Preferences/com.apple.LaunchServices.QuarantineEventsV2",
        "safari/History.db");
    row("Chromium history files, companions kept", "Google Chrome", "history",
        "chrome/Default/Visited Links, chrome/Default/session.db-journal, chrome/Profile 1/Shortcuts",
        "chrome/Default/History, chrome/Default/History-journal, chrome/Default/History Index 2026-11/other, "
        "chrome/Default/Bookmarks");
    row("Opera webpage: its root is its profile", "Opera", "webpage", "opera/Top Sites, opera/thumbnails.db",
        "chrome/Default/Top Sites");
    row("Firefox forms, in folders only", "Firefox", "forms", "firefox/a.default/formhistory.sqlite",
        "Documents/linked/formhistory.sqlite, firefox/a.default/logins.json");
    row("Firefox downloads", "Firefox", "downloads", "firefox/a.default/downloads.sqlite",
        "firefox/a.default/places.sqlite");
    row("Firefox favicons", "Firefox", "favicons",
        "firefox/a.default/favicons.sqlite, firefox/a.default/favicons.sqlite-wal, "
        "firefox/a.default/favicons.sqlite-shm",
        "firefox/a.default/places.sqlite");
    row("Firefox history sessions", "Firefox", "history",
        "firefox/a.default/sessionstore.js, firefox/a.default/sessionstore-backups/recovery.jsonlz4",
        "firefox/a.default/places.sqlite, firefox/a.default/bookmarkbackups/b.jsonlz4");
    row("Firefox websitePrefs: the file stays (its sites' rows go)", "Firefox", "websitePrefs", "",
        "firefox/a.default/search.json.mozlz4, firefox/a.default/content-prefs.sqlite");
    row("Firefox searchEngines", "Firefox", "searchEngines", "firefox/a.default/search.json.mozlz4",
        "firefox/a.default/content-prefs.sqlite");
    row("an unknown browser: nothing", "Netscape", "history", "", everything);
    // Cookies: what sign-ins are made of, and nothing else.
    const QString kept =
        u"chrome/Default/Bookmarks, chrome/Default/Login Data, firefox/a.default/places.sqlite, "
        "firefox/a.default/logins.json, "_s;
    row("Google Chrome cookies: the profiles of Local State only", "Google Chrome", "cookies+",
        "chrome/Default/Cookies, chrome/Profile 1/Cookies, chrome/Default/Network/Cookies, "
        "chrome/Profile 1/DIPS, chrome/Default/Network/Trust Tokens",
        qPrintable(kept + u"chrome/Profile 9/Cookies, chromium/Default/Cookies, opera/Cookies, "
                          "Library/Cookies/Cookies.binarycookies"_s));
    row("Chromium cookies without today's layouts", "Chromium", "cookies", "chromium/Default/Cookies",
        "chromium/Default/Network/Cookies");
    row("Firefox cookies: permissions go with them", "Firefox", "cookies+",
        "firefox/a.default/cookies.sqlite, firefox/a.default/permissions.sqlite, "
        "firefox/a.default/bounce-tracking-protection.sqlite",
        qPrintable(kept + u"chrome/Default/Cookies"_s));
    // Caches, and the caches every browser shares.
    const QString shared = u"Library/Caches/Adobe/Flash Player/x, Library/Caches/QuickTime/downloads/y, "_s;
    row("Safari cache, its cookie and HSTS lists included", "Safari", "cache+",
        qPrintable(shared + u"Library/Caches/com.apple.Safari/Cache.db-wal, Library/Cookies/HSTS.plist, "
                            "Library/Containers/com.apple.Safari/Data/Library/Caches/WebKit/z, "
                            "Library/Caches/CloudKit/com.apple.Safari/db/file"_s),
        "Library/Containers/com.apple.Safari/Data/Library/Caches/com.apple.Safari/Extensions/e, "
        "Library/Cookies/Cookies.binarycookies, Library/Caches/CloudKit/com.apple.Safari/db, "
        "Library/Caches/CloudKit/com.apple.Safari/com.apple.SafariBookmarksSyncAgent/s");
    row("Opera cache: its whole cache root", "Opera", "cache+",
        qPrintable(shared + u"Library/Caches/com.operasoftware.Opera/Cache/data_0, opera/GPUCache/d, "
                            "opera/Service Worker/ScriptCache/s"_s),
        "opera/Cookies, opera/Bookmarks");
    row("Google Chrome cache: the profiles of Local State", "Google Chrome", "cache+",
        qPrintable(shared + u"Library/Caches/Google/Chrome/Default/Cache/data_0, chrome/Default/GPUCache/d, "
                            "chrome/Default/Pepper Data/Shockwave Flash/CacheWritableAdobeRoot/c, "
                            "chrome/GrShaderCache/g"_s),
        "Library/Caches/Google/Chrome/Profile 9/Cache/data_0, chrome/Default/Cookies, "
        "chrome/Default/Pepper Data/Shockwave Flash/WritableRoot/w");
    // Plug-ins: Flash in the shared folder, or in each Chrome profile; Silverlight's folder.
    const char* flash = "Library/Preferences/Macromedia/Flash Player/settings.sol";
    const char* pepper = "chrome/Default/Pepper Data/Shockwave Flash/x.sol, "
                         "chrome/Profile 1/Pepper Data/Shockwave Flash/y.sol";
    const char* silverlight = "Library/Application Support/Microsoft/Silverlight/is/store";
    row("Flash, Firefox: the shared folder", "Firefox", "flash", flash,
        qPrintable(u"%1, %2"_s.arg(QLatin1String(pepper), QLatin1String(silverlight))));
    row("Flash, Google Chrome: per profile", "Google Chrome", "flash", pepper,
        qPrintable(u"%1, %2"_s.arg(QLatin1String(flash), QLatin1String(silverlight))));
    row("Silverlight", "Firefox", "silverlight", silverlight,
        qPrintable(u"%1, %2"_s.arg(QLatin1String(pepper), QLatin1String(flash))));
    // Where today's browsers keep the same data.
    row("today: Chromium history", "Google Chrome", "history+",
        "chrome/Default/Sessions/Session_1, chrome/Default/shared_proto_db/x, chrome/segmentation_platform/s",
        "chrome/Default/History Index, chrome/Default/Bookmarks, chrome/Default/Extensions/e");
    row("today: Firefox history", "Firefox", "history+",
        "firefox/a.default/sessionstore.jsonlz4, firefox/a.default/SiteSecurityServiceState.bin",
        "firefox/a.default/logins.json, firefox/a.default/key4.db");
    row("today: Firefox webpage, the thumbnails in its cache", "Firefox", "webpage+",
        "Library/Caches/Firefox/Profiles/a.default/thumbnails/t",
        "Library/Caches/Firefox/Profiles/a.default/cache2/c, firefox/a.default/prefs.js");
}

// A category ending in "+" runs with today's layouts cleaned too.
void TestCategories::eachCategoryRemovesItsFiles()
{
    QFETCH(QString, browser);
    QFETCH(QString, category);
    QFETCH(QStringList, gone);
    QFETCH(QStringList, kept);
    TestHome home;
    home.t.defaults.setBool(category.endsWith(u'+'), SettingsKeys::cleanCurrentLayouts);
    // Chrome with two profiles in "Local State" and a third that is not, Chromium with one, Opera's root
    // profile, a Firefox profile beside a plain file and a link out of the profiles folder.
    F::localState(home, kChrome, {u"Default"_s, u"Profile 1"_s});
    for (const QString& profile : {u"/Default"_s, u"/Profile 1"_s, u"/Profile 9"_s})
        F::chromiumProfile(home, kChrome + profile);
    F::localState(home, kChromium, {u"Default"_s});
    F::chromiumProfile(home, kChromium + u"/Default"_s);
    F::chromiumProfile(home, kOpera);
    F::firefoxProfile(home, u"a.default"_s);
    for (const QString& path : gone + kept)
        home.file(path);
    home.file(kFirefox + u"/plain-file"_s);
    QVERIFY(QFile::link(home.path(u"Documents/linked"_s), home.path(kFirefox + u"/linked"_s)));
    clean(home, browser, {category.remove(u'+')});
    F::expectGoneAndKept(home, gone, kept);
}

void TestCategories::databasesKeepWhatTheCategorySpares_data()
{
    QTest::addColumn<QString>("browser");
    QTest::addColumn<QString>("category");
    QTest::addColumn<QString>("database");
    // SQL; "rows of T U": the tables' row counts; "no X": X not in the file.
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("result");
    const auto row = [](const char* name, const char* browser, const char* category, const char* database,
                        const char* query, const char* result) {
        QTest::newRow(name) << QString::fromLatin1(browser) << QString::fromLatin1(category)
                            << F::paths(database).first() << QString::fromUtf8(query)
                            << QString::fromUtf8(result);
    };
    const char* places = "firefox/a.default/places.sqlite";
    row("Chromium history keeps the downloads", "Google Chrome", "history", "chrome/Default/History",
        "rows of urls visits visit_source keyword_search_terms downloads segments", "0,0,0,0,1,1");
    row("Chromium cookies empty the origin-bound certificates", "Google Chrome", "cookies",
        "chrome/Default/Origin Bound Certs", "rows of origin_bound_certs channel_id", "0,1");
    row("not those of a profile Local State does not list", "Google Chrome", "cookies",
        "chrome/Profile 9/Origin Bound Certs", "rows of origin_bound_certs channel_id", "1,1");
    row("Opera's cache takes the channel identifiers", "Opera", "cache", "opera/Origin Bound Certs",
        "rows of origin_bound_certs channel_id", "1,0");
    row("Chromium downloads keep the history", "Google Chrome", "downloads", "chrome/Default/History",
        "rows of downloads segments segment_usage urls", "0,0,0,2");
    row("Chromium forms keep search engines and sign-ins", "Google Chrome", "forms",
        "chrome/Default/Web Data", "rows of autofill autofill_profiles credit_cards keywords token_service",
        "0,0,0,2,1");
    row("Opera's search engines keep the built-in one", "Opera", "searchEngines", "opera/Web Data",
        "SELECT short_name FROM keywords", "DuckDuckGo");
    row("search engines keep forms and sign-ins", "Opera", "searchEngines", "opera/Web Data",
        "rows of autofill token_service", "1,1");
    // Place 2, visited and not bookmarked, goes; the bookmarked one loses its statistics; the never
    // visited ones are untouched.
    row("Firefox history keeps bookmarked places", "Firefox", "history", places,
        "SELECT id || ':' || visit_count || ':' || frecency || ':' || ifnull(last_visit_date, '-') FROM "
        "moz_places ORDER BY id",
        "1:0:0:-,3:0:-1:-,4:0:0:-,5:0:0:-,6:0:0:-");
    row("Firefox history takes visits and typed input", "Firefox", "history", places,
        "rows of moz_historyvisits moz_inputhistory moz_bookmarks", "0,0,3");
    row("Firefox downloads take the places named like them, but one whose name holds a quote", "Firefox",
        "downloads", places, "SELECT id FROM moz_places ORDER BY id", "1,2,3,6");
    row("and their annotations", "Firefox", "downloads", places, "rows of moz_annos", "0");
    row("no downloads: no change", "Firefox", "downloads", "firefox/b.default/places.sqlite",
        "SELECT id FROM moz_places ORDER BY id", "1,2,3,4,5,6");
    // A site's zoom goes, the one for every site (the default the user chose) stays.
    row("Firefox site preferences go, global ones stay", "Firefox", "websitePrefs",
        "firefox/a.default/content-prefs.sqlite", "rows of groups prefs settings", "0,1,1");
    row("nothing of the site is left in the file", "Firefox", "websitePrefs",
        "firefox/a.default/content-prefs.sqlite", "no clinic.example", "");
}

void TestCategories::databasesKeepWhatTheCategorySpares()
{
    QFETCH(QString, database);
    QFETCH(QString, query);
    TestHome home;
    F::localState(home, kChrome, {u"Default"_s});
    for (const QString& profile : QStringList{kChrome + u"/Default"_s, kChrome + u"/Profile 9"_s, kOpera})
        F::chromiumProfile(home, profile);
    F::chromiumHistory(home, kChrome + u"/Default"_s);
    F::chromiumHistory(home, kOpera);
    F::firefoxPlaces(home, u"a.default"_s, {u"a.zip"_s, u"b.pdf"_s, u"it's.txt"_s});
    F::firefoxPlaces(home, u"b.default"_s, {});
    F::database(
        home, kFirefox + u"/a.default/content-prefs.sqlite"_s,
        {u"CREATE TABLE groups (id INTEGER PRIMARY KEY, name TEXT NOT NULL)"_s,
         u"CREATE TABLE settings (id INTEGER PRIMARY KEY, name TEXT NOT NULL)"_s,
         u"CREATE TABLE prefs (id INTEGER PRIMARY KEY, groupID INTEGER REFERENCES groups(id), settingID "
         "INTEGER NOT NULL REFERENCES settings(id), value BLOB, timestamp INTEGER NOT NULL DEFAULT 0)"_s,
         u"INSERT INTO groups VALUES (1, 'clinic.example')"_s,
         u"INSERT INTO settings VALUES (1, 'browser.content.full-zoom')"_s,
         u"INSERT INTO prefs VALUES (1, NULL, 1, 1.5, 0), (2, 1, 1, 2.0, 0)"_s});
    QFETCH(QString, browser);
    QFETCH(QString, category);
    clean(home, browser, {category});
    QStringList result;
    if (query.startsWith(u"no "_s))
        QVERIFY(!home.read(database).contains(query.mid(3).toUtf8()));
    else if (query.startsWith(u"rows of "_s))
        for (const QString& table : query.mid(8).split(u' '))
            result.append(QString::number(F::rowCount(home.path(database), table)));
    else
        result.append(F::column(home.path(database), query));
    QTEST(result.join(u','), "result");
}

// What website preferences, the cache and history each take out of a Chromium profile's "Preferences",
// and what they leave: the user's own settings, other keys, their order and numbers.
void TestCategories::preferencesRewritesKeepEverythingElse_data()
{
    QTest::addColumn<QString>("category");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("website preferences: order, integers and reals kept")
        << u"websitePrefs"_s
        << QByteArray(
               R"({"partition":{"default_zoom_level":{"x":3.8},"per_host_zoom_levels":{"x":{"a.org":1.5}}},)"
               R"("profile":{"name":"Ich","content_settings":{"exceptions":{"cookies":{"a.org,*":{}}},)"
               R"("pref_version":1},"exit_type":"Normal"},"id":13345678901234567,)"
               R"("zoom":-0.5,"bookmark_bar":{"show_on_all_tabs":true}})")
        << QByteArray(R"({"partition":{"default_zoom_level":{"x":3.8}},"profile":{"name":"Ich",)"
                      R"("content_settings":{"pref_version":1},"exit_type":"Normal"},"id":13345678901234567,)"
                      R"("zoom":-0.5,"bookmark_bar":{"show_on_all_tabs":true}})");
    QTest::newRow("a profile that is no object stays")
        << u"websitePrefs"_s << QByteArray(R"({"profile":"x","a":[1,"\u00e9"]})")
        << QByteArray("{\"profile\":\"x\",\"a\":[1,\"\xc3\xa9\"]}");
    QTest::newRow("not JSON") << u"websitePrefs"_s << QByteArray("{\"partition\":") << QByteArray("{}");
    QTest::newRow("not UTF-8: left as it is") << u"websitePrefs"_s << QByteArray("{\"partition\":\"\xff\"}")
                                              << QByteArray("{\"partition\":\"\xff\"}");
    QTest::newRow("the cache: what was learnt of servers, not the prediction setting")
        << u"cache"_s
        << QByteArray(
               R"({"profile":{"name":"x"},"net":{"http_server_properties":{"servers":[{"https://a.org":{}}]},)"
               R"("network_prediction_options":2},"dns_prefetching":{"host":["a.org"]},"bookmark_bar":{}})")
        << QByteArray(R"({"profile":{"name":"x"},"net":{"network_prediction_options":2},"bookmark_bar":{}})");
    QTest::newRow("history: what visits taught, not the user's site exceptions")
        << u"history"_s
        << QByteArray(
               R"({"zerosuggest":{"cachedresults":"r","other":1},"profile":{"content_settings":)"
               R"({"exceptions":{"site_engagement":{"a.org":{}},"cookies":{"a.org":{"setting":2}}}}}})")
        << QByteArray(R"({"zerosuggest":{"other":1},"profile":{"content_settings":{"exceptions":)"
                      R"({"cookies":{"a.org":{"setting":2}}}}}})");
}

void TestCategories::preferencesRewritesKeepEverythingElse()
{
    QFETCH(QString, category);
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    TestHome home;
    home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    const QString preferences = home.file(kChrome + u"/Default/Preferences"_s, before);
    const auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
    QFile::setPermissions(preferences, permissions);
    F::localState(home, kChrome, {u"Default"_s});
    clean(home, u"Google Chrome"_s, {category});
    QCOMPARE(home.read(kChrome + u"/Default/Preferences"_s), after);
    // Replaced as a whole, with its permissions, and nothing left beside it.
    QCOMPARE(QFile::permissions(preferences) & 0x7077, permissions); // owner, group, others
    QCOMPARE(QDir(home.path(kChrome + u"/Default"_s)).entryList(QDir::Files | QDir::Hidden),
             QStringList{u"Preferences"_s});
}

void TestCategories::firefoxSessionKeepsOnlyItsPinnedTabs_data()
{
    QTest::addColumn<bool>("pinned");
    QTest::addColumn<bool>("cookiesChosen");
    QTest::newRow("a pinned tab, cookies kept") << true << false;
    QTest::newRow("a pinned tab, cookies chosen") << true << true;
    QTest::newRow("no pinned tab: the session goes") << false << false;
}

// Firefox restores pinned tabs from the session at every start: history takes the rest of the session
// (other tabs, back history, closed tabs and windows, form data), not them, nor the session's cookies
// unless cookies are chosen too (the end-to-end test chooses every category).
void TestCategories::firefoxSessionKeepsOnlyItsPinnedTabs()
{
    QFETCH(bool, pinned);
    QFETCH(bool, cookiesChosen);
    TestHome home;
    home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    home.t.defaults.setObject(QVariantMap{{u"Firefox:cookies"_s, cookiesChosen}}, SettingsKeys::settings);
    const auto entry = [](const char* url) { return QJsonObject{{u"url"_s, QLatin1String(url)}}; };
    const QJsonObject session{
        {u"version"_s, QJsonArray{u"sessionrestore"_s, 1}},
        {u"windows"_s,
         QJsonArray{QJsonObject{
             {u"tabs"_s,
              QJsonArray{
                  QJsonObject{{u"entries"_s, QJsonArray{entry("https://visited.example/"),
                                                        entry("https://mail.example/inbox")}},
                              {u"index"_s, 2},
                              {u"pinned"_s, pinned},
                              {u"formdata"_s, QJsonObject{{u"id"_s, QJsonObject{{u"q"_s, u"typed"_s}}}}}},
                  QJsonObject{{u"entries"_s, QJsonArray{entry("https://other.example/")}}, {u"index"_s, 1}}}},
             {u"_closedTabs"_s, QJsonArray{QJsonObject{{u"url"_s, u"https://closed.example/"_s}}}},
             {u"width"_s, 1200}}}},
        {u"_closedWindows"_s,
         QJsonArray{QJsonObject{{u"tabs"_s, QJsonArray{entry("https://gone.example/")}}}}},
        {u"cookies"_s, QJsonArray{QJsonObject{{u"host"_s, u"mail.example"_s}, {u"name"_s, u"sid"_s}}}}};
    const QString file = kFirefox + u"/a.default/sessionstore.jsonlz4"_s;
    home.file(file, MozLz4::compress(QJsonDocument(session).toJson()));
    clean(home, u"Firefox"_s, {u"history"_s});

    QCOMPARE(home.exists(file), pinned);
    if (!pinned)
        return;
    const auto json = MozLz4::decompress(home.read(file));
    QVERIFY(json);
    for (const char* gone : {"visited.example", "other.example", "closed.example", "gone.example", "typed"})
        QVERIFY2(!json->contains(gone), gone);
    const QJsonObject kept = QJsonDocument::fromJson(*json).object();
    const QJsonObject tab = kept[u"windows"_s][0][u"tabs"_s][0].toObject();
    QCOMPARE(kept[u"windows"_s].toArray().size(), 1);
    QCOMPARE(kept[u"windows"_s][0][u"tabs"_s].toArray().size(), 1);
    QCOMPARE(tab[u"entries"_s].toArray(), QJsonArray{entry("https://mail.example/inbox")});
    QCOMPARE(tab[u"index"_s].toInt(), 1);
    QVERIFY(tab[u"pinned"_s].toBool());
    QCOMPARE(kept[u"windows"_s][0][u"width"_s].toInt(), 1200);
    QCOMPARE(kept.contains(u"cookies"_s), !cookiesChosen);
}

void TestCategories::chromiumSessionKeepsOnlyItsPinnedTabs_data()
{
    QTest::addColumn<qint32>("version");
    QTest::addColumn<QByteArray>("after"); // commands after the session's own
    QTest::addColumn<bool>("kept");
    QTest::newRow("a pinned tab") << 3 << QByteArray() << true;
    QTest::newRow("a pinned tab, a file without the end-of-state marker") << 1 << QByteArray() << true;
    QTest::newRow("the pinned tab was unpinned") << 3 << snssCommand(12, ints({11, 0})) << false;
    QTest::newRow("the pinned tab was closed") << 3 << snssCommand(16, ints({11, 0, 0})) << false;
    QTest::newRow("its window was closed") << 3 << snssCommand(17, ints({1, 0, 0})) << false;
    QTest::newRow("an encrypted session") << 2 << QByteArray() << false;
}

// The browser restores the last session when it continues where the user left off: history takes
// every other tab and window, the pinned tab's back history, its form values and referrer; the pinned
// tab stays at its current page.
void TestCategories::chromiumSessionKeepsOnlyItsPinnedTabs()
{
    QFETCH(qint32, version);
    QFETCH(QByteArray, after);
    QFETCH(bool, kept);
    TestHome home;
    home.t.defaults.setBool(true, SettingsKeys::cleanCurrentLayouts);
    F::localState(home, kChrome, {u"Default"_s});
    // Window 1 holds tab 11 (pinned: a login page, then the inbox) and tab 12; window 2 holds tab 21.
    const QByteArray session =
        "SNSS" + ints({version}) + snssCommand(9, ints({1, 0})) + snssCommand(8, ints({1, 1})) +
        snssCommand(0, ints({1, 11})) + snssCommand(2, ints({11, 0})) + snssCommand(12, ints({11, 1})) +
        snssCommand(6, navigation(11, 0, "https://mail.example/login", "typed-secret")) +
        snssCommand(6,
                    navigation(11, 1, "https://mail.example/inbox", "typed-secret", "https://ref.example/")) +
        snssCommand(7, ints({11, 1})) + snssCommand(19, ints({40, 11}) + pickleString("storage-id")) +
        snssCommand(0, ints({1, 12})) + snssCommand(2, ints({12, 1})) +
        snssCommand(6, navigation(12, 0, "https://visited.example/")) + snssCommand(9, ints({2, 0})) +
        snssCommand(0, ints({2, 21})) + snssCommand(12, ints({21, 0})) +
        snssCommand(6, navigation(21, 0, "https://other.example/")) + snssCommand(255, {}) + after;
    const QString sessions = kChrome + u"/Default/Sessions/"_s;
    home.file(sessions + u"Session_13400000000000000"_s, session);
    home.file(sessions + u"Tabs_13400000000000000"_s, "SNSS" + ints({3}) + "https://closed.example/");
    clean(home, u"Google Chrome"_s, {u"history"_s});

    QVERIFY(!home.exists(sessions + u"Tabs_13400000000000000"_s));
    QCOMPARE(home.exists(sessions + u"Session_13400000000000000"_s), kept);
    if (!kept)
        return;
    const QByteArray file = home.read(sessions + u"Session_13400000000000000"_s);
    for (const char* gone :
         {"login", "visited.example", "other.example", "typed-secret", "ref.example", "storage-id"})
        QVERIFY2(!file.contains(gone), gone);
    const QList<std::pair<int, QByteArray>> commands = snssCommands(file);
    const QList<std::pair<int, QByteArray>> expected{
        {9, ints({1, 0})},
        {8, ints({1, 1})},
        {0, ints({1, 11})},
        {2, ints({11, 0})},
        {12, ints({11, 1})},
        {7, ints({11, 0})},
        {6, navigation(11, 0, "https://mail.example/inbox", "", "", false)}};
    QCOMPARE(commands.mid(0, expected.size()), expected);
    QCOMPARE(commands.size(), expected.size() + (version == 3 ? 1 : 0));
    QCOMPARE(file.left(8), session.left(8));
}

void TestCategories::firefoxKeepsItsOwnSearchEnginesAndTheChosenDefault_data()
{
    QTest::addColumn<QString>("chosen"); // the default engine's id
    QTest::addColumn<bool>("defaultKept");
    QTest::newRow("a default Firefox ships") << u"ddg"_s << true;
    QTest::newRow("a default added from a site") << u"site-1"_s << false;
}

// Search engines removes the engines added from sites, not the user's choice among Firefox's own, nor
// what an add-on brings.
void TestCategories::firefoxKeepsItsOwnSearchEnginesAndTheChosenDefault()
{
    QFETCH(QString, chosen);
    QFETCH(bool, defaultKept);
    TestHome home;
    const auto engine = [](const char* id, const char* loadPath, bool configured) {
        return QJsonObject{{u"id"_s, QLatin1String(id)},
                           {u"_name"_s, QLatin1String(id)},
                           {u"_loadPath"_s, QLatin1String(loadPath)},
                           {u"_isConfigEngine"_s, configured}};
    };
    const QJsonObject search{
        {u"version"_s, 10},
        {u"engines"_s, QJsonArray{engine("google", "", true), engine("ddg", "", true),
                                  engine("site-1", "[https]clinic.example/opensearch.xml", false),
                                  engine("ext", "[addon]helper@example.com", false)}},
        {u"metaData"_s, QJsonObject{{u"defaultEngineId"_s, chosen}, {u"defaultEngineIdHash"_s, u"h"_s}}}};
    const QString file = kFirefox + u"/a.default/search.json.mozlz4"_s;
    home.file(file, MozLz4::compress(QJsonDocument(search).toJson()));
    clean(home, u"Firefox"_s, {u"searchEngines"_s});

    const auto json = MozLz4::decompress(home.read(file));
    QVERIFY(json);
    QVERIFY(!json->contains("clinic.example"));
    const QJsonObject kept = QJsonDocument::fromJson(*json).object();
    QStringList ids;
    for (const QJsonValue& e : kept[u"engines"_s].toArray())
        ids.append(e[u"id"_s].toString());
    QCOMPARE(ids, (QStringList{u"google"_s, u"ddg"_s, u"ext"_s}));
    QCOMPARE(kept[u"metaData"_s][u"defaultEngineId"_s].toString(), defaultKept ? chosen : QString());
    QCOMPARE(kept[u"metaData"_s].toObject().contains(u"defaultEngineIdHash"_s), defaultKept);
}

// profiles.ini may list a profile by its full path (IsRelative=0): one in the home folder is cleaned like
// those in the profiles folder, its cache being in its own folder; one outside is reported and left.
void TestCategories::aFirefoxProfileListedElsewhereIsCleanedAsTheOthers()
{
    TestHome home;
    QTemporaryDir outsideHome;
    F::firefoxProfile(home, u"a.default"_s);
    const QString elsewhere = home.folder(u"elsewhere/abs.profile"_s);
    const QString outside = outsideHome.path() + u"/out.profile"_s;
    for (const QString& profile : {elsewhere, outside}) {
        for (const char* file : {"/cookies.sqlite", "/prefs.js", "/cache2/entries/e", "/startupCache/s",
                                 "/storage/default/https+++a.org/idb/1.sqlite", "/places.sqlite"})
            PlistFixtures::writeFile(profile + QLatin1String(file), "x");
    }
    home.file(kFirefox + u"/profiles.ini"_s,
              u"[General]\nStartWithLastProfile=1\n\n"
              "[Profile0]\nName=default\nIsRelative=1\nPath=a.default\n\n"
              "[Profile1]\nName=abs\nIsRelative=0\nPath=%1\n\n"
              "[Profile2]\nName=out\nIsRelative=0\nPath=%2\n"_s.arg(elsewhere, outside)
                  .toUtf8());
    // installs.ini names the profile an install uses by default, by its full path when it lies elsewhere.
    const QString installs = home.folder(u"elsewhere/installs.profile"_s);
    home.file(kFirefox + u"/installs.ini"_s,
              u"[4F96D1932A9F858E]\nDefault=%1\nLocked=1\n"_s.arg(installs).toUtf8());
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    QCOMPARE(catalogue.firefoxProfiles(u"Firefox"_s), (QStringList{u"a.default"_s, elsewhere, installs}));
    clean(home, u"Firefox"_s, {u"cookies"_s, u"cache"_s, u"databases"_s});

    for (const char* gone : {"/cookies.sqlite", "/cache2", "/startupCache", "/storage/default/https+++a.org"})
        QVERIFY2(!QFileInfo::exists(elsewhere + QLatin1String(gone)), gone);
    QVERIFY(QFileInfo::exists(elsewhere + u"/places.sqlite"_s));
    for (const char* kept : {"/cookies.sqlite", "/cache2/entries/e", "/storage/default/https+++a.org"})
        QVERIFY2(QFileInfo::exists(outside + QLatin1String(kept)), kept);
    QCOMPARE(home.t.log.lines().filter(u"left the Firefox profile %1 alone"_s.arg(outside)).size(), 1);
}

QTEST_GUILESS_MAIN(TestCategories)
#include "tst_categories.moc"
