"""--json of every command, in the form that is documented, and nothing else on the output."""

import json
import re
import signal
import subprocess
import unittest

from harness import PATIENCE, SCHEMA_FILE, TOOL, EndToEnd, run, told, validator_of


def commands_of(*above):
    help_text = run(*above, "--help").stdout
    below = re.search(r"^Subcommands:\n((?:  .*\n)+)", help_text, re.M)
    if not below:
        return [" ".join(above)]
    names = re.findall(r"^  ([a-z]+)", below.group(1), re.M)
    return [each for name in names for each in commands_of(*above, name)]


class Json(EndToEnd):
    def told_by(self, *arguments, code=0):
        done = run(*arguments, "--json")
        self.assertEqual(done.returncode, code, done.stdout + done.stderr)
        return told(done.stdout)

    def test_every_command_has_it_and_the_schema_has_every_command(self):
        commands = commands_of()
        self.assertIn("recipe compare", commands)
        with open(SCHEMA_FILE, encoding="utf-8") as file:
            known = json.load(file)["$defs"]
        commands.remove("shell")  # its lines have it
        for command in commands:
            self.assertIn("--json", run(*command.split(), "--help").stdout, command)
            self.assertIn(command, known)
        validator_of("head").check_schema(validator_of("head").schema)

    def test_what_is_asked_of_the_library(self):
        (info,) = self.told_by("info")
        self.assertEqual(info["registers"][0]["register"], "I_bit")
        self.assertEqual(info["places"][7]["firstNumber"], "41281")
        self.assertEqual(
            self.told_by("check", "R_W:7", "R_W:4000", "nobody", code=1)[0],
            {"text": "R_W:7", "valid": True, "address": "1/R_W:7", "first": 7, "count": 1,
             "isBroadcast": False},
        )  # fmt: skip
        self.assertEqual(
            self.told_by("series", "R_W", "3999", "--count", "2", code=1),
            [{"address": "R_W:3999", "first": 3999}, {"clipped": True}],
        )
        (plan,) = self.told_by("plan", "R_W:0..127", "R_W:1", "--max-registers", "100")
        self.assertEqual(len(plan["requests"][0]["parts"]), 2)
        self.assertEqual(plan["gaps"][0]["requests"], 1)
        (plan,) = self.told_by("plan", "R_W:0..127", "--gap", "3")
        self.assertIn("request 1 asks for 128 registers", plan["warnings"][0])
        self.told_by("ports")

    def test_a_failure_is_an_object_too(self):
        self.assertEqual(self.told_by("read", "R_W:4000", "--simulated", code=2)[0].keys(),
                         {"failure"})  # fmt: skip
        self.assertEqual(self.told_by("watch", "R_W:1", "--port", "/dev/no_such_port", code=1),
                         [{"failure": "there is no port /dev/no_such_port"}])  # fmt: skip

    def test_values_are_numbers_and_what_is_none_has_its_bits(self):
        controller = self.controller("--still", "--set", "R_D:0..5=1e10,0x7FC00001,0.1",
                                     "--set", "R_W:100=31")  # fmt: skip
        line = ("--port", controller.port, "--timeout", "500", "--retries", "1")
        objects = self.told_by("read", *line, "R_D:0..5@float", "R_W:100@hex", "9/T:1", "--stats",
                               code=1)  # fmt: skip
        self.assertEqual(objects[0]["values"], [1e10, None, 0.1])
        self.assertEqual(objects[0]["valuesBits"], [None, "0x7FC00001", None])
        self.assertEqual(objects[1]["values"], ["0x001F"])
        self.assertEqual(objects[2]["failure"], "no answer: no byte came")
        self.assertEqual(objects[2]["why"], "noByte")
        self.assertIn("statistics", objects[3])

    def test_writes_tell_what_became_of_each(self):
        controller = self.controller("--still", "--set", "R_W:5=7")
        line = ("--port", controller.port, "--timeout", "500", "--retries", "1")
        objects = self.told_by("write", *line, "R_W:5=8", "9/R_W:5=8", "0/R_W:9=3", code=1)
        self.assertEqual([each["result"] for each in objects], ["confirmed", "refused", "sent"])
        self.assertEqual(objects[0]["before"] + objects[0]["after"], [7, 8])
        self.assertEqual(objects[1]["reason"], "no answer: no byte came")
        self.assertEqual([each.get("why") for each in objects], [None, "noByte", None])

    def test_recipes_tell_both_sides(self):
        controller = self.controller("--still", "--set", "R_W:5=7")
        tags = self.write_file("tags.csv", "name,register,address,unit\na,R_W,5,bar\nb,R_W,6,\n")
        line = ("--port", controller.port, "--tags", tags)
        file = self.path("recipe.json")
        self.assertEqual(self.told_by("recipe", "upload", file, *line),
                         [{"tags": 2, "file": file}])  # fmt: skip
        self.write_file("recipe.json", '{"a": 8, "b": 0}')
        compared = self.told_by("recipe", "compare", file, *line, code=3)
        self.assertEqual(
            compared[0], {"name": "a", "address": "1/R_W:5", "recipe": [8], "unit": "bar",
                          "controller": [7], "same": False})  # fmt: skip
        self.assertEqual(compared[2], {"tags": 2, "different": 1, "unread": 0})
        loaded = self.told_by("recipe", "download", file, *line)
        self.assertEqual([each["same"] for each in loaded[:2]], [True, True])
        self.assertEqual(run("recipe", "upload", "-", *line, "--json").returncode, 2)

    def test_recipes_tell_why_there_is_nothing_to_compare(self):
        controller = self.controller("--still", "--fault", "exception:2=100%")
        tags = self.write_file("tags.csv", "name,register,address\na,R_W,5\n")
        file = self.write_file("recipe.json", '{"a": 8}')
        line = ("--port", controller.port, "--tags", tags, "--retries", "1")
        (compared, _) = self.told_by("recipe", "compare", file, *line, code=1)
        self.assertEqual(compared["why"], "exception")
        (moved,) = self.told_by("recipe", "upload", file, *line, code=1)
        self.assertEqual(moved["why"], "exception")

    def test_a_log_is_told_frame_by_frame(self):
        log = self.path("line.log")
        self.succeeds("read", "--simulated", "R_W:500", "--log", log)
        with open(log, "a", encoding="utf-8") as file:
            file.write("nonsense\n")
        objects = self.told_by("trace", log, code=1)
        self.assertIn("remark", objects[0])
        self.assertIn("station 1: R_W:500 = 0", [each.get("text") for each in objects])
        self.assertEqual(objects[-1]["end"]["unreadable"], 1)

    def test_a_controllers_log_has_no_date(self):
        log = self.write_file("simulate.log", "    1.003785 <- 01 03 05 0A 00 01 A4 C4  x\n")
        told_of = self.told_by("trace", log)[0]
        self.assertEqual((told_of["seconds"], told_of["direction"]), (1.003785, "sent"))

    def test_the_controller_and_the_demo(self):
        with subprocess.Popen([TOOL, "simulate", "--json"], stdout=subprocess.PIPE,
                              text=True) as controller:  # fmt: skip
            begun = [controller.stdout.readline() for _ in range(2)]
            controller.send_signal(signal.SIGINT)
            objects = told("".join(begun) + controller.communicate(timeout=PATIENCE)[0])
        self.assertEqual([list(each) for each in objects], [["port"], ["report"]])
        self.assertEqual(self.told_by("demo", "--seconds", "1")[-1]["problems"], [])

    def test_a_value_that_becomes_old_is_told_and_when_it_is_good_again(self):
        cable = self.cable()
        self.controller("--still", "--set", "R_W:100=7", "--port", cable.far_port)
        for form, old, good in (
            (["--json"], '"quality":"old"', '"quality":"good"'),
            ([], " 1/R_W:100 = 7 (old)", " 1/R_W:100 = 7 (good)"),
            (["--csv", "-"], '"7","","old"', '"7","","good"'),
        ):
            watch = self.process(TOOL, "watch", "--port", cable.port, "R_W:100", *form)
            watch.wait_for("1/R_W:100")
            cable.unplug()
            watch.wait_for(old)
            cable.plug()
            line = watch.wait_for(good)
            if form == ["--json"]:
                self.assertEqual(json.loads(line)["value"], 7)
            watch.process.send_signal(signal.SIGINT)
            watch.process.wait(PATIENCE)

    def test_output_and_errors_in_one_pipe_stay_in_their_lines(self):
        addresses = [f"R_W:{i}" for i in range(3990, 4010)] * 30
        done = subprocess.run([TOOL, "check", "--json", *addresses], stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=PATIENCE, check=False)  # fmt: skip
        self.assertEqual(len(told(done.stdout.decode())), len(addresses))
        log = self.write_file("line.log", 2000 * "2026-01-31T11:34:56.000000+00:00 nonsense\n")
        controller = self.controller("--still")
        stations = [f"{i}/T:1" for i in range(2, 40)]
        done = subprocess.run(
            [TOOL, "watch", "--port", controller.port, "--timeout", "1", "--retries", "1",
             "--cycles", "3", "R_W:0..127", *stations, "--log", log],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=PATIENCE, check=False,
            text=True,
        )  # fmt: skip
        for line in done.stdout.splitlines():
            self.assertRegex(
                line,
                r"^(dov417: .*|2\S+ 1/R_W:\d+ = 0( \(old\))?|2\S+ given up: \d+#\w+\(\d+\): [\w :;,()]+)$",
            )


if __name__ == "__main__":
    unittest.main()
