"""Pictures of how it is meant to look, and the comparison of the screen with them."""

import os
import shutil

import numpy
from PIL import Image

from .pictures import wait_still
from .waiting import wait_until

FOLDER = os.path.join(os.path.dirname(__file__), "..", "reference")
# A pixel is wrong when one of its colours is this far off: more than rounding and the few colours
# of the kept picture can do, less than a letter that is missing or has moved.
FAR = 48
# So many of a million pixels may be wrong. A small letter has some hundred.
FORGIVEN = 40
CORNER = 32
COLOURS_KEPT = 128
DEADLINE_S = 15.0


def wrong_pixels(expected, actual):
    """Where two pictures of one size differ."""
    far = numpy.abs(expected.astype(int) - actual.astype(int)).max(axis=2) > FAR
    # A corner is where the pointer is parked, and nothing else is ever shown.
    for rows in (slice(None, CORNER), slice(-CORNER, None)):
        far[rows, :CORNER] = far[rows, -CORNER:] = False
    return far


def side_by_side(expected, actual, wrong):
    """Expected, actual, and the differences in red over a pale copy, in one picture."""
    pale = (actual // 4 + 190).astype(numpy.uint8)
    pale[wrong] = (220, 0, 0)
    height = max(expected.shape[0], actual.shape[0])
    panels = [numpy.pad(panel, ((0, height - panel.shape[0]), (0, 16), (0, 0)),
                        constant_values=255) for panel in (expected, actual, pale)]
    return Image.fromarray(numpy.concatenate(panels, axis=1))


class References:
    """Compares the screen with kept pictures, or keeps what it shows."""

    def __init__(self, screen, out_folder, update):
        self._screen = screen
        self._out = out_folder
        self._update = update
        shutil.rmtree(out_folder, ignore_errors=True)

    def check(self, name, turned=0):
        """Waits until the screen, `turned` by quarter turns so that it stands upright, looks like the
        kept picture. If it does not come to that, leaves the two and their difference."""
        path = os.path.join(FOLDER, f"{name}.png")
        if self._update:
            picture = numpy.rot90(wait_still(self._screen), turned)
            kept = Image.fromarray(picture).quantize(COLOURS_KEPT, dither=Image.Dither.NONE)
            kept.save(path, optimize=True)
            return
        assert os.path.exists(path), f"no {path}; make it with --update-references and look at it"
        with Image.open(path) as image:
            expected = numpy.asarray(image.convert("RGB"))
        state = {}

        def alike():
            state["actual"] = actual = numpy.rot90(self._screen.picture(), turned)
            assert actual.shape == expected.shape, (actual.shape, expected.shape)
            state["wrong"] = wrong_pixels(expected, actual)
            return state["wrong"].sum() * 1e6 <= FORGIVEN * state["wrong"].size

        try:
            wait_until(alike, "the kept picture", DEADLINE_S)
        except AssertionError:
            os.makedirs(self._out, exist_ok=True)
            wrong = state["wrong"]
            Image.fromarray(state["actual"]).save(os.path.join(self._out, f"{name}.actual.png"))
            shutil.copy(path, os.path.join(self._out, f"{name}.expected.png"))
            side_by_side(expected, state["actual"], wrong).save(
                os.path.join(self._out, f"{name}.difference.png"))
            rows, columns = numpy.nonzero(wrong)
            raise AssertionError(
                f"{name} does not look as it should: {wrong.sum()} pixels differ, from "
                f"({columns.min()}, {rows.min()}) to ({columns.max()}, {rows.max()}); "
                f"see {self._out}/{name}.difference.png") from None
