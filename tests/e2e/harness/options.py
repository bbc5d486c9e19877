"""The options popup, as somebody in front of the set sees it: open or not, and where the focus is."""

import numpy

from .screen import COLOURS
from .waiting import wait_until

# The focus is drawn in white, which nothing else on the screen is.
WHITE = 235
# What the theme is drawn for, and a row's height there.
DESIGN_SIDE, ROW_HEIGHT = 1920, 88


def wait_options(screen, player, after):
    """Until the options stand over the picture."""
    player.log.wait("Block E-POP = 1", after=after)
    middle_of_screen = screen.width // 2, screen.height // 2
    wait_until(lambda: not any(screen.near(*middle_of_screen, colour)
                               for colour in COLOURS.values()), "the options on the screen")


def open_options(screen, player):
    """Presses Enter; returns where the log stood before."""
    here = player.log.position()
    screen.key("Return")
    wait_options(screen, player, here)
    return here


def longest_run(flags):
    """Most true values in a row; letters are white as well, but never for long."""
    edges = numpy.flatnonzero(numpy.diff(numpy.concatenate(([0], flags, [0]))))
    return int((edges[1::2] - edges[::2]).max()) if edges.size else 0


def focus_box(screen):
    """Left, top, right and bottom of what has the focus; None when nothing has."""
    white = (screen.picture() >= WHITE).all(axis=2)
    candidates = numpy.flatnonzero(white.sum(axis=1) > screen.width // 8)
    lines = numpy.array([line for line in candidates
                         if longest_run(white[line]) > screen.width // 8])
    if lines.size == 0:
        return None
    columns = numpy.flatnonzero(white[lines].sum(axis=0) > lines.size // 2)
    return int(columns[0]), int(lines[0]), int(columns[-1]), int(lines[-1])


def _is_on_row(screen, box):
    """The list's rows are as wide as the list, the button is not."""
    return box is not None and box[2] - box[0] > screen.width * 0.35


def wait_focus_on_row(screen):
    wait_until(lambda: _is_on_row(screen, focus_box(screen)), "the focus on a row")
    return focus_box(screen)


def wait_focus_on_button(screen):
    wait_until(lambda: focus_box(screen) and not _is_on_row(screen, focus_box(screen)),
               "the focus on the button")
    return focus_box(screen)


def middle(box):
    return (box[0] + box[2]) // 2, (box[1] + box[3]) // 2


def row_position(screen, rows_below):
    """A point in the row so many rows below the focused one, on a landscape panel."""
    x, y = middle(wait_focus_on_row(screen))
    return x, y + round(rows_below * ROW_HEIGHT * screen.width / DESIGN_SIDE)
