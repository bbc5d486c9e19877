#!/usr/bin/python3
"""Prints what a test run left in a folder, in files BUILD.RUNNER.xml in the form of JUnit, which ctest
and pytest both write.

    tests/results.py slowest FOLDER   the ten tests that took longest
    tests/results.py failed FOLDER    each test that failed, with the first line that says why
"""

import glob
import os
import re
import sys
from xml.etree import ElementTree

# What GoogleTest, the sanitizers and CTest begin with.
COMPLAINT = re.compile(r": Failure$|ERROR: |WARNING: ThreadSanitizer|runtime error: |^Unable to find")
LONGEST_REASON = 200


def results(folder):
    """Every test case, with the build it ran in."""
    for path in sorted(glob.glob(os.path.join(folder, "*.xml"))):
        for test in ElementTree.parse(path).iter("testcase"):
            yield test, os.path.basename(path).split(".")[0]


def slowest(folder):
    times = [(float(test.get("time", 0)), test.get("name"), build) for test, build in results(folder)]
    print("The ten slowest tests:")
    for seconds, name, build in sorted(times, reverse=True)[:10]:
        print(f"{seconds:6.1f} s  {name} ({build})")


def reason(test):
    """One line; None when the test has not failed."""
    fault = next((child for child in test if child.tag in ("failure", "error")), None)
    if fault is None and test.get("status") != "notrun":
        return None
    message = fault.get("message", "") if fault is not None else ""
    # CTest gives no message, but what the test has printed.
    printed = (test.findtext("system-out") or "").splitlines()
    for number, line in enumerate(printed):
        if not message and COMPLAINT.search(line):
            # GoogleTest says in the next line what is wrong.
            message = " ".join(printed[number:number + 2]) if line.endswith("Failure") else line
    lines = message.strip().splitlines() or [f"says nothing, after {float(test.get('time', 0)):.1f} s"]
    return lines[0][:LONGEST_REASON]


def failed(folder):
    for test, build in results(folder):
        why = reason(test)
        if why is not None:
            print(f"  {test.get('name')} ({build}): {why}")


def main(arguments):
    prints = {"slowest": slowest, "failed": failed}.get(arguments[1] if len(arguments) == 3 else "")
    if not prints or not os.path.isdir(arguments[2]):
        print(__doc__, file=sys.stderr)
        return 2
    prints(arguments[2])
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
