#!/bin/bash
# Real Chromium: a profile the browser made, after visiting two pages. corvella-clean removes the
# whole history group; History stays a sound database without its visits, Preferences loses only
# its per-site zoom levels and permission exceptions and its cached suggestions (every other key in
# its place, every number as it was), the search engines that came with the browser stay, and
# Chromium opens the profile again and records new history.
# Usage: chromium-history.sh BIN_DIR   (exit 77: skipped)
set -u
bin_dir=$1
chromium=/usr/bin/chromium needs=/usr/bin/chromium
. "$(dirname "$0")/test-user.sh"
cp "$bin_dir/corvella-clean" "$work/"
for page in one two again; do
    echo "<html><head><title>$page</title></head><body>$page</body></html>" > "$work/$page.html"
done
chmod 777 "$work"
rm -rf "$home/.config/corvella" "$home/.config/chromium" "$home/.cache/chromium"
install -d -o "$user" "$home/.config"
profile=$home/.config/chromium/Default

visit() {
    as_user timeout 90 "$chromium" --headless=new --no-sandbox --no-first-run --disable-gpu \
        --user-data-dir="$home/.config/chromium" \
        --dump-dom "file://$work/$1.html" > "$work/chromium-$1.log" 2>&1
}
query() { as_user sqlite3 "$profile/$1" "$2"; }

visit one && visit two
check '[ "$(query History "SELECT count(*) FROM urls")" -ge 2 ]' \
    "Chromium recorded no history: $(tail -n 3 "$work"/chromium-*.log)"
cp "$profile/Preferences" "$work/Preferences.before"
builtin_engines=$(query "Web Data" "SELECT count(*) FROM keywords WHERE date_created = 0")

as_user "$work/corvella-clean" --layout Linux --allow-home-access Chromium history favicons webpage forms \
    downloads websitePrefs searchEngines > "$work/clean.log" 2>&1
rc=$?
check '[ $rc = 0 ] && grep -q "removed from Chromium" "$work/clean.log"' \
    "corvella-clean failed: rc $rc, $(cat "$work/clean.log")"
check '[ "$(query History "PRAGMA integrity_check")" = ok ]' "History is damaged"
check '[ "$(query History "SELECT count(*) FROM urls") $(query History "SELECT count(*) FROM visits")" = "0 0" ]' \
    "visited pages are left in History"
check '[ "$(query "Web Data" "SELECT count(*) FROM keywords WHERE date_created = 0")" = "$builtin_engines" ]' \
    "the search engines that came with Chromium are gone"
check 'python3 - "$work/Preferences.before" "$profile/Preferences" <<PY
import json, sys
before = json.load(open(sys.argv[1]))
after = open(sys.argv[2], encoding="utf-8").read()
before.get("partition", {}).pop("per_host_zoom_levels", None)
before.get("profile", {}).get("content_settings", {}).pop("exceptions", None)
for key in ("cachedresults", "cachedresults_with_url"):
    before.get("zerosuggest", {}).pop(key, None)
before.get("prefetch", {}).get("search_prefetch", {}).pop("cache", None)
sys.exit(after != json.dumps(before, separators=(",", ":"), ensure_ascii=False))
PY' "Preferences changed beyond its per-site settings"

visit again
check 'grep -q "<body>again" "$work/chromium-again.log"' \
    "Chromium did not open the profile again: $(tail -n 3 "$work/chromium-again.log")"
check '[ "$(query History "SELECT count(*) FROM urls WHERE url LIKE '"'%/again.html'"'")" = 1 ]' \
    "Chromium records no history in the cleaned profile"
rm -rf "$home/.config/chromium" "$home/.cache/chromium" "$home/.config/corvella"
exit $fail
