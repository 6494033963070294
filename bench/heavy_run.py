#!/usr/bin/env python3
"""A full run of all twelve categories on heavy Chromium and Firefox profiles, against the limit
measured in the same run: `rm -rf` of the same trees, and the sqlite3 shell running the same
statements on an identical copy of the same databases (one connection per database).

The baseline's work is read from `corvella-clean --preview`, so both sides do exactly the same
removals and statements. With KEPT above 0 the user keeps that many of the profile's sites
("--keep site0.example" and so on), so cookies, storage and site preferences are taken row by row. Each round installs a fresh copy of the profile before each side and
alternates which side goes first. Runs in the home folder of the user who starts it (the
benchmark's own test user: see heavy-profile.sh).

Usage: heavy_run.py CORVELLA_CLEAN WORK_FOLDER ROUNDS KEPT SCALE...
"""
import math
import os
import re
import shutil
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
CATEGORIES = ("cookies databases flash silverlight cache history favicons webpage forms downloads "
              "websitePrefs searchEngines").split()
BROWSERS = {"Chromium": ("chromium", (".config/chromium", ".cache/chromium")),
            "Firefox": ("firefox", (".mozilla", ".cache/mozilla"))}
PREVIEW_LINE = re.compile(r"^(remove files below|remove|write|create folder|change) (.*?) \(([^()]*)\)(?:: (.*))?$")


def timed(command, check=True, **kwargs):
    """Runs COMMAND; its wall time in seconds and its peak resident memory in MB."""
    start = time.monotonic()
    process = subprocess.Popen(command, **kwargs)
    _, status, usage = os.wait4(process.pid, 0)
    elapsed = time.monotonic() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if check and process.returncode != 0:
        sys.exit(f"{command[0]} failed with {process.returncode}")
    return elapsed, usage.ru_maxrss / 1024


def is_database(path):
    """SQLite's own test; the run's other changes (JSON keys, LevelDB entries) have no tool to compare."""
    try:
        with open(path, "rb") as f:
            return f.read(16) == b"SQLite format 3\0"
    except OSError:
        return False


def plan(clean, browser):
    """The removals and statements of a full run, from the preview, in the run's order."""
    out = subprocess.run([*clean, "--preview", browser, *CATEGORIES], capture_output=True, text=True, check=True)
    steps, removed = [], []
    for line in out.stdout.splitlines():
        match = PREVIEW_LINE.match(line)
        if not match:
            continue
        action, path, _, sql = match.groups()
        if action in ("remove", "remove files below"):
            removed.append(path)
            steps.append(("rm" if action == "remove" else "files", path))
        elif action == "change" and is_database(path):
            # A database the run removed earlier gets no statement in the run either.
            if not any(path == r or path.startswith(r + "/") for r in removed):
                steps.append(("sql", path, sql))
    return steps


def baseline(steps):
    """Runs the plan with the system's tools: one rm per run of removals, one sqlite3 per database."""
    commands = []
    for step in steps:
        last = commands[-1] if commands else None
        if step[0] == "rm":
            if last and last[0] == "rm":
                last[1].append(step[1])
            else:
                commands.append(("rm", [step[1]]))
        elif step[0] == "files":
            commands.append(("files", step[1]))
        elif last and last[0] == "sql" and last[1] == step[1]:
            last[2].append(step[2])
        else:
            commands.append(("sql", step[1], [step[2]]))
    elapsed, peak = 0.0, 0.0
    for command in commands:
        if command[0] == "rm":
            t, m = timed(["rm", "-rf", "--", *command[1]])
        elif command[0] == "files":
            t, m = timed(["find", command[1], "-type", "f", "-delete"])
        else:
            script = "".join(s.rstrip().rstrip(";") + ";\n" for s in command[2])
            with open(os.path.join(os.environ["HOME"], ".bench-statements.sql"), "w+") as f:
                f.write(script)
                f.seek(0)
                # Statements for tables an older browser had fail here as they fail in the run.
                t, m = timed(["sqlite3", command[1]], check=False, stdin=f, stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL)
        elapsed, peak = elapsed + t, max(peak, m)
    return elapsed, peak


def install(template, folders):
    home = os.environ["HOME"]
    for folder in folders:
        shutil.rmtree(os.path.join(home, folder), ignore_errors=True)
    subprocess.run(["cp", "-a", template + "/.", home], check=True)
    os.sync()


def left(folders):
    """What is left of the browser's folders, as relative paths."""
    home = os.environ["HOME"]
    found = set()
    for folder in folders:
        for base, dirs, files in os.walk(os.path.join(home, folder)):
            found.update(os.path.relpath(os.path.join(base, n), home) for n in dirs + files)
    return found


def median(values):
    return sorted(values)[len(values) // 2]


def main():
    if len(sys.argv) < 6:
        sys.exit(__doc__.strip().splitlines()[-1])
    work, rounds, kept = sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
    scales = [float(s) for s in sys.argv[5:]]
    clean = [sys.argv[1], *(a for i in range(kept) for a in ("--keep", f"site{i}.example"))]
    results = {}
    for browser, (kind, folders) in BROWSERS.items():
        for scale in scales:
            template = os.path.join(work, f"{kind}-{scale}")
            if not os.path.isdir(template):
                subprocess.run([sys.executable, os.path.join(HERE, "heavy_profile.py"), kind, template, str(scale)],
                               check=True)
            install(template, folders)
            steps = plan(clean, browser)
            ours, tools, peaks = [], [], []
            for round in range(rounds):
                sides = ["ours", "tools"] if round % 2 == 0 else ["tools", "ours"]
                for side in sides:
                    install(template, folders)
                    if side == "ours":
                        t, m = timed([*clean, browser, *CATEGORIES], stdout=subprocess.DEVNULL,
                                     stderr=subprocess.DEVNULL)
                        ours.append(t)
                        peaks.append(m)
                        after_ours = left(folders)
                    else:
                        t, _ = baseline(steps)
                        tools.append(t)
                        after_tools = left(folders)
                # Both sides must have done the same work, or the comparison means nothing.
                if after_ours != after_tools:
                    print(f"  warning: the two sides left different files: {sorted(after_ours ^ after_tools)[:5]}")
                print(f"  {browser} {scale:g}: corvella-clean {ours[-1]:.2f} s ({peaks[-1]:.1f} MB), "
                      f"rm -rf + sqlite3 {tools[-1]:.2f} s", flush=True)
            results[(browser, scale)] = (median(ours), median(tools), max(peaks), len(steps))
            install(template, folders)  # leaves the home as the generator made it, for a look
    print_table(results, scales, rounds, f", {kept} sites kept" if kept else "")


def print_table(results, scales, rounds, kept):
    """Rows of the benchmark table: measure | Corvella | baseline | ratio | target."""
    for (browser, scale), (ours, tools, peak, steps) in results.items():
        print(f"| full run, {browser} profile at {scale * 100:g} %{kept} ({steps} steps), median of {rounds} | "
              f"{ours:.2f} s | rm -rf + sqlite3 {tools:.2f} s | {ours / tools:.2f} | at most 1.25 at 100 % |")
    for (browser, scale), (_, _, peak, _) in results.items():
        print(f"| full run, {browser} profile at {scale * 100:g} %, peak resident memory | {peak:.1f} MB | - | - | "
              "under 64 MB |")
    # The exponent of the time against the profile's size: 1.0 is linear.
    for browser in BROWSERS:
        for small, large in zip(scales, scales[1:]):
            a, b = results[(browser, small)], results[(browser, large)]
            ours, tools = (math.log(b[i] / a[i]) / math.log(large / small) for i in (0, 1))
            print(f"| full run, {browser}, growth of the time from {small * 100:g} % to {large * 100:g} % "
                  f"(exponent) | {ours:.2f} | rm -rf + sqlite3 {tools:.2f} | - | no steeper than the baseline |")


if __name__ == "__main__":
    main()
