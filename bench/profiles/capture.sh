#!/bin/bash
# Captures the table shapes of the databases the heavy-profile generator fills, from profiles made
# by the browsers installed here (Debian's Chromium and Firefox ESR), into bench/profiles/*.sql.
# Run it again after a browser update; the generator reads only the committed files.
# Usage: bench/profiles/capture.sh
set -eu
out=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
echo '<html><body>shape</body></html>' > "$work/page.html"

timeout 90 chromium --headless=new --no-sandbox --no-first-run --disable-gpu \
    --user-data-dir="$work/chromium" --dump-dom "file://$work/page.html" >/dev/null 2>&1
mkdir "$work/firefox"
HOME=$work timeout 90 firefox-esr --headless --no-remote --profile "$work/firefox" \
    --screenshot "$work/shot.png" "file://$work/page.html" >/dev/null 2>&1 || true

# DATABASE OUTPUT ROWS_OF...: the page size, schema version and journal mode first (they must be
# set before the first table), then the schema, then the rows the browser seeds a new profile with.
capture() {
    local db=$1 output=$2; shift 2
    {
        echo "-- $(basename "$db") as made by $browser"
        echo "PRAGMA page_size=$(sqlite3 "$db" 'PRAGMA page_size');"
        echo "PRAGMA user_version=$(sqlite3 "$db" 'PRAGMA user_version');"
        echo "PRAGMA journal_mode=$(sqlite3 "$db" 'PRAGMA journal_mode');"
        sqlite3 "$db" .schema
        for table in "$@"; do sqlite3 "$db" ".dump $table" | grep '^INSERT INTO' | grep -v "'file:///"; done
    } > "$out/$output"
}
browser=$(chromium --version 2>/dev/null | head -n 1)
for name in History Favicons Cookies "Top Sites" "Web Data" "Login Data"; do
    rows=(meta); [ "$name" = "Web Data" ] && rows+=(keywords)
    capture "$work/chromium/Default/$name" "chromium-$(echo "$name" | tr 'A-Z ' 'a-z-').sql" "${rows[@]}"
done
browser=$(firefox-esr --version 2>/dev/null | head -n 1)
capture "$work/firefox/places.sqlite" firefox-places.sql moz_origins moz_places moz_bookmarks
for name in favicons cookies permissions; do capture "$work/firefox/$name.sqlite" "firefox-$name.sql"; done
