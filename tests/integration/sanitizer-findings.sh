#!/bin/bash
# Prints the sanitizer reports in the log files of FOLDER and exits 1 when there is a finding: an
# AddressSanitizer, LeakSanitizer or UndefinedBehaviorSanitizer error, or an undefined-behaviour runtime
# error. What a sanitizer says of itself (LeakSanitizer failing to stop a thread that was exiting while
# the machine was busy, say) is shown as a note and is not a finding: counting it made CI fail at random.
# Usage: sanitizer-findings.sh FOLDER
shopt -s nullglob
found=0
for log in "$1"/*; do
    if grep -qE '^(==[0-9]+==)?ERROR: (Address|Leak|UndefinedBehavior)Sanitizer|: runtime error: ' "$log"; then
        cat "$log"
        found=1
    else
        sed 's/^/note (not a finding): /' "$log"
    fi
done
exit $found
