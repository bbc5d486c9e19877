"""Another program is on the screen before the player comes and after it has gone. In between there
is always either that one or a picture of the player's, never a black screen."""

import re
import signal

import pytest

from harness.content import picture
from harness.player import Tv
from harness.screen import Recorder
from harness.waiting import wait_until

DARK = 30


@pytest.fixture
def beneath(screen, tmp_path, build_dir):
    """Something yellow that is on the screen already: a player on a set of its own, which outlives
    the one that is tested."""
    folder = tmp_path / "beneath"
    (folder / "content").mkdir(parents=True)
    picture(folder / "content" / "yellow.jpg", "yellow")
    other = Tv(folder, build_dir, screen).start_bus()
    other.start(folder=folder / "content", OSTREL_E2E_MARK="beneath")
    screen.wait_for("yellow")
    screen.player = None
    yield
    problems = other.finish()
    assert not problems, "\n".join(problems)


def record(screen):
    """Records what the screen shows; one black point of it is black enough."""
    return Recorder(lambda: "black" if (screen.points().max(axis=1) < DARK).any()
                    else screen.shown())


def wait_recorded(recorder, *colours):
    wait_until(lambda: recorder.names() == [*colours] or "black" in recorder.names(),
               lambda: f"{colours}, not {recorder.names()}")
    assert recorder.names() == [*colours]


@pytest.mark.parametrize("end", [signal.SIGTERM, signal.SIGKILL, "Escape"])
def test_player_comes_with_its_first_picture_and_goes_with_its_last(
        beneath, tv, screen, content, shelf, end):
    shelf.video(content / "red.mp4", "red")
    for _ in range(2):
        with record(screen) as recorder:
            player = tv.start(folder=content)
            wait_recorded(recorder, "yellow", "red")
            if end == "Escape":
                screen.key(end)
            else:
                player.process.send_signal(end)
            player.wait_end()
            wait_recorded(recorder, "yellow", "red", "yellow")


def test_compositor_is_told_so_in_one_breath(tv, screen, content, shelf):
    """What pixels show only when the compositor happens to draw in between."""
    tv.configure(product={"disclaimer": "yes"})
    shelf.video(content / "red.mp4", "red")
    player = tv.start(folder=content, WAYLAND_DEBUG="client")
    player.tolerate(r"^\[\s*\d+\.\d+\]|^discarded")
    player.log.wait("player_start successful")
    wait_until(lambda: screen.shown() != "black", "a picture")
    screen.key("Escape")
    assert player.wait_end() == 0

    requests = [line for line in player.log.lines if "  -> " in line]

    def first(request, after=-1):
        return next(number for number, line in enumerate(requests)
                    if number > after and re.search(request, line))

    plane, window = re.search(r"get_subsurface\(new id \w+@\d+, (wl_surface@\d+), (wl_surface@\d+)",
                              requests[first("get_subsurface")]).groups()
    ground = first(rf"{plane}\.attach\(wl_buffer")
    picture_shown = first(rf"{plane}\.commit", after=first(rf"{plane}\.attach", after=ground))
    assert first(rf"{window}\.attach") > picture_shown
    assert not any(re.search(rf"{window}\.attach\(nil", line) for line in requests)
    assert first(r"xdg_toplevel@\d+\.destroy") < first(r"wl_subsurface@\d+\.destroy")


def test_window_without_a_picture_comes_for_the_keys(beneath, tv, screen, content):
    """So that staff can choose something else where nothing can be played."""
    tv.configure(content={"broken_video": "skip"})
    (content / "broken.mp4").write_bytes(b"no film")
    player = tv.start(folder=content, **tv.timers(10))
    player.log.wait("broken.mp4 cannot be played")

    def pressed():
        screen.key("Page_Up")
        return player.log.find_all("m_OnECoreKeyDownCB")

    wait_until(pressed, "a key that arrives")


def test_window_without_a_picture_comes_for_the_options(beneath, tv, screen, content, shelf):
    """At once, where somebody else's key opens them. The clock runs slowly, and the disk hangs."""
    tv.configure(content={"broken_video": "skip"})
    shelf.video(content / "red.mp4", "red")
    tv.break_storage(hangs=content)
    player = tv.start(folder=content,
                      **tv.together(tv.timers(0.01, above=0.4), tv.breakable()))
    player.log.wait(r"OnPlayVideo\(\d+\)")
    tv.press("Return")
    wait_until(lambda: screen.shown() != "yellow", "the options")
