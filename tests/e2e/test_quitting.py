"""Every way to end the demo, and the configuration keys that each leaves behind."""

import signal

import pytest

from harness.content import picture
from harness.login_manager import LoginManager
from harness.player import DEMO_MODE, PLAYBACK_STATUS, RELAUNCH_TIMER, USE_MODE
from harness.waiting import wait_until
from harness.wire import Wire


@pytest.fixture
def playing(tv, screen, content, shelf):
    """The player with a red and a green video, the first of them on the screen."""
    shelf.video(content / "red.mp4", "red", seconds=8)
    shelf.video(content / "green.mp4", "green", seconds=8)
    player = tv.start(folder=content)
    wait_until(lambda: screen.shown() in ("red", "green"), "the first video")
    tv.wait_config(PLAYBACK_STATUS, 1)
    assert tv.config(RELAUNCH_TIMER) == 3
    return player


def assert_quit(tv, player, playback_status):
    assert player.wait_end() == 0
    assert tv.config(PLAYBACK_STATUS) == playback_status
    assert tv.config(RELAUNCH_TIMER) == 1


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
def test_signal_ends_the_demo(tv, playing, number):
    playing.process.send_signal(number)
    assert_quit(tv, playing, playback_status=1)


def test_closed_window_ends_the_demo(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    wire = Wire(screen)
    try:
        player = tv.start(folder=content, WAYLAND_DISPLAY=wire.socket)
        screen.wait_for("red")
        # The toolkit does not bear a window that is closed while it still hears that it is there.
        tv.status()
        wire.close_window()
        assert_quit(tv, player, playback_status=1)
    finally:
        wire.stop()


def test_back_key_ends_the_demo_as_stopped(tv, screen, playing):
    screen.key("Escape")
    assert_quit(tv, playing, playback_status=0)


def test_stop_key_ends_a_video(tv, screen, playing):
    screen.key("XF86AudioStop")
    assert_quit(tv, playing, playback_status=1)


def test_stop_key_leaves_a_photo_alone(tv, screen, content):
    picture(content / "red.jpg", "red")
    picture(content / "green.jpg", "green")
    player = tv.start(folder=content)
    wait_until(lambda: screen.shown() in ("red", "green"), "the first photo")
    here = player.log.position()
    screen.key("XF86AudioStop")
    player.log.wait(r"m_OnHandleEcorePipeCB\(\d+\) > EventID = 8,iParam1 = 4", after=here)
    player.log.wait(r"OnPlayPhoto\(\d+\) > .*jpg", after=here)
    assert player.running()


def test_demo_mode_minus_one_ends_the_demo(tv, playing):
    tv.set_config(DEMO_MODE, -1)
    assert_quit(tv, playing, playback_status=1)
    assert tv.config(DEMO_MODE) == -1


def test_another_demo_mode_does_not(tv, playing):
    here = playing.log.position()
    tv.set_config(DEMO_MODE, 2)
    playing.log.wait(r"pKeyName:db/ostrel-demo-player-tv/demo_mode iKeyValue:2", after=here)
    assert playing.running()


def test_use_mode_is_not_watched_while_a_folder_is_played(tv, playing):
    here = playing.log.position()
    tv.set_config(USE_MODE, 0)
    tv.set_config(DEMO_MODE, 2)
    playing.log.wait(r"pKeyName:db/ostrel-demo-player-tv/demo_mode iKeyValue:2", after=here)
    assert not playing.log.find_all("pKeyName:db/menu/support/use_mode", after=here)
    assert playing.running()


def test_factory_stop_request_ends_the_demo(tv, playing):
    tv.relaunch("--mode", "factory_stop")
    assert_quit(tv, playing, playback_status=1)


@pytest.mark.parametrize("event", ["off", "standby"])
def test_power_event_ends_the_demo(tv, playing, event):
    tv.tvctl("power", event)
    assert_quit(tv, playing, playback_status=1)


@pytest.fixture
def login_manager(tv):
    manager = LoginManager(tv)
    yield manager
    manager.stop()


@pytest.mark.parametrize("signal_name", ["PrepareForShutdown", "PrepareForSleep"])
def test_machine_going_down_ends_the_demo(tv, screen, content, shelf, login_manager, signal_name):
    shelf.video(content / "red.mp4", "red")
    player = tv.start(folder=content)
    screen.wait_for("red")
    login_manager.announce(signal_name)
    assert_quit(tv, player, playback_status=1)


def test_session_switched_away_ends_the_demo(tv, screen, content, shelf, login_manager):
    """The program never runs in the background."""
    session = login_manager.add_session()
    shelf.video(content / "red.mp4", "red")
    player = tv.start(folder=content)
    screen.wait_for("red")
    login_manager.switch_away_from(session)
    player.log.wait(r" Pause\(\d+\) > ")
    assert_quit(tv, player, playback_status=1)

    # Nor does it start there.
    player = tv.start(folder=content)
    player.log.wait(r" Pause\(\d+\) > ")
    assert player.wait_end() == 0


def test_video_that_cannot_be_played_ends_the_demo_with_an_error(tv, content):
    (content / "broken.mp4").write_bytes(b"")
    player = tv.start(folder=content)
    player.tolerate(r"PLATFORM|media_player")
    assert_quit(tv, player, playback_status=3)
