"""Requests that no register type names: what is sent, what comes back, and whose answer it is."""

import os
import pty
import sys
import termios
import threading
import tty
import unittest

from frames import with_crc
from harness import TOOL, EndToEnd, run, told
from slow_slave import answer

HERE = os.path.dirname(os.path.abspath(__file__))
LINE = ("--line", "38400,8,NONE,1")


class Mirror:
    """An adapter that hears what it sends, on a line where nobody answers."""

    def __init__(self):
        self._master, self._slave = pty.openpty()
        tty.setraw(self._slave, termios.TCSANOW)
        self.port = os.ttyname(self._slave)
        self.heard = b""
        threading.Thread(target=self._reflect, daemon=True).start()

    def _reflect(self):
        while True:
            try:
                data = os.read(self._master, 4096)
            except OSError:
                return
            self.heard += data
            os.write(self._master, data)


class OtherMask:
    """A slave that says of each mask write that it wrote another OR mask."""

    def __init__(self):
        self._master, slave = pty.openpty()
        tty.setraw(slave, termios.TCSANOW)
        self.port = os.ttyname(slave)
        self._slave = slave
        threading.Thread(target=self._answer, daemon=True).start()

    def _answer(self):
        heard = b""
        while True:
            try:
                heard += os.read(self._master, 4096)
            except OSError:
                return
            length = 10 if heard[1:2] == b"\x16" else 8
            if len(heard) < length:
                continue
            if length == 8:
                os.write(self._master, answer(heard[:length]))
            else:
                reply = heard[:7] + bytes((heard[7] ^ 1,))
                os.write(self._master, with_crc(reply))
            heard = heard[length:]


class Request(EndToEnd):
    def request(self, port, *words):
        return run("request", "--port", port, *LINE, *words)

    def test_what_is_written_arrives_and_what_came_is_told(self):
        controller = self.controller("--still", "--line", LINE[1], "--set", "R_W:5=77")
        done = self.request(controller.port, "1", "3", "1285", "1")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("-> station 1: read 1 register from 1285 (R_W:5)", done.stdout)
        self.assertIn("<- station 1: R_W:5 = 77", done.stdout)
        for words, text in ((("6", "1290", "0x1234"), "wrote R_W:10 = 4660 (0x1234)"),
                            (("16", "1291", "7", "8"), "wrote R_W:11..12"),
                            (("5", "4097", "on"), "wrote M_bit:0.1 = on"),
                            (("15", "4112", "1", "0", "1"), "wrote M_bit:1.0..1.2")):  # fmt: skip
            done = self.request(controller.port, "1", *words)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertIn("<- station 1: " + text, done.stdout)
        done = self.request(controller.port, "0", "6", "1300", "9")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("sent to all stations; nobody answers a broadcast", done.stdout)
        word = controller.memory()
        self.assertEqual([word(1, "R_W", a) for a in (10, 11, 12, 20)], [0x1234, 7, 8, 9])
        self.assertEqual((word(1, "M_W", 0), word(1, "M_W", 1)), (2, 5))

    def test_an_exception_is_told_and_is_a_failure(self):
        controller = self.controller("--line", LINE[1])
        done = self.request(controller.port, "1", "3", "9000", "1")
        self.assertEqual(done.returncode, 1)
        self.assertIn("<- station 1: exception 2, illegal data address", done.stdout)
        self.assertEqual(done.stderr, "dov417: exception 2 (illegal data address)\n")

    def test_raw_bytes_get_their_crc(self):
        controller = self.controller("--line", LINE[1], "--still", "--set", "R_W:0=3")
        done = self.request(controller.port, "--raw", "01 03 05 00 00 01", "--json")
        self.assertEqual(done.returncode, 0, done.stderr)
        passed = told(done.stdout)[0]
        self.assertEqual(passed["request"]["bytes"], "01 03 05 00 00 01 84 C6")
        self.assertEqual(passed["reply"]["text"], "station 1: R_W:0 = 3")
        self.assertGreaterEqual(passed["reply"]["after"], 0)
        self.assertNotIn("failure", passed)
        passed = told(self.request(controller.port, "9", "3", "0", "1", "--timeout", "20",
                                  "--json").stdout)[0]  # fmt: skip
        self.assertEqual(passed["failure"], "no answer within 20 ms: no byte came")
        self.assertNotIn("reply", passed)

    def test_a_request_that_is_none_is_refused_before_anything_is_sent(self):
        mirror = Mirror()
        for words in (("1", "3", "0"), ("1", "6", "0", "70000"), ("--raw", "01")):
            self.assertEqual(self.request(mirror.port, *words).returncode, 2)
        self.assertEqual(mirror.heard, b"")

    def test_another_slave_answers_what_the_driver_has_no_name_for(self):
        cable = self.cable()
        server = self.process(
            sys.executable, os.path.join(HERE, "pymodbus_server.py"), cable.far_port
        )
        server.wait_for("ready")
        for words, text in ((("1", "4", "10", "2"), "input register"),
                            (("1", "2", "10", "5"), "station 1: "),
                            (("2", "22", "20", "0xFF", "0x100"), "station 2: function 22"),
                            (("1", "23", "20", "1", "21", "5"), "station 1: function 23"),
                            (("1", "43", "14", "1", "0"), "station 1: function 43")):  # fmt: skip
            done = self.request(cable.port, *words, "--timeout", "5000")
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
            self.assertIn("<- ", done.stdout)
            self.assertIn(text, done.stdout)

    def test_the_echo_of_an_adapter_confirms_no_write(self):
        mirror = Mirror()
        done = self.request(mirror.port, "1", "6", "1290", "5", "--timeout", "50")
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertNotIn("wrote", done.stdout)
        self.assertEqual(done.stderr, "dov417: no answer within 50 ms: no byte came\n")

    def test_a_mask_write_is_confirmed_with_both_masks(self):
        done = self.request(OtherMask().port, "1", "22", "20", "0xFF", "0x100", "--no-function-8")
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertEqual(done.stderr, "dov417: the answer names another value than was sent\n")

    def test_a_late_reply_to_another_program_is_not_its_answer(self):
        cable, _ = self.slow_slave("1:700")
        first = self.process(TOOL, "request", "--port", cable.port, *LINE, "1", "3", "10", "1",
                             "--no-function-8")  # fmt: skip
        cable.wait_for_request()
        first.process.kill()
        first.process.wait()
        done = self.request(cable.port, "1", "3", "20", "1", "--timeout", "5000")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertIn("<- station 1: register 20 = 20", done.stdout)
        self.assertNotIn("register 20 = 10", done.stdout)

    def test_the_log_has_it_in_full(self):
        controller = self.controller("--line", LINE[1], "--still")
        log = self.path("line.log")
        self.request(controller.port, "1", "6", "1290", "5", "--log", log)
        out = self.succeeds("trace", log)
        self.assertIn("-> station 1: write register 1290 (R_W:10) = 5", out)
        self.assertIn("<- station 1: wrote R_W:10 = 5", out)
        self.assertIn("-> station 1: read 1 register from 1290 (R_W:10)", out)


if __name__ == "__main__":
    unittest.main()
