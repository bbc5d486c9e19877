"""What an endurance run plays: short files of every kind, good and bad, with subtitles of every kind."""

import os
import subprocess

from harness.content import half_picture, picture
from PIL import Image

VIDEO_ENDINGS = (".mp4", ".mkv", ".ts", ".tp", ".avi", ".asf", ".wmv", ".ogg", ".flv", ".mpeg")
PHOTO_ENDINGS = (".jpg", ".jpeg")
SECONDS = 0.12
H264 = ("-c:v", "libx264", "-preset", "ultrafast", "-bf", "2", "-pix_fmt", "yuv420p")
AAC, MP2, MP3 = ("-c:a", "aac"), ("-c:a", "mp2"), ("-c:a", "libmp3lame")

# A film of each ending, of many sizes and codecs: frames of ten bits and of fields among them.
FILMS = (
    ("mp4-film.mp4", "640x360", (*H264, *AAC)),
    ("mkv-film.mkv", "320x180", ("-c:v", "libx265", "-preset", "ultrafast", "-pix_fmt",
                                 "yuv420p10le", "-x265-params", "log-level=error",
                                 "-c:a", "libvorbis")),
    ("ts-film.ts", "720x576", ("-c:v", "mpeg2video", "-flags", "+ildct+ilme", "-top", "1", *MP2)),
    ("tp-film.tp", "320x240", (*H264, *AAC, "-f", "mpegts")),
    ("avi-film.avi", "352x288", ("-c:v", "mpeg4", *MP3)),
    ("asf-film.asf", "320x180", ("-c:v", "msmpeg4", "-c:a", "wmav2")),
    ("wmv-film.wmv", "320x180", ("-c:v", "wmv2", "-c:a", "wmav2")),
    ("ogg-film.ogg", "176x144", ("-c:v", "libtheora", "-c:a", "libvorbis")),
    ("flv-film.flv", "320x180", ("-c:v", "flv1", "-ar", "44100", *MP3)),
    ("mpeg-film.mpeg", "352x288", ("-c:v", "mpeg1video", *MP2, "-f", "mpeg")),
    ("portrait_mp4.mp4", "180x320", (*H264, *AAC)),
    ("portrait_mkv.mkv", "360x640", ("-c:v", "libvpx", "-deadline", "realtime", "-cpu-used", "16",
                                     "-c:a", "libvorbis")),
)

SUBTITLES = {
    "mp4-film.srt": "1\n00:00:00,000 --> 00:00:05,000\n<i>Welcome</i>\n\n",
    "mkv-film.ass": "[Script Info]\nScriptType: v4.00+\n[V4+ Styles]\n"
                    "Format: Name, Fontname, Fontsize\nStyle: Default,Sans,20\n[Events]\n"
                    "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
                    "Dialogue: 0,0:00:00.00,0:00:05.00,Default,,0,0,0,,{\\b1}Welcome\n",
    "avi-film.smi": "<SAMI><BODY><SYNC Start=0><P Class=ENCC>Welcome</BODY></SAMI>\n",
    "ts-film.sub": "{0}{100}Welcome\n",
    "wmv-film.mpl": "[0][50]Welcome\n",
    "portrait_mp4.srt": "1\n00:00:00,000 --> 00:00:05,000\nWelcome\n\n",
    # Not subtitles at all.
    "flv-film.srt": "\x00\x01\x02" * 3000,
    "ogg-film.ttxt": "<TextStream",
}


def _make_film(path, size, options):
    subprocess.run(
        ["ffmpeg", "-nostdin", "-loglevel", "error", "-y",
         "-f", "lavfi", "-i", f"testsrc2=size={size}:rate=25",
         "-f", "lavfi", "-i", "sine=sample_rate=48000", "-t", str(SECONDS), *options, str(path)],
        check=True)


def _make_photos(folder):
    picture(folder / "photo.jpg", "orange", size=(1280, 720))
    picture(folder / "photo-of-a-turned-camera.jpeg", "violet", size=(360, 640), orientation=6)
    Image.new("CMYK", (640, 360), (200, 30, 30, 0)).save(folder / "photo-in-four-inks.jpg")
    picture(folder / "portrait_photo.jpg", "brown", size=(360, 640))


def _make_bad_files(folder):
    whole = (folder / "mp4-film.mp4").read_bytes()
    (folder / "bad-cut.mp4").write_bytes(whole[:500])
    (folder / "bad-empty.mkv").write_bytes(b"")
    (folder / "bad-text.avi").write_text("this is no film\n")
    (folder / "portrait_bad.mp4").write_bytes(b"\x55" * 100000)
    (folder / "bad-text.jpg").write_text("this is no picture\n")
    half_picture(folder / "bad-half.jpg", "red")
    # Begins well, and is rubbish from its middle on.
    film = bytearray((folder / "tp-film.tp").read_bytes())
    film[len(film) // 2:] = b"\xa5" * (len(film) - len(film) // 2)
    (folder / "bad-from-its-middle-on.ts").write_bytes(film)


def fill(folder):
    """Puts all of it into an empty folder."""
    for name, size, options in FILMS:
        _make_film(folder / name, size, options)
    for name, text in SUBTITLES.items():
        (folder / name).write_text(text, encoding="utf-8")
    _make_photos(folder)
    _make_bad_files(folder)


def listed(folder, portrait=False):
    """The files that a landscape (or portrait) panel plays, in the player's order: videos first, each
    kind as the directory yields it."""
    with os.scandir(folder) as entries:
        names = [entry.name for entry in entries if entry.name.startswith("portrait_") == portrait]
    return [name for endings in (VIDEO_ENDINGS, PHOTO_ENDINGS)
            for name in names if name.endswith(endings)]


def touch(folder):
    """Lets all files look as if somebody had copied them anew, so that bad ones are tried again and
    what was opened ahead is thrown away."""
    for path in folder.iterdir():
        os.utime(path)
