"""Compositors that let a window have all the keys, and keep the screen on: nothing that customers
type reaches anything but the demo, and the picture never goes away by itself."""

import pytest

from harness.faults import times
from harness.screen import lit
from harness.sway import SwayScreen, UnpluggableScreen
from harness.waiting import wait_until

SHORTCUTS = {
    "launcher": "Mod4+t",
    "next-window": "Mod1+Tab",
    "close-window": "Mod1+F4",
    "log-out": "Ctrl+Mod1+Delete",
}
# What the player is told of each: the set's name of the key where it has one.
TYPED = {
    "launcher": ("t", ["logo"], "XF86PanelEnter"),
    "next-window": ("Tab", ["alt"], "Down"),
    "close-window": ("F4", ["alt"], "F4"),
    "log-out": ("Delete", ["ctrl", "alt"], "Delete"),
}


@pytest.fixture
def screen():
    with lit(lambda folder: SwayScreen(folder, SHORTCUTS)) as panel:
        yield panel


@pytest.fixture
def player(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red", seconds=8)
    started = tv.start(folder=content)
    screen.wait_for("red")
    wait_until(lambda: screen.window()["focused"], "the keyboard at the player's window")
    yield started
    # The toolkit stumbles over a keyboard that is unplugged while it is being shut down; what the
    # compositor has told of the last one is handled when the player has answered twice.
    for _ in range(2):
        if started.running():
            tv.tvctl("status")


def test_compositors_shortcuts_reach_the_player_instead_of_the_compositor(screen, player):
    player.log.wait("compositor shortcuts put aside")
    for key, modifiers, name in TYPED.values():
        here = player.log.position()
        screen.key(key, modifiers)
        player.log.wait(rf"KeyName={name} KeyEventType", after=here)
    assert screen.fired() == set()
    assert player.running()

    # The same keys without the player's wish, so that the silence above means something.
    screen.command("seat", "*", "shortcuts_inhibitor", "deactivate")
    for shortcut, (key, modifiers, _) in TYPED.items():
        screen.key(key, modifiers)
        wait_until(lambda name=shortcut: name in screen.fired(), f"the shortcut {shortcut}")


def test_key_that_the_configuration_names_does_what_it_says(tv, screen, content, shelf):
    tv.configure(keys={"F9": "XF86AudioPause", "p": "XF86AudioPause"})
    shelf.video(content / "red.mp4", "red", seconds=8)
    player = tv.start(folder=content)
    screen.wait_for("red")
    wait_until(lambda: screen.window()["focused"], "the keyboard at the player's window")
    for key in ("F9", "p"):
        here = player.log.position()
        screen.key(key)
        player.log.wait(r"KeyName=XF86AudioPause KeyEventType", after=here)
        tv.press("XF86AudioPlay")
        player.log.wait(r"KeyName=XF86AudioPlay KeyEventType", after=here)


def test_compositor_gets_its_shortcuts_back_when_the_player_ends(screen, player):
    key, modifiers, _ = TYPED["launcher"]
    assert player.terminate() == 0
    screen.key(key, modifiers)
    wait_until(lambda: "launcher" in screen.fired(), "the compositor's own shortcut")


def test_screen_is_kept_on_while_the_player_is_seen(screen, player):
    window = screen.window()
    assert window["inhibit_idle"] is True
    assert not player.log.find_all("may blank the screen")
    assert window["fullscreen_mode"] == 1
    assert player.terminate() == 0
    wait_until(lambda: screen.window() is None, "the window's end")


def test_screen_is_kept_on_by_the_picture_too_which_covers_the_window(
        tv, screen, content, shelf):
    """A compositor may pass over a wish of a surface that cannot be seen."""
    shelf.video(content / "red.mp4", "red", seconds=8)
    player = tv.start(folder=content, WAYLAND_DEBUG="1")
    player.tolerate(r"^\[ *\d+\.\d+\]")
    screen.wait_for("red")
    subsurface = r"get_subsurface\(new id wl_subsurface@\d+, (wl_surface@\d+), (wl_surface@\d+)\)"
    picture, window = player.log.wait(subsurface).groups()
    wishes = {surface: wish for _, match in player.log.find_all(
        r"create_inhibitor\(new id (zwp_idle_inhibitor_v1@\d+), (wl_surface@\d+)\)")
        for wish, surface in [match.groups()]}
    assert set(wishes) == {picture, window}
    assert player.terminate() == 0
    ends = [match[0] for _, match in player.log.find_all(
        rf"({wishes[picture]}|{picture})\.destroy\(\)")]
    assert ends == [f"{wishes[picture]}.destroy()", f"{picture}.destroy()"]


def test_picture_follows_a_screen_that_changes_its_resolution(screen, player):
    for width, height in ((960, 540), (800, 600), (640, 360)):
        here = player.log.position()
        screen.resize(width, height)
        player.log.wait(rf"the panel is {width}x{height}$", after=here)
        player.log.wait(rf"video plane: now {width} x {height}$", after=here)
        if (width, height) != (800, 600):
            screen.wait_for("red")
        else:
            # A panel of other proportions: as large as fits, black above and below.
            wait_until(lambda: (screen.picture()[300, [4, 400, 795], 0] > 180).all()
                       and (screen.picture()[[40, 560], 400] < 30).all(), "bars")


def test_picture_follows_a_screen_that_is_turned(screen, player):
    for transform in ("90", "180", "270", "normal"):
        here = player.log.position()
        screen.turn(transform)
        upright = screen.height > screen.width
        if transform in ("90", "normal"):
            player.log.wait(rf"video plane: now {screen.width} x {screen.height}$", after=here)
        if not upright:
            screen.wait_for("red")
        else:
            # As large as fits, black above and below.
            wait_until(lambda: (screen.picture()[320, [4, 180, 355], 0] > 180).all()
                       and (screen.picture()[[40, 600], 180] < 30).all(), "bars")


class TestUnplugged:
    @pytest.fixture
    def screen(self):
        with (lit(lambda folder: SwayScreen(folder, {})) as wall,
              lit(lambda folder: UnpluggableScreen(folder, wall)) as panel):
            yield panel

    def test_picture_comes_back_to_a_screen_that_was_unplugged(self, tv, screen, player):
        for _ in range(times(2, 10)):
            screen.unplug()
            position = tv.position()
            wait_until(lambda before=position: tv.position() != before, "the film to go on unseen")
            screen.plug()
            screen.wait_for("red")
            shown = tv.status()["frames"]["shown"]
            wait_until(lambda before=shown: tv.status()["frames"]["shown"] > before, "more frames")
        assert player.running()


@pytest.mark.parametrize("scale", ["2", "1.5"])
def test_video_has_every_pixel_of_a_screen_that_enlarges_windows(tv, screen, content, shelf, scale):
    screen.resize(1280, 720)
    screen.command("output", "HEADLESS-1", "scale", scale)
    shelf.video(content / "red.mp4", "red", seconds=8)
    player = tv.start(folder=content)
    screen.wait_for("red")
    player.log.wait(r"the panel is 1280x720, windows on it \d+x\d+$")
    player.log.wait(r"video plane: (made|now),? 1280 x 720$")
