#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""Kills and failures at every system call of a file-keychain write.

usage: keychain_faults.py BUILD_FOLDER [--sanitized]

Three writes are tried: the first one of all (which makes the key), an added item and a changed
secret. Each is repeated with SIGKILL, and with each error, at its first system call, its second,
and so on. After each round: every earlier item is there with its secret, the new one is there if
the write said so, what a failed write leaves is the old or the new contents, and after one more
write there is no temporary file. Without ZARN_LONG the system calls of the dynamic loader are left
out of the kills. With --sanitized only the system calls that name a file of the keychain are made to
fail: a sanitizer's own ones cannot (its runtime asks for memory, or for its process id, forever).
"""

import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.realpath(__file__)), "../../../support"))
import traced  # noqa: E402

ERRORS = ("ENOSPC", "EIO", "EROFS", "EACCES", "EINTR")
# Name, items before, operation, account, secret.
WRITES = (
    ("first", {}, "add", "new", "fresh"),
    ("add", {"one": "1", "two": "2"}, "add", "new", "fresh"),
    ("update", {"one": "1", "new": "2"}, "update", "new", "fresh"),
)
BUILD = ""
SANITIZED = False


class Failure(Exception):
    pass


def writer(folder, *words, prefix=(), environment=None, limit=None):
    def limited():
        if limit is not None:
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

    return traced.run(
        [*prefix, os.path.join(BUILD, "keychain_writer"), folder, *words], preexec_fn=limited,
        env={**os.environ, **(environment or {})})


def items(folder):
    run = writer(folder, "list")
    lines = run.stdout.splitlines()
    if lines[-1:] != ["status 0"]:
        raise Failure(f"cannot be read: {run.stdout} {run.stderr}")
    return dict(line.split("=") for line in lines[:-1])


class Round:
    """A keychain as it was before a write, in a folder of its own."""

    def __init__(self, write):
        self.name, self.before, *self.words = write
        self.folder = tempfile.mkdtemp(prefix="zarn-faults-")

    def __enter__(self):
        for account, secret in self.before.items():
            assert "status 0" in writer(self.folder, "add", account, secret).stdout
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder)

    def run(self, **how):
        return writer(self.folder, *self.words, **how)

    def strace(self, *options):
        return self.run(prefix=traced.strace(self.folder + "/trace", *options))

    def trace(self):
        with open(self.folder + "/trace", encoding="utf-8", errors="replace") as file:
            return file.read()

    def check(self, status):
        """The contents after a write that answered `status` (None when it was killed)."""
        _, account, secret = self.words
        after = {**self.before, account: secret}
        found = items(self.folder)
        if found not in ([after] if status == 0 else [self.before, after]):
            raise Failure(f"{found} after status {status}")
        if "status 0" not in writer(self.folder, "add", "last", "x").stdout:
            raise Failure("the next write fails")
        if items(self.folder) != {**found, "last": "x"}:
            raise Failure("the next write loses something")
        left = [name for folder in ("data", "state")
                for name in os.listdir(os.path.join(self.folder, folder))
                if name not in ("keychain", "keychain.lock", "keychain.key")]
        if left:
            raise Failure(f"left behind: {left}")


def status_of(run):
    match = re.search(r"^status (-?\d+)$", run.stdout, re.MULTILINE)
    return int(match[1]) if match else None


def calls_of(write):
    """The system calls of the write in their order, without the loader's and with them."""
    with Round(write) as world:
        world.strace("-e", "trace=all")
        calls = traced.calls(world.trace(), world.folder + "/")
        own = next(i for i, call in enumerate(calls) if i and call.on_files)
        return calls[own:], calls[1:]


def kill_at(write, call):
    with Round(write) as world:
        run = world.strace(*call.inject("signal=SIGKILL"))
        killed = status_of(run) is None
        world.check(None if killed else status_of(run))
        return killed


def fail_at(write, error, call):
    with Round(write) as world:
        run = world.strace(*call.inject(f"error={error}"))
        struck = [line for line in world.trace().splitlines() if "INJECTED" in line]
        if not struck or call.on_files and world.folder + "/" not in struck[0]:
            raise Failure(f"something else was struck: {struck}")
        # The cryptographic library rather ends the process than going on without random numbers.
        if run.returncode != 0 and call.name != "getrandom":
            raise Failure(f"ended with {run.returncode}: {run.stderr}")
        # A failure to print the status is the test program's own matter.
        world.check(status_of(run))
        return True


def short_at(write, limit):
    """The disk is full after `limit` bytes of a file: a short write, then an error."""
    with Round(write) as world:
        world.check(status_of(world.run(limit=limit)))
        return True


def one_byte_at_a_time(write, _):
    with Round(write) as world:
        run = world.run(environment=traced.preloaded(os.path.join(BUILD, "short_write.so")))
        if status_of(run) != 0:
            raise Failure(f"short writes are not continued: {run.stdout}{run.stderr}")
        world.check(0)
        return True


def jobs():
    for write in WRITES:
        own, all_calls = calls_of(write)
        for call in all_calls if os.environ.get("ZARN_LONG") else own:
            yield f"kill {write[0]} at {call}", kill_at, (write, call)
        # The last three print the status and end the program.
        for call in (call for call in own if call.on_files) if SANITIZED else own[:-3]:
            for error in ERRORS:
                yield f"{error} in {write[0]} at {call}", fail_at, (write, error, call)
        for limit in range(0, 280, 1 if os.environ.get("ZARN_LONG") else 9):
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
    print(", ".join(f"{kind}: {count}" for kind, count in sorted(counts.items())),
          f"- {len(failed)} failed")
    # Every kind must have struck, or nothing was tested.
    complete = {"kill", "full", "short", *ERRORS} == {k for k, count in counts.items() if count}
    return 0 if complete and not failed else 1


if __name__ == "__main__":
    sys.exit(main())
