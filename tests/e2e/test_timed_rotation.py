"""Timed rotation: the panel turns by itself, at the intervals that staff set."""

import pytest

from harness.content import order_in, picture

KEYS = "db/ostrel-demo-player-tv/"
TURNS = "TV Is Rotating"
# The clock runs a hundred times as fast: five minutes pass in three seconds.
SPEED, LONG = 100, 100


@pytest.fixture
def turning_set(tv, content, shelf):
    """A set that turns at once, with something to play on both sides."""
    tv.configure(panel={"rotator": "yes", "turning_time_s": "0"})
    shelf.video(content / "red.mp4", "red", seconds=20)
    shelf.video(content / "portrait_green.mp4", "green", size=(180, 320), seconds=20)
    return tv


def test_panel_turns_back_and_forth_at_the_interval_of_each_side(turning_set, screen, content):
    turning_set.set_config(KEYS + "landscape_timer", 1)
    turning_set.set_config(KEYS + "portrait_timer", 8)
    player = turning_set.start(folder=content, **turning_set.timers(SPEED, above=LONG))
    screen.wait_for("red")
    screen.key("a")
    player.log.wait("set timer 330 sec")
    screen.wait_for("green")
    player.log.wait("set timer 600 sec")
    screen.wait_for("red")
    player.log.wait("set timer 330 sec", count=2)
    screen.wait_for("green")

    set_at = [when for when, _ in player.log.find_all(r"set timer (330|600) sec")]
    turned_at = [when for when, _ in player.log.find_all(TURNS)]
    stayed = [turn - begin for begin, turn in zip(set_at, turned_at)]
    # Upper bounds are wide: a busy machine may be late, but not by the other side's interval.
    for lasted, interval in zip(stayed, (3.3, 6.0, 3.3)):
        assert interval - 0.2 < lasted < interval + 2.5, stayed


def test_timed_rotation_goes_on_after_a_restart_until_it_is_switched_off(
        turning_set, screen, content):
    player = turning_set.start(folder=content)
    screen.wait_for("red")
    screen.key("a")
    turning_set.wait_config(KEYS + "rotation_auto_mode", 1)
    assert player.terminate() == 0

    player = turning_set.start(folder=content, **turning_set.timers(SPEED, above=LONG))
    player.log.wait("set timer 300 sec")
    player.log.wait(TURNS)
    screen.wait_for("green")
    player.log.wait("set timer 300 sec", count=2)
    screen.key("m")
    turning_set.wait_config(KEYS + "rotation_auto_mode", 0)
    here = player.log.position()
    turning_set.wait_position(turning_set.position() + 3.5)
    assert not player.log.find_all(TURNS, after=here)
    screen.key("a")
    player.log.wait("set timer 300 sec", after=here)
    player.log.wait(TURNS, after=here)


def test_new_interval_counts_from_the_key_that_set_it(turning_set, screen, content):
    player = turning_set.start(folder=content, **turning_set.timers(SPEED, above=LONG))
    screen.wait_for("red")
    screen.key("a")
    player.log.wait("set timer 300 sec")
    for _ in range(5):
        screen.key("Next")
    player.log.wait("set timer 450 sec")
    stepped = player.log.find_all("set timer 450 sec")[0][0]
    screen.key("Prior")
    turning_set.wait_config(KEYS + "portrait_timer", 1)
    player.log.wait(TURNS)
    assert player.log.find_all(TURNS)[0][0] - stepped > 4.3
    player.log.wait("set timer 330 sec")
    here = player.log.position()
    screen.key("g")
    turning_set.wait_config(KEYS + "portrait_timer", 0)
    turning_set.wait_config(KEYS + "landscape_timer", 0)
    player.log.wait("set timer 300 sec", after=here)


def test_timed_rotation_stays_where_the_other_side_has_no_content(tv, screen, content, shelf):
    tv.configure(panel={"rotator": "yes", "turning_time_s": "0"})
    shelf.video(content / "red.mp4", "red", seconds=20)
    player = tv.start(folder=content, **tv.timers(SPEED, above=LONG))
    screen.wait_for("red")
    screen.key("a")
    player.log.wait("m_OnZavoTimeOutCB")
    player.log.wait("m_ChangeRotationType")
    screen.key("h")
    player.log.wait(r"EventID = 8,iParam1 = 3$")
    assert not player.log.find_all(TURNS)
    assert player.running()


def test_timer_keys_do_nothing_on_a_set_that_cannot_turn(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red", seconds=20)
    player = tv.start(folder=content)
    screen.wait_for("red")
    screen.key("a", "m", "Prior", "Next", "g", "t", "o")
    player.tolerate("select speaker failed")
    player.log.wait(r"EventID = 8,iParam1 = 6$")
    assert [tv.config(KEYS + key) for key in
            ("rotation_auto_mode", "portrait_timer", "landscape_timer")] == [0, 0, 0]
    assert not player.log.find_all("strContent|set timer")


def test_photo_stays_for_three_minutes_on_a_set_that_turns(tv, screen, content):
    """The clock runs a hundred times as fast: three minutes pass in less than two seconds."""
    tv.configure(panel={"rotator": "yes"})
    for colour in ("red", "green"):
        picture(content / f"{colour}.jpg", colour)
    first, second = [name.removesuffix(".jpg") for name in order_in(content, [".jpg"])]
    player = tv.start(folder=content, **tv.timers(SPEED, above=LONG))
    # The last photo has a timer of its own, so both are waited for.
    for colour, count in ((first, 1), (second, 2), (first, 3)):
        player.log.wait(rf"OnPlayPhoto\(\d+\) > .*/{colour}\.jpg", count=(count + 1) // 2)
        screen.wait_for(colour)
    shown = [when for when, _ in player.log.find_all("decode success")]
    asked = [when for when, _ in player.log.find_all(r"OnPlayPhoto\(\d+\) > .*\.jpg")]
    stayed = [after - before for before, after in zip(shown, asked[1:])]
    # Five seconds, as on other sets, would not have been shortened.
    assert all(1.7 < lasted < 4.5 for lasted in stayed), stayed
