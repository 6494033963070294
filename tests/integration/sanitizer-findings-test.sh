#!/bin/bash
# Tells a sanitizer's finding from what it says of itself: logs as the sanitizers write them.
set -u
check=$(dirname "$0")/sanitizer-findings.sh
dir=$(mktemp -d); trap 'rm -rf "$dir"' EXIT
fail=0
expect() { # expect STATUS NAME TEXT
    rm -f "$dir"/*; printf '%s\n' "$3" > "$dir/asan.123"
    bash "$check" "$dir" >/dev/null; local got=$?
    [ $got = "$1" ] || { echo "FAIL: $2: exit $got, expected $1"; fail=1; }
}
expect 0 "a thread LeakSanitizer could not stop" "==4242==Unable to get registers from thread 4250."
expect 0 "the tracer's own failure" "==4242==LeakSanitizer has encountered a fatal error."
expect 1 "a use after free" "==4242==ERROR: AddressSanitizer: heap-use-after-free on address 0x6020"
expect 1 "a leak" "==4242==ERROR: LeakSanitizer: detected memory leaks"
expect 1 "undefined behaviour" "src/x.cpp:12:7: runtime error: signed integer overflow"
expect 1 "a finding after a warning" "==1==Unable to get registers from thread 2.
==1==ERROR: LeakSanitizer: detected memory leaks"
rm -f "$dir"/*
bash "$check" "$dir" >/dev/null || { echo "FAIL: no log is no finding"; fail=1; }
exit $fail
