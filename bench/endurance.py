"""Plays through more changes of items than a shop sees in weeks, and presses, turns, opens and launches
more than its staff do in years; tells whether anything grows meanwhile.

Started by bench/endurance, which installs and builds what is needed.
"""

import argparse
import contextlib
import itertools
import os
import random
import re
import shutil
import sys
import tempfile
import time
import traceback
from collections import Counter
from pathlib import Path
from typing import Callable, NamedTuple

from endurance_content import fill, listed, touch
from harness.player import DEMO_MODE, FILE_MODE, Tv
from harness.screen import Screen, lit
from harness.waiting import wait_until
from report import Machine, draw
from stage import Run
from table import SETTLED_AFTER, rise, shown, slope

SOURCE_DIR = Path(__file__).resolve().parent.parent
OUT = SOURCE_DIR / "out" / "endurance"
PANEL = {"rotator": "yes", "turning_time_s": "0"}
SAMPLES = 400
LEAST_SAMPLES = 5
# Fewer steps than this tell nothing of a slope: caches and arenas still fill.
LEAST_FOR_A_SLOPE = 500
# More than at the beginning, in a run that is long enough.
MOST_MORE = 2
# In a short run the quietest moments of its halves are compared: what is lost at every third change or at
# each of the other things, or a picture of the panel at every other, is more. What is open for sound and
# picture differs by five from moment to moment. Threads are bounded by what a photo alone has and some,
# as a player begins with a dozen that end when they have had nothing to do for a while.
SHORT_MOST_THREADS, SHORT_MOST_MORE_DESCRIPTORS, SHORT_MOST_MORE_MEGABYTES = 18, 7, 10
MOST_PROBLEMS_TOLD = 40
# What a shop is taken for, where changes are told as days.
ITEM_SECONDS, HOURS_A_DAY = 30, 12

ROTATION_AUTO_MODE = "db/ostrel-demo-player-tv/rotation_auto_mode"
PLAYS = r"OnPlay(?:Video|Photo)\(\d+\) > ."
OPENED, TORN_DOWN = "Block E-POP = 1", "m_OnDestroyPopTimerCB"
HANDLED = r"m_OnHandleEcorePipeCB\(\d+\) > EventID = 8,iParam1 = {}$"
TRIED = "bad-text.avi cannot be played"
FOCUSED = r"m_OnSetFocusIdlerCB\(\d+\)"

# What is logged at error level of the bad files, and of keys that have nothing to act on.
TOLERATED = (r"/PLATFORM", r"decode failed", r"DecodePicture\(\d+\) > $", "select speaker failed",
             "player_[a-z_]+ error", r"^\[|^Cannot|^Error|^Last message")

# Every key that means something on a PC keyboard with the type that it comes to, but for those that
# leave the demo. Arrow Up is left out as well: with Enter after it, it may choose "Off".
TYPED = {"Return": 1, "p": 2, "h": 3, "space": 5, "o": 6, "r": 7, "f": 8, "b": 9, "Left": 9,
         "n": 10, "Right": 10, "a": 12, "m": 12, "t": 13, "Prior": 14, "Next": 15, "g": 16,
         "Down": None}
KEYS_A_SECOND = 50
# Keys of the remote control for between two changes. The slide show and the speed go on after each.
PRESSED = ("XF86AudioPause", "XF86NextChapter", "XF86AudioNext", "XF86PlayBackGame",
           "XF86RaiseChannel", "XF86AudioRewind", "XF86PreviousChapter", "XF86LowerChannel",
           "XF86PlayBack", "XF86ChannelGuide")
# From one disturbance to the next. More than half of them leave the list going on, so that it is
# played through as well.
CHANGES_BETWEEN = 6


class Load(NamedTuple):
    """One thing that is done again and again: in words, how often, how much memory each time may keep
    once caches have filled, how fast timers run, and what does it."""

    what: str
    usual: int
    most_kb_each: float
    timers: dict
    run: Callable


class Show:
    """The player on the mixed folder, and what staff, the launcher and the panel do to it."""

    def __init__(self, tv, folder, timers):
        self.tv, self.screen, self.folder = tv, tv.screen, folder
        self.player = tv.start(folder=folder, OSTREL_DEMO_LOG_LEVEL="info", **timers)
        self.player.tolerate(*TOLERATED)
        self.log = self.player.log
        self.run = Run(self.player, tv.screen.compositor.pid, time.time())
        self.first, self.portrait = listed(folder)[0], listed(folder, portrait=True)
        self.keys = itertools.cycle(PRESSED)
        self.samples = []
        self.run.wait_item(1)

    def sample(self, step):
        """Notes what the player has of everything after so many steps."""
        frames = self.tv.status()["frames"]
        self.samples.append({
            "step": step, "private": self.run.private(), "threads": self.run.threads(),
            "descriptors": self.run.descriptors(), "compositor": self.run.compositor_private(),
            "shown": frames["shown"], "dropped": frames["dropped"], "late": frames["late"]})

    def popup(self):
        """Opens the options and closes them."""
        here = self.log.position()
        self.tv.press("Return")
        self.log.wait(OPENED, after=here)
        self.tv.press("Return")
        self.log.wait(TORN_DOWN, after=here)
        self.tv.press("XF86AudioPlay")

    def popup_and_next(self):
        """The same, and then the next item: a photo would stand for as long as they are opened."""
        self.popup()
        self.tv.press("XF86NextChapter")

    def choose(self):
        """Chooses a film in the options, and then all again."""
        row = listed(self.folder).index("mp4-film.mp4") + 1
        for keys, mode in ((("Down",) * row, row), (("Up",) * row, 0)):
            here = self.log.position()
            self.screen.key("Return")
            self.log.wait(OPENED, after=here)
            self.log.wait(FOCUSED, after=here)
            self.screen.key(*keys, "Return")
            self.tv.wait_config(DEMO_MODE, mode)
            self.log.wait(TORN_DOWN, after=here)
        self.tv.press("XF86AudioPlay")

    def turn(self, so_many=1):
        """Turns the panel to portrait, where other files play, and back after so many of them."""
        for side, name, mode in (("portrait", self.portrait[so_many - 1], 2),
                                 ("landscape", self.first, 1)):
            here = self.log.position()
            self.tv.tvctl("panel", side)
            self.log.wait(PLAYS + f"*/{name}", after=here)
            self.tv.wait_config(FILE_MODE, mode)

    def timed_turn(self):
        """Has the panel turned by its timer, and turns it back by hand."""
        here = self.log.position()
        self.tv.press("XF86Color")
        self.log.wait(PLAYS + f"*/{self.portrait[0]}", after=here)
        self.tv.press("XF86Color")
        self.tv.wait_config(ROTATION_AUTO_MODE, 0)
        wait_until(lambda: self.tv.tvctl("panel", "landscape", check=False).returncode == 0,
                   "a panel that can be turned back")
        self.tv.wait_config(FILE_MODE, 1)

    def relaunch(self):
        """Starts the player a second time, which begins the list of the running one anew."""
        here = self.log.position()
        second = self.tv.relaunch(folder=self.folder)
        self.tv.players.remove(second)
        self.log.wait(PLAYS, after=here)

    def press(self):
        """Presses the next of the keys, and one that lets the film or the slide show go on."""
        self.tv.press(next(self.keys))
        self.tv.press("XF86AudioPlay")

    def type(self, names):
        """Types keys at the speed of KEYS_A_SECOND, and holds what came of them against them."""
        here = self.log.position()
        self.screen.key(*names, "o", delay_ms=1000 // KEYS_A_SECOND)
        wanted = Counter(str(TYPED[name]) for name in (*names, "o") if TYPED[name])
        last = str(TYPED["o"])
        self.log.wait(HANDLED.format(last), after=here, count=wanted[last])
        came = Counter(match[1] for _, match in self.log.find_all(HANDLED.format(r"(\d+)"), after=here)
                       if match[1] in wanted)
        assert came == wanted, f"of the keys {wanted} these were acted on: {came}"

    def load(self, action, count, at_once=1):
        """Does one thing again and again, or so many of them at once, until there have been enough."""
        self.sample(0)
        next_sample = 0
        for step in range(at_once, count + at_once, at_once):
            action()
            if step >= next_sample:
                self.sample(step)
                next_sample = step + count // SAMPLES

    def touch(self):
        """Has the bad files tried anew. One of them has been tried before."""
        self.log.wait(TRIED)
        touch(self.folder)

    def changes(self, count):
        """Lets the list play on, whatever happens to it, until there have been so many changes."""
        disturbances = itertools.cycle(
            [self.relaunch, lambda: self.turn(len(self.portrait)), self.timed_turn, self.choose,
             self.touch] + [self.popup, self.press, self.press] * 3)
        every = max(1, count // SAMPLES)
        due = next_sample = 0
        while self.run.items < count:
            self.run.wait_item(self.run.items + 1)
            # Compared are moments at which the same film begins, if there are enough of them.
            same = count < LEAST_FOR_A_SLOPE or f"/{self.first}" in self.run.item
            if same and self.run.items >= next_sample:
                self.sample(self.run.items)
                next_sample = self.run.items + every
            if self.run.items >= due:
                next(disturbances)()
                self.run.catch_up()
                due = self.run.items + CHANGES_BETWEEN
        self.log.wait(TRIED, count=2)


def keys(show, count):
    def is_heard():
        show.screen.key("Down")
        return show.log.find_all("KeyName=Down ")

    # The window is on the screen before it has the keyboard.
    wait_until(is_heard, "the keyboard to be the player's")
    chance = random.Random(1)
    show.load(lambda: show.type(chance.choices(tuple(TYPED), k=KEYS_A_SECOND - 1)), count,
              KEYS_A_SECOND)
    show.relaunch()


# The toolkit's timers run faster where they would have the run wait: a photo's three minutes and the
# intervals of timed rotation, or the half second until a closed popup is taken down.
PHOTOS, POPUPS = {"speed": 900, "above": 100}, {"speed": 10, "above": 0.4}
# The bound of each is two to four times what was found, as much as arenas differ from run to run, and
# far from the 200 MB after which the player is started anew: a shop changes items 1,440 times a day,
# which may then leave 3 MB, and does a dozen of the others.
LOADS = {
    "changes": Load("changes of items, all else between them", 10000, 2.0, PHOTOS, Show.changes),
    "keys": Load("keys, 50 a second", 30000, 0.5, PHOTOS, keys),
    "relaunches": Load("second starts", 1000, 6.0, PHOTOS, lambda show, n: show.load(show.relaunch, n)),
    "turns": Load("turns of the panel and back", 1000, 12.0, PHOTOS,
                  lambda show, n: show.load(show.turn, n)),
    "popups": Load("times the options open and close", 5000, 3.0, POPUPS,
                   lambda show, n: show.load(show.popup_and_next, n)),
}


def arguments():
    parser = argparse.ArgumentParser(
        prog="bench/endurance",
        description="Plays a folder of good and bad files of all kinds and tells what grows. Without "
                    "numbers all loads are run, each as long as it takes to show anything.",
        epilog="A run of at least 10,000 changes is written to bench/ENDURANCE.md and .png, anything "
               "less to out/endurance/.")
    for name, load in LOADS.items():
        parser.add_argument(f"--{name}", type=int, metavar="N", help=f"{load.what} ({load.usual})")
    parser.add_argument("--build", type=Path, default=SOURCE_DIR / "build",
                        help="where it was built (default: build)")
    parser.add_argument("--no-install", action="store_true",
                        help="do not install missing packages")
    options = parser.parse_args()
    counts = {name: getattr(options, name) for name in LOADS if getattr(options, name)}
    options.counts = counts or {name: load.usual for name, load in LOADS.items()}
    return options


def play(build, folder, name, count):
    """Runs one load. Returns its samples and everything that went wrong."""
    load = LOADS[name]
    problems, samples = [], []
    with lit(Screen) as screen, tempfile.TemporaryDirectory(prefix="endurance-") as home:
        tv = Tv(home, str(build), screen).start_bus()
        tv.configure(panel=PANEL, content={"broken_video": "skip"})
        try:
            show = Show(tv, folder, tv.timers(**load.timers))
            samples = show.samples
            load.run(show, count)
        except (AssertionError, LookupError, OSError, RuntimeError, ValueError) as trouble:
            traceback.print_exc()
            problems.append(f"{name}, after {samples[-1]['step'] if samples else 0}: {trouble}")
            problems += [f"{name}: player {number} ended with status {player.process.returncode}"
                         for number, player in enumerate(tv.players) if not player.running()]
            screen.save(OUT / f"{name}.png")
        finally:
            problems += [f"{name}: {problem}" for problem in summed_up(tv.finish())]
            for log in Path(home).glob("player-?.log"):
                shutil.copy(log, OUT / f"{name}-{log.name}")
    return samples, problems


def summed_up(problems):
    """What differs in numbers alone is told once, and no more than is read."""
    alike = {}
    for problem in problems:
        alike.setdefault(re.sub(r"\b(0x)?[0-9a-f]+\b", "", problem), []).append(problem)
    return [f"{len(same)} times: {same[0]}" for same in alike.values()][:MOST_PROBLEMS_TOLD]


def is_sanitized(build):
    """Whether the memory is a sanitizer's, which keeps a book of it."""
    settings = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    return re.search(r"^SANITIZE:\w+=(?!OFF)", settings, re.MULTILINE) is not None


def judge(name, count, samples, build):
    """@return the columns of the table that tell of growth, and whether it is within bounds"""
    whole = [sample for sample in samples if sample["step"] > SETTLED_AFTER * count]
    if len(whole) < LEAST_SAMPLES:
        return "too few samples | | | ", False
    growth = {what: rise([sample[what] for sample in whole])
              for what in ("private", "threads", "descriptors")}
    if count >= LEAST_FOR_A_SLOPE:
        each = slope([(sample["step"], sample["private"]) for sample in whole]) * 1000
        told = f"{each:.2f} of {LOADS[name].most_kb_each:g} kB"
        good = each <= LOADS[name].most_kb_each and \
            max(growth["threads"], growth["descriptors"]) <= MOST_MORE
    else:
        # Of the other loads each moment is alike.
        threads = min(sample["threads"] for sample in whole[len(whole) // 2:]) \
            if name == "changes" else growth["threads"]
        told = f"in all {growth['private']:.1f} MB"
        good = threads <= SHORT_MOST_THREADS and \
            growth["descriptors"] <= SHORT_MOST_MORE_DESCRIPTORS and \
            (is_sanitized(build) or growth["private"] <= SHORT_MOST_MORE_MEGABYTES)
    return (f"{shown(whole[0]['private'])} to {shown(samples[-1]['private'])} MB | {told} | "
            f"{growth['threads']} | {growth['descriptors']}"), good


def row(name, count, samples, loads, build):
    """One line of the table, and whether what it says is as it should be."""
    growth, good = judge(name, count, samples, build)
    frames = " | ".join(str(samples[-1][what]) if samples else "" for what in ("shown", "late", "dropped"))
    return (f"| {LOADS[name].what} | {count} | {growth} | {frames} | "
            f"{' to '.join(f'{load:.1f}' for load in loads)} | {'yes' if good else '**no**'} |"), good


CHARTS = (
    ("private", "1. The player's private memory, MB"),
    ("compositor", "2. The compositor's private memory, MB"),
    ("threads", "3. Threads"),
    ("descriptors", "4. Descriptors"),
    ("late", "5. Pictures late so far"),
    ("dropped", "6. Pictures dropped so far"),
)


def curves(name, count, samples):
    """Each quantity has one chart for all loads, over the part of the load that is done."""
    for key, what in CHARTS:
        yield (f"{what}, over the whole of each load, %", name), \
            [[(100 * sample["step"] / count, sample[key]) for sample in samples]]


def main():
    options = arguments()
    OUT.mkdir(parents=True, exist_ok=True)
    machine = Machine(SOURCE_DIR)
    lines = ["| What | How many | Private memory, settled to the end | Each may keep | Threads more | "
             "Descriptors more | Pictures shown | Late | Dropped | Load of the machine | As it should be |",
             "|---|---|---|---|---|---|---|---|---|---|---|"]
    print("\n".join(lines), flush=True)
    problems, drawn = [], {}
    with contextlib.ExitStack() as stack:
        content = Path(stack.enter_context(tempfile.TemporaryDirectory(prefix="content-")))
        fill(content)
        for name, count in options.counts.items():
            print(f"{count} {LOADS[name].what}", file=sys.stderr, flush=True)
            before = os.getloadavg()[0]
            samples, trouble = play(options.build, content, name, count)
            machine.note_load()
            line, good = row(name, count, samples, (before, os.getloadavg()[0]),
                             options.build)
            lines.append(line)
            print(line, flush=True)
            problems += trouble + ([] if good else [f"{name}: the table says no"])
            drawn.update(curves(name, count, samples))
    print("\n".join(problems), file=sys.stderr)
    changes = options.counts.get("changes", 0)
    full = changes >= LOADS["changes"].usual
    write((SOURCE_DIR / "bench" if full else OUT) / "ENDURANCE.md", changes, lines, problems, machine,
          drawn)
    return 1 if problems else 0


def write(path, changes, lines, problems, machine, drawn):
    draw(path.with_suffix(".png"), drawn)
    days = changes * ITEM_SECONDS / 3600 / HOURS_A_DAY
    path.write_text("\n".join([
        "# What a long run takes", "",
        "Written by `bench/endurance`; [README.md](README.md) tells how each figure is taken.",
        f"{changes:,} changes of items are {days:.1f} days of a shop that is open for {HOURS_A_DAY}",
        f"hours and whose items last {ITEM_SECONDS} seconds on average.", "",
        *machine.lines(), *(f"- {problem}" for problem in problems), "", *lines, "",
        f"![Curves]({path.stem}.png)", ""]), encoding="utf-8")
    print(f"written: {path}", file=sys.stderr)


if __name__ == "__main__":
    sys.exit(main())
