"""How options, toast and disclaimer look, compared with pictures that somebody has looked at."""

import pytest

from harness.content import picture
from harness.options import open_options, wait_focus_on_row
from harness.player import DEMO_MODE, PLAYBACK_STATUS
from harness.screen import Recorder
from harness.waiting import wait_until

SIZES = [(1280, 720), (1920, 1080)]
# Of the panel's states, with the quarter turns that set the screen upright again.
ORIENTATIONS = {"landscape": (1, 0), "portrait": (2, 3)}
LANGUAGES = {"ltr": "en_US", "rtl": "ar_AE"}
LONG_NAME = "A walk through the mountains and along the coast on the first day of a long summer"


@pytest.mark.parametrize("screen", SIZES, indirect=True, ids=lambda size: f"{size[0]}x{size[1]}")
@pytest.mark.parametrize("orientation", ORIENTATIONS)
@pytest.mark.parametrize("direction", LANGUAGES)
def test_looks(tv, screen, content, shelf, references, orientation, direction):
    """The clock runs slowly, so that everything is still there when it is looked at."""
    state, turned = ORIENTATIONS[orientation]
    tv.configure(panel={"rotator": "yes", "first_rotation_state": state},
                 product={"disclaimer": "yes"}, language={"language": LANGUAGES[direction]})
    # Only one file of each kind, because their order is that of the file system.
    prefix = "portrait_" if orientation == "portrait" else ""
    shelf.video(content / f"{prefix}{LONG_NAME}.mp4", "blue", seconds=20)
    picture(content / f"{prefix}Harbour.jpg", "brown",
            size=(640, 360) if orientation == "landscape" else (360, 640))
    player = tv.start(folder=content, **tv.timers(0.01, above=2))
    suffix = f"{orientation}-{direction}-{screen.width}x{screen.height}"

    player.log.wait("player_start successful")
    references.check(f"disclaimer-{suffix}", turned)

    here = open_options(screen, player)
    screen.key("Down", "Down", "Return")
    tv.wait_config(DEMO_MODE, 2 << 8 if orientation == "portrait" else 2)
    player.log.wait("m_OnDestroyPopTimerCB", after=here)
    screen.wait_for("brown")
    open_options(screen, player)
    references.check(f"options-{suffix}", turned)

    tv.press("XF86ChannelGuide")
    references.check(f"toast-{suffix}", turned)


@pytest.mark.parametrize("screen", SIZES[:1], indirect=True, ids=lambda size: f"{size[0]}x{size[1]}")
@pytest.mark.parametrize("orientation, direction", [("landscape", "ltr"), ("portrait", "rtl")])
def test_standby_card_looks(tv, screen, content, references, orientation, direction):
    state, turned = ORIENTATIONS[orientation]
    tv.configure(panel={"rotator": "yes", "first_rotation_state": state},
                 language={"language": LANGUAGES[direction]}, content={"broken_video": "skip"})
    prefix = "portrait_" if orientation == "portrait" else ""
    (content / f"{prefix}{LONG_NAME}.mp4").touch()
    (content / f"{prefix}مشاهد من الطبيعة.mp4").touch()
    suffix = f"{orientation}-{direction}-{screen.width}x{screen.height}"

    tv.start_standby()
    wait_until(lambda: screen.shown() != "black", "the card")
    tv.set_config(PLAYBACK_STATUS, 2)
    references.check(f"standby-content-{suffix}", turned)

    tv.start(folder=content)
    references.check(f"standby-files-{suffix}", turned)


def record_row(screen):
    """Records the focused row: a checksum of each of its looks."""
    left, top, right, bottom = wait_focus_on_row(screen)
    # Not its outline, which is drawn over the moving picture.
    return Recorder(lambda: hash(screen.picture()[top + 4:bottom - 4, left + 8:right - 8].tobytes()))


def test_focused_name_that_fits_stands_still(tv, screen, content):
    picture(content / "Harbour.jpg", "brown")
    player = tv.start(folder=content)
    screen.wait_for("brown")
    open_options(screen, player)
    with record_row(screen) as recorder:
        # Longer than a long name waits before it slides.
        wait_until(lambda: recorder.samples > 10 and recorder.elapsed() > 2.0, "two seconds of looks")
    assert len(recorder.changes) == 1, "the name has moved"


def test_focused_name_that_is_too_long_slides_to_its_end_and_comes_back(tv, screen, content):
    picture(content / f"{LONG_NAME}.jpg", "brown")
    player = tv.start(folder=content)
    screen.wait_for("brown")
    open_options(screen, player)
    wait_focus_on_row(screen)
    screen.key("Down")
    with record_row(screen) as recorder:
        wait_until(lambda: len(recorder.changes) > 10, "a name that slides")
        first = recorder.changes[0][1]
        wait_until(lambda: recorder.changes[-1][1] == first, "the name's beginning again")
