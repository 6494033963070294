#!/usr/bin/env python3
"""Full runs of corvella-clean on a home folder that is a small file system filled up to a few bytes
of free space (once before the run, or kept full throughout it), and with read-only files and
folders in the profiles. Each run must end by itself
(within two minutes), leave every database passing PRAGMA integrity_check and every JSON file and
property list parsing, keep the user's settings, and say on its log (standard error) what it could
not do whenever it left the profile other than a run with room leaves it. Once there is room again
(or the permissions are back), the next run finishes the job.

Runs in the home folder of the user who starts it, which full-disk.sh mounts as a small tmpfs.

Usage: full_disk.py CORVELLA_CLEAN WORK_FOLDER
"""
import os
import plistlib
import shutil
import stat
import subprocess
import sys
import threading

from heavy_run import BROWSERS, CATEGORIES, HERE, install
from kill_clean import HOME, SETTINGS, damage, differences, is_json, state, walk

FILLER = os.path.join(HOME, ".filler")
FREE_BYTES = (0, 512, 4096, 16384, 65536, 262144, 1048576, 4194304)
KEPT_FULL_BYTES = (0, 65536, 1048576)
# Made read-only in each profile, one per row: a folder of files to remove, a database, the profile.
READ_ONLY = {"Chromium": (".cache/chromium/Default/Cache", ".config/chromium/Default/History",
                          ".config/chromium/Default"),
             "Firefox": (None, None, None)}


def firefox_read_only():
    profile = next(os.path.dirname(p) for p in walk([".mozilla"]) if p.endswith("/places.sqlite"))
    cache = os.path.join(".cache/mozilla/firefox", os.path.basename(profile), "cache2")
    return cache, os.path.join(profile, "places.sqlite"), profile


class Filler:
    """Takes every byte of the file system but `free`; kept full, it takes what the run frees as
    well, as another program filling the disk would."""

    def __init__(self, free, kept_full):
        self.free, self.size, self.done = free, 0, threading.Event()
        self.file = open(FILLER, "wb")
        self.take()
        self.thread = threading.Thread(target=self.keep) if kept_full else None
        if self.thread:
            self.thread.start()

    def take(self):
        room = os.statvfs(HOME)
        more = room.f_bavail * room.f_frsize - self.free
        if more > 0:
            try:
                os.posix_fallocate(self.file.fileno(), self.size, more)
                self.size += more
            except OSError:
                pass  # another writer took it first

    def keep(self):
        while not self.done.wait(0.001):
            self.take()

    def close(self):
        self.done.set()
        if self.thread:
            self.thread.join()
        self.file.close()
        os.remove(FILLER)


def run(clean, browser):
    try:
        done = subprocess.run([clean, browser, *CATEGORIES], capture_output=True, text=True, timeout=120)
        return done.returncode, done.stderr
    except subprocess.TimeoutExpired:
        return "hung", ""


def settings():
    try:
        with open(os.path.join(SETTINGS, "com.tovanex.Corvella6.plist"), "rb") as f:
            return plistlib.load(f)
    except Exception as error:  # plistlib raises several kinds
        return f"unreadable: {error}"


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip().splitlines()[-1])
    clean, work = sys.argv[1], sys.argv[2]
    rows, failures = [], 0
    for browser, (kind, folders) in BROWSERS.items():
        template = os.path.join(work, f"{kind}-0.01")
        if not os.path.isdir(template):
            subprocess.run([sys.executable, os.path.join(HERE, "heavy_profile.py"), kind, template, "0.01"], check=True)
        install(template, folders)
        json_files = {p for p in walk(folders) if is_json(p)}
        if run(clean, browser)[0] != 0:
            sys.exit(f"a run of {browser} with room failed")
        reference, kept = state(folders), settings()
        read_only = READ_ONLY[browser] if browser == "Chromium" else firefox_read_only()
        cases = [(f"{free} bytes free", free, False, None) for free in FREE_BYTES]
        cases += [(f"kept full, {free} bytes free", free, True, None) for free in KEPT_FULL_BYTES]
        cases += [(f"read-only {path}", None, False, path) for path in read_only]
        for name, free, kept_full, locked in cases:
            install(template, folders)
            filler = Filler(free, kept_full) if free is not None else None
            if locked:
                full = os.path.join(HOME, locked)
                os.chmod(full, stat.S_IMODE(os.stat(full).st_mode) & ~0o222)
            status, log = run(clean, browser)
            if filler:
                filler.close()
            if locked:
                os.chmod(full, stat.S_IMODE(os.stat(full).st_mode) | 0o200)
            problems = damage(list(folders), json_files)
            if settings() != kept:
                problems.append("the settings changed")
            incomplete = bool(differences(state(folders), reference))
            if incomplete and not log.strip():
                problems.append("the run left work undone without a word")
            if status == "hung":
                problems.append("the run did not end")
            again, _ = run(clean, browser)
            left = differences(state(folders), reference)
            if again != 0 or left:
                problems.append(f"the next run with room did not finish the job: {left[:3]}")
            failures += bool(problems)
            lines = len(log.strip().splitlines())
            rows.append(f"{browser}, {name}: exit {status}, {'work left' if incomplete else 'complete'}, "
                        f"{lines} log lines{'; ' + '; '.join(problems) if problems else ''}")
            print("  " + rows[-1], flush=True)
    print(f"| full disk (0 B to 4 MiB free, once or kept full) and read-only files, Chromium and Firefox profiles | "
          f"{len(rows)} runs | "
          f"{failures} runs with a corrupt file, lost setting, silent failure, hang or unfinished next run |")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
