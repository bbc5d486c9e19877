"""Writes the table with what it was measured on, and draws the curves for a person to look at."""

import os
import platform
import subprocess
import time
from pathlib import Path

from PIL import Image, ImageDraw, ImageFont

from stage import MPV, PLAYER
from table import shown

WIDTH, CHART_HEIGHT, MARGIN = 1200, 420, 60
COLOURS = {PLAYER: (200, 60, 20), MPV: (40, 90, 190)}
# Of other curves, in their order.
MORE_COLOURS = ((200, 60, 20), (40, 90, 190), (20, 130, 60), (150, 60, 170), (120, 110, 20))
GROUND, INK, GRID = (255, 255, 255), (40, 40, 40), (225, 225, 225)
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
PACKAGES = ("mpv", "weston", "libgstreamer1.0-0", "libavcodec59", "libc6")


class Machine:
    """What the figures depend on beside the program, as it was when they were taken."""

    def __init__(self, source_dir):
        self._source_dir = source_dir
        self._began = time.strftime("%Y-%m-%d %H:%M %Z")
        self._commit = self._told_by("git", "rev-parse", "--short", "HEAD")
        if self._told_by("git", "status", "--porcelain", "--untracked-files=no"):
            self._commit += " and changes that are not committed"
        self._loads = []
        self.note_load()

    def note_load(self):
        """Keeps how many processes want a processor: the mean of the last minute."""
        self._loads.append(os.getloadavg()[0])

    def _told_by(self, *command):
        told = subprocess.run(command, cwd=self._source_dir, capture_output=True, text=True,
                              check=False)
        return told.stdout.strip()

    def lines(self):
        model = next((line.partition(":")[2].strip() for line in
                      Path("/proc/cpuinfo").read_text(errors="replace").splitlines()
                      if line.startswith("model name")), platform.machine())
        memory = os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE") / 1e9
        versions = self._told_by("dpkg-query", "-W", "-f=${Package} ${Version}, ", *PACKAGES)
        yield f"- Machine: {os.cpu_count()} processors ({model}), {memory:.1f} GB, " \
              f"{platform.system()} {platform.release()}"
        yield f"- Packages: {versions.strip(', ')}"
        yield f"- Date: {self._began} to {time.strftime('%H:%M')}"
        yield f"- Commit: {self._commit}"
        yield "- Load before the first round and after each: " \
              + ", ".join(f"{load:.1f}" for load in self._loads) \
              + " (the bench itself makes about 2)"


def write(path, results, options, machine):
    """Writes the report to `path` and the picture beside it."""
    picture = path.with_suffix(".png")
    if results.curves:
        draw(picture, results.curves)
    lines = [
        "# What the player costs and how it changes items", "",
        "Written by `bench/run`; [README.md](README.md) tells how each figure is taken. Each is the",
        "median, with the smallest and the largest value and how many there are.", "",
        *machine.lines(),
        f"- Rounds: {options.rounds}; changes of small clips: {results.changes}",
        *(f"- Could not be measured: {failure}" for failure in results.failures), "",
        *results.lines(options.rows), "",
        *([f"![Curves]({picture.name})", ""] if results.curves else [])]
    path.write_text("\n".join(lines), encoding="utf-8")


def draw(path, curves):
    """One chart under the other, and everybody's curves in one colour."""
    charts = sorted({chart for chart, _ in curves})
    image = Image.new("RGB", (WIDTH, len(charts) * CHART_HEIGHT), GROUND)
    canvas = ImageDraw.Draw(image)
    font = ImageFont.truetype(FONT, 16)
    for number, chart in enumerate(charts):
        own = {who: lines for (name, who), lines in curves.items() if name == chart}
        draw_chart(canvas, font, number * CHART_HEIGHT, chart, own)
    image.save(path)


def draw_chart(canvas, font, top, title, lines_of):
    points = [point for lines in lines_of.values() for line in lines for point in line]
    if not points:
        return
    left, right = min(x for x, _ in points), max(x for x, _ in points)
    highest = max(1.0, max(y for _, y in points))
    bottom = top + CHART_HEIGHT - MARGIN
    height = CHART_HEIGHT - 2 * MARGIN

    def place(x, y):
        across = (x - left) / max(1, right - left)
        return MARGIN + across * (WIDTH - 2 * MARGIN), bottom - y / highest * height

    for part in range(5):
        value = highest * part / 4
        _, y = place(left, value)
        canvas.line([(MARGIN, y), (WIDTH - MARGIN, y)], fill=GRID)
        canvas.text((8, y - 9), shown(value), fill=INK, font=font)
    for x in (left, right):
        canvas.text((place(x, 0)[0] - 10, bottom + 8), f"{x:.0f}", fill=INK, font=font)
    canvas.text((MARGIN, top + 6), title, fill=INK, font=font)
    across = MARGIN
    for who, other in zip(sorted(lines_of), MORE_COLOURS):
        colour = COLOURS.get(who, other)
        canvas.text((across, top + 30), who, fill=colour, font=font)
        across += font.getlength(who) + 30
        for line in lines_of[who]:
            canvas.line([place(x, y) for x, y in line], fill=colour, width=2)
