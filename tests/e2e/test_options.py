"""The options popup: everything that opens it, chooses in it and closes it."""

import time

import pytest

from harness.content import order_in, picture, with_default_folder
from harness.options import (focus_box, middle, open_options, row_position, wait_focus_on_button,
                             wait_focus_on_row, wait_options)
from harness.player import DEMO_MODE
from harness.waiting import wait_until

OPENED, CLOSED = "Block E-POP = 1", "Block E-POP = 0"
PLAYS_VIDEO = r"OnPlayVideo\(\d+\) > ."
PLAYS_PHOTO = r"OnPlayPhoto\(\d+\) > ."


@pytest.fixture
def two_videos(screen, content, shelf):
    """Two videos of eight seconds; their colours in the order of the list."""
    shelf.video(content / "red.mp4", "red", seconds=8)
    shelf.video(content / "green.mp4", "green", seconds=8)
    return [name.removesuffix(".mp4") for name in order_in(content, [".mp4"])]


@pytest.fixture
def player(tv, screen, content, two_videos):
    player = tv.start(folder=content)
    screen.wait_for(two_videos[0])
    return player


def wait_closed(screen, player, after, shows):
    player.log.wait(CLOSED, after=after)
    wait_until(lambda: screen.shown() in shows, f"one of {shows} alone")


def test_the_film_lies_over_the_window_only_while_the_window_is_empty(
        tv, screen, content, two_videos):
    player = tv.start(folder=content, WAYLAND_DEBUG="client")
    player.tolerate(r"^\[ *\d+\.\d+\] ")
    wait_until(lambda: screen.shown() in two_videos, "the first video")
    player.log.wait(r"wl_subsurface@\d+\.place_above")
    here = open_options(screen, player)
    player.log.wait(r"wl_subsurface@\d+\.place_below", after=here)
    wait_focus_on_row(screen)
    here = player.log.position()
    screen.key("Escape")
    player.log.wait(r"wl_subsurface@\d+\.place_above", after=here)


def test_the_row_in_force_has_the_focus_and_enter_there_only_closes(
        tv, screen, player, two_videos):
    here = open_options(screen, player)
    wait_focus_on_row(screen)
    screen.key("Return")
    wait_closed(screen, player, here, two_videos)
    assert tv.config(DEMO_MODE) in (None, 0)
    assert not player.log.find_all(PLAYS_VIDEO, after=here)


def test_arrow_keys_reach_the_button_and_enter_there_closes(tv, screen, player, two_videos):
    here = open_options(screen, player)
    wait_focus_on_row(screen)
    screen.key("Down", "Down", "Down")
    wait_focus_on_button(screen)
    screen.key("Return")
    wait_closed(screen, player, here, two_videos)
    assert tv.config(DEMO_MODE) in (None, 0)
    assert not player.log.find_all(PLAYS_VIDEO, after=here)


def test_with_no_row_in_force_the_button_has_the_focus_and_enter_only_closes(
        tv, screen, player, two_videos):
    tv.set_config(DEMO_MODE, 9)
    here = open_options(screen, player)
    player.log.wait("pItem is null", after=here)
    wait_focus_on_button(screen)
    screen.key("Return")
    wait_closed(screen, player, here, two_videos)
    assert tv.config(DEMO_MODE) == 9
    assert not player.log.find_all(PLAYS_VIDEO, after=here)


def test_click_on_the_button_closes(screen, player, two_videos):
    here = open_options(screen, player)
    wait_focus_on_row(screen)
    screen.key("Down", "Down", "Down")
    button = middle(wait_focus_on_button(screen))
    screen.key("Up")
    wait_focus_on_row(screen)
    screen.move_pointer(*button)
    wait_focus_on_button(screen)
    screen.click(*button)
    wait_closed(screen, player, here, two_videos)
    assert not player.log.find_all(PLAYS_VIDEO, after=here)


def test_focus_follows_the_pointer_and_a_click_chooses(tv, screen, player, two_videos):
    here = open_options(screen, player)
    in_force = wait_focus_on_row(screen)
    second_file = row_position(screen, 2)
    screen.move_pointer(*second_file)
    wait_until(lambda: focus_box(screen) and focus_box(screen)[1] > in_force[3],
               "the focus further down")
    screen.click(*second_file)
    tv.wait_config(DEMO_MODE, 2)
    wait_closed(screen, player, here, two_videos[1:])


def test_the_choice_outlives_the_built_in_demo(tv, screen, content, two_videos):
    player = tv.start(prefix=with_default_folder(content))
    screen.wait_for(two_videos[0])
    open_options(screen, player)
    wait_focus_on_row(screen)
    screen.key("Down", "Down", "Return")
    tv.wait_config(DEMO_MODE, 2)
    assert player.terminate() == 0
    again = tv.start(prefix=with_default_folder(content))
    assert again.log.wait(PLAYS_VIDEO + r"*/(.*)\.mp4").group(1) == two_videos[1]


def test_click_on_the_row_in_force_only_closes(tv, screen, player, two_videos):
    here = open_options(screen, player)
    screen.click(*row_position(screen, 0))
    wait_closed(screen, player, here, two_videos)
    assert tv.config(DEMO_MODE) in (None, 0)
    assert not player.log.find_all(PLAYS_VIDEO, after=here)


def test_click_on_off_ends_the_demo(tv, screen, player):
    open_options(screen, player)
    screen.click(*row_position(screen, -1))
    assert player.wait_end() == 0
    assert tv.config(DEMO_MODE) == -1


def choose_a_file_and_play_all_again(tv, screen, player):
    """Returns where the log stood before the second choice."""
    open_options(screen, player)
    wait_focus_on_row(screen)
    screen.key("Down", "Return")
    tv.wait_config(DEMO_MODE, 1)
    player.log.wait("m_OnDestroyPopTimerCB")
    open_options(screen, player)
    wait_focus_on_row(screen)
    here = player.log.position()
    screen.key("Up", "Return")
    tv.wait_config(DEMO_MODE, 0)
    return here


def test_play_all_chosen_over_a_photo_goes_on_with_the_slide_show(tv, screen, content):
    for colour in ("red", "green"):
        picture(content / f"{colour}.jpg", colour)
    first, second = [name.removesuffix(".jpg") for name in order_in(content, [".jpg"])]
    player = tv.start(folder=content, **tv.timers(5, above=4))
    screen.wait_for(first)
    here = choose_a_file_and_play_all_again(tv, screen, player)
    player.log.wait(PLAYS_PHOTO + rf"*/{second}\.jpg", after=here)
    screen.wait_for(second)
    screen.wait_for(first)


def test_play_all_chosen_over_a_video_lets_it_play_on(tv, screen, content, two_videos):
    player = tv.start(folder=content)
    screen.wait_for(two_videos[0])
    here = choose_a_file_and_play_all_again(tv, screen, player)
    wait_closed(screen, player, here, two_videos[:1])
    assert not player.log.find_all(PLAYS_VIDEO, after=here)


def test_options_close_by_themselves_after_thirty_seconds(tv, screen, content, two_videos):
    """The clock runs ten times as fast."""
    player = tv.start(folder=content, **tv.timers(10, above=20))
    screen.wait_for(two_videos[0])
    here = open_options(screen, player)
    wait_closed(screen, player, here, two_videos)
    opened = player.log.find_all(OPENED, after=here)[0][0]
    closed = player.log.find_all(CLOSED, after=here)[0][0]
    assert closed - opened > 2.9
    assert player.log.find_all(r"m_OnButtonResponseCB", after=here)
    # All is as before: they open again.
    player.log.wait("m_OnDestroyPopTimerCB", after=here)
    open_options(screen, player)


def test_nothing_opens_while_the_options_are_being_torn_down(tv, screen, content, two_videos):
    """Half a second is stretched to two and a half."""
    player = tv.start(folder=content, **tv.timers(0.2, above=0.4))
    screen.wait_for(two_videos[0])
    here = open_options(screen, player)
    screen.key("Return")
    wait_closed(screen, player, here, two_videos)
    screen.key("Return")
    player.log.wait(CLOSED, after=here, count=2)
    pressed = player.log.position()
    screen.click(40, 40)
    player.log.wait("m_OnWindowMouseDownCB", after=pressed)
    assert not player.log.find_all("m_OnDestroyPopTimerCB", after=here), "the machine is too slow"
    player.log.wait("m_OnDestroyPopTimerCB", after=here)
    assert len(player.log.find_all(OPENED, after=here)) == 1
    open_options(screen, player)


@pytest.fixture
def turning_set(tv, content, shelf):
    """A set that takes its time to turn, with something to play on both sides."""
    tv.configure(panel={"rotator": "yes", "turning_time_s": "2.5"})
    shelf.video(content / "red.mp4", "red", seconds=8)
    shelf.video(content / "portrait_green.mp4", "green", size=(180, 320), seconds=8)
    return tv


def test_options_are_refused_while_the_panel_turns(turning_set, screen, content):
    player = turning_set.start(folder=content)
    screen.wait_for("red")
    turning_set.tvctl("panel", "portrait")
    player.log.wait("TV Is Rotating")
    here = player.log.position()
    screen.click(40, 40)
    player.log.wait("m_OnWindowMouseDownCB", after=here)
    screen.key("Return")
    player.log.wait(r"EventID = 8,iParam1 = 1$", after=here)
    assert not player.log.find_all("Rotation Done", after=here), "the machine is too slow"
    player.log.wait("Rotation Done", after=here)
    screen.wait_for("green")
    assert not player.log.find_all(OPENED)
    open_options(screen, player)


def test_a_turn_closes_the_options(turning_set, screen, content):
    player = turning_set.start(folder=content)
    screen.wait_for("red")
    here = open_options(screen, player)
    turning_set.tvctl("panel", "portrait")
    player.log.wait(CLOSED, after=here)
    screen.wait_for("green")


def test_a_toast_takes_the_place_of_the_options_and_goes_after_three_seconds(
        turning_set, screen, content):
    player = turning_set.start(folder=content)
    screen.wait_for("red")
    here = open_options(screen, player)
    assert wait_focus_on_row(screen)
    turning_set.press("XF86Color")
    player.log.wait(CLOSED, after=here)
    player.log.wait("m_UpdateNotificationLabel", after=here)
    appeared = player.log.times[-1]
    wait_until(lambda: focus_box(screen) is None and screen.shown() == "red",
               "the toast, which covers less than the options")
    assert not screen.near(screen.width // 2 - 30, screen.height // 2 + 12, (215, 30, 30))

    def alone():
        pixels = screen.picture()[screen.height // 2 - 20:screen.height // 2 + 20, 100:-100]
        return int(pixels.max(axis=(0, 1))[1]) < 80

    assert not alone()
    wait_until(alone, "the video without the toast")
    assert time.monotonic() - appeared > 2.8
    assert player.log.find_all("set timer 300 sec", after=here)


def test_the_right_button_and_the_middle_one_open_nothing(screen, player):
    here = player.log.position()
    for button in (2, 3):
        screen.click(40, 40, button=button)
    player.log.wait("m_OnWindowMouseDownCB", after=here, count=2)
    screen.click(40, 40)
    wait_options(screen, player, here)
    assert len(player.log.find_all(OPENED, after=here)) == 1
