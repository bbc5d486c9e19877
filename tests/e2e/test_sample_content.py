"""The files that everybody sees first: all six, upright, over and over."""

import pytest

from harness.content import appears_in, listed
from harness.waiting import wait_until

WHITE = (255, 255, 255)


def arrow_is_up(screen, upper_edge):
    """Whether the white arrow of the sample files points at this edge of the native screen, and not
    at the opposite one."""
    places = {"top": (screen.width // 2, screen.height // 12),
              "bottom": (screen.width // 2, screen.height - 1 - screen.height // 12),
              "left": (screen.width // 12, screen.height // 2),
              "right": (screen.width - 1 - screen.width // 12, screen.height // 2)}
    opposite = {"top": "bottom", "bottom": "top", "left": "right", "right": "left"}
    return (screen.near(*places[upper_edge], WHITE)
            and not screen.near(*places[opposite[upper_edge]], WHITE))


@pytest.mark.demo_loop
@pytest.mark.parametrize("rotation_state, portrait, upper_edge",
                         [(1, False, "top"), (2, True, "left")],
                         ids=["landscape panel", "portrait panel"])
def test_sample_files_are_shown_upright_in_order_and_wrap(
        tv, screen, sample, sample_colours, rotation_state, portrait, upper_edge):
    # As "ostrel-demo-kiosk panel" does.
    tv.tvctl("config", "set", "rotation_state", str(rotation_state))
    order = listed(sample, portrait)
    assert len(order) == (2 if portrait else 4)
    with screen.record_frames(sample_colours) as recorder:
        tv.start(folder=sample)
        for name in order:
            wait_until(lambda: screen.framed(sample_colours) == name
                       and arrow_is_up(screen, upper_edge),
                       lambda: f"{name} upright; the corners show "
                               f"{screen.framed(sample_colours)}: {screen.corners().tolist()}")
        wait_until(lambda: appears_in(order + order[:1], recorder.names()),
                   lambda: f"{order} and the first again; seen so far: {recorder.names()}")
    seen = [name for _, name in recorder.changes]
    assert "black" not in seen[seen.index(order[0]):]


def test_all_six_sample_files_are_shown_by_a_set_that_turns(tv, screen, sample, sample_colours):
    """The other half comes with a turn of the panel; photos are left early by the arrow key."""
    tv.configure(panel={"rotator": "yes", "turning_time_s": "0.3"})
    tv.start(folder=sample)
    seen = set()
    for portrait, side in ((False, None), (True, "portrait")):
        if side:
            tv.tvctl("panel", side)
        for name in listed(sample, portrait):
            wait_until(lambda: screen.framed(sample_colours) == name, name)
            seen.add(name)
            if name.endswith(".jpg"):
                screen.key("Right")
    assert seen == set(sample_colours)
