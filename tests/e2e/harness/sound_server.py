"""A real sound server of the test's own, with sinks that swallow what they are given."""

import json
import os
import signal
import subprocess

from .screen import UNTIL_WE_END, stop_process
from .waiting import wait_until


class SoundServer:
    """PulseAudio where the set of the test looks for it; the first sink is the default one."""

    def __init__(self, tv, *sinks):
        self._environment = tv.environment()
        self._path = self._environment["PULSE_SERVER"].removeprefix("unix:")
        self._log = os.path.join(tv.folder, "sound-server.log")
        self._sinks = sinks
        self.start()

    def start(self):
        modules = [f"module-native-protocol-unix auth-anonymous=1 socket={self._path}"]
        modules += [f"module-null-sink sink_name={name}" for name in self._sinks]
        command = ["pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
                   "--disable-shm", *[f"--load={module}" for module in modules]]
        with open(self._log, "ab") as log:
            self._process = subprocess.Popen(
                [*UNTIL_WE_END, *command], stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                start_new_session=True,
                env={**self._environment, "XDG_RUNTIME_DIR": os.path.dirname(self._path)})
        wait_until(lambda: os.path.exists(self._path) or self._process.poll() is not None,
                   "the sound server")
        assert self._process.poll() is None, f"it did not start; see {self._log}"
        self.pactl("set-default-sink", self._sinks[0])

    def pactl(self, *arguments):
        done = subprocess.run(["pactl", "--format=json", *arguments], env=self._environment,
                              capture_output=True, text=True, timeout=30, check=True)
        return done.stdout

    def default_sink(self):
        return json.loads(self.pactl("info"))["default_sink_name"]

    def playing_on(self):
        """Names of the sinks to which programs play at the moment."""
        names = {sink["index"]: sink["name"] for sink in json.loads(self.pactl("list", "sinks"))}
        return [names[stream["sink"]] for stream in json.loads(self.pactl("list", "sink-inputs"))
                if not stream["corked"]]

    def stop(self):
        stop_process(self._process)

    def hold(self):
        """Has it answer nobody, until go_on()."""
        self._process.send_signal(signal.SIGSTOP)

    def go_on(self):
        self._process.send_signal(signal.SIGCONT)

    def kill(self):
        """Ends it as a crash would; start() brings it back."""
        self._process.kill()
        self._process.wait()
        os.unlink(self._path)
