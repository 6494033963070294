#!/bin/bash
# The agent's idle cost with Chromium and Firefox activated, against an idle Qt program measured in
# the same run: CPU time over SECONDS and resident memory, twice: headless (no display), and on a
# desktop (Xvfb, a private session bus and a stand-in tray host) with its tray item and the window
# closed (started at login, with "hideOnLaunch"), against an idle Qt Widgets program on the same display.
# Runs as the test user "corvella-test" (created when run as root), so no real settings change.
# Usage: bench/agent-idle.sh BIN_DIR [SECONDS]
set -eu
bin_dir=$(realpath "$1")
seconds=${2:-60}
user=corvella-test
[ "$(id -u)" = 0 ] || { echo "run as root: the benchmark uses the test user '$user'"; exit 1; }
id "$user" >/dev/null 2>&1 || useradd --create-home --shell /bin/sh "$user"
home=$(getent passwd "$user" | cut -d: -f6)
work=$(mktemp -d /tmp/corvella-bench.XXXXXX); chmod 755 "$work"
display=:$((190 + RANDOM % 50))
trap 'kill $(jobs -p) 2>/dev/null; rm -rf "$work"' EXIT
cp "$bin_dir/corvella" "$bin_dir/corvella-clean" "$bin_dir/bench-idle-baseline" \
    "$(dirname "$0")/../tests/integration/status-notifier-watcher.py" "$work/"
# The helper starts the agent at its installed place relative to itself.
install -d "$work/libexec/corvella" && ln -s . "$work/bin"
cp "$bin_dir/../libexec/corvella/corvella-login-helper" "$work/libexec/corvella/"
install -d -o "$user" "$home/.config/corvella"
cat > "$home/.config/corvella/com.tovanex.Corvella6.plist" <<PLIST
<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>isRunning</key><true/><key>firstRun</key><false/><key>showInMenu</key><true/><key>hideOnLaunch</key><true/>
<key>enabledBrowsers</key><array><string>org.chromium.Chromium</string><string>org.mozilla.firefox</string></array>
</dict></plist>
PLIST
chown "$user" "$home/.config/corvella/com.tovanex.Corvella6.plist"
# Access granted, as a user who has used Corvella has done: no permission panel waits at launch.
runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin "$work/corvella-clean" --allow-home-access --list >/dev/null

ticks=$(getconf CLK_TCK)
cpu_ms() { awk -v t="$ticks" '{print ($14 + $15) * 1000 / t}' "/proc/$1/stat"; }
rss_kb() { awk '/VmRSS/ {print $2}' "/proc/$1/status"; }
# The newest process of the test user with this name, waiting for it to appear.
newest() { for _ in $(seq 100); do pgrep -n -u "$user" -x "$1" && return; sleep 0.1; done; return 1; }

# measure LABEL CPU_TARGET RSS_TARGET ENV...: the agent and the baseline side by side, then the rows.
measure() {
    local label=$1 cpu_target=$2 rss_target=$3; shift 3
    runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin "$@" "$work/${start:-corvella}" 2>/dev/null &
    sleep 5; local agent; agent=$(newest corvella)
    runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin QT_QPA_PLATFORM="${platform:-offscreen}" "$@" \
        "$work/bench-idle-baseline" 2>/dev/null &
    sleep 3; local base; base=$(newest bench-idle-base)
    local a0 b0 a1 b1 ar br
    a0=$(cpu_ms "$agent"); b0=$(cpu_ms "$base")
    sleep "$seconds"
    a1=$(cpu_ms "$agent"); b1=$(cpu_ms "$base")
    ar=$(rss_kb "$agent"); br=$(rss_kb "$base")
    kill "$agent" "$base"; wait "$agent" "$base" 2>/dev/null || true
    awk -v l="$label" -v a=$((a1 - a0)) -v b=$((b1 - b0)) -v s="$seconds" -v ar="$ar" -v br="$br" \
        -v ct="$cpu_target" -v rt="$rss_target" 'BEGIN {
        printf "| idle agent %s, CPU over %d s | %d ms | idle Qt program %d ms | - | %s |\n", l, s, a, b, ct
        printf "| idle agent %s, resident memory | %.1f MB | idle Qt program %.1f MB | %.2f | %s |\n", l, ar/1024, br/1024, ar/br, rt }'
}

platform=offscreen measure "headless" "under 50 ms" "under 30 MB"

Xvfb "$display" -screen 0 1280x800x24 -nolisten tcp >/dev/null 2>&1 &
sleep 1
# The session bus lives as long as this script: the tray host on it, then the agent and the baseline.
{ read -r bus; read -r bus_pid; } < <(runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin \
    dbus-daemon --session --fork --print-address=1 --print-pid=1)
runuser -u "$user" -- env -i HOME="$home" DBUS_SESSION_BUS_ADDRESS="$bus" \
    /usr/bin/python3 "$work/status-notifier-watcher.py" >/dev/null 2>&1 &
sleep 0.5
# Started as at login, so the window stays closed ("hideOnLaunch").
start=libexec/corvella/corvella-login-helper platform=xcb measure "with tray, window closed" "under 50 ms" "under 45 MB" \
    DISPLAY="$display" DBUS_SESSION_BUS_ADDRESS="$bus"
kill "$bus_pid" 2>/dev/null || true
