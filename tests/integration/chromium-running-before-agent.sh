#!/bin/bash
# Real Chromium, already open when the agent starts (as when the desktop restores it at login):
# while it runs without a lock file, corvella-clean must refuse (exit 4) and touch nothing; when it
# quits, the agent must run twice for it.
# Usage: chromium-running-before-agent.sh BIN_DIR   (exit 77: skipped)
set -u
bin_dir=$1
chromium=/usr/bin/chromium needs=/usr/bin/chromium
. "$(dirname "$0")/test-user.sh"
cp "$bin_dir/corvella" "$bin_dir/corvella-clean" "$work/"

rm -rf "$home/.config/corvella" "$home/.config/chromium" "$home/.cache/chromium"
settings '<key>isRunning</key><true/><key>firstRun</key><false/><key>displayNotifications</key><false/>
<key>enabledBrowsers</key><array><string>org.chromium.Chromium</string></array>
<key>settings</key><dict><key>Chromium:cache</key><true/></dict>'

cat > "$work/scenario.sh" <<'SCENARIO'
#!/bin/bash
work=$1 chromium=$2
stamp() { while IFS= read -r line; do echo "$(date +%s%3N) $line"; done; }
"$chromium" --headless=new --no-sandbox --no-first-run --disable-gpu --remote-debugging-port=0 \
    about:blank > "$work/chromium.log" 2>&1 &
for _ in $(seq 100); do [ -e "$HOME/.config/chromium/SingletonLock" ] && break; sleep 0.1; done
sleep 1
main=$(pgrep -u "$(id -u)" -f -- "--remote-debugging-port=0" | while read -r p; do
    grep -qa -- "--type=" /proc/$p/cmdline || echo "$p"; done | head -n 1)
echo "$main" > "$work/chromium.pid"
# A browser does not always leave a lock file: the process alone must keep its files safe.
rm -f "$HOME/.config/chromium/SingletonLock"
"$work/corvella-clean" --allow-home-access Chromium cache > "$work/clean.log" 2>&1
echo $? > "$work/clean.rc"
"$work/corvella" 2>&1 | stamp > "$work/agent.log" &
sleep 3
kill -TERM "$main"
for _ in $(seq 100); do kill -0 "$main" 2>/dev/null || break; sleep 0.05; done
date +%s%3N > "$work/exit.time"
sleep 10
kill -TERM "$(pgrep -u "$(id -u)" -x corvella)"
sleep 1
exit 0
SCENARIO
chmod 755 "$work/scenario.sh"
chmod 777 "$work"
runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin \
    dbus-run-session -- "$work/scenario.sh" "$work" "$chromium" 2>/dev/null

check '[ -n "$(cat "$work/chromium.pid")" ]' "Chromium did not start: $(tail -5 "$work/chromium.log")"
check '[ "$(cat "$work/clean.rc")" = 4 ] && grep -q "Chromium is running" "$work/clean.log"' \
    "corvella-clean must exit 4 while Chromium runs without a lock file: rc $(cat "$work/clean.rc"), $(cat "$work/clean.log")"
exit_time=$(cat "$work/exit.time")
mapfile -t runs < <(grep "Corvella removal run for Chromium: Cache" "$work/agent.log" | cut -d' ' -f1)
check '[ ${#runs[@]} -eq 2 ]' "expected two removal runs after Chromium quit, saw ${#runs[@]}"
if [ ${#runs[@]} -eq 2 ]; then
    echo "runs at $((runs[0] - exit_time)) ms and $((runs[1] - exit_time)) ms after Chromium quit"
fi
if [ $fail != 0 ]; then
    echo "--- agent log"; cat "$work/agent.log"
fi
exit $fail
