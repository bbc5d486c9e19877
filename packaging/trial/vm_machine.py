"""A virtual machine in qemu, as vm_trial.py needs it: screen, keys, sticks, power switch, and a serial
line with a shell."""

import glob
import json
import os
import re
import select
import socket
import subprocess
import time

from PIL import Image

KIOSK = os.path.join(os.path.dirname(os.path.realpath(__file__)), "..", "kiosk")


def told_by_grub():
    """What GRUB tells the kernel of a machine with the kiosk, besides where its system is."""
    with open(f"{KIOSK}/etc/default/grub.d/ostrel-demo-kiosk.cfg", encoding="utf-8") as file:
        return re.search(r'^GRUB_CMDLINE_LINUX_DEFAULT="\$GRUB_CMDLINE_LINUX_DEFAULT (.*)"$', file.read(), re.M)[1]


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
        # The screen's own program would have the BIOS's text there, which is this machine's and no set's.
        self.process = subprocess.Popen(
            ["qemu-system-x86_64", "-machine", "q35", *accelerator, "-smp", "2", "-m", "2048",
             "-kernel", kernel, "-initrd", kernel.replace("vmlinuz", "initrd.img"),
             "-append", f"root=/dev/vda ro mitigations=off console=ttyS0 {told_by_grub()}",
             "-no-reboot", "-nic", "none", "-display", "none",
             "-drive", f"file={work}/disk.img,format=raw,if=virtio",
             "-vga", "none", "-device", "bochs-display,romfile=", "-device", "qemu-xhci",
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

    def read(self, pattern, after, deadline_s, meanwhile=lambda: None):
        """Waits for a pattern on the serial line."""
        end = time.monotonic() + deadline_s
        while True:
            found = re.search(pattern, self.console[after:], re.S)
            if found:
                return found
            if time.monotonic() > end or self.process.poll() is not None:
                raise TimeoutError(f"waited {deadline_s} s in vain for {pattern} on the serial line")
            meanwhile()
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

    def printed(self, command):
        return self.run(command)[1].strip()

    def process_of(self, unit):
        return self.printed(f"systemctl show -p MainPID --value {unit}")

    def log_in(self, meanwhile):
        self.read(rb"root@", 0, 600, meanwhile)
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
