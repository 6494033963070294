#!/usr/bin/env python3
"""Starts the real Chromium at a random moment of a full corvella-clean run on a heavy profile, and
measures what the run changed after that moment (its file-changing system calls, traced by strace).
The run must stop (exit status 4) and change nothing after the browser started, but for the one
change in flight when its look at the processes (every 50 ms) saw the browser.

Runs in the home folder of the user who starts it (see browser-starts.sh).

Usage: browser_starts.py CORVELLA_CLEAN WORK_FOLDER TRIALS
"""
import os
import random
import re
import signal
import subprocess
import sys
import tempfile
import time

from heavy_run import BROWSERS, CATEGORIES, HERE, install
from kill_clean import damage, is_json, walk

CHROMIUM = "/usr/lib/chromium/chromium"
CHANGES = "unlink,unlinkat,rename,renameat,renameat2,rmdir,truncate,ftruncate,pwrite64,write,openat,linkat"
# A call's wall-clock time, name and arguments; writes to standard output and error are the log.
CALL = re.compile(r"^(?:\[pid +\d+\] |\d+ +)?(\d+\.\d+) (\w+)\((.*)")
# What the run may still do after the browser started: finish the change in flight.
ALLOWED_MS = 1000


def changes(trace):
    """The run's file-changing calls: wall-clock time and the call as strace shows it (with -y, a file
    descriptor shows its file)."""
    calls = []
    with open(trace) as f:
        for line in f:
            match = CALL.match(line)
            if not match or "= -1" in line:
                continue
            when, name, arguments = float(match.group(1)), match.group(2), match.group(3)
            # Writes count when they go to a file (-y names it): not the log, not a thread's wake-up
            # (an eventfd), a pipe or a socket.
            if name in ("write", "pwrite64") and not re.match(r"\d+</(?!dev/)", arguments):
                continue
            if name == "openat" and not re.search(r"O_CREAT|O_TMPFILE|O_TRUNC", arguments):
                continue
            calls.append((when, f"{name}({arguments[:120]}"))
    return calls


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__.strip().splitlines()[-1])
    clean, work, trials = sys.argv[1], sys.argv[2], int(sys.argv[3])
    kind, folders = BROWSERS["Chromium"]
    template = os.path.join(work, f"{kind}-0.1")
    if not os.path.isdir(template):
        subprocess.run([sys.executable, os.path.join(HERE, "heavy_profile.py"), kind, template, "0.1"], check=True)
    install(template, folders)
    json_files = {p for p in walk(folders) if is_json(p)}
    start = time.monotonic()
    subprocess.run([clean, "Chromium", *CATEGORIES], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
    length = time.monotonic() - start
    rng = random.Random(int(os.environ.get("KILL_SEED", "1")))
    stopped = finished = late = 0
    worst_ms, problems = 0.0, []
    for trial in range(trials):
        install(template, folders)
        trace = tempfile.mktemp(prefix="corvella-trace.")
        run = subprocess.Popen(["strace", "--seccomp-bpf", "-f", "-ttt", "-y", "-e", f"trace={CHANGES}", "-o", trace,
                                clean, "Chromium", *CATEGORIES], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(rng.uniform(0.2, length))
        started = time.time()
        browser = subprocess.Popen([CHROMIUM, "--headless=new", "--no-sandbox", "--no-first-run", "about:blank"],
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        status = run.wait(timeout=120)
        late_calls = [(t - started, call) for t, call in changes(trace) if t > started]
        after = [t for t, _ in late_calls]
        os.remove(trace)
        time.sleep(1)
        os.killpg(browser.pid, signal.SIGTERM)
        browser.wait(timeout=30)
        if status == 4:
            stopped += 1
        elif status == 0 and not after:
            finished += 1  # it had nothing left to change when the browser came
        else:
            problems.append(f"trial {trial}: exit {status} with {len(after)} changes after the browser started")
        if after:
            worst_ms = max(worst_ms, max(after) * 1000)
            if max(after) * 1000 > ALLOWED_MS:
                late += 1
                problems.append(f"trial {trial}: a change {max(after) * 1000:.0f} ms after the browser started; "
                                f"the last: {late_calls[-1][1]}")
        problems += [f"trial {trial}: {p}" for p in damage(list(folders), json_files)]
    for line in problems:
        print("  " + line)
    print(f"| Chromium started at a random moment of a full run, Chromium profile at 10 % | {trials} runs: {stopped} "
          f"stopped, {finished} done before | last change {worst_ms:.0f} ms after the start at worst; {late} runs "
          f"changed files later than {ALLOWED_MS} ms; {len(problems)} problems |")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
