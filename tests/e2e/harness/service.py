"""Stands in for the service manager: starts the player as its unit says, and starts it again."""

import configparser
import os
import signal
import socket
import struct
import threading
import time

from .waiting import wait_until

UNIT = os.path.join(os.path.dirname(__file__), "..", "..", "..", "packaging",
                    "ostrel-demo-player-tv.service.in")
# As systemd does: the watchdog is the process's own.
WATCHED = ("sh", "-c", 'export WATCHDOG_PID=$$; exec "$@"', "sh")
SECONDS = {"ms": 0.001, "s": 1.0, "": 1.0}
CREDENTIALS = struct.Struct("3i")


def settings():
    """The unit's section about the service."""
    unit = configparser.ConfigParser(interpolation=None)
    unit.optionxform = str
    unit.read(UNIT, encoding="utf-8")
    return unit["Service"]


def seconds(text):
    """A time as units write it."""
    number = text.rstrip("ms")
    return float(number) * SECONDS[text[len(number):]]


class Service:
    """A player that is kept alive as long as the block lasts."""

    def __init__(self, tv, folder, prefix=(), changed=None, **environment):
        """`changed` has those of the unit's values that are others here."""
        unit = {**settings(), **(changed or {})}
        assert (unit["Type"], unit["Restart"]) == ("notify", "always")
        self._start_s = seconds(unit["TimeoutStartSec"])
        self._stop_s = seconds(unit["TimeoutStopSec"])
        self.silence_s = seconds(unit["WatchdogSec"])
        self.pause_s = seconds(unit["RestartSec"])
        self._tv = tv
        self._folder = folder
        self._prefix = (*prefix, *WATCHED)
        address = os.path.join(tv.screen.folder, "notify")
        self._environment = {**environment, "NOTIFY_SOCKET": address,
                             "WATCHDOG_USEC": str(round(self.silence_s * 1e6))}
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_PASSCRED, 1)
        self._socket.settimeout(0.02)
        self._socket.bind(address)
        self._watching_since = None
        self._kill_at = None
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self.lives = []   # the players, in their order
        self.states = []  # of each: what it told, and when
        self.began = []   # of each: when it was started

    def __enter__(self):
        self._thread.start()
        wait_until(lambda: self.lives, "the first player")
        return self

    def __exit__(self, *_):
        self._ended.set()
        self._thread.join()
        self._socket.close()
        os.unlink(self._environment["NOTIFY_SOCKET"])

    def _run(self):
        while not self._ended.is_set():
            self._kill_at = None
            self.states.append([])
            self.began.append(time.monotonic())
            self.lives.append(self._tv.start(folder=self._folder, prefix=self._prefix,
                                             **self._environment))
            while self.lives[-1].running() and not self._ended.is_set():
                self._listen()
                self._watch()
            self._ended.wait(self.pause_s)

    def _listen(self):
        try:
            text, facts, _, _ = self._socket.recvmsg(4096, socket.CMSG_SPACE(CREDENTIALS.size))
        except TimeoutError:
            return
        sender, _, _ = CREDENTIALS.unpack(facts[0][2])
        # What others say is nobody's business, and a player's last words may come late.
        if sender == self.lives[-1].pid:
            now = time.monotonic()
            self.states[-1] += [(now, line) for line in text.decode().splitlines()]

    def _watch(self):
        now, since = time.monotonic(), self._watching_since
        if self._kill_at and now > self._kill_at:
            self.lives[-1].process.send_signal(signal.SIGKILL)
        elif since is not None and now > self._bears_until(max(since, self.began[-1])):
            self._watching_since = None
            self._kill_at = now + self._stop_s
            for number in (signal.SIGABRT, signal.SIGCONT) if self.ready() else (signal.SIGTERM,):
                self.lives[-1].process.send_signal(number)

    def _bears_until(self, since):
        """When the player has been silent, or without a picture, for too long."""
        if self.ready():
            return max(since, self.states[-1][-1][0]) + self.silence_s
        asked = [when + int(line.partition("=")[2]) / 1e6 for when, line in self.states[-1]
                 if line.startswith("EXTEND_TIMEOUT_USEC=")]
        return max([since + self._start_s, *asked])

    def watch(self, on=True):
        """Ends the next player that is silent, or starts, for too long. Not before it is told to, for a
        busy machine may keep a good one silent for as long."""
        self._watching_since = time.monotonic() if on else None

    def told(self, state, life=-1):
        """How often a player has told this; it may have a value."""
        return sum(line.partition("=")[0] == state for _, line in self.states[life])

    def ready(self, life=-1):
        return self.told("READY", life) > 0

    def wait_told(self, state, count=1, life=-1):
        wait_until(lambda: self.told(state, life) >= count, lambda: f"{state}: {self.states[life]}")

    def wait_back(self, life):
        """Waits until this life's picture is on the screen."""
        wait_until(lambda: len(self.lives) > life, f"player {life}")
        self.wait_told("READY", life=life)
