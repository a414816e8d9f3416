"""A project file and the environment, in place of options."""

import json
import os
import subprocess
import unittest

from harness import PATIENCE, TOOL, EndToEnd


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


if __name__ == "__main__":
    unittest.main()
