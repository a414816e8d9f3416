"""Modbus TCP: pymodbus' and libmodbus' servers, which nobody here wrote, over a network that delays
what it carries, cuts it into pieces or joins them, and can be cut; and servers that break the
rules."""

import contextlib
import os
import socket
import sys
import threading
import unittest

import late_slaves_test
import slaves_test
from harness import EndToEnd, run
from network import Relay, free_port, wait_for_listener

HERE = os.path.dirname(os.path.abspath(__file__))
HEADER = 7  # number, protocol, length, unit


def requests_in(stream):
    """Each as its number, its unit and what follows."""
    while stream:
        length = int.from_bytes(stream[4:6], "big")
        assert stream[2:4] == b"\0\0" and len(stream) >= 6 + length, stream
        yield int.from_bytes(stream[:2], "big"), stream[6], stream[HEADER : 6 + length]
        stream = stream[6 + length :]


class Network(EndToEnd):
    def tcp_server(self, host="127.0.0.1"):
        """Its address."""
        port = free_port(host)
        server = self.process(*self.command(host, port))
        server.wait_for("ready")
        wait_for_listener(host, port, server.process)
        return (host, port)

    def relay(self, target, **options):
        relay = Relay(target, **options)
        self.addCleanup(relay.close)
        return relay


class Pymodbus:
    stations = (1, 2)

    def command(self, host, port):
        return (sys.executable, os.path.join(HERE, "pymodbus_server.py"), f"{host}:{port}")


class Libmodbus:
    def command(self, host, port):
        return (os.environ["LIBMODBUS_SERVER"], host, str(port))


class Slave(slaves_test.Slave):
    """What holds on a serial port holds here, and what was sent is looked at."""

    def setUp(self):
        EndToEnd.setUp(self)
        self.relay_ = self.relay(self.tcp_server())
        self.port = ("--port", f"mbtcp://127.0.0.1:{self.relay_.port}", "--timeout", "5000")
        self.addCleanup(self.look_at_what_was_sent)

    def look_at_what_was_sent(self):
        for _, _, request in requests_in(self.relay_.asked):
            count = int.from_bytes(request[3:5], "big")
            most = {1: 2000, 3: 125, 15: 1968, 16: 123}
            self.assertNotEqual(request[0], 8, "a marker")
            self.assertLessEqual(count if request[0] in most else 0, most.get(request[0], 0))

    def test_a_request_beyond_the_protocol_goes_in_parts_once_it_was_refused(self):
        """It is never sent."""
        for register in ("R_W", "M_W"):
            done = run("watch", *self.port, f"{register}:0..127", "--cycles", "3")
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertEqual(
                self.values(done.stdout, register),
                {a: slaves_test.word(1, register[0], a) for a in range(128)},
            )

    def test_a_request_beyond_the_protocol_is_refused_by_name_where_parts_are_forbidden(self):
        done = run("watch", *self.port, "R_W:0..127", "--cycles", "1", "--max-registers", "128")
        self.assertEqual(done.returncode, 2)
        self.assertEqual(
            done.stderr,
            "dov417: --max-registers 128: a request of Modbus TCP has room for 125\n",
        )

    def test_the_numbers_of_a_run_are_all_different(self):
        self.succeeds("watch", *self.port, "R_W:0", "R_W:100", "M_W:0", "--cycles", "200")
        numbers = [number for number, _, _ in requests_in(self.relay_.asked)]
        self.assertGreaterEqual(len(numbers), 600)
        self.assertEqual(len(set(numbers)), len(numbers))


class SlavesOfPymodbus(Pymodbus, Slave, Network):
    pass


class SlavesOfLibmodbus(Libmodbus, Slave, Network):
    def test_over_ipv6(self):
        _, port = self.tcp_server("::1")
        out = self.succeeds("read", "--port", f"mbtcp://[::1]:{port}", "R_W:5")
        self.assertEqual(out, f"1/R_W:5 = {slaves_test.word(1, 'R', 5)}\n")


class Late(Pymodbus, late_slaves_test.LateSlave, Network):
    """A network that takes its time."""

    def start(self, **times):
        self.relay_ = self.relay(self.tcp_server(), **times)
        return ("--port", f"mbtcp://127.0.0.1:{self.relay_.port}")

    def test_what_is_late_is_counted(self):
        port = self.start(delay=0.3)
        out = run("watch", *port, "R_W:100", "R_W:200", "--seconds", "2", "--timeout", "200",
                  "--stats").stdout  # fmt: skip
        self.judged(out)
        self.assertRegex(out, r"bytes that were no reply: \d+ x late")
        self.assertRegex(out, r"all requests: \d+ sent, 0 good")

    def test_what_comes_at_intervals_only(self):
        port = self.start(join=0.4, delay=0.3)
        out = self.succeeds("watch", *port, "R_W:100", "R_W:200", "2/R_W:100", "--cycles", "4")
        self.assertEqual(self.judged(out), {"1/R_W:100", "1/R_W:200", "2/R_W:100"})

    def test_no_write_is_lost_when_the_connection_is_cut(self):
        port = self.start()
        writing = self.tool("write", *port, "--gap", "1", "--retries", "30",
                            *(f"R_W:{a}={a + 1}" for a in range(100, 200)))  # fmt: skip
        for _ in range(3):  # while it reads, while it writes
            for _ in range(50):
                self.relay_.wait_for_request()
            self.relay_.cut()
            writing.wait_for_error("is open again")
        code, out, err = writing.end()
        self.assertEqual(code, 0, err)
        self.assertEqual(out.count("written and read back"), 100)
        out = self.succeeds("read", *port, "R_W:100..199")
        self.assertEqual(out.split(" = ")[1].split(), [str(a + 1) for a in range(100, 200)])


class Scripted:
    """A server that answers each request with what `answer(number, unit, request)` gives."""

    def __init__(self, answer):
        self._answer = answer
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        self.connections = 0
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        with contextlib.suppress(OSError):
            while True:
                connection, _ = self._listener.accept()
                self.connections += 1
                threading.Thread(target=self._serve, args=(connection,), daemon=True).start()

    def _serve(self, connection):
        with contextlib.suppress(OSError), connection:
            while heard := connection.recv(4096):
                for number, unit, request in requests_in(heard):
                    connection.sendall(self._answer(number, unit, request))

    def close(self):
        self._listener.close()


def framed(number, unit, body):
    length = (len(body) + 1).to_bytes(2, "big")
    return number.to_bytes(2, "big") + b"\0\0" + length + bytes((unit,)) + body


def served(request, value=7):
    """As a controller does it: every register holds the value."""
    if request[0] != 3:
        return request[:5]
    count = int.from_bytes(request[3:5], "big")
    return bytes((3, 2 * count)) + count * value.to_bytes(2, "big")


class AgainstTheRules(EndToEnd):
    def start(self, answer):
        self.server = Scripted(answer)
        self.addCleanup(self.server.close)
        return ("--port", f"mbtcp://127.0.0.1:{self.server.port}")

    def test_what_a_gateway_answers_to_a_broadcast_is_thrown_away(self):
        port = self.start(lambda number, unit, request: framed(number, unit, served(request)))
        log = self.path("line.log")
        out = self.succeeds("write", *port, "0/R_W:100=5", "R_W:101=7", "--log", log)
        self.assertIn("sent to all stations; nobody confirms a broadcast", out)
        self.assertIn("1/R_W:101 = 7: written and read back", out)
        with open(log, encoding="utf-8") as file:
            self.assertRegex(file.read(), r"RX\? 00 06 .*late, not handed on")

    def test_another_number_is_no_reply(self):
        port = self.start(lambda number, unit, request: framed(number + 1, unit, served(request)))
        err = self.fails("read", *port, "R_W:100", "--timeout", "500")
        self.assertIn("only a late reply to an earlier request came", err)

    def test_another_unit_is_no_reply(self):
        port = self.start(lambda number, unit, request: framed(number, unit + 1, served(request)))
        err = self.fails("read", *port, "R_W:100", "--timeout", "500")
        self.assertIn("another station answered (2)", err)

    def test_a_reply_that_comes_before_it_with_an_older_number_changes_nothing(self):
        port = self.start(
            lambda number, unit, request: framed(number - 1 & 0xFFFF, unit, served(request, 8))
            + framed(number, unit, served(request))
            + framed(number, unit, served(request, 9))
        )
        self.assertEqual(self.succeeds("read", *port, "R_W:100", "R_W:300").split("\n")[:2],
                         ["1/R_W:100 = 7", "1/R_W:300 = 7"])  # fmt: skip

    def test_a_server_of_something_else_is_named(self):
        port = self.start(lambda *_: b"HTTP/1.1 400 Bad Request\r\n\r\n")
        err = self.fails("read", *port, "R_W:100")
        self.assertEqual(err.count("sends what is no Modbus TCP: the connection is closed"), 1)
        self.assertIn("the port did not come back", err)
        self.assertGreater(self.server.connections, 1)

    def check_a_header_that_is_none(self, place, lie):
        """Once, then it does as it should."""
        lies = [lie]

        def answer(number, unit, request):
            frame = framed(number, unit, served(request))
            return frame[:place] + lies.pop() + frame[place + 2 :] if lies else frame

        port = self.start(answer)
        done = run("read", *port, "R_W:100")
        self.assertEqual((done.returncode, done.stdout), (0, "1/R_W:100 = 7\n"), done.stderr)
        self.assertIn("sends what is no Modbus TCP", done.stderr)
        self.assertEqual(self.server.connections, 2)

    def test_a_length_that_no_frame_has_ends_the_connection(self):
        self.check_a_header_that_is_none(4, b"\xff\xff")

    def test_a_length_without_a_function_ends_the_connection(self):
        self.check_a_header_that_is_none(4, b"\0\1")

    def test_another_protocol_ends_the_connection(self):
        self.check_a_header_that_is_none(2, b"\0\1")


if __name__ == "__main__":
    unittest.main()
