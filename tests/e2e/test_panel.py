"""A panel that turns: the demo follows it, and turns it where only the other side has content."""

import numpy
import pytest

from harness.content import picture, two_halves
from harness.player import FILE_MODE, PLAYBACK_STATUS
from harness.screen import COLOURS
from harness.waiting import wait_until

ROTATOR = {"rotator": "yes", "turning_time_s": "0.3"}


def test_turned_panel_switches_to_the_portrait_files_and_back(tv, screen, content, shelf):
    tv.configure(panel=ROTATOR)
    shelf.video(content / "red.mp4", "red")
    shelf.video(content / "portrait_green.mp4", "green", size=(180, 320))
    player = tv.start(folder=content)
    screen.wait_for("red")
    assert tv.config(FILE_MODE) == 1

    tv.tvctl("panel", "portrait")
    player.log.wait("TV Is Rotating")
    player.log.wait("Rotation Done")
    screen.wait_for("green")
    tv.wait_config(FILE_MODE, 2)

    tv.tvctl("panel", "landscape")
    screen.wait_for("red")
    tv.wait_config(FILE_MODE, 1)


def assert_covered(screen, name):
    """Every pixel has the colour, but for the corner in which the pointer may still be seen."""
    def strangers():
        far = numpy.abs(screen.picture().astype(int) - numpy.array(COLOURS[name])).max(axis=2) > 24
        far[:40, :40] = False
        return numpy.argwhere(far)

    wait_until(lambda: len(strangers()) == 0,
               lambda: f"{name} everywhere; it is not at {len(strangers())} pixels: "
                       f"{strangers().min(axis=0)} to {strangers().max(axis=0)}", deadline_s=20)


@pytest.mark.parametrize("state", [1, 2, 3, 0])
def test_nothing_of_the_window_lies_over_the_photo(tv, screen, content, state):
    tv.configure(panel={"first_rotation_state": state})
    picture(content / "red.jpg", "red")
    picture(content / "portrait_red.jpg", "red", size=(360, 640))
    tv.start(folder=content)
    screen.wait_for("red")
    assert_covered(screen, "red")


def test_nothing_of_the_window_lies_over_the_photo_after_a_turn(tv, screen, content):
    tv.configure(panel=ROTATOR)
    picture(content / "red.jpg", "red")
    picture(content / "portrait_green.jpg", "green", size=(360, 640))
    tv.start(folder=content)
    screen.wait_for("red")
    tv.tvctl("panel", "portrait")
    screen.wait_for("green")
    assert_covered(screen, "green")


def test_panel_key_turns_the_panel(tv, screen, content, shelf):
    tv.configure(panel=ROTATOR)
    shelf.video(content / "red.mp4", "red")
    shelf.video(content / "portrait_green.mp4", "green", size=(180, 320))
    tv.start(folder=content)
    screen.wait_for("red")
    tv.press("XF86PanelEnter")
    screen.wait_for("green")
    tv.press("XF86PanelEnter")
    screen.wait_for("red")


def test_panel_key_is_refused_when_the_other_side_has_no_content(tv, screen, content, shelf):
    tv.configure(panel=ROTATOR)
    shelf.video(content / "red.mp4", "red")
    player = tv.start(folder=content)
    screen.wait_for("red")
    here = player.log.position()
    tv.press("XF86PanelEnter")
    player.log.wait(r"EventID = 8,iParam1 = 13", after=here)
    tv.press("XF86Display")
    player.log.wait(r"EventID = 8,iParam1 = 17", after=here)
    assert not player.log.find_all("TV Is Rotating", after=here)


def test_landscape_panel_with_portrait_files_only_turns_by_itself(tv, screen, content, shelf):
    tv.configure(panel=ROTATOR)
    shelf.video(content / "portrait_green.mp4", "green", size=(180, 320))
    player = tv.start(folder=content)
    screen.wait_for("green")
    tv.wait_config(FILE_MODE, 2)
    assert player.log.find_all(r"m_OnRotationDelayTimerCB")


def test_landscape_panel_without_rotator_and_portrait_files_only_gives_up(tv, content, shelf):
    shelf.video(content / "portrait_green.mp4", "green", size=(180, 320))
    player = tv.start(folder=content)
    player.tolerate("Create ostrel demo player failed")
    assert player.wait_end() == 0
    assert tv.config(PLAYBACK_STATUS) == 2
    assert player.log.find_all("Create ostrel demo player failed")


# Which side of the native screen the upper edge of a turned panel is, by degrees clockwise.
UPPER_EDGE = {1: "top", 2: "left", 3: "bottom", 0: "right"}


@pytest.mark.parametrize("state", [1, 2, 3, 0])
def test_photo_stands_upright_however_the_panel_is_turned(tv, screen, content, state):
    """The panel's first state: 1 landscape, 2 portrait, 3 and 0 the same upside down."""
    tv.configure(panel={"first_rotation_state": state})
    portrait = state in (2, 0)
    two_halves(content / ("portrait_x.jpg" if portrait else "x.jpg"), "red", "blue",
               (360, 640) if portrait else (640, 360))
    tv.start(folder=content)

    places = {"top": (320, 60), "bottom": (320, 300), "left": (100, 180), "right": (540, 180)}
    opposite = {"top": "bottom", "bottom": "top", "left": "right", "right": "left"}
    upper = UPPER_EDGE[state]
    wait_until(lambda: screen.near(*places[upper], COLOURS["red"])
               and screen.near(*places[opposite[upper]], COLOURS["blue"]),
               lambda: f"red at the {upper}, blue at the other side: {screen.points(3, 3)}")


def test_timer_keys_step_the_intervals_and_switch_timed_rotation(tv, screen, content, shelf):
    tv.configure(panel=ROTATOR)
    shelf.video(content / "red.mp4", "red", seconds=8)
    player = tv.start(folder=content)
    screen.wait_for("red")
    keys = "db/ostrel-demo-player-tv/"
    tv.press("XF86Color")
    tv.wait_config(keys + "rotation_auto_mode", 1)
    player.log.wait("set timer 300 sec")
    # A set that has just been unpacked has no intervals to step; the reset key makes them.
    tv.press("XF86ChannelGuide")
    tv.wait_config(keys + "landscape_timer", 0)
    tv.wait_config(keys + "portrait_timer", 0)
    tv.press("XF86LowerChannel")
    tv.wait_config(keys + "landscape_timer", 1)
    player.log.wait("set timer 330 sec")
    tv.press("XF86RaiseChannel")
    tv.wait_config(keys + "portrait_timer", 1)
    tv.press("XF86ChannelGuide")
    tv.wait_config(keys + "landscape_timer", 0)
    tv.wait_config(keys + "portrait_timer", 0)
    tv.press("XF86More")
    tv.wait_config(keys + "rotation_auto_mode", 0)
