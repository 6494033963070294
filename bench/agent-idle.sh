#!/bin/bash
# The agent's idle cost with Chromium and Firefox activated, against an idle Qt application
# measured in the same run: CPU time over 60 s and resident memory, headless.
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
trap 'rm -rf "$work"' EXIT
cp "$bin_dir/corvella" "$bin_dir/bench-idle-baseline" "$work/"
install -d -o "$user" "$home/.config/corvella"
cat > "$home/.config/corvella/com.tovanex.Corvella6.plist" <<PLIST
<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>isRunning</key><true/><key>firstRun</key><false/>
<key>enabledBrowsers</key><array><string>org.chromium.Chromium</string><string>org.mozilla.firefox</string></array>
</dict></plist>
PLIST
chown "$user" "$home/.config/corvella/com.tovanex.Corvella6.plist"

ticks=$(getconf CLK_TCK)
cpu_ms() { awk -v t="$ticks" '{print ($14 + $15) * 1000 / t}' "/proc/$1/stat"; }
rss_kb() { awk '/VmRSS/ {print $2}' "/proc/$1/status"; }
as_user() { runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin QT_QPA_PLATFORM=offscreen "$@"; }

as_user "$work/corvella" 2>/dev/null & sleep 3; agent=$(pgrep -u "$user" -x corvella)
as_user "$work/bench-idle-baseline" 2>/dev/null & sleep 3; base=$(pgrep -u "$user" -x bench-idle-base)
a0=$(cpu_ms "$agent"); b0=$(cpu_ms "$base")
sleep "$seconds"
a1=$(cpu_ms "$agent"); b1=$(cpu_ms "$base")
ar=$(rss_kb "$agent"); br=$(rss_kb "$base")
kill "$agent" "$base"
awk -v a=$((a1 - a0)) -v b=$((b1 - b0)) -v s="$seconds" -v ar="$ar" -v br="$br" 'BEGIN {
    printf "| idle agent, CPU over %d s | %d ms | idle Qt program %d ms | - | under 50 ms |\n", s, a, b
    printf "| idle agent, resident memory | %.1f MB | idle Qt program %.1f MB | %.2f | under 30 MB |\n", ar/1024, br/1024, ar/br }'
