#!/bin/bash
# Real profiles in the folders of the browsers Debian does not ship: its Chromium writes them into
# Brave's, Vivaldi's and Microsoft Edge's folders (--user-data-dir), Firefox ESR into a LibreWolf
# profile (--profile), each visiting a site of its own that keeps a cookie and local storage.
# corvella-clean for that browser's name, every category, leaves no file in the browser's data or
# cache folder that names the site (as it is, as UTF-16, or compressed), and the browser opens the
# profile again.
# Usage: other-browsers.sh BIN_DIR   (exit 77: skipped)
set -u
bin_dir=$1
needs="/usr/bin/chromium /usr/bin/firefox-esr"
. "$(dirname "$0")/test-user.sh"
cp "$bin_dir/corvella-clean" "$work/"
traces=$(dirname "$0")/../e2e/traces.py
categories="cookies databases flash silverlight cache history favicons webpage forms downloads
    websitePrefs searchEngines"
cat > "$work/page.html" <<'HTML'
<html><head><title>visit</title></head><body>
<script>
document.cookie = "sid=" + location.hostname + "; max-age=86400";
localStorage.setItem("seen", location.hostname);
document.body.append("stored");
</script></body></html>
HTML
chmod -R a+rX "$work"

# The pages, from the loopback; every "*.localhost" name reaches it, so each browser has a site of its own.
/usr/bin/python3 - "$work" > "$work/port" 2>/dev/null <<'PY' &
import functools, http.server, sys
handler = functools.partial(http.server.SimpleHTTPRequestHandler, directory=sys.argv[1])
server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
print(server.server_address[1], flush=True)
server.serve_forever()
PY
server=$!
on_exit="kill $server 2>/dev/null"
for _ in $(seq 50); do [ -s "$work/port" ] && break; sleep 0.1; done
port=$(cat "$work/port")

# clean NAME MARKER FOLDER...: files naming the marker before, corvella-clean, none after.
clean() {
    local name=$1 marker=$2
    shift 2
    local before after
    before=$(/usr/bin/python3 "$traces" "$marker" "$@" | wc -l)
    # shellcheck disable=SC2086 # the categories are words
    as_user "$work/corvella-clean" --allow-home-access "$name" $categories > "$work/clean.log" 2>&1
    check "grep -q 'removed from $name' '$work/clean.log'" "corvella-clean $name: $(cat "$work/clean.log")"
    after=$(/usr/bin/python3 "$traces" "$marker" "$@")
    echo "$name: $before files named $marker before the clean, $(grep -c . <<< "$after") after"
    check '[ "$before" -gt 0 ]' "$name: the browser left no trace of $marker to clean"
    check '[ -z "$after" ]' "$name: files still name $marker: $after"
}

rm -rf "$home/.config" "$home/.cache" "$home/.librewolf"
install -d -o "$user" "$home/.config" "$home/.cache"
for browser in "Brave:BraveSoftware/Brave-Browser" "Vivaldi:vivaldi" "Microsoft Edge:microsoft-edge"; do
    name=${browser%%:*} folder=${browser#*:}
    site=$(tr 'A-Z ' 'a-z-' <<< "$name")-trail.localhost
    chromium() {
        as_user timeout 90 /usr/bin/chromium --headless=new --no-sandbox --no-first-run --disable-gpu \
            --user-data-dir="$home/.config/$folder" --dump-dom "http://$site:$port/page.html"
    }
    chromium > "$work/visit.log" 2>&1
    check 'grep -q "stored" "$work/visit.log"' "$name: the page did not run: $(tail -n 3 "$work/visit.log")"
    clean "$name" "$site" "$home/.config/$folder" "$home/.cache/$folder"
    chromium > "$work/again.log" 2>&1
    check 'grep -q "stored" "$work/again.log"' \
        "$name: Chromium did not open the cleaned profile: $(tail -n 3 "$work/again.log")"
done

site=librewolf-trail.localhost
profile=$home/.librewolf/test.default
install -d -o "$user" "$home/.librewolf" "$profile"
firefox() {
    as_user timeout 90 /usr/bin/firefox-esr --headless --no-remote --profile "$profile" \
        --screenshot "$work/$1.png" "http://$site:$port/page.html" > "$work/$1.log" 2>&1
}
chmod 777 "$work" # Firefox writes its screenshots there
firefox visit
check '[ -s "$work/visit.png" ]' "LibreWolf: Firefox did not load the page: $(tail -n 3 "$work/visit.log")"
clean LibreWolf "$site" "$home/.librewolf" "$home/.cache/librewolf"
firefox again
check '[ -s "$work/again.png" ]' "LibreWolf: Firefox did not open the cleaned profile: $(tail -n 3 "$work/again.log")"
rm -rf "$home/.config" "$home/.cache" "$home/.librewolf"
exit $fail
