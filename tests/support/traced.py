# SPDX-License-Identifier: MIT
"""Runs programs for the tests that kill them and make their system calls fail."""

import os
import signal
import subprocess

# A run takes well under a second, some seconds with a sanitizer. One that takes this long never ends.
LIMIT = 60


def run(command, **how):
    """Like subprocess.run, but its limit ends everything that the command started: ending strace alone
    would leave the traced program running, and one that spins would do so forever."""
    with subprocess.Popen(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          start_new_session=True, **how) as process:
        try:
            output, errors = process.communicate(timeout=LIMIT)
        except BaseException:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            raise
    return subprocess.CompletedProcess(command, process.returncode, output, errors)


def strace(path, *options):
    """The words that put a command under strace, which writes to `path` and names the file of every
    descriptor. Only one can trace a program, so a leak check, which does it too, is off."""
    return ["strace", "-E", "ASAN_OPTIONS=detect_leaks=0", "-qq", "-y", "-o", path, *options]


def preloaded(library):
    """The environment that loads a library before the sanitizer's, which by itself asks to be the first."""
    return {"LD_PRELOAD": library, "ASAN_OPTIONS": "verify_asan_link_order=0"}


class Call:
    """A system call of a trace: its name, how manieth of that name it is, and whether it names a file
    below `folder`."""

    def __init__(self, name, number, line, folder):
        self.name, self.number = name, number
        self.on_files = folder in line

    def __str__(self):
        return f"{self.name} {self.number}"

    def inject(self, what):
        return ["-e", f"inject={self.name}:{what}:when={self.number}"]


def calls(trace, folder):
    """The system calls of a trace in their order."""
    seen = {}
    found = []
    for line in trace.splitlines():
        name = line.split("(")[0]
        seen[name] = seen.get(name, 0) + 1
        found.append(Call(name, seen[name], line, folder))
    return found
