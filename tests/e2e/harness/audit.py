"""What the player may write while nothing is wrong, and what it may leave behind."""

import os
import re

LINE = re.compile(r"^([VDIWEF])/([^(]+)\(\s*(\d+)\): (.*)$")

# Lines at error level that belong to normal operation, each with the reason why it is one.
ORDINARY_ERRORS = [
    # Every landscape answer is an error line, so that shop technicians find them by level.
    r"IsPortraitMode\(\d+\) > In Landscape Mode$",
    # The stored selection is traced at error level wherever it is read or written as halves.
    r"m_[SG]etFileMode\(\d+\) > eMode=-?\d+ iMenuType=-?\d+$",
    # Each quit leaves one empty error line that names its source line.
    r"ExitApplication\(\d+\) > $",
    # A power event does the same before it quits.
    r"OnPower(off|StateChanged)CB\(\d+\) > $",
    # The rotator's reports are errors on purpose, the good ones too.
    r"m_OnDisplayRotatorCB\(\d+\) > (Rotation Done|TV Is Rotating|TV Does Not Support Rotation)$",
    # A set without a rotator says so at every question.
    r"IsSupportRotator\(\d+\) > TV does not support rotation$",
    # A set that has just been unpacked has none of these keys yet.
    r"GetConfigInt\(\d+\) > GetConfigInt key \[db/(ostrel-demo-player-tv/(demo_mode|file_mode|"
    r"rotation_auto_mode|portrait_timer|landscape_timer)|sysman/rotation_state|"
    r"menu/support/use_mode)\] faild$",
]

# Written by libraries below the player. Nothing of it is expected; this list is to stay short.
ORDINARY_FOREIGN_LINES = []


def is_ordinary_error(text, also=()):
    return any(re.search(pattern, text) for pattern in [*ORDINARY_ERRORS, *also])


def unexpected_lines(lines, also=()):
    """Of a player's output: error lines without a reason, and lines that no log wrote."""
    unexpected = []
    for line in lines:
        match = LINE.match(line)
        if match is None:
            if line and not any(re.search(p, line) for p in [*ORDINARY_FOREIGN_LINES, *also]):
                unexpected.append(line)
        elif match.group(1) in "EF" and not is_ordinary_error(match.group(4), also):
            unexpected.append(line)
    return unexpected


def processes_marked(mark):
    """Ids of all living processes that inherited the environment variable of this test."""
    wanted = f"OSTREL_E2E_MARK={mark}".encode()
    found = []
    for entry in os.listdir("/proc"):
        if not entry.isdigit():
            continue
        try:
            with open(f"/proc/{entry}/environ", "rb") as file:
                if wanted in file.read().split(b"\0"):
                    found.append(int(entry))
        except OSError:
            continue
    return found
