#!/usr/bin/python3
"""Prints which share of each source file's lines the tests have reached.

    packaging/coverage-report.py BUILD_DIR

The build has to be one with --coverage, as ./test.sh --coverage makes it. Lines that were never
reached stand, file by file, in BUILD_DIR/unreached-lines.txt.
"""

import json
import os
import subprocess
import sys
from collections import defaultdict

SOURCE_DIR = os.path.realpath(os.path.join(os.path.dirname(__file__), ".."))
MEASURED = ("src/", "platform/linux/", "tools/")


def data_files(build_dir):
    for folder, _, names in os.walk(build_dir):
        for name in names:
            if name.endswith(".gcda"):
                yield os.path.join(folder, name)


def line_counts(build_dir):
    """source file -> line -> how often any test ran it."""
    counts = defaultdict(lambda: defaultdict(int))
    for path in data_files(build_dir):
        told = subprocess.run(["gcov", "--json-format", "--stdout", path], capture_output=True,
                              text=True, check=True, cwd=build_dir)
        for report in told.stdout.splitlines():
            for file in json.loads(report)["files"]:
                where = os.path.realpath(os.path.join(build_dir, file["file"]))
                name = os.path.relpath(where, SOURCE_DIR)
                if name.startswith(MEASURED):
                    for line in file["lines"]:
                        counts[name][line["line_number"]] += line["count"]
    return counts


def main(arguments):
    if len(arguments) != 2 or not os.path.isdir(arguments[1]):
        print(__doc__, file=sys.stderr)
        return 2
    build_dir = os.path.realpath(arguments[1])
    counts = line_counts(build_dir)
    if not counts:
        print(f"coverage-report.py: no test has run in {build_dir}", file=sys.stderr)
        return 1
    reached_in_all = lines_in_all = 0
    with open(os.path.join(build_dir, "unreached-lines.txt"), "w", encoding="utf-8") as unreached:
        for name in sorted(counts):
            lines = counts[name]
            reached = sum(1 for count in lines.values() if count)
            reached_in_all += reached
            lines_in_all += len(lines)
            print(f"{100 * reached / len(lines):6.1f} %  {reached:5} of {len(lines):5}  {name}")
            for line in sorted(line for line, count in lines.items() if not count):
                unreached.write(f"{name}:{line}\n")
    print(f"{100 * reached_in_all / lines_in_all:6.1f} %  "
          f"{reached_in_all:5} of {lines_in_all:5}  all")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
