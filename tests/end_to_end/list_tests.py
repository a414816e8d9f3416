"""Names every test of a module, one a line: module.Class.test."""

import sys
import unittest


def walk(tests):
    for test in tests:
        if isinstance(test, unittest.TestSuite):
            yield from walk(test)
        else:
            yield test.id()


print("\n".join(walk(unittest.defaultTestLoader.loadTestsFromName(sys.argv[1]))))
