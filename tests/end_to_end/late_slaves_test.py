"""Slaves that nobody here wrote, behind a cable that delays: no value under another's address."""

import os
import re
import sys
import unittest

from harness import TOOL, EndToEnd, run

HERE = os.path.dirname(os.path.abspath(__file__))
FIRST_REGISTER = 1280  # R_W:0 on the line


def word(station, address):
    return ((FIRST_REGISTER + address) * 7 + station) % 65536


class LateSlave:
    def start(self, **times):
        cable = self.cable(**times)
        self.process(*self.server(cable.far_port)).wait_for("ready")
        return ("--port", cable.port, "--line", "38400,8,NONE,1")

    def judged(self, text):
        """The addresses shown, each with its own value."""
        shown = re.findall(r"(\d)/R_W:(\d+) = (\d+)", text)
        for station, address, value in shown:
            self.assertEqual(int(value), word(int(station), int(address)), text)
        return {f"{station}/R_W:{address}" for station, address, _ in shown}

    def test_later_than_the_timeout(self):
        port = self.start(delay=0.6)
        addresses = {"1/R_W:100", "1/R_W:200", "1/R_W:300"}
        done = run("watch", *port, *addresses, "--cycles", "3")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertEqual(self.judged(done.stdout), addresses)
        self.assertRegex(done.stderr, r"station 1 answers after \d+ ms: waiting longer from now on")
        out = self.succeeds("read", *port, *sorted(addresses))
        self.assertEqual(self.judged(out), addresses)

    def test_later_than_a_timeout_that_is_fixed(self):
        port = self.start(delay=0.6)
        watch = self.process(TOOL, "watch", *port, "R_W:100", "R_W:200", "R_W:300",
                             "--timeout", "500")  # fmt: skip
        watch.wait_for_error("raise --timeout")
        _, out, _ = watch.interrupt()
        self.judged(out)

    def test_a_program_after_another(self):
        port = self.start(delay=0.3)
        done = run("watch", *port, "R_W:0", "R_W:500", "--seconds", "1")
        self.judged(done.stdout)
        self.assertEqual(self.judged(self.succeeds("read", *port, "R_W:3")), {"1/R_W:3"})

    def test_bytes_that_come_one_by_one(self):
        port = self.start(byte_gap=0.003)
        out = self.succeeds("read", *port, "R_W:0..99", "--stats")
        values = re.search(r"1/R_W:0..99 = ([\d ]+)", out).group(1).split()
        self.assertEqual(values, [str(word(1, address)) for address in range(100)])
        self.assertIn(" 1 sent, 1 good", out)

    def test_one_station_of_three_that_is_silent(self):
        port = self.start(delay=0.01)
        stations = (*self.stations, 3)
        done = run("watch", *port, *(f"{s}/R_W:{a}" for s in stations for a in (100, 300)),
                   "--seconds", "25")  # fmt: skip
        self.assertEqual(done.returncode, 1)
        self.assertEqual(
            self.judged(done.stdout), {f"{s}/R_W:{a}" for s in self.stations for a in (100, 300)}
        )
        self.assertIn("station 3 is silent since", done.stderr)
        self.assertIn("3/R_W:100, 3/R_W:300: no value came", done.stderr)

    stations = (1,)


class Libmodbus(LateSlave, EndToEnd):
    def server(self, port):
        return (os.environ["LIBMODBUS_SERVER"], port)


class Pymodbus(LateSlave, EndToEnd):
    stations = (1, 2)

    def server(self, port):
        return (sys.executable, os.path.join(HERE, "pymodbus_server.py"), port)


if "SERIALBUS_SERVER" in os.environ:

    class Serialbus(LateSlave, EndToEnd):
        def server(self, port):
            return (os.environ["SERIALBUS_SERVER"], port)


if __name__ == "__main__":
    unittest.main()
