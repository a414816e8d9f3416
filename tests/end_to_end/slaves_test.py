"""The driver against slaves that nobody here wrote; both hold the same, and both are strict."""

import os
import sys
import unittest

from harness import EndToEnd

HERE = os.path.dirname(os.path.abspath(__file__))
BASES = {"I": 0, "Q": 2048, "M": 4096, "T": 384, "C": 512, "R": 1280}


def bit(station, area, number):
    return int((BASES[area] + number) % (2 + station) == 0)


def word(station, area, number):
    if area in "IQM":
        return sum(bit(station, area, 16 * number + b) << b for b in range(16))
    return ((BASES[area] + number) * 7 + station) % 65536


def double(station, number):
    return word(station, "R", number) + 65536 * word(station, "R", number + 1)


def line(address, values):
    return f"{address} = " + " ".join(map(str, values))


class Slave:
    """What every slave must give; the subclasses start one each."""

    stations = (1,)

    def setUp(self):
        super().setUp()
        self.cable_ = self.cable()
        server = self.process(*self.server(self.cable_.far_port))
        server.wait_for("ready")
        self.port = ("--port", self.cable_.port, "--line", "38400,8,NONE,1", "--timeout", "5000")

    def test_all_register_types_are_read(self):
        for s in self.stations:
            out = self.succeeds(
                "read", *self.port,
                f"{s}/I_bit:0.0..1.15", f"{s}/Q_bit:3.4", f"{s}/M_bit:127.15",
                f"{s}/R_bit:10.0..10.15", f"{s}/I_W:1..3", f"{s}/Q_W:0", f"{s}/M_W:120..127",
                f"{s}/R_W:100..131", f"{s}/R_D:200..203", f"{s}/T:0..2", f"{s}/C:127",
            )  # fmt: skip
            self.assertEqual(
                out.splitlines(),
                [
                    line(f"{s}/I_bit:0.0..1.15", [bit(s, "I", b) for b in range(32)]),
                    line(f"{s}/Q_bit:3.4", [bit(s, "Q", 52)]),
                    line(f"{s}/M_bit:127.15", [bit(s, "M", 2047)]),
                    line(
                        f"{s}/R_bit:10.0..10.15", [word(s, "R", 10) >> b & 1 for b in range(16)]
                    ),
                    line(f"{s}/I_W:1..3", [word(s, "I", a) for a in range(1, 4)]),
                    line(f"{s}/Q_W:0", [word(s, "Q", 0)]),
                    line(f"{s}/M_W:120..127", [word(s, "M", a) for a in range(120, 128)]),
                    line(f"{s}/R_W:100..131", [word(s, "R", a) for a in range(100, 132)]),
                    line(f"{s}/R_D:200..203", [double(s, 200), double(s, 202)]),
                    line(f"{s}/T:0..2", [word(s, "T", a) for a in range(3)]),
                    line(f"{s}/C:127", [word(s, "C", 127)]),
                ],
            )

    def test_a_cycle_of_requests_up_to_125_words_brings_every_value(self):
        wanted = {}
        addresses = []
        for s in self.stations:
            addresses += [f"{s}/R_W:0..124", f"{s}/R_W:200..324", f"{s}/M_W:0..124"]
            wanted |= {f"{s}/R_W:{a}": word(s, "R", a) for a in (*range(125), *range(200, 325))}
            wanted |= {f"{s}/M_W:{a}": word(s, "M", a) for a in range(125)}
        out = self.succeeds("watch", *self.port, *addresses, "--cycles", "3")
        seen = [entry.split(" ", 1)[1] for entry in out.splitlines()]
        self.assertEqual(sorted(seen), sorted(f"{a} = {v}" for a, v in wanted.items()))

    def test_single_writes_and_runs_are_taken_and_read_back(self):
        for s in self.stations:
            out = self.succeeds(
                "write", *self.port, "--gap", "0",
                f"{s}/I_bit:5.5={1 - bit(s, 'I', 85)}", f"{s}/M_bit:0.0..0.3=1,1,0,1",
                f"{s}/R_bit:400.3=1", f"{s}/Q_W:7=1234", f"{s}/R_W:500=65535", f"{s}/T:3=9",
                f"{s}/C:4=10", f"{s}/R_D:502..503=4000000000",
                f"{s}/R_W:600..722=" + ",".join(str(a) for a in range(123)),
                f"{s}/M_W:2..20=" + ",".join(str(a) for a in range(19)),
            )  # fmt: skip
            self.assertEqual(out.count("written and read back"), 10)
            out = self.succeeds("read", *self.port, f"{s}/R_W:400", f"{s}/R_W:500..503",
                                f"{s}/R_W:599..601", f"{s}/R_W:722..723", f"{s}/I_W:5")  # fmt: skip
            high, low = divmod(4000000000, 65536)
            self.assertEqual(
                out.splitlines(),
                [
                    line(f"{s}/R_W:400", [word(s, "R", 400) | 8]),
                    line(f"{s}/R_W:500..503", [65535, word(s, "R", 501), low, high]),
                    line(f"{s}/R_W:599..601", [word(s, "R", 599), 0, 1]),
                    line(f"{s}/R_W:722..723", [122, word(s, "R", 723)]),
                    line(f"{s}/I_W:5", [word(s, "I", 5) ^ 1 << 5]),
                ],
            )

    def test_a_request_beyond_the_protocol_is_refused_by_name(self):
        err = self.fails("watch", *self.port, "R_W:0..127", "--cycles", "1")
        self.assertIn("exception 3 (illegal data value)", err)


class Libmodbus(Slave, EndToEnd):
    def server(self, port):
        return (os.environ["LIBMODBUS_SERVER"], port)


class Pymodbus(Slave, EndToEnd):
    stations = (1, 2)

    def server(self, port):
        return (sys.executable, os.path.join(HERE, "pymodbus_server.py"), port)


if __name__ == "__main__":
    unittest.main()
