"""A shell on a terminal that is drawn: what a person in front of it would see."""

import os
import re
import shlex
import subprocess
import time

from harness import PATIENCE

PROMPT = "ready> "


class DrawnTerminal:
    def __init__(self, folder, columns=80, rows=24):
        self._folder = folder
        self._ends = 0
        environment = dict(os.environ, LC_ALL="C.UTF-8")
        environment.pop("TMUX", None)
        self._environment = environment
        settings = os.path.join(folder, "shell-settings")
        with open(settings, "w", encoding="ascii") as file:
            file.write(f"PS1='{PROMPT}'\n")
        self._tmux("new-session", "-d", "-x", str(columns), "-y", str(rows),
                   f"exec bash --noprofile --rcfile {settings}")  # fmt: skip
        self.wait_for(PROMPT.strip())

    def _tmux(self, *arguments):
        socket = os.path.join(self._folder, "tmux")
        return subprocess.run(
            ["tmux", "-u", "-S", socket, "-f", "/dev/null", *arguments],
            env=self._environment, capture_output=True, text=True, timeout=PATIENCE, check=True,
        ).stdout  # fmt: skip

    def start(self, *command):
        """A command in the shell, which says afterwards how it ended."""
        self._ends += 1
        words = " ".join(shlex.quote(word) for word in command)
        self.type(f"clear; stty -g >before; {words}; echo end {self._ends} $?; stty -g >after")
        self.press("Enter")

    def wait_for_end(self):
        """The exit code of the command that was started last."""
        found = self.wait_for(rf"^end {self._ends} (\d+)$")
        return int(found.group(1))

    def press(self, *keys):
        self._tmux("send-keys", *keys)

    def type(self, text):
        self._tmux("send-keys", "-l", text)

    def confirm(self, entry, outcome):
        """Enter as a person presses it who has seen the entry, until what it does is seen."""
        self.wait_for(f": {entry}_$")
        again = "Enter again sends it"
        found = again
        while found == again:
            time.sleep(0.15)
            self.press("Enter")
            found = self.wait_for(f"{outcome}|{again}").group()

    def paste(self, text):
        """In marks, if the program has asked for them."""
        self._tmux("set-buffer", text)
        self._tmux("paste-buffer", "-p", "-r")

    def resize(self, columns, rows):
        self._tmux("resize-window", "-x", str(columns), "-y", str(rows))

    def lines(self):
        return self._tmux("capture-pane", "-p").split("\n")[:-1]

    def wait_for(self, pattern):
        """Until a line of the screen matches."""
        return self._wait(lambda lines: re.search(pattern, "\n".join(lines), re.M), pattern)

    def wait_until(self, is_so):
        """Until the lines of the screen are so."""
        return self._wait(is_so, "what is awaited")

    def _wait(self, sought, name):
        until = time.monotonic() + PATIENCE
        while time.monotonic() < until:
            lines = self.lines()
            found = sought(lines)
            if found:
                return found
            time.sleep(0.02)
        raise AssertionError(f"{name!r} did not come, but:\n" + "\n".join(lines))

    def flag(self, name):
        """Of the terminal, by tmux's name."""
        return self._tmux("display-message", "-p", "#{" + name + "}").strip()

    def child(self):
        """The process that the shell has started."""
        shell = self.flag("pane_pid")
        with open(f"/proc/{shell}/task/{shell}/children", encoding="ascii") as file:
            return int(file.read().split()[0])

    def modes(self):
        """The terminal's, before and after the command that was started last."""
        return [self._modes("before"), self._modes("after")]

    def _modes(self, name):
        # Written by the shell behind its prompt: there once it prompts again.
        self.wait_for(rf"{PROMPT.strip()}\s*\Z")
        with open(os.path.join(self._folder, name), encoding="ascii") as file:
            return file.read()

    def close(self):
        self._tmux("kill-server")
