# SPDX-License-Identifier: MIT
"""How soon the window answers assistive technology, whatever goes on behind it.

As a program of its own (answers.py PROCESS_ID) it asks the process's window again and again. For each line on
standard input it writes how often it asked since the last one and the slowest answer in seconds.
"""

import os
import select
import subprocess
import sys
import time

from screen import SLOWNESS, Screen

from gi.repository import Atspi, GLib  # noqa: E402

# What a person may wait for an answer of the window. Release builds are tested with slowness 2; reading the largest
# JSON is several times slower under sanitizers, whose runs look for other faults than this.
LIMIT = 0.25 if SLOWNESS <= 2 else 2.0
# Between two questions, so that the asking itself leaves the window time for its work.
PAUSE = 0.002


class Answers:
    """Asks from the side all the while, also while the test itself waits for an answer."""

    def __init__(self, test, program):
        self._child = subprocess.Popen([sys.executable, os.path.realpath(__file__), str(program.process.pid)],
                                       stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        test.addCleanup(self._child.wait)
        test.addCleanup(self._child.stdout.close)
        test.addCleanup(self._child.stdin.close)
        assert self._child.stdout.readline() == "ready\n"
        self.count, self.slowest = 0, 0.0

    def take(self):
        """The slowest answer since the last time, in seconds; `count` and `slowest` are those of all times."""
        self._child.stdin.write("\n")
        self._child.stdin.flush()
        count, slowest = self._child.stdout.readline().split()
        assert int(count) > 0, "nothing was asked"
        self.count += int(count)
        self.slowest = max(self.slowest, float(slowest))
        return float(slowest)

    def __str__(self):
        return f"slowest of {self.count} answers of the window {1000 * self.slowest:.1f} ms, {1000 * LIMIT:.0f} allowed"


def waited_for_the_machine(pid):
    """Seconds that either main thread stood ready while the machine ran others."""
    waited = 0
    for process in ("self", str(pid)):
        with open(f"/proc/{process}/schedstat", encoding="ascii") as file:
            waited += int(file.read().split()[1])
    return waited / 1e9


def probe(pid, window):
    """One question that the program's main thread answers, and how long it takes.

    A busy machine delays both ends and the bus between them. What the ends waited for the machine, and what
    another process takes for an answer over the same bus, is not the window's.
    """
    waited = waited_for_the_machine(pid)
    start = time.monotonic()
    Atspi.get_desktop(0).get_child_count()
    between = time.monotonic()
    try:
        window.get_name()
    except GLib.Error:
        pass  # It took too long, or the window is gone: the time shows which.
    end = time.monotonic()
    return (end - between) - (between - start) - (waited_for_the_machine(pid) - waited)


def main():
    pid = int(sys.argv[1])
    window = Screen(pid).windows()[0]
    print("ready", flush=True)
    count, slowest = 0, 0.0
    while True:
        try:
            slowest = max(slowest, probe(pid, window))
            count += 1
        except OSError:
            pass  # The program has ended.
        if select.select([sys.stdin], [], [], PAUSE)[0]:
            if not sys.stdin.readline():
                return
            print(count, slowest, flush=True)
            count, slowest = 0, 0.0


if __name__ == "__main__":
    main()
