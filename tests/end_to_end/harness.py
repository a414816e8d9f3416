"""What end-to-end tests need: the tool, its controller, and a cable that can be pulled."""

import collections
import contextlib
import json
import os
import pty
import select
import signal
import subprocess
import sys
import tempfile
import termios
import threading
import time
import tty
import unittest

TOOL = os.environ["DOV417"]
for variable in ("DOV417_PORT", "DOV417_LINE", "DOV417_TAGS"):
    os.environ.pop(variable, None)
PATIENCE = 300  # seconds; nothing waits for so long unless something is broken


def as_somebody_else(*command):
    """The command as a user who may do nothing special. For root, who may do all, it needs
    setpriv."""
    if os.getuid() != 0:
        return list(command)
    if not os.path.exists("/usr/bin/setpriv"):
        raise unittest.SkipTest("no other user")
    return ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", *command]


SCHEMA_FILE = os.path.join(os.path.dirname(__file__), "../../docs/json-output.schema.json")


def validator_of(kind):
    import jsonschema  # half of the time in which a test starts, and few look at JSON

    with open(SCHEMA_FILE, encoding="utf-8") as file:
        schema = json.load(file)
    del schema["anyOf"]
    return jsonschema.Draft202012Validator({**schema, "$ref": f"#/$defs/{kind}"})


def refuse_constant(text):
    raise AssertionError(f"{text} is no JSON")


def told(out):
    """The objects of a --json output behind the first one, each in the form that is documented."""
    objects = [json.loads(line, parse_constant=refuse_constant) for line in out.splitlines()]
    validator_of("head").validate(objects[0])
    validator = validator_of(objects[0]["command"].replace(" ", "%20"))
    for each in objects[1:]:
        validator.validate(each)
    return objects[1:]


def run(*arguments):
    """Runs the tool to its end."""
    return subprocess.run(
        [TOOL, *arguments], capture_output=True, text=True, timeout=PATIENCE, check=False
    )


class Process:
    """A program whose output lines can be waited for."""

    def __init__(self, *command):
        # pylint: disable=consider-using-with
        self.process = subprocess.Popen(
            command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
        )

    def wait_for(self, text, stream=None):
        """The next output line that holds the text."""
        stream = stream or self.process.stdout
        seen = []
        watchdog = threading.Timer(PATIENCE, self.process.kill)
        watchdog.start()
        try:
            for line in stream:
                if text in line:
                    return line
                seen.append(line)
        finally:
            watchdog.cancel()
        raise AssertionError(f"{text!r} did not come, but {seen[-5:]}")

    def wait_for_error(self, text):
        return self.wait_for(text, self.process.stderr)

    def interrupt(self):
        """Ctrl-C, then the exit code and the rest of both outputs."""
        self.process.send_signal(signal.SIGINT)
        return self.end()

    def end(self):
        out, err = self.process.communicate(timeout=PATIENCE)
        return self.process.returncode, out, err

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.communicate()


class Controller(Process):
    """`dov417 simulate`, ready to be talked to."""

    def __init__(self, folder, *options):
        self.port = os.path.join(folder, "controller")
        self.dump = os.path.join(folder, "dump.json")
        super().__init__(
            TOOL, "simulate", "--link", self.port, "--dump", self.dump, *options
        )
        self.wait_for("port ")

    def memory(self):
        """Ends the controller; what it held then, as word(station, register, address)."""
        self.interrupt()
        with open(self.dump, encoding="utf-8") as file:
            stations = json.load(file)

        def word(station, register, address):
            for first, values in stations.get(str(station), {}).get(register, {}).items():
                values = values if isinstance(values, list) else [values]
                if 0 <= address - int(first) < len(values):
                    return values[address - int(first)]
            return 0

        return word


class Terminal:
    """The tool on a terminal of its own."""

    def __init__(self, *arguments):
        self.seen = b""
        self._exit_code = None
        self._child, self._terminal = pty.fork()
        if self._child == 0:
            signal.signal(signal.SIGHUP, signal.SIG_DFL)  # nohup hands it down ignored
            os.execv(TOOL, [TOOL, *arguments])

    def wait_for(self, text):
        with self._patience():
            while text not in self.seen:
                if not self._see():
                    raise AssertionError(f"{text!r} did not come, but {self.seen[-500:]}")

    def press(self, keys):
        os.write(self._terminal, keys)

    def signal(self, number):
        os.kill(self._child, number)

    def end(self):
        """Waits for the tool's end; its exit code."""
        with self._patience():
            while self._see():
                pass
            _, status = os.waitpid(self._child, 0)
        self._exit_code = os.waitstatus_to_exitcode(status)
        return self._exit_code

    def close(self):
        if self._exit_code is None:
            self.signal(signal.SIGKILL)
            os.waitpid(self._child, 0)
        os.close(self._terminal)

    @contextlib.contextmanager
    def _patience(self):
        watchdog = threading.Timer(PATIENCE, self.signal, (signal.SIGKILL,))
        watchdog.start()
        try:
            yield
        finally:
            watchdog.cancel()

    def _see(self):
        """False once the tool is gone."""
        try:
            self.seen += os.read(self._terminal, 4096)
        except OSError:
            return False
        return True


class Cable:
    """Two pseudo-terminals, end to end; the end at `port` can be pulled out and put back. What comes
    from the far end may take a delay, in seconds, and its bytes may come one by one."""

    def __init__(self, folder, delay=0.0, byte_gap=0.0):
        self._delay = delay
        self._byte_gap = byte_gap
        self._under_way = collections.deque()  # when it is due, and the bytes
        self.port = os.path.join(folder, "cable")
        self.far_port = os.path.join(folder, "far-end")
        self.passed = threading.Condition()
        self.requests = 0  # lumps that came from the end at `port`
        self.replies = b""  # what came from the far end
        self._wake_reader, self._wake_writer = os.pipe()
        self._far, self._far_keeper = self._open(self.far_port)
        self._near = None
        self._lock = threading.RLock()
        self.plug()
        self._thread = threading.Thread(target=self._forward, daemon=True)
        self._thread.start()

    @staticmethod
    def _open(link):
        master, slave = pty.openpty()
        tty.setraw(slave, termios.TCSANOW)
        os.symlink(os.ttyname(slave), link)
        return master, slave

    def plug(self):
        with self._lock:
            self._near = self._open(self.port)
        os.write(self._wake_writer, b"x")

    def unplug(self):
        with self._lock:
            os.unlink(self.port)
            for end in self._near:
                os.close(end)
            self._near = None
        os.write(self._wake_writer, b"x")

    def wait_for_request(self):
        """Until something more has come from the end at `port`."""
        with self.passed:
            before = self.requests
            if not self.passed.wait_for(lambda: self.requests > before, PATIENCE):
                raise AssertionError("no request came")

    def settle(self):
        """Until everything that the far end has sent has come through."""
        while select.select([self._far], [], [], 0)[0]:
            os.write(self._wake_writer, b"x")

    def close(self):
        os.write(self._wake_writer, b"q")
        self._thread.join()
        with self._lock:
            if self._near:
                self.unplug()
        for end in (self._far, self._far_keeper, self._wake_reader, self._wake_writer):
            os.close(end)

    def _forward(self):
        while True:
            with self._lock:
                near = self._near[0] if self._near else None
            ends = [self._far, self._wake_reader] + ([near] if near is not None else [])
            try:
                ready, _, _ = select.select(ends, [], [], self._deliver())
            except (OSError, ValueError):
                continue  # pulled out meanwhile
            if self._wake_reader in ready and os.read(self._wake_reader, 16).endswith(b"q"):
                return
            with contextlib.suppress(OSError):
                if near in ready:
                    os.write(self._far, os.read(near, 4096))
                    with self.passed:
                        self.requests += 1
                        self.passed.notify_all()
                if self._far in ready:
                    self._send_off(os.read(self._far, 4096))

    def _send_off(self, lump):
        due = time.monotonic() + self._delay
        if not self._byte_gap:
            self._under_way.append((due, lump))
            return
        for byte in lump:
            if self._under_way:
                due = max(due, self._under_way[-1][0] + self._byte_gap)
            self._under_way.append((due, bytes([byte])))

    def _deliver(self):
        """What is due; the seconds until the next is, None if nothing is under way."""
        while self._under_way:
            wait = self._under_way[0][0] - time.monotonic()
            if wait > 0:
                return wait
            _, lump = self._under_way.popleft()
            with self._lock, contextlib.suppress(OSError):
                self.replies += lump
                if self._near:
                    os.write(self._near[0], lump)
        return None


class EndToEnd(unittest.TestCase):
    """A folder of its own, and everything closed at the end."""

    # True: each of its tests is an entry of ctest, as they wait for long (list_tests.py).
    side_by_side = False

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def write_file(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)
        return self.path(name)

    def pipe(self, name):
        """A log that wait_for_log() can read while it is written."""
        os.mkfifo(self.path(name))
        return self.path(name)

    def wait_for_log(self, name, text):
        # Held open, or the tool would write into a broken pipe.
        log = open(self.path(name), encoding="utf-8")  # pylint: disable=consider-using-with
        self.addCleanup(log.close)
        for line in log:
            if text in line:
                return
        self.fail(f"{text!r} is not in the log")

    def controller(self, *options):
        controller = Controller(self.folder, *options)
        self.addCleanup(controller.close)
        return controller

    def process(self, *command):
        process = Process(*command)
        self.addCleanup(process.close)
        return process

    def tool(self, *arguments):
        return self.process(TOOL, *arguments)

    def slow_slave(self, *stations):
        """Stations that take their time, as in "1:600", and the cable that leads to them."""
        cable = self.cable()
        here = os.path.dirname(os.path.abspath(__file__))
        slave = self.process(
            sys.executable, os.path.join(here, "slow_slave.py"), cable.far_port, *stations
        )
        slave.wait_for("ready")
        return cable, slave

    def terminal(self, *arguments):
        terminal = Terminal(*arguments)
        self.addCleanup(terminal.close)
        return terminal

    def cable(self, **times):
        cable = Cable(self.folder, **times)
        self.addCleanup(cable.close)
        return cable

    def succeeds(self, *arguments):
        done = run(*arguments)
        self.assertEqual(done.returncode, 0, done.stdout[-2000:] + done.stderr[-2000:])
        return done.stdout

    def fails(self, *arguments):
        done = run(*arguments)
        self.assertEqual(done.returncode, 1, done.stdout[-2000:] + done.stderr[-2000:])
        return done.stderr
