"""demo.sh itself, on a machine without a display and on desktops. It builds into build/, so it plays what is there,
whichever build the other tests look at."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile

import numpy
import pytest
from PIL import Image

from harness import audit
from harness.content import COLOURS, picture
from harness.waiting import wait_until


@pytest.fixture
def demo(source_dir, tmp_path, request):
    """Starts demo.sh, and looks afterwards whether it left anything running."""
    mark = f"demo-{os.getpid()}-{request.node.name}"
    kept = {name: os.environ[name] for name in ("PATH", "HOME") if name in os.environ}
    output = tmp_path / "demo.log"
    # Sockets need short paths, which pytest's own temporary folders are not.
    scratch = pathlib.Path(tempfile.mkdtemp(prefix="demo-"))
    started = []

    def start(*arguments, **desktop):
        with open(output, "wb") as log:
            started.append(subprocess.Popen(
                [os.path.join(source_dir, "demo.sh"), "--no-install", "--out",
                 str(tmp_path / "out"), *arguments],
                stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True,
                # A run in the background ignores Ctrl-C, and its children would as well.
                preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL),
                env={**kept, **desktop, "LANG": "C.UTF-8", "TMPDIR": str(scratch),
                     "OSTREL_E2E_MARK": mark}))
        return started[-1]

    start.text = lambda: output.read_text(errors="replace")
    start.out = tmp_path / "out"
    yield start
    print(start.text() if output.exists() else "never started", file=sys.stderr)
    try:
        # What was interrupted may still be on its way out.
        wait_until(lambda: not audit.processes_marked(mark),
                   lambda: f"nothing left running by demo.sh: {audit.commands_marked(mark)}")
    finally:
        for process in audit.processes_marked(mark):
            os.kill(process, signal.SIGKILL)
    folders = list(scratch.glob("ostrel-demo.*"))
    shutil.rmtree(scratch)
    assert not folders, "demo.sh left its temporary folder behind"


def has_colour(path, name):
    """Whether a good part of the picture shows the colour."""
    with Image.open(path) as image:
        pixels = numpy.asarray(image.convert("RGB")).reshape(-1, 3).astype(float)
    return (numpy.linalg.norm(pixels - numpy.array(COLOURS[name]), axis=1) < 45).mean() > 0.3


def test_demo_without_a_display_leaves_pictures_of_both_orientations(demo, content):
    picture(content / "red.jpg", "red")
    picture(content / "portrait_green.jpg", "green", size=(360, 640))
    process = demo("--seconds", "24", str(content))
    assert process.wait(300) == 0, demo.text()
    shots = sorted(demo.out.glob("shot-*.png"))
    assert any(has_colour(shot, "red") for shot in shots)
    assert any(has_colour(shot, "green") for shot in shots)
    with Image.open(demo.out / "contact-sheet.png") as sheet:
        assert sheet.width > 1000
    assert str(demo.out / "contact-sheet.png") in demo.text()


def test_demo_without_a_display_passes_over_what_is_no_content(demo, content):
    picture(content / "portrait_green.jpg", "green", size=(360, 640))
    (content / "notes.md").write_text("no content\n")
    process = demo("--seconds", "10", str(content))
    assert process.wait(300) == 0, demo.text()
    assert any(has_colour(shot, "green") for shot in demo.out.glob("shot-*.png"))


def test_demo_tells_which_video_ended_the_show(demo, content):
    (content / "sunrise.mp4").write_text("no video\n")
    process = demo("--seconds", "60", str(content))
    assert process.wait(300) == 1, demo.text()
    assert re.search(r"ended because .*\n.*/sunrise\.mp4 cannot be played", demo.text())
    assert str(demo.out / "landscape.log") in demo.text()


def test_demo_tells_that_a_folder_has_nothing_to_play(demo, content):
    (content / "notes.md").write_text("no content\n")
    process = demo("--seconds", "60", str(content))
    assert process.wait(300) == 1, demo.text()
    assert f"{content} has no video or photo" in demo.text()


@pytest.mark.parametrize("moment", ["Building", "Playing", "shot"])
def test_interrupted_demo_leaves_nothing_behind(demo, content, moment):
    picture(content / "red.jpg", "red")
    process = demo("--seconds", "120", str(content))

    def reached():
        assert process.poll() is None, demo.text()
        return (list(demo.out.glob("shot-*.png")) if moment == "shot"
                else moment.lower() in demo.text().lower())

    wait_until(reached, moment, deadline_s=300)
    os.killpg(process.pid, signal.SIGINT)
    assert process.wait(60) == 130, demo.text()


@pytest.mark.parametrize("screen", [(1280, 720)], indirect=True)
@pytest.mark.parametrize("desktop", ["Wayland", "X11"])
def test_demo_on_a_desktop_plays_there_until_the_user_quits(demo, content, screen, desktop):
    picture(content / "red.jpg", "red")
    if desktop == "Wayland":
        place = {"XDG_RUNTIME_DIR": screen.runtime_dir, "WAYLAND_DISPLAY": screen.socket}
    else:
        place = {"DISPLAY": screen.display}
    process = demo(str(content), **place)

    def shows_the_photo():
        assert process.poll() is None, demo.text()
        return screen.near(640, 360, COLOURS["red"])

    wait_until(shows_the_photo, "the photo", deadline_s=300)
    assert f"{desktop} desktop" in demo.text()
    screen.key("Escape")
    assert process.wait(60) == 0, demo.text()


@pytest.mark.parametrize("screen", [(1280, 720)], indirect=True)
def test_demo_on_a_desktop_tells_which_video_ended_the_show(demo, content, screen):
    (content / "sunrise.mp4").write_text("no video\n")
    process = demo(str(content), XDG_RUNTIME_DIR=screen.runtime_dir, WAYLAND_DISPLAY=screen.socket)
    assert process.wait(300) == 1, demo.text()
    assert "/sunrise.mp4 cannot be played" in demo.text()
    assert str(demo.out / "player.log") in demo.text()


def test_demo_plays_its_folder_beside_a_player_that_runs_already(demo, content, tv, screen, tmp_path):
    old = tmp_path / "old"
    old.mkdir()
    picture(old / "red.jpg", "red")
    running = tv.start(folder=old)
    screen.wait_for("red")
    picture(content / "green.jpg", "green")
    process = demo(str(content), XDG_RUNTIME_DIR=screen.runtime_dir, WAYLAND_DISPLAY=screen.socket,
                   DBUS_SESSION_BUS_ADDRESS=tv.bus_address)
    wait_until(lambda: screen.shown() == "green" or process.poll() is not None, "the demo's photo",
               deadline_s=300)
    assert process.poll() is None, demo.text()
    screen.key("Escape")
    assert process.wait(60) == 0, demo.text()
    assert running.running()
