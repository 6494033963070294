#!/bin/bash
# Starts the real Chromium in the middle of corvella-clean runs and measures what the run changed
# afterwards (bench/browser_starts.py). Runs as the test user "corvella-test" (made when run as root;
# CORVELLA_TEST_USER names another), so no real settings or browser data are touched.
# Usage: bench/browser-starts.sh BIN_DIR [TRIALS]
set -eu
bin_dir=$(realpath "$1")
trials=${2:-50}
needs="/usr/bin/sqlite3 /usr/bin/strace /usr/lib/chromium/chromium"
. "$(dirname "$0")/../tests/integration/test-user.sh"
templates=/var/tmp/corvella-heavy-profiles
[ "$user" = corvella-test ] || templates=$templates-$user
install -d -o "$user" "$templates"
cp "$bin_dir/corvella-clean" "$work/"
cp "$(dirname "$0")"/heavy_profile.py "$(dirname "$0")"/heavy_run.py "$(dirname "$0")"/kill_clean.py \
    "$(dirname "$0")"/browser_starts.py "$work/"
cp -r "$(dirname "$0")/profiles" "$work/"
rm -rf "$home/.config/corvella"
as_user "$work/corvella-clean" --allow-home-access --list >/dev/null
as_user python3 "$work/browser_starts.py" "$work/corvella-clean" "$templates" "$trials"
