"""`dov417 shell`: commands as lines, on a line that stays open."""

import re
import signal
import subprocess
import unittest

from harness import PATIENCE, TOOL, EndToEnd
from tmux import DrawnTerminal

TAGS = "name,register,address,min,max\nspeed,R_W,200,0,3000\npreset,R_W,210,,\n"


class Script(EndToEnd):
    def shell(self, script, *options):
        return subprocess.run(
            [TOOL, "shell", *options],
            input=script, capture_output=True, text=True, timeout=PATIENCE, check=False,
        )  # fmt: skip

    def test_its_commands_are_those_of_their_names(self):
        controller = self.controller("--still", "--set", "R_W:100=5")
        tags = self.write_file("tags.csv", TAGS)
        recipe = self.path("recipe.json")
        done = self.shell(
            f"""# as of a machine
            read R_W:100 speed --format hex
            write speed=1500 R_W:100=7   # both
            watch speed R_W:100 --cycles 2
            recipe upload '{recipe}'
            recipe compare {recipe}
            write R_W:0..99={','.join(str(i) for i in range(100))}
            quit
            read nothing""",
            "--port", controller.port, "--tags", tags,
        )  # fmt: skip
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        out = re.sub(r"(?m)^\d{4}-\S+ ", "", done.stdout).splitlines()
        self.assertEqual(out[:4], ["1/R_W:100 = 0x0005", "speed = 0x0000",
                                   "speed = 1500: written and read back, was 0",
                                   "1/R_W:100 = 7: written and read back, was 5"])  # fmt: skip
        self.assertEqual(sorted(out[4:6]), ["1/R_W:100 = 7", "speed = 1500"])
        self.assertEqual(out[6], f"2 tags from the controller into {recipe}")
        self.assertIn("all values are the same", out)
        word = controller.memory()
        self.assertEqual([word(1, "R_W", i) for i in (0, 99, 100, 200, 210)], [0, 99, 7, 1500, 0])

    def test_the_line_is_opened_once_and_what_was_learned_is_kept(self):
        cable, slave = self.slow_slave("1:700")
        done = self.shell("read R_W:100\nread R_W:101\nread R_W:102\n", "--port", cable.port,
                          "--stats", "--log", self.path("log"))  # fmt: skip
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stdout.splitlines()[:3],
                         ["1/R_W:100 = 1380", "1/R_W:101 = 1381", "1/R_W:102 = 1382"])  # fmt: skip
        self.assertEqual(done.stderr.count("waiting longer from now on"), 1)
        self.assertEqual(done.stdout.count("Link statistics"), 1)
        slave.interrupt()

    def test_goes_on_after_an_error_and_names_its_line(self):
        controller = self.controller("--still")
        done = self.shell("read R_X:1\n\nfly\nwrite R_W:1=70000\nwrite R_W:1=7 --port x\n"
                          "watch\nwrite R_W:1=8\nrecipe compare -\nread 'x\nquit 3\n",
                          "--port", controller.port)  # fmt: skip
        self.assertEqual(done.returncode, 2)
        self.assertEqual(done.stdout, "1/R_W:1 = 8: written and read back, was 0\n")
        numbers = re.findall(r"(?m)^dov417: line (\d+): ", done.stderr)
        self.assertEqual(numbers, ["1", "3", "4", "5", "6", "8", "9", "10"])
        self.assertEqual(controller.memory()(1, "R_W", 1), 8)

    def test_what_differs_is_said_to_differ(self):
        tags = self.write_file("tags.csv", "name,register,address\nspeed,R_W,1\n")
        recipe = self.path("recipe.json")
        done = self.shell(f"recipe upload {recipe}\nwrite speed=8\nrecipe compare {recipe}\n",
                          "--simulated", "--tags", tags)  # fmt: skip
        self.assertEqual(done.returncode, 3)
        self.assertTrue(done.stderr.endswith("dov417: line 3: they differ\n"), done.stderr)

    def test_ends_at_the_first_error_where_it_is_to(self):
        controller = self.controller("--still", "--stations", "1,2", "--fault", "exception:2=100%")
        done = self.shell("write R_W:1=5\nwrite R_W:1=6\n", "--port", controller.port,
                          "--stop-on-error")  # fmt: skip
        self.assertEqual(done.returncode, 1)
        self.assertIn("given up, NOT confirmed", done.stderr)
        self.assertTrue(done.stderr.endswith("dov417: line 1: failed\n"), done.stderr)
        self.assertNotIn("= 6", done.stdout + done.stderr)

    def check_that_it_ends_by(self, number):
        cable, slave = self.slow_slave("1:600")
        with subprocess.Popen([TOOL, "shell", "--port", cable.port, "--timeout", "5000"],
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True) as running:  # fmt: skip
            running.stdin.write("read R_W:100\nwrite R_W:101=5\n")
            running.stdin.flush()
            cable.wait_for_request()
            running.send_signal(number)
            out, err = running.communicate(timeout=PATIENCE)
        self.assertEqual((running.returncode, out), (1, ""))
        self.assertIn("dov417: 1/R_W:100: interrupted\ndov417: line 1: failed\n", err)
        slave.interrupt()

    def test_ends_by_ctrl_c(self):
        self.check_that_it_ends_by(signal.SIGINT)

    def test_ends_by_a_polite_kill(self):
        self.check_that_it_ends_by(signal.SIGTERM)

    def test_an_empty_script_is_done(self):
        controller = self.controller()
        self.assertEqual(self.shell("", "--port", controller.port).returncode, 0)


class Typed(EndToEnd):
    def test_on_a_terminal(self):
        controller = self.controller("--still")
        terminal = DrawnTerminal(self.folder)
        self.addCleanup(terminal.close)
        terminal.type(f"clear; {TOOL} shell --port {controller.port}; echo end $?")
        terminal.press("Enter")
        terminal.wait_for(r"^dov417>\s*\Z")
        terminal.type("read R_W:5 R_X:1")
        terminal.press("C-c")
        terminal.wait_for(r"^dov417>\s*\Z")
        terminal.type("fly")
        terminal.press("Enter")
        terminal.wait_for("^dov417: there is no command 'fly' here; help lists them$")
        terminal.type("watch R_W:5..6")
        terminal.press("Enter")
        terminal.wait_for("^1/R_W:6 +0 ")
        terminal.press("Down")
        terminal.type("w")
        terminal.wait_for("^new value")
        terminal.type("17")
        terminal.confirm("17", "1/R_W:6 = 17: written and read back, was 0")
        terminal.press("q")
        terminal.wait_for(r"^dov417>\s*\Z")
        self.assertEqual(terminal.flag("alternate_on"), "0")
        terminal.type("watch R_W:5")
        terminal.press("Enter")
        terminal.wait_for("^1/R_W:5 +0 ")
        terminal.press("C-c")
        terminal.wait_for(r"^dov417>\s*\Z")
        terminal.type("read R_W:5..6")
        terminal.press("Enter")
        terminal.wait_for("^1/R_W:5..6 = 0 17$")
        terminal.press("C-d")
        terminal.wait_for("^end 0$")
        self.assertEqual(controller.memory()(1, "R_W", 6), 17)

    def test_a_command_that_is_interrupted_leaves_nothing_to_the_next_one(self):
        cable, _ = self.slow_slave("1:800")
        terminal = DrawnTerminal(self.folder)
        self.addCleanup(terminal.close)
        terminal.type(f"clear; {TOOL} shell --port {cable.port} --timeout 5000")
        terminal.press("Enter")
        terminal.wait_for(r"^dov417>\s*\Z")
        terminal.type("write R_W:100=5")
        terminal.press("Enter")
        cable.wait_for_request()
        terminal.press("C-c")
        terminal.wait_for("1/R_W:100 = 5: given up, NOT confirmed: ")
        terminal.wait_for(r"^dov417>\s*\Z")
        terminal.type("read R_W:3")
        terminal.press("Enter")
        terminal.wait_for("^1/R_W:3 = 1283$")
        terminal.type("quit")
        terminal.press("Enter")
        terminal.wait_for(r"^ready>\s*\Z")


if __name__ == "__main__":
    unittest.main()
