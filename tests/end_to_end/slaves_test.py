"""The driver against slaves that nobody here wrote; they hold the same, and all are strict."""

import json
import os
import re
import sys
import unittest

from harness import EndToEnd, run

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

    def values(self, out, register):
        """What a watch told of a register type, by its address."""
        told = re.findall(rf" 1/{register}:(\d+) = (\d+)$", out, re.MULTILINE)
        return {int(address): int(value) for address, value in told}

    def test_a_request_beyond_the_protocol_goes_in_parts_once_it_was_refused(self):
        for register, coils in (("R_W", "128 registers"), ("M_W", "2048 coils")):
            done = run("watch", *self.port, f"{register}:0..127", "--cycles", "3")
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertEqual(
                self.values(done.stdout, register),
                {a: word(1, register[0], a) for a in range(128)},
            )
            self.assertEqual(done.stderr.count(f"station 1 refuses {coils}"), 1)

    def test_parts_are_as_short_as_they_are_told_to_be(self):
        for maximum in (125, 60, 16):
            log = self.path(f"log{maximum}")
            out = self.succeeds(
                "watch", *self.port, "R_W:0..127", "M_W:0..127", "--cycles", "1", "--log", log,
                "--max-registers", str(maximum), "--stats",
            )  # fmt: skip
            for register in ("R_W", "M_W"):
                self.assertEqual(
                    self.values(out, register), {a: word(1, register[0], a) for a in range(128)}
                )
            with open(log, encoding="utf-8") as file:
                text = file.read()
            asked = [int(n) for n in re.findall(r"read (\d+) registers? from", text)]
            coils = [int(n) for n in re.findall(r"read (\d+) coils from", text)]
            parts = 2 * -(-128 // maximum)
            self.assertIn(f"all requests: 2 sent, 2 good, {parts} parts", out)
            self.assertLessEqual(max(asked), maximum)
            self.assertLessEqual(max(coils), 16 * maximum)
            self.assertNotIn("exception", text)

    def test_a_request_beyond_the_protocol_is_refused_by_name_where_parts_are_forbidden(self):
        err = self.fails("watch", *self.port, "R_W:0..127", "--cycles", "1",
                         "--max-registers", "128")  # fmt: skip
        self.assertIn("exception 3 (illegal data value)", err)

    def test_a_long_write_and_a_long_recipe_arrive_in_parts(self):
        # libmodbus lets an echo wait for its time-out.
        port = (*self.port, "--no-function-8")
        words = [3 * a for a in range(128)]
        values = ",".join(map(str, words))
        out = self.succeeds("write", *port, "--gap", "0", "--max-registers", "60",
                            f"R_W:1000..1127={values}", f"M_W:0..127={values}")  # fmt: skip
        self.assertEqual(out.count("written and read back"), 2)
        out = self.succeeds("read", *port, "--gap", "0", "R_W:999..1128", "M_W:0..127")
        self.assertEqual(
            out.splitlines(),
            [
                line("1/R_W:999..1128", [word(1, "R", 999), *words, word(1, "R", 1128)]),
                line("1/M_W:0..127", words),
            ],
        )

        tags = self.write_file(
            "long.csv", "name,register,address,count\nlong,R_W,2000,300\ndouble,R_D,2401,130\n"
        )
        recipe = {"long": [7 * a for a in range(300)], "double": [70000 + a for a in range(130)]}
        file = self.write_file("recipe.json", json.dumps(recipe))
        options = ("--tags", tags, *port, "--max-registers", "32")
        self.succeeds("recipe", "download", file, *options)
        copy = self.path("copy.json")
        self.succeeds("recipe", "upload", copy, *options)
        with open(copy, encoding="utf-8") as uploaded:
            self.assertEqual(json.load(uploaded), recipe)
        out = self.succeeds("read", *port, "R_W:2299..2300", "R_D:2659")
        self.assertEqual(
            out.splitlines(),
            [
                line("1/R_W:2299..2300", [2093, word(1, "R", 2300)]),
                line("1/R_D:2659..2660", [70129]),
            ],
        )


class Libmodbus(Slave, EndToEnd):
    side_by_side = True

    def server(self, port):
        return (os.environ["LIBMODBUS_SERVER"], port)


class Pymodbus(Slave, EndToEnd):
    stations = (1, 2)

    def server(self, port):
        return (sys.executable, os.path.join(HERE, "pymodbus_server.py"), port)


if "SERIALBUS_SERVER" in os.environ:

    class Serialbus(Slave, EndToEnd):
        def server(self, port):
            return (os.environ["SERIALBUS_SERVER"], port)


if __name__ == "__main__":
    unittest.main()
