"""What ./check makes of tests that fail once, and of those that fail again."""

import pathlib
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


class TestsThatFail(unittest.TestCase):
    def check(self, *tests):
        """Each a name and what its first run does; the second run of each passes, unless "false"."""
        with tempfile.TemporaryDirectory() as folder:
            lines = ["cmake_minimum_required(VERSION 3.25)", "project(made NONE)", "enable_testing()"]
            for name, first in tests:
                script = pathlib.Path(folder, name)
                again = "" if first == "false" else f"test -e {name}.ran && exit\ntouch {name}.ran\n"
                script.write_text(again + first)
                lines.append(f"add_test(NAME {name} COMMAND sh {script})")
            pathlib.Path(folder, "CMakeLists.txt").write_text("\n".join(lines))
            built = f"{folder}/built"
            subprocess.run(["cmake", "-S", folder, "-B", built], check=True, capture_output=True)
            return subprocess.run(
                ["bash", "-c", f"cd {ROOT} && . cmake/steps.sh && run_tests {built} && echo on"],
                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)

    def test_one_that_passes_by_itself_is_named_with_what_it_said(self):
        done = self.check(("always", "true"), ("once", "echo said this; false"))
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertIn("said this", done.stdout)
        self.assertIn("Passed by themselves only: once\n", done.stdout)
        self.assertTrue(done.stdout.endswith("on\n"), done.stdout)

    def test_none_is_named_where_all_pass(self):
        done = self.check(("always", "true"), ("also", "true"))
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertNotIn("themselves", done.stdout)
        self.assertIn("100% tests passed", done.stdout)

    def test_one_that_fails_by_itself_too(self):
        done = self.check(("once", "false"))
        self.assertEqual(done.returncode, 1)
        self.assertIn("by themselves too", done.stdout)

    def test_more_than_three(self):
        for tests in (
                [(name, "exit 1") for name in ("a", "b", "c", "d")],
                [("a", "echo 'FAIL: test_one (a_test.A.test_one)'; " * 4 + "exit 1")]):
            with self.subTest(tests):
                done = self.check(*tests)
                self.assertEqual(done.returncode, 1)
                self.assertNotIn("themselves", done.stdout)

    def test_what_must_not_happen_once(self):
        for name, first in (
                ("wrong_liar_test", "false # a wrong value"),
                ("late.bench", "exit 1"),
                ("threads", "exit 1"),
                ("within", "echo 'FAIL: test_a_late_reply (request_test.Request.test_a_late_reply)'; exit 1"),
                ("class", "echo 'ERROR: test_counted (modbus_tcp_test.Late.test_counted)'; exit 1"),
                ("memory", "echo '==7==ERROR: AddressSanitizer: heap-use-after-free'; exit 1"),
                ("shift", "echo 'a.cpp:7:1: runtime error: shift exponent 40'; exit 1"),
                ("crash", "kill -SEGV $$")):
            with self.subTest(name):
                done = self.check((name, first))
                self.assertEqual(done.returncode, 1)
                self.assertNotIn("themselves", done.stdout)


if __name__ == "__main__":
    unittest.main()
