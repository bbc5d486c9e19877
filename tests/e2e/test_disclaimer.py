"""The disclaimer picture over a starting video."""

import numpy
import pytest

from harness.content import order_in, picture
from harness.options import open_options, wait_focus_on_row
from harness.screen import COLOURS
from harness.waiting import wait_until

STARTED = "player_start successful"
TIME_OUT = "time out, evas hide, delete timer"
MARGIN = 24


def overlay_box(screen, colour):
    """Left, top, right and bottom of what lies over the picture of that colour; None for nothing."""
    far = numpy.abs(screen.picture().astype(int) - numpy.array(COLOURS[colour])).max(axis=2) > 40
    # The edges, where the pointer may be seen, are left out.
    inner = far[MARGIN:-4, MARGIN:-MARGIN]
    rows, columns = numpy.flatnonzero(inner.any(axis=1)), numpy.flatnonzero(inner.any(axis=0))
    if rows.size == 0:
        return None
    return (int(columns[0]) + MARGIN, int(rows[0]) + MARGIN, int(columns[-1]) + MARGIN,
            int(rows[-1]) + MARGIN)


def wait_overlay(screen, colour):
    """Where something lies over the picture, in two looks alike: one alone may see a frame half drawn."""
    box = None

    def lies_over():
        nonlocal box
        former, box = box, overlay_box(screen, colour)
        return box is not None and box == former and \
            (box[2] - box[0]) * (box[3] - box[1]) < 0.6 * screen.width * screen.height
    wait_until(lies_over, f"something over the {colour} picture")
    return box


def wait_alone(screen, colour):
    wait_until(lambda: overlay_box(screen, colour) is None, f"{colour} and nothing else")


@pytest.fixture
def warned(tv):
    """A set that shows the disclaimer and can turn."""
    tv.configure(product={"disclaimer": "yes"}, panel={"rotator": "yes", "turning_time_s": "0"})
    return tv


def test_sets_without_the_feature_show_none(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red", seconds=20)
    player = tv.start(folder=content)
    player.log.wait(STARTED)
    screen.wait_for("red")
    with screen.record() as recorder:
        wait_until(lambda: recorder.samples > 100, "a hundred looks")
    assert set(recorder.names()) == {"red"}
    assert overlay_box(screen, "red") is None
    assert not player.log.find_all(r"player_img_china_disclaimer")


def test_photos_show_none(warned, screen, content):
    picture(content / "red.jpg", "red")
    player = warned.start(folder=content)
    player.log.wait("decode success")
    screen.wait_for("red")
    assert overlay_box(screen, "red") is None


def test_second_start_within_five_seconds_does_not_lengthen_the_first(
        warned, screen, content, shelf):
    """The clock runs twice as fast: the picture stays for two and a half seconds."""
    for colour in ("red", "green"):
        shelf.video(content / f"{colour}.mp4", colour, seconds=20)
    first, second = [name.removesuffix(".mp4") for name in order_in(content, [".mp4"])]
    player = warned.start(folder=content, **warned.timers(2, above=4))
    player.log.wait(STARTED)
    begin = player.log.find_all(STARTED)[0][0]
    wait_overlay(screen, first)
    warned.wait_position(1.2)
    screen.key("Right")
    player.log.wait(STARTED, count=2)
    restart = player.log.find_all(STARTED)[1][0]
    wait_overlay(screen, second)
    player.log.wait(TIME_OUT)
    gone = player.log.find_all(TIME_OUT)[0][0]
    assert gone - begin > 2.4
    assert gone - restart < 2.3, "it stayed as long as after the second start alone"
    wait_alone(screen, second)
    # The first one's end has taken the second one's timer along.
    warned.wait_position(3.0)
    assert len(player.log.find_all(TIME_OUT)) == 1


def test_turn_brings_the_other_picture(warned, screen, content, shelf):
    """The clock runs slowly, so that the picture is still there when it is looked at."""
    shelf.video(content / "red.mp4", "red", seconds=20)
    shelf.video(content / "portrait_green.mp4", "green", size=(180, 320), seconds=20)
    player = warned.start(folder=content, **warned.timers(0.05, above=4))
    left, top, right, bottom = wait_overlay(screen, "red")
    assert top > screen.height // 2 and right - left > bottom - top
    warned.tvctl("panel", "portrait")
    player.log.wait(STARTED, count=2)
    left, top, right, bottom = wait_overlay(screen, "green")
    # Upright for who stands before the turned panel, whose lower edge is the screen's right one: the
    # taller picture lies on its side.
    assert left > screen.width // 3 and right - left > bottom - top
    assert right > screen.width * 0.9
    warned.tvctl("panel", "landscape")
    player.log.wait(STARTED, count=3)
    assert wait_overlay(screen, "red")[1] > screen.height // 2


def test_another_choice_hides_it_at_once(warned, screen, content, shelf):
    """The clock runs slowly: the picture would stay for over a minute."""
    shelf.video(content / "red.mp4", "red", seconds=20)
    picture(content / "blue.jpg", "blue")
    player = warned.start(folder=content, **warned.timers(0.05, above=4))
    wait_overlay(screen, "red")
    open_options(screen, player)
    wait_focus_on_row(screen)
    screen.key("Down", "Down", "Return")
    player.log.wait("decode success")
    wait_alone(screen, "blue")
    assert not player.log.find_all(TIME_OUT)
