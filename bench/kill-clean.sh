#!/bin/bash
# Kills corvella-clean at random moments of full runs on heavy profiles and checks that nothing is
# corrupt and the next run finishes the job (bench/kill_clean.py). Runs as the test user
# "corvella-test" (made when run as root; CORVELLA_TEST_USER names another), so no real settings or
# browser data are touched. The generated profiles are kept in /var/tmp/corvella-heavy-profiles,
# shared with heavy-profile.sh (another user's in a folder of its own).
# Usage: bench/kill-clean.sh BIN_DIR [KILLS] [SCALE] [CHAIN]
set -eu
bin_dir=$(realpath "$1"); shift
kills=${1:-1000} scale=${2:-0.1} chain=${3:-4}
needs=/usr/bin/sqlite3
. "$(dirname "$0")/bench-user.sh"
rm -rf "$home/.config/corvella"
as_user "$work/corvella-clean" --allow-home-access --list >/dev/null
# A killed program cannot finish a leak check, and one that ends as it is killed may be stopped inside it.
as_user env ASAN_OPTIONS="log_path=$findings/asan:detect_leaks=0" KILL_SEED="${KILL_SEED:-1}" python3 "$work/kill_clean.py" "$work/corvella-clean" "$templates" "$kills" "$scale" "$chain"
