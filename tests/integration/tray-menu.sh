#!/bin/bash
# The real agent under Xvfb on a private session bus with a stand-in tray host: its status item
# registers as a StatusNotifierItem, and the run-state entry of its exported menu reads "Please activate
# a Browser", then "Disable Corvella" once another program activates Firefox and switches protection on
# in the settings, and "Enable Corvella" once protection is switched off there. Its icon stands out on a
# dark panel and on a light one alike (light and dark pixels), where no symbolic icon is installed.
# Usage: tray-menu.sh BIN_DIR   (exit 77: skipped)
set -u
bin_dir=$1
needs="/usr/bin/Xvfb /usr/bin/dbus-run-session"
. "$(dirname "$0")/test-user.sh"
cp "$bin_dir/corvella" "$bin_dir/corvella-clean" "$(dirname "$0")/status-notifier-watcher.py" "$work/"

protection() { # ISRUNNING [BROWSER]
    settings "<key>isRunning</key><$1/><key>firstRun</key><false/><key>showInMenu</key><true/>
<key>enabledBrowsers</key><array>${2:+<string>$2</string>}</array>"
}
chmod 777 "$work" # the scenario writes its logs in it
rm -rf "$home/.config/corvella"
protection false
as_user "$work/corvella-clean" --allow-home-access --list >/dev/null # granted before: no panel at launch

start_xvfb 1024x768

cat > "$work/scenario.sh" <<'SCENARIO'
#!/bin/bash
work=$1
/usr/bin/python3 "$work/status-notifier-watcher.py" > "$work/watcher.log" 2>"$work/watcher.err" &
watcher=$!
for _ in $(seq 100); do grep -q ready "$work/watcher.err" && break; sleep 0.1; done
"$work/corvella" > "$work/agent.log" 2>&1 &
agent=$!
# Waits until the watcher has printed a line matching the pattern (at most 15 s).
wait_for() { for _ in $(seq 150); do grep -q "$1" "$work/watcher.log" && return 0; sleep 0.1; done; return 1; }
wait_for '^menu: Please activate a Browser' && echo inactive-seen
touch "$work/switch-on"; wait_for '^menu: Disable Corvella' && echo on-seen
touch "$work/switch-off"; sleep 0.2; tail -n 1 "$work/watcher.log" | grep -q 'Disable' && sleep 1
wait_for_last() { for _ in $(seq 150); do tail -n 1 "$work/watcher.log" | grep -q "$1" && return 0; sleep 0.1; done; return 1; }
wait_for_last '^menu: Enable Corvella' && echo off-again-seen
kill $agent $watcher; wait $agent $watcher # nothing outlives the bus
SCENARIO
chmod 755 "$work/scenario.sh"
# The settings change comes from outside the agent, as another program's write would.
( while [ ! -e "$work/switch-on" ]; do sleep 0.1; done; protection true org.mozilla.firefox
  while [ ! -e "$work/switch-off" ]; do sleep 0.1; done; protection false org.mozilla.firefox ) &
switcher=$!
as_user_display() { runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin DISPLAY="$display" "$@"; }
result=$(as_user_display timeout 60 dbus-run-session -- "$work/scenario.sh" "$work" 2>/dev/null)
kill $switcher 2>/dev/null

check 'grep -q "^registered: " "$work/watcher.log"' "the status item did not register: $(cat "$work/agent.log")"
check '[[ $result == *inactive-seen* ]]' "the menu did not read \"Please activate a Browser\": $(cat "$work/watcher.log")"
check '[[ $result == *on-seen* ]]' "the menu did not follow activation made outside the window: $(cat "$work/watcher.log")"
check '[[ $result == *off-again-seen* ]]' "the menu did not go back to \"Enable Corvella\": $(cat "$work/watcher.log")"
check 'grep -q "Quit Corvella" "$work/watcher.log"' "the menu has no Quit entry: $(cat "$work/watcher.log")"
icon=$(grep -m1 '^icon: ' "$work/watcher.log")
light=$(sed -n 's/.* light=\([0-9]*\).*/\1/p' <<<"$icon"); dark=$(sed -n 's/.* dark=\([0-9]*\).*/\1/p' <<<"$icon")
check '[ "${light:-0}" -ge 40 ] && [ "${dark:-0}" -ge 40 ]' "the tray icon would vanish on a light or a dark panel: ${icon:-no icon}"
exit $fail
