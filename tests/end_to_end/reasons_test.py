"""Why there is no value, in the words that a user sees: on a serial line, and the same in the error
output, in the counters, in JSON and in the log."""

import os
import select
import threading
import unittest

from frames import with_crc
from harness import EndToEnd, run, told
from slow_slave import answer

# A pseudo-terminal takes no parity.
LINE = ("--line", "38400,8,NONE,1", "--timeout", "300", "--retries", "2")
READ = 3


def nothing(_):
    return b""


def noise(_):
    return b"\xff\x01\xaa"


def at_half_the_speed(frame):
    """What a receiver makes of the bits that come half as fast as it takes them."""
    bits = "".join("0" + f"{byte:08b}"[::-1] + "1" for byte in frame)
    samples = "".join(bit * 2 for bit in bits) + "1" * 10
    heard = b""
    at = samples.find("0")
    while 0 <= at <= len(samples) - 10:
        heard += bytes([int(samples[at + 1 : at + 9][::-1], 2)])
        at = samples.find("0", at + 10)
    return heard


def of_another_station(frame):
    return with_crc(b"\x02" + frame[1:-2])


def of_another_function(frame):
    return with_crc(frame[:1] + b"\x04" + frame[2:-2]) if frame[1] == READ else frame


def with_a_bit_turned(frame):
    return frame[:-1] + bytes([frame[-1] ^ 1])


def cut_short(frame):
    return frame[:-3] if frame[1] == READ else frame


def that_refuses(frame):
    return with_crc(b"\x01\x83\x02") if frame[1] == READ else frame


def noise_for_a_read(frame):
    return noise(frame) if frame[1] == READ else frame


class Reasons(EndToEnd):
    def slave(self, becomes):
        """Station 1, each of whose good replies becomes something else on its way."""
        cable = self.cable()
        line = os.open(cable.far_port, os.O_RDWR | os.O_NOCTTY)
        self.addCleanup(os.close, line)
        is_over = threading.Event()
        self.requests = requests = []

        def serve():
            heard = b""
            while not is_over.is_set():
                if select.select([line], [], [], 0.02)[0]:
                    heard += os.read(line, 4096)
                while len(heard) >= 8:
                    request, heard = heard[:8], heard[8:]
                    requests.append(request)
                    os.write(line, becomes(answer(request)))

        self.line = line
        self.while_it_lasts(serve, is_over)
        return ("--port", cable.port, *LINE)

    def while_it_lasts(self, serve, is_over):
        thread = threading.Thread(target=serve)
        thread.start()
        self.addCleanup(thread.join)
        self.addCleanup(is_over.set)

    def reads_heard(self):
        """Of R_W:100, since it was asked last. A read of another length tells late replies."""
        count = sum(request[1:6] == b"\x03\x05\x64\x00\x01" for request in self.requests)
        self.requests.clear()
        return count

    def gives(self, becomes, words, name, key, silence, logged=None):
        """Words and name as regular expressions."""
        port = self.slave(becomes)
        log = self.path("line.log")
        done = run("read", *port, "R_W:100", "--stats", "--log", log)
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, f"dov417: 1/R_W:100: {words}\n")
        # What was held up by its echo did not go out.
        reads = self.reads_heard()
        unsent = f", {2 - reads} not sent" if reads < 2 else ""
        self.assertRegex(done.stdout, f"all requests: {reads} sent, 0 good, 2 x {name}{unsent}, ")
        self.assertRegex(done.stdout, f"given up last: {words}\n")
        with open(log, encoding="utf-8") as file:
            self.assertRegex(file.read(), logged or words.replace(":", " within 300 ms:", 1))

        objects = told(run("read", *port, "R_W:100", "--stats", "--json").stdout)
        self.assertRegex(objects[0]["failure"], f"^{words}$")
        self.assertEqual(objects[0]["why"], key)
        counters = objects[1]["statistics"]["all"]
        reads = self.reads_heard()
        self.assertEqual((counters["sent"], counters["notSent"]), (reads, 2 - reads))
        self.assertEqual(counters["bad"], {key: 2})

        watch = self.tool("watch", *port, "R_W:100")
        self.assertRegex(watch.wait_for_error("given up: "), words)
        if silence:
            told_so = watch.wait_for_error("asked every 1 s to 30 s\n")
            self.assertRegex(told_so, f"station 1 {silence} since [0-9:]+:")
        code, out, err = watch.interrupt()
        self.assertEqual((code, out), (1, ""))
        self.assertTrue(err.endswith("dov417: 1/R_W:100: no value came\n"), err)

    def test_nothing(self):
        self.gives(nothing, "no answer: no byte came", "no byte came", "noByte", "is silent")

    def test_noise(self):
        self.gives(
            noise, "no answer: 3 bytes came, but no frame; looks like another speed or parity",
            "no frame", "noFrame", "sends no sound frame",
        )  # fmt: skip

    def test_noise_where_a_frame_has_come_before(self):
        self.gives(
            noise_for_a_read, "no answer: 3 bytes came, but no frame", "no frame", "noFrame",
            "sends no sound frame",
        )  # fmt: skip

    def test_babble_without_end(self):
        """Which begins when there is a value: that becomes old, and the watch ends."""
        babbles = threading.Event()
        port = self.slave(lambda frame: b"" if babbles.is_set() else frame)
        watch = self.tool("watch", *port, "R_W:100")
        watch.wait_for("100")
        is_over = threading.Event()

        def babble():
            while not is_over.wait(0.02):
                os.write(self.line, b"\x55" * 5)

        babbles.set()
        self.while_it_lasts(babble, is_over)
        words = r"no answer: \d+ bytes came, but no frame\n"
        self.assertRegex(watch.wait_for_error("given up: "), words)
        watch.wait_for_error("station 1 sends no sound frame since ")
        code, _, err = watch.interrupt()
        self.assertEqual(code, 1)
        self.assertTrue(err.endswith("dov417: 1/R_W:100: the value is old\n"), err)

    def test_another_speed(self):
        self.gives(
            at_half_the_speed,
            r"no answer: \d+ bytes came, but no frame; looks like another speed or parity",
            "no frame", "noFrame", "sends no sound frame",
        )  # fmt: skip

    def test_another_station(self):
        self.gives(
            of_another_station, r"no answer: another station answered \(2\)", "another station",
            "anotherStation", "sends no sound frame",
        )  # fmt: skip

    def test_another_function(self):
        self.gives(
            of_another_function, r"no answer: another function was answered \(4\)",
            "another function", "anotherFunction", r"answers others, but not 1#R_W100\(1\)",
        )  # fmt: skip

    def test_bad_crc_of_each_reply(self):
        self.gives(
            with_a_bit_turned, "bad CRC", "bad CRC", "badCrc", "sends no sound frame", "bad CRC"
        )

    def test_reads_that_are_cut_short(self):
        self.gives(
            cut_short, "reply cut short: 4 of 7 bytes", "cut short", "cutShort",
            "sends no sound frame", "reply to read registers, 4 bytes where 7 are due",
        )  # fmt: skip

    def test_a_refusal(self):
        words = r"exception 2 \(illegal data address\)"
        logged = "exception 2, illegal data address, to read registers"
        self.gives(that_refuses, words, words, "exception", None, logged)


if __name__ == "__main__":
    unittest.main()
