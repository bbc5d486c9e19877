"""Services of the machine that go away, come back, or send nonsense: the show goes on."""

import os
import signal
import subprocess
import time

import dbus
import dbus.lowlevel
import pytest

from harness.content import picture
from harness.faults import times
from harness.options import open_options
from harness.player import RELAUNCH_TIMER
from harness.sound_server import SoundServer
from harness.waiting import DEADLINE_S, wait_until

NAME = "org.tizen.OstrelDemoPlayerTv"
PATH = "/org/tizen/OstrelDemoPlayerTv"
DAY_S = 24 * 60 * 60
NOBODY = 65534


@pytest.fixture
def films(content, shelf):
    """A red and a green film, of which each stays until somebody asks for the other."""
    for name in ("red", "green"):
        shelf.video(content / f"{name}.mp4", name, seconds=20)
    return content


def wait_film(screen):
    """Waits for one of the two, and returns what the other one is."""
    wait_until(lambda: screen.shown() in ("red", "green"), "a film")
    return {"red": "green", "green": "red"}[screen.shown()]


def wait_playing(tv, name):
    wait_until(lambda: tv.status()["playing"]["name"] == f"{name}.mp4",
               lambda: f"{name}.mp4 in the status: {tv.status()['playing']}")


def test_session_bus_that_is_restarted_has_its_player_back(tv, screen, films):
    """The time in which the player looks for the bus again goes by fifty times as fast."""
    player = tv.start(folder=films, **tv.timers(50))
    other = wait_film(screen)
    for number in range(times(10, 10)):
        here = player.log.position()
        tv.kill_bus()
        player.log.wait("the session bus went away", after=here)
        screen.key("Right")
        screen.wait_for(other)
        tv.start_bus()
        player.log.wait("the session bus is there", after=here)
        wait_playing(tv, other)
        other = wait_film(screen)
        if number == 0:
            files = len(player.open_files())
    # The one player of this login again.
    tv.relaunch(folder=films)
    player.log.wait("launch request from a later start", after=here)
    assert len(player.open_files()) <= files + 3


def test_player_that_started_before_the_session_bus_comes_to_it(tv, screen, films):
    tv.kill_bus()
    player = tv.start(folder=films, **tv.timers(50))
    player.log.wait("no session bus: starting alone")
    wait_film(screen)
    tv.start_bus()
    player.log.wait("the session bus is there")
    assert tv.status()["playing"]["name"] in ("red.mp4", "green.mp4")


def test_player_that_missed_the_bus_gives_way_to_the_one_that_has_it(tv, screen, films):
    early = tv.start(folder=films, **tv.timers(50))
    wait_film(screen)
    # Held, it cannot come back to the new bus before the other player does.
    early.process.send_signal(signal.SIGSTOP)
    tv.kill_bus()
    tv.start_bus()
    late = tv.start(folder=films)
    late.log.wait("player_start successful")
    early.process.send_signal(signal.SIGCONT)

    early.log.wait("another player has taken this one's place")
    assert early.wait_end() == 0
    assert late.running() and tv.status()["playing"]["name"] in ("red.mp4", "green.mp4")


def test_sound_server_that_is_restarted_has_the_sound_back(tv, screen, films):
    tv.configure(sound={"external_sink": "headphones"})
    server = SoundServer(tv, "speakers", "headphones")
    try:
        player = tv.start(folder=films, OSTREL_DEMO_AUDIO_SINK="pulsesink")
        other = wait_film(screen)
        for _ in range(times(2, 10)):
            wait_until(lambda: server.playing_on() == ["speakers"], "the film's sound")
            server.kill()
            here = player.log.position()
            screen.key("o")
            player.log.wait(r"EventID = 8,iParam1 = 6", after=here)
            screen.key("Right")
            screen.wait_for(other)
            other = wait_film(screen)
            server.start()
            screen.key("Right")
            screen.wait_for(other)
            other = wait_film(screen)
        wait_until(lambda: server.playing_on() == ["speakers"], "the film's sound")
        assert player.running()
    finally:
        server.stop()


def test_sound_server_that_hangs_leaves_the_films_playing(tv, screen, films):
    tv.configure(content={"broken_video": "skip"})
    server = SoundServer(tv, "speakers")
    try:
        player = tv.start(folder=films, OSTREL_DEMO_AUDIO_SINK="pulsesink")
        other = wait_film(screen)
        wait_until(lambda: server.playing_on() == ["speakers"], "the film's sound")
        server.hold()
        for _ in range(2):
            here = player.log.position()
            screen.key("Right")
            player.log.wait("player_start successful", after=here)
            screen.wait_for(other)
            other = wait_film(screen)
        assert not player.log.find_all("cannot be played")
    finally:
        server.go_on()
        server.stop()


def test_compositor_that_is_restarted_has_the_picture_back(tv, screen, content):
    """Each time the player says so and ends, to be started again by whoever keeps it alive."""
    picture(content / "red.jpg", "red")
    picture(content / "green.jpg", "green")
    for _ in range(times(2, 10)):
        player = tv.start(folder=content)
        wait_film(screen)
        # What is said by libraries when their compositor goes.
        player.tolerate("the compositor went away", r"^(?![VDIWEF]/)", "video plane")
        screen.kill_compositor()
        assert player.wait_end() == 1
        assert player.log.find_all(r"E/PLATFORM.*the compositor went away")
        assert tv.config(RELAUNCH_TIMER) == 1
        screen.start_compositor()
    tv.start(folder=content)
    wait_film(screen)


# Each with arguments that the method does not take, or with none.
NONSENSE = [
    ("Control", "Key", "", ()),
    ("Control", "Key", "i", (1,)),
    ("Control", "Key", "as", (["XF86Back"],)),
    ("Control", "Key", "ss", ("XF86Back", "XF86Back")),
    ("Control", "Panel", "d", (90.0,)),
    ("Control", "Power", "v", (dbus.String("off"),)),
    ("Control", "Language", "ay", (b"ko_KR",)),
    ("Control", "UsbAdd", "s", ("/tmp",)),
    ("Control", "UsbAdd", "ay", (b"",)),
    ("Control", "UsbRemove", "a(ss)", ([("/tmp", "/tmp")],)),
    ("Control", "Status", "b", (True,)),
    ("Control", "Status", "s", ("xml",)),
    ("Control", "Off", "", ()),
    ("Application", "Launch", "", ()),
    ("Application", "Launch", "a{ss}", ({"mode": "factory_stop"},)),
    ("Application", "Launch", "aay", ([b"mode", b"factory_stop"],)),
    ("Application", "Launch", "a{say}", ({"mode": b"factory_stop\0"},)),
    ("Application", "Launch", "a{sv}", ({"mode": dbus.Int32(1)},)),
    ("Nobody", "Launch", "a{say}", ({"mode": b"factory_stop"},)),
]


def call(interface, method, signature, arguments):
    message = dbus.lowlevel.MethodCallMessage(NAME, PATH, f"{NAME}.{interface}", method)
    message.append(*arguments, signature=signature)
    return message


def answers(bus, message):
    """Whether a call is answered with an error."""
    with pytest.raises(dbus.DBusException) as refused:
        bus.send_message_with_reply_and_block(message, 60)
    return refused.value.get_dbus_name()


def test_messages_that_make_no_sense_are_refused(tv, screen, films):
    player = tv.start(folder=films)
    wait_film(screen)
    bus = dbus.bus.BusConnection(tv.bus_address)
    try:
        for interface, method, signature, arguments in NONSENSE:
            error = answers(bus, call(interface, method, signature, arguments))
            assert error.startswith("org.freedesktop.DBus.Error."), (method, signature, error)
            # Nobody answered: that would be no refusal.
            assert not error.endswith(("NoReply", "ServiceUnknown")), (method, signature, error)
    finally:
        bus.close()
    assert tv.status()["player"]["state"] == "playing"
    assert player.running()


ASK = """import sys, dbus
dbus.bus.BusConnection(sys.argv[1]).call_blocking(*sys.argv[2:6], "s", ["json"])"""


@pytest.mark.skipif(os.getuid() != 0, reason="needs root, to ask as another user")
def test_another_user_is_turned_away(tv, screen, films):
    """By the bus, which is all there is against them: the folder it lies in lets everybody in here."""
    player = tv.start(folder=films)
    wait_film(screen)
    path = tv.bus_address.partition("=")[2]
    os.chmod(os.path.dirname(path), 0o755)
    asked = [subprocess.run(["/usr/bin/python3", "-c", ASK, tv.bus_address, NAME, PATH,
                             f"{NAME}.Control", "Status"],
                            env={}, cwd="/", capture_output=True, text=True, timeout=DEADLINE_S,
                            check=False, **who)
             for who in ({}, {"user": NOBODY, "group": NOBODY, "extra_groups": []})]
    assert asked[0].returncode == 0, asked[0].stderr
    assert asked[1].returncode != 0
    # Not turned away by a file's permissions.
    assert "Permission denied" not in asked[1].stderr
    assert "NoReply" in asked[1].stderr or "AccessDenied" in asked[1].stderr, asked[1].stderr
    assert player.running()


def test_flood_of_calls_that_wait_for_no_answer_does_not_stop_the_show(tv, screen, films):
    """10,000 at a time, as fast as the bus takes them. How fast that is depends on the machine; it is
    printed, and nothing is held against it."""
    # A sanitizer keeps what is freed.
    checks = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1"
    player = tv.start(folder=films, ASAN_OPTIONS=checks.lstrip(":"))
    other = wait_film(screen)
    bus = dbus.bus.BusConnection(tv.bus_address)
    try:
        before = player.memory_kb()
        flood = [call("Control", "Status", "s", ("json",)),
                 call("Control", "Key", "s", ("no key",)),
                 call("Control", "Key", "i", (1,)),
                 call("Nobody", "Nothing", "", ())]
        floods = times(1, 60)
        began = time.monotonic()
        for _ in range(floods):
            for number in range(10000):
                # A copy: the bus passes on no call twice while it is unanswered.
                bus.send_message(flood[number % len(flood)].copy())
            bus.flush()
        print(f"{floods * 10000 / (time.monotonic() - began):.0f} calls a second")
        screen.key("Right")
        screen.wait_for(other)
        # All that were sent have arrived, and are over. As long as some wait for a status nobody else gets one.
        player.log.wait("Key refused", count=floods * 2500, deadline_s=300 * floods)
        wait_until(lambda: tv.tvctl("status", check=False).returncode == 0, "a status")
        wait_playing(tv, other)
    finally:
        bus.close()
    tv.press("XF86AudioPause")
    player.log.wait("KeyName=XF86AudioPause KeyEventType")
    wait_until(lambda: player.memory_kb() < before + 50000,
               lambda: f"the memory of before, {before} kB; it is {player.memory_kb()} kB")


def test_clock_that_is_set_moves_nothing(tv, screen, content, shelf):
    """Neither the next turn, nor what stands for a while, nor the order of the show."""
    tv.configure(panel={"rotator": "yes", "turning_time_s": "0.3"})
    shelf.video(content / "red.mp4", "red", seconds=20)
    shelf.video(content / "green.mp4", "green", seconds=20)
    picture(content / "portrait_blue.jpg", "blue", size=(360, 640))
    player = tv.start(folder=content, **tv.scarce())
    other = wait_film(screen)
    tv.press("XF86Color")
    player.log.wait("set timer")
    for days in (1, 0, -1, 0):
        here = player.log.position()
        before = tv.status()
        tv.short(clock_ahead_s=days * DAY_S)
        after = tv.status()
        for find in (lambda status: status["timed_rotation"]["left_s"],
                     lambda status: status["player"]["position_ms"] / 1000):
            assert abs(find(after) - find(before)) < DAY_S / 10
        screen.key("Right")
        screen.wait_for(other)
        other = wait_film(screen)
        open_options(screen, player)
        assert not player.log.find_all("Block E-POP = 0|m_ChangeRotationType", after=here)
        screen.key("Escape")
        # As long as it is being torn down no other one opens.
        player.log.wait("m_OnDestroyPopTimerCB", after=here)
        wait_film(screen)


@pytest.mark.parametrize("locale", ["tlh_QX.UTF-8", "ko_KR", "\N{SNOWMAN}/../C"])
def test_locale_that_is_not_installed_changes_nothing(tv, screen, content, shelf, locale):
    shelf.video(content / "größe.mp4", "red", seconds=20)
    player = tv.start(folder=content, LC_ALL=locale, LANGUAGE=locale)
    # What libraries say of such a name.
    player.tolerate("^xkbcommon: .*Compose file", "^Fontconfig warning: ignoring")
    screen.wait_for("red")
    assert tv.status()["playing"]["name"] == "größe.mp4"
    open_options(screen, player)
    screen.key("Escape")
    player.log.wait("m_OnDestroyPopTimerCB")
    tv.press("XF86AudioNext")
    assert player.log.wait(r"m_SetTrickSpeed\(\d+\) > (\S+)$").group(1) == "2.000000"


def test_player_that_was_held_goes_on(tv, screen, films):
    """As a debugger or a freezer of processes holds it; its picture stays on the screen."""
    player = tv.start(folder=films)
    other = wait_film(screen)
    shown = screen.shown()
    player.process.send_signal(signal.SIGSTOP)
    with screen.record() as recorder:
        wait_until(lambda: recorder.elapsed() > times(2, 60), "the time to be over",
                   deadline_s=120)
    assert recorder.names() == [shown]
    player.process.send_signal(signal.SIGCONT)
    screen.key("Right")
    screen.wait_for(other)
    wait_playing(tv, other)
    position = tv.position()
    wait_until(lambda: tv.position() > position, "the film to go on")
