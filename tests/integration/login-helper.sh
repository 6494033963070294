#!/bin/bash
# Start at login, on a private session bus: with "loginStart" on, the agent writes a valid autostart
# entry; the entry's command starts the agent through the helper, the agent knows it was started at
# login, and the helper quits once the agent has launched; "loginStart" off removes the entry, also at
# the next start when it was switched off while no agent ran.
# Usage: login-helper.sh BIN_DIR   (exit 77: skipped)
set -u
bin_dir=$1
needs="/usr/bin/dbus-run-session /usr/bin/desktop-file-validate"
. "$(dirname "$0")/test-user.sh"
# The installed layout: the agent in bin, its helper in libexec.
install -d "$work/bin" "$work/libexec/corvella"
cp "$bin_dir/corvella" "$work/bin/"
cp "$bin_dir/../libexec/corvella/corvella-login-helper" "$work/libexec/corvella/"
chmod 777 "$work" # the user writes logs in it

loginStart() { settings "<key>loginStart</key><$1/><key>firstRun</key><false/><key>isRunning</key><false/>"; }
rm -rf "$home/.config/corvella" "$home/.config/autostart"
loginStart true

cat > "$work/scenario.sh" <<'SCENARIO'
#!/bin/bash
work=$1 entry=$HOME/.config/autostart/com.tovanex.Corvella6Helper.desktop
# Waits until the condition holds (at most 15 s).
wait_until() { for _ in $(seq 150); do eval "$1" && return 0; sleep 0.1; done; return 1; }

"$work/bin/corvella" > "$work/agent-1.log" 2>&1 &
agent=$!
wait_until '[ -s "$entry" ]' && cp "$entry" "$work/entry.desktop"
kill $agent; wait $agent

# What the desktop does at login: run the entry's command.
program=$(sed -n 's/^Exec="\(.*\)"$/\1/p' "$entry")
"$program" > "$work/agent-2.log" 2>&1 &
helper=$!
wait_until 'grep -q "corvella: running" "$work/agent-2.log"'
wait_until '! kill -0 $helper 2>/dev/null' && echo helper-quit
touch "$work/switch-off"
wait_until '[ ! -e "$entry" ]' && echo entry-removed
pkill -u "$(id -u)" -x corvella
wait_until '! pgrep -u "$(id -u)" -x corvella >/dev/null'
# Switched off while no agent ran, with the entry still there: the next start removes it.
mkdir -p "$(dirname "$entry")" && cp "$work/entry.desktop" "$entry"
"$work/bin/corvella" > "$work/agent-3.log" 2>&1 &
agent=$!
wait_until '[ ! -e "$entry" ]' && echo left-entry-removed
kill $agent; wait $agent
SCENARIO
chmod 755 "$work/scenario.sh"
# The settings change comes from outside the agent, as the preferences of another machine would.
( while [ ! -e "$work/switch-off" ]; do sleep 0.1; done; loginStart false ) &
switcher=$!
result=$(as_user timeout 60 dbus-run-session -- "$work/scenario.sh" "$work" 2>/dev/null)
kill $switcher 2>/dev/null

check '[ -s "$work/entry.desktop" ]' "no autostart entry was written: $(cat "$work/agent-1.log")"
check 'desktop-file-validate "$work/entry.desktop"' "the autostart entry is not valid: $(cat "$work/entry.desktop")"
check 'grep -q "^Exec=\"$work/libexec/corvella/corvella-login-helper\"$" "$work/entry.desktop"' \
    "the entry does not start the helper installed with the agent: $(cat "$work/entry.desktop" 2>/dev/null)"
check 'grep -q "running (started at login)" "$work/agent-2.log"' \
    "the agent did not know it was started at login: $(cat "$work/agent-2.log" 2>/dev/null)"
check '[[ $result == *helper-quit* ]]' "the helper did not quit after the agent launched"
check 'grep -qx entry-removed <<< "$result"' "\"loginStart\" off did not remove the entry"
check '[[ $result == *left-entry-removed* ]]' \
    "an entry left while \"loginStart\" was off did not go at the next start: $(cat "$work/agent-3.log" 2>/dev/null)"
exit $fail
