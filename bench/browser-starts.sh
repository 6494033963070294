#!/bin/bash
# Starts the real Chromium in the middle of corvella-clean runs and measures what the run changed
# afterwards (bench/browser_starts.py). Runs as the test user "corvella-test" (made when run as root;
# CORVELLA_TEST_USER names another), so no real settings or browser data are touched.
# Usage: bench/browser-starts.sh BIN_DIR [TRIALS]
set -eu
bin_dir=$(realpath "$1")
trials=${2:-50}
needs="/usr/bin/sqlite3 /usr/bin/strace /usr/lib/chromium/chromium"
. "$(dirname "$0")/bench-user.sh"
rm -rf "$home/.config/corvella"
as_user "$work/corvella-clean" --allow-home-access --list >/dev/null
as_user python3 "$work/browser_starts.py" "$work/corvella-clean" "$templates" "$trials"
