"""Every live command against the simulated controller, as a person would use it."""

import csv
import datetime
import json
import os
import re
import select
import signal
import subprocess
import unittest

from harness import PATIENCE, TOOL, EndToEnd, as_somebody_else, run, told

TAGS = """name,station,register,address,count,format,comment
speed,1,R_W,200,1,,rpm
preset,1,R_W,210,3,signed,
total,2,R_D,220,2,,
mask,1,M_W,20,1,hex,
lamp,1,M_bit,30.4,2,,
alarm,1,R_bit,240.1,1,,
time,1,T,100,1,,
"""


class Read(EndToEnd):
    def test_every_register_type_reads_what_the_controller_holds(self):
        controller = self.controller(
            "--still", "--stations", "1,2",
            "--set", "I_W:1=0x8001", "--set", "Q_bit:2.3=1", "--set", "M_W:127=65535",
            "--set", "R_W:3999=7", "--set", "2/R_D:10..13=70000,4000000000",
            "--set", "T:5=55", "--set", "C:127=99", "--set", "R_bit:50.15=1",
        )  # fmt: skip
        out = self.succeeds(
            "read", "--port", controller.port,
            "I_bit:1.0..1.15", "Q_bit:2.2..2.4", "M_bit:127.15", "R_bit:50.14..50.15",
            "I_W:1", "Q_W:2", "M_W:126..127", "R_W:3998..3999", "2/R_D:10..13", "T:5", "C:127",
        )  # fmt: skip
        self.assertEqual(
            out.splitlines(),
            [
                "1/I_bit:1.0..1.15 = 1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 1",
                "1/Q_bit:2.2..2.4 = 0 1 0",
                "1/M_bit:127.15 = 1",
                "1/R_bit:50.14..50.15 = 0 1",
                "1/I_W:1 = 32769",
                "1/Q_W:2 = 8",
                "1/M_W:126..127 = 0 65535",
                "1/R_W:3998..3999 = 0 7",
                "2/R_D:10..13 = 70000 4000000000",
                "1/T:5 = 55",
                "1/C:127 = 99",
            ],
        )

    def test_a_long_range_is_read_in_as_few_requests_as_there_can_be(self):
        controller = self.controller("--still", "--strict", "--set", "R_W:0..3999=7")
        out = self.succeeds("read", "--port", controller.port, "R_W:0..3999", "--stats")
        self.assertEqual(out.splitlines()[0], "1/R_W:0..3999 =" + 4000 * " 7")
        self.assertIn("all requests: 32 sent, 32 good", out)

    def test_without_a_gap_the_last_words_of_a_piece_are_read_too(self):
        controller = self.controller("--still", "--set", "R_W:0..3999=7")
        out = self.succeeds("read", "--port", controller.port, "R_W:3875..3999", "--gap", "0")
        self.assertEqual(out, "1/R_W:3875..3999 =" + 125 * " 7" + "\n")

    def test_a_float_format_leaves_a_word_among_them_as_it_is(self):
        controller = self.controller("--still", "--set", "R_W:100=5", "--set", "R_D:200=1.5")
        out = self.succeeds("read", "--port", controller.port, "R_W:100", "R_D:200", "--format",
                            "float")  # fmt: skip
        self.assertEqual(out, "1/R_W:100 = 5\n1/R_D:200..201 = 1.5\n")

    def test_one_silent_station_does_not_keep_the_others_from_being_read(self):
        controller = self.controller("--still", "--set", "R_W:100=5")
        done = run("read", "--port", controller.port, "--timeout", "500", "R_W:100", "9/R_W:1")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout, "1/R_W:100 = 5\n")
        self.assertEqual(done.stderr, "dov417: 9/R_W:1: no answer: no byte came\n")

    def test_what_many_words_have_in_common_is_one_line(self):
        controller = self.controller("--fault", "exception:2=100%")
        err = self.fails("read", "--port", controller.port, *(f"R_W:{a}" for a in range(200)))
        self.assertEqual(err, "dov417: 1/R_W:0, 1/R_W:1, 1/R_W:2, 1/R_W:3 and 196 more: "
                              "exception 2 (illegal data address)\n")  # fmt: skip

    def test_a_refusal_is_named_and_nothing_is_made_up(self):
        controller = self.controller("--fault", "exception:2=100%")
        done = run("read", "--port", controller.port, "R_W:100")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout, "")
        self.assertIn("exception 2 (illegal data address)", done.stderr)

    def test_an_own_controller_keeps_the_pace_of_the_line(self):
        log = self.path("log")
        self.succeeds("read", "--simulated", "--line", "9600,8,EVEN,1", "--log", log, "R_W:0..19")
        with open(log, encoding="utf-8") as file:
            times = {entry[1]: entry[0] for entry in map(str.split, file)}
        taken = datetime.datetime.fromisoformat(times["RX"]) - datetime.datetime.fromisoformat(
            times["TX"]
        )
        # 8 characters there and 5 + 2 * 20 back, of 11 bits each.
        self.assertGreaterEqual(taken.total_seconds(), (8 + 45) * 11 / 9600)

    def test_ctrl_c_ends_a_read_that_waits(self):
        controller = self.controller("--fault", "silence=100%")
        reading = self.tool("read", "--port", controller.port, "--timeout", "600000", "R_W:1",
                            "--log", self.pipe("log"))  # fmt: skip
        self.wait_for_log("log", " TX ")
        code, _, err = reading.interrupt()
        self.assertEqual(code, 1)
        self.assertIn("interrupted", err)


class Write(EndToEnd):
    def test_every_register_type_is_written_and_read_back(self):
        controller = self.controller("--still", "--stations", "1,2", "--set", "R_W:50=0x0100")
        out = self.succeeds(
            "write", "--port", controller.port,
            "I_bit:20.3=1", "Q_bit:20.5..20.7=1,0,1", "M_bit:1.15=1", "R_bit:50.0=1",
            "I_W:30=100", "Q_W:30..31=101,102", "M_W:40=103", "R_W:60..62=1,2,3",
            "2/R_D:10..13=70000,4000000000", "T:101=104", "C:101=105",
        )  # fmt: skip
        self.assertEqual(out.count("written and read back"), 11)
        word = controller.memory()
        self.assertEqual(word(1, "I_W", 20), 8)
        self.assertEqual(word(1, "Q_W", 20), 0xA0)
        self.assertEqual(word(1, "M_W", 1), 0x8000)
        self.assertEqual(word(1, "R_W", 50), 0x0101, "the other bits of the register stay")
        self.assertEqual(word(1, "I_W", 30), 100)
        self.assertEqual([word(1, "Q_W", 30), word(1, "Q_W", 31)], [101, 102])
        self.assertEqual(word(1, "M_W", 40), 103)
        self.assertEqual([word(1, "R_W", a) for a in (60, 61, 62)], [1, 2, 3])
        self.assertEqual(word(2, "R_W", 10) + 65536 * word(2, "R_W", 11), 70000)
        self.assertEqual(word(2, "R_W", 12) + 65536 * word(2, "R_W", 13), 4000000000)
        self.assertEqual(word(1, "T", 101), 104)
        self.assertEqual(word(1, "C", 101), 105)

    def test_a_run_of_bits_lands_in_its_own_area(self):
        # As one request it would go to the coils of area I.
        controller = self.controller("--still")
        self.succeeds("write", "--port", controller.port, "M_bit:0.0..0.3=1,1,1,1")
        word = controller.memory()
        self.assertEqual(word(1, "M_W", 0), 15)
        self.assertEqual(word(1, "I_W", 0), 0)

    def test_32_bit_values_go_out_in_one_request(self):
        controller = self.controller("--still")
        log = self.path("log")
        self.succeeds("write", "--port", controller.port, "--gap", "2", "--log", log,
                      "R_D:100..105=1,2,3")  # fmt: skip
        with open(log, encoding="utf-8") as file:
            writes = [line for line in file if " TX 01 10 " in line or " TX 01 06 " in line]
        # Function 16, two registers, four bytes.
        self.assertEqual([re.search(r"TX 01 10 .. .. 00 02 04", w) is not None for w in writes],
                         [True, True, True])  # fmt: skip

    def test_a_gap_that_would_tear_32_bit_values_is_refused_before_anything_is_sent(self):
        done = run("write", "--simulated", "--gap", "1", "R_D:100=1")
        self.assertEqual(done.returncode, 2)
        self.assertIn("in two", done.stderr)

    def test_what_cannot_be_framed_is_refused_before_anything_is_sent(self):
        for write in ("0/R_bit:1.0=1", "X_W:1=1", "R_W:4000=1", "R_W:1=70000", "R_W:1..2=5"):
            with self.subTest(write):
                done = run("write", "--simulated", write)
                self.assertEqual(done.returncode, 2, done.stdout + done.stderr)

    def test_a_refused_write_is_named_and_the_others_are_done(self):
        controller = self.controller("--still")
        done = run("write", "--port", controller.port, "--timeout", "500", "R_W:100=1", "9/R_W:1=2",
                   "R_W:102=3")  # fmt: skip
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout.count("written and read back"), 2)
        self.assertIn("9/R_W:1 = 2: given up, NOT confirmed: no answer", done.stderr)

    def test_a_value_that_did_not_stay_is_reported(self):
        controller = self.controller("--still")
        done = run("write", "--port", controller.port, "R_W:100=1", "R_W:100..101=2,3")
        self.assertEqual(done.returncode, 1)
        self.assertIn("1/R_W:100 = 1: taken, but it reads back as 2", done.stderr)
        self.assertIn("1/R_W:100..101 = 2 3: written and read back", done.stdout)

    def test_a_write_in_parts_says_which_words_were_taken(self):
        # Replies: the echo, three parts of the read before, two of the write.
        controller = self.controller("--still", "--fault", "exception:4=every:6")
        done = run("write", "--port", controller.port, "--gap", "0", "--retries", "1",
                   "--max-registers", "16", "R_W:100..139=" + ",".join(["7"] * 40))  # fmt: skip
        self.assertEqual(done.returncode, 1)
        self.assertIn("given up, NOT confirmed: exception 4 (server device failure), in "
                      "R_W:116..129, part 2 of 3; R_W:100..115 was taken\n", done.stderr)  # fmt: skip
        word = controller.memory()
        self.assertEqual([word(1, "R_W", a) for a in range(100, 116)], [7] * 16)
        self.assertEqual(word(1, "R_W", 130), 0, "nothing is sent after the part that failed")

    def test_a_broadcast_in_parts_waits_between_them(self):
        controller = self.controller("--still", "--stations", "1,2")
        log = self.path("log")
        self.succeeds("write", "--port", controller.port, "--gap", "0", "--max-registers", "16",
                      "--turnaround", "30", "--log", log,
                      "0/R_W:100..139=" + ",".join(["7"] * 40))  # fmt: skip
        with open(log, encoding="utf-8") as file:
            sent = [
                datetime.datetime.fromisoformat(entry.split()[0])
                for entry in file
                if " TX 00 10 " in entry
            ]
        self.assertEqual(len(sent), 3)
        for earlier, later in zip(sent, sent[1:]):
            self.assertGreaterEqual((later - earlier).total_seconds(), 0.03)
        word = controller.memory()
        for station in (1, 2):
            self.assertEqual([word(station, "R_W", a) for a in range(100, 140)], [7] * 40)

    def test_a_broadcast_reaches_every_station(self):
        controller = self.controller("--still", "--stations", "1,2")
        out = self.succeeds("write", "--port", controller.port, "--turnaround", "1", "0/R_W:100=7",
                            "0/M_bit:5.0=1")  # fmt: skip
        self.assertEqual(out.count("nobody confirms a broadcast"), 2)
        word = controller.memory()
        for station in (1, 2):
            self.assertEqual(word(station, "R_W", 100), 7)
            self.assertEqual(word(station, "M_W", 5), 1)


class Watch(EndToEnd):
    def test_changes_come_as_lines(self):
        controller = self.controller()
        watching = self.tool("watch", "--port", controller.port, "C:0", "I_bit:0.0..0.1")
        self.assertIn("1/C:0 = ", watching.wait_for("1/C:0 = "))
        self.assertIn("(was ", watching.wait_for("1/C:0 = "))
        code, _, err = watching.interrupt()
        self.assertEqual((code, err), (0, ""))

    def test_every_value_of_a_long_run_comes_from_a_strict_controller(self):
        controller = self.controller("--still", "--strict", "--set", "R_W:127=77")
        for options, notices in (((), 1), (("--max-registers", "32"), 0)):
            done = run("watch", "--port", controller.port, "R_W:0..127", "--cycles", "2",
                       "--stats", *options)  # fmt: skip
            self.assertEqual(done.returncode, 0)
            self.assertEqual(done.stdout.count(" 1/R_W:"), 128)
            self.assertIn(" 1/R_W:127 = 77\n", done.stdout)
            self.assertEqual(
                done.stderr,
                "dov417: station 1 refuses 128 registers in one request: they go out in parts of "
                "at most 125 from now on\n" * notices,
            )
            parts = 5 if not options else 8
            self.assertIn(f"read  1#R_W0(128): 2 sent, 2 good, {parts} parts\n", done.stdout)

    def test_json_has_an_object_a_line(self):
        controller = self.controller()
        out = self.succeeds("watch", "--port", controller.port, "C:0", "--json", "--seconds", "1")
        changes = told(out)
        self.assertGreater(len(changes), 2)
        self.assertEqual(changes[0]["address"], "1/C:0")
        self.assertEqual(changes[2]["previous"], changes[1]["value"])

    def test_json_has_numbers_for_floats_and_the_bits_of_what_is_none(self):
        controller = self.controller("--still", "--set", "R_D:0..7=1e10,0.1,0x7FC00001,0xFF800000")
        out = self.succeeds("watch", "--port", controller.port, "R_D:0..7", "--format", "float",
                            "--json", "--cycles", "1")  # fmt: skip
        objects = told(out)
        self.assertEqual([(t["value"], t.get("bits")) for t in objects],
                         [(1e10, None), (0.1, None), (None, "0x7FC00001"),
                          (None, "0xFF800000")])  # fmt: skip

    def test_json_tells_what_was_given_up_once_and_how_often(self):
        controller = self.controller("--fault", "exception:2=100%")
        done = run("watch", "--port", controller.port, "--retries", "1",
                   "R_W:100", "--json", "--cycles", "2")  # fmt: skip
        self.assertEqual(done.returncode, 1)
        objects = told(done.stdout)
        self.assertEqual([(t["abandoned"], t["reason"], t["why"], t.get("times")) for t in objects],
                         [("1#R_W100(1)", "exception 2 (illegal data address)", "exception", times)
                          for times in (None, 2)])  # fmt: skip

    def test_json_tells_of_a_silent_station_what_was_asked_and_what_not(self):
        controller = self.controller("--fault", "silence=100%")
        done = run("watch", "--port", controller.port, "--timeout", "20", "--retries", "1",
                   "R_W:100", "--json", "--stats", "--cycles", "2")  # fmt: skip
        self.assertEqual(done.returncode, 1)
        objects = told(done.stdout)
        self.assertEqual([(t["abandoned"], t["reason"], t["why"]) for t in objects[:-1]],
                         [("1#R_W100(1)", "no answer: no byte came", "noByte")])  # fmt: skip
        counters = objects[-1]["statistics"]["requests"]["read  1#R_W100(1)"]
        told_of = [counters[key] for key in ("sent", "notSent", "abandoned")]
        self.assertEqual(told_of, [0, 1, 1])  # nothing but the echo before it went out
        self.assertGreaterEqual(counters["notAsked"], 1)
        self.assertRegex(counters["whyNotAsked"], "^not asked: silent since [0-9:]{8}$")

    def test_json_tells_the_counters_as_an_object(self):
        controller = self.controller("--still", "--fault", "exception:2=100%")
        done = run("watch", "--port", controller.port, "R_W:100", "--json", "--stats",
                   "--cycles", "2", "--retries", "1")  # fmt: skip
        counters = told(done.stdout)[-1]["statistics"]
        self.assertEqual(counters["all"]["bad"], {"exception": 2})
        self.assertEqual(counters["all"]["exceptions"], {"2": 2})
        self.assertEqual([s["station"] for s in counters["stations"]], [1])

    def test_json_tells_that_a_station_is_slow(self):
        cable, _ = self.slow_slave("1:600")
        out = self.succeeds("watch", "--port", cable.port, "R_W:100", "--json", "--cycles", "1")
        notices = [t["notice"] for t in told(out) if "notice" in t]
        self.assertEqual(len(notices), 1, out)
        self.assertRegex(notices[0], "^station 1 answers after [5-9].. ms: waiting longer")

    def test_what_is_given_up_again_and_again_is_a_line_and_a_count(self):
        controller = self.controller("--fault", "exception:2=100%")
        err = self.fails("watch", "--port", controller.port, "--retries", "1", "R_W:0..9", "M_W:3",
                         "--cycles", "50")  # fmt: skip
        lines = [line.split(" ", 1)[1] for line in err.splitlines()]
        self.assertEqual(
            lines,
            [
                "given up: 1#M_W3(1): exception 2 (illegal data address)",
                "given up: 1#R_W0(10): exception 2 (illegal data address)",
                "given up: 1#M_W3(1) 50 times, 1#R_W0(10) 50 times: "
                "exception 2 (illegal data address)",
                "1/R_W:0..9, 1/M_W:3: no value came",
            ],
        )

    def test_many_requests_that_are_given_up_are_few_lines(self):
        controller = self.controller("--fault", "exception:2=100%")
        words = [f"R_W:{address}" for address in range(0, 2000, 50)]
        err = self.fails("watch", "--port", controller.port, "--retries", "1", *words,
                         "--cycles", "2")  # fmt: skip
        self.assertEqual(err.count(" given up: 1#"), 11)  # ten at once, the rest at the end
        self.assertIn("1/R_W:0, 1/R_W:50, 1/R_W:100, 1/R_W:150 and 36 more: no value came", err)

    def test_a_value_that_is_old_at_the_end_makes_it_fail(self):
        cable = self.cable()
        controller = self.controller("--still", "--line", "38400,8,NONE,1", "--port",
                                     cable.far_port, "--set", "R_W:100=7")  # fmt: skip
        watching = self.tool("watch", "--port", cable.port, "--timeout", "20", "R_W:100")
        watching.wait_for("1/R_W:100 = 7")
        controller.interrupt()
        watching.wait_for_error("given up: 1#R_W100(1)")
        code, _, err = watching.interrupt()
        self.assertEqual(code, 1)
        self.assertIn("1/R_W:100: the value is old", err)

    def test_csv_has_a_row_a_change(self):
        tags = self.write_file("tags.csv", TAGS)
        controller = self.controller("--still", "--stations", "1,2", "--set", "R_W:211=0xFFFF")
        file = self.path("values.csv")
        self.succeeds("watch", "--port", controller.port, "--tags", tags, "--csv", file,
                      "--cycles", "2")  # fmt: skip
        with open(file, encoding="utf-8", newline="") as rows:
            values = {row["name"]: row["value"] for row in csv.DictReader(rows)}
        self.assertEqual(values["preset[1]"], "-1")
        self.assertEqual(values["speed"], "0")
        self.assertEqual(len(values), 11)

    def test_csv_on_the_standard_output_is_alone_there(self):
        controller = self.controller("--still", "--set", "R_W:100=7")
        done = run("watch", "--port", controller.port, "R_W:100", "--csv", "-", "--cycles", "2",
                   "--stats")  # fmt: skip
        self.assertEqual(done.returncode, 0)
        rows = list(csv.reader(done.stdout.splitlines()))
        self.assertEqual([row[1:] for row in rows],
                         [["name", "address", "value", "previous", "quality"],
                          ["1/R_W:100", "1/R_W:100", "7", "", "good"]])  # fmt: skip
        self.assertIn("all requests: 2 sent, 2 good", done.stderr)

    def test_it_polls_in_the_interval_asked_for(self):
        controller = self.controller("--still")
        log = self.path("log")
        self.succeeds("watch", "--port", controller.port, "R_W:100", "M_W:5", "--every", "200",
                      "--cycles", "4", "--log", log, "--no-function-8")  # fmt: skip
        with open(log, encoding="utf-8") as file:
            sent = [datetime.datetime.fromisoformat(line.split()[0])
                    for line in file if " TX " in line and "M_W:5" in line]  # fmt: skip
        # Three intervals, of which the first may begin late on a busy machine; twice as often would
        # be 0.3.
        self.assertGreaterEqual((sent[-1] - sent[-4]).total_seconds(), 0.5)

    def test_a_line_that_cannot_keep_the_interval_is_said_so_once(self):
        controller = self.controller("--still", "--response-time", "30")
        done = run("watch", "--port", controller.port, "R_W:100", "--every", "10", "--cycles", "5")
        self.assertEqual(done.returncode, 0)
        said = re.findall("the line cannot keep 10 ms: a cycle took ", done.stderr)
        self.assertEqual(len(said), 1)

    def test_it_ends_after_the_cycles_asked_for(self):
        controller = self.controller("--still")
        out = self.succeeds("watch", "--port", controller.port, "R_W:100", "M_W:5", "--cycles",
                            "7", "--stats")  # fmt: skip
        self.assertIn("all requests: 14 sent, 14 good", out)
        self.assertIn("7 cycles", out)

    def test_an_address_without_a_value_makes_it_fail(self):
        controller = self.controller("--still")
        err = self.fails("watch", "--port", controller.port, "--timeout", "20", "--retries", "1",
                         "R_W:100", "9/T:1", "--cycles", "2")  # fmt: skip
        self.assertIn("9/T:1: no value came", err)
        self.assertIn("given up: 9#T1(1): no answer: no byte came", err)

    def test_it_ends_when_nobody_reads_any_more(self):
        watch = self.process(TOOL, "watch", "--simulated", "R_W:0", "--json")
        watch.wait_for("R_W:0")
        watch.process.stdout.close()
        self.assertEqual(watch.process.wait(PATIENCE), -signal.SIGPIPE)

    def test_what_cannot_be_recorded_is_a_failure(self):
        full = self.path("full")
        os.symlink("/dev/full", full)
        controller = self.controller()
        watch = ["watch", "--port", controller.port, "R_W:0"]
        self.assertIn(f"cannot write {full}: No space left", self.fails(*watch, "--csv", full))
        self.assertIn(f"the log {full} could not be written",
                      self.fails(*watch, "--cycles", "2", "--log", full))  # fmt: skip
        with open(full, "w", encoding="utf-8") as out:
            done = subprocess.run([TOOL, *watch], stdout=out, stderr=subprocess.PIPE, text=True,
                                  timeout=PATIENCE, check=False)  # fmt: skip
        self.assertEqual(done.returncode, 1)
        self.assertIn("the output could not be written", done.stderr)

    def test_what_the_caller_ignores_stays_ignored(self):
        watch = self.process("sh", "-c", "trap '' HUP; exec \"$@\"", "sh", TOOL, "watch",
                             "--simulated", "R_W:0")  # fmt: skip
        watch.wait_for("R_W:0")
        watch.process.send_signal(signal.SIGHUP)
        watch.wait_for("was 30")  # far behind the signal
        self.assertEqual(watch.interrupt()[0], 0)

    def check_that_the_terminal_is_restored(self, stop):
        controller = self.controller("--still", "--set", "C:3=4711")
        watching = self.terminal("watch", "--port", controller.port, "C:0..3")
        watching.wait_for(b"4711")  # that the link is good may be shown before
        stop(watching)
        self.assertEqual(watching.end(), 0)
        seen = watching.seen
        self.assertIn(b"\x1b[?1049h", seen)
        self.assertIn(b"\x1b[?25l", seen)
        self.assertLess(seen.rfind(b"\x1b[?1049h"), seen.rfind(b"\x1b[?1049l"))
        self.assertLess(seen.rfind(b"\x1b[?25l"), seen.rfind(b"\x1b[?25h"))
        self.assertIn(b"1/C:3", seen[seen.rfind(b"\x1b[?1049l") :], "the last values stay")

    def test_the_terminal_is_restored_after_ctrl_c(self):
        self.check_that_the_terminal_is_restored(lambda watching: watching.press(b"\x03"))

    def test_the_terminal_is_restored_after_a_polite_kill(self):
        self.check_that_the_terminal_is_restored(lambda watching: watching.signal(signal.SIGTERM))

    def test_the_terminal_is_restored_after_a_hangup(self):
        self.check_that_the_terminal_is_restored(lambda watching: watching.signal(signal.SIGHUP))

    def test_the_terminal_shows_that_the_link_has_failed_and_why(self):
        controller = self.controller("--fault", "silence=100%")
        watching = self.terminal("watch", "--port", controller.port, "--timeout", "20",
                                 "--retries", "1", "R_W:100")  # fmt: skip
        watching.wait_for(b"link FAILED")
        watching.wait_for(b"given up: 1#R_W100(1)")
        watching.press(b"\x03")
        self.assertEqual(watching.end(), 1, "no value came")


SCALED = """Name;Register;Address;Count;Format;Scale;Unit;Decimals;Min;Max
level;R_W;100;2;signed;0,1;bar;1;-5;100
energy;R_D;600;1;uint64;;kWh;;;
flow;R_D;700;1;double:high-first;;;;;
"""


class Engineering(EndToEnd):
    """Values as engineers have them, and what the other side saw of them."""

    def setUp(self):
        super().setUp()
        self.tags = self.write_file("scaled.csv", SCALED)

    def test_values_are_read_with_scale_unit_and_four_words(self):
        controller = self.controller("--still", "--set", "R_W:100=123,0xFFFF",
                                     "--set", "R_W:600..603=0xFFFE,0xFFFF,0xFFFF,0xFFFF",
                                     "--set", "R_W:700=0x3FF8")  # fmt: skip
        out = self.succeeds("read", "--port", controller.port, "--tags", self.tags)
        self.assertEqual(out.splitlines(), ["level = 12.3 -0.1 bar",
                                            "energy = 18446744073709551614 kWh",
                                            "flow = 1.5"])  # fmt: skip

    def test_what_is_written_is_what_the_controller_holds(self):
        controller = self.controller("--still")
        out = self.succeeds("write", "--port", controller.port, "--tags", self.tags,
                            "level[1]=-0.1", "energy=18446744073709551614", "flow=1.5")  # fmt: skip
        self.assertEqual(out.splitlines(),
                         ["level[1] = -0.1 bar: written and read back, was 0.0 bar",
                          "energy = 18446744073709551614 kWh: written and read back, was 0 kWh",
                          "flow = 1.5: written and read back, was 0"])  # fmt: skip
        word = controller.memory()
        self.assertEqual([word(1, "R_W", a) for a in (100, 101)], [0, 0xFFFF])
        self.assertEqual([word(1, "R_W", a) for a in range(600, 604)],
                         [0xFFFE, 0xFFFF, 0xFFFF, 0xFFFF])  # fmt: skip
        self.assertEqual([word(1, "R_W", a) for a in range(700, 704)], [0x3FF8, 0, 0, 0])

    def test_nothing_is_sent_of_what_is_outside_the_limits(self):
        log = self.path("log")
        controller = self.controller("--still", "--log", log)
        for text in ("level=1,100.1", "level[0]=-5.1", "level[0]@hex=FF00", "level[0]=1.25"):
            done = run("write", "--port", controller.port, "--tags", self.tags, text)
            self.assertEqual(done.returncode, 2, text)
        file = self.write_file("recipe.json", '{"level": [0, "0x7FFF"]}')
        done = run("recipe", "download", file, "--port", controller.port, "--tags", self.tags)
        self.assertEqual(done.returncode, 2)
        self.assertIn("level: value '3276.7': above the maximum, 100", done.stderr)
        controller.interrupt()
        with open(log, encoding="utf-8") as said:
            self.assertEqual([line for line in said if " -- " not in line], [])

    def test_watch_tells_numbers_with_their_unit_beside_them(self):
        controller = self.controller("--still", "--set", "R_W:100=123,120")
        out = self.succeeds("watch", "--port", controller.port, "--tags", self.tags, "level",
                            "flow", "--json", "--cycles", "1")  # fmt: skip
        objects = told(out)
        self.assertEqual([(t["name"], t["value"], t.get("unit")) for t in objects],
                         [("level[0]", 12.3, "bar"), ("level[1]", 12, "bar"),
                          ("flow", 0, None)])  # fmt: skip

    def test_a_value_of_four_words_comes_in_one_part(self):
        controller = self.controller("--still", "--set", "R_W:0..127=7")
        log = self.path("log")
        self.succeeds("watch", "--port", controller.port, "R_W:0..1", "R_D:2..125@uint64",
                      "--max-registers", "6", "--cycles", "2", "--log", log)  # fmt: skip
        with open(log, encoding="utf-8") as file:
            reads = re.findall(r"read [0-9]+ registers? from [0-9]+ [(]R_W:([0-9]+)", file.read())
        self.assertEqual({(int(first) - 2) % 4 for first in reads if int(first) > 0}, {0})

    def test_a_recipe_of_them_goes_down_and_up(self):
        controller = self.controller("--still")
        recipe = {"level": [12.3, -0.1], "energy": 18446744073709551615, "flow": 1e300}
        file = self.write_file("recipe.json", json.dumps(recipe))
        where = ["--tags", self.tags, "--port", controller.port]
        self.succeeds("recipe", "download", file, *where)
        up = self.succeeds("recipe", "upload", "-", *where)
        self.assertEqual(json.loads(up), recipe)
        self.succeeds("recipe", "compare", file, *where)


class Recipe(EndToEnd):
    def setUp(self):
        super().setUp()
        self.tags = self.write_file("tags.csv", TAGS)

    def test_a_recipe_goes_down_and_comes_up_again(self):
        controller = self.controller("--still", "--stations", "1,2")
        recipe = {"speed": 1500, "preset": [-1, 0, 1], "total": [70000, 4000000000],
                  "mask": "0x0F0F", "lamp": [0, 1], "alarm": 1, "time": 12}  # fmt: skip
        file = self.write_file("recipe.json", json.dumps(recipe))
        self.succeeds("recipe", "download", file, "--tags", self.tags, "--port", controller.port)
        copy = self.path("copy.json")
        self.succeeds("recipe", "upload", copy, "--tags", self.tags, "--port", controller.port)
        with open(copy, encoding="utf-8") as uploaded:
            self.assertEqual(json.load(uploaded), recipe)
        word = controller.memory()
        self.assertEqual(word(1, "R_W", 200), 1500)
        self.assertEqual(word(1, "M_W", 30), 0x20)
        self.assertEqual(word(2, "R_W", 220) + 65536 * word(2, "R_W", 221), 70000)

    def test_a_long_recipe_is_moved_in_pieces_that_a_strict_controller_takes(self):
        tags = self.write_file(
            "long.csv", "name,register,address,count\nlong,R_W,100,600\nbits,M_W,0,128\n"
        )
        controller = self.controller("--still", "--strict")
        recipe = {"long": list(range(1, 601)), "bits": list(range(1000, 1128))}
        file = self.write_file("recipe.json", json.dumps(recipe))
        self.succeeds("recipe", "download", file, "--tags", tags, "--port", controller.port)
        copy = self.path("copy.json")
        self.succeeds("recipe", "upload", copy, "--tags", tags, "--port", controller.port)
        with open(copy, encoding="utf-8") as uploaded:
            self.assertEqual(json.load(uploaded), recipe)
        word = controller.memory()
        self.assertEqual([word(1, "R_W", a) for a in range(100, 700)], recipe["long"])
        self.assertEqual([word(1, "M_W", a) for a in range(128)], recipe["bits"])

    def test_a_recipe_of_bits_alone_asks_the_driver_for_no_transfer(self):
        # With the request flag set and no address taken, the driver would repeat its last frame.
        controller = self.controller("--still", "--set", "M_bit:30.7=1")
        file = self.write_file("recipe.json", '{"lamp": [1, 1]}')
        self.succeeds("recipe", "download", file, "--tags", self.tags, "--port", controller.port)
        self.assertEqual(controller.memory()(1, "M_W", 30), 0xB0)

    def test_a_download_tells_each_value_and_what_reads_back_otherwise(self):
        tags = self.write_file(
            "two.csv", "name,register,address,count\nfirst,R_W,300,3\nlast,R_W,302,1\n"
        )
        controller = self.controller("--still")
        file = self.write_file("recipe.json", '{"first": [1, 2, 3], "last": 3}')
        out = self.succeeds("recipe", "download", file, "--tags", tags, "--port", controller.port)
        self.assertEqual(out.splitlines()[:4], ["first[0] = 1: written and read back",
                                                "first[1] = 2: written and read back",
                                                "first[2] = 3: written and read back",
                                                "last = 3: written and read back"])  # fmt: skip
        tags = self.write_file("two.csv", "name,register,address\nfirst,R_W,300\nlast,R_W,340\n")
        cable, _ = self.slow_slave("1:0")  # it takes what is written, and stays as it is
        file = self.write_file("recipe.json", '{"first": 3, "last": 1620}')
        done = run("recipe", "download", file, "--tags", tags, "--port", cable.port)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout, "last = 1620: written and read back\n")
        self.assertEqual(done.stderr, "dov417: first = 3: taken, but it reads back as 1580\n")

    def test_a_recipe_that_wants_two_things_of_one_place_is_refused(self):
        tags = self.write_file(
            "two.csv", "name,register,address,count\nfirst,R_W,300,3\nlast,R_W,302,1\n"
        )
        controller = self.controller("--still")
        file = self.write_file("recipe.json", '{"first": [1, 2, 3], "last": 4}')
        done = run("recipe", "download", file, "--tags", tags, "--port", controller.port)
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertEqual(done.stderr, f"dov417: {file}: first and last want different values of "
                                      "the same place, 1/R_W:302\n")  # fmt: skip
        self.assertEqual(controller.memory()(1, "R_W", 300), 0)

    def test_a_recipe_is_compared_with_the_controller(self):
        controller = self.controller("--still", "--stations", "1,2", "--set", "R_W:200=1500",
                                     "--set", "R_W:211=7", "--set", "M_bit:30.5=1")  # fmt: skip
        recipe = {"speed": 1500, "preset": [0, -1, 0], "lamp": [0, 0]}
        file = self.write_file("recipe.json", json.dumps(recipe))
        compare = ["recipe", "compare", file, "--tags", self.tags, "--port", controller.port]
        done = run(*compare)
        self.assertEqual((done.returncode, done.stderr), (3, ""))
        self.assertEqual(
            done.stdout.splitlines(),
            [
                "   tag        recipe  controller",
                "   speed        1500        1500",
                "   preset[0]       0           0",
                "!  preset[1]      -1           7",
                "   preset[2]       0           0",
                "   lamp[0]         0           0",
                "!  lamp[1]         0           1",
                "2 of 6 values differ",
            ],
        )
        self.assertEqual(controller.memory()(1, "R_W", 211), 7)

    def test_what_cannot_be_read_is_not_compared(self):
        controller = self.controller("--still", "--stations", "1")
        file = self.write_file("recipe.json", '{"speed": 0, "total": [0, 0]}')
        done = run("recipe", "compare", file, "--tags", self.tags, "--port", controller.port,
                   "--timeout", "500")  # fmt: skip
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout.splitlines()[1:], ["   speed       0           0"])
        self.assertEqual(done.stderr, "dov417: total: no answer: no byte came\n")

    def test_a_recipe_goes_through_pipes(self):
        controller = self.controller("--still", "--stations", "1,2", "--set", "R_W:200=1500")
        where = ["--tags", self.tags, "--port", controller.port]
        up = run("recipe", "upload", "-", "--stats", *where)
        self.assertEqual(json.loads(up.stdout)["speed"], 1500)
        self.assertIn("Link statistics", up.stderr)
        down = subprocess.run([TOOL, "recipe", "download", "-", *where], input='{"speed": 1600}',
                              capture_output=True, text=True, timeout=PATIENCE,
                              check=True)  # fmt: skip
        self.assertEqual(down.stdout, "speed = 1600: written and read back\n"
                                      "1 tag from the standard input into the controller\n")  # fmt: skip
        self.assertEqual(controller.memory()(1, "R_W", 200), 1600)

    def test_a_recipe_that_is_cut_off_says_how_much_was_done(self):
        tags = self.write_file("long.csv", "name,register,address,count\nlong,R_W,100,600\n")
        controller = self.controller("--still", "--fault", "exception:4=every:4")
        file = self.write_file("recipe.json", json.dumps({"long": list(range(600))}))
        err = self.fails("recipe", "download", file, "--tags", tags, "--port", controller.port,
                         "--retries", "1", "--no-function-8")  # fmt: skip
        self.assertIn("recipe not transferred: ", err)
        written = int(re.search("([0-9]+) of 600 words had been written", err)[1])
        word = controller.memory()
        # The refused request was carried out all the same: its words are in the controller too.
        held = sum(word(1, "R_W", 100 + i) == i for i in range(1, 600)) + 1
        self.assertEqual(held, min(600, written + 122))
        self.assertEqual(written % 122, 0)
        self.assertGreater(written, 0)

    def test_a_recipe_that_is_refused_says_so_and_keeps_the_old_file(self):
        controller = self.controller("--fault", "exception:2=100%", "--stations", "1,2")
        file = self.write_file("recipe.json", '{"speed": 1}')
        err = self.fails("recipe", "upload", file, "--tags", self.tags, "--port", controller.port)
        self.assertIn("exception 2", err)
        with open(file, encoding="utf-8") as old:
            self.assertEqual(old.read(), '{"speed": 1}')
        err = self.fails("recipe", "download", file, "--tags", self.tags, "--port",
                         controller.port)  # fmt: skip
        self.assertIn("recipe not transferred", err)

    def test_a_recipe_with_an_unknown_tag_is_refused_before_anything_is_sent(self):
        file = self.write_file("recipe.json", '{"sped": 1}')
        done = run("recipe", "download", file, "--tags", self.tags, "--simulated")
        self.assertEqual(done.returncode, 2)
        self.assertIn("sped", done.stderr)


class SimulateAndDemo(EndToEnd):
    def test_the_controller_keeps_its_link_while_it_runs(self):
        controller = self.controller()
        self.assertTrue(os.path.islink(controller.port))
        code, out, _ = controller.interrupt()
        self.assertEqual(code, 0)
        self.assertIn("requests", out)
        self.assertFalse(os.path.lexists(controller.port))

    def test_anybody_may_dump_into_a_device(self):
        simulating = self.process(*as_somebody_else(TOOL, "simulate", "--dump", "/dev/null"))
        simulating.wait_for("/dev/pts/")
        code, _, err = simulating.interrupt()
        self.assertEqual((code, err), (0, ""))

    def test_what_no_dump_can_replace_is_refused_at_the_start(self):
        for target, why in ((self.folder, "written there"),
                            ("/no/such/folder/x", "written into its folder")):  # fmt: skip
            self.assertIn(why, self.fails("simulate", "--dump", target))

    def test_a_wrong_fault_rule_is_explained(self):
        done = run("simulate", "--fault", "flop=10%")
        self.assertEqual(done.returncode, 2)
        self.assertIn("flop", done.stderr)

    def test_every_live_command_brings_its_own_controller_if_asked(self):
        self.assertIn("1/R_W:100 = 0", self.succeeds("read", "--simulated", "R_W:100"))
        self.succeeds("write", "--simulated", "2/R_W:100=1")
        self.succeeds("watch", "--simulated", "R_W:100", "--cycles", "1")

    def test_without_a_line_it_says_how_to_name_one(self):
        done = run("read", "R_W:1")
        self.assertEqual(done.returncode, 2)
        self.assertIn("--port PORT", done.stderr)

    def test_the_demo_succeeds(self):
        out = self.succeeds("demo", "--seconds", "2")
        self.assertIn("Every address got its value, every write was read back.", out)

    def test_ctrl_c_ends_the_demo_and_its_controller(self):
        demo = self.tool("demo", "--seconds", str(PATIENCE), "--log", self.pipe("log"))
        self.wait_for_log("log", " RX ")
        controller = self.child_of(demo.process.pid)
        demo.interrupt()
        with self.assertRaises(ProcessLookupError):
            os.kill(controller, signal.SIGCONT)

    def test_a_controller_goes_with_the_tool_that_is_killed(self):
        demo = self.tool("demo", "--seconds", str(PATIENCE), "--log", self.pipe("log"))
        self.wait_for_log("log", " RX ")
        controller = os.pidfd_open(self.child_of(demo.process.pid))
        self.addCleanup(os.close, controller)
        demo.process.kill()
        gone, _, _ = select.select([controller], [], [], PATIENCE)
        self.assertTrue(gone)

    @staticmethod
    def child_of(process):
        with open(f"/proc/{process}/task/{process}/children", encoding="ascii") as file:
            return int(file.read().split()[0])


if __name__ == "__main__":
    unittest.main()
