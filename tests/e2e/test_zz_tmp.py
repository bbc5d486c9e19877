"""Another program is on the screen before the player comes and after it has gone. In between there
is always either that one or a picture of the player's, never a black screen."""

import signal

import pytest

from harness.content import picture
from harness.player import Tv
from harness.screen import Recorder
from harness.waiting import wait_until

DARK = 30


@pytest.fixture
def beneath(tv, screen, tmp_path, build_dir):
    """Something yellow that is on the screen already: a player on a set of its own."""
    folder = tmp_path / "beneath"
    (folder / "content").mkdir(parents=True)
    picture(folder / "content" / "yellow.jpg", "yellow")
    other = Tv(folder, build_dir, screen).start_bus()
    player = other.start(folder=folder / "content")
    screen.wait_for("yellow")
    screen.player = None
    yield player
    problems = other.finish()
    assert not problems, "\n".join(problems)


def record(screen):
    """Records what the screen shows; "black" is enough of it at one point of the screen."""
    return Recorder(lambda: "black" if (screen.points().max(axis=1) < DARK).any()
                    else screen.shown())


@pytest.mark.parametrize("end", [signal.SIGTERM, signal.SIGKILL, "Escape"])
def test_player_comes_with_its_first_picture_and_goes_with_its_last(
        beneath, tv, screen, content, shelf, end):
    shelf.video(content / "red.mp4", "red")
    for _ in range(6):
        with record(screen) as recorder:
            player = tv.start(folder=content)
            screen.wait_for("red")
            if end == "Escape":
                screen.key(end)
            else:
                player.process.send_signal(end)
            player.wait_end()
            wait_until(lambda: screen.shown() == "yellow", "what lies beneath")
        assert recorder.names() == ["yellow", "red", "yellow"]
