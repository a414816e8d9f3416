"""Which ports there are, and who answers on them."""

import contextlib
import glob
import json
import os
import pty
import select
import termios
import threading
import time
import tty
import unittest

from frames import with_crc
from harness import Controller, EndToEnd, run, told


def ports_of_the_system():
    """Those with a chip behind them, told in another way."""
    found = set()
    for device in glob.glob("/sys/class/tty/*/device"):
        terminal = os.path.dirname(device)
        name = "/dev/" + os.path.basename(terminal)
        kind = os.path.join(terminal, "type")
        if os.path.exists(kind):
            with open(kind, encoding="ascii") as file:
                if file.read().strip() == "0":
                    continue
        if os.path.exists(name):
            found.add(name)
    return found


class Ports(EndToEnd):
    def test_ports_are_those_of_the_system(self):
        objects = told(self.succeeds("ports", "--json"))
        self.assertEqual({port["port"] for port in objects}, ports_of_the_system())
        rows = self.succeeds("ports").splitlines()[1:]
        self.assertEqual([row.split()[0] for row in rows], [port["port"] for port in objects])


class Bus:
    """One line with any number of controllers, each on a pseudo-terminal of its own. They get the
    speed of the end at `port` with each lump of bytes: by that they tell whether it is theirs."""

    def __init__(self, folder, *controllers):
        self.port = os.path.join(folder, "bus")
        self.heard = b""  # from the end at `port`
        self._near, self._near_keeper = pty.openpty()
        tty.setraw(self._near_keeper, termios.TCSANOW)
        os.symlink(os.ttyname(self._near_keeper), self.port)
        self._far = [os.open(port, os.O_RDWR | os.O_NOCTTY) for port in controllers]
        self._wake_reader, self._wake_writer = os.pipe()
        self._thread = threading.Thread(target=self._forward, daemon=True)
        self._thread.start()

    def send(self, lump):
        os.write(self._near, lump)

    def unplug(self):
        """Hangs up."""
        if self._near is None:
            return
        os.write(self._wake_writer, b"q")
        self._thread.join()
        for end in (self._near, self._near_keeper, *self._far):
            os.close(end)
        self._near = None

    def close(self):
        self.unplug()
        os.close(self._wake_reader)
        os.close(self._wake_writer)

    def _forward(self):
        while True:
            ready, _, _ = select.select([self._near, self._wake_reader, *self._far], [], [])
            if self._wake_reader in ready:
                return
            for far in self._far:
                if far in ready:
                    os.write(self._near, os.read(far, 4096))
            if self._near in ready:
                lump = os.read(self._near, 4096)
                self.heard += lump
                self._pass_on(lump, termios.tcgetattr(self._near_keeper)[5])

    def _pass_on(self, lump, speed):
        for far in self._far:
            settings = termios.tcgetattr(far)
            settings[4] = settings[5] = speed
            termios.tcsetattr(far, termios.TCSANOW, settings)
            os.write(far, lump)


class FewWords:
    """Station 5 with these registers and nothing else; it takes 40 of them at once."""

    REGISTERS = set(range(1280 + 100, 1280 + 250)) - {1280 + 180}

    def __init__(self):
        self._near, self._keeper = pty.openpty()
        tty.setraw(self._keeper, termios.TCSANOW)
        self.port = os.ttyname(self._keeper)
        self._wake_reader, self._wake_writer = os.pipe()
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()

    def close(self):
        os.write(self._wake_writer, b"q")
        self._thread.join()
        for end in (self._near, self._keeper, self._wake_reader, self._wake_writer):
            os.close(end)

    def _serve(self):
        pending = b""
        while True:
            ready, _, _ = select.select([self._near, self._wake_reader], [], [])
            if self._wake_reader in ready:
                return
            pending += os.read(self._near, 4096)
            while len(pending) >= 8:  # every request here has 8 bytes
                request, pending = pending[:8], pending[8:]
                os.write(self._near, self._answer(request))

    def _answer(self, request):
        station, function = request[:2]
        first, count = int.from_bytes(request[2:4], "big"), int.from_bytes(request[4:6], "big")
        if station != 5:
            return b""
        if function == 8:
            return request
        if function != 3:
            reply = bytes((station, function | 0x80, 1))
        elif count > 40 or not set(range(first, first + count)) <= self.REGISTERS:
            reply = bytes((station, function | 0x80, 2))
        else:
            reply = bytes((station, function, 2 * count)) + bytes(2 * count)
        return with_crc(reply)


def line(speed):
    """A pseudo-terminal carries the speed, and no parity."""
    return f"{speed},8,EVEN,1"


class Scan(EndToEnd):
    def bus(self, *controllers):
        bus = Bus(self.folder, *(controller.port for controller in controllers))
        self.addCleanup(bus.close)
        return bus

    def station(self, station, speed, *options):
        folder = self.path(f"{station}-{speed}-{len(os.listdir(self.folder))}")
        os.mkdir(folder)
        controller = Controller(
            folder, "--stations", str(station), "--line", line(speed), *options
        )
        self.addCleanup(controller.close)
        return controller

    def scan(self, *arguments):
        """Exit code, who was found, and what else was told."""
        done = run("scan", "--json", *arguments)
        objects = told(done.stdout)
        found = [(each["station"], each["line"], each["slow"]) for each in objects
                 if "milliseconds" in each]  # fmt: skip
        return done.returncode, found, [each for each in objects if "milliseconds" not in each]

    def test_three_controllers_at_three_speeds_are_found_the_late_one_too(self):
        controllers = [
            self.station(3, 9600),
            self.station(17, 19200),
            self.station(40, 115200, "--response-time", "900"),
        ]
        bus = self.bus(*controllers)
        code, found, told = self.scan(
            "--port", bus.port, "--stations", "2..3,17,40..42", "--timeout", "500",
            "--lines", *(line(speed) for speed in (38400, 9600, 19200, 57600, 115200)),
        )  # fmt: skip
        self.assertEqual(code, 0)
        self.assertEqual(
            found, [(3, line(9600), False), (17, line(19200), False), (40, line(115200), True)]
        )
        self.assertEqual(told, [{"end": "complete", "found": 3}])
        for controller in controllers:
            _, out, _ = controller.interrupt()
            self.assertRegex(out, "of these answered [23],")  # again if it was disturbed
            self.assertIn("writes executed 0", out)

    def test_a_station_that_is_found_is_told_at_once(self):
        bus = self.bus(self.station(1, 9600))
        scanning = self.tool("scan", "--port", bus.port, "--lines", line(9600), "--timeout", "60000")
        self.assertRegex(scanning.wait_for("station 1 at 9600,8,EVEN,1 "), "answers in .* ms")
        scanning.interrupt()

    def test_ctrl_c_ends_with_what_was_found(self):
        bus = self.bus(self.station(1, 9600))
        scanning = self.tool("scan", "--port", bus.port, "--lines", line(9600))
        scanning.wait_for("station 1 ")
        code, out, err = scanning.interrupt()
        self.assertEqual(code, 0)
        self.assertEqual(out, "found 1 station at 1 line setting\n")
        self.assertEqual(err, "dov417: interrupted: not everything was asked\n")

    def test_an_empty_line_is_asked_by_reads_alone(self):
        bus = self.bus()
        done = run("scan", "--port", bus.port, "--stations", "1..9", "--lines", line(9600),
                   line(19200))  # fmt: skip
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout, "")
        self.assertIn("dov417: nobody answers: 9 stations at 2 line settings asked.", done.stderr)
        frames = [bus.heard[at : at + 8] for at in range(0, len(bus.heard), 8)]
        self.assertEqual([(frame[0], frame[1]) for frame in frames],
                         [(station, 1) for station in range(1, 10)] * 2)  # fmt: skip

    def test_nothing_is_sent_where_others_speak(self):
        bus = self.bus(self.station(1, 9600))
        spoken = threading.Event()

        def speak():
            while not spoken.wait(0.05):
                with contextlib.suppress(OSError):
                    bus.send(bytes.fromhex("0103050A0001A4C4"))

        other = threading.Thread(target=speak)
        other.start()
        code, found, told = self.scan("--port", bus.port, "--stations", "1", "--lines", line(9600))
        spoken.set()
        other.join()
        self.assertEqual((code, found, bus.heard), (1, [], b""))
        self.assertEqual(told[0]["heard"], "inUse")
        self.assertEqual(told[0]["stations"], [1])
        self.assertIn("the line is in use: others speak with station 1; nothing is asked",
                      told[0]["text"])  # fmt: skip

    def test_what_others_kept_from_being_asked_is_told(self):
        bus = self.bus(self.station(1, 9600))
        project = self.write_file("project.json", '{"version": 1, "stations": ['
                                  '{"number": 1, "name": "press"}, {"number": 9, "name": "oven"}]}')  # fmt: skip
        where = ["--port", bus.port, "--project", project, "--stations", "1..9", "--lines",
                 line(9600), "--timeout", "500"]  # fmt: skip
        reply = bytes.fromhex("C8030400010002")
        for form in ([], ["--json"]):
            scanning = self.tool("scan", *where, *form)
            scanning.wait_for('"station":1,' if form else "station 1 ")
            for _ in range(8):  # of others, before the last is asked
                bus.send(with_crc(reply))
                time.sleep(0.1)
            code, out, err = scanning.end()
            self.assertEqual(code, 1, out + err)
            if not form:
                self.assertIn("the line is in use: not everything was asked\n", err)
                self.assertIn("dov417: station 9 (oven) of the project was not asked\n", err)
                self.assertIn("found 1 station ", out)
                continue
            self.assertIn('{"end":"inUse","found":1}\n', out)
            self.assertIn('{"notice":"station 9 (oven) of the project was not asked"}', out)

    def test_two_controllers_under_one_number_are_told(self):
        bus = self.bus(self.station(5, 9600), self.station(5, 9600), self.station(6, 9600))
        code, found, told = self.scan("--port", bus.port, "--stations", "4..7", "--lines",
                                      line(9600))  # fmt: skip
        self.assertEqual(code, 0)
        self.assertEqual({station for station, _, _ in found}, {5, 6})
        self.assertEqual([(each["heard"], each["station"]) for each in told[:-1]],
                         [("answeredTwice", 5)])  # fmt: skip

    def test_bytes_without_a_frame_are_told(self):
        bus = self.bus(self.station(5, 9600, "--fault", "flip:2=100%"), self.station(6, 9600))
        # A busy machine may hear them late: they are told of who is asked meanwhile then.
        _, found, told = self.scan("--port", bus.port, "--stations", "4..7", "--lines", line(9600),
                                   "--timeout", "500")  # fmt: skip
        self.assertEqual([station for station, _, _ in found], [6])
        self.assertEqual([(each["heard"], each["station"]) for each in told[:-1]],
                         [("garbled", 5)])  # fmt: skip

    def test_a_port_that_goes_ends_it(self):
        bus = self.bus(self.station(1, 9600))
        scanning = self.tool("scan", "--port", bus.port, "--lines", line(9600))
        scanning.wait_for("station 1 ")
        bus.unplug()
        code, _, err = scanning.end()
        self.assertEqual(code, 1)
        self.assertIn(f"dov417: port {bus.port} is gone", err)

    def test_a_terminal_shows_how_far_it_is(self):
        bus = self.bus(self.station(1, 9600))
        terminal = self.terminal("scan", "--port", bus.port, "--lines", line(9600))
        terminal.wait_for(b"s left")
        self.assertIn(b"at 9600,8,EVEN,1, ", terminal.seen)
        terminal.wait_for(b"station 1 at 9600,8,EVEN,1 answers in ")
        terminal.press(b"\x03")
        self.assertEqual(terminal.end(), 0)
        self.assertTrue(terminal.seen.endswith(b"found 1 station at 1 line setting\r\n"))

    def test_its_log_is_explained(self):
        bus = self.bus(self.station(2, 9600))
        self.scan("--port", bus.port, "--stations", "1,2", "--lines", line(9600),
                  "--log", self.path("log"))  # fmt: skip
        explained = self.succeeds("trace", self.path("log"))
        self.assertIn("-> station 2: read 16 coils from 0 (I_W:0)", explained)
        self.assertIn("<- station 2: I_W:0 = ", explained)
        self.assertIn("-- line 9600,8,EVEN,1", explained)

    def ranges(self, *arguments):
        """Exit code, and the ranges as (words, answered, reason)."""
        done = run("scan", "--json", "--lines", line(9600), *arguments)
        objects = told(done.stdout)
        return done.returncode, [(each["range"], each["answered"], each.get("reason"))
                                 for each in objects if "range" in each]  # fmt: skip

    def test_ranges_are_found_by_halving(self):
        few = FewWords()
        self.addCleanup(few.close)
        code, found = self.ranges("--port", few.port, "--registers", "5/R_W:90..260", "5/T:0..3")
        refusal = "exception 2 (illegal data address)"
        self.assertEqual(
            found,
            [
                ("5/R_W:90..99", False, refusal),
                ("5/R_W:100..179", True, None),
                ("5/R_W:180", False, refusal),
                ("5/R_W:181..249", True, None),
                ("5/R_W:250..260", False, refusal),
                ("5/T:0..3", False, refusal),
            ],
        )
        self.assertEqual(code, 0)

    def test_every_word_of_a_controller_is_found(self):
        bus = self.bus(self.station(2, 9600))
        code, found = self.ranges("--port", bus.port, "--registers", "2/R_W:0..3999",
                                  "2/M_bit:0.0..127.15")  # fmt: skip
        self.assertEqual(code, 0)
        self.assertEqual(found, [("2/R_W:0..3999", True, None), ("2/M_W:0..127", True, None)])
        # Blocks of 125 words, and what finding the station takes.
        self.assertLess(len(bus.heard) // 8, 32 + 2 + 8)

    def test_ranges_that_were_not_asked_when_it_was_interrupted_are_not_known(self):
        few = FewWords()
        self.addCleanup(few.close)
        done = self.tool("scan", "--json", "--lines", line(9600), "--port", few.port, "--registers",
                         "5/R_W:90..260", "5/R_W:1000..1999", "5/T:0..3")  # fmt: skip
        done.wait_for('"5/R_W:90..99"')
        code, out, _ = done.interrupt()
        self.assertEqual(code, 1)
        *ranges, last, end = [json.loads(each) for each in out.splitlines()]
        self.assertEqual(last, {"range": "5/T:0..3", "answered": None, "reason": "interrupted"})
        self.assertEqual(end, {"end": "interrupted", "found": 1})
        self.assertEqual(ranges[-1]["answered"], None)
        self.assertRegex(ranges[-1]["range"], r"^5/R_W:1[0-9]{3}\.\.1999$")

    def test_ranges_of_a_station_that_is_not_there_are_not_known(self):
        bus = self.bus(self.station(2, 9600))
        done = run("scan", "--port", bus.port, "--lines", line(9600), "--registers", "2/T:0..3",
                   "3/T:0..3")  # fmt: skip
        self.assertEqual(done.returncode, 1)
        self.assertIn("2/T:0..3 is answered\n", done.stdout)
        self.assertEqual(done.stderr, "dov417: 3/T:0..3: its station was not found\n")


if __name__ == "__main__":
    unittest.main()
