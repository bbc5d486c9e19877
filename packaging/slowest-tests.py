#!/usr/bin/python3
"""Prints the ten tests that took longest, of all whose results lie in a folder.

    packaging/slowest-tests.py FOLDER

Reads the files BUILD.RUNNER.xml in it, in the form of JUnit, which ctest and pytest both write.
"""

import glob
import os
import sys
from xml.etree import ElementTree


def main(arguments):
    if len(arguments) != 2 or not os.path.isdir(arguments[1]):
        print(__doc__, file=sys.stderr)
        return 2
    times = [(float(test.get("time", 0)), test.get("name"), os.path.basename(path).split(".")[0])
             for path in glob.glob(os.path.join(arguments[1], "*.xml"))
             for test in ElementTree.parse(path).iter("testcase")]
    print("The ten slowest tests:")
    for seconds, name, build in sorted(times, reverse=True)[:10]:
        print(f"{seconds:6.1f} s  {name} ({build})")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
