"""What is measured on: the end-to-end tests' screen and set, clips, the programs, facts of /proc."""

import contextlib
import os
import shutil
import subprocess
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path

from harness.player import Log, Player, Tv
from harness.screen import UNTIL_WE_END, Screen, stop_process
from harness.service import Service
from harness.waiting import wait_until
from wayland_trace import ITEM, Trace, since, stamp_of

PLAYER, MPV = "player", "mpv"
FULL_HD, UHD = (1920, 1080), (3840, 2160)
FRAMES_PER_SECOND = 30
FILM_SECONDS = 10


class Run:
    """One start of the player or of mpv, and the compositor that shows it."""

    def __init__(self, process, compositor_pid, started):
        self._process = process
        self._compositor_pid = compositor_pid
        self._started = started
        self.pid = process.pid
        self.log = process.log
        self._lines_read = 0
        self.items = 0
        self.item = ""  # the latest of them, as the program names it

    def catch_up(self, count=float("inf")):
        """Looks at what the program has written since the last time, up to its count-th item."""
        # Each line is looked at once: over thousands of changes there are very many.
        lines = self.log.lines
        while self.items < count and self._lines_read < len(lines):
            found = ITEM.search(lines[self._lines_read])
            self._lines_read += 1
            if found:
                self.items += 1
                self.item = found[1] or found[2]

    def wait_item(self, count, deadline_s=120):
        """Waits until the program has come to its count-th item."""
        end = time.monotonic() + deadline_s
        while True:
            self.catch_up(count)
            if self.items >= count:
                return
            if time.monotonic() > end:
                raise RuntimeError(f"no item {count} within {deadline_s} s")
            self.watch(0.005)

    def wait(self, pattern):
        """Waits for a line of output that matches."""
        self.log.wait(pattern, deadline_s=120)

    def watch(self, seconds):
        """Lets it run, which it must survive."""
        time.sleep(seconds)
        if not self._process.running():
            raise RuntimeError(f"the program ended by itself, with {self._process.process.returncode}: "
                               + "\n".join(self.log.lines[-10:]))

    def wait_picture(self, deadline_s=300):
        """Waits until a picture of the film is there."""
        end = time.monotonic() + deadline_s
        while not self.trace().pictures():
            if time.monotonic() > end:
                raise RuntimeError(f"no picture within {deadline_s} s")
            self.watch(0.1)

    def trace(self):
        """What it has presented so far."""
        return Trace(self.log.lines[:])

    def end(self):
        """Ends it; returns its trace."""
        stop_process(self._process.process)
        self.log.join()
        return self.trace()

    def first_picture(self, trace):
        """Milliseconds from the start of the program to its first picture."""
        return since(stamp_of(self._started), trace.first_shown())

    def ticks(self):
        """Processor time so far, in ticks: the program's and the compositor's."""
        return ticks(self.pid), ticks(self._compositor_pid)

    def memory(self, field):
        """A field of /proc/PID/status that counts memory, in MB of a million bytes."""
        return status(f"/proc/{self.pid}/status", field) * 1024 / 1e6

    def private(self):
        """What it has written that nobody shares, in MB of a million bytes."""
        return private(self.pid)

    def compositor_private(self):
        """The same of the compositor."""
        return private(self._compositor_pid)

    def threads(self):
        return len(os.listdir(f"/proc/{self.pid}/task"))

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.pid}/fd"))

    def context_switches(self):
        """Of all threads, with those that were forced."""
        return sum(status(f"/proc/{self.pid}/task/{task}/status", field)
                   for task in os.listdir(f"/proc/{self.pid}/task")
                   for field in ("voluntary_ctxt_switches", "nonvoluntary_ctxt_switches"))


def ticks(pid):
    """Processor time of a process, in hundredths of a second."""
    fields = Path(f"/proc/{pid}/stat").read_text(errors="replace").rsplit(")", 1)[1].split()
    return int(fields[11]) + int(fields[12])


def status(path, field):
    """The number in the line of a status file that begins with the field's name."""
    for line in Path(path).read_text(errors="replace").splitlines():
        if line.startswith(f"{field}:"):
            return int(line.split()[1])
    raise KeyError(f"{path} has no {field}")


def private(pid):
    """What a process has written that nobody shares, in MB of a million bytes. Libraries as they are on
    the disk do not count: they are nobody else's or not as other programs come and go."""
    return status(f"/proc/{pid}/smaps_rollup", "Private_Dirty") * 1024 / 1e6


@dataclass
class Stage:
    """A folder with the content made so far, and the sets that have been switched on. A set keeps its
    home folder from start to start, so that caches which are written once are there."""

    build: Path
    root: Path
    sets: dict = field(default_factory=dict)

    def _set(self, size):
        if size not in self.sets:
            folder = Path(tempfile.mkdtemp(prefix="set-", dir=self.root))
            # By this folder's name what is left over of a set is found, and of no other bench's.
            screen_folder = folder / folder.name
            screen_folder.mkdir()
            screen = Screen(str(screen_folder), *size).start()
            self.sets[size] = Tv(str(folder), str(self.build), screen).start_bus()
        return self.sets[size]

    def switch_off(self):
        for tv in self.sets.values():
            tv.finish()
            tv.screen.stop()

    @contextlib.contextmanager
    def run(self, who, folder, *, size=FULL_HD, loop_file=False, traced=False,
            log_level="info", mpv_options=(), **settings):
        """Plays the folder with the player or with mpv, on a set with such sections of tv.conf. Yields
        the run and the screen; at the end the program is ended, if the block has not done so."""
        tv = self._set(size)
        tv.configure(**settings)
        environment = {"WAYLAND_DEBUG": "1"} if traced else {}
        started = time.time()
        if who == PLAYER:
            process = tv.start(folder=folder, OSTREL_DEMO_LOG_LEVEL=log_level, **environment)
        else:
            process = start_mpv(tv, folder, loop_file, environment, mpv_options)
        run = Run(process, tv.screen.compositor.pid, started)
        try:
            yield run, tv.screen
        finally:
            run.end()

    @contextlib.contextmanager
    def kept_alive(self, content):
        """Plays the folder with the player under the service manager's stand-in. Yields that and the
        screen once there is a picture; no earlier player is held against this one."""
        tv = self._set(FULL_HD)
        tv.configure()
        Path(tv.memory_dir, "start").unlink(missing_ok=True)
        service = Service(tv, content, OSTREL_DEMO_LOG_LEVEL="info", **tv.faulty())
        try:
            with service:
                service.wait_back(life=0)
                wait_until(lambda: tv.screen.shown() != "black", "a picture")
                yield service, tv.screen
        finally:
            stop_process(service.lives[-1].process)

    def folder(self, name, fill):
        """A folder of content, filled once with fill(folder)."""
        folder = self.root / name
        if not folder.exists():
            folder.mkdir()
            fill(folder)
        return folder

    def film(self, seconds):
        """A 1080p30 film with sound, made once."""
        path = self.root / f"film-{seconds}.mp4"
        if not path.exists():
            make_clip(path, "1920x1080", seconds, "-b:v", "6M", "-bf", "2")
        return path

    def one_film(self):
        """A folder with nothing but a film of FILM_SECONDS."""
        return self.folder("one-film", lambda made: shutil.copy(self.film(FILM_SECONDS), made))

    def small_clip(self):
        """A clip of 0.12 s, over before anything but the change itself takes time."""
        path = self.root / "small.mp4"
        if not path.exists():
            make_clip(path, "320x180", 0.12)
        return path


def start_mpv(tv, content, loop_file, environment, options):
    """mpv in place of the player: the same folder, over and over, decoded by software and given to
    the compositor through shared memory, as the player does."""
    command = ["mpv", "--no-config", "--vo=wlshm", "--ao=null", "--fs", "--hwdec=no", "--no-osc",
               "--osd-level=0", "--quiet", "--prefetch-playlist=yes",
               # Its window must not be larger than the screen, even for a moment.
               "--autofit-larger=100%x100%", *options,
               "--loop-file=inf" if loop_file else "--loop-playlist=inf", *sorted(content.iterdir())]
    process = subprocess.Popen([*UNTIL_WE_END, *command], stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               start_new_session=True, env={**tv.environment(), **environment})
    log = Log(process.stdout, os.path.join(tv.folder, "mpv.log"))
    return Player(process, log, os.devnull)


def make_clip(path, size, seconds, *options):
    """An H.264 and AAC clip of a moving test picture."""
    subprocess.run(
        ["ffmpeg", "-nostdin", "-loglevel", "error",
         "-f", "lavfi", "-i", f"testsrc2=size={size}:rate={FRAMES_PER_SECOND}",
         "-f", "lavfi", "-i", "sine=sample_rate=48000",
         "-t", str(seconds), "-c:v", "libx264", "-preset", "fast", "-pix_fmt", "yuv420p", *options,
         "-c:a", "aac", str(path)], check=True)


def decoding_ticks(film):
    """Processor time, in ticks, that it takes to decode a film's pictures and nothing else."""
    before = os.times()
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-i", str(film), "-map", "0:v",
                    "-f", "null", "-"], check=True)
    after = os.times()
    return (after.children_user + after.children_system
            - before.children_user - before.children_system) * 100


@contextlib.contextmanager
def staged(build):
    """A stage as long as the block lasts."""
    root = Path(tempfile.mkdtemp(prefix="bench-"))
    stage = Stage(build, root)
    try:
        yield stage
    finally:
        stage.switch_off()
        shutil.rmtree(root, ignore_errors=True)

