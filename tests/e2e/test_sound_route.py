"""The sound output key, with a real sound server behind it."""

import pytest

from harness.sound_server import SoundServer
from harness.waiting import wait_until

KEY_HANDLED = r"enCurOutputRoute = (\d+),enOutputRoute = (\d+)"


@pytest.fixture
def server(tv):
    sound = SoundServer(tv, "speakers", "headphones", "bystander")
    yield sound
    sound.stop()


@pytest.fixture
def start(tv, screen, content, shelf, server):
    """Starts the player on a set whose other output is the sink named."""
    def begin(external_sink):
        tv.configure(sound={"external_sink": external_sink})
        shelf.video(content / "red.mp4", "red", seconds=20)
        player = tv.start(folder=content, OSTREL_DEMO_AUDIO_SINK="pulsesink")
        screen.wait_for("red")
        wait_until(lambda: server.playing_on() == ["speakers"],
                   "the video's sound in the speakers")
        return player

    return begin


def test_sound_output_key_moves_the_sound_between_the_two_outputs(screen, server, start):
    player = start("headphones")
    screen.key("o")
    assert player.log.wait(KEY_HANDLED).groups() == ("0", "8")
    wait_until(lambda: server.playing_on() == ["headphones"], "the sound in the headphones")
    assert server.default_sink() == "headphones"

    screen.key("o")
    assert player.log.wait(KEY_HANDLED, count=2).groups() == ("8", "0")
    wait_until(lambda: server.playing_on() == ["speakers"], "the sound back in the speakers")
    assert server.default_sink() == "speakers"

    # From where somebody else has sent it, it comes to the set's own output.
    server.pactl("set-default-sink", "bystander")
    screen.key("o")
    assert int(player.log.wait(KEY_HANDLED, count=3).group(1)) > 1
    wait_until(lambda: server.default_sink() == "speakers", "the sound back in the speakers")
    assert screen.shown() == "red"


def test_sound_stays_where_it_is_when_the_other_output_is_missing(screen, server, start):
    player = start("unplugged")
    player.tolerate("select speaker failed")
    screen.key("o")
    player.log.wait("select speaker failed")
    assert server.playing_on() == ["speakers"] and server.default_sink() == "speakers"
