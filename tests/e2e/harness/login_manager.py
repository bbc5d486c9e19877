"""A stand-in for the machine's login manager, on a system bus of the test's own."""

import os
import subprocess
import sys

import dbus

from .screen import UNTIL_WE_END, stop_process
from .waiting import wait_served, wait_until

NAME = "org.freedesktop.login1"
PATH = "/org/freedesktop/login1"
MANAGER = f"{NAME}.Manager"
MOCK = "org.freedesktop.DBus.Mock"


class LoginManager:
    """Tells whoever listens that the machine goes down, sleeps, or that the session is switched."""

    def __init__(self, tv):
        self.address = tv.environment()["DBUS_SYSTEM_BUS_ADDRESS"]
        path = self.address.removeprefix("unix:path=")
        with open(os.path.join(tv.folder, "login-manager.log"), "ab") as log:
            self._processes = [
                subprocess.Popen([*UNTIL_WE_END, "dbus-daemon", "--session", "--nofork",
                                  "--nopidfile", f"--address={self.address}"], stdout=log, stderr=log)]
            wait_served(path, "the system bus")
            self._processes.append(
                subprocess.Popen([*UNTIL_WE_END, sys.executable, "-m", "dbusmock", "--system",
                                  "--template", "logind"], stdout=log, stderr=log,
                                 env={**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": self.address}))
        self._bus = dbus.bus.BusConnection(self.address)
        wait_until(lambda: self._bus.name_has_owner(NAME), "the login manager")
        self._mock = dbus.Interface(self._bus.get_object(NAME, PATH), MOCK)

    def add_session(self, name="c1"):
        """A session on the first seat, to which every process belongs."""
        path = str(self._mock.AddSession(name, "seat0", dbus.UInt32(os.getuid()), "staff", True))
        self._mock.AddMethod(MANAGER, "GetSessionByPID", "u", "o",
                             f"ret = dbus.ObjectPath({path!r})")
        return path

    def announce(self, signal):
        """Sends PrepareForShutdown or PrepareForSleep, as before the machine does so."""
        self._mock.EmitSignal(MANAGER, signal, "b", [True])

    def switch_away_from(self, session_path):
        """Another user comes to the screen: the session is no longer the active one."""
        session = dbus.Interface(self._bus.get_object(NAME, session_path), MOCK)
        session.UpdateProperties(f"{NAME}.Session", {"Active": dbus.Boolean(False),
                                                     "State": "online"})

    def stop(self):
        self._bus.close()
        for process in reversed(self._processes):
            stop_process(process)
