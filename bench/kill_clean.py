#!/usr/bin/env python3
"""Kills corvella-clean with SIGKILL at random moments of full runs on heavy Chromium and Firefox
profiles, and checks what a kill leaves: every SQLite database passes PRAGMA integrity_check, every
JSON file and property list parses, and the next run finishes the job (the profile ends exactly as
one uninterrupted run leaves it: the same files, the same rows in every table, the same JSON, no
temporary file of ours and no journal without its database).

Kills come in chains: a fresh profile is killed CHAIN times in a row (each run continuing what the
last one left), then a run to the end is compared with the uninterrupted reference. Each kill moment
is drawn uniformly from the length of an uninterrupted run. A corrupt database's files are kept, as
the kill left them, in WORK_FOLDER/corrupt/kill-N/. Runs in the home folder of the user who starts it
(the benchmark's own test user: see kill-clean.sh).

Usage: kill_clean.py CORVELLA_CLEAN WORK_FOLDER KILLS SCALE [CHAIN]
"""
import json
import os
import plistlib
import random
import re
import shutil
import signal
import sqlite3
import subprocess
import sys
import time

from heavy_run import BROWSERS, CATEGORIES, HERE, install, is_database

HOME = os.environ["HOME"]
SETTINGS = os.path.join(HOME, ".config/corvella")
JOURNALS = ("-wal", "-shm", "-journal")
OUR_TEMPORARY = re.compile(r"^\..+\.corvella-[A-Za-z0-9]{6}$")
JSON_NAMES = ("Local State", "Preferences", "Secure Preferences")


def walk(folders):
    """Every file below the folders, as paths relative to the home."""
    for folder in folders:
        for base, _, files in os.walk(os.path.join(HOME, folder)):
            for name in files:
                yield os.path.relpath(os.path.join(base, name), HOME)


def is_json(path):
    return path.endswith(".json") or os.path.basename(path) in JSON_NAMES


def integrity(path):
    """SQLite's verdict on a database, opened as a browser opens it (a hot journal is rolled back)."""
    try:
        with sqlite3.connect(os.path.join(HOME, path), timeout=10) as db:
            return db.execute("PRAGMA integrity_check").fetchone()[0]
    except sqlite3.Error as error:
        return str(error)


def row_counts(path):
    with sqlite3.connect(os.path.join(HOME, path), timeout=10) as db:
        tables = [r[0] for r in db.execute("SELECT name FROM sqlite_master WHERE type = 'table'")]
        return {t: db.execute(f'SELECT count(*) FROM "{t}"').fetchone()[0] for t in tables}


def state(folders):
    """What a finished job leaves: each file, with its rows or JSON. The files inside a LevelDB store
    are named by its compactions, which differ from run to run, so only the store is compared."""
    found = {}
    for path in walk(folders):
        folder = os.path.dirname(path)
        if path.endswith(JOURNALS):
            continue
        if os.path.exists(os.path.join(HOME, folder, "CURRENT")):
            found[folder] = "leveldb"
        elif is_database(os.path.join(HOME, path)):
            found[path] = row_counts(path)
        elif is_json(path):
            with open(os.path.join(HOME, path), "rb") as f:
                found[path] = json.load(f)
        else:
            found[path] = "file"
    return found


def snapshot(full, folder):
    """Copies a database and its journals as they are: opening it plays and removes its log."""
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    for suffix in ("", *JOURNALS):
        if os.path.exists(full + suffix):
            shutil.copy2(full + suffix, folder)


def damage(folders, json_files, keep=None):
    """What is wrong after a kill: corrupt databases, unparsable JSON or property lists. With keep, a
    corrupt database's files are kept in that folder as the kill left them."""
    problems = []
    stage = keep and os.path.join(os.path.dirname(keep), "last")
    for path in walk([*folders, os.path.relpath(SETTINGS, HOME)]):
        full = os.path.join(HOME, path)
        if path.endswith(JOURNALS) or OUR_TEMPORARY.match(os.path.basename(path)):
            continue
        elif is_database(full):
            # The check leaves a database without a log as it found it: only one with a log is copied
            # before it, any other only when found corrupt.
            copied = stage and any(os.path.exists(full + suffix) for suffix in JOURNALS)
            if copied:
                snapshot(full, stage)
            verdict = integrity(path)
            if verdict != "ok":
                problems.append(f"database {path}: {verdict}")
                if stage:
                    if not copied:
                        snapshot(full, stage)
                    kept = os.path.join(keep, os.path.basename(path))
                    os.makedirs(keep, exist_ok=True)
                    os.rename(stage, kept)
                    problems[-1] += f" (as the kill left it: {kept})"
        elif path in json_files:
            try:
                with open(full, "rb") as f:
                    json.load(f)
            except (OSError, ValueError) as error:
                problems.append(f"JSON {path}: {error}")
        elif path.endswith(".plist"):
            try:
                with open(full, "rb") as f:
                    plistlib.load(f)
            except Exception as error:  # plistlib raises several kinds
                problems.append(f"property list {path}: {error}")
    return problems


def full_run(clean, browser):
    start = time.monotonic()
    status = subprocess.run([clean, browser, *CATEGORIES], stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL).returncode
    return status, time.monotonic() - start


def differences(got, want):
    keys = sorted(set(got) | set(want))
    return [k for k in keys if got.get(k) != want.get(k)]


def main():
    if len(sys.argv) < 5:
        sys.exit(__doc__.strip().splitlines()[-1])
    clean, work, kills_wanted, scale = sys.argv[1], sys.argv[2], int(sys.argv[3]), float(sys.argv[4])
    chain = int(sys.argv[5]) if len(sys.argv) > 5 else 4
    rng = random.Random(int(os.environ.get("KILL_SEED", "1")))
    profiles = {}
    for browser, (kind, folders) in BROWSERS.items():
        template = os.path.join(work, f"{kind}-{scale}")
        if not os.path.isdir(template):
            subprocess.run([sys.executable, os.path.join(HERE, "heavy_profile.py"), kind, template, str(scale)],
                           check=True)
        install(template, folders)
        json_files = {p for p in walk(folders) if is_json(p)}
        status, length = full_run(clean, browser)
        if status != 0:
            sys.exit(f"an uninterrupted run of {browser} failed with {status}")
        profiles[browser] = (template, folders, json_files, state(folders), length)
        print(f"{browser} at {scale * 100:g} %: an uninterrupted run takes {length:.2f} s", flush=True)

    kills = runs = finished_early = chains = 0
    problems, unfinished = [], []
    started = time.monotonic()
    while kills < kills_wanted:
        browser = list(BROWSERS)[chains % len(BROWSERS)]
        template, folders, json_files, reference, length = profiles[browser]
        install(template, folders)
        for _ in range(chain):
            process = subprocess.Popen([clean, browser, *CATEGORIES], stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
            runs += 1
            try:
                process.wait(timeout=rng.uniform(0, length))
                finished_early += 1
            except subprocess.TimeoutExpired:
                process.send_signal(signal.SIGKILL)
                process.wait()
                kills += 1
            keep = os.path.join(work, "corrupt", f"kill-{kills}")
            found = [f"{browser}, kill {kills}: {p}" for p in damage(folders, json_files, keep)]
            for line in found:
                print("  " + line, flush=True)
            problems += found
        status, _ = full_run(clean, browser)
        runs += 1
        chains += 1
        wrong = differences(state(folders), reference)
        # A run killed between naming a new file and the rename leaves it; the next write removes it.
        # A database's journal without the database would be played into the next one of that name.
        for path in walk([*folders, os.path.relpath(SETTINGS, HOME)]):
            if OUR_TEMPORARY.match(os.path.basename(path)):
                wrong.append(path)
            for suffix in JOURNALS:
                if path.endswith(suffix) and not os.path.exists(os.path.join(HOME, path[:-len(suffix)])):
                    wrong.append(path)
        if status != 0 or wrong:
            unfinished.append(f"{browser}, chain {chains}: exit {status}, differs in {wrong[:5]}")
            print("  " + unfinished[-1], flush=True)
        if chains % 25 == 0:
            print(f"  {kills} kills, {runs} runs, {len(problems)} problems, {len(unfinished)} unfinished "
                  f"({time.monotonic() - started:.0f} s)", flush=True)

    print(f"| kill -9 of corvella-clean at random moments, heavy profiles at {scale * 100:g} % | {kills} kills in "
          f"{runs} runs ({finished_early} runs ended before their kill) | {len(problems)} corrupt files, "
          f"{len(unfinished)} of {chains} jobs not finished by the next run |")
    return 1 if problems or unfinished else 0


if __name__ == "__main__":
    sys.exit(main())
