#!/bin/bash
# End to end, as the test user: Debian's Chromium and Firefox ESR visit a local site that leaves every
# kind of trace; a bookmark and a saved password of another site are added. Then the real agent, with
# all twelve categories chosen for both browsers, watches each browser open and quit by itself.
# Afterwards no file in the browsers' data and cache folders names the site, the bookmarks and
# passwords are there, every database passes its integrity check, every JSON file parses, and each
# browser opens its cleaned profile and loads a page.
# Usage: run.sh BIN_DIR   (exit 77: skipped)
set -u
bin_dir=$1
here=$(cd "$(dirname "$0")" && pwd)
needs="/usr/bin/chromium /usr/bin/firefox-esr"
[ -d "$here/node_modules/puppeteer-core" ] || { echo "SKIP: no tests/e2e/node_modules (make test runs npm ci)"; exit 77; }
. "$here/../integration/test-user.sh"
cp "$bin_dir/corvella" "$bin_dir/corvella-clean" "$work/"
cp -r "$here/browse.js" "$here/site.js" "$here/node_modules" "$work/"
chmod 777 "$work"

chromium_data=$home/.config/chromium chromium_cache=$home/.cache/chromium
firefox_data=$home/.mozilla/firefox firefox_cache=$home/.cache/mozilla/firefox
firefox_profile=$firefox_data/e2e.default
rm -rf "$chromium_data" "$chromium_cache" "$home/.mozilla" "$home/.cache/mozilla" "$home/.config/corvella" \
    "$home/Downloads"
install -d -o "$user" "$home/.config" "$home/.cache" "$home/.config/corvella" "$home/.mozilla" "$firefox_data" \
    "$firefox_profile" "$home/Downloads"
categories="cookies databases flash silverlight cache history favicons webpage forms downloads websitePrefs
    searchEngines"
{
    echo '<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>'
    echo '<key>isRunning</key><true/><key>firstRun</key><false/><key>displayNotifications</key><false/>'
    echo '<key>enabledBrowsers</key><array><string>org.chromium.Chromium</string>'
    echo '<string>org.mozilla.firefox</string></array><key>settings</key><dict>'
    for category in $categories; do
        echo "<key>Chromium:$category</key><true/><key>Firefox:$category</key><true/>"
    done
    echo '</dict></dict></plist>'
} > "$home/.config/corvella/com.tovanex.Corvella6.plist"
chown -R "$user" "$home/.config/corvella"
as_user "$work/corvella-clean" --allow-home-access --list > /dev/null

browse() { as_user node "$work/browse.js" "$@" 2>&1; }
sql() { as_user sqlite3 "$1" "$2"; }
# The files below the folders that name the site, in their path or their bytes.
traces() {
    for root in "$@"; do
        [ -d "$root" ] || continue
        grep -rlaF corvella-trail "$root" 2>/dev/null
        find "$root" -path '*corvella-trail*' 2>/dev/null
    done | sort -u
}

# 1. The visits, then what must survive them (added while the browsers are closed, as sync would).
for browser in chromium firefox; do
    profile=$chromium_data
    [ $browser = firefox ] && profile=$firefox_profile
    browse visit $browser "$profile" "$home/Downloads" > "$work/visit-$browser.log"
    rc=$?
    check '[ $rc = 0 ]' "$browser could not visit the site: $(cat "$work/visit-$browser.log")"
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
chromium_before=$(traces "$chromium_data" "$chromium_cache" | wc -l)
firefox_before=$(traces "$firefox_data" "$firefox_cache" | wc -l)

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
for browser in Chromium Firefox; do
    check 'grep -q "Corvella removal run for $browser" "$work/agent.log"' "the agent did not clean $browser after its quit"
done
chromium_after=$(traces "$chromium_data" "$chromium_cache")
firefox_after=$(traces "$firefox_data" "$firefox_cache")
echo "files naming the site: Chromium $chromium_before before, $(grep -c . <<< "$chromium_after") after;" \
    "Firefox $firefox_before before, $(grep -c . <<< "$firefox_after") after"
check '[ "$chromium_before" -gt 10 ] && [ "$firefox_before" -gt 10 ]' "the visits left too few traces to prove anything"
check '[ -z "$chromium_after$firefox_after" ]' "files still name the site:
$chromium_after
$firefox_after"
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
check '[ "$(browse reopen chromium "$chromium_data" | tail -n 1)" = reopened ]' "Chromium cannot open its cleaned profile"
check '[ "$(browse reopen firefox "$firefox_profile" | tail -n 1)" = reopened ]' "Firefox cannot open its cleaned profile"
if [ $fail != 0 ]; then
    echo "--- agent log"; cat "$work/agent.log"
fi
rm -rf "$chromium_data" "$chromium_cache" "$home/.mozilla" "$home/.cache/mozilla" "$home/.config/corvella" \
    "$home/Downloads"
exit $fail
