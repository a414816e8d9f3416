"""A serial line behind a device server on the network: ser2net onto a pseudo-terminal, and a
network that delays what it carries, and cuts it into pieces or joins them."""

import os
import re
import signal
import socket
import subprocess
import sys
import time
import unittest

import late_slaves_test
import liar_test
import slaves_test
from harness import TOOL, EndToEnd, run
from network import DeviceServer, Relay, free_port

HERE = os.path.dirname(os.path.abspath(__file__))
PYMODBUS = (sys.executable, os.path.join(HERE, "pymodbus_server.py"))


class Network(EndToEnd):
    def device_server(self, device, **options):
        server = DeviceServer(self.folder, device, **options)
        self.addCleanup(server.close)
        return server

    def relay(self, target, **options):
        relay = Relay(target, **options)
        self.addCleanup(relay.close)
        return relay


def url(port, host="127.0.0.1"):
    return f"tcp://{host}:{port}"


class Behind(Network):
    """The simulated controller behind it."""

    def start(self, *options, still=("--still",), **server):
        self.plc = self.controller(*still, "--line", "38400,8,NONE,1", *options)
        self.server = self.device_server(self.plc.port, **server)
        return url(self.server.port)

    def test_values_come_and_writes_arrive(self):
        port = self.start("--set", "R_W:100=1500")
        out = self.succeeds("read", "--port", port, "R_W:100..101", "--stats")
        self.assertIn("1/R_W:100..101 = 1500 0", out)
        self.assertNotIn("used by bytes", out)
        out = self.succeeds("write", "--port", port, "R_W:101=7", "M_bit:1.3=1")
        self.assertEqual(out.count("written and read back"), 2)
        tags = self.write_file("tags.csv", "name,register,address,count\npreset,R_W,100,2\n")
        recipe = self.path("recipe.json")
        self.succeeds("recipe", "upload", recipe, "--tags", tags, "--port", port)
        self.succeeds("recipe", "download", recipe, "--tags", tags, "--port", port)
        word = self.plc.memory()
        held = (word(1, "R_W", 100), word(1, "R_W", 101), word(1, "M_W", 1))
        self.assertEqual(held, (1500, 7, 8))

    def test_over_ipv6(self):
        self.start("--set", "R_W:100=3", host="::1")
        out = self.succeeds("read", "--port", url(self.server.port, "[::1]"), "R_W:100")
        self.assertEqual(out, "1/R_W:100 = 3\n")

    def test_a_name_leads_there_too(self):
        self.start("--set", "R_W:100=4")
        out = self.succeeds("read", "--port", url(self.server.port, "localhost"), "R_W:100")
        self.assertEqual(out, "1/R_W:100 = 4\n")

    def test_a_server_that_serves_another_is_in_use(self):
        port = self.start()
        watching = self.tool("watch", "--port", port, "R_W:100")
        watching.wait_for("1/R_W:100 = 0")
        self.assertEqual(
            self.fails("read", "--port", port, "R_W:1"),
            f"dov417: port {port} cannot be used: 127.0.0.1 closes the connection: another program "
            "may be using it, or nothing is behind it\n",
        )
        self.assertEqual(watching.interrupt()[0], 0)

    def test_the_log_names_the_port(self):
        port = self.start()
        log = self.path("line.log")
        self.succeeds("read", "--port", port, "R_W:100", "--log", log)
        out = self.succeeds("trace", log)
        self.assertTrue(out.startswith(f"# port {port}\n"), out)
        self.assertIn(f"-- port {port} is open", out)
        self.assertIn("station 1: R_W:100 = 0", out)

    def test_watching_goes_on_when_the_connection_is_back(self):
        self.start(still=())
        relay = self.relay(self.server.address)
        watching = self.tool("watch", "--port", url(relay.port), "R_W:0")
        watching.wait_for("1/R_W:0 = 1")
        relay.unplug()
        watching.wait_for_error(f"port {url(relay.port)} is gone; waiting for it")
        watching.wait_for_error("refuses the connection: nothing listens on port")
        relay.plug()
        watching.wait_for_error(f"port {url(relay.port)} is open again")
        before = relay.requests
        while relay.requests < before + 50:
            watching.wait_for(" (was ")
        self.assertEqual(watching.interrupt()[0], 0)

    def test_no_write_is_lost_when_the_connection_is_cut(self):
        self.start()
        relay = self.relay(self.server.address)
        writing = self.tool(
            "write", "--port", url(relay.port), "--gap", "1", "--retries", "30",
            *(f"R_W:{address}={address + 1}" for address in range(100, 200)),
        )  # fmt: skip
        for _ in range(3):  # while it reads, while it writes
            for _ in range(50):
                relay.wait_for_request()
            relay.cut()
            writing.wait_for_error("is open again")
        code, out, err = writing.end()
        self.assertEqual(code, 0, err)
        self.assertEqual(out.count("written and read back"), 100)
        word = self.plc.memory()
        self.assertEqual([word(1, "R_W", a) for a in range(100, 200)], list(range(101, 201)))

    def test_a_write_that_waits_for_the_connection_in_vain_is_reported(self):
        self.start("--response-time", "20")
        relay = self.relay(self.server.address)
        values = ",".join(["1"] * 200)
        writing = self.tool("write", "--port", url(relay.port), f"R_W:100..299={values}")
        relay.wait_for_request()
        relay.unplug()
        writing.wait_for_error("is gone")
        code, _, err = writing.end()
        self.assertEqual(code, 1)
        self.assertIn("NOT confirmed: the port did not come back", err)


class Nobody(Network):
    """Hosts that are not there."""

    def test_where_nothing_listens_is_said(self):
        port = free_port()
        for command in (("read", "R_W:1"), ("write", "R_W:1=1"), ("watch", "R_W:1")):
            self.assertEqual(
                self.fails(*command, "--port", url(port)),
                f"dov417: port {url(port)} cannot be used: 127.0.0.1 refuses the connection: "
                f"nothing listens on port {port} there\n",
            )

    def test_a_name_that_is_not_found_is_said(self):
        name = "x" * 70  # longer than a name can be: nobody is asked for it
        self.assertEqual(
            self.fails("read", "--port", url(502, name), "R_W:1"),
            f"dov417: port {url(502, name)} cannot be used: the name {name} is not found\n",
        )

    def silent_port(self):
        """Connections to it come to nothing, as to a host that is off."""
        listener = socket.socket()
        self.addCleanup(listener.close)
        listener.bind(("127.0.0.1", 0))
        listener.listen(0)
        for _ in range(2):  # its queue is full
            waiting = socket.socket()
            self.addCleanup(waiting.close)
            waiting.setblocking(False)
            waiting.connect_ex(listener.getsockname())
        return listener.getsockname()[1]

    def test_a_host_that_does_not_answer_is_not_waited_for_for_ever(self):
        port = self.silent_port()
        self.assertEqual(
            self.fails("read", "--port", url(port), "R_W:1"),
            f"dov417: port {url(port)} cannot be used: 127.0.0.1 does not answer\n",
        )

    def test_ctrl_c_ends_the_wait_for_a_connection(self):
        port = self.silent_port()
        log = self.path("line.log")
        with subprocess.Popen(
            [TOOL, "read", "--port", url(port), "R_W:1", "--log", log],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
        ) as reading:  # fmt: skip
            while not os.path.exists(log):
                time.sleep(0.01)
            reading.send_signal(signal.SIGINT)
            _, err = reading.communicate(timeout=600)
        self.assertEqual(reading.returncode, 1)
        self.assertEqual(err, "dov417: interrupted\n")

    def test_what_is_no_address_is_refused_before_anything_else(self):
        for port, words in {
            "tcp://plc": "tcp://plc: the port number is missing, as in tcp://HOST:4001",
            "tcp://::1:4001": "an IPv6 address stands in brackets, as in tcp://[::1]:4001",
            "tcp://plc:x": "'x' is no port number, which goes from 1 to 65535",
            "udp://plc:1": "a line over a network is tcp://HOST:PORT",
        }.items():
            done = run("read", "--port", port, "R_W:1")
            self.assertEqual(done.returncode, 2)
            self.assertIn(words, done.stderr)


class Slaves(slaves_test.Slave, Network):
    """A slave that nobody here wrote, behind it."""

    stations = (1, 2)

    def server(self, port):
        return (*PYMODBUS, port)

    def setUp(self):
        super().setUp()
        server = self.device_server(self.cable_.port)
        self.port = ("--port", url(server.port), "--timeout", "5000")


class Late(late_slaves_test.LateSlave, Network):
    """The same, and a network that takes its time."""

    stations = (1, 2)

    def server(self, port):
        return (*PYMODBUS, port)

    def start(self, **times):
        cable = self.cable()
        self.process(*self.server(cable.far_port)).wait_for("ready")
        server = self.device_server(cable.port)
        return ("--port", url(self.relay(server.address, **times).port))

    def test_what_comes_at_intervals_only(self):
        port = self.start(join=0.4, delay=0.3)
        out = self.succeeds("watch", *port, "R_W:100", "R_W:200", "2/R_W:100", "--cycles", "4")
        self.assertEqual(self.judged(out), {"1/R_W:100", "1/R_W:200", "2/R_W:100"})

    def test_pauses_within_a_reply(self):
        port = self.start(byte_gap=0.15)
        out = self.succeeds("read", *port, "R_W:0..3", "--stats")
        values = " ".join(str(late_slaves_test.word(1, a)) for a in range(4))
        self.assertIn(f"1/R_W:0..3 = {values}\n", out)
        self.assertRegex(out, r" 1 sent, 1 good")


class OfLateReplies(liar_test.OfLateReplies, Network):
    """Stations that answer late in one of many ways, behind a network that adds to it."""

    def start(self, kind):
        liar = self.process(liar_test.LIAR, kind)
        server = self.device_server(liar.wait_for("ready").split()[1])
        relay = self.relay(server.address, delay=0.05, join=0.1)
        self.port = ("--port", url(relay.port))


for NAME in [name for name in dir(OfLateReplies) if re.match("test_", name)]:
    if NAME not in ("test_random", "test_jumps", "test_lossy", "test_no8", "test_joined"):
        setattr(OfLateReplies, NAME, None)


if __name__ == "__main__":
    unittest.main()
