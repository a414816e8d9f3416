"""Who answers over a network: behind a device server, and by Modbus TCP."""

import contextlib
import signal
import socket
import time
import unittest

import device_server_test
import modbus_tcp_test
from harness import EndToEnd, run, told
from modbus_tcp_test import Scripted, framed
from network import free_port
from scan_test import FewWords

REFUSAL = "exception 2 (illegal data address)"


def word_for(request):
    """The value of a read of one word."""
    return bytes((request[0], 2, 0, 0))


def catches_ctrl_c(process):
    with open(f"/proc/{process}/status", encoding="ascii") as file:
        caught = next(line for line in file if line.startswith("SigCgt:")).split()[1]
    return int(caught, 16) >> (signal.SIGINT - 1) & 1


class Scanning(EndToEnd):
    def scan(self, *arguments):
        """Exit code, who was found and slow or not, ranges, and what else was told."""
        done = run("scan", "--json", *arguments)
        objects = told(done.stdout)
        found = {each["station"]: each["slow"] for each in objects if "slow" in each}
        for each in objects:
            self.assertNotIn("line", each)
        ranges = [(each["range"], each["answered"], each.get("reason")) for each in objects
                  if "range" in each]  # fmt: skip
        rest = [each for each in objects if not {"milliseconds", "range"} & each.keys()]
        return done.returncode, found, ranges, rest


class BehindADeviceServer(Scanning, device_server_test.Network):
    def start(self, *options, delay=0.0):
        plc = self.controller("--still", "--line", "38400,8,NONE,1", *options)
        self.server = self.device_server(plc.port)
        self.network = self.relay(self.server.address, delay=delay)
        return device_server_test.url(self.network.port)

    def test_stations_are_found(self):
        port = self.start("--stations", "3,7")
        code, found, _, rest = self.scan("--port", port, "--stations", "1..8")
        self.assertEqual((code, set(found)), (0, {3, 7}))
        self.assertEqual(rest, [{"end": "complete", "found": 2}])
        asked = self.network.asked
        self.assertEqual({(asked[at], asked[at + 1]) for at in range(0, len(asked), 8)},
                         {(station, 1) for station in range(1, 9)} | {(3, 3), (7, 3)})  # fmt: skip

    def test_words_name_no_line(self):
        port = self.start()
        out = self.succeeds("scan", "--port", port, "--stations", "1")
        self.assertRegex(out, r"\Astation 1 answers in \d+\.\d ms\nfound 1 station\n\Z")

    def test_a_late_answer_is_credited_to_its_station(self):
        port = self.start("--stations", "2", delay=0.3)
        code, found, _, rest = self.scan("--port", port, "--stations", "1..4", "--timeout", "100")
        self.assertEqual((code, found), (0, {2: True}))
        self.assertEqual(rest, [{"end": "complete", "found": 1}])

    def test_nobody_is_found_where_nobody_is(self):
        port = self.start("--stations", "9")
        err = self.fails("scan", "--port", port, "--stations", "1..3")
        self.assertIn("nobody answers: 3 stations asked. Is the controller on, has the far end its "
                      "speed and parity", err)  # fmt: skip

    def test_ranges_are_found_by_halving(self):
        few = FewWords()
        self.addCleanup(few.close)
        # It serves one at a time, and the ranges are asked for on a second connection.
        server = self.device_server(few.port)
        code, found, ranges, _ = self.scan(
            "--port", device_server_test.url(server.port), "--registers", "5/R_W:90..185",
            "5/T:0..3",
        )  # fmt: skip
        self.assertEqual((code, set(found)), (0, {5}))
        self.assertEqual(
            ranges,
            [
                ("5/R_W:90..99", False, REFUSAL),
                ("5/R_W:100..179", True, None),
                ("5/R_W:180", False, REFUSAL),
                ("5/R_W:181..185", True, None),
                ("5/T:0..3", False, REFUSAL),
            ],
        )

    def test_a_connection_that_is_cut_ends_it(self):
        port = self.start("--stations", "1")
        scanning = self.tool("scan", "--port", port, "--stations", "1..99", "--timeout", "600")
        scanning.wait_for("station 1 ")
        self.network.unplug()
        code, _, err = scanning.end()
        self.assertEqual((code, err), (1, f"dov417: port {port} is gone\n"))

    def test_nobody_there_is_said(self):
        port = device_server_test.url(free_port())
        self.assertIn("refuses the connection", self.fails("scan", "--port", port))

    def test_ctrl_c_ends_the_wait_for_a_connection(self):
        # A queue that is full: what knocks is not answered.
        with socket.create_server(("127.0.0.1", 0), backlog=0) as listener:
            address = listener.getsockname()
            with contextlib.ExitStack() as stack:
                for _ in range(2):
                    knocking = stack.enter_context(socket.socket())
                    knocking.setblocking(False)
                    knocking.connect_ex(address)
                scanning = self.tool("scan", "--json", "--port", device_server_test.url(address[1]))
                while not catches_ctrl_c(scanning.process.pid):
                    time.sleep(0.01)
                code, out, _ = scanning.interrupt()
        self.assertEqual(code, 1)
        self.assertEqual(told(out), [{"end": "interrupted", "found": 0}])


class ByModbusTcp:
    def test_stations_of_a_server_are_found(self):
        port = f"mbtcp://{self.address[0]}:{self.address[1]}"
        stations = ",".join(map(str, (*self.stations, 9)))
        code, found, _, rest = self.scan(
            "--port", port, "--stations", stations, "--timeout", "300"
        )
        self.assertEqual(code, 0)
        self.assertEqual(set(found), self.found)
        self.assertEqual(rest, [{"end": "complete", "found": len(self.found)}])
        code, _, ranges, _ = self.scan("--port", port, "--registers", "1/R_W:0..255")
        self.assertEqual((code, ranges), (0, [("1/R_W:0..255", True, None)]))


class OfPymodbus(modbus_tcp_test.Pymodbus, ByModbusTcp, Scanning, modbus_tcp_test.Network):
    found = {1, 2}

    def setUp(self):
        super().setUp()
        self.address = self.tcp_server()


class OfLibmodbus(modbus_tcp_test.Libmodbus, ByModbusTcp, Scanning, modbus_tcp_test.Network):
    stations = (1, 2)
    found = {1, 2, 9}

    def setUp(self):
        super().setUp()
        self.address = self.tcp_server()


class AGateway(Scanning):
    def start(self, answer):
        self.server = Scripted(answer)
        self.addCleanup(self.server.close)
        return ("--port", f"mbtcp://127.0.0.1:{self.server.port}")

    def test_a_station_that_it_asks_in_vain_is_not_there_and_is_not_waited_for(self):
        def answer(number, unit, request):
            there = unit == 4
            return framed(number, unit, word_for(request) if there else bytes((request[0] | 0x80, 11)))

        # In all this would be a day.
        port = self.start(answer)
        code, found, _, rest = self.scan(*port, "--stations", "1..247", "--timeout", "400000")
        self.assertEqual((code, set(found)), (0, {4}))
        self.assertEqual(rest, [{"end": "complete", "found": 1}])

    def test_a_controller_that_looks_at_no_number_is_told(self):
        port = self.start(lambda number, unit, request: framed(number, unit, word_for(request)))
        code, found, _, rest = self.scan(*port, "--stations", "1..32")
        self.assertEqual((code, len(found), len(rest)), (0, 32, 1))
        code, found, _, rest = self.scan(*port, "--stations", "1..33")
        self.assertEqual((code, len(found)), (0, 33))
        self.assertEqual(rest[0], {"notice": "whoever is asked answers: it may be one controller "
                                   "that looks at no number"})  # fmt: skip

    def test_an_answer_under_another_number_or_unit_finds_nobody(self):
        port = self.start(
            lambda number, unit, request: framed(number + 1000, unit, word_for(request))
            + framed(number, unit + 1, word_for(request))
        )
        log = self.path("line.log")
        code, found, _, _ = self.scan(*port, "--stations", "1,2", "--timeout", "200", "--log", log)
        self.assertEqual((code, found), (1, {}))
        with open(log, encoding="utf-8") as file:
            self.assertEqual(file.read().count("no answer to what was asked"), 4)

    def test_a_server_of_something_else_is_named(self):
        port = self.start(lambda *_: b"HTTP/1.1 400 Bad Request\r\n\r\n")
        err = self.fails("scan", *port)
        self.assertIn("sends what is no Modbus TCP", err)


if __name__ == "__main__":
    unittest.main()
