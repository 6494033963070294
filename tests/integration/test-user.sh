# Sourced by the integration tests: the dedicated test user "corvella-test" (made when missing; the
# agent works in the real home folder, so the tests never run as the developer), its home folder in
# $home, and a scratch folder in $work that every user can enter, removed on exit; and the helpers
# as_user and check.
# Exits 77 (skipped) unless run as root, or when a program named in $needs is not installed.
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
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"

# Runs a command as the test user, with a clean environment.
as_user() { runuser -u "$user" -- env -i HOME="$home" PATH=/usr/bin:/bin "$@"; }
# check CONDITION MESSAGE: prints the message and marks the test failed when the condition is false.
fail=0
check() { if ! eval "$1"; then echo "FAIL: $2"; fail=1; fi; }
