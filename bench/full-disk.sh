#!/bin/bash
# Full runs of corvella-clean on a home folder that is a small file system, filled up, and with
# read-only files (bench/full_disk.py). Runs as the test user "corvella-test" (made when run as root;
# CORVELLA_TEST_USER names another), whose home folder is a 96 MiB tmpfs for the run.
# Usage: bench/full-disk.sh BIN_DIR
set -eu
bin_dir=$(realpath "$1")
needs=/usr/bin/sqlite3
. "$(dirname "$0")/bench-user.sh"
mount -t tmpfs -o "size=96m,mode=0755,uid=$(id -u "$user"),gid=$(id -g "$user")" tmpfs "$home"
on_exit='umount -l "$home"'
as_user "$work/corvella-clean" --allow-home-access --list >/dev/null
as_user python3 "$work/full_disk.py" "$work/corvella-clean" "$templates"
