"""Names what runs as one entry of ctest, one a line: each class of these modules, module.Class, or each
test, module.Class.test, of a class whose tests wait for long."""

import sys
import unittest


def walk(tests):
    for test in tests:
        if isinstance(test, unittest.TestSuite):
            yield from walk(test)
        elif test.side_by_side:
            yield test.id()
        else:
            yield test.id().rsplit(".", 1)[0]


found = dict.fromkeys(walk(unittest.defaultTestLoader.loadTestsFromNames(sys.argv[1:])))
print("\n".join(found))
