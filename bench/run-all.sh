#!/bin/bash
# `make bench`: every benchmark, then one table of their figures, each measured against a baseline
# in the same run (these machines are shared and noisy, so only the ratios travel).
# Usage: bench/run-all.sh BIN_DIR
set -u
bin_dir=$1
here=$(dirname "$0")
log=$(mktemp)
trap 'rm -f "$log"' EXIT
{
    set -e
    "$bin_dir/bench-quit-latency" 30
    bash "$here/agent-idle.sh" "$bin_dir" 60
    "$bin_dir/bench-remove-tree" 3
    bash "$here/cache-clean.sh" "$bin_dir" 3
    "$bin_dir/bench-secure-delete" 5
    bash "$here/heavy-profile.sh" "$bin_dir" 5 0.01 0.1 1
    CORVELLA_BENCH_KEPT=1000 bash "$here/heavy-profile.sh" "$bin_dir" 3 1
} 2>&1 | tee "$log"
status=${PIPESTATUS[0]}
echo
echo "Benchmarks, $(date +%F), $(nproc) cores, $(awk -F': ' '/model name/ { print $2; exit }' /proc/cpuinfo)"
echo
echo "| measure | Corvella | baseline in the same run | ratio | target |"
echo "|---|---|---|---|---|"
grep '^| ' "$log"
exit "$status"
