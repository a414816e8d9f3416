"""Other masters, heard: what they ask, what comes back, and not a byte from the listener."""

import contextlib
import os
import pty
import select
import socket
import subprocess
import sys
import termios
import threading
import tty
import unittest

from frames import with_crc
from harness import PATIENCE, TOOL, EndToEnd, run, told

# A pseudo-terminal takes no parity.
LINE = "38400,8,NONE,1"
MASTER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "pymodbus_master.py")


class Tap:
    """A line with a master at `port`, a controller at `far_port` and an ear at `ear`."""

    def __init__(self, folder):
        self.port, self.far_port, self.ear = (
            os.path.join(folder, name) for name in ("master", "far-end", "ear")
        )
        self.said = b""  # by the ear
        self._stop, self._stopper = os.pipe()
        self._ends = [self._open(link) for link in (self.port, self.far_port, self.ear)]
        self._thread = threading.Thread(target=self._forward, daemon=True)
        self._thread.start()

    @staticmethod
    def _open(link):
        master, slave = pty.openpty()
        tty.setraw(slave, termios.TCSANOW)
        os.symlink(os.ttyname(slave), link)
        return master, slave

    def put(self, data):
        """Bytes on the line that neither end has sent."""
        os.write(self._ends[2][0], data)

    def _forward(self):
        near, far, ear = (master for master, _ in self._ends)
        other = {near: far, far: near}
        while True:
            ready, _, _ = select.select([near, far, ear, self._stop], [], [])
            if self._stop in ready:
                return
            for end in ready:
                data = os.read(end, 4096)
                if end == ear:
                    self.said += data
                else:
                    os.write(ear, data)
                    os.write(other[end], data)

    def close(self):
        os.write(self._stopper, b"x")
        self._thread.join()
        for ends in (*self._ends, (self._stop, self._stopper)):
            for end in ends:
                with contextlib.suppress(OSError):
                    os.close(end)


def frame(text):
    return with_crc(bytes.fromhex(text))


def mbpoll(*options):
    done = subprocess.run(
        ["mbpoll", "-m", "rtu", "-a", "1", "-b", "38400", "-P", "none", "-1", "-o", "1", *options],
        capture_output=True, text=True, timeout=PATIENCE, check=False,
    )  # fmt: skip
    return done.returncode, done.stdout + done.stderr


class Places(EndToEnd):
    def test_another_master_finds_what_lies_where_info_says(self):
        places = {line.split()[0]: line.split() for line in
                  self.succeeds("info").split("from 1, with its kind\n")[1].splitlines()}  # fmt: skip
        controller = self.controller("--still", "--line", LINE, "--set", "R_W:0=4711", "--set",
                                     "T:0=12", "--set", "M_bit:0.0=1")  # fmt: skip
        for register, kind, value in (("R_W", "4", 4711), ("T", "4", 12), ("M_bit", "0", 1)):
            number = places[register][-1].split("..")[0]
            self.assertEqual(number[0], kind)
            code, out = mbpoll("-t", kind, "-r", str(int(number[1:])), controller.port)
            self.assertEqual(code, 0, out)
            self.assertRegex(out, rf"\[{int(number[1:])}\]:\s+{value}\n")


class Listen(EndToEnd):
    def setUp(self):
        super().setUp()
        self.tap = Tap(self.folder)
        self.addCleanup(self.tap.close)

    def far_controller(self, *options):
        return self.controller("--still", "--line", LINE, "--port", self.tap.far_port, *options)

    def listen(self, *options):
        listening = self.tool("listen", "--port", self.tap.ear, "--line", LINE, *options)
        listening.wait_for("is open")
        return listening

    def mbpoll(self, *options):
        return mbpoll("-0", *options)

    def end(self, listening):
        code, out, err = listening.interrupt()
        self.assertEqual(self.tap.said, b"", "a listener says nothing")
        return code, out, err

    def test_mbpoll_is_heard_with_its_values_and_addresses(self):
        self.far_controller("--set", "R_W:100..101=7,8")
        log = self.path("line.log")
        listening = self.listen("--log", log)
        code, out = self.mbpoll("-t", "4", "-r", "1380", "-c", "2", self.tap.port)
        self.assertEqual(code, 0, out)
        listening.wait_for("-> station 1: read 2 registers from 1380 (R_W:100..101)")
        listening.wait_for("<- station 1: R_W:100..101 = 7 8")
        self.mbpoll("-t", "4", "-r", "9000", "-c", "1", self.tap.port)
        listening.wait_for("<- station 1: exception 2, illegal data address, to read registers")
        self.mbpoll("-t", "4", "-r", "1380", self.tap.port, "1", "2", "3")
        listening.wait_for("<- station 1: wrote R_W:100..102")
        code, out, err = self.end(listening)
        self.assertEqual((code, err), (0, ""))
        rows = [line.split() for line in out.splitlines()]
        self.assertIn(["1", "read", "registers", "R_W:100..101", "1", "1", "0", "0", "-"],
                      [row[:9] for row in rows])  # fmt: skip
        self.assertIn(["1", "read", "registers", "register", "9000", "1", "1", "1", "0", "-"],
                      [row[:10] for row in rows])  # fmt: skip
        explained = self.succeeds("trace", log)
        self.assertIn("<- station 1: R_W:100..101 = 7 8", explained)
        self.assertIn("sent 3, received 3, thrown away 0, notes 1", explained)

    def test_pymodbus_is_heard_every_function_of_it(self):
        self.far_controller("--set", "R_W:0=5")
        listening = self.tool("listen", "--port", self.tap.ear, "--line", LINE, "--json")
        head = listening.wait_for("version")
        listening.wait_for("is open")
        master = self.process(sys.executable, MASTER, self.tap.port)
        code, out, err = master.end()
        self.assertEqual(code, 0, out + err)
        code, out, _ = self.end(listening)
        self.assertEqual(code, 0)
        objects = told(head + out)
        frames = [(t["as"], t["text"]) for t in objects if "as" in t]
        for text in ("station 1: M_W:0 = 0x0000", "station 1: R_W:0..1 = 5 0",
                     "station 1: wrote R_W:1 = 9 (0x0009)", "station 1: wrote M_bit:0.0 = on",
                     "station 1: wrote R_W:2..3", "station 1: wrote M_bit:0.1..0.3"):  # fmt: skip
            self.assertIn(("reply", text), frames)
        self.assertIn(("request", "station 1: read 8 inputs from 0"), frames)
        self.assertIn(("reply", "station 1: exception 1, illegal function, to read inputs"), frames)
        requests = objects[-1]["heard"]["requests"]
        self.assertEqual({r["function"] for r in requests}, {1, 2, 3, 4, 5, 6, 15, 16})
        self.assertTrue(all(r["asked"] == r["answered"] for r in requests), requests)

    def test_our_own_master_is_heard_and_silence_is_told(self):
        self.far_controller("--fault", "silence=every:3")
        listening = self.listen()
        run("read", "--port", self.tap.port, "--line", LINE, "--timeout", "300", "R_W:0..9", "T:1")
        listening.wait_for("-- no answer was heard")
        code, _, err = self.end(listening)
        self.assertEqual((code, err), (0, ""))

    def test_a_reply_that_may_be_anothers_is_told_without_an_address(self):
        # One of two reads of one length was not answered: whose the reply is, nobody can know.
        log = self.path("line.log")
        listening = self.listen("--log", log)
        self.tap.put(frame("01 03 05 00 00 01"))
        listening.wait_for("read 1 register from 1280")
        self.tap.put(frame("01 03 05 0A 00 01"))
        listening.wait_for("read 1 register from 1290")
        self.tap.put(frame("01 03 02 00 2A"))
        listening.wait_for("<? station 1: read registers, 2 bytes of values: 42, to one of several")
        self.end(listening)
        self.assertNotIn("R_W:10 = 42", self.succeeds("trace", log))

    def test_a_line_behind_a_device_server_is_heard(self):
        server = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(server.close)
        listening = self.tool("listen", "--port", f"tcp://127.0.0.1:{server.getsockname()[1]}")
        connection, _ = server.accept()
        self.addCleanup(connection.close)
        listening.wait_for("is open")
        connection.sendall(frame("01 03 05 0A 00 01") + frame("01 03 02 00 2A"))
        listening.wait_for("<- station 1: R_W:10 = 42")
        connection.setblocking(False)
        with self.assertRaises(BlockingIOError, msg="a listener says nothing"):
            connection.recv(1)
        self.assertEqual(listening.interrupt()[0], 0)

    def test_noise_is_told_and_what_follows_is_heard(self):
        listening = self.listen()
        self.tap.put(b"\xff\x00" + frame("01 03 05 00 00 01"))
        listening.wait_for("<? 2 bytes, no frame")
        listening.wait_for("-> station 1: read 1 register from 1280 (R_W:0)")
        self.end(listening)

    def test_another_speed_is_named(self):
        listening = self.listen()
        self.tap.put(b"\x9d\x33" * 20)
        listening.wait_for("<? 40 bytes, no frame")
        code, _, err = self.end(listening)
        self.assertEqual(code, 1)
        self.assertIn("40 bytes came, but no frame; looks like another speed or parity", err)

    def test_a_line_where_nothing_is_said_is_a_failure(self):
        err = self.fails("listen", "--port", self.tap.ear, "--line", LINE, "--seconds", "0.2")
        self.assertIn("nothing was heard", err)
        self.assertEqual(self.tap.said, b"")

    def test_a_request_and_its_reply_in_one_lump_are_two_frames(self):
        listening = self.listen()
        self.tap.put(frame("01 03 05 0A 00 01") + frame("01 03 02 00 2A"))
        listening.wait_for("<- station 1: R_W:10 = 42")
        self.end(listening)

    def test_the_table_alone_redraws_on_a_terminal(self):
        self.far_controller()
        listening = self.terminal("listen", "--port", self.tap.ear, "--line", LINE, "--table")
        listening.wait_for(b"Ctrl-C ends")
        self.mbpoll("-t", "4", "-r", "1380", "-c", "2", self.tap.port)
        listening.wait_for(b"R_W:100..101")
        listening.press(b"\x03")
        self.assertEqual(listening.end(), 0)
        self.assertEqual(self.tap.said, b"")


if __name__ == "__main__":
    unittest.main()
