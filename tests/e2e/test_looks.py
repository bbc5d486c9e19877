"""How options, toast and disclaimer look, compared with pictures that somebody has looked at."""

import pytest

from harness.content import picture
from harness.options import open_options
from harness.player import DEMO_MODE

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
