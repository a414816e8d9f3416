"""Which ports there are."""

import glob
import json
import os
import unittest

from harness import EndToEnd


def ports_of_the_system():
    """Those with a chip behind them, told in another way."""
    found = set()
    for device in glob.glob("/sys/class/tty/*/device"):
        terminal = os.path.dirname(device)
        name = "/dev/" + os.path.basename(terminal)
        kind = os.path.join(terminal, "type")
        if os.path.exists(kind):
            with open(kind, encoding="ascii") as file:
                if file.read().strip() == "0":
                    continue
        if os.path.exists(name):
            found.add(name)
    return found


class Ports(EndToEnd):
    def test_ports_are_those_of_the_system(self):
        told = [json.loads(line) for line in self.succeeds("ports", "--json").splitlines()]
        self.assertEqual({port["port"] for port in told}, ports_of_the_system())
        rows = self.succeeds("ports").splitlines()[1:]
        self.assertEqual([row.split()[0] for row in rows], [port["port"] for port in told])


if __name__ == "__main__":
    unittest.main()
