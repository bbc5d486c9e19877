"""What staff learn from the running player, and what they have it do, with the control tool."""

import re

import pytest

from harness.content import order_in, picture
from harness.player import DEMO_MODE
from harness.waiting import wait_until

ROTATOR = {"rotator": "yes", "turning_time_s": "0.3"}
OWN = "db/ostrel-demo-player-tv/"


def summary(tv):
    """The lines for people, by what stands in front of their colons."""
    lines = tv.tvctl("status").stdout.decode().splitlines()
    return {name: value.strip() for name, _, value in (line.partition(":") for line in lines)}


def wait_status(tv, fits, what):
    """Waits for a status that fits, and returns it."""
    seen = {}

    def look():
        seen.update(tv.status())
        return fits(seen)

    wait_until(look, lambda: f"{what}; the status is {seen}")
    return seen



def test_status_tells_file_and_place_in_the_list_as_the_player_has_them(tv, screen, content, shelf):
    for name, colour in (("one", "red"), ("two", "green"), ("three", "blue")):
        shelf.video(content / f"{name}.mp4", colour, seconds=20)
    shelf.video(content / "portrait_x.mp4", "yellow", seconds=2, size=(180, 320))
    picture(content / "photo.jpg", "magenta")
    (content / "readme.txt").write_text("not a demo file")
    order = order_in(content, [".mp4"])
    order = [name for name in order if not name.startswith("portrait_")] + ["photo.jpg"]

    player = tv.start(folder=content)
    player.log.wait("player_start successful")
    for number, name in enumerate(order, start=1):
        found = wait_status(tv, lambda now, name=name: now["playing"]["name"] == name, name)
        assert found["playing"]["kind"] == ("photo" if name.endswith(".jpg") else "video")
        assert found["playing"]["file"] == f"{content}/{name}"
        assert found["list"] == {"orientation": "landscape", "number": number, "length": 4,
                                 "videos": 3, "photos": 1, "names": order}
        assert found["selection"] == 0
        lines = summary(tv)
        assert lines["List"] == f"landscape, number {number} of 4 (3 videos, 1 photo)"
        assert f'"{name}"' in lines["Playing"]
        if number < len(order):
            screen.key("Right")
    assert player.running()


def test_status_tells_the_file_that_was_chosen(tv, content, shelf):
    for name, colour in (("one", "red"), ("two", "green")):
        shelf.video(content / f"{name}.mp4", colour, seconds=20)
    tv.start(folder=content).log.wait("player_start successful")
    second = order_in(content, [".mp4"])[1]
    tv.set_config(DEMO_MODE, 2)
    assert summary(tv)["Selection"] == f'only number 2, "{second}"'
    assert tv.status()["selection"] == 2


def test_status_says_so_when_the_folder_is_not_what_it_was(tv, screen, content, shelf):
    shelf.video(content / "one.mp4", "red", seconds=20)
    tv.start(folder=content)
    screen.wait_for("red")
    assert tv.status()["list"]["number"] == 1
    (content / "later.mp4").write_bytes(b"")
    assert tv.status()["list"] is None
    assert summary(tv)["List"].startswith("unknown")


def test_status_tells_what_is_blocked_and_how_the_video_plays(tv, screen, content, shelf):
    shelf.video(content / "one.mp4", "red", seconds=20)
    player = tv.start(folder=content)
    screen.wait_for("red")
    assert "pip" in summary(tv)["Blocked"] and "pop-ups" not in summary(tv)["Blocked"]
    screen.key("Return")
    player.log.wait("Block E-POP = 1")
    assert summary(tv)["Blocked"].startswith("pop-ups of the set, broadcasting, ")
    tv.press("XF86Back")
    tv.press("XF86AudioPause")
    wait_until(lambda: summary(tv)["Playing"].endswith(", paused"), "a pause in the status")
    assert re.fullmatch(r'video "one\.mp4", at 0:\d\d of 0:20, paused', summary(tv)["Playing"])
    assert int(re.match(r"(\d+) shown", summary(tv)["Frames"]).group(1)) > 0


def test_status_tells_of_the_films_picture(tv, screen, content, shelf):
    shelf.video(content / "one.mp4", "red", seconds=20)
    tv.start(folder=content)
    screen.wait_for("red")
    lines = summary(tv)
    assert re.fullmatch(r"320x180, 30 frames/s, I420 by avdec_h264; "
                        r"\d+ pictures shown, \d+ dropped, \d+ late", lines["Picture"])
    assert re.fullmatch(r"range limited \(\w+\), matrix bt601 \(\w+\), transfer \w+ \(\w+\), "
                        r"primaries \w+ \(\w+\), not mapped", lines["Colours"])
    video = tv.status()["player"]["video"]
    assert (video["width"], video["height"], video["depth"]) == (320, 180, 8)
    assert video["converter"] == "own" and video["mapping"]["kind"] == "none"
    wait_status(tv, lambda now: now["player"]["video"]["shown"] > video["shown"], "more frames")


def test_time_to_the_next_turn_is_that_of_the_players_own_timer(tv, screen, content, shelf):
    tv.configure(panel=ROTATOR)
    shelf.video(content / "red.mp4", "red", seconds=20)
    shelf.video(content / "portrait_green.mp4", "green", seconds=20, size=(180, 320))
    player = tv.start(folder=content)
    screen.wait_for("red")
    assert tv.status()["timed_rotation"] == {"on": False, "left_s": None, "landscape_s": 300,
                                            "portrait_s": 300}

    def timer_set(after):
        """The seconds for which the player has just started its timer, and what is told of it."""
        seconds = int(player.log.wait(r"set timer (\d+) sec", after=after).group(1))
        left = tv.status()["timed_rotation"]["left_s"]
        assert seconds - 30 < left <= seconds
        return seconds

    here = player.log.position()
    tv.press("XF86ChannelGuide")
    tv.press("XF86Color")
    assert timer_set(here) == 300
    here = player.log.position()
    tv.press("XF86LowerChannel")
    assert timer_set(here) == 330
    tv.press("XF86RaiseChannel")
    tv.press("XF86RaiseChannel")
    tv.wait_config(OWN + "portrait_timer", 2)
    here = player.log.position()
    tv.tvctl("panel", "portrait")
    screen.wait_for("green")
    assert timer_set(here) == 360
    assert re.match(r"on, turns in 5 min [34]\d s \(landscape 5 min 30 s, portrait 6 min\)|"
                    r"on, turns in (6 min|5 min 5\d s) \(landscape 5 min 30 s, portrait 6 min\)",
                    summary(tv)["Timed rotation"])
    tv.press("XF86More")
    tv.wait_config(OWN + "rotation_auto_mode", 0)
    assert summary(tv)["Timed rotation"].startswith("off ")


def test_time_to_the_next_turn_ends_where_the_other_side_has_nothing(tv, screen, content, shelf):
    tv.configure(panel=ROTATOR)
    shelf.video(content / "red.mp4", "red", seconds=20)
    player = tv.start(folder=content)
    screen.wait_for("red")
    here = player.log.position()
    tv.press("XF86Color")
    player.log.wait("set timer", after=here)
    here = player.log.position()
    tv.press("XF86PanelEnter")
    player.log.wait(r"m_ChangeRotationType\(\d+\)", after=here)
    assert tv.status()["timed_rotation"]["left_s"] is None
    assert "nothing is to be shown on the other side" in summary(tv)["Timed rotation"]


@pytest.mark.parametrize("arguments, reason", [
    (["key", "XF86Bak"], "is it XF86Back?"),
    (["panel", "portrait"], "does not turn its panel"),
    (["language", "english"], "ko_KR"),
    (["usb", "remove", "/nowhere"], "no USB storage is mounted"),
    (["config", "set", "portrait_timer", "10"], "takes 0 to 9"),
])
def test_refusal_names_its_reason(tv, screen, content, shelf, arguments, reason):
    shelf.video(content / "red.mp4", "red", seconds=20)
    tv.start(folder=content)
    screen.wait_for("red")
    refused = tv.tvctl(*arguments, check=False)
    assert refused.returncode == 1
    assert reason in refused.stderr.decode()
