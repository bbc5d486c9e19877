"""Content for the tests: flat colours, so that a few pixels tell which file is on the screen."""

import fcntl
import os
import shutil
import subprocess

from PIL import Image

from .screen import COLOURS


def colour_of(name):
    return COLOURS[name]


def picture(path, colour, size=(640, 360), orientation=None, kind="JPEG"):
    """Writes a picture of one colour; `orientation` is the EXIF value."""
    image = Image.new("RGB", size, colour_of(colour))
    options = {}
    if orientation is not None:
        exif = Image.Exif()
        exif[0x0112] = orientation
        options["exif"] = exif
    image.save(path, format=kind, **({"quality": 92, **options} if kind == "JPEG" else options))
    return path


def half_picture(path, colour):
    """A JPEG whose second half is missing, as a copy looks that was interrupted."""
    image = Image.effect_noise((1280, 720), 60).convert("RGB")
    image.paste(colour_of(colour), (0, 0, 1280, 200))
    image.save(path, format="JPEG", quality=92)
    os.truncate(path, os.path.getsize(path) // 2)
    return path


class VideoShelf:
    """Makes each short video once and shares it among the tests and their workers."""

    def __init__(self, folder):
        self._folder = folder
        os.makedirs(folder, exist_ok=True)

    def video(self, path, *colours, seconds=2, size=(320, 180), pattern="solid-color"):
        """Puts a video with a tone at `path`, showing each colour for as many seconds. The container
        follows from the extension of the name."""
        kind = os.path.splitext(os.fsdecode(path))[1].lower()
        master = os.path.join(
            self._folder, f"{'+'.join(colours)}-{seconds}-{size[0]}x{size[1]}-{pattern}{kind}")
        with open(f"{master}.lock", "w", encoding="ascii") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            if not os.path.exists(master):
                self._make(f"{master}.part", kind, colours, seconds, size, pattern)
                os.rename(f"{master}.part", master)
        shutil.copyfile(master, path)
        return path

    @staticmethod
    def _make(path, kind, colours, seconds, size, pattern):
        muxer, video_encoder, sound_encoder = {
            ".mkv": ("matroskamux", "vp8enc deadline=1 cpu-used=16 keyframe-max-dist=30",
                     "vorbisenc"),
            ".ts": ("mpegtsmux", "x264enc speed-preset=ultrafast tune=zerolatency key-int-max=30",
                    "avenc_aac"),
        }.get(kind, ("mp4mux", "x264enc speed-preset=ultrafast tune=zerolatency key-int-max=30",
                     "avenc_aac"))
        description = ["concat", "name=pictures", "!", *video_encoder.split(), "!", "queue", "!",
                       "mux."]
        for colour in colours:
            red, green, blue = colour_of(colour)
            description += [
                "videotestsrc", f"pattern={pattern}", f"num-buffers={int(seconds * 30)}",
                f"foreground-color={0xFF000000 | red << 16 | green << 8 | blue}", "!",
                f"video/x-raw,width={size[0]},height={size[1]},framerate=30/1", "!",
                "videoconvert", "!", "video/x-raw,format=I420", "!", "pictures."]
        description += [
            "audiotestsrc", f"num-buffers={int(len(colours) * seconds * 50)}",
            "samplesperbuffer=960", "volume=0.05", "!", "audio/x-raw,rate=48000,channels=2", "!",
            "audioconvert", "!", sound_encoder, "!", "queue", "!", "mux.",
            muxer, "name=mux", "!", "filesink", f"location={path}"]
        made = subprocess.run(["gst-launch-1.0", "-q", *description], capture_output=True,
                              text=True, timeout=120, check=False)
        assert made.returncode == 0 and os.path.getsize(path) > 0, made.stderr


def order_in(folder, kinds):
    """Names in the folder with one of the extensions, in the order in which the directory yields
    them, which is the order the player keeps."""
    with os.scandir(folder) as entries:
        return [entry.name for entry in entries if entry.name.lower().endswith(tuple(kinds))]


def two_halves(path, upper, lower, size):
    """A picture with one colour above and another below."""
    image = Image.new("RGB", size, colour_of(lower))
    image.paste(colour_of(upper), (0, 0, size[0], size[1] // 2))
    image.save(path, format="JPEG", quality=92)
    return path


def listed(folder, portrait=False):
    """Names of the folder's landscape (or portrait) files as the player lists them: videos, then
    photos, each in the order of the directory."""
    kinds = ((".mp4", ".mkv", ".ts"), (".jpg", ".jpeg"))
    return [name for kind in kinds for name in order_in(folder, kind)
            if name.lower().startswith("portrait_") == portrait]


def appears_in(sequence, names):
    """Whether `sequence` stands in `names` without anything between."""
    length = len(sequence)
    return any(names[start:start + length] == sequence
               for start in range(len(names) - length + 1))


def with_default_folder(content):
    """A command prefix that shows `content` as the built-in demo folder, to this program only."""
    script = ('mount -t tmpfs none /opt && mkdir -p /opt/data/demo_movie && '
              'mount --bind "$0" /opt/data/demo_movie && exec "$@"')
    if os.getuid() == 0:
        return ("unshare", "--mount", "sh", "-c", script, str(content))
    # The mounts need the powers of root in a namespace of their own; the program gets back its own
    # user, or the session bus would not know it.
    return ("unshare", "--map-root-user", "--mount", "sh", "-c", script, str(content), "unshare",
            "--user", f"--map-user={os.getuid()}", f"--map-group={os.getgid()}")
