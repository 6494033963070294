#!/bin/bash
# corvella-clean "Google Chrome" cache on a profile whose cache holds 100,000 files in 5,000 folders,
# against rm -rf of an identical tree in the same run; the order alternates between rounds and the
# median ratio is printed (target: at most 1.10). Runs as the test user "corvella-test" (made when
# run as root), so no real settings or browser data are touched.
# Usage: bench/cache-clean.sh BIN_DIR [ROUNDS]
set -eu
bin_dir=$(realpath "$1")
rounds=${2:-1}
[ "$(id -u)" = 0 ] || { echo "run as root: the benchmark uses the test user 'corvella-test'"; exit 1; }
. "$(dirname "$0")/../tests/integration/test-user.sh"
cp "$bin_dir/corvella-clean" "$work/"

build_tree() { # FOLDER: 50 x 100 folders of 20 files each
    runuser -u "$user" -- python3 - "$1" <<'PY'
import os, sys
root = sys.argv[1]
for t in range(50):
    for f in range(100):
        folder = os.path.join(root, "t%d" % t, "f%d" % f)
        os.makedirs(folder, exist_ok=True)
        for n in range(20):
            with open(os.path.join(folder, "data_%d" % n), "w") as out:
                out.write("cache entry")
PY
    sync
}
now() { date +%s%N; }

runuser -u "$user" -- mkdir -p "$home/.config/google-chrome/Default" "$home/.config/corvella"
echo '{"profile":{"info_cache":{"Default":{"name":"Bench"}}}}' | runuser -u "$user" -- tee "$home/.config/google-chrome/Local State" >/dev/null
runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin "$work/corvella-clean" --allow-home-access --list >/dev/null

ratios=(); ours_all=(); tool_all=()
for round in $(seq "$rounds"); do
    cache="$home/.cache/google-chrome/Default/Cache"
    baseline="$home/bench-baseline"
    build_tree "$cache"; build_tree "$baseline"
    clean() { runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin "$work/corvella-clean" --layout Linux "Google Chrome" cache >/dev/null 2>&1; }
    remove() { runuser -u "$user" -- rm -rf "$baseline"; }
    if [ $((round % 2)) = 1 ]; then
        t0=$(now); clean; t1=$(now); remove; t2=$(now); ours=$((t1 - t0)); tool=$((t2 - t1))
    else
        t0=$(now); remove; t1=$(now); clean; t2=$(now); tool=$((t1 - t0)); ours=$((t2 - t1))
    fi
    [ ! -e "$cache" ] || { echo "the cache was not removed"; exit 1; }
    ours_all+=("$ours"); tool_all+=("$tool")
    ratios+=("$(awk -v a="$ours" -v b="$tool" 'BEGIN { printf "%.3f", a / b }')")
    awk -v a="$ours" -v b="$tool" 'BEGIN { printf "round: corvella-clean %.2f s, rm -rf %.2f s\n", a / 1e9, b / 1e9 }'
done
median() { printf '%s\n' "$@" | sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
awk -v r="$rounds" -v a="$(median "${ours_all[@]}")" -v b="$(median "${tool_all[@]}")" -v q="$(median "${ratios[@]}")" \
    'BEGIN { printf "| corvella-clean \"Google Chrome\" cache, 100,000 files, median of %d | %.2f s | rm -rf %.2f s | %.2f | at most 1.10 |\n", r, a / 1e9, b / 1e9, q }'
