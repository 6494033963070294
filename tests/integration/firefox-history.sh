#!/bin/bash
# Real Firefox ESR: a profile the browser made, with two visited pages, one of them bookmarked.
# After `corvella-clean --layout Linux Firefox history` the bookmark keeps its place (without visit
# statistics), the other page and every visit are gone, places.sqlite passes its integrity check,
# and Firefox opens the profile again and records new history in it.
# Usage: firefox-history.sh BIN_DIR   (exit 77: skipped)
set -u
bin_dir=$1
firefox=/usr/bin/firefox-esr needs=/usr/bin/firefox-esr
. "$(dirname "$0")/test-user.sh"
cp "$bin_dir/corvella-clean" "$work/"
for page in kept gone again; do
    echo "<html><head><title>$page</title></head><body>$page</body></html>" > "$work/$page.html"
done

chmod 777 "$work" # Firefox writes its screenshots there
rm -rf "$home/.config/corvella" "$home/.mozilla"
profile=$home/.mozilla/firefox/test.default
install -d -o "$user" "$home/.config" "$home/.mozilla" "$home/.mozilla/firefox" "$profile"

visit() {
    as_user timeout 90 "$firefox" --headless --no-remote --profile "$profile" \
        --screenshot "$work/$1.png" "file://$work/$1.html" > "$work/firefox-$1.log" 2>&1
}
places() { as_user sqlite3 "$profile/places.sqlite" "$1"; }

visit kept && visit gone
check '[ "$(places "SELECT count(*) FROM moz_historyvisits")" -ge 2 ]' \
    "Firefox recorded no visits: $(tail -n 3 "$work"/firefox-*.log)"
# A bookmark on the toolbar, as the user would add it while Firefox is closed.
places "INSERT INTO moz_bookmarks (type, fk, parent, position, title, guid, dateAdded, lastModified)
        SELECT 1, p.id, b.id, 0, 'Kept page', 'corvellakept', 1, 1 FROM moz_places p, moz_bookmarks b
        WHERE p.url LIKE '%/kept.html' AND b.guid = 'toolbar_____';
        UPDATE moz_places SET foreign_count = foreign_count + 1 WHERE url LIKE '%/kept.html';"
check '[ "$(places "SELECT count(*) FROM moz_bookmarks WHERE guid = '"'corvellakept'"'")" = 1 ]' \
    "could not bookmark the visited page"
echo "before the clean: $(places "SELECT count(*) FROM moz_historyvisits") visits, $(places \
    "SELECT count(*) FROM moz_places") places"

as_user "$work/corvella-clean" --layout Linux --allow-home-access Firefox history > "$work/clean.log" 2>&1
rc=$?
check '[ $rc = 0 ] && grep -q "History removed from Firefox" "$work/clean.log"' \
    "corvella-clean failed: rc $rc, $(cat "$work/clean.log")"
check '[ "$(places "PRAGMA integrity_check")" = ok ]' "places.sqlite is damaged"
check '[ "$(places "SELECT count(*) FROM moz_historyvisits")" = 0 ]' "visits are left"
check '[ "$(places "SELECT count(*) FROM moz_places WHERE url LIKE '"'%/gone.html'"'")" = 0 ]' \
    "the unbookmarked page is left"
check '[ "$(places "SELECT visit_count || '"'/'"' || ifnull(last_visit_date, '"'none'"') FROM moz_places
              WHERE url LIKE '"'%/kept.html'"'")" = "0/none" ]' "the bookmarked page lost its row or kept its visits"
check '[ "$(places "SELECT title FROM moz_bookmarks WHERE guid = '"'corvellakept'"'")" = "Kept page" ]' \
    "the bookmark is gone"

visit again
check '[ -s "$work/again.png" ]' "Firefox did not open the profile again: $(tail -n 3 "$work/firefox-again.log")"
check '[ "$(places "SELECT count(*) FROM moz_historyvisits v JOIN moz_places p ON p.id = v.place_id
              WHERE p.url LIKE '"'%/again.html'"'")" -ge 1 ]' "Firefox records no history in the cleaned profile"
check '[ "$(places "SELECT count(*) FROM moz_bookmarks WHERE guid = '"'corvellakept'"'")" = 1 ]' \
    "the bookmark is gone after Firefox opened the profile again"
rm -rf "$home/.mozilla" "$home/.config/corvella"
exit $fail
