"""tests/rooms/check goes red for what it is there to find, on trees made for it."""

import json
import pathlib
import subprocess
import tempfile
import unittest

CHECK = pathlib.Path(__file__).with_name("check")
TABLE = """
| room | what is in it | may include |
|---|---|---|
| `include/` | the contract | – |
| `line/` | the wire | – |
| `host/driver/` | the library | `line/` `include/` |
| `host/text/` | texts | `host/driver/` `line/` |
| `tests/` | tests | everything |
"""
TREE = {
    "ARCHITECTURE.md": TABLE,
    "include/intf.h": "#include <QString>\n",
    "line/wire.h": "",
    "line/wire.cpp": '#include "line/wire.h"\n#include <vector>\n',
    "host/driver/library.h": '#include "intf.h"\n',
    "host/driver/library.cpp": '#include "driver/library.h"\n#include "line/wire.h"\n',
    "host/text/values.h": '#include "driver/library.h"\n',
    "host/text/values.cpp": '#include "text/values.h"\n  #  include "line/wire.h" // why\n',
    "tests/line/wire_test.cpp": '#include "line/wire.h"\n#include "support.h"\n',
}


class Check(unittest.TestCase):
    def check(self, changes, *arguments):
        """Exit code and messages for the good tree with these files changed, added or (None) gone."""
        with tempfile.TemporaryDirectory() as folder:
            for name, text in {**TREE, **changes}.items():
                if text is not None:
                    path = pathlib.Path(folder, name)
                    path.parent.mkdir(parents=True, exist_ok=True)
                    path.write_text(text.replace("@ROOT@", folder), encoding="utf-8")
            done = subprocess.run([CHECK, "--root", folder,
                                   *(word.replace("@ROOT@", folder) for word in arguments)],
                                  capture_output=True, text=True, check=False)
            return done.returncode, done.stderr + done.stdout

    def refused(self, changes, *messages, arguments=()):
        code, said = self.check(changes, *arguments)
        self.assertEqual(code, 1, said)
        for message in messages:
            self.assertIn(message, said)

    def test_a_tree_that_keeps_to_its_table_is_accepted(self):
        self.assertEqual(self.check({}), (0, ""))

    def test_an_arrow_against_the_table_is_found_with_its_line(self):
        self.refused({"line/wire.cpp": '#include "line/wire.h"\n\n#include "driver/library.h"\n'},
                     "line/wire.cpp:3: line/ may not include host/driver/ (host/driver/library.h)",
                     "rooms in a circle: host/driver/ -> line/ -> host/driver/")

    def test_an_arrow_that_only_the_table_forbids_is_found(self):
        self.refused({"host/text/values.h": '#include "intf.h"\n'},
                     "host/text/values.h:1: host/text/ may not include include/")

    def test_an_arrow_by_a_path_from_the_own_folder_is_found(self):
        self.refused({"line/wire.h": '#include "../include/intf.h"\n'},
                     "line/wire.h:1: line/ may not include include/")

    def test_two_types_of_one_name_are_found(self):
        space = "namespace dov417::plant {{\n{}\n}} // namespace dov417::plant\n"
        named = space.format("struct Place {\n};")
        self.refused({"line/wire.h": named, "host/text/values.h": named},
                     "dov417::plant::Place is defined in host/text/values.h and in line/wire.h")
        for other in ("struct Place;", "class Place::Part {\n};", "template <>\nstruct Place<int> {\n};",
                      "namespace {\nstruct Place {\n};\n} // namespace"):
            self.assertEqual(self.check({"line/wire.h": named,
                                         "host/text/values.h": space.format(other)}), (0, ""))

    def test_nobody_includes_tests(self):
        self.refused({"line/wire.h": '#include "tests/help.h"\n', "tests/help.h": ""},
                     "line/wire.h:1: line/ may not include tests/")

    def test_a_circle_among_headers_of_one_room_is_found(self):
        self.refused({"line/a.h": '#include "line/b.h"\n', "line/b.h": '#include "line/c.h"\n',
                      "line/c.h": '#include "line/a.h"\n'},
                     "files in a circle: line/a -> line/b -> line/c -> line/a")

    def test_a_circle_by_way_of_sources_is_found(self):
        self.refused({"line/a.h": "", "line/b.h": "", "line/a.cpp": '#include "line/b.h"\n',
                      "line/b.cpp": '#include "line/a.h"\n'},
                     "files in a circle: line/a -> line/b -> line/a")

    def test_a_circle_in_the_table_itself_is_found(self):
        self.refused({"ARCHITECTURE.md": TABLE.replace("| the wire | – |",
                                                       "| the wire | `host/text/` |")},
                     "the table has a circle: ")

    def test_a_row_that_names_an_unknown_room_is_found(self):
        self.refused({"ARCHITECTURE.md": TABLE.replace("| the wire | – |", "| the wire | `wyre/` |")},
                     "line/ may include wyre/, which is no product room")

    def test_a_source_in_no_room_is_found(self):
        self.refused({"host/stray.cpp": "", "cellar/deep/box.h": ""},
                     "host/stray.cpp: in no room", "cellar/deep/box.h: in no room")

    def test_a_page_without_a_table_is_found(self):
        self.refused({"ARCHITECTURE.md": "rooms: many\n"}, "holds no table of rooms")

    def test_an_include_that_names_no_file_is_found(self):
        self.refused({"line/wire.h": '#include "line/gone.h"\n'},
                     'line/wire.h:1: no file is "line/gone.h"')

    def test_an_include_that_names_no_room_is_found(self):
        self.refused({"host/text/values.cpp": '#include "values.h"\n'},
                     'host/text/values.cpp:1: "values.h" names no room: it is host/text/values.h')

    def test_code_outside_the_namespace_is_found(self):
        self.refused({"line/wire.h": "#define WIRE \\\n    1\n// none\nint length();\n"},
                     "line/wire.h: not in namespace dov417")
        for name, text in (("line/wire.h", "namespace dov417::wire {\nint length();\n}\n"),
                           ("line/wire.h", "#define WIRE \\\n    1\n// none\n"),
                           ("host/text/main.cpp", "int main() {}\n"),
                           ("include/intf.h", "int intf_getData();\n")):
            self.assertEqual(self.check({name: text}), (0, ""))

    def test_a_function_of_the_driver_that_nothing_calls_is_found(self):
        tree = {"ARCHITECTURE.md": TABLE + "| `service/` | driver | `include/` |\n",
                "service/link/reply.h": "// length()\nint length(int a,\n           int b);\n",
                "service/link/reply.cpp": "int length(int a, int b)\n{\n    return a + b;\n}\n"}
        self.refused(tree, "service/link/reply.h: nothing calls length: it goes, or to "
                           "service/uncalled_functions.h")
        called = {**tree, "service/a.cpp": "int two = length(1, 1);\n"}
        self.assertEqual(self.check(called), (0, ""))
        kept = {**tree, "service/link/reply.h": "", "service/link/reply.cpp": "",
                "service/uncalled_functions.h": tree["service/link/reply.h"],
                "service/uncalled_functions.cpp": tree["service/link/reply.cpp"]}
        self.assertEqual(self.check(kept), (0, ""))
        self.refused({**kept, "service/a.cpp": "int two = length(1, 1);\n"},
                     "service/uncalled_functions.h: length is called, or named, elsewhere")

    def test_an_include_that_hides_its_file_is_found(self):
        self.refused({"line/wire.h": "#include WIRE\n"}, "line/wire.h:1: an include that no reader")
        self.refused({"line/wire.h": "#include <driver/library.h>\n"},
                     "<driver/library.h> is one of ours", "line/ may not include host/driver/")

    def test_what_is_commented_out_is_no_include(self):
        self.assertEqual(self.check({"line/wire.h": '// #include "no.h"\n/*\n#include "no.h"\n*/\n'
                                                    'namespace dov417 {\n'
                                                    'const char* url = "http://x"; // "/*"\n}\n'}),
                         (0, ""))

    def test_the_driver_looks_for_its_files_from_its_own_roots(self):
        table = TABLE + "| `service/` | driver | `include/` |\n"
        self.assertEqual(self.check({"ARCHITECTURE.md": table, "service/link/reply.h": "",
                                     "service/a.cpp": '#include "link/reply.h"\n#include "intf.h"\n'}),
                         (0, ""))
        self.refused({"ARCHITECTURE.md": table, "service/link/reply.h": "",
                      "host/text/values.h": '#include "link/reply.h"\n'},
                     'host/text/values.h:1: no file is "link/reply.h"')

    def test_the_table_counts_files_and_lines(self):
        code, said = self.check({}, "--table")
        self.assertEqual(code, 0)
        self.assertRegex(said, r"(?m)^line/ +2 +2  $")
        self.assertRegex(said, r"(?m)^host/driver/ +2 +3  include/ 1, line/ 1$")

    def test_a_source_that_a_build_forgets_is_found(self):
        entries = [{"directory": "@ROOT@/build", "file": f"@ROOT@/{name}"}
                   for name in ("line/wire.cpp", "build/unity_0_cxx.cxx")]
        build = {"build/compile_commands.json": json.dumps(entries), "build/unity_0_cxx.cxx":
                 '#include "@ROOT@/host/driver/library.cpp"\n#include "@ROOT@/host/text/values.cpp"\n'}
        self.refused(build, "tests/line/wire_test.cpp: ", arguments=("--built", "@ROOT@/build"))
        entries.append({"directory": "@ROOT@", "file": "tests/line/wire_test.cpp"})
        build["build/compile_commands.json"] = json.dumps(entries)
        self.assertEqual(self.check(build, "--built", "@ROOT@/build"), (0, ""))


if __name__ == "__main__":
    unittest.main()
