"""Rows about what a person waits for: the options popup, a folder with very many names, and a player
that is started anew."""

import os
import re
import shutil
import signal
import subprocess
import time

from harness.player import STAND
from harness.waiting import wait_until
from rows_pictures import CLIP_SECONDS
from stage import UHD
from table import Figure, at_most, row
from wayland_trace import since

FRAME_AT_60_HZ_MS = 1000 / 60
POPUPS = 3
OPEN_SECONDS = 1.5
RETURN = 28
LINKS_OF_A_FILE = 20000


@row("options",
     Figure("options-work", "options popup at 3840x2160: processor time to its first frame", "ms",
            "at most 16.7", at_most(FRAME_AT_60_HZ_MS)),
     Figure("options", "options key to its first frame there, over a playing film", "ms",
            "at most 16.7", at_most(FRAME_AT_60_HZ_MS)),
     Figure("options-film", "longest interval in the film meanwhile", "ms", "–", None))
def options(stage, who, results):
    gallery = stage.build / "tests/contract/widget_extension/velt-gallery"
    told = subprocess.run([gallery, "popup", "3840x2160", stage.root / "popup.png", "time",
                           "before=2"], check=True, capture_output=True, text=True,
                          env={**os.environ,
                               "OSTREL_DEMO_RESOURCE_DIR": str(stage.build / "res")})
    work = re.search(r"first frame after ([\d.]+) ms", told.stdout)
    results.note("options-work", who, float(work[1]))
    with stage.run(who, stage.one_film(), size=UHD, traced=True,
                   log_level="debug") as (run, screen):
        run.wait("popup and toast are ready")
        run.watch(OPEN_SECONDS)
        for _ in range(POPUPS):
            screen.key("Return")
            run.watch(OPEN_SECONDS)
            screen.key("Escape")
            run.watch(OPEN_SECONDS)
        trace = run.end()
    for pressed in (stamp for stamp, code in trace.keys if code == RETURN):
        shown_after = trace.interface_after(pressed)
        if shown_after is not None:
            results.note("options", who, shown_after)
        around = [length for stamp, length in zip(trace.pictures()[1:], trace.intervals())
                  if since(pressed, stamp) < 700]
        if around:
            results.note("options-film", who, max(around))


@row("folder",
     Figure("folder-100", "start to first picture, 100 videos and 50 subtitles", "ms", "–", None),
     Figure("folder-10000", "the same with 10,000 and 5,000", "ms", "at most 400", at_most(400)),
     Figure("folder-100000", "the same with 100,000 and 50,000", "ms", "at most 4000 (linear)",
            at_most(4000)))
def folder_of_names(stage, who, results):
    for names in (100, 10_000, 100_000):
        folder = stage.folder(f"names-{names}", lambda made, count=names: fill(stage, made, count))
        with stage.run(who, folder, traced=True, log_level="warning") as (run, _):
            # Without the line that the player logs for each name, which the bench would read.
            run.wait_picture()
            results.note(f"folder-{names}", who, run.first_picture(run.trace()))


def after_fault(what, bound_ms):
    return Figure(f"restart-{what.lower()}", f"{what} to the picture of the player started anew", "ms",
                  f"at most {bound_ms}", at_most(bound_ms))


@row("restart", after_fault("SIGKILL", 5000), after_fault("SIGSEGV", 5000),
     Figure("restart-stand", "the same of a main loop that stands", "ms", "at most 5000",
            at_most(5000)),
     Figure("restart-leave", "the same of the Back key", "ms", "at most 1000", at_most(1000)))
def restart(stage, who, results):
    def send(number):
        return lambda service, _: service.lives[0].process.send_signal(number)

    for fault, strike in (("sigkill", send(signal.SIGKILL)), ("sigsegv", send(signal.SIGSEGV)),
                          ("stand", send(STAND)),
                          ("leave", lambda _, screen: screen.key("Escape"))):
        with stage.kept_alive(stage.one_film()) as (service, screen):
            service.wait_told("WATCHDOG", count=2)
            service.watch()
            began = time.monotonic()
            strike(service, screen)
            wait_until(lambda: screen.shown() == "black", "the end of the picture")
            wait_until(lambda: screen.shown() != "black", "a picture")
            results.note(f"restart-{fault}", who, (time.monotonic() - began) * 1000)


def fill(stage, folder, names):
    """A folder of so many videos, every other of which has a subtitle."""
    for number in range(names):
        if number % LINKS_OF_A_FILE == 0:
            # A file system allows a file so many names only.
            video = stage.root / f"video-{names}-{number}.mp4"
            subtitle = video.with_suffix(".srt")
            shutil.copy(stage.film(CLIP_SECONDS), video)
            subtitle.write_text("1\n00:00:01,000 --> 00:00:02,000\nA subtitle\n")
        # Of many lengths, as names are that people give.
        name = f"film-{number:06}{'-a-longer-name-than-others'[:number % 26]}"
        os.link(video, folder / f"{name}.mp4")
        if number % 2 == 0:
            os.link(subtitle, folder / f"{name}.srt")
