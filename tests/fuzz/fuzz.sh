#!/bin/bash
# Fuzzes one target for SECONDS, or for N inputs from seed 1 ("runs=N": the same inputs on every
# machine, however busy), from its seed corpus (new inputs go to a scratch folder, never into the
# sources). A finding is copied to regressions/NAME, which every later build replays.
# Usage: fuzz.sh TARGET FUZZ_DIR NAME SECONDS|runs=N
set -u
target=$1 fuzz_dir=$2 name=$3 limit=$4
case $limit in
    runs=*) limits=(-runs="${limit#runs=}" -seed=1) ;;
    *) limits=(-max_total_time="$limit") ;;
esac
work=$(mktemp -d); trap 'rm -rf "$work"' EXIT
mkdir "$work/corpus" "$work/findings"
mkdir -p "$fuzz_dir/regressions/$name"
"$target" "$work/corpus" "$fuzz_dir/corpus/$name" "$fuzz_dir/regressions/$name" "${limits[@]}" -timeout=10 -rss_limit_mb=2048 \
    -artifact_prefix="$work/findings/" -print_final_stats=1 >"$work/log" 2>&1
status=$?
grep -E '^stat::number_of_executed_units|^#[0-9]+ *DONE' "$work/log" | tail -2
for finding in "$work"/findings/*; do
    [ -e "$finding" ] || continue
    cp "$finding" "$fuzz_dir/regressions/$name/"
    echo "finding: $fuzz_dir/regressions/$name/$(basename "$finding")"
done
[ $status = 0 ] || tail -40 "$work/log"
exit $status
