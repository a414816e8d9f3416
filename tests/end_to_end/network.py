"""What tests of a line over a network need: a serial device server, and a network that can be slow,
can cut what it carries into pieces, and can be cut itself."""

import contextlib
import os
import random
import select
import socket
import subprocess
import threading
import time

SER2NET = os.environ.get("SER2NET", "/usr/sbin/ser2net")


def free_port(host="127.0.0.1"):
    """Below those that the system gives to connections: another test's could take it meanwhile."""
    family = socket.AF_INET6 if ":" in host else socket.AF_INET
    while True:
        port = random.randrange(20000, 32000)
        with socket.socket(family) as probe:
            try:
                probe.bind((host, port))
            except OSError:
                continue
        return port


def wait_for_listener(host, port, process):
    """Without a connection of our own, of which there may be one only."""
    table = "/proc/net/tcp6" if ":" in host else "/proc/net/tcp"
    listening = "0A"
    while process.poll() is None:
        with open(table, encoding="ascii") as file:
            for _, local, _, state, *_ in map(str.split, file):
                if local.endswith(f":{port:04X}") and state == listening:
                    return
        time.sleep(0.01)
    raise AssertionError(f"nobody listens on {port}: {process.stderr.read()}")


class DeviceServer:
    """ser2net, with one port in raw mode; it serves one at a time."""

    def __init__(self, folder, device, host="127.0.0.1"):
        self.port = free_port(host)
        self.address = (host, self.port)
        configuration = os.path.join(folder, "ser2net.yaml")
        with open(configuration, "w", encoding="utf-8") as file:
            file.write(
                "connection: &line\n"
                f"  accepter: tcp,{host},{self.port}\n"
                f"  connector: serialdev,{device},38400n81,local\n"
            )
        # pylint: disable=consider-using-with
        self._process = subprocess.Popen(
            [SER2NET, "-n", "-d", "-u", "-c", configuration],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
        )  # fmt: skip
        wait_for_listener(host, self.port, self._process)

    def close(self):
        self._process.kill()
        self._process.communicate()


class Relay:
    """A network between the tool and `target`. What comes from there takes a delay, in seconds; its
    bytes may come one by one, so far apart, or all that has come by then at intervals only."""

    def __init__(self, target, delay=0.0, byte_gap=0.0, join=0.0):
        self._target = target
        self._delay, self._byte_gap, self._join = delay, byte_gap, join
        self.port = free_port()
        self._lock = threading.RLock()
        self._ends = {}  # each end and the other
        self._near = set()  # those towards the tool
        self._under_way = []  # when it is due, to whom, the bytes
        self.passed = threading.Condition()
        self.requests = 0  # lumps that came from the tool
        self.asked = b""
        self.connections = 0
        self._wake_reader, self._wake_writer = os.pipe()
        self._listener = None
        self.plug()
        self._thread = threading.Thread(target=self._forward, daemon=True)
        self._thread.start()

    def plug(self):
        with self._lock:
            self._listener = socket.create_server(("127.0.0.1", self.port))
        os.write(self._wake_writer, b"x")

    def unplug(self):
        """Nobody listens any more, and what was connected is cut."""
        with self._lock:
            if self._listener:
                self._listener.close()
                self._listener = None
            self.cut()

    def cut(self):
        with self._lock:
            for end in list(self._ends):
                self._drop(end)
            self._under_way.clear()
        os.write(self._wake_writer, b"x")

    def wait_for_request(self):
        """Until something more has come from the tool."""
        with self.passed:
            before = self.requests
            if not self.passed.wait_for(lambda: self.requests > before, 600):
                raise AssertionError("no request came")

    def close(self):
        os.write(self._wake_writer, b"q")
        self._thread.join()
        self.unplug()
        os.close(self._wake_reader)
        os.close(self._wake_writer)

    def _drop(self, end):
        for each in (end, self._ends.get(end)):
            if each in self._ends:
                del self._ends[each]
                self._near.discard(each)
                each.close()

    def _forward(self):
        while True:
            with self._lock:
                listener = self._listener
                watched = [self._wake_reader, *self._ends, *([listener] if listener else [])]
                wait = self._deliver()
            try:
                ready, _, _ = select.select(watched, [], [], wait)
            except (OSError, ValueError):
                continue  # cut meanwhile
            if self._wake_reader in ready and os.read(self._wake_reader, 16).endswith(b"q"):
                return
            with self._lock:
                if listener in ready and listener is self._listener:
                    self._connect(listener.accept()[0])
                for end in ready:
                    if end in self._ends:
                        self._carry(end)

    def _connect(self, near):
        try:
            far = socket.create_connection(self._target)
        except OSError:
            near.close()
            return
        for end in (near, far):
            end.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self._ends |= {near: far, far: near}
        self._near.add(near)
        self.connections += 1

    def _carry(self, end):
        lump = b""
        with contextlib.suppress(OSError):
            lump = end.recv(4096)
        if not lump:
            self._drop(end)
        elif end in self._near:
            with contextlib.suppress(OSError):
                self._ends[end].sendall(lump)
            with self.passed:
                self.asked += lump
                self.requests += 1
                self.passed.notify_all()
        else:
            self._send_off(self._ends[end], lump)

    def _send_off(self, near, lump):
        due = time.monotonic() + self._delay
        if self._join:
            due = (due // self._join + 1) * self._join
        pieces = [lump[i : i + 1] for i in range(len(lump))] if self._byte_gap else [lump]
        for piece in pieces:
            if self._under_way:
                due = max(due, self._under_way[-1][0] + self._byte_gap)
            self._under_way.append((due, near, piece))

    def _deliver(self):
        """What is due, at once; the seconds until the next is, None if nothing is under way."""
        lumps = {}
        while self._under_way and self._under_way[0][0] <= time.monotonic():
            _, near, lump = self._under_way.pop(0)
            lumps[near] = lumps.get(near, b"") + lump
        for near, lump in lumps.items():
            if near in self._ends:
                with contextlib.suppress(OSError):
                    near.sendall(lump)
        return max(0, self._under_way[0][0] - time.monotonic()) if self._under_way else None
