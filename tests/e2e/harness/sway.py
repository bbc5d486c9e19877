"""A second compositor: sway without a screen. It has what weston lacks, the protocols by which a
window has the compositor's shortcuts put aside and keeps the screen from blanking, and its screen
can be resized and turned. As a window of another one it can be unplugged, too."""

import glob
import io
import json
import os
import shutil
import signal
import subprocess

import numpy
from PIL import Image

from .screen import COLOURS, NEAR, UNTIL_WE_END, stop_process
from .waiting import wait_until

# It refuses to run as root.
SOMEBODY_ELSE = (("--reuid", "nobody", "--regid", "nogroup", "--clear-groups")
                 if os.geteuid() == 0 else ())


class SwayScreen:
    """sway with shortcuts of its own, each of which leaves a file named after it."""

    def __init__(self, folder, shortcuts, width=640, height=360):
        self.folder = folder
        self.width, self.height = width, height
        self.runtime_dir = os.path.join(folder, "run")
        self.socket = None
        self.player = None
        self._shortcuts = shortcuts
        self._processes = []

    def start(self):
        os.chmod(self.folder, 0o755)
        os.makedirs(self.runtime_dir, mode=0o700)
        if SOMEBODY_ELSE:
            shutil.chown(self.runtime_dir, "nobody", "nogroup")
        configuration = os.path.join(self.folder, "sway.conf")
        with open(configuration, "w", encoding="ascii") as file:
            file.write(f"output HEADLESS-1 resolution {self.width}x{self.height}\n")
            for name, keys in self._shortcuts.items():
                file.write(f"bindsym {keys} exec touch {self.runtime_dir}/{name}.fired\n")
        self._sway = self._spawn("sway", ["sway", "-c", configuration])
        wait_until(lambda: self._sockets() or self._sway.poll() is not None, "sway's socket")
        assert self._sway.poll() is None, f"sway did not start: {self._log('sway')}"
        self.socket = os.path.basename(self._sockets()[0])
        wait_until(lambda: self._answers("get_version"), "sway's answer")
        # A keyboard that stays plugged in: the others come and go with what they type.
        self._spawn("keyboard", ["wtype", "-s", "100000000", "-k", "space"])
        wait_until(lambda: self.ask("get_seats")[0]["capabilities"] & 2, "a keyboard")
        return self

    def stop(self):
        for process in reversed(self._processes):
            stop_process(process)
        self._processes.clear()
        shutil.rmtree(self.runtime_dir, ignore_errors=True)

    def _environment(self):
        return {"PATH": os.environ["PATH"], "HOME": self.runtime_dir,
                "XDG_RUNTIME_DIR": self.runtime_dir,
                "SWAYSOCK": os.path.join(self.runtime_dir, "sway.sock"),
                **({"WAYLAND_DISPLAY": self.socket} if self.socket else {}),
                "WLR_BACKENDS": "headless", "WLR_RENDERER": "pixman",
                "WLR_LIBINPUT_NO_DEVICES": "1"}

    def _sockets(self):
        return [path for path in glob.glob(os.path.join(self.runtime_dir, "wayland-*"))
                if not path.endswith(".lock")]

    def _spawn(self, name, command):
        with open(os.path.join(self.folder, f"{name}.log"), "ab") as log:
            process = subprocess.Popen([*UNTIL_WE_END, *SOMEBODY_ELSE, *command],
                                       stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                       env=self._environment(), start_new_session=True)
        self._processes.append(process)
        return process

    def _log(self, name):
        with open(os.path.join(self.folder, f"{name}.log"), errors="replace") as log:
            return log.read()[-1000:]

    def _run(self, *command):
        return subprocess.run([*UNTIL_WE_END, *SOMEBODY_ELSE, *command], timeout=30, check=False,
                              capture_output=True, env=self._environment())

    def _answers(self, question):
        return self._run("swaymsg", "-r", "-t", question).returncode == 0

    def ask(self, question):
        """An answer of sway's, for instance to get_tree."""
        done = self._run("swaymsg", "-r", "-t", question)
        assert done.returncode == 0, done.stderr
        return json.loads(done.stdout)

    def command(self, *words):
        """Has sway do something."""
        done = self._run("swaymsg", "--", *words)
        assert done.returncode == 0, done.stdout + done.stderr

    def window(self):
        """What sway knows about the player's window, or None while there is none."""
        def search(node):
            if node.get("app_id") == "ostrel-demo-player-tv":
                return node
            found = (search(child) for child in node["nodes"] + node["floating_nodes"])
            return next((one for one in found if one), None)
        return search(self.ask("get_tree"))

    def resize(self, width, height):
        """Changes the resolution of the screen."""
        self.command("output", "HEADLESS-1", "resolution", f"{width}x{height}")
        self.width, self.height = width, height

    def turn(self, transform):
        """Turns the screen: "90", "180", "270" or "normal"."""
        self.command("output", "HEADLESS-1", "transform", transform)
        longer, shorter = sorted((self.width, self.height), reverse=True)
        upright = transform in ("90", "270")
        self.width, self.height = (shorter, longer) if upright else (longer, shorter)

    def key(self, name, modifiers=()):
        """Types a key by its X name while the modifiers, by wtype's names, are held."""
        held = [word for modifier in modifiers for word in ("-M", modifier)]
        released = [word for modifier in modifiers for word in ("-m", modifier)]
        done = self._run("wtype", *held, "-k", name, *released)
        assert done.returncode == 0, done.stderr
        wait_until(lambda: self._keyboards() == 1, "the keyboard that typed to be unplugged")

    def _keyboards(self):
        return sum(device["type"] == "keyboard" for device in self.ask("get_inputs"))

    def fired(self):
        """Names of the shortcuts that sway has acted on."""
        return {os.path.basename(path).removesuffix(".fired")
                for path in glob.glob(os.path.join(self.runtime_dir, "*.fired"))}

    def picture(self):
        """The screen as it is now: an array of height x width x (red, green, blue)."""
        done = self._run("grim", "-t", "ppm", "-")
        assert done.returncode == 0, done.stderr
        return numpy.array(Image.open(io.BytesIO(done.stdout)).convert("RGB"))

    def save(self, path):
        Image.fromarray(self.picture()).save(path)

    def covered_by(self, name):
        """Whether the colour reaches into all four corners of a screen of the present size."""
        picture = self.picture()
        if picture.shape[:2] != (self.height, self.width):
            return False
        corners = picture[numpy.ix_([4, -5], [4, -5])].reshape(-1, 3).astype(float)
        away = numpy.linalg.norm(corners - numpy.array(COLOURS[name], dtype=float), axis=1)
        return bool((away < NEAR).all())

    def wait_for(self, name):
        wait_until(lambda: self.covered_by(name), f"{name} on the screen")

    def kill(self):
        self._sway.send_signal(signal.SIGKILL)
        self._sway.wait()


class UnpluggableScreen(SwayScreen):
    """sway in a window of another sway: with the window goes the only screen that it has."""

    def __init__(self, folder, wall):
        super().__init__(folder, {})
        self._wall = wall
        wall.command("default_border", "none")

    def _environment(self):
        window = {"WLR_BACKENDS": "wayland", "WLR_WL_OUTPUTS": "1",
                  "WAYLAND_DISPLAY": os.path.join(self._wall.runtime_dir, self._wall.socket)}
        return {**super()._environment(), **({} if self.socket else window)}

    def unplug(self):
        self._wall.command('[app_id=".*"]', "kill")
        wait_until(lambda: not self.ask("get_outputs"), "no screen")

    def plug(self):
        self.command("create_output")
        wait_until(lambda: self.ask("get_outputs"), "a screen")
