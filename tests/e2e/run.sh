#!/bin/bash
# End to end, as the test user: Debian's Chromium and Firefox ESR visit a local site that leaves every
# kind of trace; a bookmark and a saved password of another site are added. Then the real agent, with
# all twelve categories chosen for both browsers, watches each browser open and quit by itself.
# The user also signs in to a second site, which they keep (a cookie, local storage, IndexedDB).
# Afterwards no file in the browsers' data and cache folders names the first site, the kept site still
# knows the user in both browsers while its history is gone, the bookmarks and
# passwords are there, every database passes its integrity check, every JSON file parses, and each
# browser opens its cleaned profile and loads a page. A second Firefox profile outside Firefox's folder
# (listed with an absolute path) is cleaned as well, and what the user keeps stays: Chromium's "Preload
# pages" and default zoom, Firefox's global zoom and default search engine (chosen in its settings
# page), an extension's values in each browser, the pinned tabs.
# Usage: run.sh BIN_DIR   (exit 77: skipped)
set -u
bin_dir=$1
here=$(cd "$(dirname "$0")" && pwd)
needs="/usr/bin/chromium /usr/bin/firefox-esr"
[ -d "$here/node_modules/puppeteer-core" ] || { echo "SKIP: no tests/e2e/node_modules (make test runs npm ci)"; exit 77; }
. "$here/../integration/test-user.sh"
cp "$bin_dir/corvella" "$bin_dir/corvella-clean" "$work/"
cp -r "$here/browse.js" "$here/site.js" "$here/extension" "$here/node_modules" "$work/"
chmod 777 "$work"

chromium_data=$home/.config/chromium chromium_cache=$home/.cache/chromium
firefox_data=$home/.mozilla/firefox firefox_cache=$home/.cache/mozilla/firefox
firefox_profile=$firefox_data/e2e.default
elsewhere=$home/elsewhere-e2e firefox_absolute=$home/elsewhere-e2e/abs.profile
rm -rf "$chromium_data" "$chromium_cache" "$home/.mozilla" "$home/.cache/mozilla" "$home/.config/corvella" \
    "$home/Downloads" "$elsewhere"
install -d -o "$user" "$home/.config" "$home/.cache" "$home/.config/corvella" "$home/.mozilla" "$firefox_data" \
    "$firefox_profile" "$home/Downloads" "$elsewhere" "$firefox_absolute"
as_user tee "$firefox_data/profiles.ini" > /dev/null <<INI
[Profile0]
Name=e2e
IsRelative=1
Path=e2e.default
Default=1

[Profile1]
Name=abs
IsRelative=0
Path=$firefox_absolute

[General]
StartWithLastProfile=1
Version=2
INI
# Firefox side-loads the test's extension from the profile; it finds it at its first start.
as_user install -d "$firefox_profile/extensions"
as_user python3 -c 'import os, sys, zipfile
with zipfile.ZipFile(sys.argv[2], "w") as xpi:
    for name in os.listdir(sys.argv[1]): xpi.write(os.path.join(sys.argv[1], name), name)' \
    "$work/extension" "$firefox_profile/extensions/kept@corvella.test.xpi"
categories="cookies databases flash silverlight cache history favicons webpage forms downloads websitePrefs
    searchEngines"
settings "<key>isRunning</key><true/><key>firstRun</key><false/><key>displayNotifications</key><false/>
<key>keptSites</key><array><string>kept-site.localhost</string></array><key>enabledBrowsers</key><array>
<string>org.chromium.Chromium</string><string>org.mozilla.firefox</string></array><key>settings</key><dict>
$(for category in $categories; do echo "<key>Chromium:$category</key><true/><key>Firefox:$category</key><true/>"; done)
</dict>"
as_user "$work/corvella-clean" --allow-home-access --list > /dev/null

browse() { as_user node "$work/browse.js" "$@" 2>&1; }
profile_of() { if [ "$1" = firefox ]; then echo "$firefox_profile"; else echo "$chromium_data"; fi; }
sql() { as_user sqlite3 "$1" "$2"; }
# The files below the folders that name the site, in their path or their bytes (also as UTF-16 text
# and inside mozLz4 files and LevelDB's snappy blocks).
traces() {
    for root in "$@"; do
        [ -d "$root" ] || continue
        /usr/bin/python3 "$here/traces.py" corvella-trail "$root"
        find "$root" -path '*corvella-trail*' 2>/dev/null
    done | sort -u
}

# 1. The visits, then what must survive them (added while the browsers are closed, as sync would).
for browser in chromium firefox firefox-absolute; do
    profile=$chromium_data
    [ $browser = firefox ] && profile=$firefox_profile
    [ $browser = firefox-absolute ] && profile=$firefox_absolute
    browse visit ${browser%-absolute} "$profile" "$home/Downloads" > "$work/visit-$browser.log"
    rc=$?
    check '[ $rc = 0 ]' "$browser could not visit the site: $(cat "$work/visit-$browser.log")"
done
# The user signs in to the site they keep, in both browsers, on a port the whole test uses.
kept_port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
for browser in chromium firefox; do
    signed=$(browse signin $browser "$(profile_of $browser)" "$kept_port" | tail -n 1)
    check '[ "$signed" = "signed in" ]' "$browser could not sign in to the kept site: $signed"
done
as_user tee "$chromium_data/Default/Bookmarks" > /dev/null <<'JSON'
{"roots":{"bookmark_bar":{"children":[{"id":"5","name":"Kept","type":"url","url":"https://kept.example/"}],
"id":"1","name":"Bookmarks bar","type":"folder"},"other":{"children":[],"id":"2","name":"Other bookmarks",
"type":"folder"},"synced":{"children":[],"id":"3","name":"Mobile bookmarks","type":"folder"}},"version":1}
JSON
sql "$chromium_data/Default/Login Data" "INSERT INTO logins (origin_url, signon_realm, username_value,
    password_value, date_created, blacklisted_by_user, scheme) VALUES ('https://kept.example/',
    'https://kept.example/', 'me', x'763130', 13300000000000000, 0, 0)"
sql "$firefox_profile/places.sqlite" "INSERT INTO moz_places (url, title, guid, foreign_count, url_hash)
    VALUES ('https://kept.example/', 'Kept', 'keptexample1', 1, 0);
    INSERT INTO moz_bookmarks (type, fk, parent, position, title, guid, dateAdded, lastModified)
    SELECT 1, (SELECT id FROM moz_places WHERE guid = 'keptexample1'), id, 0, 'Kept', 'keptbookmark', 1, 1
    FROM moz_bookmarks WHERE guid = 'toolbar_____'"
sql "$firefox_profile/logins.db" "INSERT INTO loginsL (origin, formActionOrigin, usernameField, passwordField,
    timeCreated, timePasswordChanged, secFields, guid) VALUES ('https://kept.example', 'https://kept.example',
    'user', 'password', 1, 1, 'kept', '{kept-example}')"
# Settings the user made, which no category may undo.
as_user python3 - "$chromium_data/Default/Preferences" <<'PY'
import json, sys
path = sys.argv[1]
prefs = json.load(open(path))
prefs.setdefault("net", {})["network_prediction_options"] = 2  # "Preload pages": no preloading
prefs.setdefault("partition", {})["default_zoom_level"] = {"x": 2.223901085741545}  # 150 %
prefs.setdefault("session", {})["restore_on_startup"] = 1  # "Continue where you left off"
json.dump(prefs, open(path, "w"))
PY
# The default engine Firefox's settings page shows, choosing CHOICE first when one is given. Now and then
# a headless start's page shows the browser's own default although the file names the chosen one (seen with
# the same file, which Firefox left unchanged), so the page gets up to three starts to show DuckDuckGo.
shown_search() {
    local shown
    for attempt in 1 2 3; do
        [ -n "${1:-}" ] && browse search firefox "$firefox_profile" "$1" > /dev/null
        shown=$(browse search firefox "$firefox_profile")
        [ "$(tail -n 1 <<< "$shown")" = ddg ] && break
    done
    echo "$shown"
}
# Firefox saves the choice a moment later; a start after it must read it back before the clean counts.
chosen=$(shown_search ddg | tail -n 1)
check '[ "$chosen" = ddg ]' "Firefox's default search engine could not be chosen: $chosen"
# The choice as Firefox keeps it: the default engine's id and the hash that makes Firefox trust it.
search_default() {
    /usr/bin/python3 -B -c 'import json, sys; sys.path.insert(0, sys.argv[1]); from traces import mozlz4
meta = json.loads(mozlz4(open(sys.argv[2], "rb").read()))["metaData"]
print(meta.get("defaultEngineId"), meta.get("defaultEngineIdHash"))' "$here" "$1/search.json.mozlz4" 2>&1
}
chosen_default=$(search_default "$firefox_profile")
for profile in "$firefox_profile" "$firefox_absolute"; do
    sql "$profile/content-prefs.sqlite" "CREATE TABLE IF NOT EXISTS groups (id INTEGER PRIMARY KEY, name TEXT NOT NULL);
        CREATE TABLE IF NOT EXISTS settings (id INTEGER PRIMARY KEY, name TEXT NOT NULL);
        CREATE TABLE IF NOT EXISTS prefs (id INTEGER PRIMARY KEY, groupID INTEGER REFERENCES groups(id),
            settingID INTEGER NOT NULL REFERENCES settings(id), value BLOB, timestamp INTEGER NOT NULL DEFAULT 0);
        INSERT INTO settings (name) VALUES ('browser.content.full-zoom');
        INSERT INTO prefs (groupID, settingID, value, timestamp) VALUES (NULL, last_insert_rowid(), 1.5, 0);"
done
# An extension keeps values in its storage and IndexedDB, which all twelve categories must leave, and pins
# a tab beside a tab of the site: "history" keeps only the pinned one.
for browser in chromium firefox; do
    kept=$(browse keep $browser "$(profile_of $browser)" "$work/extension" | tail -n 1)
    check '[ "$kept" = kept ]' "the extension in $browser could not keep its values: $kept"
done
# A pinned tab beside a tab of the site in Firefox's last session: "history" keeps only the pinned one.
as_user python3 - "$firefox_profile/sessionstore.jsonlz4" <<'PY'
import json, struct, sys
import lz4.block
tab = lambda url, pinned: {"entries": [{"url": url, "title": url}], "index": 1, "pinned": pinned,
                           "hidden": False, "attributes": {}}
session = {"version": ["sessionrestore", 1], "selectedWindow": 1, "_closedWindows": [], "global": {},
           "session": {"lastUpdate": 1}, "windows": [{"selected": 1, "_closedTabs": [], "tabs": [
               tab("about:robots", True), tab("http://corvella-trail.localhost/pinned-no-more", False)]}]}
data = json.dumps(session).encode()
open(sys.argv[1], "wb").write(b"mozLz40\0" + struct.pack("<I", len(data)) + lz4.block.compress(data, store_size=False))
PY
chromium_before=$(traces "$chromium_data" "$chromium_cache" | wc -l)
firefox_before=$(traces "$firefox_data" "$firefox_cache" | wc -l)
absolute_before=$(traces "$firefox_absolute" | wc -l)

# 2. The agent sees each browser open and quit.
cat > "$work/scenario.sh" <<'SCENARIO'
#!/bin/bash
work=$1 firefox_profile=$2
"$work/corvella" > "$work/agent.log" 2>&1 &
sleep 3
node "$work/browse.js" open chromium "$HOME/.config/chromium" > "$work/open-chromium.log" 2>&1
sleep 12
node "$work/browse.js" open firefox "$firefox_profile" > "$work/open-firefox.log" 2>&1
sleep 12
kill -TERM "$(pgrep -u "$(id -u)" -x corvella)"
sleep 1
SCENARIO
chmod 755 "$work/scenario.sh"
as_user dbus-run-session -- "$work/scenario.sh" "$work" "$firefox_profile" 2> /dev/null

# 3. What is left.
# Every chosen category ran, in the order the notification names them.
labels="Cookies, LocalStorage and Databases, Flash, Silverlight, Cache, History, Favicons, Webpage previews, Form values,
    Downloads, Website preferences, Other search engines"
for browser in Chromium Firefox; do
    check 'grep -q "Corvella removal run for $browser: $(echo $labels)$" "$work/agent.log"' \
        "the agent did not clean $browser after its quit, or not every category"
done
chromium_after=$(traces "$chromium_data" "$chromium_cache")
firefox_after=$(traces "$firefox_data" "$firefox_cache")
absolute_after=$(traces "$firefox_absolute")
echo "files naming the site: Chromium $chromium_before before, $(grep -c . <<< "$chromium_after") after;" \
    "Firefox $firefox_before before, $(grep -c . <<< "$firefox_after") after;" \
    "Firefox's absolute profile $absolute_before before, $(grep -c . <<< "$absolute_after") after"
check '[ "$chromium_before" -gt 10 ] && [ "$firefox_before" -gt 10 ] && [ "$absolute_before" -gt 10 ]' \
    "the visits left too few traces to prove anything"
check '[ -z "$chromium_after$firefox_after$absolute_after" ]' "files still name the site:
$chromium_after
$firefox_after
$absolute_after"
check 'python3 -c "import json,sys; p=json.load(open(sys.argv[1])); sys.exit(not (p[\"net\"][\"network_prediction_options\"] == 2 and p[\"partition\"][\"default_zoom_level\"]))" "$chromium_data/Default/Preferences"' \
    "Chromium's \"Preload pages\" or default zoom was undone"
for profile in "$firefox_profile" "$firefox_absolute"; do
    check '[ "$(sql "$profile/content-prefs.sqlite" "SELECT value FROM prefs WHERE groupID IS NULL")" = 1.5 ]' \
        "Firefox's global zoom in $profile was undone"
done
check 'grep -q kept.example "$chromium_data/Default/Bookmarks"' "Chromium's bookmark is gone"
check '[ "$(sql "$chromium_data/Default/Login Data" "SELECT count(*) FROM logins WHERE username_value = '"'me'"'")" = 1 ]' \
    "Chromium's saved password is gone"
check '[ "$(sql "$firefox_profile/places.sqlite" "SELECT count(*) FROM moz_bookmarks WHERE guid = '"'keptbookmark'"'")" = 1 ]' \
    "Firefox's bookmark is gone"
check '[ "$(sql "$firefox_profile/logins.db" "SELECT count(*) FROM loginsL WHERE guid = '"'{kept-example}'"'")" = 1 ]' \
    "Firefox's saved password is gone"
while IFS= read -r -d '' file; do
    [ -f "$file" ] || continue # a database's companion, gone when the check before closed it
    if head -c 16 "$file" | grep -qa 'SQLite format 3'; then
        result=$(sql "$file" "PRAGMA integrity_check" 2>&1)
        check '[ "$result" = ok ]' "$file fails its integrity check: $result"
    elif [[ $file == *.json || $file == */Preferences || $file == */"Local State" || $file == */Bookmarks ]]; then
        check 'python3 -m json.tool "$file" > /dev/null 2>&1' "$file is no longer JSON"
    fi
done < <(find "$chromium_data" "$firefox_data" -type f -print0)
# The kept site's history is gone (it is asked what it knows after the pinned tabs are checked).
check '[ "$(sql "$chromium_data/Default/History" "SELECT count(*) FROM urls WHERE url LIKE '"'%kept-site%'"'")" = 0 ]' \
    "Chromium's history still has the kept site"
check '[ "$(sql "$firefox_profile/places.sqlite" "SELECT count(*) FROM moz_places WHERE url LIKE '"'%kept-site%'"'")" = 0 ]' \
    "Firefox's history still has the kept site"
read=$(browse read chromium "$chromium_data" "$work/extension" | tail -n 1)
check '[ "$read" = yes/yes/yes/about:blank#kept-pinned ]' \
    "Chromium's extension lost what it kept, or the pinned tab did not come back (storage/IndexedDB/bucket/pinned: $read)"
restored=$(browse restore firefox "$firefox_profile")
check 'grep -qx "about:robots" <<< "$restored"' "Firefox did not restore its pinned tab after the clean: $restored"
# (After the restore: a start that does not restore the session writes one without the pinned tab.)
read=$(browse read firefox "$firefox_profile" | tail -n 1)
check '[ "$read" = yes/yes ]' "Firefox's add-on lost what it kept (storage/IndexedDB: $read)"
for browser in chromium firefox; do
    known=$(browse whoami $browser "$(profile_of $browser)" "$kept_port" | tail -n 1)
    echo "the kept site after the clean, $browser: $known"
    check '[ "$known" = cookie/t-alice/alice ]' "the kept site no longer knows the user in $browser: $known"
done
cleaned_default=$(search_default "$firefox_profile")
check '[ "${chosen_default%% *}" = ddg ] && [ "$cleaned_default" = "$chosen_default" ]' \
    "Firefox's chosen default search engine was undone: $cleaned_default (chosen: $chosen_default)"
searched=$(shown_search)
check '[ "$(tail -n 1 <<< "$searched")" = ddg ]' "Firefox does not show its chosen default search engine: $searched"
check '[ "$(browse reopen chromium "$chromium_data" | tail -n 1)" = reopened ]' "Chromium cannot open its cleaned profile"
check '[ "$(browse reopen firefox "$firefox_profile" | tail -n 1)" = reopened ]' "Firefox cannot open its cleaned profile"
if [ $fail != 0 ]; then
    echo "--- agent log"; cat "$work/agent.log"
fi
rm -rf "$chromium_data" "$chromium_cache" "$home/.mozilla" "$home/.cache/mozilla" "$home/.config/corvella" \
    "$home/Downloads" "$elsewhere"
exit $fail
