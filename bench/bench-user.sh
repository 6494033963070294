# Sourced by the benchmarks that run corvella-clean on generated profiles: the test user (see
# tests/integration/test-user.sh), the folder $templates where its generated profiles are kept for the
# next run (another user's in a folder of its own), and corvella-clean, the Python tools and the
# profile data copied to $work. One tool at a time per user. Needs $bin_dir.
. "$(dirname "${BASH_SOURCE[0]}")/../tests/integration/test-user.sh"
templates=/var/tmp/corvella-heavy-profiles
[ "$user" = corvella-test ] || templates=$templates-$user
install -d -o "$user" "$templates"
# Two tools in one home would install profiles under each other's runs and report their corruption.
exec 9>"$templates/.in-use"
flock -n 9 || { echo "another benchmark is using $user's home; CORVELLA_TEST_USER names another user"; exit 1; }
cp "$bin_dir/corvella-clean" "$(dirname "${BASH_SOURCE[0]}")"/*.py "$work/"
cp -r "$(dirname "${BASH_SOURCE[0]}")/profiles" "$work/"
