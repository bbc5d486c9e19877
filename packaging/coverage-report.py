#!/usr/bin/python3
"""Prints which share of each source file's lines and branches the tests have reached.

    packaging/coverage-report.py BUILD_DIR

The build has to be one with --coverage, as ./test.sh --coverage makes it. What was never reached
stands, file by file, in BUILD_DIR/unreached.txt. Branches that only an exception takes are the
compiler's and are not counted. Ends with status 1 when the player's own code in src/ stays below
98 of 100 lines or 90 of 100 branches.
"""

import json
import os
import subprocess
import sys
from collections import defaultdict

SOURCE_DIR = os.path.realpath(os.path.join(os.path.dirname(__file__), ".."))
MEASURED = ("src/", "platform/linux/", "tools/")
LEAST_LINES = 98.0
LEAST_BRANCHES = 90.0


class Reached:
    """What of one file was reached: how often, by line, and by branch of a line."""

    def __init__(self):
        self.lines = defaultdict(int)
        self.branches = defaultdict(int)

    def add(self, line):
        number = line["line_number"]
        self.lines[number] += line["count"]
        for index, branch in enumerate(line["branches"]):
            if not branch["throw"]:
                key = (number, line.get("function_name", ""), index)
                self.branches[key] += branch["count"]


def share(counts):
    """(how many were reached, how many there are)."""
    return sum(1 for count in counts if count), len(counts)


def percent(reached, there_are):
    return 100.0 * reached / there_are if there_are else 100.0


def data_files(build_dir):
    for folder, _, names in os.walk(build_dir):
        for name in names:
            if name.endswith(".gcda"):
                yield os.path.join(folder, name)


def read_all(build_dir):
    """source file -> what any test reached of it."""
    files = defaultdict(Reached)
    for path in data_files(build_dir):
        told = subprocess.run(["gcov", "--json-format", "--branch-probabilities", "--stdout", path],
                              capture_output=True, text=True, check=True, cwd=build_dir)
        for report in told.stdout.splitlines():
            for file in json.loads(report)["files"]:
                where = os.path.realpath(os.path.join(build_dir, file["file"]))
                name = os.path.relpath(where, SOURCE_DIR)
                if name.startswith(MEASURED):
                    for line in file["lines"]:
                        files[name].add(line)
    return files


def report(label, lines, branches):
    print(f"{percent(*lines):6.1f} %  {lines[0]:5} of {lines[1]:5} lines  "
          f"{percent(*branches):6.1f} %  {branches[0]:5} of {branches[1]:5} branches  {label}")


def total(files, prefix=""):
    lines = [share(file.lines.values()) for name, file in files.items() if name.startswith(prefix)]
    branches = [share(file.branches.values()) for name, file in files.items()
                if name.startswith(prefix)]
    return tuple(map(sum, zip(*lines))), tuple(map(sum, zip(*branches)))


def main(arguments):
    if len(arguments) != 2 or not os.path.isdir(arguments[1]):
        print(__doc__, file=sys.stderr)
        return 2
    build_dir = os.path.realpath(arguments[1])
    files = read_all(build_dir)
    if not files:
        print(f"coverage-report.py: no test has run in {build_dir}", file=sys.stderr)
        return 1
    with open(os.path.join(build_dir, "unreached.txt"), "w", encoding="utf-8") as unreached:
        for name, file in sorted(files.items()):
            report(name, share(file.lines.values()), share(file.branches.values()))
            for line in sorted(line for line, count in file.lines.items() if not count):
                unreached.write(f"{name}:{line}: line\n")
            for line, _, index in sorted(key for key, count in file.branches.items()
                                         if not count and file.lines[key[0]]):
                unreached.write(f"{name}:{line}: branch {index}\n")
    report("all", *total(files))
    if not any(name.startswith("src/") for name in files):
        return 0  # the contract tests alone do not run the player's own code
    lines, branches = total(files, "src/")
    report("src/", lines, branches)
    if percent(*lines) < LEAST_LINES or percent(*branches) < LEAST_BRANCHES:
        print(f"coverage-report.py: src/ wants {LEAST_LINES:.0f} % of its lines and "
              f"{LEAST_BRANCHES:.0f} % of its branches", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
