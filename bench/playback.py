#!/usr/bin/python3
"""Compares the player with mpv's wl_shm output on one 1080p30 H.264 clip, side by side.

Both play the same file, full screen, in the same software compositor, in turns, so that a busy
machine slows both. Printed are the CPU ticks (1/100 s) that the program and the compositor took in
each measured window, their ratio, and the frames a second that reached the compositor.

    packaging/install-missing.sh build run demo bench
    cmake -S . -B build -G Ninja && ninja -C build
    bench/playback.py --build build --rounds 3 --window 10
"""

import argparse
import os
import re
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

WIDTH, HEIGHT = 1920, 1080
WARM_UP = 4.0


def ticks(pid):
    """CPU ticks of a process and of the children it has waited for."""
    fields = Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return sum(int(field) for field in fields[11:15])


def wait_for(condition, what, deadline=20.0):
    end = time.monotonic() + deadline
    while time.monotonic() < end:
        if condition():
            return
        time.sleep(0.05)
    sys.exit(f"playback.py: {what} did not come up")


class Bench:
    """One X server with one compositor in it, and a folder with the clip."""

    def __init__(self, build):
        self.build = build
        self.root = Path(tempfile.mkdtemp(prefix="demo-bench-"))
        self.runtime = self.root / "runtime"
        self.runtime.mkdir(mode=0o700)
        self.content = self.root / "content"
        self.processes = []
        self.env = dict(
            os.environ,
            XDG_RUNTIME_DIR=str(self.runtime),
            XDG_CONFIG_HOME=str(self.root / "config"),
            XDG_STATE_HOME=str(self.root / "state"),
            WAYLAND_DISPLAY="bench",
            OSTREL_DEMO_AUDIO_SINK="fakesink",
            OSTREL_DEMO_LOG_LEVEL="warning",
        )
        self.env.pop("DISPLAY", None)
        self.env.pop("DBUS_SESSION_BUS_ADDRESS", None)

    def start(self, *command, **env):
        process = subprocess.Popen(
            command,
            env={**self.env, **env},
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            start_new_session=True,
        )
        self.processes.append(process)
        return process

    def stop(self, process):
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGTERM)
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
        self.processes.remove(process)

    def set_up(self):
        self.content.mkdir()
        maker = self.build / "tools/sample_content/make-sample-content"
        subprocess.run(
            [maker, "--only", "sunrise.mp4", "--seconds", "20", self.content],
            check=True,
            stdout=subprocess.DEVNULL,
        )
        self.clip = next(self.content.glob("*.mp4"))
        read, write = os.pipe()
        xvfb = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", f"{WIDTH}x{HEIGHT}x24"],
            pass_fds=[write],
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            start_new_session=True,
        )
        self.processes.append(xvfb)
        os.close(write)
        display = os.read(read, 16).decode().strip()
        config = self.root / "weston.ini"
        config.write_text("[core]\nshell=kiosk-shell.so\nidle-time=0\n")
        self.weston = self.start(
            "weston",
            "--backend=x11-backend.so",
            "--use-pixman",
            f"--width={WIDTH}",
            f"--height={HEIGHT}",
            "--socket=bench",
            f"--config={config}",
            DISPLAY=f":{display}",
        )
        wait_for(lambda: (self.runtime / "bench").exists(), "weston")

    def tear_down(self):
        for process in list(reversed(self.processes)):
            self.stop(process)
        shutil.rmtree(self.root, ignore_errors=True)

    def command(self, name):
        if name == "mpv":
            return [
                "mpv", "--no-config", "--vo=wlshm", "--ao=null", "--fs", "--loop=inf",
                "--hwdec=no", "--really-quiet", "--no-osc", "--osd-level=0", str(self.clip),
            ]
        return [
            str(self.build / "src/ostrel-demo-player-tv"),
            "--demo_player_mode", "folder_contents_player",
            "--folder_path", f"{self.content}/",
        ]

    def measure(self, name, window):
        process = self.start(*self.command(name))
        time.sleep(WARM_UP)
        if process.poll() is not None:
            sys.exit(f"playback.py: {name} ended by itself")
        before = ticks(process.pid), ticks(self.weston.pid)
        time.sleep(window)
        after = ticks(process.pid), ticks(self.weston.pid)
        self.stop(process)
        return after[0] - before[0], after[1] - before[1]

    def frames_per_second(self, name, window):
        """Counts the buffers attached to the busiest surface; a run of its own, for it is slow."""
        trace = self.root / f"{name}.trace"
        with trace.open("wb") as output:
            process = subprocess.Popen(
                self.command(name),
                env={**self.env, "WAYLAND_DEBUG": "1"},
                stdout=subprocess.DEVNULL,
                stderr=output,
                start_new_session=True,
            )
            self.processes.append(process)
            time.sleep(WARM_UP + window)
            self.stop(process)
        surfaces = {}
        pattern = re.compile(rb"\[\s*([\d.]+)\]\s+-> wl_surface@(\d+)\.attach")
        for stamp, surface in pattern.findall(trace.read_bytes()):
            surfaces.setdefault(surface, []).append(float(stamp) / 1000.0)
        stamps = max(surfaces.values(), key=len)
        stamps = [stamp for stamp in stamps if stamp >= stamps[-1] - window]
        return (len(stamps) - 1) / (stamps[-1] - stamps[0])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=Path, default=Path("build"))
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--window", type=float, default=10.0)
    options = parser.parse_args()
    for tool in ("mpv", "weston", "Xvfb"):
        if shutil.which(tool) is None:
            sys.exit(f"playback.py: {tool} is not installed")

    bench = Bench(options.build.resolve())
    try:
        bench.set_up()
        totals = {"player": [], "mpv": []}
        for number in range(1, options.rounds + 1):
            for name in totals:
                own, compositor = bench.measure(name, options.window)
                totals[name].append(own + compositor)
                print(
                    f"round {number}  {name:6}  program {own:4}  compositor {compositor:4}  "
                    f"together {own + compositor:4} ticks in {options.window:g} s",
                    flush=True,
                )
        ratio = statistics.median(totals["player"]) / statistics.median(totals["mpv"])
        print(f"player / mpv, medians: {ratio:.2f}")
        for name in totals:
            print(f"{name:6}  {bench.frames_per_second(name, options.window):.1f} frames a second")
    finally:
        bench.tear_down()


if __name__ == "__main__":
    main()
