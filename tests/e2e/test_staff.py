"""What shop staff do with the remote control and the pointer."""

import numpy
import pytest

from harness.content import order_in, picture
from harness.options import wait_options
from harness.pictures import wait_moving, wait_still
from harness.player import DEMO_MODE, PLAYBACK_STATUS
from harness.waiting import wait_until


@pytest.fixture
def two_videos(tv, screen, content, shelf):
    """The player on two videos of eight seconds; the colours in the order of the list."""
    shelf.video(content / "red.mp4", "red", seconds=8)
    shelf.video(content / "green.mp4", "green", seconds=8)
    player = tv.start(folder=content)
    player.order = [name.removesuffix(".mp4") for name in order_in(content, [".mp4"])]
    screen.wait_for(player.order[0])
    return player


def test_next_and_previous_keys_wrap(screen, two_videos):
    first, second = two_videos.order
    screen.key("Right")
    screen.wait_for(second)
    screen.key("Right")
    screen.wait_for(first)
    screen.key("Left")
    screen.wait_for(second)


def test_return_opens_the_options_and_back_closes_them(screen, two_videos):
    here = two_videos.log.position()
    screen.key("Return")
    wait_options(screen, two_videos, here)
    screen.key("Escape")
    two_videos.log.wait("Block E-POP = 0", after=here)
    wait_until(lambda: screen.shown() in two_videos.order, "the video alone")
    assert two_videos.running()


def test_click_opens_the_options(screen, two_videos):
    here = two_videos.log.position()
    screen.click(40, 40, button=3)
    screen.click(40, 40, button=1)
    wait_options(screen, two_videos, here)
    assert len(two_videos.log.find_all("Block E-POP = 1", after=here)) == 1


def test_one_file_chosen_in_the_options_plays_alone(tv, screen, two_videos):
    first, second = two_videos.order
    here = two_videos.log.position()
    screen.key("Return")
    wait_options(screen, two_videos, here)
    # The row in force, play all, has the focus; the two files stand below it.
    screen.key("Down")
    screen.key("Down")
    screen.key("Return")
    tv.wait_config(DEMO_MODE, 2)
    two_videos.log.wait(rf"OnPlayVideo\(\d+\) > .*/{second}\.mp4", after=here)
    screen.wait_for(second)
    two_videos.log.wait("m_OnPlayerCompletedCB", after=here)
    two_videos.log.wait(rf"OnPlayVideo\(\d+\) > .*/{second}\.mp4", after=here, count=2)
    assert not two_videos.log.find_all(rf"OnPlayVideo\(\d+\) > .*/{first}\.mp4", after=here)


def test_off_chosen_in_the_options_ends_the_demo(tv, screen, two_videos):
    here = two_videos.log.position()
    screen.key("Return")
    wait_options(screen, two_videos, here)
    screen.key("Up")
    screen.key("Return")
    assert two_videos.wait_end() == 0
    assert tv.config(DEMO_MODE) == -1


def test_pause_freezes_the_picture_and_play_goes_on(tv, screen, content, shelf):
    shelf.video(content / "ball.mp4", "red", seconds=20, pattern="ball")
    player = tv.start(folder=content)
    tv.wait_config(PLAYBACK_STATUS, 1)
    tv.press("XF86AudioPause")
    wait_still(screen)
    screen.key("XF86AudioPlay")
    wait_moving(screen)
    tv.press("XF86PlayBack")
    wait_still(screen)
    screen.key("space")
    wait_moving(screen)
    screen.key("h")
    wait_still(screen)
    # Forward and rewind set a held video going.
    screen.key("f")
    wait_moving(screen)
    assert player.running()


def test_forward_and_rewind_change_the_speed(tv, screen, content, shelf):
    shelf.video(content / "film.mp4", "red", "green", "blue", seconds=6)
    player = tv.start(folder=content)
    with screen.record() as recorder:
        screen.wait_for("green")
        tv.press("XF86AudioRewind")
        screen.wait_for("red")
        tv.press("XF86AudioNext")
        screen.wait_for("green")
        screen.wait_for("blue")
    assert "black" not in recorder.names()[1:]
    assert player.log.find_all(r"m_SetTrickSpeed\(\d+\) > -2\.0")
    assert player.log.find_all(r"m_SetTrickSpeed\(\d+\) > 2\.0")


def test_play_key_on_a_photo_starts_the_slide_show_again(screen, content, tv):
    picture(content / "red.jpg", "red")
    picture(content / "green.jpg", "green")
    player = tv.start(folder=content)
    player.log.wait("decode success")
    tv.press("XF86AudioPause")
    player.log.wait(r"EventID = 8,iParam1 = 3")
    here = player.log.position()
    screen.key("XF86AudioPlay")
    player.log.wait(r"OnPlayPhoto\(\d+\) > .*jpg", after=here)


def test_disclaimer_lies_over_a_starting_video_for_a_while(tv, screen, content, shelf):
    tv.configure(product={"disclaimer": "yes"})
    shelf.video(content / "red.mp4", "red", seconds=20)
    player = tv.start(folder=content)

    def foreign_pixels():
        strip = screen.picture()[screen.height // 2:].astype(int)
        return int((numpy.abs(strip - strip[0, 0]).max(axis=2) > 60).sum())

    player.log.wait("player_start successful")
    wait_until(lambda: screen.shown() is not None and foreign_pixels() > 500,
               lambda: f"the disclaimer; pixels that differ: {foreign_pixels()}")
    player.log.wait("time out, evas hide, delete timer")
    wait_until(lambda: foreign_pixels() == 0,
               lambda: f"the video alone; pixels that differ: {foreign_pixels()}")


def test_subtitle_is_drawn_over_the_lower_part(tv, screen, content, shelf):
    shelf.video(content / "film.mp4", "blue", seconds=10)
    (content / "film_EngUS.srt").write_text("1\n00:00:01,000 --> 00:00:09,000\nHello, shop!\n")
    (content / "film_Kor.srt").write_text("1\n00:00:01,000 --> 00:00:09,000\n.\n")
    player = tv.start(folder=content)
    player.log.wait(r"OnPlayVideo\(\d+\) > .*film\.mp4 .*film_EngUS\.srt")

    def bright_pixels(rows):
        return int((screen.picture()[rows].min(axis=2) > 190).sum())

    wait_until(lambda: bright_pixels(slice(240, 360)) > 100, "letters in the lower part")
    # Not the uppermost rows, where the pointer may still be seen.
    assert bright_pixels(slice(60, 200)) == 0


def test_broken_subtitle_does_not_stop_the_video(tv, screen, content, shelf):
    shelf.video(content / "film.mp4", "blue", seconds=2)
    (content / "film.ass").write_bytes(b"\x00\xff" * 1000)
    (content / "film_EngUS.srt").write_bytes(b"")
    tv.start(folder=content)
    screen.wait_for("blue")


def toast_text(tv, player):
    """Switches timed rotation, and returns the words that the toast is made of."""
    here = player.log.position()
    tv.press("XF86Color")
    return player.log.wait(r"m_UpdateNotificationLabel\(\d+\) > strContent = (.*)$",
                           after=here).group(1)


def test_texts_are_in_the_language_of_the_set_whatever_locales_the_machine_has(
        tv, screen, content, shelf):
    tv.configure(panel={"rotator": "yes"}, language={"language": "de_DE"})
    shelf.video(content / "red.mp4", "red", seconds=8)
    player = tv.start(folder=content, LANG="C")
    screen.wait_for("red")
    german = toast_text(tv, player)
    tv.tvctl("language", "en_US")
    english = toast_text(tv, player)
    assert "SID" not in german + english and "QUENDIRA" not in german + english
    assert german.split()[0] != english.split()[0]


def test_language_of_the_set_chooses_the_subtitle(tv, screen, content, shelf):
    tv.configure(language={"language": "ko_KR"})
    shelf.video(content / "film.mp4", "blue")
    for suffix in ("_EngUS", "_Kor", ""):
        (content / f"film{suffix}.srt").write_text("1\n00:00:00,100 --> 00:00:02,000\nHello\n")
    player = tv.start(folder=content)
    player.log.wait(r"OnPlayVideo\(\d+\) > .*film\.mp4 .*film_Kor\.srt")
