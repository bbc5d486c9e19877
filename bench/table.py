"""The rows of the table: what each measures, how its figures are judged, and what they came to."""

import statistics
from dataclasses import dataclass, field
from typing import Callable, Optional

from stage import MPV, PLAYER

# The first fifth of a long run fills caches, plugins and the arenas of threads.
SETTLED_AFTER = 0.2


@dataclass(frozen=True)
class Figure:
    """One line of the table. `reached` gets the player's median and mpv's, which is None where mpv
    has none, and tells whether the player is as good as is wanted; None where nothing is."""

    name: str
    what: str
    unit: str
    wanted: str
    reached: Optional[Callable[[float, Optional[float]], bool]]


def at_most(bound):
    return lambda player, mpv: player <= bound


def at_most_mpv(player, mpv):
    return mpv is not None and player <= mpv


def at_least_mpv(player, mpv):
    # A picture more or less in the window is no difference.
    return mpv is not None and player >= mpv - 0.2


def at_most_of_mpv(share):
    return lambda player, mpv: mpv is not None and player <= share * mpv


@dataclass(frozen=True)
class Row:
    """Figures that come from the same run. `measure(stage, who, results)` is called in each round, or
    in the first alone, for each of the programs."""

    name: str
    figures: tuple
    programs: tuple
    only_once: bool
    measure: Callable


ROWS = []


def row(name, *figures, beside_mpv=False, only_once=False):
    """Makes a function the measurement of a row of the table."""
    def add(measure):
        programs = (PLAYER, MPV) if beside_mpv else (PLAYER,)
        ROWS.append(Row(name, figures, programs, only_once, measure))
        return measure
    return add


@dataclass
class Results:
    """All that was measured: values of each figure for each program, and curves to be looked at."""

    changes: int
    values: dict = field(default_factory=dict)
    curves: dict = field(default_factory=dict)
    failures: list = field(default_factory=list)

    def note(self, figure, who, *values):
        self.values.setdefault((figure, who), []).extend(values)

    def draw(self, chart, who, points):
        """Keeps a curve, a list of (x, y), for one of the charts."""
        self.curves.setdefault((chart, who), []).append(points)

    def median(self, figure, who):
        values = self.values.get((figure.name, who))
        return statistics.median(values) if values else None

    def told(self, figure, who):
        """The median with the smallest and the largest value and how many there are."""
        values = self.values.get((figure.name, who))
        if not values:
            return "–"
        median = f"{shown(statistics.median(values))} {figure.unit}".rstrip()
        if len(values) == 1:
            return median
        return f"{median} ({shown(min(values))}–{shown(max(values))}, n = {len(values)})"

    def verdict(self, figure):
        player = self.median(figure, PLAYER)
        if player is None:
            return "not measured"
        if figure.reached is None:
            return "–"
        return "yes" if figure.reached(player, self.median(figure, MPV)) else "**no**"

    def lines(self, rows):
        """The table in Markdown."""
        yield "| What | mpv | Player | Wanted | Reached |"
        yield "|---|---|---|---|---|"
        for one in rows:
            for figure in one.figures:
                yield (f"| {figure.what} | {self.told(figure, MPV)} | {self.told(figure, PLAYER)} | "
                       f"{figure.wanted} | {self.verdict(figure)} |")


def shown(value):
    """A number with as many digits as mean something."""
    return f"{value:.0f}" if value == int(value) or abs(value) >= 100 else f"{value:.1f}" \
        if abs(value) >= 1 else f"{value:.2f}"


def percentile(values, share):
    """The value that this share of all values does not exceed."""
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, int(share * len(ordered)))]


def slope(points):
    """How steep the straight line is that fits the points best by least squares."""
    xs, ys = zip(*points)
    return statistics.linear_regression(xs, ys).slope


def rise(values):
    """How much more the least of the second half is than that of the first: what is left over each
    time adds up there too, while the most depends on the moment."""
    middle = len(values) // 2
    return min(values[middle:]) - min(values[:middle])
