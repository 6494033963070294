# Sourced by the benchmarks that run corvella-clean on generated profiles: the test user (see
# tests/integration/test-user.sh), the folder $templates where its generated profiles are kept for the
# next run (another user's in a folder of its own), and corvella-clean, the Python tools and the
# profile data copied to $work. Needs $bin_dir.
. "$(dirname "${BASH_SOURCE[0]}")/../tests/integration/test-user.sh"
templates=/var/tmp/corvella-heavy-profiles
[ "$user" = corvella-test ] || templates=$templates-$user
install -d -o "$user" "$templates"
cp "$bin_dir/corvella-clean" "$(dirname "${BASH_SOURCE[0]}")"/*.py "$work/"
cp -r "$(dirname "${BASH_SOURCE[0]}")/profiles" "$work/"
