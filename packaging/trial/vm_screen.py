"""What vm_trial.py sees on the virtual machine's screen, and the sheet of its screenshots.

All images are Pillow's, in RGB.
"""

import numpy
from PIL import Image, ImageDraw, ImageFont

FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
CARD_GROUND = (22, 38, 66)
CARD_REASON = (159, 176, 200)

# What lies on the stick of each file system: its colour tells that it is the one on the screen.
STICKS = {"vfat": (0, 80, 190), "exfat": (0, 130, 120), "ntfs": (120, 0, 140), "ext4": (110, 120, 0)}

# qemu says so itself, in a picture of this size, until the machine's kernel has its screen.
NO_SCREEN_YET = (640, 480)


def share_of(colour):
    """What tells how much of an image, from 0 to 1, has nearly this colour."""
    def share(image):
        pixels = numpy.asarray(image, dtype=int)
        return (abs(pixels - numpy.array(colour)).max(axis=2) < 24).mean()
    return share


def letters(image):
    return numpy.asarray(image).min(axis=2) > 100


def shows_console(image):
    """Grey on black and nothing else: a console's, a kernel's or a login prompt's."""
    pixels = numpy.asarray(image, dtype=int)
    return (image.size != NO_SCREEN_YET and share_of((0, 0, 0))(image) > 0.9 and letters(image).mean() > 0.0003
            and (pixels.max(axis=2) - pixels.min(axis=2)).max() < 24)


def shows_card(image):
    """Its ground, and letters on it."""
    return share_of(CARD_GROUND)(image) > 0.7 and letters(image).mean() > 0.002


def shows_reasons(image):
    return shows_card(image) and share_of(CARD_REASON)(image) > 0.0005


def is_other(one, other):
    """Whether more than a small part of a picture is another."""
    return (abs(numpy.asarray(one, dtype=int) - numpy.asarray(other)).max(axis=2) > 60).mean() > 0.002


def shows_stick(kind):
    return lambda image: share_of(STICKS[kind])(image) > 0.5


def shows_pictures(image):
    """The built-in content: sample films and photos, which are of many colours everywhere."""
    pixels = numpy.asarray(image.resize((64, 40)), dtype=int)
    if any(shows_stick(kind)(image) for kind in STICKS):
        return False
    return len({tuple(pixel) for pixel in (pixels // 32).reshape(-1, 3)}) > 24


def draw_sheet(shots, path):
    """Writes one picture of many, which are pairs of a name and a file."""
    columns, width, height, line = 4, 480, 300, 28
    rows = -(-len(shots) // columns)
    sheet = Image.new("RGB", (columns * (width + 8) + 8, rows * (height + line + 8) + 8), (32, 32, 32))
    draw = ImageDraw.Draw(sheet)
    font = ImageFont.truetype(FONT, 15)
    for number, (name, shot) in enumerate(shots):
        x = 8 + number % columns * (width + 8)
        y = 8 + number // columns * (height + line + 8)
        with Image.open(shot) as file:
            image = file.convert("RGB")
        # Of a console, the corner with the text.
        sheet.paste(image.crop((0, 0, width, height)) if shows_console(image) else
                    image.resize((width, height)), (x, y))
        draw.text((x, y + height + 3), name, font=font, fill="white")
    sheet.save(path)
