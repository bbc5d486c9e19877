"""Runs the rows of the table in rounds, the player and mpv in turns, and writes what came out.

Started by bench/run, which installs and builds what is needed.
"""

import argparse
import subprocess
import sys
from pathlib import Path

import rows_pictures  # the rows enter the table as these are read
import rows_cost  # noqa: F401
import rows_formats  # noqa: F401
import rows_waits  # noqa: F401
from report import Machine, write
from stage import MPV, PLAYER, staged
from table import ROWS, Results

SOURCE_DIR = Path(__file__).resolve().parent.parent
FULL_ROUNDS = 5


def at_least(least):
    """What turns a word into a number and refuses a smaller one."""
    def number(text):
        value = int(text)
        if value < least:
            raise argparse.ArgumentTypeError(f"{text} is less than {least}")
        return value
    return number


def arguments():
    names = [row.name for row in ROWS]
    parser = argparse.ArgumentParser(
        prog="bench/run", description="Measures the player, and mpv beside it, row by row.",
        epilog="A run of all rows in at least five rounds is written to bench/RESULTS.md and .png, "
               "anything less to out/bench/.")
    parser.add_argument("--rounds", type=at_least(1), default=FULL_ROUNDS,
                        help=f"how often each row is run (default: {FULL_ROUNDS})")
    parser.add_argument("--quick", action="store_true", help="one round")
    parser.add_argument("--rows", metavar="NAME,...", default=",".join(names),
                        help=f"only these: {', '.join(names)}")
    parser.add_argument("--changes", type=at_least(50), default=500,
                        help="changes of small clips that memory is followed over (default: 500)")
    parser.add_argument("--no-install", action="store_true",
                        help="do not install missing packages")
    options = parser.parse_args()
    wanted = options.rows.split(",")
    unknown = sorted(set(wanted) - set(names))
    if unknown:
        parser.error(f"no such row: {', '.join(unknown)}; there are {', '.join(names)}")
    options.rows = [row for row in ROWS if row.name in wanted]
    if options.quick:
        options.rounds = 1
    return options


def warm_up(stage):
    """Starts each program once, so that what it writes and reads once only is behind it."""
    for who in (PLAYER, MPV):
        with stage.run(who, rows_pictures.three_clips(stage), traced=True) as (run, _):
            run.wait_picture()


def measure(stage, options, results, machine):
    warm_up(stage)
    for turn in range(options.rounds):
        for row in options.rows:
            if row.only_once and turn > 0:
                continue
            # Who begins changes from round to round, so that neither always follows the other.
            for who in row.programs if turn % 2 == 0 else reversed(row.programs):
                print(f"round {turn + 1} of {options.rounds}: {row.name}, {who}",
                      file=sys.stderr, flush=True)
                try:
                    row.measure(stage, who, results)
                except (AssertionError, LookupError, OSError, RuntimeError,
                        ValueError, subprocess.SubprocessError) as trouble:
                    # The other rows, and this one's other rounds, are worth having all the same.
                    results.failures.append(f"{row.name}, {who}, round {turn + 1}")
                    print(f"could not be measured: {trouble}", file=sys.stderr, flush=True)
        machine.note_load()


def main():
    options = arguments()
    results = Results(options.changes)
    machine = Machine(SOURCE_DIR)
    with staged(SOURCE_DIR / "build") as stage:
        measure(stage, options, results, machine)
    print("\n".join(results.lines(options.rows)))
    full = len(options.rows) == len(ROWS) and options.rounds >= FULL_ROUNDS
    place = SOURCE_DIR / ("bench" if full else "out/bench")
    place.mkdir(parents=True, exist_ok=True)
    write(place / "RESULTS.md", results, options, machine)
    print(f"written: {place}/RESULTS.md", file=sys.stderr)
    return 1 if results.failures else 0


if __name__ == "__main__":
    sys.exit(main())
