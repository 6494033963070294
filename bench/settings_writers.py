#!/usr/bin/env python3
"""Three processes write the settings file at once (bench-settings-writer: the agent's and
corvella-clean's settings store), each its own key with a rising number, over a file that also holds
a real user's settings. At random moments one of them is killed with SIGKILL once it is writing (most
of its time goes to writes), and started again after its last acknowledged number. After every kill the file must parse,
the user's settings must be as they were, and each writer's key must hold at least the last number
its store acknowledged: no acknowledged change is lost, whoever was killed. At the end, after one
more write, no temporary file of a killed writer may be left.

Usage: settings_writers.py BENCH_SETTINGS_WRITER KILLS
"""
import os
import plistlib
import random
import re
import signal
import subprocess
import sys
import tempfile
import threading
import time

WRITERS = ("agent", "corvella-clean", "third")
OUR_TEMPORARY = re.compile(r"^\..+\.corvella-[A-Za-z0-9]{6}$")


class Writer:
    """A writer process and the numbers its store acknowledged (read from its output as they come)."""

    def __init__(self, program, path, name):
        self.program, self.path, self.name = program, path, name
        self.acknowledged = 0
        self.start()

    def start(self):
        self.first = self.acknowledged + 1
        self.process = subprocess.Popen([self.program, self.path, self.name, str(self.acknowledged + 1), "1000000000"],
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.reader = threading.Thread(target=self.read, args=(self.process,), daemon=True)
        self.reader.start()

    def read(self, process):
        for line in process.stdout:
            self.acknowledged = int(line)

    def kill(self):
        self.process.send_signal(signal.SIGKILL)
        self.process.wait()
        self.reader.join()  # every acknowledgement printed before the kill is counted
        return self.process.stderr.read()


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip().splitlines()[-1])
    program, kills_wanted = sys.argv[1], int(sys.argv[2])
    rng = random.Random(int(os.environ.get("KILL_SEED", "1")))
    folder = tempfile.mkdtemp(prefix="corvella-writers.")
    path = os.path.join(folder, "com.tovanex.Corvella6.plist")
    # A user's settings, with enough grant records to make each write take a while.
    user = {"enabledBrowsers": ["org.chromium.Chromium", "org.mozilla.firefox"],
            "settings": {f"{b}:{c}": True for b in ("Chromium", "Firefox") for c in ("cookies", "cache", "history")},
            **{f"bd_file:///home/ann/folder{n}/": b'{"device":"2049","inode":"%d","path":"/home/ann"}' % n
               for n in range(400)}}
    with open(path, "wb") as f:
        plistlib.dump(user, f, fmt=plistlib.FMT_XML)

    writers = [Writer(program, path, name) for name in WRITERS]
    kills, problems, started = 0, [], time.monotonic()
    while kills < kills_wanted:
        # Killed once it is writing (it acknowledged a write since its start), at a random moment.
        victim = rng.choice(writers)
        deadline = time.monotonic() + 5
        while victim.acknowledged < victim.first and time.monotonic() < deadline:
            time.sleep(0.0005)
        time.sleep(rng.uniform(0, 0.01))
        errors = victim.kill()
        kills += 1
        if victim.process.returncode != -signal.SIGKILL:
            problems.append(f"kill {kills}: {victim.name} had stopped by itself ({victim.process.returncode}): {errors}")
        # Taken before the file is read: a live writer may acknowledge more meanwhile.
        acknowledged = {w.name: w.acknowledged for w in writers}
        try:
            with open(path, "rb") as f:
                stored = plistlib.load(f)
        except Exception as error:  # plistlib raises several kinds
            problems.append(f"kill {kills}: the settings file does not parse: {error}")
            stored = {}
        for key, value in user.items():
            if stored.get(key) != value:
                problems.append(f"kill {kills}: the user's setting {key} changed")
                break
        for name, number in acknowledged.items():
            if stored.get(f"writer.{name}", 0) < number:
                problems.append(f"kill {kills}: {name} lost {number} (the file holds {stored.get(f'writer.{name}')})")
        victim.start()
        if kills % 250 == 0:
            print(f"  {kills} kills, {sum(w.acknowledged for w in writers)} acknowledged writes, {len(problems)} "
                  f"problems ({time.monotonic() - started:.0f} s)", flush=True)
    for writer in writers:
        writer.kill()
    # The next write cleans up after a writer killed between naming its new file and the rename.
    subprocess.run([program, path, "last", "1", "1"], stdout=subprocess.DEVNULL, check=True)
    with open(path, "rb") as f:
        stored = plistlib.load(f)
    for writer in writers:
        if stored.get(f"writer.{writer.name}", 0) < writer.acknowledged:
            problems.append(f"at the end: {writer.name} lost {writer.acknowledged}")
    litter = [n for n in os.listdir(folder) if OUR_TEMPORARY.match(n)]
    for line in problems:
        print("  " + line)
    writes = sum(w.acknowledged for w in writers)
    print(f"| kill -9 of one of three concurrent settings writers | {kills} kills, {writes} acknowledged writes | "
          f"{len(problems)} unparsable files or lost changes, {len(litter)} temporary files left |")
    subprocess.run(["rm", "-rf", folder])
    return 1 if problems or litter else 0


if __name__ == "__main__":
    sys.exit(main())
