"""Rows about what the viewer sees: the time between two presented pictures."""

import shutil

from harness.content import picture
from stage import FILM_SECONDS
from table import Figure, at_most, at_most_mpv, percentile, row
from wayland_trace import since

CLIP_SECONDS = 3
CLIPS = 3
# Two laps and a change of the third; the player learns the order of the files on the first.
CHANGES = 2 * CLIPS + 1
PHOTO_SECONDS = 5.0
AROUND = 20
# The change is seen where the longest interval is: a player may tell of the next item, or show its first
# picture, some pictures before or after it stops.
NEAR = 5


def three_clips(stage):
    def fill(folder):
        for number in range(CLIPS):
            shutil.copy(stage.film(CLIP_SECONDS), folder / f"clip-{number}.mp4")
    return stage.folder("three-clips", fill)


def longest_at_changes(trace):
    intervals = trace.intervals()
    return [max(intervals[max(0, change - NEAR):change + NEAR + 1]) for change in trace.changes()]


@row("gap",
     Figure("gap-first", "longest interval at a video → video change, first lap", "ms",
            "at most mpv's", at_most_mpv),
     Figure("gap", "the same from the second lap on", "ms", "at most 50", at_most(50)),
     Figure("start", "start to first picture, warm cache, with the trace on", "ms",
            "at most mpv's", at_most_mpv),
     Figure("peak", "peak memory over the three clips", "MB", "at most 260", at_most(260)),
     beside_mpv=True)
def gap(stage, who, results):
    with stage.run(who, three_clips(stage), traced=True) as (run, _):
        # The line of the next item comes when it is asked for; a second later it is seen.
        memory = []
        for count in range(1, CHANGES + 2):
            run.wait_item(count)
            run.watch(1)
            memory.append((count, run.memory("VmRSS")))
        peak = run.memory("VmHWM")
        trace = run.end()
    results.note("peak", who, peak)
    results.draw("resident memory over three clips, MB by item", who, memory)
    results.note("start", who, run.first_picture(trace))
    intervals, changes = trace.intervals(), trace.changes()
    gaps = longest_at_changes(trace)
    results.note("gap-first", who, *gaps[:CLIPS])
    results.note("gap", who, *gaps[CLIPS:])
    for change in changes:
        first = max(0, change - AROUND)
        results.draw("intervals around changes, ms by picture", who,
                     [(index - change, intervals[index])
                      for index in range(first, min(change + AROUND + 1, len(intervals)))])


@row("passed-over",
     Figure("passed-over", "longest interval where a video that cannot be opened is passed over", "ms",
            "at most 500", at_most(500)))
def passed_over(stage, who, results):
    def fill(folder):
        shutil.copy(stage.film(CLIP_SECONDS), folder / "clip.mp4")
        (folder / "broken.mp4").write_bytes(b"no film")

    with stage.run(who, stage.folder("broken", fill), traced=True,
                   content={"broken_video": "skip"}) as (run, _):
        run.wait_item(2 * CHANGES)
        run.watch(1)
        trace = run.end()
    results.note("passed-over", who, *longest_at_changes(trace))


@row("photo",
     Figure("photo-after", "last picture of a video to the photo after it", "ms", "at most 50",
            at_most(50)),
     Figure("photo-before", "a photo's time above its five seconds, until the video's first picture",
            "ms", "at most 50", at_most(50)),
     Figure("photo-black", "times the screen was black in between", "", "never",
            lambda player, mpv: player == 0))
def photo(stage, who, results):
    def fill(folder):
        shutil.copy(stage.film(CLIP_SECONDS), folder / "clip.mp4")
        picture(folder / "photo.jpg", "orange", size=(1920, 1080))

    with stage.run(who, stage.folder("photo", fill), traced=True) as (run, screen):
        run.wait_item(1)
        run.watch(1)
        with screen.record() as recorder:
            run.wait_item(5)
            run.watch(1)
        trace = run.end()
    results.note("photo-black", who, sum(seen == "black" for _, seen in recorder.changes[1:]))
    for change in trace.changes():
        passed = trace.intervals()[change]
        if passed < PHOTO_SECONDS * 1000 / 2:
            results.note("photo-after", who, passed)
        else:
            results.note("photo-before", who, passed - PHOTO_SECONDS * 1000)


@row("loop",
     Figure("seam", "one file looping: longest interval in a lap with its seam", "ms", "at most 37",
            at_most(37)),
     Figure("interval-low", "98 of 100 intervals are above", "ms", "at least 33.2",
            lambda player, mpv: player >= 33.2),
     Figure("interval-high", "98 of 100 intervals are below", "ms", "at most 33.5", at_most(33.5)),
     beside_mpv=True)
def loop(stage, who, results):
    with stage.run(who, stage.one_film(), loop_file=True, traced=True) as (run, _):
        run.wait_picture()
        run.watch(2.5 * FILM_SECONDS)
        trace = run.end()
    pictures, intervals = trace.pictures(), trace.intervals()
    # Counted by time: a picture that is left out must not move the seam.
    seams = [[length for stamp, length in zip(pictures, intervals)
              if abs(since(pictures[0], stamp) / 1000 - lap * FILM_SECONDS) < 1]
             for lap in (1, 2)]
    results.note("seam", who, *(max(seam) for seam in seams if seam))
    results.note("interval-low", who, percentile(intervals, 0.01))
    results.note("interval-high", who, percentile(intervals, 0.99))
