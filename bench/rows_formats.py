"""Rows about films of other kinds than the usual: ten bits, four times the size, high dynamic range,
interlaced ones."""

import subprocess
import time

from stage import FRAMES_PER_SECOND, FULL_HD, UHD
from table import Figure, at_least_mpv, at_most, at_most_mpv, row

WARM_UP_SECONDS = 2
WINDOW_SECONDS = 6
FILM_SECONDS = 4

SD = (720, 576)
FIELDS_PER_SECOND = 50

# What a frame's conversion is called by conversion-times, and whether what it is compared with does
# the same: no converter but this one maps light.
CONVERSIONS = (
    ("i420-1080p", "I420 at 1080p", True),
    ("nv12-1080p", "NV12 at 1080p", True),
    ("i420_10-1080p", "I420 of 10 bits at 1080p", True),
    ("i420_10-1080p-base", "I420 of 10 bits at 1080p without AVX2", True),
    ("p010-1080p", "P010 at 1080p", True),
    ("i420-2160p-to-1080p", "I420, 2160p to 1080p", True),
    ("nv12-2160p-to-1080p", "NV12, 2160p to 1080p", True),
    ("i420_10-2160p-to-1080p", "I420 of 10 bits, 2160p to 1080p", True),
    ("p010-2160p-to-1080p", "P010, 2160p to 1080p", True),
    ("i420-1080p-to-2160p", "I420, 1080p to 2160p", True),
    ("pq-1080p", "HDR10 at 1080p", False),
    ("pq-1080p-base", "HDR10 at 1080p without AVX2", False),
    ("hlg-1080p", "HLG at 1080p", False),
    ("hlg-1080p-base", "HLG at 1080p without AVX2", False),
    ("pq-2160p-to-1080p", "HDR10, 2160p to 1080p", False),
    ("hlg-2160p-to-1080p", "HLG, 2160p to 1080p", False),
    ("pq-1080p-to-2160p", "HDR10, 1080p to 2160p", False),
)
# What mapping light takes beside a conversion of the same frame that maps none.
MAPPED, UNMAPPED = {"pq-1080p": 10, "hlg-1080p": 20}, "i420_10-1080p"
# Shares of a core at 30 pictures a second, in milliseconds.
HDR_FULL_HD_MS, HDR_UHD_MS = 0.20 * 1000 / FRAMES_PER_SECOND, 0.30 * 1000 / FRAMES_PER_SECOND
BOUNDS = {"pq-1080p": HDR_FULL_HD_MS, "pq-2160p-to-1080p": HDR_UHD_MS}


def conversion_figures():
    for name, what, same in CONVERSIONS:
        bound = BOUNDS.get(name)
        yield Figure(f"{name}-ms", f"conversion of a frame, {what}", "ms",
                     f"at most {bound:.1f}" if bound else "–", at_most(bound) if bound else None)
        if same:
            yield Figure(f"{name}-gst", "its time by that of GStreamer's converter", "", "at most 1",
                         at_most(1))
            yield Figure(f"{name}-sws", "its time by that of libswscale", "", "–", None)
        if name in MAPPED:
            yield Figure(f"{name}-ratio", "its time by that of a frame whose light is not mapped",
                         "", f"at most {MAPPED[name]}", at_most(MAPPED[name]))


@row("conversion", *conversion_figures())
def conversion(stage, who, results):
    times = subprocess.run([stage.build / "tests/contract/colour/conversion-times"], check=True,
                           capture_output=True, text=True).stdout
    milliseconds = {name: tuple(map(float, numbers))
                    for name, *numbers in map(str.split, times.splitlines())}
    for name, (own, gstreamer, swscale) in milliseconds.items():
        results.note(f"{name}-ms", who, own)
        results.note(f"{name}-gst", who, own / gstreamer)
        results.note(f"{name}-sws", who, own / swscale)
    for name in MAPPED:
        results.note(f"{name}-ratio", who, milliseconds[name][0] / milliseconds[UNMAPPED][0])


FILMS = (
    ("ten-bit", "HEVC of 10 bits at 1080p30", FULL_HD, "hevc10"),
    ("uhd", "H.264 at 2160p30", UHD, "h264"),
    ("uhd-ten-bit", "HEVC of 10 bits at 2160p30", UHD, "hevc10"),
    ("uhd-hdr", "HDR10 at 2160p30", UHD, "hdr10"),
    ("laced-sd", "MPEG-2 at 576i50", SD, "mpeg2-laced"),
    ("laced-hd", "H.264 at 1080i50", FULL_HD, "h264-laced"),
)


@row("formats",
     *(figure for name, what, _, _ in FILMS for figure in (
         Figure(name, f"processor time for each picture on a 1080p panel, {what}", "ms",
                "at most mpv's", at_most_mpv),
         Figure(f"{name}-rate", "pictures a second of it", "", "at least mpv's", at_least_mpv))),
     beside_mpv=True)
def formats(stage, who, results):
    for name, _, size, kind in FILMS:
        laced = kind in LACED
        folder = stage.folder(f"film-{name}",
                              lambda made: make_film(made / "film.mkv", size, kind))
        # Pictures that are left out cost nothing, hence the time of one that is presented.
        with stage.run(who, folder, loop_file=True, traced=True,
                       mpv_options=["--deinterlace=yes"] if laced else []) as (run, _):
            run.wait_picture()
            run.watch(WARM_UP_SECONDS)
            began, ticks_before = time.time(), sum(run.ticks())
            run.watch(WINDOW_SECONDS)
            ended, ticks = time.time(), sum(run.ticks())
            pictures = run.trace().pictures_between(began, ended)
        results.note(name, who, (ticks - ticks_before) * 10 / max(1, pictures))
        results.note(f"{name}-rate", who, pictures / (ended - began))


# What a broadcaster's coder is told beside the usual.
LACED = {
    "mpeg2-laced": ["-c:v", "mpeg2video", "-flags", "+ilme+ildct", "-bf", "2", "-g", "12"],
    "h264-laced": ["-c:v", "libx264", "-preset", "ultrafast", "-flags", "+ilme+ildct",
                   "-x264-params", "tff=1"],
}


def make_film(path, size, kind):
    """A film of a moving test picture, without sound."""
    coder = {
        "h264": ["-pix_fmt", "yuv420p", "-c:v", "libx264", "-preset", "ultrafast"],
        "hevc10": ["-pix_fmt", "yuv420p10le", "-c:v", "libx265", "-preset", "ultrafast",
                   "-x265-params", "log-level=error"],
        "hdr10": ["-pix_fmt", "yuv420p10le", "-c:v", "libx265", "-preset", "ultrafast",
                  "-color_primaries", "bt2020", "-color_trc", "smpte2084", "-colorspace", "bt2020nc",
                  "-x265-params", "log-level=error:max-cll=1000,400"],
        **{kind: ["-vf", "interlace=scan=tff:lowpass=off", "-pix_fmt", "yuv420p", *options]
           for kind, options in LACED.items()},
    }[kind]
    pictures = FIELDS_PER_SECOND if kind in LACED else FRAMES_PER_SECOND
    rate = "12M" if size == UHD else "6M"
    subprocess.run(
        ["ffmpeg", "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
         f"testsrc2=size={size[0]}x{size[1]}:rate={pictures}", "-t", str(FILM_SECONDS),
         *coder, "-b:v", rate, str(path)], check=True)
