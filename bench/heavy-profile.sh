#!/bin/bash
# Full runs on heavy Chromium and Firefox profiles at 1 %, 10 % and 100 % of their full size, against
# rm -rf and the sqlite3 shell doing the same work in the same run (bench/heavy_run.py). Runs as the
# test user "corvella-test" (made when run as root), so no real settings or browser data are touched.
# The generated profiles are kept in /var/tmp/corvella-heavy-profiles for the next run.
# CORVELLA_BENCH_KEPT=N keeps N of the profiles' sites (row-by-row cleaning).
# Usage: bench/heavy-profile.sh BIN_DIR [ROUNDS] [SCALE ...]
set -eu
bin_dir=$(realpath "$1"); shift
rounds=${1:-5}; shift || true
scales=${*:-0.01 0.1 1}
needs=/usr/bin/sqlite3
. "$(dirname "$0")/bench-user.sh"
rm -rf "$home/.config/corvella"
as_user "$work/corvella-clean" --allow-home-access --list >/dev/null
# shellcheck disable=SC2086
as_user python3 "$work/heavy_run.py" "$work/corvella-clean" "$templates" "$rounds" "${CORVELLA_BENCH_KEPT:-0}" $scales
