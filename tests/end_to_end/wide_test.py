"""`watch --csv --wide`: a row an interval, and nothing in it that was not read for it."""

import csv
import os

from harness import TOOL, EndToEnd, run

TAGS = """name,station,register,address,count,format,scale,unit
level,1,R_W,100,2,signed,0.1,bar
speed,2,R_W,200,,,,
"""


class Wide(EndToEnd):
    def setUp(self):
        super().setUp()
        self.tags = self.write_file("tags.csv", TAGS)

    def watch(self, controller, *options):
        return ["watch", "--port", controller.port, "--tags", self.tags, "--wide", *options]

    def test_a_row_an_interval_has_every_value(self):
        controller = self.controller("--still", "--stations", "1,2", "--set", "R_W:100=123,0xFFFF")
        out = self.succeeds(*self.watch(controller, "--every", "500", "--csv", "-", "--cycles", "3"))
        rows = list(csv.reader(out.splitlines()))
        self.assertEqual(rows[0], ["time", "level[0] (bar)", "level[1] (bar)", "speed"])
        full = [row[1:] for row in rows[1:] if row[1]]
        self.assertEqual(full, [["12.3", "-0.1", "0"]] * 3)

    def test_a_station_that_does_not_answer_has_empty_fields(self):
        controller = self.controller("--still", "--stations", "1")
        done = run(*self.watch(controller, "--every", "20", "--csv", "-", "--cycles", "3",
                               "--timeout", "20", "--retries", "1"))  # fmt: skip
        self.assertEqual(done.returncode, 1)
        rows = list(csv.reader(done.stdout.splitlines()))[1:]
        self.assertGreaterEqual(len(rows), 3)
        self.assertEqual({row[3] for row in rows}, {""})
        self.assertLessEqual([row[1] for row in rows].count("0.0"), 3)

    def test_no_value_is_repeated_while_the_line_is_away(self):
        controller = self.controller("--still", "--set", "R_W:100=7")
        watch = self.process(TOOL, "watch", "--port", controller.port, "R_W:100", "--wide",
                             "--every", "20", "--csv", "-")  # fmt: skip
        watch.wait_for(',"7"')
        os.unlink(controller.port)
        controller.interrupt()
        watch.wait_for_error("waiting for it")
        for _ in range(200):  # what was read before the line went
            if '"7"' not in watch.process.stdout.readline():
                break
        later = [watch.process.stdout.readline() for _ in range(3)]
        self.assertEqual({line.split(",", 1)[1] for line in later}, {'""\n'})
        code, _, _ = watch.interrupt()
        self.assertEqual(code, 1)

    def test_it_needs_a_file_and_an_interval(self):
        for options in (["--csv", "-"], ["--every", "50"]):
            done = run("watch", "--simulated", "R_W:0", "--wide", *options)
            self.assertEqual(done.returncode, 2)
            self.assertIn("--wide requires", done.stderr)
