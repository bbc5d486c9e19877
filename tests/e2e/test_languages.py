"""Every language of the catalogues on the screen, with a contact sheet of all of them to look at; and
what a locale must not change."""

import json
import os
import re
import subprocess

import numpy
import pytest
from PIL import Image

from harness.content import picture
from harness.options import focus_box, open_options
from harness.pictures import wait_still
from harness.waiting import wait_until

RESET = "TV_SID_ZAVO_MIX_CAAUG_RESET_P_L_TIMER_A_MINS"
SHEET_COLUMNS = 3
# So that they run side by side.
PARTS = 2
# The pointer may be seen there.
CORNER = 40


def catalogues(source_dir):
    """The languages, each with the texts of its catalogue."""
    folder = os.path.join(source_dir, "res", "po")
    found = {}
    for name in sorted(os.listdir(folder)):
        if name.endswith(".po"):
            with open(os.path.join(folder, name), encoding="utf-8") as file:
                pairs = re.findall(r'^msgid "(.+)"\nmsgstr "(.*)"$', file.read(), re.MULTILINE)
            found[name.removesuffix(".po")] = dict(pairs)
    return found


def test_the_fonts_of_the_package_list_have_every_letter(source_dir):
    languages = catalogues(source_dir)
    assert len(languages) >= 18
    letters = {}
    for language, texts in languages.items():
        for letter in "".join(texts.values()):
            letters.setdefault(letter, language)
    missing = []
    for letter, language in sorted(letters.items()):
        found = subprocess.run(["fc-list", f":charset={ord(letter):x}", "file"], check=True,
                               capture_output=True, text=True).stdout
        if "/noto/" not in found:
            missing.append(f"U+{ord(letter):04X} of {language}")
    assert not missing


def ink(screen):
    """How many pixels are letters or marks on a dark panel, or the white of the focus."""
    seen = screen.picture()[CORNER:-CORNER]
    return int((seen.min(axis=2) > 150).sum())


@pytest.mark.parametrize("part", range(PARTS))
def test_every_language_shows(tv, screen, content, source_dir, part):
    """The list is built anew whenever the panel has turned, so it turns for each language. The clock
    runs three times as fast, lest one toast is still there when the next options come."""
    languages = dict(list(catalogues(source_dir).items())[part::PARTS])
    tv.configure(panel={"rotator": "yes", "turning_time_s": "0"})
    picture(content / "Harbour.jpg", "brown")
    player = tv.start(folder=content, **tv.timers(3, above=2))
    screen.wait_for("brown")
    tiles, toasts = [], {}
    for number, (language, texts) in enumerate(languages.items()):
        here = player.log.position()
        upside_down = number % 2 == 0
        tv.tvctl("language", language if "_" in language else f"{language}_{language.upper()}")
        tv.tvctl("panel", "landscape-reverse" if upside_down else "landscape")
        player.log.wait("m_InitItemList", after=here)
        player.log.wait("decode success", after=here)
        wait_until(lambda: ink(screen) == 0, "the photo alone")
        open_options(screen, player)
        wait_until(lambda: focus_box(screen) is not None, "the focus")
        options = wait_still(screen, looks=8)
        assert ink(screen) > 1000
        tv.press("XF86ChannelGuide")
        text = player.log.wait(r"strContent = (.*)$", after=here).group(1)
        assert text == texts[RESET].replace("<<A>>", "5")
        wait_until(lambda: focus_box(screen) is None and ink(screen) > 300, "the toast alone")
        toast = wait_still(screen, looks=5)
        toasts[language] = toast[CORNER:-CORNER].tobytes()
        quarters = 2 if upside_down else 0
        tiles.append(numpy.concatenate([numpy.rot90(options, quarters)[50:310, 130:510],
                                        numpy.rot90(toast, quarters)[130:230, 130:510]]))
    assert len(set(toasts.values())) == len(languages), "two languages look the same"
    leave_sheet(tiles, os.path.join(source_dir, "out", "e2e", f"languages-{part}.png"))


def leave_sheet(tiles, path):
    """For somebody who reads these languages."""
    while len(tiles) % SHEET_COLUMNS:
        tiles.append(numpy.full_like(tiles[0], 255))
    rows = [numpy.concatenate(tiles[start:start + SHEET_COLUMNS], axis=1)
            for start in range(0, len(tiles), SHEET_COLUMNS)]
    os.makedirs(os.path.dirname(path), exist_ok=True)
    Image.fromarray(numpy.concatenate(rows)).save(path)


@pytest.fixture
def turkish(tmp_path):
    """Environment for start(): a Turkish locale, in which I and i are two letters and a comma stands
    before the decimals."""
    folder = tmp_path / "locales"
    folder.mkdir()
    subprocess.run(["localedef", "--no-archive", "-f", "UTF-8", "-i", "tr_TR", folder / "tr_TR.UTF-8"],
                   check=True)
    return {"LOCPATH": str(folder), "LANG": "tr_TR.UTF-8"}


def test_names_are_the_same_in_a_turkish_locale(tv, screen, content, shelf, turkish):
    shelf.video(content / "CLIP.AVI", "red", seconds=8)
    shelf.video(content / "PORTRAIT_X.MP4", "green", seconds=8)
    (content / "CLIP.SMI").write_text("<SAMI><BODY><SYNC Start=0><P>Merhaba</P></BODY></SAMI>")
    player = tv.start(folder=content, **turkish)
    screen.wait_for("red")
    assert player.log.find_all(r"OnPlayVideo\(\d+\) > .*/CLIP\.AVI .*/CLIP\.SMI$")
    assert json.loads(tv.tvctl("status", "--json").stdout)["list"]["names"] == ["CLIP.AVI"]


def test_numbers_keep_their_point_in_every_language(tv, screen, content, shelf, turkish):
    shelf.video(content / "red.mp4", "red", seconds=20)
    player = tv.start(folder=content, **turkish)
    screen.wait_for("red")
    tv.press("XF86AudioNext")
    assert player.log.wait(r"m_SetTrickSpeed\(\d+\) > (\S+)$").group(1) == "2.000000"
    here = player.log.position()
    tv.tvctl("language", "tr_TR.UTF-8")
    tv.press("XF86AudioRewind")
    assert player.log.wait(r"m_SetTrickSpeed\(\d+\) > (\S+)$", after=here).group(1) == "-2.000000"
