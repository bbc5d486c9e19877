#!/usr/bin/python3
"""Measures how long the options popup takes from the key to its first frame, over a playing film.

The player plays a 1080p30 clip in a software compositor on a virtual screen. A key is pressed there;
measured is, by the player's own trace of the Wayland protocol, the time from the key's arrival to
the next frame of the window, and the longest time between two frames of the film around it. The
first line of a start is the first popup of that process.

    packaging/install-missing.sh build run demo test
    cmake -S . -B build -G Ninja && ninja -C build
    bench/popup_latency.py --build build --starts 3 --popups 4 --size 1920x1080

With --early the first popup opens right after the start, before its widgets were prepared.
"""

import argparse
import re
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests" / "e2e"))

from harness.player import Tv  # noqa: E402
from harness.screen import Screen  # noqa: E402

TRACE = re.compile(r"\[\s*([\d.]+)\]\s+(?:-> wl_surface@(\d+)\.attach|wl_keyboard@\d+\.key\((.*)\))")
RETURN, ESCAPE = "28", "1"
OPEN_SECONDS = 1.5
EARLY_SECONDS = 0.3
SETTLED_SECONDS = 4.0


class Trace:
    """What the player's log tells about frames and keys; times in milliseconds."""

    def __init__(self, lines):
        self.frames = {}
        self.keys = []
        for line in lines:
            found = TRACE.search(line)
            if found and found[2]:
                self.frames.setdefault(found[2], []).append(float(found[1]))
            elif found:
                _, _, code, state = found[3].split(", ")
                if state == "1":
                    self.keys.append((float(found[1]), code))
        self.film = max(self.frames, key=lambda surface: len(self.frames[surface]))

    def opened(self):
        """Times at which the key that opens the popup arrived."""
        return [stamp for stamp, code in self.keys if code == RETURN]

    def first_frame_after(self, stamp):
        later = [frame for surface, frames in self.frames.items() if surface != self.film
                 for frame in frames if frame >= stamp]
        return min(later) - stamp

    def longest_gap(self, begin, end):
        frames = [frame for frame in self.frames[self.film] if begin <= frame <= end]
        return max(after - before for before, after in zip(frames, frames[1:]))


def measure(tv, content, popups, early):
    player = tv.start(folder=content, WAYLAND_DEBUG="1", OSTREL_DEMO_LOG_LEVEL="info")
    player.log.wait(r"visibility changed", deadline_s=60)
    # The film's own surface gets its buffers from another thread: many frames mean that it plays.
    player.log.wait(r"-> wl_surface@\d+\.attach", count=8, deadline_s=60)
    time.sleep(EARLY_SECONDS if early else SETTLED_SECONDS)
    before = tv.status()["frames"]
    for _ in range(popups):
        tv.screen.key("Return")
        time.sleep(OPEN_SECONDS)
        tv.screen.key("Escape")
        time.sleep(OPEN_SECONDS)
    after = tv.status()["frames"]
    player.terminate()
    trace = Trace(player.log.lines)
    for number, stamp in enumerate(trace.opened(), 1):
        print(f"  popup {number}: first frame after {trace.first_frame_after(stamp):5.1f} ms, "
              f"longest gap in the film {trace.longest_gap(stamp - 300, stamp + 700):5.1f} ms "
              f"(without popup {trace.longest_gap(stamp - 1000, stamp - 1):5.1f} ms)", flush=True)
    print(f"  film: {after['shown'] - before['shown']} frames shown, "
          f"{after['dropped'] - before['dropped']} dropped", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=Path, default=Path("build"))
    parser.add_argument("--starts", type=int, default=3)
    parser.add_argument("--popups", type=int, default=4)
    parser.add_argument("--size", default="1920x1080")
    parser.add_argument("--early", action="store_true",
                        help="open the first popup right after the start, before it was prepared")
    options = parser.parse_args()
    width, height = map(int, options.size.split("x"))
    build = options.build.resolve()

    root = Path(tempfile.mkdtemp(prefix="demo-bench-"))
    try:
        content = root / "content"
        content.mkdir()
        subprocess.run([build / "tools/sample_content/make-sample-content", "--only",
                        "sunrise.mp4", "--seconds", "20", content],
                       check=True, stdout=subprocess.DEVNULL)
        (root / "screen").mkdir()
        screen = Screen(str(root / "screen"), width, height)
        try:
            screen.start()
            for number in range(1, options.starts + 1):
                folder = root / f"set-{number}"
                folder.mkdir()
                print(f"start {number}, {options.size}", flush=True)
                tv = Tv(str(folder), str(build), screen).start_bus()
                try:
                    measure(tv, content, options.popups, options.early)
                finally:
                    tv.finish()
        finally:
            screen.stop()
    finally:
        shutil.rmtree(root, ignore_errors=True)


if __name__ == "__main__":
    main()
