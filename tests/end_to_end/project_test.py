"""A project file and the environment, in place of options."""

import json
import os
import subprocess
import unittest

from harness import PATIENCE, TOOL, EndToEnd, told


def run_with(variables, *arguments):
    return subprocess.run(
        [TOOL, *arguments], capture_output=True, text=True, timeout=PATIENCE, check=False,
        env={**os.environ, **variables},
    )  # fmt: skip


class Project(EndToEnd):
    def project(self, **members):
        return self.write_file("plant.json", json.dumps({"version": 1, **members}))

    def test_line_and_tags_come_from_the_project(self):
        controller = self.controller("--still", "--line", "9600,8,NONE,1", "--set", "R_W:200=7")
        project = self.project(
            line={"port": controller.port, "line": "9600,8,NONE,1", "timeout": 2000},
            tags=[{"name": "speed", "register": "R_W", "address": 200, "scale": 0.5}],
        )
        self.assertEqual(self.succeeds("read", "--project", project), "speed = 3.5\n")
        self.succeeds("write", "--project", project, "speed=4")
        self.assertEqual(self.succeeds("read", "--project", project), "speed = 4\n")
        log = self.path("line.log")
        self.succeeds("read", "--project", project, "--log", log)
        with open(log, encoding="utf-8") as file:
            self.assertIn("line 9600,8,NONE,1", file.readline())

    def test_tags_lie_beside_the_project_wherever_it_is_named_from(self):
        self.write_file("tags.csv", "name,register,address\nspeed,R_W,500\n")
        project = self.project(tagFile="tags.csv", line={"simulated": True})
        self.assertEqual(self.succeeds("read", "--project", project), "speed = 0\n")

    def test_the_environment_wins_over_the_project_and_the_command_line_over_both(self):
        one, two, three = (
            self.process(TOOL, "simulate", "--still", "--set", f"R_W:200={i}")
            .wait_for("port ").split()[1]
            for i in (1, 2, 3)
        )  # fmt: skip
        project = self.project(line={"port": one})
        for variables, options, value in [
            ({}, [], 1),
            ({"DOV417_PORT": two}, [], 2),
            ({"DOV417_PORT": two}, ["--port", three], 3),
            ({"DOV417_PORT": two}, ["--simulated"], 0),
        ]:
            done = run_with(variables, "read", "R_W:200", "--project", project, *options)
            self.assertEqual((done.stdout, done.stderr), (f"1/R_W:200 = {value}\n", ""))
        project = self.project(line={"simulated": True})
        done = run_with({"DOV417_PORT": two}, "read", "R_W:200", "--project", project)
        self.assertEqual(done.stdout, "1/R_W:200 = 2\n")

    def test_a_station_gets_no_longer_requests_than_the_project_says(self):
        controller = self.controller("--still", "--stations", "1,2")
        project = self.project(
            line={"port": controller.port}, stations=[{"number": 2, "max-registers": 60}]
        )

        def lengths(*options):
            log = self.path("line.log")
            if os.path.exists(log):
                os.remove(log)
            self.succeeds("read", "--project", project, "--log", log, *options,
                          "1/R_W:0..99", "2/R_W:0..99")  # fmt: skip
            with open(log, encoding="utf-8") as file:
                sent = [line for line in file if " 03 05 " in line]
            return sorted(
                (frame[:2], int(frame[12:17].replace(" ", ""), 16))
                for frame in (line[line.index(" 03 05 ") - 2 :] for line in sent)
            )

        self.assertEqual(lengths(), [("01", 100), ("02", 40), ("02", 60)])
        self.assertEqual(
            lengths("--max-registers", "128"), [("01", 100), ("02", 100)]
        )

    def test_stations_are_told_with_their_names(self):
        cable, _ = self.slow_slave("1:5", "3:700")
        project = self.project(
            line={"port": cable.port},
            stations=[{"number": 1}, {"number": 3, "name": "oven"}],
        )
        done = run_with({}, "read", "--project", project, "1/R_W:5", "3/R_W:5", "--stats")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("  station 1: answers after ", done.stdout)
        self.assertIn("  station 3 (oven): answers after ", done.stdout)
        self.assertRegex(done.stderr, r"station 3 \(oven\) answers after \d+ ms: waiting longer")

    def test_names_are_members_for_programs(self):
        cable, _ = self.slow_slave("1:5", "3:5")
        project = self.project(
            line={"port": cable.port},
            stations=[{"number": 1}, {"number": 3, "name": "oven"}],
        )
        out = self.succeeds("watch", "--json", "--stats", "--project", project, "--cycles", "2",
                            "1/R_W:5", "3/R_W:5")  # fmt: skip
        stations = told(out)[-1]["statistics"]["stations"]
        self.assertEqual([(each["station"], each.get("name")) for each in stations],
                         [(1, None), (3, "oven")])  # fmt: skip

    def test_a_scan_names_the_stations_of_the_project_and_those_that_are_missing(self):
        controller = self.controller("--still", "--stations", "3,7", "--line", "9600,8,NONE,1")
        project = self.project(
            line={"port": controller.port, "line": "19200,8,EVEN,1"},
            stations=[{"number": 3, "name": "oven"}, {"number": 4, "name": "press"},
                      {"number": 5}, {"number": 99}],
        )  # fmt: skip
        scan = ("scan", "--project", project, "--line", "9600,8,NONE,1", "--stations")
        done = run_with({}, *scan, "1..7")
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stdout, r"\Astation 3 \(oven\) at 9600,8,NONE,1 answers in [^\n]*\n"
                                      r"station 7 at ")  # fmt: skip
        self.assertEqual(
            done.stderr,
            "dov417: station 4 (press) of the project does not answer\n"
            "dov417: station 5 of the project does not answer\n",
        )
        found = told(self.succeeds(*scan, "3,7", "--json"))
        self.assertEqual([each.get("name") for each in found if "slow" in each], ["oven", None])


if __name__ == "__main__":
    unittest.main()
