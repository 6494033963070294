#!/usr/bin/env python3
"""How many faults the unit tests catch: a fixed, seeded sample of single-line mutations (a flipped
comparison, an inverted condition, a changed constant, a dropped call) spread over src/sandbox,
src/catalogue, src/cleaners, src/core and src/platform. Each mutant is applied in a scratch worktree of HEAD,
built, and the unit tests are run; a mutant that builds and passes every test survives.

The sample depends only on the seed and the sources at HEAD, so a run before and after a rewrite of
the tests compares like with like. Results go to standard output as a table, a row per mutant.

The sample can also be replayed from an earlier run's table (--replay): each mutant is found again by
its file and the text of its line, wherever the line has moved since, so the tests of a later tree
meet exactly the same mutants.

Usage: bench/mutants.py [--seed N] [--count N] [--only I,J,...] [--list] [--replay TABLE.md] [--every-killer]
"""
import argparse
import os
import random
import re
import subprocess
import sys
import tempfile

FOLDERS = ("src/sandbox", "src/catalogue", "src/cleaners", "src/core", "src/platform")
# (name, pattern, replacement): each applied to one occurrence on one line.
OPERATORS = (
    ("== to !=", re.compile(r" == "), " != "),
    ("!= to ==", re.compile(r" != "), " == "),
    ("< to <=", re.compile(r" < "), " <= "),
    ("> to >=", re.compile(r" > "), " >= "),
    ("<= to <", re.compile(r" <= "), " < "),
    (">= to >", re.compile(r" >= "), " > "),
    ("&& to ||", re.compile(r" && "), " || "),
    ("|| to &&", re.compile(r" \|\| "), " && "),
    ("true to false", re.compile(r"\btrue\b"), "false"),
    ("false to true", re.compile(r"\bfalse\b"), "true"),
    ("if inverted", re.compile(r"\bif \((.*)\)(\s*\{?\s*)$"), r"if (!(\1))\2"),
    ("constant + 1", re.compile(r"(?<![\w.])([1-9][0-9]{0,5})(?![\w.])"), None),
    ("call dropped", re.compile(r"^(\s*)(\w[\w:.>-]*\(.*\);)\s*$"), r"\1(void)0; // \2"),
)


def candidates(root):
    """Every (file, line number, operator) a mutation can apply to, in a stable order."""
    found = []
    for folder in FOLDERS:
        for base, _, files in sorted(os.walk(os.path.join(root, folder))):
            if "/fake" in base:
                continue  # test doubles, which only the tests link
            for name in sorted(files):
                if not name.endswith(".cpp"):
                    continue
                path = os.path.relpath(os.path.join(base, name), root)
                with open(os.path.join(root, path)) as f:
                    for number, line in enumerate(f, 1):
                        code = line.split("//")[0]
                        if not code.strip() or code.lstrip().startswith(("#", "*", "/*")) or '"' in code:
                            continue
                        for index, (_, pattern, _) in enumerate(OPERATORS):
                            if pattern.search(code):
                                found.append((path, number, index))
    return found


def sample(root, seed, count):
    """`count` mutants spread evenly over the folders, chosen by the seed."""
    rng = random.Random(seed)
    by_folder = {folder: [c for c in candidates(root) if c[0].startswith(folder + "/")] for folder in FOLDERS}
    chosen = []
    for folder in FOLDERS:
        pool = by_folder[folder]
        chosen += rng.sample(pool, min(len(pool), count // len(FOLDERS)))
    return chosen


def replayed(root, table):
    """The mutants of an earlier run's table, at their lines in the tree now (line 0: not found)."""
    names = [name for name, _, _ in OPERATORS]
    mutants = []
    with open(table) as f:
        for row in f:
            match = re.match(r"\| \d+ \| (\S+):(\d+) (.+?): `(.*)` \|", row)
            if not match:
                continue
            path, old, operator, text = match.group(1), int(match.group(2)), match.group(3), match.group(4)
            with open(os.path.join(root, path)) as source:
                found = [n for n, line in enumerate(source, 1) if line.strip() == text]
            line = min(found, key=lambda n: abs(n - old)) if found else 0
            mutants.append((path, line, names.index(operator)))
    return mutants


def mutate(line, index):
    _, pattern, replacement = OPERATORS[index]
    if replacement is None:  # a constant, one more
        return pattern.sub(lambda m: str(int(m.group(1)) + 1), line, count=1)
    return pattern.sub(replacement, line, count=1)


def run(command, cwd, timeout):
    try:
        return subprocess.run(command, cwd=cwd, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              timeout=timeout).returncode == 0
    except subprocess.TimeoutExpired:
        return False  # a hang is caught too


def failing_test(command, cwd, timeout, every=False):
    """None when every test passes, else the name of the test that failed first ("timeout": a hang);
    with `every` (the command runs every test), each test that failed and the test functions in it."""
    try:
        result = subprocess.run(command, cwd=cwd, capture_output=True, text=True, timeout=timeout)
    except subprocess.TimeoutExpired:
        return "timeout"
    if result.returncode == 0:
        return None
    failed = re.findall(r"Test +#\d+: (\S+) \.+\**(?:Failed|Exception|Timeout|Not Run)", result.stdout)
    if not failed:
        return "failed"
    if not every:
        return failed[0]
    functions = sorted(set(re.findall(r"FAIL!  : \w+::(\w+)", result.stdout)))
    return ", ".join(failed) + (f" ({', '.join(functions)})" if functions else "")


def main():
    parser = argparse.ArgumentParser(description=__doc__.strip().splitlines()[0])
    parser.add_argument("--seed", type=int, default=37)
    parser.add_argument("--count", type=int, default=65)
    parser.add_argument("--only", default="", help="the rows to run, by number (default: all)")
    parser.add_argument("--list", action="store_true", help="show the sample, run nothing")
    parser.add_argument("--replay", default="", help="the table of an earlier run: its mutants again")
    parser.add_argument("--every-killer", action="store_true",
                        help="run every test for each mutant, and name each failing test function (slower)")
    args = parser.parse_args()
    repo = subprocess.run(["git", "rev-parse", "--show-toplevel"], capture_output=True, text=True,
                          check=True).stdout.strip()
    mutants = replayed(repo, args.replay) if args.replay else sample(repo, args.seed, args.count)
    only = {int(n) for n in args.only.split(",") if n}
    if args.list:
        for number, (path, line, index) in enumerate(mutants, 1):
            print(f"{number:3} {path}:{line} {OPERATORS[index][0]}")
        return
    work = tempfile.mkdtemp(prefix="corvella-mutants.")
    tree = os.path.join(work, "tree")
    subprocess.run(["git", "worktree", "add", "--detach", tree, "HEAD"], cwd=repo, check=True,
                   stdout=subprocess.DEVNULL)
    build = os.path.join(tree, "build")
    try:
        if not run(["cmake", "-S", tree, "-B", build, "-DCMAKE_BUILD_TYPE=Release"], tree, 600) or \
                not run(["cmake", "--build", build, "-j", str(os.cpu_count())], tree, 3600):
            sys.exit("the unmutated tree does not build")
        tests = ["ctest", "--test-dir", build, "-R", "^tst_", "-j", str(os.cpu_count()), "--stop-on-failure"]
        if not run(tests, tree, 900):
            sys.exit("the unit tests fail without a mutant")
        if args.every_killer:  # CTest's time limit stops a hang; the failed functions are in the output
            tests = tests[:-1] + ["--output-on-failure", "--timeout", "120"]
        killed = survived = broken = 0
        print("| # | mutant | outcome |\n|---|---|---|")
        for number, (path, line, index) in enumerate(mutants, 1):
            if only and number not in only:
                continue
            if line == 0:
                print(f"| {number} | {path}: its line is gone | not run |", flush=True)
                continue
            source = os.path.join(tree, path)
            with open(source) as f:
                lines = f.readlines()
            original = lines[line - 1]
            lines[line - 1] = mutate(original, index)
            with open(source, "w") as f:
                f.writelines(lines)
            try:
                if not run(["cmake", "--build", build, "-j", str(os.cpu_count())], tree, 1800):
                    outcome, broken = "does not build", broken + 1
                elif (failed := failing_test(tests, tree, 900, args.every_killer)) is None:
                    outcome, survived = "SURVIVED", survived + 1
                else:
                    outcome, killed = f"killed by {failed}", killed + 1
            finally:
                lines[line - 1] = original
                with open(source, "w") as f:
                    f.writelines(lines)
            print(f"| {number} | {path}:{line} {OPERATORS[index][0]}: `{lines[line - 1].strip()}` | {outcome} |",
                  flush=True)
        print(f"\nkilled {killed}, survived {survived}, did not build {broken} (seed {args.seed})")
    finally:
        subprocess.run(["git", "worktree", "remove", "--force", tree], cwd=repo)


if __name__ == "__main__":
    main()
