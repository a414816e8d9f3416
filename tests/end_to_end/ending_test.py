"""A program that ends leaves a quiet line, however slow the controller is."""

import signal
import unittest

from harness import EndToEnd

WAITING = "waiting for the last reply; Ctrl-C again ends at once"


class Ending(EndToEnd):
    def check_that_nothing_comes_any_more(self, cable, slave):
        """The slave ends once it has answered everything."""
        before = len(cable.replies)
        self.assertGreater(before, 0)
        code, _, err = slave.interrupt()
        self.assertEqual(code, 0, err)
        cable.settle()
        self.assertEqual(len(cable.replies), before)

    def test_after_the_time_is_up(self):
        cable, slave = self.slow_slave("1:800")
        self.succeeds("watch", "--port", cable.port, "--timeout", "5000", "R_W:100", "R_W:500",
                      "--seconds", "2")  # fmt: skip
        self.check_that_nothing_comes_any_more(cable, slave)

    def test_after_ctrl_c_with_a_word_and_the_last_value(self):
        cable, slave = self.slow_slave("1:1200")
        watching = self.tool("watch", "--port", cable.port, "--timeout", "5000", "R_W:100")
        watching.wait_for("1/R_W:100 = 1380")
        cable.wait_for_request()
        code, _, err = watching.interrupt()
        self.assertEqual(code, 0, err)
        self.assertIn(WAITING, err)
        self.check_that_nothing_comes_any_more(cable, slave)

    def test_after_a_closed_terminal(self):
        cable, slave = self.slow_slave("1:1500")
        watching = self.terminal("watch", "--port", cable.port, "--timeout", "5000", "R_W:100")
        watching.wait_for(b" 1380 ")
        cable.wait_for_request()
        watching.signal(signal.SIGHUP)
        watching.signal(signal.SIGHUP)  # the terminal's own and the shell's
        self.assertEqual(watching.end(), 0)
        self.assertIn(WAITING.encode(), watching.seen)
        self.check_that_nothing_comes_any_more(cable, slave)

    def check_an_interrupted(self, *command):
        cable, slave = self.slow_slave("1:400")
        running = self.tool(*command, "--port", cable.port, "--timeout", "5000")
        cable.wait_for_request()
        code, _, err = running.interrupt()
        self.assertEqual(code, 1)
        self.assertIn("interrupted", err)
        self.check_that_nothing_comes_any_more(cable, slave)

    def test_of_a_read(self):
        self.check_an_interrupted("read", "R_W:100", "R_W:500")

    def test_of_a_write(self):
        self.check_an_interrupted("write", "R_W:100=5")

    def test_of_a_recipe(self):
        tags = self.write_file("tags.csv", "name,register,address\nspeed,R_W,200\n")
        self.check_an_interrupted("recipe", "upload", self.path("recipe.json"), "--tags", tags)

    def test_a_write_that_is_out_is_confirmed_although_ctrl_c_came(self):
        cable, slave = self.slow_slave("1:1000")
        log = self.pipe("log")
        writing = self.tool("write", "--port", cable.port, "--timeout", "5000", "R_W:100=5",
                            "--log", log)  # fmt: skip
        self.wait_for_log("log", " TX 01 06 ")
        code, _, err = writing.interrupt()
        self.assertEqual(code, 1)
        self.assertIn("taken, but reading it back failed: the line is being left", err)
        self.check_that_nothing_comes_any_more(cable, slave)

    def test_a_write_that_goes_out_in_parts_says_what_was_taken_when_ctrl_c_came(self):
        controller = self.controller("--response-time", "300")
        log = self.pipe("log")
        values = ",".join(["7"] * 80)
        writing = self.tool("write", "--port", controller.port, "--max-registers", "16",
                            f"R_W:100..179={values}", "--log", log)  # fmt: skip
        self.wait_for_log("log", " RX 01 10 ")
        code, _, err = writing.interrupt()
        self.assertEqual(code, 1)
        self.assertRegex(err, r"given up, NOT confirmed: interrupted;.* 1?/?R_W:100\.\.1\d\d was taken\n")

    def test_a_second_ctrl_c_ends_at_once_and_leaves_the_terminal_as_it_was(self):
        controller = self.controller("--fault", "silence=100%")
        watching = self.terminal("watch", "--port", controller.port, "--timeout", "600000", "R_W:1")
        watching.wait_for(b"link good")
        watching.press(b"\x03")
        watching.wait_for(WAITING.encode())
        watching.press(b"\x03")
        self.assertEqual(watching.end(), 1)
        self.assertLess(watching.seen.rfind(b"\x1b[?1049h"), watching.seen.rfind(b"\x1b[?1049l"))

    def test_the_next_program_is_not_told_the_last_ones_value(self):
        cable, _ = self.slow_slave("1:300")
        self.succeeds("watch", "--port", cable.port, "R_W:0", "R_W:500", "--seconds", "1")
        out = self.succeeds("read", "--port", cable.port, "R_W:3")
        self.assertEqual(out, "1/R_W:3 = 1283\n")


class ASlowStation(EndToEnd):
    def test_is_named_once_and_its_values_are_its_own(self):
        cable, _ = self.slow_slave("1:600")
        watching = self.tool("watch", "--port", cable.port, "R_W:100", "R_W:200", "R_W:300",
                             "--cycles", "3", "--stats")  # fmt: skip
        code, out, err = watching.end()
        self.assertEqual(code, 0, err)
        self.assertRegex(
            err, r"^dov417: station 1 answers after [5-9]\d\d ms: waiting longer from now on\n$"
        )
        values = [line.split(" ", 1)[1] for line in out.splitlines() if " = " in line]
        self.assertEqual(
            sorted(values), ["1/R_W:100 = 1380", "1/R_W:200 = 1480", "1/R_W:300 = 1580"]
        )
        time = r"[5-9]\d\d\.\d ms"
        self.assertRegex(out, f"station 1: answers after {time}, {time} at the slowest; is waited ")

    def test_with_a_fixed_timeout_is_named_with_what_to_raise(self):
        cable, _ = self.slow_slave("1:600")
        watching = self.tool("watch", "--port", cable.port, "--timeout", "500", "R_W:100",
                             "--seconds", "3")  # fmt: skip
        _, _, err = watching.end()
        self.assertEqual(err.count("raise --timeout"), 1, err)


if __name__ == "__main__":
    unittest.main()
