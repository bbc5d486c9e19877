"""The standby card: beneath the player, and in its window while that has no picture."""

import os
import signal
import socket
import subprocess

import pytest

from harness.content import picture
from harness.options import focus_box, open_options
from harness.player import DEMO_MODE, PLAYBACK_STATUS
from harness.pictures import wait_still
from harness.screen import Recorder
from harness.waiting import DEADLINE_S, wait_until

GROUND = {"card": (22, 38, 66)}
ROTATION_STATE = "db/sysman/rotation_state"
DARK = 30


def seen(screen):
    """As the screen names it, or the card; one black point of it is black enough."""
    if (screen.points().max(axis=1) < DARK).any():
        return "black"
    return screen.framed(GROUND) or screen.shown()


def wait_seen(screen, name):
    wait_until(lambda: seen(screen) == name, lambda: f"{name}, not {seen(screen)}")


def letters(picture):
    """Which points belong to them."""
    return picture.min(axis=2) > 100


def shows(screen, text):
    return (letters(screen.picture()) == text).all()


def wait_text(screen, other_than=None):
    wait_until(lambda: seen(screen) == "card" and letters(screen.picture()).any()
               and (other_than is None or not shows(screen, other_than)), "another text")
    return letters(wait_still(screen, looks=5))


@pytest.mark.parametrize("end", [signal.SIGTERM, signal.SIGKILL])
def test_card_lies_beneath_the_player(tv, screen, content, shelf, end):
    shelf.video(content / "red.mp4", "red")
    tv.start_standby()
    wait_seen(screen, "card")
    with Recorder(lambda: seen(screen)) as recorder:
        for _ in range(2):
            player = tv.start(folder=content)
            wait_until(lambda: recorder.names()[-1:] == ["red"], "the film")
            player.process.send_signal(end)
            player.wait_end()
            wait_until(lambda: recorder.names()[-1:] == ["card"], "the card again")
    assert recorder.names() == ["card", "red", "card", "red", "card"]


def test_manager_hears_of_the_card_when_it_is_on_the_screen(tv, screen):
    """A player that is started next comes above it."""
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
        address = os.path.join(screen.folder, "notify")
        manager.bind(address)
        manager.settimeout(DEADLINE_S)
        standby = tv.start_standby(NOTIFY_SOCKET=address, WATCHDOG_USEC="300000", WAYLAND_DEBUG="client")
        standby.tolerate(r"^\[\s*\d+\.\d+\]|^discarded")
        while not (told := manager.recv(1000)).startswith(b"READY=1\n"):
            assert told.startswith(b"EXTEND_TIMEOUT_USEC=")
        # The compositor has been given a picture before, and has said that it has it.
        standby.process.send_signal(signal.SIGSTOP)
        standby.log.wait(r"wl_surface@\d+\.attach\(wl_buffer")
        standby.process.send_signal(signal.SIGCONT)
        wait_seen(screen, "card")
        assert manager.recv(1000) == b"WATCHDOG=1"


def test_card_says_what_the_keys_tell(tv, screen):
    tv.configure(panel={"rotator": "yes"})
    standby = tv.start_standby()
    one_moment = wait_text(screen)
    tv.set_config(PLAYBACK_STATUS, 2)
    no_content = wait_text(screen, one_moment)
    tv.set_config(DEMO_MODE, -1)
    switched_off = wait_text(screen, no_content)
    tv.set_config(PLAYBACK_STATUS, 3)
    tv.set_config(DEMO_MODE, 0)
    begins_again = wait_text(screen, switched_off)
    assert (begins_again != one_moment).any() and (begins_again != no_content).any()
    tv.set_config(DEMO_MODE, -1)
    wait_until(lambda: shows(screen, switched_off), "switched off")
    tv.set_config(ROTATION_STATE, 2)
    wait_text(screen, switched_off)
    tv.set_config(ROTATION_STATE, 1)
    tv.set_config(DEMO_MODE, 0)
    tv.set_config(PLAYBACK_STATUS, 1)
    wait_until(lambda: shows(screen, one_moment), "one moment")
    assert standby.running()


def test_card_takes_no_key_and_no_pointer(tv, screen):
    standby = tv.start_standby()
    before = wait_text(screen)
    left, top = screen.width // 2, screen.height // 6
    with Recorder(lambda: screen.picture()[top - 20:top + 20, left - 20:left + 20].tobytes()) \
            as around_the_pointer:
        screen.key("Return", "Escape", "q")
        screen.move_pointer(left, top)
        screen.click(left, top)
        # What was done before is over when a key of the store has been obeyed.
        tv.set_config(DEMO_MODE, -1)
        wait_text(screen, before)
    assert len(around_the_pointer.changes) == 1
    tv.set_config(DEMO_MODE, 0)
    wait_until(lambda: shows(screen, before), "the same as before")
    assert standby.running()


def test_card_that_is_covered_costs_nothing(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red", seconds=8)
    standby = tv.start_standby()
    wait_seen(screen, "card")
    tv.start(folder=content)
    screen.wait_for("red")
    spent = standby.cpu_seconds()
    tv.wait_position(2.0)
    assert standby.cpu_seconds() - spent < 0.05


def test_standby_program_says_when_there_is_no_compositor(tv):
    alone = tv.start_standby(WAYLAND_DISPLAY="none")
    alone.tolerate(r"no Wayland compositor answers")
    assert alone.wait_end() == 1
    assert alone.log.find_all("no Wayland compositor answers")


@pytest.mark.parametrize("argument, status", [("--help", 0), ("folder", 2)])
def test_standby_program_takes_no_arguments(build_dir, argument, status):
    program = os.path.join(build_dir, "tools", "standby", "ostrel-demo-standby")
    done = subprocess.run([program, argument], capture_output=True, text=True, check=False)
    assert done.returncode == status
    assert (done.stdout if status == 0 else done.stderr).startswith("Usage: ostrel-demo-standby")


def test_window_names_the_files_when_none_can_be_played(tv, screen, content, shelf):
    """Over the last picture, and until the next one, which comes without anything black between."""
    tv.configure(content={"broken_video": "skip"})
    for colour in ("red", "green"):
        shelf.video(content / f"{colour}.mp4", colour, seconds=1)
    shelf.video(content / "good", "blue")
    tv.start(folder=content)
    screen.wait_for("red")
    with Recorder(lambda: seen(screen)) as recorder:
        for colour in ("red", "green"):
            (content / "empty").touch()
            os.replace(content / "empty", content / f"{colour}.mp4")
        named = wait_text(screen)
    assert "black" not in recorder.names()
    open_and_close_options(screen, tv)
    wait_until(lambda: shows(screen, named), "the card as before")
    with Recorder(lambda: seen(screen)) as recorder:
        os.replace(content / "good", content / "red.mp4")
        wait_until(lambda: recorder.names()[-1:] == ["blue"], "the film")
    assert recorder.names() == ["card", "blue"]


def open_and_close_options(screen, tv):
    open_options(screen, tv.players[-1])
    wait_until(lambda: focus_box(screen) is not None, "the options over the card")
    screen.key("Escape")
    wait_until(lambda: focus_box(screen) is None, "the card alone")


def test_window_names_the_photos_when_none_can_be_shown(tv, screen, content):
    """The card beneath says that it takes a moment, in letters at the same places."""
    tv.start_standby()
    one_moment = wait_text(screen)
    bad = content / "a.jpg"
    bad.write_bytes(b"no photo")
    player = tv.start(folder=content, **tv.timers(10, above=2))
    player.tolerate(r"still_picture")
    named = wait_text(screen, one_moment)
    assert tv.status()["passed_over"] == {str(bad): "Not a JPEG file: starts with 0x6e 0x6f"}
    os.symlink(bad, content / "loop")
    os.replace(content / "loop", bad)
    wait_text(screen, named)  # another reason
    picture(content / "good", "blue")
    os.replace(content / "good", bad)
    screen.wait_for("blue")
    assert tv.status()["passed_over"] == {}


def test_card_in_the_window_turns_and_speaks_with_the_set(tv, screen, content):
    tv.configure(panel={"rotator": "yes", "turning_time_s": "0"})
    (content / "a.jpg").write_bytes(b"no photo")
    player = tv.start(folder=content, **tv.timers(10, above=2))
    player.tolerate(r"still_picture")
    lying = wait_text(screen)
    tv.tvctl("panel", "landscape-reverse")
    wait_text(screen, lying)
    tv.tvctl("panel", "landscape")
    wait_until(lambda: shows(screen, lying), "the card as it lay")
    tv.tvctl("language", "ko_KR")
    wait_text(screen, lying)


def test_window_says_that_it_waits_for_a_disk(tv, screen, content, shelf):
    """It comes for the keys, after a while; the clock runs fast."""
    shelf.video(content / "red.mp4", "red")
    tv.break_storage(hangs=content)
    tv.start(folder=content, **tv.together(tv.timers(10), tv.breakable()))
    wait_seen(screen, "card")
    tv.break_storage()
    screen.wait_for("red")


def test_films_that_vanish_are_named_and_play_when_they_are_back(tv, screen, content, shelf):
    """The player goes on looking for them."""
    away = content.parent / "away"
    away.mkdir()
    tv.configure(content={"broken_video": "skip"})
    for colour in ("red", "green"):
        shelf.video(content / f"{colour}.mp4", colour, seconds=1)
    tv.start_standby()
    one_moment = wait_text(screen)
    with Recorder(lambda: seen(screen)) as recorder:
        player = tv.start(folder=content)
        wait_until(lambda: recorder.names()[-1] in ("red", "green"), "a film")
        for path in list(content.iterdir()):
            path.rename(away / path.name)
        player.log.wait("the player looks again in 2 s")
        wait_text(screen, one_moment)
        for path in list(away.iterdir()):
            path.rename(content / path.name)
        wait_until(lambda: recorder.names()[-1] in ("red", "green"), "a film again")
    assert "black" not in recorder.names()
    assert player.running()


def test_keys_that_change_while_the_program_ends_find_nobody(tv, screen):
    """The toolkit's loop turns on when the program has let go of its card."""
    standby = tv.start_standby()
    wait_seen(screen, "card")
    standby.process.send_signal(signal.SIGTERM)
    value = 0
    while standby.running():
        value = 2 - value
        tv.set_config(PLAYBACK_STATUS, value)
    assert standby.wait_end() == 0
