#!/bin/bash
# A new user's first start, as a screen reader drives it: the real agent under Xvfb on a private
# session bus with the accessibility bus, Chromium installed, no access granted. Pressing the tile
# named after Chromium asks for the home folder; pressing the request's "Allow" grants it, and
# Chromium is activated (its tile says "protected", the settings name it).
# Usage: first-run-a11y.sh BIN_DIR   (exit 77: skipped)
set -u
bin_dir=$1
needs="/usr/bin/Xvfb /usr/bin/dbus-run-session /usr/libexec/at-spi-bus-launcher /usr/bin/chromium"
/usr/bin/python3 -c 'import pyatspi' 2>/dev/null || { echo "SKIP: python3-pyatspi is not installed (make test installs it)"; exit 77; }
. "$(dirname "$0")/test-user.sh"
cp "$bin_dir/corvella" "$integration_dir/first-run-a11y.py" "$work/"
rm -rf "$home/.config/corvella" "$home/.config/autostart"
chmod 777 "$work" # the agent writes its log there

start_xvfb 1366x768

cat > "$work/scenario.sh" <<'SCENARIO'
#!/bin/bash
work=$1
/usr/libexec/at-spi-bus-launcher --launch-immediately >/dev/null 2>&1 &
bus=$!
sleep 0.5
QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 "$work/corvella" > "$work/agent.log" 2>&1 &
agent=$!
timeout 60 /usr/bin/python3 "$work/first-run-a11y.py"
kill $agent; wait $agent
kill $bus 2>/dev/null; wait $bus 2>/dev/null # nothing outlives the bus
SCENARIO
chmod 755 "$work/scenario.sh"
result=$(runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin DISPLAY="$display" LANG=C.UTF-8 \
    timeout 90 dbus-run-session -- "$work/scenario.sh" "$work" 2>&1)
echo "$result"
settings=$home/.config/corvella/com.tovanex.Corvella6.plist
check '[[ $result == *"tile: Chromium, not protected"* ]]' "no tile named after Chromium: $(cat "$work/agent.log")"
check '[[ $result == *"request text: "*"$home"* ]]' "the request does not name the home folder"
check '[[ $result == *"window after: Corvella is "* ]]' "the window still says it has no access"
check '[[ $result == *"tile after: Chromium, protected"* ]]' "Chromium was not activated: $(cat "$work/agent.log")"
check 'grep -q "org.chromium.Chromium" "$settings"' "the settings do not name Chromium"
check 'grep -q "<key>bd_" "$settings"' "no access grant was stored"
exit $fail
