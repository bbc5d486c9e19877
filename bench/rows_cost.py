"""Rows about what it costs: processor time and memory."""

import shutil
import subprocess

from harness.content import picture
from stage import PLAYER, decoding_ticks
from table import SETTLED_AFTER, Figure, at_most, at_most_mpv, at_most_of_mpv, rise, row, slope

WINDOW_SECONDS = 10
WARM_UP_SECONDS = 4
SMALL_CLIPS = 6
SAMPLES = 200


@row("cpu",
     Figure("cpu", "processor time of program and compositor, 1080p30 H.264, in 10 s", "ticks",
            "at most 0.75 of mpv's", at_most_of_mpv(0.75)),
     Figure("cpu-compositor", "the compositor's part of it", "ticks", "at most mpv's", at_most_mpv),
     Figure("cpu-decoding", "decoding those pictures alone", "ticks", "– (nobody can save it)", None),
     beside_mpv=True)
def cpu(stage, who, results):
    with stage.run(who, stage.one_film(), loop_file=True) as (run, _):
        run.watch(WARM_UP_SECONDS)
        before = run.ticks()
        run.watch(WINDOW_SECONDS)
        program, compositor = (after - begin for begin, after in zip(before, run.ticks()))
    results.note("cpu", who, program + compositor)
    results.note("cpu-compositor", who, compositor)
    if who == PLAYER:
        results.note("cpu-decoding", who, decoding_ticks(stage.film(WINDOW_SECONDS)))


@row("photo-stands",
     Figure("photo-ticks", "a photo standing for 10 s: ticks of the program", "ticks", "0",
            at_most(0)),
     Figure("photo-switches", "the same: context switches of all its threads", "", "0", at_most(0)))
def photo_stands(stage, who, results):
    folder = stage.folder(
        "one-photo", lambda made: picture(made / "photo.jpg", "orange", size=(1920, 1080)))
    # On a turning panel a photo stands for three minutes.
    with stage.run(who, folder, log_level="debug", panel={"rotator": "yes"}) as (run, screen):
        screen.wait_for("orange")
        run.wait("popup and toast are ready")
        run.watch(WARM_UP_SECONDS)
        before = run.ticks()[0], run.context_switches()
        run.watch(WINDOW_SECONDS)
        after = run.ticks()[0], run.context_switches()
    results.note("photo-ticks", who, after[0] - before[0])
    results.note("photo-switches", who, after[1] - before[1])


# What a photo is called by photo-times, and how much more its colour profile may cost.
PROFILES = (
    ("p3-12mp", "Display P3, 12 megapixels", 1.3),
    ("adobe-12mp", "Adobe RGB, 12 megapixels", 1.3),
    ("srgb-12mp", "sRGB, 12 megapixels", 1.3),
    ("p3-1080p", "Display P3, as large as the panel", 1.3),
    ("table-12mp", "a table of RGB, 12 megapixels", None),
    ("cmyk-12mp", "CMYK, 12 megapixels", None),
)


def profile_figures():
    for name, what, bound in PROFILES:
        yield Figure(f"{name}-ms", f"a photo on a 1080p panel, {what}", "ms", "–", None)
        yield Figure(f"{name}-profile", "its time by that without its colour profile", "",
                     f"at most {bound}" if bound else "–", at_most(bound) if bound else None)


@row("photo-profile", *profile_figures())
def photo_profile(stage, who, results):
    times = subprocess.run([stage.build / "tests/contract/still_picture/photo-times"], check=True,
                           capture_output=True, text=True).stdout
    for line in times.splitlines():
        name, *numbers = line.split()
        without, with_profile = map(float, numbers)
        results.note(f"{name}-ms", who, with_profile)
        results.note(f"{name}-profile", who, with_profile / without)


@row("memory",
     Figure("slope", "private memory that a change of small clips leaves behind", "kB",
            "under 1", lambda player, mpv: player < 1),
     Figure("private", "private memory at the end of that", "MB", "–", None),
     Figure("threads", "threads more at its end than when it had settled", "", "at most 2",
            at_most(2)),
     Figure("descriptors", "descriptors more, likewise", "", "at most 2", at_most(2)),
     only_once=True)
def memory(stage, who, results):
    def fill(folder):
        for number in range(SMALL_CLIPS):
            shutil.copy(stage.small_clip(), folder / f"clip-{number}.mp4")

    with stage.run(who, stage.folder("small-clips", fill)) as (run, _):
        # Compared are moments right after a change, as late after it as the other.
        step = max(1, results.changes // SAMPLES)
        samples = []
        for change in range(step, results.changes + 1, step):
            run.wait_item(change)
            samples.append((change, run.memory("RssAnon"), run.threads(), run.descriptors()))
    private = [sample[:2] for sample in samples]
    settled = [sample for sample in samples if sample[0] > SETTLED_AFTER * results.changes]
    results.draw("private memory over small clips, MB by change", who, private)
    results.note("slope", who, slope([sample[:2] for sample in settled]) * 1000)
    results.note("private", who, private[-1][1])
    for figure, column in (("threads", 2), ("descriptors", 3)):
        results.note(figure, who, rise([sample[column] for sample in settled]))
