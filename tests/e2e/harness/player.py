"""The player as a process: started, steered, read and audited from outside."""

import contextlib
import json
import os
import re
import shutil
import signal
import struct
import subprocess
import tempfile
import threading
import time
from collections import namedtuple

from . import audit
from .screen import UNTIL_WE_END, stop_process
from .waiting import DEADLINE_S, wait_served, wait_until

OWN_KEYS = "ostrel-demo-player-tv"
PLAYBACK_STATUS = f"memory/{OWN_KEYS}/playback_status"
DEMO_MODE = f"db/{OWN_KEYS}/demo_mode"
FILE_MODE = f"db/{OWN_KEYS}/file_mode"
USE_MODE = "db/menu/support/use_mode"
RELAUNCH_TIMER = "memory/usb-launcher-service/start_relaunch_timer"

# What may be done to a faulty() player.
STAND, GROW = signal.SIGRTMIN + 1, signal.SIGRTMIN + 2

# In the order of the words in the file that tests/preload/shortage.cpp reads.
SHORTAGES = ("clock_ahead_s", "no_threads", "no_memory", "largest_block")
Costs = namedtuple("Costs", "allocations threads descriptors")


def obeying_permissions():
    """A command prefix under which file permissions count even for root."""
    if os.getuid() != 0:
        return ()
    return ("setpriv", "--bounding-set=-dac_override,-dac_read_search")


class Log:
    """The player's output, line by line as it comes."""

    def __init__(self, stream, copy_path):
        self.lines = []
        self.times = []
        self._stream = stream
        self._copy_path = copy_path
        self._news = threading.Condition()
        self._ended = False
        self._thread = threading.Thread(target=self._read, daemon=True)
        self._thread.start()

    def _read(self):
        with open(self._copy_path, "ab") as copy:
            for raw in self._stream:
                copy.write(raw)
                copy.flush()
                with self._news:
                    self.lines.append(raw.decode(errors="backslashreplace").rstrip("\n"))
                    self.times.append(time.monotonic())
                    self._news.notify_all()
        with self._news:
            self._ended = True
            self._news.notify_all()

    def join(self):
        self._thread.join(DEADLINE_S)

    def position(self):
        """Where the log stands now, to be handed to wait() as `after`."""
        return len(self.lines)

    def find_all(self, pattern, after=0):
        """Each match with the time at which its line was read."""
        expression = re.compile(pattern)
        found = []
        for index in range(after, len(self.lines)):
            match = expression.search(self.lines[index])
            if match:
                found.append((self.times[index], match))
        return found

    def wait(self, pattern, after=0, count=1, deadline_s=DEADLINE_S):
        """Waits for the count-th line that matches, and returns its match."""
        expression = re.compile(pattern)
        end = time.monotonic() + deadline_s
        index = after
        with self._news:
            while True:
                while index < len(self.lines):
                    match = expression.search(self.lines[index])
                    index += 1
                    if match:
                        count -= 1
                        if count == 0:
                            return match
                left = end - time.monotonic()
                if left <= 0 or self._ended:
                    tail = "\n".join(self.lines[-25:])
                    why = "the player ended" if self._ended else f"{deadline_s:.0f} s went by"
                    raise AssertionError(f"no line matches {pattern!r}: {why}; the log ends\n{tail}")
                self._news.wait(left)


class Player:
    """One start of the program."""

    def __init__(self, process, log, output_path):
        self.process = process
        self.log = log
        self._output_path = output_path
        self.tolerated = []

    @property
    def pid(self):
        return self.process.pid

    def output(self):
        """What the program wrote to its standard output."""
        with open(self._output_path, encoding="utf-8") as file:
            return file.read()

    def running(self):
        return self.process.poll() is None

    def wait_end(self, deadline_s=DEADLINE_S):
        """Waits until the program has ended by itself; returns its status."""
        wait_until(lambda: not self.running(),
                   lambda: "the player's end; its log ends\n" + "\n".join(self.log.lines[-15:]),
                   deadline_s)
        self.log.join()
        return self.process.returncode

    def terminate(self):
        self.process.terminate()
        return self.wait_end()

    def tolerate(self, *patterns):
        """Names error lines that this scenario is about."""
        self.tolerated.extend(patterns)

    def open_files(self):
        """What its descriptors stand for: paths, or what the system calls a socket or pipe."""
        folder = f"/proc/{self.pid}/fd"
        names = []
        for number in os.listdir(folder):
            with contextlib.suppress(FileNotFoundError):
                names.append(os.readlink(f"{folder}/{number}"))
        return names

    def cpu_seconds(self):
        with open(f"/proc/{self.pid}/stat", encoding="ascii", errors="replace") as file:
            fields = file.read().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


    def memory_kb(self):
        """Memory of its own, in kB: no files, and nothing that it shares."""
        with open(f"/proc/{self.pid}/status", encoding="ascii", errors="replace") as file:
            return int(re.search(r"^RssAnon:\s+(\d+) kB$", file.read(), re.MULTILINE).group(1))


class Tv:
    """A set as it leaves the factory: its own state, bus and tv.conf, and a screen to play on."""

    def __init__(self, folder, build_dir, screen):
        self.folder = folder
        self.build_dir = build_dir
        self.screen = screen
        self.program = os.path.join(build_dir, "src", "ostrel-demo-player-tv")
        self.state_dir = os.path.join(folder, "state")
        self.memory_dir = os.path.join(folder, "memory")
        self.conf = os.path.join(folder, "tv.conf")
        self._costs = os.path.join(folder, "costs")
        self._faults = os.path.join(folder, "faults")
        self._shortage = os.path.join(folder, "shortage")
        self.players = []
        self._mark = os.path.basename(screen.folder)
        self._short = tempfile.mkdtemp(prefix="bus-")
        self.bus_address = f"unix:path={self._short}/bus"
        self._bus = None
        self.configure()

    def start_bus(self):
        with open(os.path.join(self.folder, "bus.log"), "wb") as log:
            self._bus = subprocess.Popen(
                [*UNTIL_WE_END, "dbus-daemon", "--session", "--nofork", "--nopidfile",
                 f"--address={self.bus_address}"], stdout=log, stderr=log, start_new_session=True)
        wait_served(f"{self._short}/bus", "the session bus")
        return self

    def kill_bus(self):
        """Ends the session bus as a crash would; start_bus() brings it back."""
        self._bus.kill()
        self._bus.wait()
        os.unlink(f"{self._short}/bus")

    def configure(self, **sections):
        """Writes tv.conf: configure(panel={"rotator": "yes"}, usb={"mounts": "/a:/b"})."""
        with open(self.conf, "w", encoding="utf-8") as file:
            for section, values in sections.items():
                file.write(f"[{section}]\n")
                file.writelines(f"{key} = {value}\n" for key, value in values.items())

    def environment(self):
        kept = {name: os.environ[name] for name in
                ("PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS") if name in os.environ}
        return {
            **kept,
            "HOME": str(self.folder),
            # A new home would have every player look through all plugins of the media system.
            "GST_REGISTRY_1_0": os.path.join(self.build_dir, "tests", "gstreamer-registry"),
            "LANG": "C.UTF-8",
            "XDG_RUNTIME_DIR": self.screen.runtime_dir,
            "WAYLAND_DISPLAY": self.screen.socket,
            "DBUS_SESSION_BUS_ADDRESS": self.bus_address,
            # No system bus and no sound server: what is tested shall not hang on the machine.
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self._short}/no-system-bus",
            "PULSE_SERVER": f"unix:{self._short}/no-sound",
            "OSTREL_DEMO_AUDIO_SINK": "fakesink",
            "OSTREL_DEMO_TV_CONF": self.conf,
            "OSTREL_DEMO_STATE_DIR": self.state_dir,
            "OSTREL_DEMO_RUNTIME_DIR": self.memory_dir,
            "OSTREL_DEMO_LOG_LEVEL": "debug",
            "OSTREL_E2E_MARK": self._mark,
        }

    def start(self, *arguments, folder=None, prefix=(), **environment):
        """Starts the player. With `folder` it plays that folder's contents."""
        command = [*prefix, self.program]
        if folder is not None:
            # The launcher hands over the folder as a prefix of file names, so it ends in a slash.
            command += ["--demo_player_mode", "folder_contents_player",
                        "--folder_path", os.fsencode(folder) + b"/"]
        return self._run([*command, *arguments], environment)

    def _run(self, command, environment):
        stem = os.path.join(self.folder, f"player-{len(self.players)}")
        with open(f"{stem}.out.log", "wb") as output:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=subprocess.PIPE, start_new_session=True,
                                       env={**self.environment(), **environment})
        player = Player(process, Log(process.stderr, f"{stem}.log"), f"{stem}.out.log")
        self.players.append(player)
        if self.screen.player is None or not self.screen.player.running():
            self.screen.player = player
        return player

    def start_standby(self, **environment):
        """Starts the program that shows the standby card beneath the player,"""
        program = os.path.join(self.build_dir, "tools", "standby", "ostrel-demo-standby")
        return self._run([program], {
            "OSTREL_DEMO_RESOURCE_DIR": os.path.join(self.build_dir, "res"), **environment})

    def _preloaded(self, name, **environment):
        """Environment for start(): a library of tests/preload comes before the player's own."""
        library = os.path.join(self.build_dir, "tests", "preload", f"lib{name}.so")
        assert os.path.exists(library), f"not built: {library}"
        # A sanitizer wants to be the first library, but can do without.
        checks = os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"
        return {"LD_PRELOAD": library, "ASAN_OPTIONS": checks.lstrip(":"), **environment}

    def timers(self, speed, above=1.0):
        """Environment for start(): the toolkit's timers of at least `above` seconds run `speed` times
        as fast. The player itself knows nothing of it."""
        return self._preloaded("timer_speed", TIMER_SPEED=str(speed), TIMER_SPEED_ABOVE=str(above))

    @staticmethod
    def together(*environments):
        """Environment for start(): several of these."""
        libraries = ":".join(environment["LD_PRELOAD"] for environment in environments)
        return {name: value for environment in environments for name, value in environment.items()} \
            | {"LD_PRELOAD": libraries}

    def faulty(self):
        """Environment for start(): the signals STAND and GROW make it do so."""
        return self._preloaded("faults")

    def counted(self):
        """Environment for start(): what the player asks of the system is counted for costs()."""
        return self._preloaded("cost_counter", COST_COUNTER=self._costs)

    def costs(self):
        """Heap allocations, threads started and descriptors opened since the start."""
        with open(self._costs, "rb") as file:
            return Costs(*struct.unpack("=3Q", file.read()))

    def breakable(self):
        """Environment for start(): the player's storage is as break_storage() says."""
        return self._preloaded("storage_faults", STORAGE_FAULTS=self._faults)

    def break_storage(self, **faults):
        """Has each fault hold for what lies below its path, and no other one any more; their names are
        those of tests/preload/storage_faults.cpp. Without any, all is well again."""
        draft = f"{self._faults}.draft"
        with open(draft, "w", encoding="utf-8") as file:
            file.writelines(f"{fault} {path}\n" for fault, path in faults.items())
        os.replace(draft, self._faults)

    def scarce(self, **what):
        """Environment for start(): what is short from the start on, and can be changed by short()."""
        with open(self._shortage, "wb") as file:
            file.write(bytes(8 * len(SHORTAGES)))
        self.short(**what)
        given = self._preloaded("shortage", SHORTAGE=self._shortage)
        # The library itself tells of crashes.
        return {**given, "ASAN_OPTIONS": given["ASAN_OPTIONS"] + ":handle_segv=0"}

    def short(self, **what):
        """Changes what is short from now on; tests/preload/shortage.cpp explains each."""
        with open(self._shortage, "r+b") as file:
            for name, value in what.items():
                file.seek(8 * SHORTAGES.index(name))
                file.write(struct.pack("=q", value))

    def relaunch(self, *arguments, folder=None):
        """A second start, which hands its request to the running player and ends."""
        second = self.start(*arguments, folder=folder)
        assert second.wait_end() == 0
        return second

    def tvctl(self, *arguments, check=True):
        tool = os.path.join(self.build_dir, "tools", "tvctl", "tvctl")
        done = subprocess.run([tool, *arguments], env=self.environment(), capture_output=True,
                              timeout=DEADLINE_S, check=False)
        if check:
            assert done.returncode == 0, f"tvctl {arguments}: {done.stdout} {done.stderr}"
        return done

    def status(self):
        """What a running player tells of itself."""
        return json.loads(self.tvctl("status", "--json").stdout)

    def position(self):
        """Seconds that the video on the screen has been playing for."""
        return (self.status()["player"]["position_ms"] or 0) / 1000

    def wait_position(self, seconds):
        wait_until(lambda: self.position() >= seconds, f"{seconds:.1f} s of the video")

    def press(self, key):
        """A key of the set's remote control, by the set's own name."""
        self.tvctl("key", key)

    def key_file(self, key):
        """Where a key's value lies."""
        return os.path.join(self.state_dir if key.startswith("db/") else self.memory_dir, key)

    def config(self, key):
        """The integer stored under the key, None when there is none."""
        try:
            with open(self.key_file(key), encoding="ascii") as file:
                return int(file.read())
        except FileNotFoundError:
            return None

    def set_config(self, key, value):
        """Stores an integer as another service of the set would."""
        path = self.key_file(key)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        draft = os.path.join(self.folder, "key-draft")
        with open(draft, "w", encoding="ascii") as file:
            file.write(f"{value}\n")
        shutil.move(draft, path)

    def wait_config(self, key, value):
        wait_until(lambda: self.config(key) == value,
                   lambda: f"{key} = {value}; it is {self.config(key)}")

    def finish(self):
        """Ends what still runs and returns everything that was not in order."""
        problems = []
        for number, player in enumerate(self.players):
            if player.running():
                player.process.terminate()
                try:
                    status = player.process.wait(DEADLINE_S)
                except subprocess.TimeoutExpired:
                    problems.append(f"player {number} did not end on SIGTERM")
                    player.process.send_signal(signal.SIGABRT)
                    stop_process(player.process)
                    status = None
                if status:
                    problems.append(f"player {number} ended with status {status}")
            player.log.join()
            for line in audit.unexpected_lines(player.log.lines, player.tolerated):
                problems.append(f"player {number} wrote: {line}")
        left = audit.processes_marked(self._mark)
        if left:
            problems.append(f"processes left behind: {left}")
            for process in left:
                os.kill(process, signal.SIGKILL)
        if self._bus is not None:
            stop_process(self._bus)
        shutil.rmtree(self._short, ignore_errors=True)
        return problems
