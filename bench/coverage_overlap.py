#!/usr/bin/env python3
"""Which test functions reach no line of the engine that another test does not reach as well.

Runs each Qt Test function of the unit and GUI tests alone in a build made with gcc's --coverage,
collects the lines of src/ it executed (gcov's JSON), and prints for every function the lines only it
reaches. A function with none is a candidate for folding or removal: its lines are all run by some
other test. It is no verdict (its checks may still be the only ones on those lines); the mutation
sample (bench/mutants.py) is the measure of what the tests catch.

Usage: coverage_overlap.py BUILD_DIR [TEST ...]
  BUILD_DIR: cmake -S . -B BUILD_DIR -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="--coverage -O0"
             -DCMAKE_EXE_LINKER_FLAGS=--coverage, then built
  TEST:      test executables to look at (default: every tst_* of the build)
"""
import glob
import json
import os
import subprocess
import sys

SRC = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "src")
SRC = os.path.realpath(SRC)


def executed_lines(build):
    """Every (file, line) of src/ run since the counters were last cleared."""
    gcdas = glob.glob(os.path.join(build, "src", "**", "*.gcda"), recursive=True)
    lines = set()
    for start in range(0, len(gcdas), 40):
        batch = gcdas[start:start + 40]
        out = subprocess.run(["gcov", "--stdout", "--json-format"] + batch, cwd=build,
                             capture_output=True, text=True).stdout
        for document in out.splitlines():
            if not document.startswith("{"):
                continue
            for record in json.loads(document).get("files", []):
                path = os.path.realpath(os.path.join(build, record["file"]))
                if not path.startswith(SRC + os.sep):
                    continue
                name = os.path.relpath(path, SRC)
                lines.update((name, line["line_number"]) for line in record["lines"] if line["count"] > 0)
    return lines


def functions_of(executable):
    out = subprocess.run([executable, "-functions"], capture_output=True, text=True,
                         env=dict(os.environ, QT_QPA_PLATFORM="offscreen")).stdout
    return [line.strip().rstrip("()") for line in out.splitlines()
            if line.strip().endswith("()") and not line.strip().endswith("_data()")]


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    build = os.path.realpath(sys.argv[1])
    executables = sys.argv[2:] or sorted(
        path for path in glob.glob(os.path.join(build, "**", "tst_*"), recursive=True)
        if os.access(path, os.X_OK) and os.path.isfile(path))
    reached = {}
    for executable in executables:
        for function in functions_of(executable):
            for gcda in glob.glob(os.path.join(build, "**", "*.gcda"), recursive=True):
                os.remove(gcda)
            subprocess.run([executable, function], capture_output=True, timeout=300,
                           env=dict(os.environ, QT_QPA_PLATFORM="offscreen"))
            test = (os.path.basename(executable), function)
            reached[test] = executed_lines(build)
            print(f"ran {test[0]}::{function}: {len(reached[test])} lines", file=sys.stderr)
    counts = {}
    for lines in reached.values():
        for line in lines:
            counts[line] = counts.get(line, 0) + 1
    print("| test | lines reached | lines only it reaches |")
    print("|---|---|---|")
    for (executable, function), lines in sorted(reached.items(),
                                                key=lambda item: sum(counts[l] == 1 for l in item[1])):
        only = sorted(line for line in lines if counts[line] == 1)
        where = ", ".join(f"{name}:{number}" for name, number in only[:4]) + (" …" if len(only) > 4 else "")
        print(f"| {executable}::{function} | {len(lines)} | {len(only)} {where} |")


if __name__ == "__main__":
    main()
