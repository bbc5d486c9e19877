"""Files as they are found in shops: broken, misnamed, half copied, and named by anybody."""

import itertools
import os

import pytest

from harness.content import half_picture, listed, order_in, picture
from harness.player import PLAYBACK_STATUS, obeying_permissions
from harness.screen import COLOURS
from harness.waiting import wait_until


def write_text(path):
    path.write_text("this is no picture\n")


def write_nothing(path):
    path.write_bytes(b"")


def write_half(path):
    half_picture(path, "violet")


def write_png(path):
    picture(path, "violet", kind="PNG")


def make_folder(path):
    path.mkdir()


def make_fifo(path):
    os.mkfifo(path)


def make_dangling_link(path):
    path.symlink_to("nowhere.jpg")


BROKEN = {
    "text": write_text,
    "zero bytes": write_nothing,
    "cut in half": write_half,
    "a PNG": write_png,
    "a folder": make_folder,
    "a pipe": make_fifo,
    "a dangling link": make_dangling_link,
}
DECODE_FAILED = r"EventDispatcher.* > decode failed"
SKIPPED = r"EventID = (?:4,iParam1 = 1|5,iParam1 = [^3])"


@pytest.mark.parametrize("kind", BROKEN)
def test_broken_photo_is_skipped(tv, screen, content, kind):
    picture(content / "red.jpg", "red")
    BROKEN[kind](content / "broken.jpg")
    picture(content / "green.jpg", "green")
    with screen.record() as recorder:
        player = tv.start(folder=content)
        player.tolerate(DECODE_FAILED, r"still_picture")
        for name in [name.removesuffix(".jpg") for name in listed(content)
                     if name != "broken.jpg"] * 2:
            screen.wait_for(name)
            # Not to wait for five seconds.
            screen.key("Right")
        player.log.wait(SKIPPED)
    assert "violet" not in recorder.names()
    assert player.running()


def test_unreadable_photo_is_skipped(tv, screen, content):
    picture(content / "red.jpg", "red")
    picture(content / "violet.jpg", "violet")
    (content / "violet.jpg").chmod(0)
    with screen.record() as recorder:
        player = tv.start(folder=content, prefix=obeying_permissions())
        player.tolerate(r"still_picture")
        player.log.wait(SKIPPED)
        screen.wait_for("red")
    assert "violet" not in recorder.names()


def test_folder_of_broken_photos_does_not_spin(tv, content):
    for number in range(5):
        write_text(content / f"{number}.jpg")
    player = tv.start(folder=content)
    player.tolerate(r"still_picture")
    player.log.wait(SKIPPED)
    began = player.cpu_seconds()
    player.log.wait(SKIPPED, count=15)
    failures = [when for when, _ in player.log.find_all(SKIPPED)]
    assert failures[14] - failures[0] > 14 * 0.19, failures
    assert player.cpu_seconds() - began < 0.5 * (failures[14] - failures[0])
    assert tv.config(PLAYBACK_STATUS) == 3


def test_broken_photos_are_waited_with_and_named_once_where_bad_files_are_passed_over(tv, content):
    tv.configure(content={"broken_video": "skip"})
    for number in range(2):
        write_text(content / f"{number}.jpg")
    player = tv.start(folder=content)
    player.tolerate(r"still_picture", r"/PLATFORM")
    player.log.wait("the player looks again in 2 s")
    for number in range(2):
        assert len(player.log.find_all(f"still picture: .*/{number}.jpg: ")) == 1


def write_truncated_video(path, shelf):
    shelf.video(path, "red")
    os.truncate(path, 500)


@pytest.mark.parametrize("kind", ["zero bytes", "text", "a folder", "a dangling link", "cut short"])
def test_broken_video_ends_the_demo(tv, content, shelf, kind):
    path = content / "broken.mp4"
    if kind == "cut short":
        write_truncated_video(path, shelf)
    else:
        BROKEN[kind](path)
    player = tv.start(folder=content)
    player.tolerate(r"PLATFORM")
    assert player.wait_end() == 0
    assert tv.config(PLAYBACK_STATUS) == 3


def test_broken_videos_are_passed_over_where_the_set_says_so(tv, screen, content, shelf):
    tv.configure(content={"broken_video": "skip"})
    shelf.video(content / "red.mp4", "red", seconds=1)
    bad = {}
    for kind in ["zero bytes", "text", "a folder", "a dangling link"]:
        bad[kind] = content / f"{kind}.mp4"
        BROKEN[kind](bad[kind])
    bad["noise"] = content / "noise.mp4"
    bad["noise"].write_bytes(b"\x55" * 100000)
    shelf.video(content / "green.mp4", "green", seconds=1)
    bad["cut short"] = content / "cut short.mp4"
    write_truncated_video(bad["cut short"], shelf)
    with screen.record() as recorder:
        player = tv.start(folder=content)
        wait_until(lambda: len([name for name in recorder.names() if name != "black"]) > 4,
                   lambda: f"two rounds of red and green; seen so far: {recorder.names()}")
    seen = recorder.names()
    # Before the first picture the screen is the compositor's.
    assert "black" not in seen[1:], seen
    assert set(seen) - {"black"} == {"red", "green"}, seen
    shown = [(when, name) for when, name in recorder.changes if name in ("red", "green")]
    came = [when for (_, before), (when, name) in itertools.pairwise([(0, None), *shown]) if name != before]
    film_s = max(ended - began for (began, _), (ended, _) in zip(
        player.log.find_all(r"OnPlayVideo\(\d+\) > .*/(red|green).mp4"), player.log.find_all("has come to its end")))
    # A round is both films and half a second at most for each of the others. On a busy machine all of it
    # together may take a film longer.
    assert max(came[2] - came[0], came[3] - came[1]) < 3 * film_s + 0.5 * len(bad), (came, film_s)
    assert tv.status()["passed_over"].keys() == {str(path) for path in bad.values()}
    told = [match.group(1) for _, match in player.log.find_all(r"/([^/]+) cannot be played: ")]
    assert sorted(told) == sorted(path.name for path in bad.values()), "each is told of once"
    assert tv.config(PLAYBACK_STATUS) == 1
    gone = bad.pop("noise")
    gone.unlink()
    wait_until(lambda: tv.status()["passed_over"].keys() == {str(path) for path in bad.values()},
               lambda: f"a status without {gone}, not {tv.status()['passed_over']}")


def test_folder_of_broken_videos_is_waited_with_until_one_is_replaced(tv, screen, content, shelf):
    tv.configure(content={"broken_video": "skip"})
    write_text(content / "a.mp4")
    shelf.video(content / "good", "red")
    player = tv.start(folder=content)
    player.log.wait(r"nothing that is to be played can be opened; the player looks again in 2 s")
    wait_until(lambda: tv.status()["player"]["looks_again_ms"],
               lambda: f"a status of a player that waits, not {tv.status()['player']}")
    os.replace(content / "good", content / "a.mp4")
    screen.wait_for("red")
    assert tv.status()["passed_over"] == {}


NAMES_FROM_HELL = [
    b"with some spaces.mp4",
    b"100%.mp4",
    b"%n%s%d%x.mp4",
    b"what#is?this&that=.mp4",
    b"new\nline\ttab.mp4",
    b"<b>bold<i> &amp; co.mp4",
    b"invalid \xff\xfe utf-8.mp4",
    b"-rf --help ; $(reboot).mp4",
    "日本語 العربية.mp4".encode(),
    b"x" * 251 + b".mp4",
]


def test_names_from_hell(tv, screen, content, shelf):
    colour_of = dict(zip(NAMES_FROM_HELL, COLOURS))
    for name, colour in colour_of.items():
        shelf.video(os.fsencode(content) + b"/" + name, colour, seconds=1)
    order = [colour_of[name] for name in order_in(os.fsencode(content), [b".mp4"])]
    assert len(order) == len(NAMES_FROM_HELL)
    with screen.record() as recorder:
        tv.start(folder=content)
        screen.wait_for(order[0])
        wait_until(lambda: len(recorder.names()) > len(order) + 1,
                   lambda: f"one round of {order}; seen so far: {recorder.names()}")
    seen = [name for name in recorder.names() if name != "black"]
    assert seen[:len(order) + 1] == order + order[:1]


def test_photos_with_names_from_hell(tv, screen, content):
    names = [name.replace(b".mp4", b".jpg") for name in NAMES_FROM_HELL]
    colour_of = dict(zip(names, COLOURS))
    for name, colour in colour_of.items():
        picture(os.fsencode(content) + b"/" + name, colour)
    tv.start(folder=content)
    for name in order_in(os.fsencode(content), [b".jpg"]):
        screen.wait_for(colour_of[name])
        screen.key("Right")


def test_folder_with_a_name_from_hell(tv, screen, tmp_path, shelf):
    folder = os.fsencode(tmp_path) + b"/50% off?#\n\xff <b>"
    os.mkdir(folder)
    shelf.video(folder + b"/red.mp4", "red")
    shelf.video(folder + b"/portrait_x.mp4", "green")
    tv.start(folder=folder)
    screen.wait_for("red")


def test_options_list_shows_names_from_hell(tv, screen, content, shelf):
    """The popup opens and closes; that the rows read as the names do is the widgets' own test."""
    shelf.video(os.fsencode(content) + b"/<b>x<i> & \xff%n.mp4", "red", seconds=8)
    player = tv.start(folder=content)
    screen.wait_for("red")
    screen.key("Return")
    player.log.wait(r"Block E-POP = 1")
    screen.key("Escape")
    player.log.wait(r"Block E-POP = 0")
    screen.wait_for("red")
