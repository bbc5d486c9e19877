"""Whole files of every kind that the player takes: small, and the same each time they are made."""

import io
import os
import random
import subprocess

from PIL import Image, ImageCms

# Enough frames for one that leans on others, and over in a fifth of a second.
FRAMES, RATE, SIZE = 5, 25, "128x96"

X264 = "-c:v libx264 -preset ultrafast -bf 1 -g 4"
X265 = "-c:v libx265 -preset ultrafast -x265-params log-level=none:pools=none:frame-threads=1"
AAC, AC3, MP2, MP3 = "-c:a aac", "-c:a ac3", "-c:a mp2", "-c:a libmp3lame"
VORBIS, OPUS, PCM = "-c:a libvorbis", "-c:a libopus", "-c:a pcm_s16le"
HDR10 = "-color_primaries bt2020 -color_trc smpte2084 -colorspace bt2020nc"
INTERLACED = "-flags +ildct+ilme -top 1"

# Each name begins with the ending of the file's name. What follows: ffmpeg's container, its words for
# the pictures, its words for the sound.
VIDEOS = {
    "mp4-h264": ("mp4", X264, AAC),
    "mp4-h264-fragments": ("mp4", f"{X264} -movflags +frag_keyframe+empty_moov", AAC),
    "mp4-h264-index-first": ("mp4", f"{X264} -movflags +faststart", MP3),
    "mp4-hevc-hdr10": ("mp4", f"{X265} -pix_fmt yuv420p10le {HDR10}", AC3),
    "mp4-mpeg4": ("mp4", "-c:v mpeg4", AAC),
    "mp4-vp9": ("mp4", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8", OPUS),
    "mp4-av1": ("mp4", "-c:v libaom-av1 -cpu-used 8 -usage realtime", AAC),
    "mkv-h264": ("matroska", X264, VORBIS),
    "mkv-hevc": ("matroska", X265, AC3),
    "mkv-vp8": ("matroska", "-c:v libvpx -deadline realtime", VORBIS),
    "mkv-vp9": ("matroska", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8", OPUS),
    "mkv-mpeg2": ("matroska", f"-c:v mpeg2video {INTERLACED}", "-c:a flac"),
    "mkv-theora": ("matroska", "-c:v libtheora", PCM),
    "ts-h264": ("mpegts", X264, AAC),
    "ts-hevc": ("mpegts", X265, AC3),
    "ts-mpeg2": ("mpegts", f"-c:v mpeg2video {INTERLACED}", MP2),
    "tp-h264": ("mpegts", X264, AC3),
    "tp-mpeg2": ("mpegts", "-c:v mpeg2video", MP2),
    "avi-mpeg4": ("avi", "-c:v mpeg4 -vtag xvid", MP3),
    "avi-msmpeg4": ("avi", "-c:v msmpeg4", MP3),
    "avi-h264": ("avi", X264, MP3),
    "avi-mjpeg": ("avi", "-c:v mjpeg -pix_fmt yuvj420p", PCM),
    "asf-wmv2": ("asf", "-c:v wmv2", "-c:a wmav2"),
    "asf-msmpeg4": ("asf", "-c:v msmpeg4", MP3),
    "wmv-wmv1": ("asf", "-c:v wmv1", "-c:a wmav1"),
    "wmv-wmv2": ("asf", "-c:v wmv2", "-c:a wmav2"),
    "ogg-theora": ("ogg", "-c:v libtheora", VORBIS),
    "ogg-theora-opus": ("ogg", "-c:v libtheora", OPUS),
    "flv-flv1": ("flv", "-c:v flv1", "-c:a libmp3lame -ar 44100"),
    "flv-h264": ("flv", X264, AAC),
    "mpeg-mpeg1": ("mpeg", "-c:v mpeg1video", MP2),
    "mpeg-mpeg2": ("vob", f"-c:v mpeg2video {INTERLACED}", AC3),
    # What cameras, cutting rooms and the programs of former days write.
    "avi-dv": ("avi", "-c:v dvvideo -s 720x576 -frames:v 2", "-c:a adpcm_ima_wav"),
    "mkv-ffv1": ("matroska", "-c:v ffv1 -level 3", "-c:a truehd"),
    "avi-huffyuv": ("avi", "-c:v huffyuv -pix_fmt yuv422p", "-c:a adpcm_ms"),
    "avi-cinepak": ("avi", "-c:v cinepak -pix_fmt rgb24", "-c:a pcm_mulaw"),
    "avi-msvideo1": ("avi", "-c:v msvideo1 -pix_fmt rgb555le", "-c:a libgsm_ms -ar 8000 -ac 1"),
    "mp4-h263": ("mov", "-c:v h263", "-c:a alac"),
    "mp4-prores": ("mov", "-c:v prores_ks -profile:v proxy -pix_fmt yuv422p10le", "-c:a pcm_s24be"),
    "mp4-dnxhd": ("mov", "-c:v dnxhd -b:v 60M -s 1280x720 -r 24000/1001 -pix_fmt yuv422p -frames:v 1",
                  "-c:a pcm_alaw"),
    "mp4-svq1": ("mov", "-c:v svq1 -pix_fmt yuv410p", "-c:a adpcm_ima_qt"),
    "mp4-rle": ("mov", "-c:v qtrle -pix_fmt rgb24", "-c:a eac3"),
    "flv-flashsv": ("flv", "-c:v flashsv -pix_fmt bgr24", "-c:a nellymoser -ar 44100 -ac 1"),
    "ogg-speex": ("ogg", "-c:v libtheora", "-c:a libspeex -ar 16000 -ac 1"),
    "flv-adpcm": ("flv", "-c:v flv1", "-c:a adpcm_swf -ar 44100"),
    "mkv-dts": ("matroska", "-c:v h263p", "-c:a dca"),
    "ts-eac3": ("mpegts", "-c:v mpeg4", "-c:a eac3"),
    "mpeg-lpcm": ("vob", "-c:v mpeg2video", "-c:a pcm_dvd"),
}

SRT = ("1\n00:00:00,000 --> 00:00:01,000\n<i>Hello</i> there\n\n"
       "2\n00:00:01,000 --> 00:00:02,000\n{\\an8}two\nlines\n")
MICRODVD = "{0}{25}{y:i}Hello|there\n{25}{50}more\n"
SAMI = ("<SAMI><HEAD><STYLE TYPE=\"text/css\"><!-- .ENCC {Lang:en-US;} --></STYLE></HEAD><BODY>\n"
        "<SYNC Start=0><P Class=ENCC>Hello<br><font color=\"red\">there</font>\n"
        "<SYNC Start=1000><P Class=ENCC>&nbsp;\n</BODY></SAMI>\n")
EVENTS = ("[Events]\nFormat: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
          "Dialogue: 0,0:00:00.00,0:00:01.00,Default,,0,0,0,,{\\pos(100,100)\\fs30}Hello\\Nthere\n"
          "Dialogue: 0,0:00:00.00,0:00:01.00,Default,,0,0,0,,{\\p1}m 0 0 l 50 0 50 50{\\p0} {\\k20}x\n")
ASS = ("[Script Info]\nScriptType: v4.00+\nPlayResX: 640\nPlayResY: 360\n\n[V4+ Styles]\n"
       "Format: Name, Fontname, Fontsize\nStyle: Default,sans-serif,20\n\n" + EVENTS)
SSA = ASS.replace("v4.00+", "v4.00").replace("V4+", "V4").replace("Layer", "Marked").replace(
    "Dialogue: 0", "Dialogue: Marked=0")
SUBTITLES = {
    "srt": SRT, "srt-utf16": SRT.encode("utf-16"), "ass": ASS, "ssa": SSA, "smi": SAMI,
    "smi-korean": SAMI.replace("Hello", "안녕하세요 여러분").encode("cp949"), "sami": SAMI,
    "sub": MICRODVD, "txt": MICRODVD,
    "ttxt": ('<?xml version="1.0"?>\n<TextStream version="1.1">\n'
             '<TextSample sampleTime="00:00:00.000" xml:space="preserve">Hello &amp; x</TextSample>\n'
             '<TextSample sampleTime="00:00:01.000" text="\'a\'\'b\'"/>\n</TextStream>\n'),
    "mpl": "[0][10]/Hello|there\n[10][20]more\n",
    "psb": "{0:00:00}{0:00:01}Hello|there\n{0:00:01}{0:00:02}more\n",
}


def ending_of(name):
    return name.partition("-")[0]


def is_subtitle(name):
    return name in SUBTITLES


def make_videos(folder):
    """All of them with one start of ffmpeg, which takes longer than the coding."""
    command = ["ffmpeg", "-y", "-nostdin", "-loglevel", "error", "-threads", "1",
               "-f", "lavfi", "-i", f"testsrc2=size={SIZE}:rate={RATE}:duration={FRAMES / RATE}",
               "-f", "lavfi", "-i", f"sine=frequency=440:sample_rate=48000:duration={FRAMES / RATE}"]
    for name, (container, pictures, sound) in VIDEOS.items():
        words = f"-map 0:v -map 1:a -pix_fmt yuv420p -ac 2 {pictures} {sound} -strict -2 " \
                f"-threads 1 -fflags +bitexact -flags:v +bitexact -flags:a +bitexact -f {container}"
        command += [*words.split(), os.path.join(folder, name)]
    made = subprocess.run(command, capture_output=True, text=True, timeout=300, check=False)
    assert made.returncode == 0, made.stderr
    files = {}
    for name in VIDEOS:
        with open(os.path.join(folder, name), "rb") as file:
            files[name] = file.read()
    return files


def jpeg(image, **options):
    written = io.BytesIO()
    image.save(written, format="JPEG", quality=80, **options)
    return written.getvalue()


def make_photos():
    picture = Image.frombytes("RGB", (120, 80), random.Random(1).randbytes(120 * 80 * 3))
    picture = picture.resize((240, 160))
    exif = Image.Exif()
    exif[0x0112] = 6
    profile = bytearray(ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes())
    profile[24:36] = bytes(12)  # the time at which it was made
    return {
        "jpg-exif": jpeg(picture, exif=exif),
        "jpg-profile": jpeg(picture, icc_profile=bytes(profile)),
        "jpeg-progressive": jpeg(picture, progressive=True, exif=exif, icc_profile=bytes(profile)),
        "jpeg-grey": jpeg(picture.convert("L")),
        "jpg-inks": jpeg(picture.convert("CMYK")),
    }


def make_all(folder):
    """Every file, by its name. What the encoders write on their way stays in the folder."""
    subtitles = {name: text if isinstance(text, bytes) else text.encode()
                 for name, text in SUBTITLES.items()}
    return {**make_videos(folder), **make_photos(), **subtitles}
