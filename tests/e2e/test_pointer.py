"""The pointer on a set: seen while somebody moves it, and out of everybody's way otherwise."""

import numpy
import pytest

from harness.content import order_in
from harness.player import DEMO_MODE
from harness.screen import COLOURS, NEAR
from harness.waiting import wait_until

FILES = ("red", "green", "blue", "yellow")


@pytest.fixture
def player(tv, screen, content, shelf):
    """The player on four long videos; `order` has their colours as the list has the files."""
    for name in FILES:
        shelf.video(content / f"{name}.mp4", name, seconds=20)
    started = tv.start(folder=content)
    started.order = [name.removesuffix(".mp4") for name in order_in(content, [".mp4"])]
    screen.wait_for(started.order[0])
    return started


def open_options(screen, player):
    here = player.log.position()
    screen.key("Return")
    player.log.wait("Block E-POP = 1", after=here)
    wait_until(lambda: screen.shown() is None, "the options on the screen")
    player.log.wait(r"m_OnSetFocusIdlerCB\(\d+\)", after=here)


def close_options(screen, player):
    """Waits until the options have gone for good, so that they can be opened again."""
    player.log.wait(r"m_OnDestroyPopTimerCB\(\d+\)", after=player.closing)
    wait_until(lambda: screen.shown() is not None, "the video alone")


def choose(screen, player, *keys):
    player.closing = player.log.position()
    screen.key(*keys, "Return")
    player.log.wait("Block E-POP = 0", after=player.closing)
    close_options(screen, player)


def pointer_hidden(screen, x, y, name):
    """Whether nothing but the video is where the pointer stands."""
    here = screen.picture()[y:y + 14, x:x + 10].astype(float)
    return bool((numpy.linalg.norm(here - COLOURS[name], axis=2) < NEAR).all())


def test_pointer_at_rest_is_hidden_and_comes_back_with_a_movement(screen, player):
    x, y = 200, 100
    screen.move_pointer(x, y)
    wait_until(lambda: not pointer_hidden(screen, x, y, player.order[0]), "the pointer")
    wait_until(lambda: pointer_hidden(screen, x, y, player.order[0]), "the pointer's end")
    screen.move_pointer(x + 40, y)
    wait_until(lambda: not pointer_hidden(screen, x + 40, y, player.order[0]), "the pointer again")


def test_hidden_pointer_over_the_options_leaves_the_keys_alone(tv, screen, player):
    x, y = screen.width // 2, screen.height // 2 + 30
    # Moved, the pointer chooses: this tells on which row it stands.
    open_options(screen, player)
    screen.move_pointer(x - 1, y)
    screen.move_pointer(x, y)
    choose(screen, player)
    under_pointer = tv.config(DEMO_MODE)
    assert under_pointer is not None and under_pointer >= 2
    screen.wait_for(player.order[under_pointer - 1])

    wait_until(lambda: pointer_hidden(screen, x, y, player.order[under_pointer - 1]),
               "the pointer's end")
    open_options(screen, player)
    choose(screen, player, "Up")
    assert tv.config(DEMO_MODE) == under_pointer - 1
    screen.wait_for(player.order[under_pointer - 2])

    # The options open under the hidden pointer with the focus on the row in force: choosing that
    # changes nothing.
    open_options(screen, player)
    choose(screen, player)
    assert tv.config(DEMO_MODE) == under_pointer - 1
