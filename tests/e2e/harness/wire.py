"""A man in the middle of the Wayland socket, for what no compositor in the tests can be asked to do:
here, closing a client's window as a task switcher would."""

import array
import os
import socket
import struct
import threading

from .waiting import wait_until

CHUNK = 65536
MOST_FDS = 28


class Parser:
    """Splits a byte stream into Wayland messages."""

    def __init__(self):
        self._pending = b""

    def feed(self, data):
        self._pending += data
        while len(self._pending) >= 8:
            target, size_and_opcode = struct.unpack_from("=II", self._pending)
            size = size_and_opcode >> 16
            if len(self._pending) < size:
                return
            yield target, size_and_opcode & 0xFFFF, self._pending[8:size]
            self._pending = self._pending[size:]

    def at_boundary(self):
        return not self._pending


class Connection:
    """One client's connection, passed on in both directions, file descriptors included."""

    def __init__(self, client, server):
        self._client, self._server = client, server
        self._registries, self._shells, self._xdg_surfaces = set(), set(), set()
        self._inject_lock = threading.Lock()
        self._inject = []
        self._from_server = Parser()
        self.toplevels = []
        for target in (self._pass_requests, self._pass_events):
            threading.Thread(target=target, daemon=True).start()

    @staticmethod
    def _receive(source):
        fds = array.array("i")
        try:
            data, ancillary, _, _ = source.recvmsg(CHUNK, socket.CMSG_LEN(MOST_FDS * fds.itemsize))
        except OSError:
            return b"", fds
        for level, kind, payload in ancillary:
            if level == socket.SOL_SOCKET and kind == socket.SCM_RIGHTS:
                fds.frombytes(payload[:len(payload) - len(payload) % fds.itemsize])
        return data, fds

    @staticmethod
    def _send(target, data, fds):
        extra = [(socket.SOL_SOCKET, socket.SCM_RIGHTS, fds)] if fds else []
        sent = target.sendmsg([data], extra)
        for descriptor in fds:
            os.close(descriptor)
        if sent < len(data):
            target.sendall(data[sent:])

    def _hang_up(self):
        for end in (self._client, self._server):
            try:
                end.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass

    def _pass_requests(self):
        parser = Parser()
        try:
            while True:
                data, fds = self._receive(self._client)
                if not data:
                    break
                for target, opcode, arguments in parser.feed(data):
                    self._note_request(target, opcode, arguments)
                self._send(self._server, data, fds)
        except OSError:
            pass
        self._hang_up()

    def _note_request(self, target, opcode, arguments):
        """Follows the objects on the way to a top-level window."""
        if target == 1 and opcode == 1:
            self._registries.add(struct.unpack_from("=I", arguments)[0])
        elif target in self._registries and opcode == 0:
            length = struct.unpack_from("=I", arguments, 4)[0]
            interface = arguments[8:8 + length - 1]
            if interface == b"xdg_wm_base":
                self._shells.add(struct.unpack_from("=I", arguments, len(arguments) - 4)[0])
        elif target in self._shells and opcode == 2:
            self._xdg_surfaces.add(struct.unpack_from("=I", arguments)[0])
        elif target in self._xdg_surfaces and opcode == 1:
            self.toplevels.append(struct.unpack_from("=I", arguments)[0])

    def _pass_events(self):
        try:
            while True:
                data, fds = self._receive(self._server)
                if not data:
                    break
                with self._inject_lock:
                    for _ in self._from_server.feed(data):
                        pass
                    self._send(self._client, data, fds)
                    self._send_injected()
        except OSError:
            pass
        self._hang_up()

    def _send_injected(self):
        # Between two messages only; otherwise the next data brings the occasion.
        while self._inject and self._from_server.at_boundary():
            self._client.sendall(self._inject.pop(0))

    def close_window(self):
        """xdg_toplevel.close, the event with which a compositor asks a window to go."""
        with self._inject_lock:
            for toplevel in self.toplevels:
                self._inject.append(struct.pack("=II", toplevel, 8 << 16 | 1))
            self._send_injected()


class Wire:
    """Listens beside the compositor's socket; clients sent here reach the compositor through it."""

    def __init__(self, screen):
        self._path = os.path.join(screen.runtime_dir, screen.socket)
        self.socket = f"{screen.socket}-wire"
        self._listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._listener.bind(os.path.join(screen.runtime_dir, self.socket))
        self._listener.listen()
        self._connections = []
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            try:
                client, _ = self._listener.accept()
            except OSError:
                return
            server = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
            server.connect(self._path)
            self._connections.append(Connection(client, server))

    def close_window(self):
        wait_until(lambda: any(c.toplevels for c in self._connections), "a top-level window")
        for connection in self._connections:
            connection.close_window()

    def stop(self):
        self._listener.close()
