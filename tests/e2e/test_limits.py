"""A machine that has nothing left to give: the player ends and says so, shows less, or dies with a library
that uses what it did not get. It never hangs."""

import contextlib
import os
import re
import resource
import signal

import pytest

from harness.faults import times
from harness.player import RELAUNCH_TIMER
from harness.waiting import wait_until

MB = 1 << 20
TOO_LITTLE = "app_framework: the machine gives this program too few"
# Who only does what others ask: the first call of somebody else says whose end it was.
HELPERS = re.compile(r"/(libc|libstdc\+\+|libgcc_s|libpthread|libm|lib[a-z]*san|ld-linux[^/]*|libshortage)"
                     r"\.so[^/]*$")
# While it loads a plug-in, GStreamer makes of every crash in the process a call of exit().
CRASHED = (-signal.SIGSEGV, -signal.SIGBUS, 255)
# How the language and the libraries say that they got no memory or no thread. The library of themes
# frees something twice then.
GIVEN_UP = (r"failed to allocate|bad_alloc|Cannot allocate memory|Resource temporarily unavailable|"
            r"creating thread|double free detected|unaligned fastbin")
# All but reports of a sanitizer: those of memory that it did not get.
MAY_BE_SAID = r"^(?!.*(Sanitizer: (?!.*(out-of-memory|allocat|unable to mmap))|runtime error: ))"


def tail(player):
    return "\n".join(player.log.lines[-15:])


def ended_by(player):
    """The file whose code a crash or a call of exit() came from."""
    here = next((at for at, line in enumerate(player.log.lines)
                 if re.match("crashed with|exit with", line)), None)
    assert here is not None, f"status {player.process.returncode} and no word of it: {tail(player)}"
    calls = [match.group(1) for _, match in player.log.find_all(r"^called in (\S+)", after=here)]
    calls = [name for name in calls if not HELPERS.search(name)]
    if player.process.returncode == 255 and "/libgstreamer-1.0.so" in calls[0]:
        del calls[0]
    return calls[0]


def assert_no_crash_of_ours(player):
    """It ended by itself, with a word of what was missing, or in a library, which may do so without one."""
    status = player.wait_end()
    if status == 0:
        return
    words = player.log.find_all(GIVEN_UP)
    if status == 1 or player.log.find_all("Sanitizer failed to allocate"):
        assert words or player.log.find_all("^E/PLATFORM"), f"ended without a reason: {tail(player)}"
        return
    where = ended_by(player)
    # Who is told that there is no memory may end itself, and say so.
    ours = ".so" not in where
    assert not ours or words and status == -signal.SIGABRT, \
        f"status {status}, it crashed in {where}: {tail(player)}"
    assert status in CRASHED or words, f"status {status}: {tail(player)}"


def play_or_end(screen, player):
    """What becomes of a start."""
    player.tolerate(MAY_BE_SAID)
    wait_until(lambda: screen.shown() == "red" or not player.running(),
               lambda: f"a picture or an end: {tail(player)}")
    if player.running():
        player.process.terminate()
    assert_no_crash_of_ours(player)
    wait_until(lambda: screen.shown() != "red", "the end of the picture")


def run_with(option):
    return lambda tv, number: {"prefix": ("prlimit", f"--{option}={number}"), **tv.scarce()}


def run_without(what):
    return lambda tv, number: tv.scarce(**{what: number})


STARTS = {
    "descriptors": (run_with("nofile"), times([70], range(64, 128, 2))),
    "address space": (run_with("as"), times([1400 * MB], range(1350 * MB, 2350 * MB, 25 * MB))),
    "threads": (run_without("no_threads"), times([10], range(5, 60))),
    "large blocks": (run_without("largest_block"),
                     times([100_000], [2 ** power for power in range(12, 25)])),
    "one block": (run_without("no_memory"), times([40_000], range(500, 200_000, 1000))),
}


@pytest.mark.parametrize("what", STARTS)
def test_start_on_a_machine_with_little_ends_or_plays(tv, screen, content, shelf, what):
    limit, amounts = STARTS[what]
    shelf.video(content / "red.mp4", "red")
    for amount in amounts:
        play_or_end(screen, tv.start(folder=content, **limit(tv, amount)))


@pytest.mark.parametrize("limit, amounts", [
    (run_with("nofile"), times([40], range(12, 64, 4))),
    (run_with("as"), times([500 * MB], range(300 * MB, 1100 * MB, 50 * MB))),
    (run_without("no_threads"), times([2], range(1, 5))),
], ids=["descriptors", "address space", "threads"])
def test_start_on_a_machine_with_too_little_is_refused(tv, content, limit, amounts):
    """The toolkit would crash on its way. A sanitizer needs addresses before everybody else."""
    for amount in amounts:
        player = tv.start(folder=content, **limit(tv, amount))
        player.tolerate(TOO_LITTLE, r"^(?![VDIWEF]/)")
        assert player.wait_end() in (1, -signal.SIGABRT)
        assert player.log.find_all(f"^E/PLATFORM.*{TOO_LITTLE}|Sanitizer.* failed to allocate")


@contextlib.contextmanager
def limited(player, what, number):
    """The kernel gives a running player no more than this."""
    former = resource.prlimit(player.pid, what)
    resource.prlimit(player.pid, what, (number, former[1]))
    yield
    with contextlib.suppress(ProcessLookupError):
        resource.prlimit(player.pid, what, former)


def address_space_of(player):
    with open(f"/proc/{player.pid}/statm", encoding="ascii") as file:
        return int(file.read().split()[0]) * os.sysconf("SC_PAGE_SIZE")


@contextlib.contextmanager
def short(tv, **what):
    tv.short(**what)
    yield
    tv.short(**dict.fromkeys(what, 0))


SHORTAGES = {
    "descriptors": lambda tv, player: limited(player, resource.RLIMIT_NOFILE,
                                              len(player.open_files())),
    "address space": lambda tv, player: limited(player, resource.RLIMIT_AS,
                                                address_space_of(player)),
    "threads": lambda tv, player: short(tv, no_threads=1),
    "large blocks": lambda tv, player: short(tv, largest_block=4096),
    "one block": lambda tv, player: short(tv, no_memory=5000),
}


@pytest.mark.parametrize("what", SHORTAGES)
def test_shortage_that_is_over_leaves_the_whole_show(tv, screen, content, shelf, what):
    """Or a player that has ended, and is started again."""
    tv.configure(content={"broken_video": "skip"})
    for colour in ("red", "green"):
        shelf.video(content / f"{colour}.mp4", colour, seconds=1)
    player = tv.start(folder=content, **tv.scarce())
    player.tolerate(MAY_BE_SAID)
    for _ in range(times(1, 20)):
        for colour in ("red", "green"):
            wait_until(lambda name=colour: screen.shown() == name or not player.running(), colour)
        if not player.running():
            break
        here = player.log.position()
        with SHORTAGES[what](tv, player):
            wait_until(lambda: len(player.log.find_all(r"OnPlayVideo\(\d+\) > /", after=here)) > 1
                       or not player.running(), lambda: f"some changes or an end: {tail(player)}")
    if not player.running():
        assert_no_crash_of_ours(player)
        player = tv.start(folder=content)
    for colour in ("red", "green"):
        screen.wait_for(colour)
    assert tv.status()["passed_over"] == {}


def test_two_starts_at_once_are_one_player(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    for _ in range(times(2, 100)):
        pair = [tv.start(folder=content) for _ in range(2)]
        wait_until(lambda: not all(player.running() for player in pair), "one to end")
        pair.sort(key=lambda player: player.running())
        late, first = pair
        assert late.wait_end() == 0
        late.log.wait("the running player took the launch request")
        first.log.wait("launch request from a later start")
        wait_until(lambda: screen.shown() == "red", "the picture")
        assert first.terminate() == 0
        assert tv.config(RELAUNCH_TIMER) == 1
        wait_until(lambda: screen.shown() != "red", "the end of the picture")
