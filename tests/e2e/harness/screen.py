"""The virtual screen: a compositor inside Xvfb, whose picture is read straight from memory."""

import contextlib
import mmap
import os
import shutil
import signal
import struct
import subprocess
import tempfile
import threading
import time

import numpy
from PIL import Image

from .waiting import wait_until

# Colours of the content the tests make, chosen far apart so that a video codec cannot confuse them.
COLOURS = {
    "red": (215, 30, 30),
    "green": (30, 150, 50),
    "blue": (30, 60, 200),
    "yellow": (230, 205, 40),
    "magenta": (205, 40, 185),
    "cyan": (40, 195, 205),
    "orange": (235, 125, 25),
    "violet": (110, 45, 160),
    "pink": (245, 165, 195),
    "brown": (110, 70, 35),
}
NEAR = 45.0


# Put before a command: it ends with the test run, even if that is killed.
UNTIL_WE_END = ("setpriv", "--pdeathsig", "TERM")


def stop_process(process, deadline_s=10.0):
    """Ends a process of ours politely, then firmly; returns its status."""
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(deadline_s)
        except subprocess.TimeoutExpired:
            process.kill()
    return process.wait()


@contextlib.contextmanager
def lit(make):
    """Has a screen, made for a folder of its own, as long as the block lasts."""
    # Sockets need short paths, which pytest's own temporary folders are not.
    folder = tempfile.mkdtemp(prefix="tv-")
    panel = make(folder)
    try:
        yield panel.start()
    finally:
        panel.stop()
        shutil.rmtree(folder, ignore_errors=True)


class Recorder:
    """Reads the screen some hundred times a second and keeps each change of what it shows."""

    def __init__(self, look):
        self._look = look
        self._stop = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self.samples = 0
        self.changes = []

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._stop.set()
        self._thread.join()

    def _run(self):
        last = object()
        while not self._stop.is_set():
            seen = self._look()
            self.samples += 1
            if seen != last:
                self.changes.append((time.monotonic(), seen))
                last = seen
            self._stop.wait(0.003)

    def elapsed(self):
        """Seconds since the first look."""
        return time.monotonic() - self.changes[0][0] if self.changes else 0.0

    def names(self):
        """Everything recognised so far, in order, without the moments in which nothing was."""
        names = []
        for _, seen in list(self.changes):
            if seen is not None and (not names or names[-1] != seen):
                names.append(seen)
        return names


class Screen:
    """Xvfb with weston's kiosk shell in it. `width` and `height` are the panel's native size."""

    def __init__(self, folder, width=640, height=360):
        self.folder = folder
        self.width, self.height = width, height
        self.runtime_dir = os.path.join(folder, "run")
        self.socket = "tv"
        self.display = None
        self.player = None
        self._processes = []
        self._frame_buffer = None

    def start(self):
        os.makedirs(self.runtime_dir, mode=0o700)
        read_end, write_end = os.pipe()
        try:
            self._spawn("xvfb", ["Xvfb", "-displayfd", str(write_end), "-screen", "0",
                                 f"{self.width}x{self.height}x24", "-nolisten", "tcp",
                                 "-fbdir", str(self.folder)], pass_fds=(write_end,))
            os.close(write_end)
            write_end = -1
            with os.fdopen(read_end, closefd=False) as pipe:
                number = pipe.readline().strip()
        finally:
            os.close(read_end)
            if write_end >= 0:
                os.close(write_end)
        assert number, f"Xvfb did not start: {self._log('xvfb')}"
        self.display = f":{number}"
        self._open_frame_buffer()
        self.start_compositor()
        # Out of the way: a pointer in the middle would hover over the options.
        self.move_pointer(self.width - 1, self.height - 1)
        return self

    def start_compositor(self):
        """Starts weston; its window covers the whole X screen, which has no window manager."""
        self.compositor = self._spawn(
            "weston", ["weston", "--backend=x11-backend.so", "--use-pixman",
                       f"--width={self.width}", f"--height={self.height}",
                       "--shell=kiosk-shell.so", "--no-config", "--idle-time=0",
                       f"--socket={self.socket}"],
            DISPLAY=self.display, XDG_RUNTIME_DIR=self.runtime_dir)
        path = os.path.join(self.runtime_dir, self.socket)
        wait_until(lambda: os.path.exists(path) or self.compositor.poll() is not None,
                   "weston's socket")
        assert self.compositor.poll() is None, f"weston did not start: {self._log('weston')}"

    def stop(self):
        for process in reversed(self._processes):
            stop_process(process)
        self._processes.clear()
        if self._frame_buffer is not None:
            self._pixels = None
            self._frame_buffer.close()
            self._frame_buffer = None
        shutil.rmtree(self.runtime_dir, ignore_errors=True)

    def kill_compositor(self):
        self.compositor.send_signal(signal.SIGKILL)
        self.compositor.wait()

    def _spawn(self, name, command, pass_fds=(), **environment):
        with open(os.path.join(self.folder, f"{name}.log"), "ab") as log:
            process = subprocess.Popen([*UNTIL_WE_END, *command], stdin=subprocess.DEVNULL,
                                       stdout=log, stderr=log,
                                       env={**os.environ, **environment}, pass_fds=pass_fds,
                                       start_new_session=True)
        self._processes.append(process)
        return process

    def _log(self, name):
        with open(os.path.join(self.folder, f"{name}.log"), errors="replace") as log:
            return log.read()[-1000:]

    def _open_frame_buffer(self):
        # The file is an X window dump: a header of big-endian words, a colour map, the pixels.
        with open(os.path.join(self.folder, "Xvfb_screen0"), "rb") as file:
            self._frame_buffer = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
        words = struct.unpack(">25I", self._frame_buffer[:100])
        header, line_bytes, map_entries = words[0], words[12], words[19]
        everything = numpy.frombuffer(self._frame_buffer, dtype=numpy.uint8)
        begin = header + map_entries * 12
        rows = everything[begin:begin + self.height * line_bytes].reshape(self.height, line_bytes)
        self._pixels = rows[:, :self.width * 4].reshape(self.height, self.width, 4)

    def picture(self):
        """The screen as it is now: an array of height x width x (red, green, blue)."""
        return self._pixels[:, :, 2::-1].copy()

    def save(self, path):
        Image.fromarray(self.picture()).save(path)

    def points(self, columns=5, rows=5):
        """Colours on a grid of points that keeps clear of the edges."""
        ys = [self.height * (2 * row + 1) // (2 * rows) for row in range(rows)]
        xs = [self.width * (2 * column + 1) // (2 * columns) for column in range(columns)]
        return self._pixels[numpy.ix_(ys, xs)][:, :, 2::-1].reshape(-1, 3).astype(float)

    def corners(self):
        """The colours next to the four corners, a fortieth of the width away from the edges."""
        away = self.width // 40
        ys, xs = [away, self.height - 1 - away], [away, self.width - 1 - away]
        return self._pixels[numpy.ix_(ys, xs)][:, :, 2::-1].reshape(-1, 3).astype(float)

    def near(self, x, y, colour, distance=NEAR):
        """Whether one pixel has about this colour."""
        pixel = self._pixels[y, x, 2::-1].astype(float)
        return float(numpy.linalg.norm(pixel - numpy.array(colour, dtype=float))) < distance

    @staticmethod
    def _name(points, colours):
        if (points.max(axis=1) < 30).all():
            return "black"
        for name, colour in colours.items():
            near = numpy.linalg.norm(points - numpy.array(colour, dtype=float), axis=1) < NEAR
            if near.sum() >= 0.75 * len(points):
                return name
        return None

    def shown(self):
        """Name of the colour that covers the screen; "black" for none at all; None for a mixture."""
        return self._name(self.points(), COLOURS)

    def framed(self, colours):
        """Name of the colour in the corners of the screen, among those given."""
        return self._name(self.corners(), colours)

    def wait_for(self, name):
        """Waits until the colour covers the screen, as long as there is a player to show it."""
        def covers():
            shown = self.shown() == name
            assert shown or self.player is None or self.player.running(), \
                f"the player ended while {name} was waited for"
            return shown

        wait_until(covers,
                   lambda: f"{name} on the screen, which shows {self.shown()}: "
                           f"{self.points(3, 1).astype(int).tolist()}")

    def record(self):
        return Recorder(self.shown)

    def record_frames(self, colours):
        """Records the colour of the corners."""
        return Recorder(lambda: self.framed(colours))

    def key(self, *names, delay_ms=40):
        """Presses keys by their X names."""
        self._xdotool("key", "--delay", str(delay_ms), *names)

    @contextlib.contextmanager
    def held(self, name):
        """Holds a key down as long as the context lasts."""
        self._xdotool("keydown", name)
        try:
            yield
        finally:
            self._xdotool("keyup", name)

    def click(self, x, y, button=1):
        self._xdotool(*self._way_to(x, y), "click", str(button))

    def move_pointer(self, x, y):
        self._xdotool(*self._way_to(x, y))

    def _way_to(self, x, y):
        # The compositor moves its pointer by differences, and may have begun with a wrong place.
        # Pushed into two opposite corners it agrees with X about where the pointer is.
        steps = (0, 0), (self.width - 1, self.height - 1), (x, y)
        return [word for step in steps for word in ("mousemove", *map(str, step))]

    def _xdotool(self, *arguments):
        subprocess.run(["xdotool", *arguments], check=True, timeout=30,
                       env={**os.environ, "DISPLAY": self.display})
