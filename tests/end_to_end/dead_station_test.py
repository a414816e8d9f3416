"""One of three stations is switched off, and on again."""

import datetime
import time
import unittest

from harness import PATIENCE, EndToEnd

# A pseudo-terminal takes no parity.
FAR_END = ("--still", "--line", "38400,8,NONE,1", "--set", "R_W:100=7", "--port")
POLLED = tuple(f"{station}/{address}" for station in (1, 2, 3) for address in ("R_W:100", "M_W:0"))


class DeadStation(EndToEnd):
    def entries(self, name):
        """Time, direction and station of each frame, as the log grows; of a note its text."""
        end = time.monotonic() + PATIENCE
        with open(self.path(name), encoding="utf-8") as log:
            line = ""
            while time.monotonic() < end:
                line += log.readline()
                if not line.endswith("\n"):
                    time.sleep(0.02)
                    continue
                at, way, *rest = line.split()
                if way in ("TX", "RX"):
                    yield datetime.datetime.fromisoformat(at).timestamp(), way, int(rest[0], 16)
                elif way == "--":
                    yield 0, way, line
                line = ""
        self.fail("what was to come is not in the log")

    def test_it_is_probed_now_and_then_and_taken_back(self):
        cable = self.cable()
        controller = self.controller("--stations", "1,3", *FAR_END, cable.far_port)
        watching = self.tool(
            "watch", "--port", cable.port, "--timeout", "100", "--log", self.path("log"), *POLLED
        )
        watching.wait_for("3/R_W:100 = 0")
        log = self.entries("log")
        asked, answers = [], {1: 0, 3: 0}  # when station 2 was asked; replies of the others
        between = []
        first_probe = None  # after it the silence is told
        for at, way, station in log:
            if way == "RX":
                answers[station] += 1
            elif station == 2:
                asked.append(at)
                between.append(dict(answers))
            elif way == "--" and "station 2 is silent" in station:
                first_probe = len(asked) - 1
            if first_probe and len(asked) == first_probe + 3:
                break
        for probe, pause in enumerate((1, 2, 4), first_probe):
            self.assertGreaterEqual(asked[probe] - asked[probe - 1], pause)
            for station in (1, 3):
                self.assertGreater(between[probe][station], between[probe - 1][station])

        controller.interrupt()
        self.controller("--stations", "1,2,3", *FAR_END, cable.far_port)
        self.assertTrue(any(way == "RX" and station == 2 for _, way, station in log))
        watching.wait_for("2/M_W:0 = 0")
        _, _, err = watching.interrupt()
        self.assertIn("given up: 2#", err)
        self.assertIn("station 2 is silent since ", err)
        self.assertIn("asked every 1 s to 30 s", err)
        self.assertEqual(err.count("station 2 is silent"), 1)
        self.assertEqual(err.count("station 2 answers again"), 1)

    def test_its_writes_are_reported_one_by_one_and_the_others_are_done(self):
        controller = self.controller("--stations", "1", "--still")
        assignments = [f"{station}/R_W:{address}=5" for address in (10, 100, 200, 300)
                       for station in (2, 1)]  # fmt: skip
        writing = self.tool(
            "write", "--port", controller.port, "--timeout", "300", "--retries", "2", *assignments
        )
        code, out, err = writing.end()
        self.assertEqual(code, 1)
        self.assertEqual(out.count("written and read back"), 4)
        for address in (10, 100, 200, 300):
            self.assertIn(f"dov417: 2/R_W:{address} = 5: given up, NOT confirmed: no answer: no byte came", err)

    def test_a_probe_comes_as_often_as_is_asked_for(self):
        controller = self.controller("--stations", "1", "--still")
        watching = self.tool("watch", "--port", controller.port, "--timeout", "20", "--stats",
                             "--probe", "200", "1/R_W:100", "2/R_W:100")  # fmt: skip
        watching.wait_for_error("asked every 0.2 s")
        _, out, _ = watching.interrupt()
        self.assertRegex(out, r"read  2#R_W100\(1\): .* not asked: silent since [0-9:]{8}")


if __name__ == "__main__":
    unittest.main()
