# Sourced by the integration tests: the dedicated test user "corvella-test" (made when missing; the
# agent works in the real home folder, so the tests never run as the developer), its home folder in
# $home, and a scratch folder in $work that every user can enter, removed on exit (after $on_exit,
# a script's own clean-up); and the helpers as_user and check. What a sanitizer (a SANITIZE=1 build)
# finds in a program run as the test user fails the test, even when the program ran in the background.
# Exits 77 (skipped) unless run as root, or when a program named in $needs is not installed.
integration_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
for program in ${needs:-}; do
    [ -x "$program" ] || { echo "SKIP: $program is not installed (make test installs it)"; exit 77; }
done
# CORVELLA_TEST_USER names another (a long benchmark can then run beside the tests).
user=${CORVELLA_TEST_USER:-corvella-test}
if [ "$(id -u)" != 0 ]; then
    echo "SKIP: needs root to create the test user '$user' (the agent works in the real home folder)"
    exit 77
fi
id "$user" >/dev/null 2>&1 || useradd --create-home --shell /bin/sh "$user" || exit 1
home=$(getent passwd "$user" | cut -d: -f6)
work=$(mktemp -d /tmp/corvella-test.XXXXXX)
chmod 755 "$work"
findings=$work/sanitizer-findings
install -d -o "$user" "$findings"
finish() {
    local status=$?
    if ! bash "$integration_dir/sanitizer-findings.sh" "$findings"; then
        echo "FAIL: a sanitizer found the fault above"
        status=1
    fi
    eval "${on_exit:-}"
    rm -rf "$work"
    exit $status
}
trap finish EXIT

# Runs a command as the test user, with a clean environment but for where sanitizers report.
as_user() {
    runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin ASAN_OPTIONS="log_path=$findings/asan" \
        UBSAN_OPTIONS="log_path=$findings/ubsan:print_stacktrace=1" "$@"
}
# check CONDITION MESSAGE: prints the message and marks the test failed when the condition is false.
fail=0
check() { if ! eval "$1"; then echo "FAIL: $2"; fail=1; fi; }

# start_xvfb WIDTHxHEIGHT: an X server on a display no other program uses (Xvfb picks it and says
# which), in $display; it stops on exit, after $on_exit.
start_xvfb() {
    Xvfb -displayfd 3 -screen 0 "$1x24" -nolisten tcp 3> "$work/xvfb.display" >/dev/null 2>&1 &
    xvfb=$!
    on_exit="kill $xvfb 2>/dev/null; ${on_exit:-}"
    for _ in $(seq 100); do
        [ -s "$work/xvfb.display" ] && break
        sleep 0.1
    done
    display=:$(head -n 1 "$work/xvfb.display")
    [ "$display" != : ] || { echo "FAIL: Xvfb did not start"; exit 1; }
}

# settings 'KEYS AND VALUES': the test user's settings file, holding them, put in place at once (a move
# by the user, as an editor saves).
settings() {
    install -d -o "$user" "$home/.config" "$home/.config/corvella"
    printf '<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0"><dict>\n%s\n</dict></plist>\n' "$1" |
        as_user tee "$home/.config/.corvella-settings.new" > /dev/null
    as_user mv "$home/.config/.corvella-settings.new" "$home/.config/corvella/com.tovanex.Corvella6.plist"
}
