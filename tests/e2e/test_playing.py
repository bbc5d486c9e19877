"""The demo plays: in order, over and over, without a gap, and as the launch request says."""

import os
import subprocess

from harness.content import appears_in, listed, picture
from harness.player import FILE_MODE, PLAYBACK_STATUS, RELAUNCH_TIMER
from harness.waiting import wait_until


def expected_order(folder):
    """The colours of the landscape files, which are named after them, in the order of the list."""
    return [os.path.splitext(name)[0] for name in listed(folder)]


def test_all_files_are_shown_in_order_and_the_list_wraps(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red", seconds=1)
    shelf.video(content / "green.mkv", "green", seconds=1)
    shelf.video(content / "cyan.ts", "cyan", seconds=1)
    picture(content / "blue.jpg", "blue")
    picture(content / "yellow.jpeg", "yellow")
    shelf.video(content / "portrait_violet.mp4", "violet", size=(180, 320))
    picture(content / "portrait_pink.jpg", "pink", size=(360, 640))
    order = expected_order(content)
    with screen.record() as recorder:
        tv.start(folder=content)
        wait_until(lambda: appears_in(order + order[:2], recorder.names()),
                   lambda: f"{order} and its beginning again; seen so far: {recorder.names()}")
    assert "violet" not in recorder.names() and "pink" not in recorder.names()
    assert tv.config(PLAYBACK_STATUS) == 1
    assert tv.config(FILE_MODE) == 1
    assert tv.config(RELAUNCH_TIMER) == 3


def test_no_black_frame_between_any_two_files(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red", seconds=1)
    shelf.video(content / "green.mp4", "green", seconds=1)
    picture(content / "blue.jpg", "blue")
    picture(content / "yellow.jpg", "yellow")
    order = expected_order(content)
    with screen.record() as recorder:
        player = tv.start(folder=content)
        screen.wait_for(order[0])
        first = len(recorder.changes)
        wait_until(lambda: appears_in(order + order[:2], recorder.names()),
                   lambda: f"one round and two files; seen so far: {recorder.names()}")
        seen = recorder.changes[first:]
    assert recorder.samples > 500, "the screen was looked at too seldom to tell"
    assert "black" not in [name for _, name in seen], seen
    assert player.running()


def test_the_next_file_is_opened_while_the_present_one_plays(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red", seconds=6)
    shelf.video(content / "green.mp4", "green", seconds=6)
    first, second = expected_order(content)
    player = tv.start(folder=content)
    screen.wait_for(first)
    wait_until(lambda: {str(content / name) for name in listed(content)} <= set(player.open_files()),
               lambda: f"both files open; open are {player.open_files()}")
    assert screen.shown() == first
    assert not player.log.find_all("m_OnPlayerCompletedCB")
    screen.wait_for(second)


def test_a_single_video_loops_without_completing(tv, screen, content, shelf):
    shelf.video(content / "only.mp4", "red", "green", seconds=1)
    with screen.record() as recorder:
        player = tv.start(folder=content)
        screen.wait_for("red")
        first = len(recorder.changes)
        wait_until(lambda: recorder.names().count("red") >= 4,
                   lambda: f"four rounds; seen so far: {recorder.names()}")
        seen = recorder.changes[first:]
    assert "black" not in [name for _, name in seen], seen
    assert not player.log.find_all(r"m_OnPlayerCompletedCB")
    assert player.log.find_all(r"player_set_looping true finish")


def test_with_repeat_off_the_first_completed_video_ends_the_demo(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    shelf.video(content / "green.mp4", "green")
    first, second = expected_order(content)
    with screen.record() as recorder:
        player = tv.start("--repeat_mode", "no", folder=content)
        assert player.wait_end() == 0
    assert first in recorder.names()
    assert second not in recorder.names()
    assert player.log.find_all("Repeat Mode is off")
    assert tv.config(PLAYBACK_STATUS) == 1
    assert tv.config(RELAUNCH_TIMER) == 1


def test_repeat_stays_on_for_any_other_word(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red", seconds=1)
    shelf.video(content / "green.mp4", "green", seconds=1)
    first, second = expected_order(content)
    player = tv.start("--repeat_mode", "No", folder=content)
    screen.wait_for(second)
    screen.wait_for(first)
    assert player.log.find_all("Repeat Mode is on")


def test_photos_stay_five_seconds(tv, screen, content):
    for name in ("red", "green", "blue"):
        picture(content / f"{name}.jpg", name)
    player = tv.start(folder=content)
    player.log.wait(r"OnPlayPhoto\(\d+\) > .*\.jpg", count=4)
    shown = [when for when, _ in player.log.find_all("decode success")]
    asked = [when for when, _ in player.log.find_all(r"OnPlayPhoto\(\d+\) > .*\.jpg")]
    # Only a lower bound: a busy machine may be late, but a photo must never be cut short.
    assert all(after - before > 4.9 for before, after in zip(shown, asked[1:])), (shown, asked)


def test_what_follows_a_photo_is_opened_shortly_before_its_time_is_over(
        tv, screen, content, shelf):
    """No sooner: what is open keeps a stick from being unmounted."""
    shelf.video(content / "red.mp4", "red", seconds=1)
    picture(content / "green.jpg", "green")
    player = tv.start(folder=content, OSTREL_DEMO_LOG_LEVEL="debug")
    player.log.wait(r"lookahead: opening .*/red\.mp4 ahead")
    assert len(player.log.find_all(r"OnPlayVideo\(\d+\) > .*/red\.mp4")) == 1
    (opened, _), = player.log.find_all(r"lookahead: opening .*/red\.mp4 ahead")
    (asked, _), = player.log.find_all(r"OnPlayPhoto\(\d+\) > .*/green\.jpg")
    # Only a lower bound, of the five seconds that a photo stays: a busy machine may be late.
    assert opened - asked > 0.9
    player.log.wait(r"OnPlayVideo\(\d+\) > .*/red\.mp4", count=2)


def test_photos_stand_as_their_camera_was_held(tv, screen, content):
    """Stored lying on its side, to be turned by 90 degrees: it fills the screen only upright."""
    picture(content / "red.jpg", "red", size=(360, 640), orientation=6)
    tv.start(folder=content)
    screen.wait_for("red")


def test_a_second_start_restarts_the_first_with_its_own_folder(
        tv, screen, content, tmp_path, shelf):
    shelf.video(content / "red.mp4", "red")
    shelf.video(content / "green.mp4", "green")
    other = tmp_path / "other"
    other.mkdir()
    picture(other / "violet.jpg", "violet")
    first, second = expected_order(content)
    player = tv.start(folder=content)
    screen.wait_for(second)
    here = player.log.position()
    with screen.record() as recorder:
        tv.relaunch(folder=other)
        player.log.wait(rf"OnPlayVideo\(\d+\) > .*/{first}\.mp4", after=here)
        screen.wait_for(first)
    assert "violet" not in recorder.names()
    assert player.running()


def test_a_start_that_belongs_to_another_launcher_does_nothing(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    player = tv.start(folder=content)
    screen.wait_for("red")
    here = player.log.position()
    tv.relaunch("--extra", "__K_RELOCATE_BELOW=com.norvane.tv.aod", folder=content)
    tv.relaunch("--mode", "factory_start", folder=content)
    player.log.wait(r"GetExtraData\(\d+\) > ExtraKey:mode,pStrExtraValue:factory_start", after=here)
    assert player.running()
    assert not player.log.find_all(r"OnPlayVideo\(\d+\) > .", after=here)


def test_the_configured_light_becomes_white(tv, screen, content):
    """A grey of 203 cd/m² in a film of 1000, of which the screen is to show all."""
    tv.configure(picture={"sdr_white": "1000"})
    subprocess.run(
        ["ffmpeg", "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
         "nullsrc=size=64x36:rate=25:duration=4,format=yuv420p10le,geq=lum=573:cb=512:cr=512,"
         "setparams=color_primaries=bt2020:color_trc=smpte2084:colorspace=bt2020nc",
         "-c:v", "libx265", "-preset", "ultrafast", "-x265-params", "log-level=error",
         "-color_primaries", "bt2020", "-color_trc", "smpte2084", "-colorspace", "bt2020nc",
         content / "grey.mkv"], check=True)
    tv.start(folder=content)
    grey = 255 * (203 / 1000) ** (1 / 2.4)
    wait_until(lambda: screen.near(320, 180, (grey, grey, grey), distance=4),
               lambda: f"a grey of {grey}; the screen shows {screen.points(1, 1)}")


def test_without_a_session_bus_the_demo_plays_alone(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    tv.start(folder=content, DBUS_SESSION_BUS_ADDRESS=f"unix:path={content}/none")
    screen.wait_for("red")


def test_open_files_stay_few_over_many_items(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    shelf.video(content / "green.mkv", "green")
    picture(content / "blue.jpg", "blue")
    player = tv.start(folder=content)
    # Fonts of the options stay open from here on.
    player.log.wait("popup and toast are ready")
    counts = []
    for _ in range(8):
        for name in expected_order(content):
            screen.wait_for(name)
            counts.append(len(player.open_files()))
            screen.key("Right")
    # Two rounds to warm up: caches of fonts, plugins and buffers fill once.
    assert max(counts[-6:]) <= max(counts[3:9]) + 3, counts
