#!/usr/bin/python3
"""Drives the virtual machine that packaging/test-in-vm.sh has made, and watches its screen.

    packaging/trial/vm_trial.py [--kvm] WORK CUTS

Boots WORK/root; leaves WORK/result. Ends with status 1 when something was not seen.
"""

import argparse
import glob
import hashlib
import os
import re
import shutil
import statistics
import subprocess
import sys
import time

from PIL import Image, ImageDraw, ImageFont

from vm_machine import Machine
from vm_screen import (FONT, STICKS, draw_sheet, is_other, shows_card, shows_console, shows_pictures, shows_reasons,
                       shows_stick)

CONTENT = "/opt/data/demo_movie"
CHOICE = "landscape_timer"
MAKE = {"vfat": "mkfs.vfat -n DEMO", "exfat": "mkfs.exfat -L DEMO", "ntfs": "mkfs.ntfs -q -f -F -L DEMO",
        "ext4": "mkfs.ext4 -q -L DEMO"}
PLAYER, STANDBY, COMPOSITOR = "ostrel-demo-kiosk-player", "ostrel-demo-kiosk-standby", "ostrel-demo-kiosk"
INSTALL = "apt-get install -y -o Dpkg::Options::=--force-confold /root/{}/*.deb"


class Trial:
    """The rows of the table and the pictures of the sheet."""

    def __init__(self, work, kvm):
        self.work = work
        self.kvm = kvm
        self.rows = []
        self.shots = []
        self.machine = None
        self.console_seen = False

    def check(self, what, seen, seconds=None):
        self.rows.append((what, seconds, seen))
        time_of = "" if seconds is None else f"{seconds:.1f} s"
        print(f"  {'seen    ' if seen else 'NOT SEEN'} {time_of:>8}  {what}", flush=True)

    def keep(self, name, image=None):
        path = f"{self.work}/result/{len(self.shots):02d}-{re.sub('[^a-z0-9]+', '-', name.lower())}.png"
        (image or self.machine.screen()).save(path)
        self.shots.append((name, path))

    def screen(self):
        image = self.machine.screen()
        if shows_console(image) and not self.console_seen:
            self.console_seen = True
            image.save(f"{self.work}/result/console.png")
        return image

    def see(self, what, shows=lambda image: True, when=lambda: True, keep=None, since=None, within_s=None):
        """
        Waits until the screen shows something in a picture taken after a condition was met.

        Notes how long that took in the machine, since and at most within_s of its seconds. Returns the
        last picture.
        """
        machine = self.machine
        began = machine.uptime() if since is None else since
        end = time.monotonic() + 240
        while True:
            met = when()
            image = self.screen()
            seen = bool(met and shows(image))
            if seen or time.monotonic() > end:
                break
            time.sleep(0.5)
        if keep:
            self.keep(keep, image)
        seconds = machine.uptime() - began
        self.check(what, seen and (within_s is None or seconds < within_s), seconds)
        return image

    def boot(self):
        self.machine = Machine(self.work, self.kvm)
        self.machine.log_in(self.screen)

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
        draw_sheet(self.shots, f"{self.work}/result/sheet.png")


# ---- The disk -------------------------------------------------------------------------------------

def prepare(work):
    """Content and sticks, as files in the machine, and the disk of it all."""
    root = f"{work}/root"
    subprocess.run([f"{work}/unpacked/ostrel-demo-player-tv/usr/bin/make-sample-content", "--quick",
                    f"{root}/root/content"], check=True, stdout=subprocess.DEVNULL)
    for kind, colour in STICKS.items():
        folder = f"{root}/root/sticks/{kind}/demo"
        os.makedirs(folder)
        image = Image.new("RGB", (1280, 800), colour)
        ImageDraw.Draw(image).text((120, 340), f"on the stick: {kind}", fill="white",
                                   font=ImageFont.truetype(FONT, 90))
        image.save(f"{folder}/Größe-日本-{kind}.jpg", quality=92)
        image.rotate(90, expand=True).save(f"{folder}/portrait_{kind}.jpg", quality=92)
        with open(stick(work, kind), "wb") as disk:
            disk.truncate(96 << 20)
    if os.path.exists(f"{work}/disk.img"):
        os.unlink(f"{work}/disk.img")
    subprocess.run(["mke2fs", "-q", "-F", "-t", "ext4", "-d", root, f"{work}/disk.img", "6G"], check=True)


def stick(work, kind):
    return f"{work}/{kind}.img"


def fill_sticks(trial):
    """As staff would on another computer; the machine is the only one here that writes each kind."""
    machine = trial.machine
    for kind in STICKS:
        machine.plug(stick(machine.work, kind))
        status, text = machine.run(
            f"for i in $(seq 100); do [ -b /dev/sda ] && break; sleep .2; done; "
            f"{MAKE[kind]} /dev/sda && mount -t {'ntfs-3g' if kind == 'ntfs' else kind} /dev/sda /mnt && "
            f"cp -r /root/sticks/{kind}/demo /mnt/ && umount /mnt && sync")
        if status != 0:
            raise RuntimeError(f"the {kind} stick could not be filled: {text}")
        machine.pull()
        machine.run("for i in $(seq 100); do [ -b /dev/sda ] || break; sleep .2; done")


# ---- The trial ------------------------------------------------------------------------------------

def first_day(trial):
    """README.md's steps on the machine that runs, from the third on."""
    trial.boot()
    machine = trial.machine
    trial.see("a bare Debian 12 asks who logs in", shows_console, keep="bare Debian")
    fill_sticks(trial)
    began = machine.uptime()
    trial.check("step 3: the packages are installed", machine.run(INSTALL.format("packages"), 900)[0] == 0,
                machine.uptime() - began)
    trial.check("which takes nobody's screen", shows_console(machine.screen()))
    # This machine's processor draws in the place of a graphics card.
    machine.run(r"sed -i 's/^\[core\]$/[core]\nuse-pixman=true/' /etc/ostrel-demo-kiosk/weston.ini")
    began = machine.uptime()
    trial.check("step 4: on, without content", machine.run("ostrel-demo-kiosk on", 600)[0] == 0,
                machine.uptime() - began)
    trial.see("the standby card", shows_card, keep="on", since=began)
    trial.console_seen = False
    machine.run("until [ \"$(ostrel-demo-kiosk tvctl config get playback_status)\" = 2 ]; "
                "do sleep 1; done; sleep 3")
    no_content = trial.see("it says where content belongs", shows_card, keep="no content")
    began = machine.uptime()
    machine.plug(stick(trial.work, "vfat"))
    trial.see("step 5: a stick plugged: its content", shows_stick("vfat"), since=began)
    trial.check("and copied", machine.run("ostrel-demo-copy", 600)[0] == 0)
    began = machine.uptime()
    machine.pull()
    machine.run("sleep 30")
    trial.see("what was copied plays when the stick is gone", shows_stick("vfat"), since=began)
    began = machine.uptime()
    machine.run(f"rm {CONTENT}/* && cp /root/content/* {CONTENT}/")
    trial.see("other content copied by hand: the demo begins anew", shows_pictures, keep="demo", since=began)
    return no_content


def keys(trial):
    machine = trial.machine
    held = None

    def is_held():
        nonlocal held
        machine.key("h")
        time.sleep(3)
        held = machine.told("playing", "file")
        machine.run("sleep 12") # longer than each of them
        return held is not None and machine.told("playing", "file") == held

    trial.see("H holds", when=is_held)
    before = trial.screen()
    machine.key("ret")
    trial.see("Return opens the options", lambda image: is_other(image, before))
    time.sleep(3) # the whole popup, with its focus
    trial.keep("options")
    trial.check("the player says so as well", machine.told("popups_blocked"))
    machine.key("esc")
    trial.see("Escape closes them", lambda image: not is_other(image, before), within_s=25)
    trial.check("the next file has not come by itself", machine.told("playing", "file") == held)
    machine.key("right")
    trial.see("Right plays the next file", when=lambda: machine.told("playing", "file") not in (None, held),
              within_s=30)
    machine.key("p")
    machine.qmp("send-key", keys=[{"type": "qcode", "data": key} for key in ("ctrl", "alt", "f2")])
    consoles = set()
    for _ in range(8):
        time.sleep(1)
        consoles.add(machine.printed("cat /sys/class/tty/tty0/active")[-4:])
    trial.check("Ctrl+Alt+F2 leads nowhere", consoles == {"tty1"})


def broken_content(trial, no_content):
    machine = trial.machine
    began = machine.uptime()
    machine.run(f"rm {CONTENT}/* && for name in spring summer; do echo no film >{CONTENT}/$name.mp4; done")
    trial.see("nothing but broken files: a card names them, with the reasons",
              lambda image: shows_reasons(image) and is_other(image, no_content),
              when=lambda: "spring.mp4" in str(machine.told()), keep="broken files", since=began)
    began = machine.uptime()
    machine.run(f"rm {CONTENT}/* && cp /root/content/* {CONTENT}/")
    trial.see("good ones again: the demo is back", shows_pictures, since=began)


def sum_of(path):
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).digest()


def sticks(trial):
    machine = trial.machine
    for kind in STICKS:
        image = stick(trial.work, kind)
        before = sum_of(image)
        began = machine.uptime()
        machine.plug(image)
        trial.see(f"{kind} stick plugged: its content", shows_stick(kind), keep=f"{kind} stick in", since=began)
        began = machine.uptime()
        machine.pull()
        trial.see(f"{kind} stick pulled: the set's own content", shows_pictures,
                  keep=f"{kind} stick out", since=began)
        trial.check(f"{kind} stick: nothing is mounted any more, and nothing was written to it",
                    machine.run("findmnt -n -o TARGET | grep run/media")[0] == 1 and sum_of(image) == before)


def ends(trial, no_content):
    """Each process that may end or stand still."""
    machine = trial.machine
    for what, unit, signal in (("player killed", PLAYER, "KILL"), ("player crashed", PLAYER, "SEGV"),
                               ("player stopped", PLAYER, "STOP"), ("card killed", STANDBY, "KILL"), ("card stopped", STANDBY, "STOP"),
                               ("compositor killed", COMPOSITOR, "KILL"),
                               ("compositor stopped", COMPOSITOR, "STOP")):
        before = machine.process_of(unit)
        player = machine.process_of(PLAYER)
        began = machine.uptime()
        machine.run(f"kill -{signal} {before}")
        # What has been stopped is seen until its watchdog ends it.
        trial.see(f"{what}: the standby card",
                  lambda image: shows_card(image) and is_other(image, no_content),
                  keep=what if what == "player crashed" else None, since=began)
        trial.see(f"{what}: the demo is back", shows_pictures,
                  when=lambda: machine.process_of(unit) not in (before, "0") and
                  machine.process_of(PLAYER) not in (player, "0"), since=began,
                  keep=f"{what}: back" if what in ("player crashed", "compositor killed") else None)


def writes(trial):
    """What the manual of the kiosk says about it."""
    machine = trial.machine
    machine.run("sleep 130")
    written = machine.printed("find / -xdev -type f -mmin -1 | grep -v ^/var/log/journal/ | paste -sd ' '")
    trial.check(f"in a minute of play nothing but the journal is written{': ' if written else ''}{written}",
                not written)


def upgrade(trial):
    machine = trial.machine
    settings = "/etc/ostrel-demo-kiosk/tv.conf"
    machine.run(f"ostrel-demo-kiosk tvctl config set {CHOICE} 7; echo '# of this shop' >>{settings}")
    before = machine.process_of(PLAYER)
    began = machine.uptime()
    status, text = machine.run(INSTALL.format("later"), 900)
    trial.check("a later version is installed", status == 0 and "later" in
                machine.printed("dpkg-query -W ostrel-demo-kiosk"), machine.uptime() - began)
    trial.see("the demo is back", shows_pictures,
              when=lambda: machine.process_of(PLAYER) not in (before, "0"), since=began)
    trial.check("settings and choices are as they were", machine.run(f"grep -q '# of this shop' {settings}")[0] == 0
                and machine.tvctl(f"config get {CHOICE}")[1].strip() == "7")
    trial.check("a part of the system's configuration that is new in it is in force",
                machine.run("cat /etc/systemd/journald.conf.d/ostrel-demo-later.conf")[0] == 0)


def off_and_on(trial):
    """Returns how long the machine takes to start without the demo."""
    trial.check("off", trial.machine.run("ostrel-demo-kiosk off", 300)[0] == 0)
    trial.see("off: the login prompt is back", shows_console, keep="off")
    trial.machine.run("sync")
    trial.machine.cut()
    trial.boot()
    machine = trial.machine
    machine.run("systemctl is-system-running --wait")
    own = int(machine.printed("systemctl show -p ActiveEnterTimestampMonotonic --value multi-user.target")) / 1e6
    trial.see("off: a login prompt after switching on", shows_console, since=0)
    began = machine.uptime()
    trial.check("on", machine.run("ostrel-demo-kiosk on", 300)[0] == 0)
    trial.see("on: the demo", shows_pictures, since=began)
    trial.console_seen = False
    return own


def slowness(trial):
    """How many times longer this machine takes for a loop of the shell."""
    loop = "i=0; while [ $i -lt 300000 ]; do i=$((i+1)); done"
    began = time.monotonic()
    subprocess.run(["sh", "-c", loop], check=True)
    outside = time.monotonic() - began
    before = trial.machine.uptime()
    trial.machine.run(f"sh -c '{loop}'")
    return (trial.machine.uptime() - before) / outside


def power_cuts(trial, cuts, own):
    machine = trial.machine
    kept, losses, changed, seconds = 7, 0, 0, []
    machine.tvctl(f"config set {CHOICE} {kept}")
    machine.run("sync")
    for number in range(cuts):
        # A choice about the moment in which the power goes.
        new = (kept + 1) % 10
        machine.run(f"ostrel-demo-kiosk tvctl config set {CHOICE} {new} >/dev/null 2>&1 & "
                    f"sleep {number % 10 * 0.5:.1f}")
        machine.cut()
        trial.boot()
        machine = trial.machine
        if number == 0:
            trial.see("power cut 1: the standby card", shows_card, keep="power cut, and on again", since=0)
        trial.see(f"power cut {number + 1}: the demo is back", shows_pictures,
                  keep="after the power cut" if number == 0 else None, since=0)
        seconds.append(trial.rows[-1][1])
        found = machine.tvctl(f"config get {CHOICE}")[1].strip()
        changed += found == str(new)
        losses += found not in (str(kept), str(new))
        kept = int(found) if found.isdigit() else 7
    trial.check(f"each time with a choice as before ({cuts - changed - losses}) or after ({changed}) "
                "the one that was made as the power went", losses == 0)
    factor = slowness(trial)
    demo = statistics.median(seconds)
    trial.check(f"the demo comes {demo:.0f} s after switching on, without it the machine takes {own:.0f} s and is "
                f"{factor:.0f} times slower than the one it runs on: three seconds later at most there",
                (demo - own) / factor <= 3)


def last_words(trial):
    machine = trial.machine
    trial.check("no console's text on the screen since the demo was switched on", not trial.console_seen)
    trial.check("no unit has failed", not machine.printed("systemctl --failed --no-legend --plain"))
    usage = re.search(r"take up ([\d.]+)([KMG])", machine.printed("journalctl --disk-usage"))
    megabytes = float(usage.group(1)) * {"K": 1 / 1024, "M": 1, "G": 1024}[usage.group(2)] if usage else None
    trial.check(f"the journal takes {megabytes} MB, 64 at most", usage and megabytes <= 64)
    status, _ = machine.run("apt-get purge -y ostrel-demo-kiosk ostrel-demo-player-tv", 600)
    trial.check("purged", status == 0)
    trial.see("purged: a login prompt", shows_console, keep="purged")
    left = machine.printed("find / -xdev -name '*ostrel*' -not -path '/var/lib/dpkg/*' -not -path '/var/log/*' "
                           "-not -path '/root/*' -not -path '/proc/*' -not -path '/etc/systemd/system/*.d*' "
                           "| paste -sd ' '")
    trial.check(f"purged: nothing is left but content{': ' if left else ''}{left}",
                not left and machine.run(f"ls {CONTENT}/*")[0] == 0)


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
        no_content = first_day(trial)
        keys(trial)
        broken_content(trial, no_content)
        sticks(trial)
        ends(trial, no_content)
        writes(trial)
        upgrade(trial)
        own = off_and_on(trial)
        power_cuts(trial, options.cuts, own)
        last_words(trial)
    finally:
        if trial.machine:
            trial.machine.cut()
        trial.write()
    shutil.rmtree(f"{work}/root")
    print(f"== {work}/result/result.md, sheet.png")
    return 0 if all(seen for _, _, seen in trial.rows) else 1


if __name__ == "__main__":
    sys.exit(main())
