"""The keys of `watch`, on a terminal that is drawn."""

import os
import re
import signal
import unittest

from harness import TOOL, EndToEnd
from tmux import DrawnTerminal


class Keys(EndToEnd):
    def setUp(self):
        super().setUp()
        here = os.getcwd()
        os.chdir(self.folder)  # where the shell writes what it found
        self.addCleanup(os.chdir, here)

    def drawn(self, columns=80, rows=24):
        terminal = DrawnTerminal(self.folder, columns, rows)
        self.addCleanup(terminal.close)
        return terminal

    def tags(self, count=300):
        lines = ["name,register,address,unit,min,max"]
        lines += [f"line{i // 10}.level{i},R_W,{i},mm,0,3000" for i in range(count)]
        return self.write_file("tags.csv", "\n".join(lines) + "\n")

    def watching(self, *options, columns=80, rows=24):
        """300 values on the screen, of a controller that is returned too."""
        controller = self.controller("--still", *options)
        terminal = self.drawn(columns, rows)
        terminal.start(TOOL, "watch", "--port", controller.port, "--tags", self.tags())
        terminal.wait_for(r"^line0.level0 +1/R_W:0 +0 mm ")
        return terminal, controller

    def ends(self, terminal, code=0):
        """And leaves the terminal as it was found."""
        self.assertEqual(terminal.wait_for_end(), code)
        before, after = terminal.modes()
        self.assertEqual(before, after)
        self.assertEqual(terminal.flag("alternate_on"), "0")
        self.assertEqual(terminal.flag("cursor_flag"), "1")

    @staticmethod
    def values(lines):
        return [line for line in lines if "1/R_W:" in line]

    def wait_for_values(self, terminal, count):
        """The screen with so many: what is drawn may arrive in pieces."""
        terminal.wait_until(lambda lines: len(self.values(lines)) == count)

    def test_the_values_have_the_screen(self):
        terminal, _ = self.watching()
        self.wait_for_values(terminal, 20)
        good = re.compile(r"link good; all requests: \d+ sent, \d+ good, ")
        terminal.wait_until(lambda lines: good.match(lines[22]))
        lines = terminal.lines()
        self.assertEqual(len(lines), 24)
        self.assertIn("300 values | lines 1 to 20", lines[0])
        terminal.resize(132, 43)
        terminal.wait_for("lines 1 to 39$")
        self.wait_for_values(terminal, 39)
        terminal.press("End")
        terminal.wait_for("lines 262 to 300$")
        terminal.wait_for("^line29.level299 ")
        terminal.resize(80, 24)
        terminal.wait_for("lines 281 to 300$")
        self.wait_for_values(terminal, 20)
        terminal.press("s")
        terminal.wait_for(r"^read  1#R_W128\(128\): \d+ sent")
        self.wait_for_values(terminal, 0)
        terminal.press("?")
        terminal.wait_for("^w +write to the line under the cursor")
        terminal.press("Escape")
        terminal.wait_for("lines 281 to 300$")
        terminal.press("q")
        self.ends(terminal)

    def test_a_large_terminal_from_the_start(self):
        terminal, _ = self.watching(columns=132, rows=43)
        self.wait_for_values(terminal, 39)
        terminal.press("C-c")
        self.ends(terminal)

    def test_a_write_goes_to_the_line_under_the_cursor_alone(self):
        terminal, controller = self.watching()
        terminal.type("/level12")
        self.wait_for_values(terminal, 11)
        terminal.wait_for('filter "level12": 11 of 300 values')
        terminal.press("Enter", "Down", "Down")
        terminal.type("w")
        terminal.wait_for(r"^write line12.level121, 1/R_W:121: now 0 mm; 0 to 3000 mm$")
        terminal.press("Down", "PageDown")
        terminal.type("4000")
        terminal.confirm("4000", "above the maximum, 3000; nothing was sent")
        terminal.press("C-u")
        terminal.type("1500")
        terminal.resize(60, 20)
        terminal.confirm("1500", r"line12.level121 = 1500 mm: written and read back,")
        terminal.wait_for(r"^line12.level121 +1/R_W:121 +1500 mm ")
        terminal.resize(80, 24)
        terminal.press("Down")
        terminal.type("w")
        terminal.wait_for("^write line12.level122, ")
        terminal.type("7")
        terminal.wait_for(": 7_$")
        terminal.press("Escape")
        terminal.wait_for("^nothing was sent$")
        terminal.press("Enter", "q")
        self.ends(terminal)
        terminal.wait_for("line12.level121 = 1500 mm: written and read back, was 0")
        word = controller.memory()
        self.assertEqual([word(1, "R_W", i) for i in range(300)],
                         [1500 if i == 121 else 0 for i in range(300)])  # fmt: skip

    def test_what_is_pasted_writes_nothing(self):
        terminal, controller = self.watching()
        terminal.paste("w77\rq")
        terminal.wait_for("what was pasted is ignored")
        terminal.type("w")
        terminal.wait_for("^new value .*: _$")
        terminal.paste("88\r")
        terminal.wait_for("^new value .*: 88_$")
        terminal.press("Escape")
        terminal.wait_for("^nothing was sent$")
        # As from a terminal that does not mark it.
        terminal.type("w99\r")
        terminal.wait_for("Enter again sends it")
        terminal.press("Escape")
        terminal.wait_for("^nothing was sent$")
        # The same in two reads: a terminal hands over 4095 bytes at once.
        terminal.type("w")
        terminal.wait_for("^new value .*: _$")
        terminal.type("\b" * 4093 + "66\r")
        terminal.wait_for("Enter again sends it")
        terminal.wait_for("^new value .*: 66_$")
        terminal.press("Escape")
        terminal.wait_for("^nothing was sent$")
        terminal.type("q")
        self.ends(terminal)
        word = controller.memory()
        self.assertEqual(word(1, "R_W", 0), 0)

    def test_standing_still_looks_so_and_the_polling_goes_on(self):
        cable, slave = self.slow_slave("1:20")
        terminal = self.drawn()
        terminal.start(TOOL, "watch", "--port", cable.port, "R_W:5", "R_W:6")
        terminal.wait_for("^1/R_W:5 +1285 +0")
        terminal.press("Space")
        terminal.wait_for(r"^STANDS STILL since \d\d:\d\d:\d\d, polling goes on \| 2 values")
        terminal.wait_for("^1/R_W:5 +1285 +still ")
        for _ in range(3):
            cable.wait_for_request()
        slave.close()
        terminal.wait_for("^1/R_W:5 +1285 +old ")
        terminal.wait_for("^1/R_W:6 +1286 +old ")
        terminal.wait_for("2 not good")
        terminal.press("Space")
        terminal.wait_until(lambda lines: lines[0].startswith("2 values"))
        terminal.press("q")
        self.ends(terminal, 1)

    def test_nothing_is_sent_while_the_port_is_away(self):
        cable = self.cable()  # nobody at its far end
        terminal = self.drawn()
        terminal.start(TOOL, "watch", "--port", cable.port, "R_W:5")
        terminal.wait_for("^1/R_W:5 ")
        cable.unplug()
        terminal.wait_for("cable is gone$")
        terminal.type("w")
        terminal.wait_for("^new value")
        terminal.type("7")
        terminal.confirm("7", "the port is away; nothing was sent")
        terminal.press("C-c")
        self.ends(terminal, 1)

    def test_a_write_that_is_under_way_when_the_port_goes_is_never_sent(self):
        cable = self.cable()  # nobody at its far end: it waits to be read first
        terminal = self.drawn(columns=200)
        terminal.start(TOOL, "watch", "--port", cable.port, "--timeout", "50", "--log",
                       self.path("log"), "R_W:5")  # fmt: skip
        terminal.wait_for("^1/R_W:5 ")
        terminal.type("w")
        terminal.wait_for("^new value")
        terminal.type("7")
        terminal.confirm("7", "writing 1/R_W:5")
        cable.unplug()
        terminal.wait_for("1/R_W:5 = 7: given up, NOT confirmed: port .*cable is gone")
        cable.plug()
        other = self.controller("--still", "--line", "38400,8,NONE,1", "--port", cable.far_port,
                                "--set", "R_W:5=1000")  # fmt: skip
        terminal.wait_for("^1/R_W:5 +1000 ")
        for _ in range(20):
            cable.wait_for_request()
        terminal.press("q")
        self.ends(terminal)
        self.assertEqual(other.memory()(1, "R_W", 5), 1000)
        with open(self.path("log"), encoding="utf-8") as log:
            sent = [each.split()[2:4] for each in log if " TX " in each]
        self.assertGreater(len(sent), 20)
        self.assertNotIn(["01", "06"], sent)

    def test_ctrl_z_leaves_the_terminal_and_fg_comes_back(self):
        terminal, _ = self.watching()
        terminal.press("C-z")
        terminal.wait_for("Stopped")
        terminal.type("stty -g >stopped; fg")
        self.assertEqual(terminal.flag("alternate_on"), "0")
        terminal.press("Enter")
        terminal.wait_for("^300 values")
        terminal.type("/level299")
        self.wait_for_values(terminal, 1)
        terminal.press("Escape")
        terminal.press("q")
        terminal.wait_for(r"ready>\s*\Z")
        with open("before", encoding="ascii") as before, open("stopped", encoding="ascii") as after:
            self.assertEqual(before.read(), after.read())
        self.assertEqual(terminal.flag("alternate_on"), "0")

    def check_that_it_ends_by(self, number, code):
        terminal, _ = self.watching()
        os.kill(terminal.child(), number)
        self.ends(terminal, code)

    def test_a_terminal_is_put_back_when_it_is_killed_politely(self):
        self.check_that_it_ends_by(signal.SIGTERM, 0)

    def test_a_terminal_is_put_back_when_it_hangs_up(self):
        self.check_that_it_ends_by(signal.SIGHUP, 0)

    def test_a_terminal_is_put_back_when_it_aborts(self):
        # As an exception that nobody catches does.
        self.check_that_it_ends_by(signal.SIGABRT, 128 + signal.SIGABRT)

    def test_a_terminal_is_put_back_by_the_second_ctrl_c(self):
        controller = self.controller("--fault", "silence=100%")
        terminal = self.drawn()
        terminal.start(TOOL, "watch", "--port", controller.port, "--timeout", "600000", "R_W:1")
        terminal.wait_for("^1/R_W:1 ")
        terminal.press("C-c")
        terminal.wait_for("Ctrl-C again ends at once")
        terminal.press("C-c")
        self.ends(terminal, 1)

    def test_a_terminal_is_put_back_where_the_event_loop_hears_nothing(self):
        terminal, _ = self.watching()
        child = terminal.child()
        os.kill(child, signal.SIGSTOP)
        os.kill(child, signal.SIGTERM)
        os.kill(child, signal.SIGINT)
        terminal.wait_for("Stopped")
        terminal.type("fg")
        terminal.press("Enter")
        terminal.wait_for(r"ready>\s*\Z")
        self.assertEqual(terminal.flag("alternate_on"), "0")
        self.assertEqual(terminal.flag("cursor_flag"), "1")

    def test_a_screen_without_keys_is_put_back_too(self):
        terminal = self.drawn()
        terminal.start(TOOL, "demo")
        terminal.wait_for("^link good")
        os.kill(terminal.child(), signal.SIGABRT)
        self.ends(terminal, 128 + signal.SIGABRT)

    def test_without_keys_the_screen_is_the_same(self):
        controller = self.controller("--still")
        terminal = self.drawn()
        terminal.type(f"{TOOL} watch --port {controller.port} --tags {self.tags()} </dev/null")
        terminal.press("Enter")
        terminal.wait_for(r"^line0.level0 +1/R_W:0 +0 mm ")
        self.wait_for_values(terminal, 21)
        terminal.press("C-c")
        terminal.wait_for(r"ready>\s*\Z")
        self.assertEqual(terminal.flag("alternate_on"), "0")


if __name__ == "__main__":
    unittest.main()
