#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""Kills and failures at every system call of a file-keychain write.

usage: keychain_faults.py BUILD_FOLDER

Three writes are tried: the first one of all (which makes the key), an added item and a changed
secret. Each is repeated with SIGKILL, and with each error, at its first system call, its second,
and so on. After each round: every earlier item is there with its secret, the new one is there if
the write said so, what a failed write leaves is the old or the new contents, and after one more
write there is no temporary file. Without ZARN_LONG the system calls of the dynamic loader are left
out of the kills.
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

ERRORS = ("ENOSPC", "EIO", "EROFS", "EACCES", "EINTR")
# Name, items before, operation, account, secret.
WRITES = (
    ("first", {}, "add", "new", "fresh"),
    ("add", {"one": "1", "two": "2"}, "add", "new", "fresh"),
    ("update", {"one": "1", "new": "2"}, "update", "new", "fresh"),
)
BUILD = ""


class Failure(Exception):
    pass


def writer(folder, *words, prefix=(), environment=None, limit=None):
    def limited():
        if limit is not None:
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

    return subprocess.run(
        [*prefix, os.path.join(BUILD, "keychain_writer"), folder, *words], text=True,
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False, preexec_fn=limited,
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
        return self.run(prefix=["strace", "-qq", "-o", self.folder + "/trace", *options])

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
    """The system calls of the write in their order, as (name, how manieth of that name), and the
    index of the first that is not the loader's."""
    with Round(write) as world:
        world.strace("-e", "trace=all")
        lines = world.trace().splitlines()
        seen = {}
        calls = []
        for line in lines:
            name = line.split("(")[0]
            seen[name] = seen.get(name, 0) + 1
            calls.append((name, seen[name]))
        own = next(i for i, line in enumerate(lines) if i and world.folder + "/data" in line)
        return calls, own


def kill_at(write, call):
    with Round(write) as world:
        run = world.strace("-e", f"inject={call[0]}:signal=SIGKILL:when={call[1]}")
        killed = status_of(run) is None
        world.check(None if killed else status_of(run))
        return killed


def fail_at(write, error, call):
    with Round(write) as world:
        run = world.strace("-e", f"inject={call[0]}:error={error}:when={call[1]}")
        if "INJECTED" not in world.trace():
            raise Failure("nothing was injected")
        # The cryptographic library rather ends the process than going on without random numbers.
        if run.returncode != 0 and call[0] != "getrandom":
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
        run = world.run(environment={"LD_PRELOAD": os.path.join(BUILD, "short_write.so")})
        if status_of(run) != 0:
            raise Failure(f"short writes are not continued: {run.stdout}{run.stderr}")
        world.check(0)
        return True


def jobs():
    for write in WRITES:
        calls, own = calls_of(write)
        for call in calls[1 if os.environ.get("ZARN_LONG") else own:]:
            yield f"kill {write[0]} at {call}", kill_at, (write, call)
        for call in calls[own:-3]:  # the last three print the status and end the program
            for error in ERRORS:
                yield f"{error} in {write[0]} at {call}", fail_at, (write, error, call)
        for limit in range(0, 280, 1 if os.environ.get("ZARN_LONG") else 9):
            yield f"full after {limit} in {write[0]}", short_at, (write, limit)
        yield f"short writes in {write[0]}", one_byte_at_a_time, (write, None)


def main():
    global BUILD
    BUILD = os.path.realpath(sys.argv[1])
    counts = {}
    failed = []

    def run(job):
        name, function, arguments = job
        try:
            effective = function(*arguments)
            kind = name.split()[0]
            counts[kind] = counts.get(kind, 0) + bool(effective)
        except Failure as failure:
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
