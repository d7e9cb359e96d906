#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""Moving items from the file keychain to a keyring service that appears later, killed at each step.

usage: moving_keychain_test.py BUILD_FOLDER

Runs itself under with_desktop with a real gnome-keyring. A file keychain with three items is put
in place, and the first look-up of a start, which moves them, is killed at its first message to the
keyring, its second, and so on, and at each system call that changes a file. After each round every
item can be read from the file or from the keyring with its secret, and one undisturbed start later
every item is in the keyring, once, and the file is gone. Without ZARN_LONG the rounds
after the first four are thinned out.
"""

import os
import shutil
import signal
import subprocess
import sys

SUPPORT = os.path.join(os.path.dirname(os.path.realpath(__file__)), "../../../support")
sys.dont_write_bytecode = True
sys.path.insert(0, SUPPORT)
import traced  # noqa: E402

ITEMS = {"one": "secret1", "two": "secret2", "three": "secret3"}
FILE_CALLS = ("unlink", "rename", "fsync", "flock", "write")


class Failure(Exception):
    pass


def probe(build, choice, *operations, prefix=()):
    return traced.run([*prefix, os.path.join(build, "keychain_probe"), choice, *operations])


def folder():
    return os.path.join(os.environ["XDG_DATA_HOME"], "zarn-actions")


def key_folder():
    return os.path.join(os.environ["XDG_STATE_HOME"], "zarn-actions")


def copies(account):
    """The secrets that the keyring holds for an account."""
    out = subprocess.run(
        ["secret-tool", "search", "--all", "service", "service", "account", account],
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False).stdout
    return [line[len("secret = "):] for line in out.splitlines() if line.startswith("secret = ")]


def empty_keyring():
    subprocess.run(["secret-tool", "clear", "service", "service"], check=False)
    if any(copies(account) for account in ITEMS):
        raise Failure("the keyring was not emptied")


def in_file(build, account):
    run = probe(build, "file", f"copy,service,{account}")
    return run.stdout.split()[-1:] == [f"{account}={ITEMS[account]}"]


class Rounds:
    def __init__(self, build):
        self.build = build
        self.model = os.path.join(os.environ["TMPDIR"], "model")
        operations = [f"add,service,{account},{secret}" for account, secret in ITEMS.items()]
        run = probe(build, "file", *operations)
        if run.stdout.count("add 0 ") != len(ITEMS):
            raise Failure(f"no file keychain: {run.stdout}{run.stderr}")
        for source, name in ((folder(), "data"), (key_folder(), "state")):
            shutil.copytree(source, os.path.join(self.model, name))

    def reset(self):
        empty_keyring()
        for target, name in ((folder(), "data"), (key_folder(), "state")):
            shutil.rmtree(target, ignore_errors=True)
            shutil.copytree(os.path.join(self.model, name), target)

    def undisturbed(self, harmless=()):
        run = probe(self.build, "automatic", "copy,service,one")
        if run.stdout.split()[-1:] != ["one=secret1"]:
            raise Failure(f"not found: {run.stdout}{run.stderr}")
        for account, secret in ITEMS.items():
            if copies(account) != [secret]:
                raise Failure(f"{account} is in the keyring as {copies(account)}")
        left = [name for path in (folder(), key_folder()) for name in os.listdir(path)
                if name != "keychain.lock" and name not in harmless]
        if left:
            raise Failure(f"left behind: {left}")
        return run.stderr

    def kill_at(self, call, number):
        """Whether the start was killed before it ended by itself."""
        self.reset()
        run = probe(self.build, "automatic", "copy,service,one", prefix=traced.strace(
            "/dev/null", "-f", "-e", f"trace={call}", "-e", f"inject={call}:signal=SIGKILL:when={number}"))
        if run.returncode not in (0, -signal.SIGKILL):
            raise Failure(f"ended with {run.returncode}: {run.stderr}")
        for account, secret in ITEMS.items():
            if not in_file(self.build, account) and secret not in copies(account):
                raise Failure(f"{account} is lost")
        # The key goes last; one that was left alone opens nothing.
        self.undisturbed(harmless=["keychain.key"])
        return run.returncode != 0


def inside(build):
    rounds = Rounds(build)
    rounds.reset()
    reported = rounds.undisturbed()
    if "items were moved from the keychain file to the keyring" not in reported:
        raise Failure(f"the move is not reported: {reported}")
    killed = 0
    for call in ("sendmsg", *FILE_CALLS):
        number = 1
        while rounds.kill_at(call, number):
            killed += 1
            number += 1 if os.environ.get("ZARN_LONG") or number < 4 else 5
    print(f"killed at {killed} steps of a move; every item was readable each time")
    return 0 if killed >= 20 else 1


def conflicts(build):
    """The secret written last wins; the older one stays in the file."""
    rounds = Rounds(build)
    rounds.reset()
    run = probe(build, "automatic", "copy,service,one")
    probe(build, "automatic", "update,service,one,newer")
    for target, name in ((folder(), "data"), (key_folder(), "state")):
        shutil.rmtree(target)
        shutil.copytree(os.path.join(rounds.model, name), target)
    run = probe(build, "automatic", "copy,service,one", "copy,service,one")
    if run.stdout.count("one=newer") != 2 or run.stderr.count("older ones stay there") != 1:
        raise Failure(f"conflict: {run.stdout}{run.stderr}")
    if not in_file(build, "one") or in_file(build, "two"):
        raise Failure("the older secret was thrown away, or the others stayed")
    print("of two different secrets the newer one is used and the older one kept")
    return 0


def main():
    build = os.path.realpath(sys.argv[1])
    if sys.argv[2:] in (["--inside"], ["--conflicts"]):
        try:
            return inside(build) if sys.argv[2] == "--inside" else conflicts(build)
        except (Failure, subprocess.TimeoutExpired) as failure:
            print("FAILED", failure)
            return 1
    return max(subprocess.run(
        [os.path.join(SUPPORT, "with_desktop"), "--no-x", "--", sys.executable,
         os.path.realpath(__file__), build, part], check=False).returncode
        for part in ("--inside", "--conflicts"))


if __name__ == "__main__":
    sys.exit(main())
