"""A real sound server of the test's own, with sinks that swallow what they are given."""

import json
import os
import subprocess

from .screen import UNTIL_WE_END, stop_process
from .waiting import wait_until


class SoundServer:
    """PulseAudio where the set of the test looks for it; the first sink is the default one."""

    def __init__(self, tv, *sinks):
        self._environment = tv.environment()
        address = self._environment["PULSE_SERVER"]
        path = address.removeprefix("unix:")
        modules = [f"module-native-protocol-unix auth-anonymous=1 socket={path}"]
        modules += [f"module-null-sink sink_name={name}" for name in sinks]
        command = ["pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
                   "--disable-shm", *[f"--load={module}" for module in modules]]
        with open(os.path.join(tv.folder, "sound-server.log"), "ab") as log:
            self._process = subprocess.Popen(
                [*UNTIL_WE_END, *command], stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                start_new_session=True,
                env={**self._environment, "XDG_RUNTIME_DIR": os.path.dirname(path)})
        wait_until(lambda: os.path.exists(path) or self._process.poll() is not None,
                   "the sound server")
        assert self._process.poll() is None, f"it did not start; see {tv.folder}/sound-server.log"
        self.pactl("set-default-sink", sinks[0])

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
