"""Keys pressed by impatient hands, by elbows, and by customers who want to see the desktop."""

import re

import pytest

from harness.content import order_in, picture, with_default_folder
from harness.options import focus_box, open_options
from harness.pictures import wait_moving, wait_still
from harness.player import DEMO_MODE
from harness.waiting import wait_until

KEYS = "db/ostrel-demo-player-tv/"
HANDLED = r"m_OnHandleEcorePipeCB\(\d+\) > EventID = 8,iParam1 = "
PLAYS = r"OnPlay(Video|Photo)\(\d+\) > ."
# A photo is left so soon that the event of its parsing meets the next one, which is not parsed yet.
LEFT_TOO_SOON = r"DecodePicture\(\d+\) > $"
# More than any hand can do in the time that a busy machine takes for it.
MOST_KILOBYTES_MORE = 150_000


def memory_kilobytes(player):
    with open(f"/proc/{player.pid}/status", encoding="ascii") as file:
        return int(re.search(r"VmRSS:\s+(\d+)", file.read()).group(1))


def hammer(screen, player, key, key_type, times):
    """Presses the key fifty times a second, and waits until every press was acted on."""
    here = player.log.position()
    screen.key(*[key] * times, delay_ms=20)
    player.log.wait(HANDLED + rf"{key_type}$", after=here, count=times)
    return here


@pytest.fixture
def photos(content):
    """Three photos; their colours in the order of the list."""
    for colour in ("red", "green", "blue"):
        picture(content / f"{colour}.jpg", colour)
    return [name.removesuffix(".jpg") for name in order_in(content, [".jpg"])]


def test_next_and_previous_keys_walk_through_photos_and_wrap(tv, screen, content, photos):
    first, second, third = photos
    tv.start(folder=content)
    screen.wait_for(first)
    screen.key("Right")
    screen.wait_for(second)
    screen.key("n")
    screen.wait_for(third)
    screen.key("n")
    screen.wait_for(first)
    screen.key("b")
    screen.wait_for(third)
    screen.key("Left")
    screen.wait_for(second)


def test_pause_holds_a_photo_and_play_goes_on(tv, screen, content, photos):
    """Five seconds pass in one."""
    player = tv.start(folder=content, **tv.timers(5, above=4))
    screen.wait_for(photos[1])
    screen.key("Right")
    screen.wait_for(photos[2])
    screen.key("h")
    player.log.wait(HANDLED + "3$")
    here = player.log.position()
    held = screen.shown()
    # The toggle, rewind and forward keys are the video's; the time of a photo goes by meanwhile.
    player.tolerate("player_set_playback_rate error")
    for key, key_type in (("space", 5), ("r", 7), ("f", 8)):
        screen.key(key)
        player.log.wait(HANDLED + f"{key_type}$", after=here)
    wait_still(screen)
    wait_still(screen)
    assert screen.shown() == held and not player.log.find_all(PLAYS, after=here)
    screen.key("p")
    player.log.wait(PLAYS, after=here)


def test_rewind_and_forward_do_nothing_in_the_built_in_demo(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red", "green", seconds=4)
    player = tv.start(prefix=with_default_folder(content))
    screen.wait_for("red")
    screen.key("f", "r")
    player.log.wait(HANDLED + "7$")
    screen.wait_for("green")
    assert not player.log.find_all("m_SetTrickSpeed")


@pytest.fixture
def ball(tv, screen, content, shelf):
    """The player on one long video in which something moves."""
    shelf.video(content / "ball.mp4", "red", seconds=20, pattern="ball")
    player = tv.start(folder=content)
    player.log.wait("player_start successful")
    wait_moving(screen)
    return player


def test_hammered_pause_ends_where_the_count_says(screen, ball):
    hammer(screen, ball, "space", 5, 101)
    wait_still(screen)
    hammer(screen, ball, "space", 5, 1)
    wait_moving(screen)


def test_hammered_timer_keys_end_where_the_count_says(tv, screen, content, shelf):
    tv.configure(panel={"rotator": "yes"})
    shelf.video(content / "red.mp4", "red", seconds=20)
    player = tv.start(folder=content)
    screen.wait_for("red")
    hammer(screen, player, "a", 12, 20)
    before = memory_kilobytes(player)
    hammer(screen, player, "a", 12, 101)
    tv.wait_config(KEYS + "rotation_auto_mode", 1)
    hammer(screen, player, "Prior", 14, 57)
    tv.wait_config(KEYS + "portrait_timer", 7)
    hammer(screen, player, "Next", 15, 43)
    tv.wait_config(KEYS + "landscape_timer", 3)
    assert memory_kilobytes(player) - before < MOST_KILOBYTES_MORE
    assert player.running()


def test_hammered_enter_leaves_options_that_work(screen, ball):
    here = hammer(screen, ball, "Return", 1, 100)
    ball.log.wait("m_OnDestroyPopTimerCB", after=here)
    # The last press may have opened them.
    opened = len(ball.log.find_all("m_CreatePopUp", after=here))
    torn_down = len(ball.log.find_all("m_OnDestroyPopTimerCB", after=here))
    if opened > torn_down:
        screen.key("Escape")
        ball.log.wait("m_OnDestroyPopTimerCB", after=here, count=opened)
    here = open_options(screen, ball)
    screen.key("Escape")
    ball.log.wait("m_OnDestroyPopTimerCB", after=here)
    wait_moving(screen)
    assert ball.running()


def test_hammered_next_key_ends_at_the_file_that_the_count_says(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red", seconds=20)
    shelf.video(content / "green.mkv", "green", seconds=20)
    picture(content / "blue.jpg", "blue")
    names = [name.rpartition(".")[0] for name in
             order_in(content, [".mp4", ".mkv"]) + order_in(content, [".jpg"])]
    player = tv.start(folder=content)
    player.tolerate(LEFT_TOO_SOON)
    screen.wait_for(names[0])
    hammer(screen, player, "Right", 10, 30)
    screen.wait_for(names[0])
    files, before = len(player.open_files()), memory_kilobytes(player)
    hammer(screen, player, "Right", 10, 61)
    screen.wait_for(names[1])
    wait_until(lambda: len(player.open_files()) <= files + 3,
               lambda: f"few open files again; {len(player.open_files())}, before {files}")
    assert memory_kilobytes(player) - before < MOST_KILOBYTES_MORE


def test_held_key_ends_where_its_repetitions_say(screen, ball):
    here = ball.log.position()
    with screen.held("space"):
        ball.log.wait(HANDLED + "5$", after=here, count=40)
    # What was on its way when the key came up still counts.
    screen.key("o")
    ball.tolerate("select speaker failed")
    ball.log.wait(HANDLED + "6$", after=here)
    presses = len(ball.log.find_all(HANDLED + "5$", after=here))
    (wait_still if presses % 2 else wait_moving)(screen)


def test_held_next_key_does_not_run_on_after_it_came_up(tv, screen, content, photos):
    player = tv.start(folder=content)
    player.tolerate(LEFT_TOO_SOON)
    screen.wait_for(photos[0])
    here = player.log.position()
    with screen.held("Right"):
        player.log.wait(HANDLED + "10$", after=here, count=40)
    screen.key("h")
    player.log.wait(HANDLED + "3$", after=here)
    presses = len(player.log.find_all(HANDLED + "10$", after=here))
    screen.wait_for(photos[presses % 3])


# What leaves, closes, switches or opens something on one desktop or another.
TRICKS = ["alt+F4", "super", "super+d", "super+l", "super+Tab", "alt+Tab", "alt+shift+Tab",
          "alt+F1", "alt+F2", "ctrl+alt+F2", "ctrl+alt+t", "ctrl+alt+l",
          "ctrl+alt+Delete", "ctrl+q", "ctrl+w", "ctrl+c", "ctrl+z", "ctrl+shift+i",
          "F1", "F5", "F10", "F11", "F12", "shift+F10", "Print", "Tab", "Delete", "Insert", "Home",
          "End", "q", "x", "Scroll_Lock", "Num_Lock", "Caps_Lock", "Caps_Lock"]


@pytest.mark.parametrize("where", ["over the video", "with the options open"])
def test_nothing_a_customer_types_leaves_the_demo(tv, screen, ball, where):
    open_too = where == "with the options open"
    if open_too:
        open_options(screen, ball)
    here = ball.log.position()
    screen.key(*TRICKS, "o")
    ball.tolerate("select speaker failed")
    ball.log.wait(HANDLED + "6$", after=here)
    assert ball.running() and screen.compositor.poll() is None
    assert tv.config(DEMO_MODE) == 0
    if open_too:
        assert focus_box(screen) is not None
        screen.key("Escape")
    wait_moving(screen)
    assert not ball.log.find_all(PLAYS, after=here)
