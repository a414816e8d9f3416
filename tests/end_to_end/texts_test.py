"""Texts in a controller's words, and what the other side saw of them."""

import csv
import re

from harness import EndToEnd, run, told

TAGS = """name;register;address;count;format
press.label;R_W;500;4;text
press.code;R_W;504;2;text:low-first
press.speed;R_W;510;;
"""


class Texts(EndToEnd):
    def setUp(self):
        super().setUp()
        self.tags = self.write_file("texts.csv", TAGS)

    def test_either_byte_of_a_word_may_hold_the_first_character(self):
        controller = self.controller("--still", "--set", "R_W:500=0x5055,0x4D50,0x2007,0",
                                     "--set", "R_W:504=0x4241,0x22")  # fmt: skip
        where = ["--port", controller.port, "--tags", self.tags]
        out = self.succeeds("read", *where, "press.*")
        self.assertEqual(out.splitlines(), ['press.label = "PUMP \\x07"', 'press.code = "AB\\""',
                                            "press.speed = 0"])  # fmt: skip
        self.succeeds("write", *where, "press.label=1,2 = x", "press.code=\\xE9A")
        word = controller.memory()
        self.assertEqual([word(1, "R_W", a) for a in range(500, 504)],
                         [0x312C, 0x3220, 0x3D20, 0x7800])  # fmt: skip
        self.assertEqual([word(1, "R_W", a) for a in (504, 505)], [0x41E9, 0])

    def test_json_csv_and_recipes_have_them_as_texts(self):
        controller = self.controller("--still", "--set", "R_W:500=0x3132,0,0,0",
                                     "--set", "R_W:504=0x2C22,0x200A")  # fmt: skip
        where = ["--port", controller.port, "--tags", self.tags]
        file = self.path("values.csv")
        out = self.succeeds("watch", *where, "--json", "--csv", file, "--cycles", "1")
        values = {t["name"]: t["value"] for t in told(out)}
        shown = {"press.label": "12", "press.code": '\\",\\x0A ', "press.speed": 0}
        self.assertEqual(values, shown)
        with open(file, encoding="utf-8", newline="") as rows:
            values = {row["name"]: row["value"] for row in csv.DictReader(rows)}
        self.assertEqual(values, {name: str(value) for name, value in shown.items()})
        recipe = self.path("recipe.json")
        self.succeeds("recipe", "upload", recipe, *where)
        self.succeeds("write", *where, "press.label=other", "press.code=")
        self.succeeds("recipe", "download", recipe, *where)
        self.succeeds("recipe", "compare", recipe, *where)
        word = controller.memory()
        self.assertEqual([word(1, "R_W", a) for a in (500, 501, 504, 505)],
                         [0x3132, 0, 0x2C22, 0x200A])  # fmt: skip

    def test_json_of_each_command_tells_a_text_to_its_end(self):
        controller = self.controller("--still", "--set", "R_W:500=0x5055,0x4D50,0x2037,0",
                                     "--set", "R_W:510=7")  # fmt: skip
        where = ["--port", controller.port, "--tags", self.tags, "--json"]
        read = told(self.succeeds("read", *where, "press.label", "press.speed"))
        self.assertEqual([each["values"] for each in read], [["PUMP 7"], [7]])
        recipe = self.write_file("recipe.json", '{"press.label": "PUMP 8", "press.code": "AB"}')
        compared = run("recipe", "compare", recipe, *where)
        self.assertEqual(compared.returncode, 3)
        self.assertIn((["PUMP 8"], ["PUMP 7"]),
                      [(each.get("recipe"), each.get("controller")) for each in told(compared.stdout)])  # fmt: skip
        (written,) = told(self.succeeds("write", *where, "press.label=PUMP 9"))
        self.assertEqual([written[key] for key in ("before", "values", "after")],
                         [["PUMP 7"], ["PUMP 9"], ["PUMP 9"]])  # fmt: skip
        self.assertFalse({"valuesBits", "beforeBits", "afterBits"} & set(written))

    def test_no_request_ends_within_one(self):
        controller = self.controller("--still")
        log = self.path("log")
        self.succeeds("watch", "--port", controller.port, "R_W:0..9", "R_W:10..22@text", "R_W:23..40",
                      "--max-registers", "16", "--cycles", "1", "--log", log)  # fmt: skip
        with open(log, encoding="utf-8") as file:
            firsts = re.findall(r"read [0-9]+ registers? from [0-9]+ [(]R_W:([0-9]+)", file.read())
        self.assertIn("10", firsts)
        self.assertFalse({str(word) for word in range(11, 23)} & set(firsts))

    def test_nothing_is_sent_of_a_text_that_is_no_such(self):
        log = self.path("log")
        controller = self.controller("--still", "--log", log)
        for text in ("press.label=too long!", "press.label=\u00e9", "press.*=x", "press.code=\\x4"):
            done = run("write", "--port", controller.port, "--tags", self.tags, text)
            self.assertEqual(done.returncode, 2, text)
        controller.interrupt()
        with open(log, encoding="utf-8") as said:
            self.assertEqual([line for line in said if " -- " not in line], [])
