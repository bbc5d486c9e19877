"""What the player may write while nothing is wrong, and what it may leave behind."""

import contextlib
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

# Written by libraries below the player, each with the reason why it is no fault of the player's. EFL
# puts a backtrace behind each; it belongs to the line before it. This list is to stay short.
ORDINARY_FOREIGN_LINES = [
    # The machine was so busy that one picture took the drawing thread more than a second.
    r"evas_render_rendering_wait\(\) timeout waiting for async rendering",
    # The machine was so busy that the thread that counts frames slept longer than it wanted to.
    r"ecore_animator thread - epoll_wait\(.*\) at .* should have slept",
]
BACKTRACE_BEGIN, BACKTRACE_END = "## Copy & Paste the below", "EOF"


def is_ordinary_error(text, also=()):
    return any(re.search(pattern, text) for pattern in [*ORDINARY_ERRORS, *also])


def without_ordinary_backtraces(lines):
    """The lines without those backtraces that follow an ordinary foreign line."""
    kept, ordinary, inside = [], False, False
    for line in lines:
        if inside:
            inside = line != BACKTRACE_END
        elif ordinary and line.startswith(BACKTRACE_BEGIN):
            inside = True
        elif line:
            ordinary = any(re.search(pattern, line) for pattern in ORDINARY_FOREIGN_LINES)
            if not ordinary:
                kept.append(line)
    return kept


def unexpected_lines(lines, also=()):
    """Of a player's output: error lines without a reason, and lines that no log wrote."""
    unexpected = []
    for line in without_ordinary_backtraces(lines):
        match = LINE.match(line)
        if match is None:
            if not any(re.search(pattern, line) for pattern in also):
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


def commands_marked(mark):
    """What those are, as far as they are still there."""
    commands = []
    for process in processes_marked(mark):
        with contextlib.suppress(OSError), open(f"/proc/{process}/cmdline", "rb") as file:
            commands.append(file.read().replace(b"\0", b" ").decode(errors="replace"))
    return commands
