"""The adapter is pulled out and put back, the controller is switched off and on."""

import os
import subprocess
import unittest

from harness import TOOL, Cable, EndToEnd, as_somebody_else, run


# A pseudo-terminal takes no parity.
FAR_END = ("--still", "--line", "38400,8,NONE,1", "--port")


class Port(EndToEnd):
    def test_watching_goes_on_when_the_port_is_back(self):
        controller = self.controller("--still", "--set", "R_W:100=1")
        watching = self.tool("watch", "--port", controller.port, "R_W:100")
        watching.wait_for("1/R_W:100 = 1")
        controller.interrupt()
        watching.wait_for_error("is gone")
        self.controller("--still", "--set", "R_W:100=2")
        watching.wait_for("1/R_W:100 = 2 (was 1)")
        code, _, _ = watching.interrupt()
        self.assertEqual(code, 0)

    def test_a_port_whose_driver_drives_no_direction_is_refused_in_words(self):
        log = self.path("log")
        controller = self.controller("--still", "--log", log)
        why = f"the driver of port {controller.port} drives no direction: --rs485 is for ports that do"
        for command in (("read", "R_W:0"), ("write", "R_W:0=1"), ("watch", "R_W:0"), ("scan",),
                        ("request", "1", "3", "0", "1")):  # fmt: skip
            done = run(*command, "--port", controller.port, "--rs485", "--rs485-before", "2")
            self.assertEqual(done.returncode, 1, command)
            self.assertIn(why, done.stderr)
        controller.interrupt()
        with open(log, encoding="utf-8") as said:
            self.assertEqual([line for line in said if " -- " not in line], [])

    def test_a_port_that_goes_is_said_alike_by_every_command(self):
        tags = self.write_file("tags.csv", "name,register,address\nspeed,R_W,200\n")
        for name, command in {
            "watch": ("watch", "R_W:100"),
            "read": ("read", "R_W:100"),
            "write": ("write", "R_W:100=5"),
            "upload": ("recipe", "upload", self.path("recipe.json"), "--tags", tags),
            "simulate": ("simulate",),
        }.items():
            with self.subTest(name):
                folder = self.path(name)
                os.mkdir(folder)
                cable = Cable(folder)
                running = self.tool(*command, "--port", cable.port)
                if name == "simulate":
                    running.wait_for("port ")
                else:
                    cable.wait_for_request()
                cable.unplug()
                running.wait_for_error(f"dov417: port {cable.port} is gone")
                running.interrupt()
                cable.close()

    def test_a_controller_starts_on_a_pseudo_terminal_again_and_again(self):
        cable = self.cable()
        for _ in range(3):
            controller = self.tool("simulate", "--port", cable.far_port, "--line", "38400,8,EVEN,1")
            controller.wait_for("port ")
            self.assertEqual(controller.interrupt()[0], 0)

    def test_no_write_is_lost_when_the_port_goes_while_writes_are_queued(self):
        cable = self.cable()
        controller = self.controller(*FAR_END, cable.far_port)
        writing = self.tool(
            "write", "--port", cable.port, "--gap", "1", "--timeout", "50", "--retries", "30",
            *(f"R_W:{address}={address + 1}" for address in range(100, 200)),
        )  # fmt: skip
        for _ in range(3):  # while it reads, while it writes
            for _ in range(50):
                cable.wait_for_request()
            cable.unplug()
            writing.wait_for_error("is gone")
            cable.plug()
        code, out, err = writing.end()
        self.assertEqual(code, 0, err)
        self.assertEqual(out.count("written and read back"), 100)
        word = controller.memory()
        self.assertEqual([word(1, "R_W", a) for a in range(100, 200)], list(range(101, 201)))

    def test_a_write_that_waits_for_a_port_in_vain_is_reported(self):
        cable = self.cable()
        self.controller(*FAR_END, cable.far_port, "--response-time", "20")
        writing = self.tool("write", "--port", cable.port, "R_W:100..299=" + ",".join(["1"] * 200))
        cable.wait_for_request()
        cable.unplug()
        writing.wait_for_error("is gone")
        code, _, err = writing.interrupt()
        self.assertEqual(code, 1)
        self.assertIn("NOT confirmed: interrupted", err)

    def test_a_controller_that_is_switched_off_and_on_is_polled_again(self):
        cable = self.cable()
        controller = self.controller(*FAR_END, cable.far_port, "--set", "R_W:100=1")
        watching = self.tool("watch", "--port", cable.port, "--timeout", "20", "R_W:100")
        watching.wait_for("1/R_W:100 = 1")
        controller.interrupt()
        watching.wait_for_error("given up: 1#R_W100(1): no answer")
        self.controller(*FAR_END, cable.far_port, "--set", "R_W:100=2")
        watching.wait_for("1/R_W:100 = 2 (was 1)")
        code, _, _ = watching.interrupt()
        self.assertEqual(code, 0)

    def test_a_port_that_is_not_there_is_named(self):
        done = run("read", "--port", self.path("nothing"), "R_W:1")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, f"dov417: there is no port {self.path('nothing')}\n")

    def test_a_port_in_use_is_busy(self):
        controller = self.controller()
        watching = self.tool("watch", "--port", controller.port, "C:0")
        watching.wait_for("1/C:0 = ")
        done = run("read", "--port", controller.port, "R_W:1")
        self.assertEqual(done.returncode, 1)
        self.assertIn("is busy: another program uses it", done.stderr)
        watching.interrupt()

    def check_a_port_of_somebody_else(self, mode):
        """What the tool says of it."""
        controller = self.controller()
        os.chmod(os.path.realpath(controller.port), mode)
        os.chmod(self.folder, 0o755)
        command = as_somebody_else(TOOL, "read", "--port", controller.port, "R_W:1")
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertIn("permission refused", done.stderr)
        return done.stderr

    def test_a_port_of_somebody_else_says_which_group_helps(self):
        self.assertIn("belongs to group", self.check_a_port_of_somebody_else(0o660))

    def test_a_port_that_no_group_may_use_names_none(self):
        self.assertNotIn("group", self.check_a_port_of_somebody_else(0o600))


if __name__ == "__main__":
    unittest.main()
