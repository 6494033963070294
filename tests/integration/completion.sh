#!/bin/bash
# The bash completion of corvella-clean offers what its parser accepts: options, every browser
# (quoted when its name has a space), the categories after a browser, and the layouts.
# Usage: completion.sh SOURCE_DIR BIN_DIR
set -u
export LC_ALL=C LANGUAGE= # the English texts of --help
source /usr/share/bash-completion/bash_completion
source "$1/resources/completion/corvella-clean.bash"
clean=$2/corvella-clean
fail=0
# complete LINE: what completing the last word of LINE offers, sorted, on one line.
complete_line() {
    COMP_LINE=$1 COMP_POINT=${#1}
    read -ra COMP_WORDS <<< "$1"
    [[ $1 == *' ' ]] && COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    _corvella_clean
    printf '%s\n' "${COMPREPLY[@]}" | sort | tr '\n' ' ' | sed 's/ $//'
}
expect() { # LINE EXPECTED
    local got; got=$(complete_line "$1")
    [[ $got == "$2" ]] || { echo "FAIL: \"$1\" offers \"$got\", expected \"$2\""; fail=1; }
}
categories=$("$clean" --help | sed -n 's/^CATEGORY: \(.*\) (.*/\1/p' | tr -d ',' | tr ' ' '\n' | sort | tr '\n' ' ' | sed 's/ $//')
browsers=$("$clean" --help | sed -n 's/^BROWSER: //p')
[[ -n $categories && -n $browsers ]] || { echo "FAIL: --help names no browsers or categories"; exit 1; }
expect "corvella-clean --p" "--preview"
expect "corvella-clean --layout " "Linux macOS"
expect "corvella-clean G" 'Google\ Chrome Google\ Chrome\ Beta Google\ Chrome\ Dev'
expect "corvella-clean " "$(sed 's/, /\n/g; s/ /\\ /g' <<< "$browsers" | sort | tr '\n' ' ' | sed 's/ $//')"
expect "corvella-clean --preview Firefox " "$categories"
expect "corvella-clean --layout macOS Safari coo" "cookies"
expect "corvella-clean --layout macOS S" "Safari"
expect "corvella-clean S" ""
expect "corvella-clean --list " ""
expect "corvella-clean --keep " ""
expect "corvella-clean --keep mail.example Fi" "Firefox"
for word in $(complete_line "corvella-clean --"); do
    "$clean" --help | grep -q -- "$word\b" || { echo "FAIL: the completion offers $word, which --help does not name"; fail=1; }
done
exit $fail
