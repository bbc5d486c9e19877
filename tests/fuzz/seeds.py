#!/usr/bin/python3
"""The inputs that each fuzz target begins with, and those that once broke something, by target and by
a name that says what is odd about them. Called with a folder, it writes them there, as FOLDER/TARGET/NAME.
"""

import pathlib
import shutil
import struct
import sys

TV_CONF = pathlib.Path(__file__).resolve().parents[2] / "platform/linux/settings/tv.conf"


def called(method, *arguments):
    """A call over the bus: the method's number, then the arguments, each behind the letter of its kind."""
    return bytes([method]) + b"".join(arguments)


def sized(kind, content):
    return kind + bytes([len(content)]) + content


def text(content):
    return sized(b"s", content)


def array(content):
    return sized(b"y", content)


def extras(*pairs):
    return b"e" + bytes([len(pairs)]) + b"".join(sized(b"", part) for pair in pairs for part in pair)


LAUNCH, KEY, PANEL, POWER, LANGUAGE, USB_ADD, USB_REMOVE, STATUS, OTHER = range(9)

BUS_MESSAGES = {
    "key": called(KEY, text(b"XF86AudioPlay")),
    "key_misspelt": called(KEY, text(b"AudioPlai")),
    "key_empty": called(KEY, text(b"")),
    "key_long": called(KEY, text(b"k" * 200)),
    "key_bytes": called(KEY, array(b"Left")),
    "key_number": called(KEY, b"i\x05"),
    "key_two": called(KEY, text(b"Left"), text(b"Right")),
    "key_variant": called(KEY, sized(b"v", b"Left")),
    "language": called(LANGUAGE, text(b"ko_KR")),
    "language_wrong": called(LANGUAGE, text(b"korean")),
    "launch": called(LAUNCH, extras((b"folder_path", b"/srv/demo/"),
                                    (b"demo_player_mode", b"folder_contents_player"))),
    "launch_empty_value": called(LAUNCH, extras((b"mode", b""))),
    "launch_null_byte": called(LAUNCH, extras((b"folder_path", b"/a\0b"))),
    "launch_nothing": called(LAUNCH, extras()),
    "launch_no_argument": called(LAUNCH),
    "launch_text": called(LAUNCH, text(b"x")),
    "panel": called(PANEL, text(b"portrait")),
    "panel_back": called(PANEL, text(b"landscape")),
    "panel_wrong": called(PANEL, text(b"upside")),
    "power": called(POWER, text(b"standby")),
    "power_off": called(POWER, text(b"off")),
    "power_wrong": called(POWER, text(b"on")),
    "status_text": called(STATUS, text(b"text")),
    "status_json": called(STATUS, text(b"json")),
    "status_wrong": called(STATUS, text(b"xml")),
    "status_none": called(STATUS),
    "usb_add": called(USB_ADD, array(b"/")),
    "usb_add_empty": called(USB_ADD, array(b"")),
    "usb_add_null": called(USB_ADD, array(b"/\0")),
    "usb_add_relative": called(USB_ADD, array(b"a")),
    "usb_add_text": called(USB_ADD, text(b"/")),
    "usb_remove": called(USB_REMOVE, array(b"/")),
    "unknown_method": called(OTHER, text(b"x")),
}

COMBINATE_STRING = {
    "empty": b"",
    "ordinary": b"<<A>> of <<B>>\0003\00010",
    "swapped": b"<<B>> <<A>>\0x\0y",
    "missing_slots": b"<<A>><<B>>",
    "empty_slot": b"<<A>><<B>>\0\0y",
    "itself": b"<<A>>\0<<A>>\0y",
    "in_turn": b"<<A>>\0<<B>>\0y",
    "each_other": b"<<A>><<B>>\0<<B>>x\0<<A>>y",
    "grows": b"<<A>>\0x<<A>>\0y",
    "doubles": b"<<A>>\0<<A>><<A>>\0y",
    "made_of_both": b"<<A>><B>>\0<\0y",
    "marks": b"<<<<A>>>>\0x\0y",
    "only_marks": b"<<<<<<<<\0<<\0>>",
    "cut": b"<<A>\0x\0y",
    "letters": b"<<@>><<C>><<a>>\0x\0y",
    "high_letter": b"<<\xc1>><<A>>\0\xff\0y",
}

CONFIG_VALUE = {
    "empty": b"",
    "value": b"1\n",
    "negative": b"-1\n",
    "largest": b"2147483647\n",
    "too_large": b"2147483648\n",
    "smallest": b"-2147483648",
    "leading_zeros": b"0007\n",
    "plus": b"+5\n",
    "spaces": b" 7\n",
    "hexadecimal": b"0x10\n",
    "windows": b"42\r\n",
    "null_behind": b"3\0\n",
    "key": b"db/ostrel-demo-player-tv/demo_mode",
    "memory_key": b"memory/usb-launcher-service/start_relaunch_timer",
    "empty_component": b"db//x",
    "hidden": b"db/.x",
    "long_key": b"db/" + b"k" * 198,
    "way_out": b"db/../../etc/passwd",
}


def records(content, *words):
    """What there is to play, and records of six words each, of which the last ones may be left out."""
    return bytes([content]) + b"".join(
        struct.pack("<6i", *record, *(0,) * (6 - len(record))) for record in words)


(ERROR, COMPLETED, PREPARED, PARSED, DECODED), SELECTED, PRESSED, ROTATED = range(1, 6), 7, 8, 10
ALL_FILES, ROTATOR = 0x3F, 0x40

EVENT_RECORDS = {
    "empty": records(ALL_FILES),
    "cut": records(0x01, (PREPARED,))[:-1],
    "all_videos": records(ALL_FILES, (PREPARED,), (COMPLETED,), (PREPARED,), (COMPLETED,), (PARSED,),
                          (DECODED,)),
    "photos": records(0x0C, (PARSED, 3), (DECODED, 1), (PARSED, 1), (DECODED, 7)),
    "error": records(0x01, (PREPARED,), (ERROR,)),
    "after_the_end": records(0x03, (ERROR,), (COMPLETED,), (PRESSED, 3), (PREPARED,)),
    "nothing_to_play": records(0x00, (COMPLETED,), (PARSED, 1), (SELECTED,)),
    "every_key": records(0xFF, *((PRESSED, key) for key in range(-1, 20))),
    "popup": records(0x0F, (PRESSED, 1), (SELECTED,), (PRESSED, 1), (ROTATED,), (SELECTED,)),
    "turns": records(ALL_FILES | ROTATOR, (ROTATED,), (PREPARED,), (ROTATED,), (PRESSED, 11)),
    "buffer": records(0x01, (SELECTED, 1, 2, 3, 16, 1), (SELECTED, 1, 2, 3, 16, 1)),
    "unknown": records(0x01, (-2**31, 2**31 - 1, 1, 2, 3, 4), (2**31 - 1, -1, 0, 0, -1, -1)),
}

ORIENTATION, SHORT, LONG = 0x0112, 3, 4


def exif(order, *entries, first=8, behind=b"\0\0\0\0"):
    """EXIF data with one folder of entries: tag, kind, count, and a value of two bytes."""
    head = b"II*\0" if order == "<" else b"MM\0*"
    return (b"Exif\0\0" + head + struct.pack(f"{order}IH", first, len(entries))
            + b"".join(struct.pack(f"{order}HHIHxx", *entry) for entry in entries) + behind)


EXIF = {
    "empty": b"",
    "header_only": b"Exif\0\0",
    "not_exif": b"http://ns.adobe.com/xap/1.0/\0<x:xmpmeta/>",
    "upright": exif("<", (ORIENTATION, SHORT, 1, 1)),
    "mirrored": exif("<", (ORIENTATION, SHORT, 1, 5)),
    "quarter": exif(">", (ORIENTATION, SHORT, 1, 6)),
    "out_of_range": exif("<", (ORIENTATION, SHORT, 1, 9)),
    "as_long": exif("<", (ORIENTATION, LONG, 1, 6)),
    "no_components": exif("<", (ORIENTATION, SHORT, 0, 6)),
    "many_components": exif("<", (ORIENTATION, SHORT, 1 << 30, 6)),
    "cut": exif("<", (ORIENTATION, SHORT, 1, 6))[:22],
    "ifd_in_itself": exif("<", (ORIENTATION, SHORT, 1, 6), behind=b"\x08\0\0\0"),
    "ifd_outside": exif(">", (ORIENTATION, SHORT, 1, 6), first=0x7FFFFFFF),
    "thumbnail": exif("<", (ORIENTATION, SHORT, 1, 3),
                      behind=b"\x1a\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0"),
    "maker_note": b"Exif\0\0MM\0*\0\0\0\x08\0\x02\x01\x0f\0\x02\0\0\0\x06\0\0\0\x32\x87\x69\0\x04\0\0\0\x01"
                  b"\0\0\0\x26\0\0\0\0\0\x01\x92\x7c\0\x07\0\0\0\x10\0\0\0 \0\0\0\0"
                  b"Nikon\0\x02\0\0\0MM\0*\0\0\0\x08",
}

FILE_NAMES = {
    "nothing": b"",
    "ordinary": b"en_US/a.mp4/b.jpg/a.srt/a_EngUS.srt/portrait_c.mkv/portrait_d.jpeg",
    "no_language": b"/a.mp4/a_EngUS.srt/a.srt",
    "same_names": b"en_GB/a.mp4/a.mkv/a.avi/a.srt/a_EngUK.ass/a_EngUK.srt",
    "part_of_another": b"ko_KR/a.mp4/banana.srt/banana.mp4/an.srt",
    "suffix_only": b"en_US/_EngUS.mp4/_EngUS.srt/a_EngUS.srt",
    "empty_stem": b"en_US/.mp4/x.srt/.ts/y_EngUS.txt",
    "odd_endings": b"en_US/x./y.m/._z.mp4/noextension/.mp4/.srt/a.ts.srt/a.TP/a.Jpe/a.jp/b.smp4",
    "turkish": "tr_TR/I.AVI/i.avi/PORTRAIT_İ.JPG/portrait_.jpg/portrait_".encode(),
    "long_names": b"/".join([b"en_US", b"x" * 251 + b".mp4", b"x" * 251 + b".srt", b"x" * 300]),
    "bytes": b"\xff_\xfe/\xff\xfe.mp4/\xff\xfe.srt/\n.jpg/\x01.\x02.mp4",
}

LAUNCH_REQUEST = {
    "folder": b"--demo_player_mode\0folder_contents_player\0--folder_path\0/srv/demo/",
    "usb": b"--path_location\0usb\0--folder_path\0demo\0--repeat_mode=no",
    "equals": b"--mode=factory_stop",
    "extra": b"--extra\0name=value=more\0--extra=a=",
    "help": b"--help",
    "version": b"--version",
    "no_value": b"--folder_path",
    "no_name": b"--extra\0=x",
    "only_equals": b"--=x",
    "dashes": b"--",
    "empty_argument": b"\0\0",
    "unknown": b"--speed=9",
    "bad_name": b"--extra\0\xff=x",
    "surrogate": b"--extra=\xed\xa0\x80=x",
    "bytes_in_value": b"--folder_path=/\xff\xfe\n/",
}

SMI, SRT, SUB, TTXT, TXT, SSA, ASS, PSB, SAMI, MPL, NONE = range(11)


def subtitle(ending, content):
    """A subtitle file, behind the number of its name's ending."""
    return bytes([ending]) + (content if isinstance(content, bytes) else content.encode())


def cue(words):
    return "1\n00:00:01,000 --> 00:00:02,000\n" + words + "\n"


def script(words):
    return ("[Script Info]\nPlayResX: 640\nPlayResY: 360\n[V4+ Styles]\n"
            "Format: Name, Fontname, Fontsize\nStyle: Default,sans,20\n[Events]\n"
            "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
            f"Dialogue: 0,0:00:01.00,0:00:03.00,Default,,0,0,0,,{words}\n")


SUBTITLE_READERS = {
    "srt": subtitle(SRT, cue("<font color=red>Hello</font> {\\an8}there")
                    + "\n2\n00:00:03,000 --> 00:00:04,000\n<i>x\ny\n"),
    "no_ending": subtitle(NONE, cue("x")),
    "carriage_returns": subtitle(SRT, cue("x\n").replace("\n", "\r")),
    "huge_times": subtitle(SRT, "1\n999999999:00:00,000 --> 999999999:00:01,000\nx\n2\n"
                                "00:00:01,000 --> 00:00:02,000\ny\n"),
    "plain_text": subtitle(TXT, "Opening hours: 09:00 - 18:00\n"),
    "thai": subtitle(SRT, cue("สวัสดีครับเพื่อนแก้ว")),
    "zero_width_space": subtitle(SRT, cue("a" * 12 + "\u200bbbbbb\u00a0c")),
    "japanese": subtitle(TXT, cue("日本語の字幕ですからこれはとても長い文です").encode("shift-jis")),
    "cut_utf8": subtitle(SRT, cue("").encode()[:-1] + b"\xea\xb0"),
    "utf16": subtitle(SRT, cue("안녕").encode("utf-16")),
    "utf16_unmarked": subtitle(SRT, cue("Hello").encode("utf-16-be")),
    "utf16_odd": subtitle(SRT, cue("x").encode("utf-16")[:-3]),
    "utf32": subtitle(SRT, cue("x").encode("utf-32")),
    "microdvd": subtitle(SUB, "{1}{1}25\n{25}{50}{c:$0000ff}Hello|there\n{60}{}open\n"),
    "mpl2": subtitle(MPL, "[10][20]/Hello|there\n[30][40]x\n"),
    "powerdivx": subtitle(PSB, "{0:00:01}{0:00:02}Hello|there\n{0:00:03}{0:00:02}x\n{}{}y\n"),
    "ttxt": subtitle(TTXT, "<TextStream><TextSample sampleTime=\"00:00:01.000\" text=\"'a''b'\">"
                           "x&#65;&amp;&#x110000;</TextSample>"
                           '<TextSample sampleTime="00:00:02.000"/></TextStream>'),
    "sami": subtitle(SMI, '<SAMI><BODY><SYNC Start=1000><P Class=ENCC>Hello<br><font color="red">x'
                          "</font><P Class=KRCC>안녕\n<SYNC Start=2000><P Class=ENCC>&nbsp;\n"
                          "</BODY></SAMI>"),
    "sami_korean": subtitle(SMI, ("<SAMI><BODY><SYNC Start=1000><P>안녕하세요 여러분 반갑습니다\n"
                                  "<SYNC Start=2000><P>&nbsp;").encode("cp949")),
    "sami_open_quote": subtitle(SAMI, '<SAMI><BODY><SYNC Start=1000><P Class="A>Hello\n'
                                      "<SYNC Start=2000><P Class=A>x"),
    "ass": subtitle(ASS, script("{\\pos(1,2)\\p1}m 0 0{\\p0} Hi\\N{\\fs5000}big "
                                "{\\t(0,1,\\fscx9999)}x")),
    "ass_sizes": subtitle(ASS, script("{\\fs(5000)}a{\\ fs10(5000)}b{\\t(\\fsx(5000))}c{\\fs+9}d")),
    "ass_open_brace": subtitle(ASS, script("a{b\\{c}d{\\p1")),
    "ass_backslashes": subtitle(ASS, script("a\\\\Nb\\h\\n\\")),
    "ssa": subtitle(SSA, "[Script Info]\nScriptType: v4.00\n[V4 Styles]\nFormat: Name, Fontsize\n"
                         "Style: Default,20\n[Events]\nFormat: Marked, Start, End, Style, Text\n"
                         "Dialogue: Marked=0,0:00:01.00,0:00:03.00,Default,Hi\n"),
    "every_byte": subtitle(SUB, bytes(range(256))),
}

EVERY_KEY = b"""[panel]
rotator = yes
turning_time_s = 2.5
first_rotation_state = 3
[picture]
sdr_white = 203
[content]
broken_video = skip
[product]
disclaimer = on
store_content_type = 1
menu_orientation = rtl
[usb]
mounts = /media/a:/media/b c:d/
[sound]
internal_sink = hdmi
external_sink = jack
[keys]
XF86AudioPlay = XF86PlayBack
[language]
language = ko_KR.UTF-8
"""

BAD_VALUES = b"""[panel]
turning_time_s = nan
turning_time_s = -1
turning_time_s = 1e999
first_rotation_state = 4
rotator = maybe
[picture]
sdr_white = 0
[usb]
mounts = relative:/x
mounts = :::/
[keys]
= x
x =
[language]
language = english
"""

TV_CONF_FILES = {
    "empty": b"",
    "example": TV_CONF.read_bytes(),
    "example_uncommented": TV_CONF.read_bytes().replace(b"\n;", b"\n"),
    "every_key": EVERY_KEY,
    "bad_values": BAD_VALUES,
    "comments": b"; a\n# b\n[keys] ; c\na = b ; d\na:c\n",
    "indented": b"[keys]\n  a = b\n  continued\n",
    "no_section": b"rotator = yes\n",
    "no_equals": b"[panel]\nrotator\n",
    "no_line_feed": b"[keys]\na = b",
    "unclosed": b"[panel\nrotator = yes\n",
    "carriage_returns": b"[panel]\r\nrotator = yes\r\n",
    "byte_order_mark": b"\xef\xbb\xbf[panel]\nrotator=yes\n",
    "utf16": "[panel]\n".encode("utf-16"),
    "null_byte": b"[panel]\nrot\0ator = yes\n",
    "long_line": b"[keys]\n" + b"k" * 3000 + b" = " + b"v" * 3000 + b"\n",
}

SEEDS = {
    "bus_messages": BUS_MESSAGES,
    "combinate_string": COMBINATE_STRING,
    "config_value": CONFIG_VALUE,
    "event_records": EVENT_RECORDS,
    "exif": EXIF,
    "file_names": FILE_NAMES,
    "launch_request": LAUNCH_REQUEST,
    "subtitle_readers": SUBTITLE_READERS,
    "tv_conf": TV_CONF_FILES,
}


def main(folder):
    for target, seeds in SEEDS.items():
        shutil.rmtree(folder / target, ignore_errors=True)
        (folder / target).mkdir(parents=True)
        for name, content in seeds.items():
            (folder / target / name).write_bytes(content)


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]))
