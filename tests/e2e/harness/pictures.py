"""Looking at the screen twice: does it stand still, does it move?"""

import numpy

from .waiting import wait_until

STEADY_LOOKS = 40


def wait_still(screen, looks=STEADY_LOOKS):
    """Until the picture has not changed for so many looks in a row; returns it."""
    state = {"last": None, "looks": 0}

    def still():
        now = screen.picture()
        same = state["last"] is not None and numpy.array_equal(now, state["last"])
        state["looks"] = state["looks"] + 1 if same else 0
        state["last"] = now
        return state["looks"] >= looks

    wait_until(still, "a picture that stands still")
    return state["last"]


def wait_moving(screen):
    """Until the picture changes, over and over."""
    for _ in range(3):
        before = screen.picture()
        wait_until(lambda picture=before: not numpy.array_equal(screen.picture(), picture),
                   "a moving picture")
