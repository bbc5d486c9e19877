"""Storage that fails while the demo plays: what is shown and told then, and what must not be lost."""

import os
import shutil
import signal

from harness.content import listed, picture
from harness.player import DEMO_MODE, FILE_MODE, OWN_KEYS, PLAYBACK_STATUS, obeying_permissions
from harness.service import Service
from harness.waiting import wait_until

NOTHING_PLAYS = r"nothing that is to be played can be opened"
PORTRAIT_TIMER = f"db/{OWN_KEYS}/portrait_timer"
NOT_WRITTEN = r"config_store: .*could not be written: {}"
# What the player itself says of the same.
KEY_FAILS = r"SetConfigInt key .*,fail$"


def colour_of(path):
    return os.path.basename(path).partition(".")[0]


def wait_shown(recorder, names):
    """Waits until all of these have been on the screen from now on."""
    first = len(recorder.changes)
    wait_until(lambda: {name for _, name in recorder.changes[first:]} >= set(names),
               lambda: f"{names} on the screen; seen since: {recorder.changes[first:]}")


def assert_never_black(recorder):
    """Before the first picture the screen is the compositor's."""
    assert "black" not in recorder.names()[1:], recorder.names()


def test_stick_pulled_in_the_middle_of_a_film_is_waited_for(tv, screen, tmp_path, shelf):
    stick, pocket = tmp_path / "stick", tmp_path / "pocket"
    (stick / "demo").mkdir(parents=True)
    for colour in ("red", "green"):
        shelf.video(stick / "demo" / f"film_{colour}.mp4", colour)
    tv.configure(usb={"mounts": str(stick)}, content={"broken_video": "skip"})
    with screen.record() as recorder:
        player = tv.start("--demo_player_mode", "folder_contents_player", "--folder_path", "demo",
                          "--path_location", "usb", **tv.breakable())
        player.tolerate(r"m_GetPlaybackFolderPath\(\d+\) > failed")
        wait_until(lambda: screen.shown() in ("red", "green"), "the first video")

        # What is open stays open, and cannot be read any more. The next film is looked for where the
        # player runs, because it has no folder; that takes until the stick is back.
        tv.break_storage(eio=pocket, dead=os.path.abspath("film_"))
        os.rename(stick, pocket)
        player.log.wait(r"OnPlayVideo\(\d+\) > film_")
        os.rename(pocket, stick)
        tv.break_storage()
        player.log.wait(r"film_\w+\.mp4 cannot be played: there is no such file")
        wait_shown(recorder, ["red", "green"])
    assert_never_black(recorder)
    tv.wait_config(PLAYBACK_STATUS, 1)


def test_folder_that_cannot_be_read_for_a_while_is_played_again(tv, screen, content, shelf):
    tv.configure(content={"broken_video": "skip"})
    for colour in ("red", "green"):
        shelf.video(content / f"{colour}.mp4", colour, seconds=1)
    with screen.record() as recorder:
        player = tv.start(folder=content, prefix=obeying_permissions())
        wait_shown(recorder, ["red", "green"])
        content.chmod(0)
        try:
            player.log.wait(NOTHING_PLAYS)
            assert player.log.find_all("cannot be played: it may not be read")
        finally:
            content.chmod(0o700)
        wait_shown(recorder, ["red", "green"])
    assert_never_black(recorder)


def test_films_that_change_while_they_play(tv, screen, content, shelf):
    tv.configure(content={"broken_video": "skip"})
    for colour in ("red", "green", "blue"):
        shelf.video(content / f"{colour}.mp4", colour)
    shelf.video(content / "new", "magenta")
    removed, replaced, cut = (content / name for name in listed(content))
    with screen.record() as recorder:
        player = tv.start(folder=content)
        screen.wait_for(colour_of(removed))
        removed.unlink()
        screen.wait_for(colour_of(replaced))
        os.replace(content / "new", replaced)
        screen.wait_for(colour_of(cut))
        os.truncate(cut, cut.stat().st_size // 2)
        player.log.wait(rf"{removed} cannot be played: there is no such file")
        player.log.wait(rf"{cut} cannot be played")
        seen = recorder.names()
    assert_never_black(recorder)
    # What was removed or replaced plays to its end, and is not seen again.
    first_round = [colour_of(path) for path in (removed, replaced, cut)]
    assert [name for name in seen if name != "black"] == [*first_round, "magenta"]


def test_reads_that_hang_hold_nothing_up_but_their_file(tv, screen, content, shelf):
    """Long enough for the reader not to have all of it when it hangs."""
    film = shelf.video(content / "red.mp4", "red", seconds=6)
    for colour in ("green", "blue"):
        picture(content / f"{colour}.jpg", colour)
    others = [colour_of(name) for name in listed(content)[1:]]
    photo = content / f"{others[1]}.jpg"
    with screen.record() as recorder:
        player = tv.start(folder=content, **tv.breakable())
        screen.wait_for("red")
        tv.wait_position(0.5)
        tv.break_storage(hangs=content)
        player.log.wait(rf"{film} is broken: ")
        assert screen.shown() == "red"

        # The main loop answers, and a key takes the show on as soon as anything can be read.
        tv.break_storage(hangs=photo)
        screen.wait_for(others[0])
        screen.key("Right")
        player.log.wait(rf"OnPlayPhoto\(\d+\) > {photo}")
        assert tv.status()["picture"]["file"] == str(photo)
        assert screen.shown() == others[0], "the last picture stays"
        player.log.wait(rf"{photo}: its reading hangs")
        screen.wait_for("red")

        tv.break_storage()
        screen.key("Left")
        screen.wait_for(others[1])
    assert_never_black(recorder)
    assert tv.config(PLAYBACK_STATUS) == 1


def test_disk_that_answers_nothing_holds_up_the_show_but_not_the_player(tv, screen, content, shelf):
    tv.configure(content={"broken_video": "skip"})
    for colour in ("red", "green"):
        shelf.video(content / f"{colour}.mp4", colour)
    with screen.record() as recorder:
        player = tv.start(folder=content, **tv.breakable())
        wait_shown(recorder, ["red", "green"])
        tv.break_storage(dead=content)
        shown = screen.shown()
        player.log.wait(r"cannot be played: its first frame does not come")
        assert shown in ("red", "green") and screen.shown() == shown, "the last picture stays"
        assert tv.status()["panel"], "the main loop answers"

        tv.break_storage()
        wait_shown(recorder, ["red", "green"])
    assert_never_black(recorder)
    assert tv.status()["passed_over"] == {}


def test_reads_that_fail_now_and_then_leave_nothing_behind(tv, screen, content, shelf):
    tv.configure(content={"broken_video": "skip"})
    for colour in ("red", "green"):
        shelf.video(content / f"{colour}.mkv", colour, seconds=1)
        (content / f"{colour}.srt").write_text("1\n00:00:00,000 --> 00:00:01,000\n.\n")
    picture(content / "blue.jpg", "blue")
    with screen.record() as recorder:
        player = tv.start(folder=content, **tv.breakable())
        player.tolerate(r"decode failed")
        screen.wait_for("red")
        tv.break_storage(eio_often=content)
        player.log.wait(r"W/PLATFORM.*: .*(Could not read|Input/output error)", count=3)

        tv.break_storage()
        wait_shown(recorder, ["red", "green", "blue"])
    assert_never_black(recorder)
    assert tv.status()["passed_over"] == {}


def test_disk_that_takes_no_keys_keeps_the_old_ones(tv, screen, content, shelf):
    tv.configure(panel={"rotator": "yes"})
    shelf.video(content / "red.mp4", "red")
    tv.break_storage(read_only=tv.state_dir)
    player = tv.start(folder=content, **tv.breakable())
    player.tolerate(KEY_FAILS, NOT_WRITTEN.format("(Read-only file system|No space left on device)"))
    screen.wait_for("red")
    assert not os.path.exists(tv.state_dir)

    tv.break_storage()
    tv.press("XF86ChannelGuide")
    tv.wait_config(PORTRAIT_TIMER, 0)
    for value, (fault, reason) in enumerate([("full", "No space left on device"),
                                             ("read_only", "Read-only file system")]):
        tv.break_storage(**{fault: tv.state_dir})
        here = player.log.position()
        tv.press("XF86RaiseChannel")
        player.log.wait(f"{PORTRAIT_TIMER} could not be written: {reason}", after=here)
        assert tv.config(PORTRAIT_TIMER) == value

        tv.break_storage()
        tv.press("XF86RaiseChannel")
        tv.wait_config(PORTRAIT_TIMER, value + 1)
    folder = os.path.join(tv.state_dir, "db", OWN_KEYS)
    assert not [name for name in os.listdir(folder) if name.startswith(".")]
    screen.wait_for("red")


def test_disk_that_does_not_sync_holds_up_no_key(tv, screen, content, shelf):
    tv.configure(panel={"rotator": "yes"})
    shelf.video(content / "red.mp4", "red")
    player = tv.start(folder=content, **tv.breakable())
    screen.wait_for("red")
    tv.press("XF86ChannelGuide")
    player.log.wait("timers reset")

    tv.break_storage(unsynced=tv.state_dir)
    tv.press("XF86RaiseChannel")
    player.log.wait(f"{PORTRAIT_TIMER} takes long to be written")
    tv.press("XF86RaiseChannel")
    assert tv.status()["panel"], "the main loop answers"
    assert tv.config(PORTRAIT_TIMER) == 0, "until it is on the medium the old value stands"
    tv.break_storage()
    tv.wait_config(PORTRAIT_TIMER, 2)

    tv.break_storage(unsynced=tv.state_dir)
    tv.press("XF86RaiseChannel")
    player.tolerate(f"{PORTRAIT_TIMER} may keep its old value: 3 is not written yet")
    tv.set_config(DEMO_MODE, -1)
    assert player.wait_end() == 0
    assert tv.config(PORTRAIT_TIMER) == 2


def test_state_that_is_removed_is_begun_anew(tv, screen, content, shelf):
    for colour in ("red", "green"):
        shelf.video(content / f"{colour}.mp4", colour, seconds=1)
    player = tv.start(folder=content)
    screen.wait_for("red")
    for folder in (tv.state_dir, tv.memory_dir):
        # The player may put folders back before the last one is gone.
        shutil.rmtree(folder, ignore_errors=True)
    tv.wait_config(PLAYBACK_STATUS, 1)
    screen.wait_for("green")
    screen.wait_for("red")
    tv.set_config(DEMO_MODE, -1)
    assert player.wait_end() == 0


def test_keys_of_garbage_begin_anew(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    with open(tv.conf, "wb") as file:
        file.write(os.urandom(5000) + b"\n[panel\nrotator = maybe\n[content]\nbroken_video = \xff\n")
    garbage = {DEMO_MODE: b"\0" * 100, FILE_MODE: b"", PORTRAIT_TIMER: b"7" * 1_000_000,
               PLAYBACK_STATUS: b"playing"}
    for key, text in garbage.items():
        path = tv.key_file(key)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(text)
    player = tv.start(folder=content)
    screen.wait_for("red")
    tv.wait_config(PLAYBACK_STATUS, 1)
    assert [tv.config(key) for key in (DEMO_MODE, FILE_MODE, PORTRAIT_TIMER)] == [0, 1, 0]
    for key in (DEMO_MODE, PORTRAIT_TIMER):
        assert player.log.find_all(rf"{key} is begun anew: it holds no number")
    assert player.log.find_all(r"tv\.conf:\d+: \[content\] broken_video: ")


class OnStick:
    """A set whose launcher asks for a folder on USB."""

    def __init__(self, tv):
        self.screen = tv.screen
        self._tv = tv

    def start(self, **options):
        return self._tv.start("--demo_player_mode", "folder_contents_player", "--folder_path", "demo",
                              "--path_location", "usb", **options)


def test_stick_that_hangs_is_taken_off_the_list_by_hand(tv, screen, content, tmp_path, shelf):
    stick = tmp_path / "stick"
    stick.mkdir()
    shelf.video(content / "red.mp4", "red")
    tv.configure(usb={"mounts": str(stick)})
    player = tv.start(folder=content, **tv.breakable())
    screen.wait_for("red")
    tv.break_storage(dead=stick)
    tv.tvctl("usb", "remove", str(stick))
    player.log.wait("stick was removed")
    tv.tvctl("usb", "add", str(stick), check=False)  # it is no folder, as far as anybody knows
    tv.press("XF86AudioPause")
    tv.break_storage()


def test_disk_that_stops_the_main_loop_costs_a_start_and_no_more(tv, screen, tmp_path, shelf):
    """The player looks for its folder on USB before each item."""
    stick = tmp_path / "stick"
    (stick / "demo").mkdir(parents=True)
    for colour in ("red", "green"):
        shelf.video(stick / "demo" / f"{colour}.mp4", colour)
    tv.configure(usb={"mounts": str(stick)})
    with Service(OnStick(tv), None, **tv.breakable()) as service:
        wait_until(lambda: screen.shown() in ("red", "green"), "the first video")
        service.wait_told("WATCHDOG", count=2)
        with screen.record() as recorder:
            tv.break_storage(dead=stick)
            service.watch()
            assert service.lives[0].wait_end() == -signal.SIGABRT
        assert recorder.names()[0] in ("red", "green"), "the last picture stays until then"
        wait_until(lambda: len(service.lives) > 1, "a new start")
        service.lives[1].log.wait(r"m_GetPlaybackFolderPath|m_CreatePlayList")
        assert not service.ready()

        tv.break_storage()
        service.wait_back(life=1)
        wait_until(lambda: screen.shown() in ("red", "green"), "the picture again")
        assert len(service.lives) == 2
