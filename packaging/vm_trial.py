#!/usr/bin/python3
"""Drives the virtual machine that packaging/test-in-vm.sh has made, and watches its screen.

    packaging/vm_trial.py [--kvm] WORK CUTS

Boots WORK/root; leaves WORK/result. Ends with status 1 when something was not seen.
"""

import argparse
import glob
import json
import os
import re
import select
import shutil
import socket
import subprocess
import sys
import time

import numpy
from PIL import Image, ImageDraw, ImageFont

FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
CONTENT = "/opt/data/demo_movie"
CARD_GROUND = (22, 38, 66)

# What lies on the stick of each file system: its colour tells that it is the one on the screen.
STICKS = {"vfat": (0, 80, 190), "exfat": (0, 130, 120), "ntfs": (120, 0, 140), "ext4": (110, 120, 0)}
MAKE = {"vfat": "mkfs.vfat -n DEMO", "exfat": "mkfs.exfat -L DEMO", "ntfs": "mkfs.ntfs -q -f -F -L DEMO",
        "ext4": "mkfs.ext4 -q -L DEMO"}


class Machine:
    """One boot of the machine: from its power switch to the cut, or to its own end."""

    def __init__(self, work, kvm):
        self.work = work
        self.console = b""
        self.commands = 0
        for name in ("qmp", "console"):
            if os.path.exists(f"{work}/{name}"):
                os.unlink(f"{work}/{name}")
        kernel, = glob.glob(f"{work}/root/boot/vmlinuz-*")
        accelerator = ["-accel", "kvm", "-cpu", "host"] if kvm else [
            "-accel", "tcg,thread=multi,tb-size=512", "-cpu", "max"]
        self.process = subprocess.Popen(
            ["qemu-system-x86_64", "-machine", "q35", *accelerator, "-smp", "2", "-m", "2048",
             "-kernel", kernel, "-initrd", kernel.replace("vmlinuz", "initrd.img"),
             "-append", "root=/dev/vda rw console=ttyS0 mitigations=off quiet loglevel=3 "
                        "systemd.show_status=no vt.global_cursor_default=0",
             "-no-reboot", "-nic", "none", "-display", "none",
             "-drive", f"file={work}/disk.img,format=raw,if=virtio",
             "-vga", "none", "-device", "bochs-display", "-device", "qemu-xhci",
             "-device", "usb-kbd", "-audiodev", "none,id=sound",
             "-device", "ich9-intel-hda", "-device", "hda-output,audiodev=sound",
             "-qmp", f"unix:{work}/qmp,server=on,wait=off",
             "-serial", f"unix:{work}/console,server=on,wait=off"])
        self._line = self._connect("console")
        qmp = self._connect("qmp").makefile("rw")
        self._qmp = qmp
        qmp.readline()
        self.qmp("qmp_capabilities")

    def _connect(self, name):
        end = time.monotonic() + 30
        while True:
            line = socket.socket(socket.AF_UNIX)
            try:
                line.connect(f"{self.work}/{name}")
                return line
            except OSError:
                line.close()
                if time.monotonic() > end or self.process.poll() is not None:
                    raise
                time.sleep(0.1)

    def qmp(self, command, **arguments):
        self._qmp.write(json.dumps({"execute": command, "arguments": arguments}) + "\n")
        self._qmp.flush()
        while True:
            answer = json.loads(self._qmp.readline())
            if "error" in answer:
                raise RuntimeError(f"{command}: {answer['error']['desc']}")
            if "return" in answer:
                return answer["return"]

    def read(self, pattern, after, deadline_s):
        """Waits for a pattern on the console."""
        end = time.monotonic() + deadline_s
        while True:
            found = re.search(pattern, self.console[after:], re.S)
            if found:
                return found
            if time.monotonic() > end or self.process.poll() is not None:
                raise TimeoutError(f"waited {deadline_s} s in vain for {pattern} on the console")
            if select.select([self._line], [], [], 0.2)[0]:
                data = self._line.recv(65536)
                self.console += data
                with open(f"{self.work}/result/console.log", "ab") as log:
                    log.write(data)

    def run(self, command, deadline_s=300):
        """Runs a line of shell in the machine, as root; returns its status and what it printed."""
        self.commands += 1
        after = len(self.console)
        # The quotes keep the command's own echo from looking like its end.
        self._line.sendall(f"{command}; echo EN''D{self.commands}=$?.\n".encode())
        end = self.read(rb"END%d=(\d+)\." % self.commands, after, deadline_s)
        text = self.console[after:after + end.start()].decode(errors="replace").replace("\r", "")
        return int(end.group(1)), text

    def log_in(self):
        self.read(rb"root@", 0, 600)
        self.run("stty -echo cols 4000; bind 'set enable-bracketed-paste off'; export TERM=dumb PAGER=cat PS1=")

    def uptime(self):
        """Seconds that have passed in the machine since its kernel began."""
        return float(re.search(r"([\d.]+) [\d.]+\n", self.run("cat /proc/uptime")[1]).group(1))

    def key(self, name):
        self.qmp("send-key", keys=[{"type": "qcode", "data": name}])

    def screen(self):
        path = f"{self.work}/screen.png"
        self.qmp("screendump", filename=path, format="png")
        with Image.open(path) as image:
            return image.convert("RGB")

    def tvctl(self, arguments):
        return self.run(f"ostrel-demo-kiosk tvctl {arguments}")

    def told(self, *names):
        """What the player's status says; None while it does not answer."""
        _, text = self.tvctl("status --json")
        try:
            value = json.loads(text[text.index("{"):text.rindex("}") + 1])
        except ValueError:
            return None
        for name in names:
            value = value[name]
        return value

    def plug(self, image):
        self.qmp("blockdev-add", driver="raw",
                 **{"node-name": "stick", "file": {"driver": "file", "filename": image}})
        self.qmp("device_add", driver="usb-storage", id="plugged", drive="stick", removable=True)

    def pull(self):
        self.qmp("device_del", id="plugged")
        end = time.monotonic() + 60
        while True:
            try:
                self.qmp("blockdev-del", **{"node-name": "stick"})
                return
            except RuntimeError:
                if time.monotonic() > end:
                    raise
                time.sleep(0.5)

    def cut(self):
        """The power goes; what the disk has not been given is lost."""
        self.process.kill()
        self.process.wait()


# ---- What is on the screen ------------------------------------------------------------------------

def share_of(colour):
    def share(image):
        pixels = numpy.asarray(image, dtype=int)
        return (abs(pixels - numpy.array(colour)).max(axis=2) < 24).mean()
    return share


def shows_card(image):
    """Its ground, and letters on it."""
    return share_of(CARD_GROUND)(image) > 0.7 and share_of((255, 255, 255))(image) > 0.002


def shows_stick(kind):
    return lambda image: share_of(STICKS[kind])(image) > 0.5


def shows_pictures(image):
    """The built-in content: sample films and photos, which are of many colours everywhere."""
    pixels = numpy.asarray(image.resize((64, 40)), dtype=int)
    if any(shows_stick(kind)(image) for kind in STICKS):
        return False
    return len({tuple(pixel) for pixel in (pixels // 32).reshape(-1, 3)}) > 24


class Trial:
    """The rows of the table and the pictures of the sheet."""

    def __init__(self, work, kvm):
        self.work = work
        self.kvm = kvm
        self.rows = []
        self.shots = []
        self.machine = None

    def say(self, what, seconds, seen):
        self.rows.append((what, seconds, seen))
        time_of = "" if seconds is None else f"{seconds:.1f} s"
        print(f"  {'seen    ' if seen else 'NOT SEEN'} {time_of:>8}  {what}", flush=True)

    def keep(self, name, image=None):
        path = f"{self.work}/result/{len(self.shots):02d}-{re.sub('[^a-z0-9]+', '-', name.lower())}.png"
        (image or self.machine.screen()).save(path)
        self.shots.append((name, path))

    def see(self, what, condition, keep=None, deadline_s=240, since=None):
        """Waits until the screen shows something; notes how long that took in the machine."""
        machine = self.machine
        began = machine.uptime() if since is None else since
        end = time.monotonic() + deadline_s
        while True:
            image = machine.screen()
            seen = bool(condition(image))
            if seen or time.monotonic() > end:
                break
            time.sleep(0.5)
        if keep:
            self.keep(keep, image)
        self.say(what, machine.uptime() - began, seen)
        return seen

    def check(self, what, seen, seconds=None):
        self.say(what, seconds, bool(seen))

    def boot(self, keep=None):
        self.machine = Machine(self.work, self.kvm)
        if keep:
            time.sleep(8)
            self.keep(keep)
        self.machine.log_in()

    def write(self):
        package, = glob.glob(f"{self.work}/packages/ostrel-demo-player-tv_*.deb")
        commit = re.search(r"\.g([0-9a-f]+)_", package).group(1)
        with open(f"{self.work}/result/result.md", "w", encoding="utf-8") as result:
            result.write(f"Commit {commit}, {time.strftime('%Y-%m-%d')}, "
                         f"{'with KVM' if self.kvm else 'without KVM'}.\n\n"
                         "| What | Seconds in the machine | Seen |\n|---|---|---|\n")
            for what, seconds, seen in self.rows:
                time_of = "" if seconds is None else f"{seconds:.1f}"
                result.write(f"| {what} | {time_of} | {'yes' if seen else '**no**'} |\n")
        columns, width, height, line = 4, 480, 300, 28
        rows = -(-len(self.shots) // columns)
        sheet = Image.new("RGB", (columns * (width + 8) + 8, rows * (height + line + 8) + 8), (32, 32, 32))
        draw = ImageDraw.Draw(sheet)
        font = ImageFont.truetype(FONT, 15)
        for number, (name, path) in enumerate(self.shots):
            x = 8 + number % columns * (width + 8)
            y = 8 + number // columns * (height + line + 8)
            with Image.open(path) as image:
                sheet.paste(image.convert("RGB").resize((width, height)), (x, y))
            draw.text((x, y + height + 3), name, font=font, fill="white")
        sheet.save(f"{self.work}/result/sheet.png")


# ---- The disk -------------------------------------------------------------------------------------

def prepare(work):
    """Content and sticks, as files in the machine, and the disk of it all."""
    root = f"{work}/root"
    subprocess.run(["chroot", root, "make-sample-content", "--quick", "/root/content"], check=True,
                   stdout=subprocess.DEVNULL)
    for kind, colour in STICKS.items():
        folder = f"{root}/root/sticks/{kind}/demo"
        os.makedirs(folder)
        image = Image.new("RGB", (1280, 800), colour)
        ImageDraw.Draw(image).text((120, 340), f"on the stick: {kind}", fill="white",
                                   font=ImageFont.truetype(FONT, 90))
        image.save(f"{folder}/Größe-日本-{kind}.jpg", quality=92)
        image.rotate(90, expand=True).save(f"{folder}/portrait_{kind}.jpg", quality=92)
        with open(f"{work}/{kind}.img", "wb") as disk:
            disk.truncate(96 << 20)
    if os.path.exists(f"{work}/disk.img"):
        os.unlink(f"{work}/disk.img")
    subprocess.run(["mke2fs", "-q", "-F", "-t", "ext4", "-d", root, f"{work}/disk.img", "6G"], check=True)


def fill_sticks(trial):
    """As staff would on another computer; the machine is the only one here that writes each kind."""
    machine = trial.machine
    # The kiosk would mount them for reading.
    rule = "/etc/udev/rules.d/90-ostrel-demo-kiosk.rules"
    machine.run(f"mv {rule} /root/ && udevadm control --reload")
    for kind in STICKS:
        machine.plug(f"{machine.work}/{kind}.img")
        status, text = machine.run(
            f"for i in $(seq 100); do [ -b /dev/sda ] && break; sleep .2; done; "
            f"{MAKE[kind]} /dev/sda && mount -t {'ntfs-3g' if kind == 'ntfs' else kind} /dev/sda /mnt && "
            f"cp -r /root/sticks/{kind}/demo /mnt/ && umount /mnt && sync")
        if status != 0:
            raise RuntimeError(f"the {kind} stick could not be filled: {text}")
        machine.pull()
        machine.run("for i in $(seq 100); do [ -b /dev/sda ] || break; sleep .2; done")
    machine.run(f"mv /root/{os.path.basename(rule)} {rule} && udevadm control --reload")


# ---- The trial ------------------------------------------------------------------------------------

def first_day(trial):
    """Out of the box, without content, until the demo plays."""
    trial.boot(keep="boot")
    machine = trial.machine
    trial.see("standby card after switching on", shows_card, keep="standby card", since=0)
    machine.run("until [ \"$(ostrel-demo-kiosk tvctl config get playback_status)\" = 2 ]; do sleep 1; done; sleep 2")
    trial.see("standby card without content", shows_card, keep="no content", since=0)
    trial.check("no console on the screen, no login prompt",
                machine.run("systemctl is-active getty@tty1")[0] != 0)
    fill_sticks(trial)
    began = machine.uptime()
    machine.run(f"cp /root/content/* {CONTENT}/")
    trial.see("demo after copying content", shows_pictures, keep="demo", since=began)


def keys(trial):
    machine = trial.machine
    machine.key("ret")
    trial.see("Return opens the options", lambda _: machine.told("popups_blocked"))
    time.sleep(5) # from the player's word to the screen
    trial.keep("options")
    machine.key("esc")
    trial.see("Escape closes them", lambda _: machine.told("popups_blocked") is False)
    before = machine.told("playing", "file")
    machine.key("right")
    trial.see("Right plays the next file", lambda _: machine.told("playing", "file") not in (None, before))
    trial.check("Ctrl+Alt+F2 leads nowhere", vt_is_the_demos(trial))


def vt_is_the_demos(trial):
    trial.machine.qmp("send-key", keys=[{"type": "qcode", "data": key} for key in ("ctrl", "alt", "f2")])
    return trial.machine.run("cat /sys/class/tty/tty0/active")[1].strip().endswith("tty1")


def sticks(trial):
    for kind in STICKS:
        began = trial.machine.uptime()
        trial.machine.plug(f"{trial.work}/{kind}.img")
        trial.see(f"{kind} stick plugged: its content", shows_stick(kind), keep=f"{kind} stick in", since=began)
        began = trial.machine.uptime()
        trial.machine.pull()
        trial.see(f"{kind} stick pulled: the set's own content", shows_pictures,
                  keep=f"{kind} stick out", since=began)


def broken_content(trial):
    machine = trial.machine
    began = machine.uptime()
    machine.run(f"mv {CONTENT} /root/good && install -d -g ostrel-content -m 2775 {CONTENT} && "
                f"for name in spring summer; do echo no film >{CONTENT}/$name.mp4; done")
    trial.see("nothing but broken files: the standby card names them", shows_card, keep="broken files",
              since=began)
    began = machine.uptime()
    machine.run(f"rm {CONTENT}/* && cp /root/good/* {CONTENT}/")
    trial.see("copied again: the demo is back", shows_pictures, since=began)


def ends(trial):
    """Each process that may end or stand still."""
    for name, unit, signal in (("player killed", "ostrel-demo-kiosk-player", "KILL"),
                               ("player crashed", "ostrel-demo-kiosk-player", "SEGV"),
                               ("player stopped", "ostrel-demo-kiosk-player", "STOP"),
                               ("compositor killed", "ostrel-demo-kiosk", "KILL")):
        machine = trial.machine
        before = machine.run(f"systemctl show -p MainPID --value {unit}")[1].strip()
        began = machine.uptime()
        machine.run(f"kill -{signal} {before}")
        if signal in ("KILL", "SEGV"):
            trial.see(f"{name}: the standby card", shows_card, keep=name, since=began)
        else:
            trial.keep(name)
        trial.see(f"{name}: the demo is back",
                  lambda image: shows_pictures(image) and machine.run(
                      f"systemctl show -p MainPID --value {unit}")[1].strip() not in (before, "0"),
                  keep=f"{name}: back", since=began)


def power_cuts(trial, cuts):
    machine = trial.machine
    kept = 0
    for number in range(cuts):
        # A choice in the very moment in which the power goes.
        old, new = kept, (kept + 1) % 10
        machine.run(f"ostrel-demo-kiosk tvctl config set landscape_timer {new} >/dev/null 2>&1 & "
                    f"sleep 0.{number % 10}")
        machine.cut()
        trial.boot(keep="power cut" if number == 0 else None)
        machine = trial.machine
        seen = trial.see(f"power cut {number + 1}: the demo is back", shows_pictures,
                         keep="after the power cut" if number == 0 else None, since=0)
        boot = re.search(r"= ([\d.]+)s|= (?:(\d+)min )?([\d.]+)s", machine.run("systemd-analyze | head -1")[1])
        text = machine.tvctl("config get landscape_timer")[1].strip()
        kept = int(text) if text.isdigit() else -1
        trial.check(f"power cut {number + 1}: choices as before or after the last one "
                    f"(machine's own start {boot.group(0)[2:] if boot else 'unknown'})", kept in (old, new))
        if not seen or kept < 0:
            kept = max(kept, 0)
    trial.check("no unit has failed", not machine.run("systemctl --failed --no-legend --plain")[1].strip())
    usage = re.search(r"take up ([\d.]+)([KMG])", machine.run("journalctl --disk-usage")[1])
    megabytes = float(usage.group(1)) * {"K": 1 / 1024, "M": 1, "G": 1024}[usage.group(2)] if usage else None
    trial.check(f"the journal takes {megabytes} MB, 64 at most", usage and megabytes <= 64)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--kvm", action="store_true")
    parser.add_argument("work")
    parser.add_argument("cuts", type=int)
    options = parser.parse_args()
    work = os.path.realpath(options.work)
    prepare(work)
    trial = Trial(work, options.kvm)
    try:
        for part in (first_day, keys, broken_content, sticks, ends):
            part(trial)
        power_cuts(trial, options.cuts)
    finally:
        if trial.machine:
            trial.machine.cut()
        trial.write()
    shutil.rmtree(f"{work}/root")
    print(f"== {work}/result/result.md, sheet.png")
    return 0 if all(seen for _, _, seen in trial.rows) else 1


if __name__ == "__main__":
    sys.exit(main())
