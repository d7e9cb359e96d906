#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""Kills and failures at every system call of a settings write.

usage: settings_faults.py BUILD_FOLDER [--sanitized]

Three writes are tried: the first one of all (which makes the folder), a changed value and a removed
one. Each is repeated with SIGKILL, and with each error, at its first system call, its second, and so
on. After each round the file parses and holds the old or the new contents (the new ones if the write
said so), and after one more write there is no temporary file. Without ZARN_LONG the system calls of
the dynamic loader are left out. With --sanitized only the system calls that name a settings file are
made to fail: a sanitizer's own ones cannot (its runtime asks for memory, or for its process id, for
ever).
"""

import os
import plistlib
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.realpath(__file__)), "../support"))
import traced  # noqa: E402

ERRORS = ("ENOSPC", "EIO", "EROFS", "EACCES", "EINTR")
DOMAIN = "group.R3V8N1P6WB.zarnie.SharedZPMA"
OLD = {"kept": {"server": "https://a.example", "more": [1, 2.5, b"data"]}, "changed": "old"}
# Name, contents before, command line, contents after.
WRITES = (
    ("first", None, ["write", DOMAIN, "changed", "-string", "new"], {"changed": "new"}),
    ("change", OLD, ["write", DOMAIN, "changed", "-string", "new"], {**OLD, "changed": "new"}),
    ("remove", OLD, ["delete", DOMAIN, "changed"], {"kept": OLD["kept"]}),
)
BUILD = ""
SANITIZED = False


class Failure(Exception):
    pass


class Round:
    """Settings as they were before a write, in a folder of their own."""

    def __init__(self, write):
        self.name, self.before, self.words, self.after = write
        self.top = tempfile.mkdtemp(prefix="zarn-faults-")
        self.folder = os.path.join(self.top, "zarn-actions")
        self.path = os.path.join(self.folder, DOMAIN + ".plist")

    def __enter__(self):
        if self.before is not None:
            os.mkdir(self.folder, 0o700)
            with open(os.open(self.path, os.O_WRONLY | os.O_CREAT, 0o600), "wb") as file:
                plistlib.dump(self.before, file)
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.top)

    def run(self, words=None, prefix=(), environment=None, limit=None):
        def limited():
            if limit is not None:
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

        return traced.run(
            [*prefix, os.path.join(BUILD, "zarn-defaults"), *(words or self.words)], preexec_fn=limited,
            env={"PATH": "/usr/bin:/bin", "HOME": self.top, "XDG_CONFIG_HOME": self.top, **(environment or {})})

    def strace(self, *options):
        return self.run(prefix=traced.strace(self.top + "/trace", *options))

    def trace(self):
        with open(self.top + "/trace", encoding="utf-8", errors="replace") as file:
            return file.read()

    def contents(self):
        try:
            with open(self.path, "rb") as file:
                return plistlib.load(file)
        except FileNotFoundError:
            return None

    def check(self, done):
        found = self.contents()
        if found not in ([self.after] if done else [self.before, self.after]):
            raise Failure(f"{found} after {'success' if done else 'failure'}")
        again = self.run(["write", DOMAIN, "last", "-int", "1"])
        if again.returncode != 0 or again.stderr:
            raise Failure(f"the next write fails: {again.stderr}")
        if self.contents() != {**(found or {}), "last": 1}:
            raise Failure("the next write loses something")
        left = set(os.listdir(self.folder)) - {DOMAIN + ".plist", DOMAIN + ".plist.lock"}
        if left:
            raise Failure(f"left behind: {left}")


def calls_of(write):
    """The system calls of the write in their order, without the loader's and with them."""
    with Round(write) as world:
        world.strace("-e", "trace=all")
        calls = traced.calls(world.trace(), world.folder)
        own = next(i for i, call in enumerate(calls) if i and call.on_files)
        return calls[own:], calls[1:]


def kill_at(write, call):
    with Round(write) as world:
        run = world.strace(*call.inject("signal=SIGKILL"))
        world.check(run.returncode == 0)
        return run.returncode != 0


def fail_at(write, error, call):
    with Round(write) as world:
        run = world.strace(*call.inject(f"error={error}"))
        struck = [line for line in world.trace().splitlines() if "INJECTED" in line]
        if not struck or call.on_files and world.folder not in struck[0]:
            raise Failure(f"something else was struck: {struck}")
        # A failed read is reported by the settings, and by the tool that cannot go on without it.
        reported = len(run.stderr.splitlines())
        if run.returncode not in (0, 3) or (run.returncode == 3 and reported not in (1, 2)):
            raise Failure(f"ended with {run.returncode}: {run.stderr}")
        world.check(run.returncode == 0)
        return True


def short_at(write, limit):
    """The disk is full after `limit` bytes of a file: a short write, then an error."""
    with Round(write) as world:
        world.check(world.run(limit=limit).returncode == 0)
        return True


def one_byte_at_a_time(write, _):
    with Round(write) as world:
        run = world.run(environment=traced.preloaded(os.path.join(BUILD, "short_write.so")))
        if run.returncode != 0:
            raise Failure(f"short writes are not continued: {run.stderr}")
        world.check(True)
        return True


def jobs():
    long = os.environ.get("ZARN_LONG")
    for write in WRITES:
        own, all_calls = calls_of(write)
        for call in all_calls if long else own:
            yield f"kill {write[0]} at {call}", kill_at, (write, call)
        # The last call ends the program; without futex the C library ends the process at once.
        others = (call for call in own[:-1] if call.name != "futex")
        for call in (call for call in own if call.on_files) if SANITIZED else others:
            for error in ERRORS:
                yield f"{error} in {write[0]} at {call}", fail_at, (write, error, call)
        for limit in range(0, 600, 1 if long else 25):
            yield f"full after {limit} in {write[0]}", short_at, (write, limit)
        yield f"short writes in {write[0]}", one_byte_at_a_time, (write, None)


def main():
    global BUILD, SANITIZED
    BUILD = os.path.realpath(sys.argv[1])
    SANITIZED = sys.argv[2:] == ["--sanitized"]
    counts = {}
    failed = []

    def run(job):
        name, function, arguments = job
        try:
            effective = function(*arguments)
            kind = name.split()[0]
            counts[kind] = counts.get(kind, 0) + bool(effective)
        except (Failure, subprocess.TimeoutExpired) as failure:
            failed.append(f"{name}: {failure}")

    with ThreadPoolExecutor(4) as pool:
        list(pool.map(run, jobs()))
    for text in failed:
        print("FAILED", text)
    print(", ".join(f"{kind}: {count}" for kind, count in sorted(counts.items())), f"- {len(failed)} failed")
    # Every kind must have struck, or nothing was tested.
    complete = {"kill", "full", "short", *ERRORS} == {k for k, count in counts.items() if count}
    return 0 if complete and not failed else 1


if __name__ == "__main__":
    sys.exit(main())
