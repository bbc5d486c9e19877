"""Where the content lies, and what happens when it is not there, or no longer."""

import os
import shutil

import pytest

from harness.content import order_in, picture, with_default_folder
from harness.player import PLAYBACK_STATUS, USE_MODE, obeying_permissions
from harness.service import Service
from harness.waiting import wait_until

CANNOT_OPEN = r"m_CreatePlayList\(\d+\) > open dir \[.*\] failed"
NOTHING_TO_PLAY = "Create ostrel demo player failed"


def assert_gave_up(tv, player):
    player.tolerate(NOTHING_TO_PLAY)
    assert player.wait_end() == 0
    assert tv.config(PLAYBACK_STATUS) == 2
    assert player.log.find_all(NOTHING_TO_PLAY)


def test_without_a_folder_given_the_built_in_one_is_played(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    player = tv.start(prefix=with_default_folder(content))
    screen.wait_for("red")
    assert player.log.find_all(r"OnPlayVideo\(\d+\) > /opt/data/demo_movie/red.mp4")


def test_the_built_in_folder_is_played_whatever_folder_is_named_without_the_mode(
        tv, screen, content, tmp_path, shelf):
    """The named folder decides which names are listed, the built-in one from where they play."""
    shelf.video(content / "a.mp4", "red")
    named = tmp_path / "named"
    named.mkdir()
    shelf.video(named / "a.mp4", "green")
    tv.start("--folder_path", f"{named}/", prefix=with_default_folder(content))
    screen.wait_for("red")


def test_use_mode_zero_ends_the_built_in_demo(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    player = tv.start(prefix=with_default_folder(content))
    screen.wait_for("red")
    here = player.log.position()
    tv.set_config(USE_MODE, 1)
    player.log.wait("pKeyName:db/menu/support/use_mode iKeyValue:1", after=here)
    assert player.running()
    tv.set_config(USE_MODE, 0)
    assert player.wait_end() == 0


def test_missing_folder(tv, tmp_path):
    player = tv.start(folder=tmp_path / "nowhere")
    player.tolerate(CANNOT_OPEN)
    assert_gave_up(tv, player)


def test_unreadable_folder(tv, content, shelf):
    shelf.video(content / "red.mp4", "red")
    content.chmod(0)
    try:
        player = tv.start(folder=content, prefix=obeying_permissions())
        player.tolerate(CANNOT_OPEN)
        assert_gave_up(tv, player)
    finally:
        content.chmod(0o700)


def test_empty_folder(tv, content):
    assert_gave_up(tv, tv.start(folder=content))


def test_folder_with_other_files_only(tv, content):
    for name in ("readme.txt", "noextension", "song.flac", "film.srt", "image.png"):
        (content / name).write_text("nothing to show\n")
    (content / "folder").mkdir()
    assert_gave_up(tv, tv.start(folder=content))


def test_relative_name_on_the_second_of_two_sticks(tv, screen, tmp_path, shelf):
    first, second = tmp_path / "stick1", tmp_path / "stick2"
    first.mkdir()
    (second / "demo").mkdir(parents=True)
    shelf.video(second / "demo" / "red.mp4", "red")
    tv.configure(usb={"mounts": f"{first}:{second}"})
    player = tv.start("--demo_player_mode", "folder_contents_player", "--folder_path", "demo",
                      "--path_location", "usb")
    screen.wait_for("red")
    assert player.log.find_all(rf"path existed:{second}/demo/")


def test_folder_on_no_stick(tv, tmp_path):
    stick = tmp_path / "stick"
    stick.mkdir()
    tv.configure(usb={"mounts": str(stick)})
    player = tv.start("--demo_player_mode", "folder_contents_player", "--folder_path", "demo",
                      "--path_location", "usb")
    player.tolerate(CANNOT_OPEN)
    assert_gave_up(tv, player)


def start_from_stick(tv, stick):
    tv.configure(usb={"mounts": str(stick)})
    return tv.start("--demo_player_mode", "folder_contents_player", "--folder_path", "demo",
                    "--path_location", "usb")


def test_stick_pulled_while_videos_play_ends_the_demo(tv, screen, tmp_path, shelf):
    stick = tmp_path / "stick"
    (stick / "demo").mkdir(parents=True)
    shelf.video(stick / "demo" / "red.mp4", "red")
    shelf.video(stick / "demo" / "green.mp4", "green")
    player = start_from_stick(tv, stick)
    player.tolerate(r"media_player|PLATFORM", r"m_GetPlaybackFolderPath\(\d+\) > failed")
    wait_until(lambda: screen.shown() in ("red", "green"), "the first video")
    os.rename(stick, tmp_path / "pocket")
    assert player.wait_end() == 0
    assert tv.config(PLAYBACK_STATUS) == 3


def test_stick_pulled_while_photos_show_and_put_back(tv, screen, tmp_path):
    stick = tmp_path / "stick"
    (stick / "demo").mkdir(parents=True)
    picture(stick / "demo" / "red.jpg", "red")
    picture(stick / "demo" / "green.jpg", "green")
    player = start_from_stick(tv, stick)
    wait_until(lambda: screen.shown() in ("red", "green"), "the first photo")
    os.rename(stick, tmp_path / "pocket")
    tv.wait_config(PLAYBACK_STATUS, 3)
    os.rename(tmp_path / "pocket", stick)
    tv.wait_config(PLAYBACK_STATUS, 1)
    assert player.running()


def test_stick_plays_while_it_is_plugged_in(tv, screen, content, tmp_path, shelf):
    stick, pocket, upright = tmp_path / "stick", tmp_path / "pocket", tmp_path / "upright"
    (pocket / "Demo").mkdir(parents=True)
    (upright / "demo").mkdir(parents=True)
    picture(upright / "demo" / "portrait_blue.jpg", "blue")  # which this set cannot show
    shelf.video(pocket / "Demo" / "green.mp4", "green")
    shelf.video(content / "red.mp4", "red")
    tv.configure(content={"follow_sticks": "yes"}, usb={"mounts": f"{upright}:{stick}"})
    with Service(tv, None, prefix=with_default_folder(content)) as service:
        wait_until(lambda: screen.shown() == "red", "the built-in content")
        os.rename(pocket, stick)
        tv.tvctl("usb", "add", str(stick))
        wait_until(lambda: screen.shown() == "green", "the stick's content")
        service.wait_told("READY")
        service.lives[-1].tolerate("PLATFORM")  # the film goes away under it
        os.rename(stick, pocket)
        tv.tvctl("usb", "add", str(content))  # another stick; whatever comes or goes, all are looked at
        wait_until(lambda: screen.shown() == "red", "the built-in content")
        tv.tvctl("usb", "add", str(pocket))
        wait_until(lambda: screen.shown() == "green", "the content of one that was added by hand")
        tv.tvctl("usb", "remove", str(pocket))
        wait_until(lambda: screen.shown() == "red", "the built-in content once more")
        assert [life.wait_end() for life in service.lives[:4]] == [0] * 4


def test_changed_folder_is_taken_up_between_two_rounds(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    tv.configure(content={"follow_folder": "yes"})
    with Service(tv, content) as service:
        wait_until(lambda: screen.shown() == "red", "the film")
        shelf.video(content / "green.mp4", "green")
        assert service.lives[0].wait_end() == 0
        log = service.lives[0].log
        (noticed, _), = log.find_all("holds other files; they are played after this one")
        (ended, _), = log.find_all("ending, to be started anew with other content")
        assert noticed <= ended
        wait_until(lambda: screen.shown() == "green", "the new film")


def test_nothing_is_followed_where_nobody_would_start_the_player_again(tv, content):
    picture(content / "red.jpg", "red")
    tv.configure(content={"follow_folder": "yes", "follow_sticks": "yes"})
    tv.start(folder=content).log.wait("content is not followed: nobody would start the player again")


def test_ten_thousand_files(tv, screen, content):
    picture(content / "first.jpg", "red")
    for number in range(9999):
        os.link(content / "first.jpg", content / f"photo {number:05}.jpg")
    player = tv.start(folder=content)
    screen.wait_for("red")
    assert len(player.log.find_all(r"FileName:")) == 10000
    here = player.log.position()
    screen.key("Left")
    last = order_in(content, [".jpg"])[-1]
    player.log.wait(rf"OnPlayPhoto\(\d+\) > .*/{last}", after=here)
    screen.key("Right")
    first = order_in(content, [".jpg"])[0]
    player.log.wait(rf"OnPlayPhoto\(\d+\) > .*/{first}", after=here)


@pytest.mark.parametrize("changed", ["removed", "replaced by nothing"])
def test_video_that_disappears_during_the_demo_ends_it(tv, screen, content, shelf, changed):
    shelf.video(content / "red.mp4", "red")
    shelf.video(content / "green.mp4", "green")
    first, second = order_in(content, [".mp4"])
    player = tv.start(folder=content)
    player.tolerate(r"PLATFORM")
    screen.wait_for(first.removesuffix(".mp4"))
    if changed == "removed":
        os.remove(content / second)
    else:
        os.truncate(content / second, 0)
    assert player.wait_end() == 0
    assert tv.config(PLAYBACK_STATUS) == 3


def test_folder_moved_away_during_photos_keeps_the_player_calm(tv, screen, content, tmp_path):
    picture(content / "red.jpg", "red")
    picture(content / "green.jpg", "green")
    player = tv.start(folder=content)
    wait_until(lambda: screen.shown() in ("red", "green"), "the first photo")
    shutil.move(content, tmp_path / "elsewhere")
    tv.wait_config(PLAYBACK_STATUS, 3)
    player.log.wait(r"EventID = 4,iParam1 = 1", count=10)
    failures = [when for when, _ in player.log.find_all(r"EventID = 4,iParam1 = 1")]
    # Each failure is told no sooner than a fifth of a second after the picture was asked for.
    assert failures[-1] - failures[0] > 0.19 * (len(failures) - 1), failures
