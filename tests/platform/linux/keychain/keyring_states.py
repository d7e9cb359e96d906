#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""The states that a keyring service can be in, on real session buses.

usage: keyring_states.py BUILD_FOLDER [-v]

Each scenario runs in a desktop of its own (with_desktop), with gnome-keyring or with the hostile
stand-in, and uses the keychain from a main thread as the window does. Checked for each call: its
status, that the answer came within 10 s (while the unlock prompt is open: as long as it is waited
for), that painting never stood still for a second, the lines on standard error, and that the store
never changed in silence. The last line is the worst of all figures; on an idle machine painting
stands still for about 20 ms.
"""

import os
import signal
import socket
import subprocess
import sys
import time
import unittest
from concurrent.futures import ThreadPoolExecutor

SUPPORT = os.path.join(os.path.dirname(os.path.realpath(__file__)), "../../../support")
ANSWER_LIMIT_MS = 10_000
# Holds on a busy machine; a keychain that blocks the main thread does so for seconds. Programs with a
# sanitizer are several times slower.
STALL_LIMIT_MS = 1000 * float(os.environ.get("ZARN_TEST_SLOWNESS", "1"))
STAND_STILL_MS = 1.2 * STALL_LIMIT_MS

COPY = "copy,ZPMA-host,admin"
COPY_ANY = "copy,ZPMA-host,"
ADD = "add,ZPMA-new,admin,planted"
UPDATE = "update,ZPMA-host,admin,replaced"

ABSENT, LOCKED, DISMISSED, GONE = -25291, -25308, -128, -25300
NO_DEFAULT, READ_ONLY, DUPLICATE = -25307, -25292, -25299

LINES = {
    "file": "no keyring service is used",
    "absent": "there is no keyring service;",
    "unreachable": "the session bus cannot be reached",
    "no-default": "the keyring service has no default collection",
    "locked": "the keyring is locked; waiting",
    "dismissed": "unlock prompt was dismissed",
    "silent": "the keyring service does not answer",
    "gone": "an item disappeared",
    "refused": "the keyring service refused",
    "read-only": "does not let items be changed",
}


class Call:
    """One line of the probe."""

    def __init__(self, line):
        words = line.split(" ", 4)
        self.status = int(words[1])
        self.took, self.stall = float(words[2]), float(words[3])
        self.found = words[4].rstrip("\n")


class World:
    """What a scenario uses, inside its desktop."""

    def __init__(self, build):
        self.build = build
        self.children = []
        self.bus_log = os.path.join(os.environ["TMPDIR"], "calls")

    def stand_in(self, mode):
        with open(self.bus_log, "ab") as log:
            child = subprocess.Popen([os.path.join(SUPPORT, "hostile_keyring"), mode],
                                     stdout=subprocess.PIPE, stderr=log)
        assert child.stdout.readline() == b"ready\n"
        self.children.append(child)
        return child

    def gnome_keyring(self, *options, password=None):
        child = subprocess.Popen(
            ["gnome-keyring-daemon", "--foreground", "--components=secrets", *options],
            stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        if password is not None:
            child.stdin.write(password)
        child.stdin.close()
        deadline = time.monotonic() + 20
        while b"boolean true" not in subprocess.run(
                ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
                 "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner",
                 "string:org.freedesktop.secrets"], stdout=subprocess.PIPE, check=True).stdout:
            assert time.monotonic() < deadline
            time.sleep(0.01)
        self.children.append(child)
        return child

    def calls(self, name):
        with open(self.bus_log, encoding="utf-8") as log:
            return log.read().split().count(name)

    def start(self, *operations, choice="automatic", **environment):
        return subprocess.Popen(
            [os.path.join(self.build, "keychain_probe"), choice, *operations],
            env={**os.environ, **environment}, text=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def probe(self, *operations, **options):
        """The calls' results and the lines on standard error."""
        child = self.start(*operations, **options)
        out, err = child.communicate(timeout=120)
        assert child.returncode == 0, (child.returncode, err)
        return [Call(line) for line in out.splitlines() if line != "paused"], err.splitlines()

    def file_exists(self):
        return os.path.exists(os.environ["XDG_DATA_HOME"] + "/zarn-actions/keychain")


class Scenario(unittest.TestCase):
    """Base of the scenarios: a desktop's options, and what to check in it."""

    desktop = ["--no-keyring"]
    build = None
    worst = [0.0, 0.0]
    is_of_the_keychain = True
    answer_limit_ms = ANSWER_LIMIT_MS

    def runTest(self):
        name = type(self).__name__
        run = subprocess.run(
            [os.path.join(SUPPORT, "with_desktop"), "--no-x", "--timeout", "110", *self.desktop,
             "--", sys.executable, os.path.realpath(__file__), self.build, "--scenario", name],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        self.assertEqual(run.returncode, 0, run.stdout)
        took, stall = run.stdout.split()[-2:]
        sys.stdout.write(f"{name:42} answer {float(took):7.1f} ms, painting stood still "
                         f"{float(stall):5.1f} ms\n")
        if self.is_of_the_keychain:
            # What the user took to answer a prompt is no fault of the keychain's.
            if self.answer_limit_ms == ANSWER_LIMIT_MS:
                self.worst[0] = max(self.worst[0], float(took))
            self.worst[1] = max(self.worst[1], float(stall))

    def check(self, world):
        raise NotImplementedError

    def expect_in_time(self, calls):
        self.assertTrue(calls)
        for call in calls:
            self.assertLess(call.took, self.answer_limit_ms)
            self.assertLess(call.stall, STALL_LIMIT_MS)
            self.measured[0] = max(self.measured[0], call.took)
            self.measured[1] = max(self.measured[1], call.stall)

    def expect(self, result, statuses, lines=(), found=None):
        calls, errors = result
        self.assertEqual([call.status for call in calls], statuses, errors)
        self.expect_in_time(calls)
        self.assertEqual(len(errors), len(lines), errors)
        for line, error in zip(lines, errors):
            self.assertTrue(error.startswith("zarn-actions: keychain: "), error)
            self.assertIn(LINES[line], error)
        for text in errors:
            for secret in ("geheim", "planted", "replaced"):
                self.assertNotIn(secret, text)
        if found is not None:
            self.assertEqual([call.found for call in calls], found)

    measured = [0.0, 0.0]


# ---------------------------------------------------------------- absent, no bus, dead socket


class AbsentServiceMeansTheFileAndSaysSo(Scenario):
    def check(self, world):
        self.expect(world.probe(ADD, "copy,ZPMA-new,admin"), [0, 0], ["file"],
                    ["-", "admin=planted"])
        self.assertTrue(world.file_exists())


class AbsentServiceThatIsForcedIsNotAvailable(Scenario):
    def check(self, world):
        self.expect(world.probe(COPY, ADD, UPDATE, choice="secret-service"), [ABSENT] * 3,
                    ["absent"])
        self.assertFalse(world.file_exists())


class NoBusMeansTheFileAndSaysSo(Scenario):
    desktop = ["--no-bus"]

    def check(self, world):
        self.expect(world.probe(ADD, "copy,ZPMA-new,admin"), [0, 0], ["file"])
        self.assertTrue(world.file_exists())


class NoBusThatIsForcedIsNotAvailable(Scenario):
    desktop = ["--no-bus"]

    def check(self, world):
        self.expect(world.probe(COPY, ADD, choice="secret-service"), [ABSENT] * 2, ["absent"])
        self.assertFalse(world.file_exists())


class DisabledBusIsNoBus(Scenario):
    desktop = ["--no-bus"]

    def check(self, world):
        self.expect(world.probe(ADD, DBUS_SESSION_BUS_ADDRESS="disabled:"), [0], ["file"])


class SocketThatIsMissingIsNoProofOfAbsence(Scenario):
    desktop = ["--no-bus"]

    def check(self, world):
        self.expect(world.probe(COPY, ADD, DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent/bus"),
                    [ABSENT] * 2, ["unreachable"])
        self.assertFalse(world.file_exists())


class DeadSocketIsNoProofOfAbsence(Scenario):
    desktop = ["--no-bus"]

    def check(self, world):
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(os.environ["XDG_RUNTIME_DIR"] + "/bus")
        self.expect(world.probe(COPY, ADD), [ABSENT] * 2, ["unreachable"])
        self.assertFalse(world.file_exists())


class SilentBusDoesNotAnswer(Scenario):
    desktop = ["--no-bus"]

    def check(self, world):
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(os.environ["XDG_RUNTIME_DIR"] + "/bus")
            listener.listen(16)
            self.expect(world.probe(COPY), [LOCKED], ["silent"])
        self.assertFalse(world.file_exists())


# ---------------------------------------------------------------- silent


class SilentServiceDoesNotAnswer(Scenario):
    def check(self, world):
        world.stand_in("silent")
        self.expect(world.probe(COPY, ADD), [LOCKED] * 2, ["silent"])
        self.assertFalse(world.file_exists())


class StoppedGnomeKeyringDoesNotAnswer(Scenario):
    def check(self, world):
        daemon = world.gnome_keyring("--unlock", password=b"pw")
        self.expect(world.probe("add,ZPMA-host,admin,geheim"), [0])
        os.kill(daemon.pid, signal.SIGSTOP)
        self.expect(world.probe(COPY), [LOCKED], ["silent"])
        os.kill(daemon.pid, signal.SIGCONT)
        self.expect(world.probe(COPY), [0], found=["admin=geheim"])


class ServiceThatIsSilentOnUnlockDoesNotAnswer(Scenario):
    def check(self, world):
        world.stand_in("silent-unlock")
        self.expect(world.probe(COPY), [LOCKED], ["locked", "silent"])


# ---------------------------------------------------------------- locked, prompts


class LockedGnomeKeyringWithoutAPrompterIsRefusedByTheUser(Scenario):
    desktop = ["--locked", "--password", "pw"]

    def check(self, world):
        self.expect(world.probe(COPY, ADD), [DISMISSED] * 2, ["locked", "dismissed"])
        self.assertFalse(world.file_exists())


class GnomeKeyringThatWasNeverUnlockedIsNotEmpty(Scenario):
    def check(self, world):
        daemon = world.gnome_keyring("--unlock", password=b"pw")
        self.expect(world.probe("add,ZPMA-host,admin,geheim"), [0])
        daemon.terminate()
        daemon.wait()
        world.gnome_keyring()
        self.expect(world.probe(COPY, COPY_ANY, "copy,ZPMA-nobody,"), [DISMISSED] * 3,
                    ["locked", "dismissed"])


class LockedServiceThatOnlyPretendsToUnlockIsLocked(Scenario):
    def check(self, world):
        world.stand_in("still-locked")
        self.expect(world.probe(COPY, ADD, UPDATE), [LOCKED] * 3, ["locked"])


class ItemInALockedCollectionIsNotMissing(Scenario):
    def check(self, world):
        world.stand_in("locked-elsewhere")
        self.expect(world.probe(COPY, "add,ZPMA-host,admin,x"), [DISMISSED] * 2,
                    ["locked", "dismissed"])


class DismissedPromptIsRefusedByTheUser(Scenario):
    def check(self, world):
        world.stand_in("dismissed")
        self.expect(world.probe(COPY, ADD, UPDATE), [DISMISSED] * 3, ["locked", "dismissed"])
        self.assertEqual(world.calls("CreateItem") + world.calls("SetSecret"), 0)


class AnsweredPromptGivesTheItem(Scenario):
    def check(self, world):
        world.stand_in("answered=1")
        self.expect(world.probe(COPY, ADD), [0, 0], ["locked"], ["admin=geheim", "-"])


class PromptThatIsAnsweredAfterASilentServiceIsGivenUpGivesTheItem(Scenario):
    answer_limit_ms = 20_000

    def check(self, world):
        world.stand_in("answered=11")
        self.expect(world.probe(COPY, ADD), [0, 0], ["locked"], ["admin=geheim", "-"])
        self.assertGreater(self.measured[0], 10_500)
        self.assertEqual(world.calls("Prompt"), 1)


class UnansweredPromptIsWaitedForAMinute(Scenario):
    answer_limit_ms = 65_000

    def check(self, world):
        world.stand_in("unanswered")
        self.expect(world.probe(COPY), [LOCKED], ["locked"])
        self.assertGreater(self.measured[0], 59_000)
        self.assertEqual(world.calls("Dismiss"), 0)


class UnansweredPromptStaysOpenAndIsAskedOnce(Scenario):
    def check(self, world):
        world.stand_in("unanswered")
        self.expect(world.probe("prompt-limit,2000", COPY, COPY, COPY), [LOCKED] * 3, ["locked"])
        self.assertEqual(world.calls("Prompt"), 1)
        self.assertEqual(world.calls("Dismiss"), 0)


class PromptAnsweredAfterTheLimitHelpsTheNextCall(Scenario):
    def check(self, world):
        world.stand_in("answered=6")
        self.expect(world.probe("prompt-limit,4000", COPY, COPY), [LOCKED, 0], ["locked"],
                    ["-", "admin=geheim"])
        self.assertEqual(world.calls("Prompt"), 1)


class ServiceThatIsSilentWhenItIsToShowItsPromptDoesNotAnswer(Scenario):
    def check(self, world):
        world.stand_in("silent-prompt")
        self.expect(world.probe(COPY), [LOCKED], ["locked", "silent"])


# ---------------------------------------------------------------- dies in the middle


class ServiceThatDiesInTheMiddleIsNotTakenForEmpty(Scenario):
    def check(self, world):
        for method, operation in (("ReadAlias", COPY), ("SearchItems", COPY), ("GetAll", COPY),
                                  ("GetSecret", COPY), ("CreateItem", ADD), ("SetSecret", UPDATE)):
            with self.subTest(method):
                service = world.stand_in("dies=" + method)
                self.expect(world.probe(operation), [LOCKED], ["silent"])
                self.assertEqual(service.wait(), 0, method)
        self.assertFalse(world.file_exists())


class ServiceThatDiesBetweenCallsIsAbsentThen(Scenario):
    def check(self, world):
        service = world.stand_in("read-only")
        probe = world.start(COPY, "pause", COPY, "pause", COPY)
        lines = [probe.stdout.readline(), probe.stdout.readline()]
        service.kill()
        service.wait()
        probe.stdin.write("\n")
        probe.stdin.flush()
        lines += [probe.stdout.readline(), probe.stdout.readline()]
        world.stand_in("read-only")
        out, err = probe.communicate("\n", timeout=60)
        calls = [Call(line) for line in [lines[0], lines[2], out]]
        self.expect((calls, err.splitlines()), [0, ABSENT, 0], ["absent"])
        self.assertFalse(world.file_exists())


class GnomeKeyringThatIsRestartedIsUsedAgain(Scenario):
    def check(self, world):
        daemon = world.gnome_keyring("--unlock", password=b"pw")
        probe = world.start("add,ZPMA-host,admin,geheim", "pause", COPY)
        lines = [probe.stdout.readline(), probe.stdout.readline()]
        daemon.kill()
        daemon.wait()
        world.gnome_keyring("--unlock", password=b"pw")
        out, err = probe.communicate("\n", timeout=60)
        self.expect(([Call(lines[0]), Call(out)], err.splitlines()), [0, 0], (),
                    ["-", "admin=geheim"])


# ---------------------------------------------------------------- the other states


class GnomeKeyringWithoutADefaultCollection(Scenario):
    desktop = ["--no-default-collection"]

    def check(self, world):
        self.expect(world.probe(COPY, ADD, UPDATE), [NO_DEFAULT] * 3, ["no-default"])
        self.assertFalse(world.file_exists())


class ServiceWithoutADefaultCollection(Scenario):
    def check(self, world):
        world.stand_in("no-default")
        self.expect(world.probe(COPY, ADD), [NO_DEFAULT] * 2, ["no-default"])


class MissingItemIsOrdinaryAndToldToNobody(Scenario):
    desktop = []

    def check(self, world):
        self.expect(world.probe(COPY, UPDATE), [GONE] * 2)


class ItemDeletedUnderUsIsMissing(Scenario):
    def check(self, world):
        for mode in ("deleted", "deleted-secret"):
            with self.subTest(mode):
                service = world.stand_in(mode)
                self.expect(world.probe(COPY, COPY), [GONE] * 2, ["gone"])
                service.kill()
                service.wait()


class DuplicatesAreReadInTheOrderOfWriting(Scenario):
    def check(self, world):
        world.stand_in("duplicates")
        self.expect(world.probe(COPY, COPY_ANY, UPDATE, COPY, "add,ZPMA-host,admin,x"),
                    [0, 0, 0, 0, DUPLICATE], (),
                    ["admin=secret2", "admin=secret2", "-", "admin=replaced", "-"])


class ReadOnlyServiceIsToldAndRead(Scenario):
    def check(self, world):
        world.stand_in("read-only")
        self.expect(world.probe(UPDATE, ADD, COPY), [READ_ONLY, READ_ONLY, 0], ["read-only"],
                    ["-", "-", "admin=geheim"])
        self.assertFalse(world.file_exists())


class ServiceThatTalksNonsenseIsNotTakenForEmpty(Scenario):
    def check(self, world):
        world.stand_in("nonsense")
        calls, errors = world.probe(COPY, ADD)
        self.expect_in_time(calls)
        self.assertEqual({call.status for call in calls} & {0, GONE}, set(), errors)
        self.assertTrue(errors)


class ItemsAreWhatTheDesktopsOwnToolsSee(Scenario):
    desktop = []

    def check(self, world):
        self.expect(world.probe("add,ZPMA-host,admin,geheim", UPDATE), [0, 0])
        tool = subprocess.run(
            ["secret-tool", "search", "--all", "xdg:schema",
             "org.zarnie.zpshortcuts.GenericPassword", "service", "ZPMA-host"],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=True).stdout
        for line in ("label = ZPMA-host (admin)", "secret = replaced", "attribute.account = admin",
                     "attribute.access-group = Q7X2M9K4TA.org.zarnie.zpshortcuts"):
            self.assertIn(line + "\n", tool)
        self.assertEqual(tool.count("secret = "), 1)


class ItemsOfAnotherProgramNeverMatch(Scenario):
    desktop = []

    def check(self, world):
        subprocess.run(
            ["secret-tool", "store", "--label=x", "service", "ZPMA-host", "account", "admin",
             "access-group", "Q7X2M9K4TA.org.zarnie.zpshortcuts"], input=b"foreign", check=True)
        self.expect(world.probe(COPY, UPDATE), [GONE] * 2)


# ---------------------------------------------------------------- the measurement itself


class AMainThreadThatStandsStillIsSeen(Scenario):
    desktop = ["--no-bus"]
    is_of_the_keychain = False

    def check(self, world):
        for how in ("sleep", "spin"):
            (call,), errors = world.probe(f"{how},{STAND_STILL_MS:.0f}", choice="file")
            self.assertEqual((call.status, errors), (0, []))
            self.assertGreater(call.stall, STALL_LIMIT_MS)
            self.measured = [call.took, call.stall]


def scenarios():
    return [kind for kind in Scenario.__subclasses__()]


def run_scenario(build, name):
    """Inside the desktop: one scenario; prints its worst figures."""
    scenario = next(kind for kind in scenarios() if kind.__name__ == name)()
    world = World(build)
    try:
        scenario.check(world)
    finally:
        for child in world.children:
            child.kill()
    print(*scenario.measured)
    return 0


def main():
    Scenario.build = os.path.realpath(sys.argv[1])
    if "--scenario" in sys.argv:
        return run_scenario(Scenario.build, sys.argv[-1])
    wanted = [argument for argument in sys.argv[2:] if not argument.startswith("-")]
    results = []

    def run(kind):
        result = unittest.TestResult()
        kind().run(result)
        results.append((kind.__name__, result))

    with ThreadPoolExecutor(6) as pool:
        list(pool.map(run, [k for k in scenarios() if not wanted or k.__name__ in wanted]))
    failed = 0
    for name, result in results:
        for _, text in result.failures + result.errors:
            failed += 1
            sys.stdout.write(f"FAILED {name}\n{text}\n")
    sys.stdout.write(f"{len(results)} scenarios, {failed} failed; slowest answer "
                     f"{Scenario.worst[0]:.0f} ms, painting stood still at most "
                     f"{Scenario.worst[1]:.0f} ms\n")
    return 1 if failed or not results else 0


if __name__ == "__main__":
    sys.exit(main())
