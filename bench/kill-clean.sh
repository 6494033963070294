#!/bin/bash
# Kills corvella-clean at random moments of full runs on heavy profiles and checks that nothing is
# corrupt and the next run finishes the job (bench/kill_clean.py). Runs as the test user
# "corvella-test" (made when run as root), so no real settings or browser data are touched. The
# generated profiles are kept in /var/tmp/corvella-heavy-profiles, shared with heavy-profile.sh.
# Usage: bench/kill-clean.sh BIN_DIR [KILLS] [SCALE] [CHAIN]
set -eu
bin_dir=$(realpath "$1"); shift
kills=${1:-1000} scale=${2:-0.1} chain=${3:-4}
needs=/usr/bin/sqlite3
. "$(dirname "$0")/../tests/integration/test-user.sh"
templates=/var/tmp/corvella-heavy-profiles
install -d -o "$user" "$templates"
cp "$bin_dir/corvella-clean" "$work/"
cp "$(dirname "$0")"/heavy_profile.py "$(dirname "$0")"/heavy_run.py "$(dirname "$0")"/kill_clean.py "$work/"
cp -r "$(dirname "$0")/profiles" "$work/"
rm -rf "$home/.config/corvella"
as_user "$work/corvella-clean" --allow-home-access --list >/dev/null
as_user env KILL_SEED="${KILL_SEED:-1}" python3 "$work/kill_clean.py" "$work/corvella-clean" "$templates" "$kills" "$scale" "$chain"
