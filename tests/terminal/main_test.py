#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""zarn-profile as a process, against the demonstration server.

    with_desktop --no-x main_test.py BUILD_FOLDER SOURCE_FOLDER

Each test has a home directory of its own; the keyring service is that of the desktop.
"""

import concurrent.futures
import fcntl
import json
import os
import plistlib
import pty
import random
import shutil
import signal
import ssl
import struct
import subprocess
import sys
import tempfile
import termios
import time
import unittest
import urllib.parse
import urllib.request

import jsonschema

BUILD, SOURCE = (os.path.abspath(sys.argv.pop(1)) for _ in range(2))
PROGRAM = os.path.join(BUILD, "zarn-profile")
LIMIT = 60
USER, PASSWORD, CLIENT, SECRET = "demo", "zarn-demo-password", "demo-client", "demo-client-secret"
TOKEN_PATH = "/api/oauth/token"
ODD = 'B\u00e9rlin "q" \\ $(x) \U0001f600 %s'
SCHEMA_NAME = "org.zarnie.zpshortcuts.GenericPassword"
FILE_LINE = ("zarn-profile: keychain: no keyring service is used: items are kept in an encrypted file that is "
             "protected by file permissions\n")
with open(os.path.join(SOURCE, "docs/zarn-profile.schema.json"), encoding="utf-8") as schema_file:
    SCHEMAS = json.load(schema_file)


class Server:
    """zarn-pro-demo, and what it received."""

    def __init__(self, folder, *options):
        self.ca_file = os.path.join(folder, "ca.pem")
        self.process = subprocess.Popen(
            [os.path.join(BUILD, "zarn-pro-demo"), "--print-json", "--lifetime", "300", "--ca-file", self.ca_file,
             *options], stdout=subprocess.PIPE, text=True)
        self.url = json.loads(self.process.stdout.readline())["https_url"].rstrip("/")

    def stop(self):
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()

    def control(self, path, fields=None):
        data = urllib.parse.urlencode(fields).encode() if fields is not None else None
        opener = urllib.request.build_opener(
            urllib.request.ProxyHandler({}),
            urllib.request.HTTPSHandler(context=ssl.create_default_context(cafile=self.ca_file)))
        with opener.open(urllib.request.Request(self.url + path, data=data), timeout=10) as reply:
            return reply.read().decode()

    def fault(self, **fields):
        self.control("/demo/fault", {key.replace("_", "-"): value for key, value in fields.items()})

    def reset(self):
        self.control("/demo/reset", {})

    def requests(self):
        received = [json.loads(line) for line in self.control("/demo/requests").splitlines()]
        return [request for request in received if not request["target"].startswith("/demo/")]


class ProfileTest(unittest.TestCase):
    keychain = "file"

    def setUp(self):
        self.home = tempfile.mkdtemp(prefix="home-")
        self.addCleanup(shutil.rmtree, self.home)
        self.server = Server(self.home)
        self.addCleanup(self.server.stop)
        self.environment = {
            **os.environ, "HOME": self.home, "XDG_CONFIG_HOME": self.home + "/config",
            "XDG_DATA_HOME": self.home + "/data", "XDG_STATE_HOME": self.home + "/state",
            "SSL_CERT_FILE": self.server.ca_file, "no_proxy": "127.0.0.1"}
        if self.keychain == "secret-service":
            self.clear_keyring()
            self.addCleanup(self.clear_keyring)
        self.done("terms", "--accept")

    @staticmethod
    def clear_keyring():
        subprocess.run(["secret-tool", "clear", "xdg:schema", SCHEMA_NAME], check=False, timeout=LIMIT)

    def command(self, *words):
        return [PROGRAM, "--keychain", self.keychain, *words]

    def call(self, *words, text="", **options):
        """(exit code, standard output, standard error without the line about the file)"""
        options.setdefault("env", self.environment)
        ended = subprocess.run(self.command(*words), input=text.encode(), stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, timeout=LIMIT, check=False, **options)
        return ended.returncode, ended.stdout.decode(), ended.stderr.decode().replace(FILE_LINE, "")

    def done(self, *words, text=""):
        code, out, err = self.call(*words, text=text)
        self.assertEqual((code, err), (0, ""), words)
        return out

    def printed(self, schema, *words, code=0):
        """What a command prints as JSON; its schema holds."""
        ended, out, err = self.call(*words, "--json")
        self.assertEqual((ended, err), (code, ""), words)
        value = json.loads(out)
        jsonschema.Draft202012Validator({**SCHEMAS, "$ref": "#/$defs/" + schema}).validate(value)
        return value

    def add(self, name, url=None, secret=SECRET, who=("--client-id", CLIENT)):
        return self.done("add", name, "--url", url or self.server.url, *who, text=secret + "\n")

    def fails(self, code, pattern, *words, text=""):
        ended, out, err = self.call(*words, text=text)
        self.assertEqual((ended, out), (code, ""), err)
        self.assertRegex(err, r"\Azarn-profile: " + pattern + r"[^\n]*\n\Z")

    def settings(self, domain):
        try:
            with open(f"{self.home}/config/zarn-actions/{domain}.plist", "rb") as file:
                return plistlib.load(file)
        except FileNotFoundError:
            return {}

    def profiles(self):
        return self.settings("group.R3V8N1P6WB.zarnie.SharedZPMA").get("serversDict", {})

    def current(self):
        return self.settings("group.Q7X2M9K4TA.zarnactions").get("currentServer")


class AnyKeychain:
    """What holds wherever secrets are kept."""

    def test_a_server_is_registered_used_and_removed(self):
        self.assertEqual(self.add(ODD), ODD + " was successfully set\n")
        self.assertEqual(self.add("User", self.server.url + "/", PASSWORD, ("--user", USER)),
                         "User was successfully set\n")
        listed = self.printed("list", "list")
        self.assertEqual([(entry["name"], entry["server"], entry["current"]) for entry in listed],
                         [(ODD, self.server.url, False), ("User", self.server.url + "/", True)])
        self.assertEqual(self.done("list"), f"  {ODD}\t{self.server.url}\n* User\t{self.server.url}/\n")
        self.assertEqual(self.done("check", "--all"), f"{ODD}: works\nUser: works\n")
        self.assertEqual([entry["works"] for entry in self.printed("check", "check", "--all")], [True, True])
        shown = self.printed("show", "show", "--reveal")
        self.assertEqual((shown["username"], shown["secret"], shown["credentials"]), (USER, PASSWORD, "user"))
        self.assertEqual(self.done("use", ODD), f'"{ODD}" is the current server\n')
        shown = self.printed("show", "show", "--reveal", ODD)
        # What is proved last belongs to the other profile; the items of a host belong to both.
        self.assertEqual((shown["username"], shown["secret"]), (USER, PASSWORD))
        self.assertEqual(self.done("remove", "--yes", ODD),
                         f'"{ODD}" was removed from the list; its keychain items stay\n')
        self.assertEqual([entry["name"] for entry in self.printed("list", "list")], ["User"])

    def test_a_token_works_and_is_all_that_is_printed(self):
        self.add("Demo")
        token = self.done("token")
        self.assertRegex(token, r"\A\S+\n\Z")
        self.assertNotEqual(self.done("token"), token)
        self.assertEqual(self.printed("token", "token", "Demo")["server"], self.server.url)
        self.assertEqual(json.loads(self.done("api", "GET", "zarn-pro-version")), {"version": "11.40.0-t1712"})
        calls = [request for request in self.server.requests() if request["method"] == "GET"]
        self.assertTrue(all(header["value"].startswith("Bearer ") for call in calls for header in [
            {"value": value} for name, value in call["headers"] if name.lower() == "authorization"]))

    def test_a_secret_with_every_odd_character_comes_back(self):
        secret = 'p"\\ \u00fc\t\', {} \U0001f600'
        server = Server(tempfile.mkdtemp(dir=self.home), "--client-secret", secret)
        self.addCleanup(server.stop)
        self.environment["SSL_CERT_FILE"] = server.ca_file
        self.add("Odd", server.url, secret)
        self.assertEqual(self.printed("show", "show", "--reveal")["secret"], secret)
        self.assertEqual(self.done("check"), "Odd: works\n")

    def test_a_new_secret_is_proved_before_it_is_stored(self):
        self.add("Demo")
        self.fails(1, r"127\.0\.0\.1 does not accept these credentials \(HTTP 401\)", "set", "Demo", text="wrong\n")
        self.assertEqual(self.printed("show", "show", "--reveal")["secret"], SECRET)
        self.done("set", "Demo", text=SECRET + "\n")
        self.done("set", "Demo", "--user", USER, text=PASSWORD + "\n")
        shown = self.printed("show", "show", "--reveal")
        self.assertEqual((shown["username"], shown["credentials"]), (USER, "user"))

    def test_add_if_missing_is_idempotent(self):
        words = ("add", "Demo", "--url", self.server.url, "--client-id", CLIENT, "--if-missing")
        self.done(*words, text=SECRET + "\n")
        before = self.snapshot()
        asked = len(self.server.requests())
        self.assertEqual(self.done(*words), "")
        self.assertEqual(self.snapshot(), before)
        self.assertEqual(len(self.server.requests()), asked)

    def snapshot(self):
        files = {}
        for folder, _, names in os.walk(self.home):
            for name in names:
                path = os.path.join(folder, name)
                with open(path, "rb") as file:
                    files[path] = (file.read(), os.stat(path).st_mtime_ns)
        return files


class FileKeychainTest(AnyKeychain, ProfileTest):
    keychain = "file"


class SecretServiceTest(AnyKeychain, ProfileTest):
    keychain = "secret-service"


class ExitCodeTest(ProfileTest):
    def test_1_refused(self):
        self.fails(1, "127.0.0.1 does not accept", "add", "D", "--url", self.server.url, "--user", USER, text="no\n")
        self.add("Demo")
        self.server.fault(path=TOKEN_PATH, status="500")
        self.fails(1, r"Demo: 127\.0\.0\.1 has a problem of its own", "token")
        self.assertEqual(self.call("check"), (1, "Demo: 127.0.0.1 has a problem of its own (HTTP 500)\n", ""))
        self.server.reset()
        self.fails(1, r"Demo: 127\.0\.0\.1 has no Zarn Pro service", "api", "GET", "nowhere")
        self.assertEqual(list(self.profiles()), ["Demo"])

    def test_2_usage(self):
        for words in ((), ("bogus",), ("add", "D"), ("list", "--reveal"), ("use",), ("api", "DELETE", "x")):
            self.fails(2, "", *words)
        self.fails(2, "standard input has no secret", "add", "D", "--url", self.server.url, "--user", USER)
        self.fails(2, "The server URL holds a blank", "add", "D", "--url", "https://a b", "--user", "u", text="x\n")
        self.add("Demo")
        self.fails(2, "standard input is no terminal", "remove", "Demo")
        self.fails(2, "--data: cannot open /nowhere", "api", "POST", "x", "--data", "/nowhere")
        self.fails(2, "--data: not a JSON object", "api", "POST", "x", "--data", "-", text="[]")

    def test_3_not_reachable(self):
        self.add("Demo")
        self.server.stop()
        for words in (("token",), ("api", "GET", "buildings")):
            self.fails(3, r"Demo: 127\.0\.0\.1 refused the connection on port", *words)
        self.assertEqual(self.call("check")[0], 3)
        self.environment.pop("SSL_CERT_FILE")
        other = Server(tempfile.mkdtemp(dir=self.home))
        self.addCleanup(other.stop)
        self.fails(3, "The certificate of 127.0.0.1 is from an unknown authority", "add", "D", "--url", other.url,
                   "--user", USER, text=PASSWORD + "\n")

    def test_4_not_found(self):
        for words in (("show",), ("token",), ("check",), ("api", "GET", "x")):
            self.fails(4, "no server is current", *words)
        for words in (("show", "x"), ("use", "x"), ("remove", "-y", "x"), ("set", "x"), ("token", "x")):
            self.fails(4, 'no server "x" is registered', *words)
        self.add("Demo")
        shutil.rmtree(self.home + "/data")
        self.fails(4, "Demo: the keyring has no secret for it", "token")

    def test_5_keyring(self):
        self.add("Demo")
        with open(self.home + "/state/zarn-actions/keychain.key", "r+b") as file:
            file.write(b"another key")
        self.assertEqual(self.call("token")[:2], (5, ""))
        self.keychain = "secret-service"
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = "disabled:"
        before = self.profiles()
        code, out, err = self.call("add", "Other", "--url", self.server.url, "--user", USER, text=PASSWORD + "\n")
        self.assertEqual((code, out, err.splitlines()[-1]), (5, "", "zarn-profile: No keychain is available"))
        self.assertEqual(self.profiles(), before)
        self.done("use", "Demo")

    def test_6_terms(self):
        shutil.rmtree(self.home + "/config")
        self.done("list")
        for words in (("token",), ("check",), ("use", "x"), ("add", "D", "--url", "u", "--user", "x")):
            self.fails(6, "the terms of use are not accepted", *words)
        self.assertFalse(self.printed("terms", "terms")["accepted"])
        self.done("terms", "--accept")
        self.assertTrue(self.printed("terms", "terms")["accepted"])
        self.fails(4, "no server is current", "token")

    def test_7_window_open(self):
        self.add("Demo")
        with self.lock(b"w"):
            for words in (("use", "Demo"), ("remove", "-y", "Demo"), ("set", "Demo"),
                          ("add", "D", "--url", self.server.url, "--user", USER)):
                started = time.monotonic()
                self.fails(7, "the window of Zarn Actions is open", *words, text="x\n")
                self.assertLess(time.monotonic() - started, 5)
            self.assertEqual(self.done("check"), "Demo: works\n")
            self.done("token")

    def test_8_not_written(self):
        self.add("Demo")
        with open("/dev/full", "wb") as full:
            ended = subprocess.run(self.command("list"), stdout=full, stderr=subprocess.PIPE, env=self.environment,
                                   timeout=LIMIT, check=False)
        self.assertEqual((ended.returncode, ended.stderr), (8, b"zarn-profile: standard output cannot be written\n"))
        with open(self.home + "/in-the-way", "wb"):
            self.environment["XDG_CONFIG_HOME"] = self.home + "/in-the-way"
        self.assertEqual(self.call("list")[0], 8)

    def lock(self, role):
        """The lock of a running window, held by this process."""
        path = self.home + "/config/zarn-actions/zarn-actions.running"
        # pylint: disable-next=consider-using-with
        file = open(os.open(path, os.O_RDWR | os.O_CREAT, 0o600), "r+b", buffering=0)
        fcntl.lockf(file, fcntl.LOCK_EX)
        file.write(struct.pack("=c3xi", role, os.getpid()))
        return file


class LockTest(ProfileTest):
    def test_commands_that_change_profiles_wait_for_each_other(self):
        names = [f"server {number}" for number in range(6)]
        with concurrent.futures.ThreadPoolExecutor(6) as pool:
            list(pool.map(self.add, names))
        self.assertEqual(sorted(self.profiles()), names)

    def test_a_command_that_waits_too_long_says_so(self):
        self.add("Demo")
        lock = ExitCodeTest.lock(self, b"c")
        self.addCleanup(lock.close)
        started = time.monotonic()
        self.fails(7, "another command is changing the profiles", "use", "Demo")
        self.assertGreater(time.monotonic() - started, 9)
        self.assertEqual(self.done("list"), f"* Demo\t{self.server.url}\n")


class Conversation:
    """zarn-profile on a terminal of its own."""

    def __init__(self, test, *words):
        self.master, terminal = pty.openpty()
        test.addCleanup(os.close, self.master)
        self.terminal = terminal
        test.addCleanup(os.close, terminal)
        self.before = termios.tcgetattr(terminal)
        self.process = subprocess.Popen(test.command(*words), stdin=terminal, stdout=terminal, stderr=terminal,
                                        env=test.environment, preexec_fn=self.own, close_fds=True)
        test.addCleanup(self.end)
        self.shown = b""
        os.set_blocking(self.master, False)

    def own(self):
        os.setsid()
        fcntl.ioctl(0, termios.TIOCSCTTY, 0)

    def end(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()

    def read(self):
        try:
            self.shown += os.read(self.master, 65536)
        except (BlockingIOError, OSError):
            time.sleep(0.01)

    def wait_for(self, text):
        deadline = time.monotonic() + LIMIT
        while text not in self.shown:
            assert time.monotonic() < deadline and self.process.poll() is None, self.shown
            self.read()

    def wait_for_silence(self):
        """Until the terminal has no echo."""
        deadline = time.monotonic() + LIMIT
        while termios.tcgetattr(self.terminal)[3] & termios.ECHO:
            assert time.monotonic() < deadline and self.process.poll() is None, self.shown
            time.sleep(0.01)

    def type(self, text):
        os.write(self.master, text)

    def ended(self):
        code = self.process.wait(LIMIT)
        self.read()
        return code

    def is_restored(self):
        return termios.tcgetattr(self.terminal) == self.before


class TerminalTest(ProfileTest):
    def conversation(self):
        conversation = Conversation(self, "add", "Demo", "--url", self.server.url, "--client-id", CLIENT)
        conversation.wait_for(b"Client secret of demo-client at 127.0.0.1: ")
        conversation.wait_for_silence()
        return conversation

    def test_a_secret_is_not_shown_and_the_terminal_is_restored(self):
        conversation = self.conversation()
        conversation.type(SECRET.encode() + b"\n")
        self.assertEqual(conversation.ended(), 0, conversation.shown)
        self.assertNotIn(SECRET.encode(), conversation.shown)
        self.assertIn(b"Asking 127.0.0.1 for a token\r\n", conversation.shown)
        self.assertIn(b"Demo was successfully set\r\n", conversation.shown)
        self.assertTrue(conversation.is_restored())

    def test_an_interruption_restores_the_terminal_and_changes_nothing(self):
        for key, number in ((b"\x03", signal.SIGINT), (b"\x1c", signal.SIGQUIT), (None, signal.SIGTERM),
                            (None, signal.SIGHUP)):
            conversation = self.conversation()
            conversation.type(b"qzx77")
            if key:
                conversation.type(key)
            else:
                conversation.process.send_signal(number)
            self.assertEqual(conversation.ended(), -number)
            self.assertTrue(conversation.is_restored())
            self.assertNotIn(b"qzx77", conversation.shown)
            self.assertEqual(self.profiles(), {})

    def test_a_secret_cannot_be_stopped_in_the_middle(self):
        conversation = self.conversation()
        conversation.type(b"\x1a" + SECRET.encode() + b"\n")
        self.assertEqual(conversation.ended(), 1, conversation.shown)
        self.assertTrue(conversation.is_restored())

    def test_a_question_is_asked_before_a_server_is_removed(self):
        self.add("Demo")
        for answer, left in ((b"n\n", ["Demo"]), (b"y\n", [])):
            conversation = Conversation(self, "remove", "Demo")
            conversation.wait_for(b"Are you sure you want to remove Demo from the list? [y/N] ")
            conversation.type(answer)
            self.assertEqual(conversation.ended(), 0)
            self.assertEqual(list(self.profiles()), left)

    def test_a_secret_is_not_revealed_on_a_terminal(self):
        self.add("Demo")
        conversation = Conversation(self, "show", "--reveal")
        self.assertEqual(conversation.ended(), 2)
        self.assertNotIn(SECRET.encode(), conversation.shown)
        conversation = Conversation(self, "show", "--reveal", "--force")
        self.assertEqual(conversation.ended(), 0)
        self.assertIn(SECRET.encode(), conversation.shown)


class InterruptionTest(ProfileTest):
    def start(self, *words):
        return subprocess.Popen(self.command(*words), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, env=self.environment)

    def test_a_signal_while_the_server_is_silent_changes_nothing(self):
        self.add("Old")
        before = (self.profiles(), self.settings("group.Q7X2M9K4TA.zarnactions"))
        self.server.fault(path=TOKEN_PATH, delay_ms="60000")
        for words in (("add", "New", "--url", self.server.url, "--client-id", CLIENT), ("set", "Old"), ("token",),
                      ("check",)):
            asked = len(self.server.requests())
            process = self.start(*words)
            process.stdin.write(SECRET.encode() + b"\n")
            process.stdin.close()
            deadline = time.monotonic() + LIMIT
            while len(self.server.requests()) == asked and time.monotonic() < deadline:
                time.sleep(0.02)
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(LIMIT), -signal.SIGINT, words)
            process.stdout.close()
            process.stderr.close()
            self.assertEqual((self.profiles(), self.settings("group.Q7X2M9K4TA.zarnactions")), before)

    def test_a_kill_at_any_moment_leaves_what_was_or_what_is_to_be(self):
        self.add("Old")
        started = time.monotonic()
        self.add("Timed")
        duration = time.monotonic() - started
        moments = random.Random(7)
        complete = 0
        for number in range(30 if os.environ.get("ZARN_LONG") else 10):
            name = f"server {number}"
            sent = moments.choice((signal.SIGKILL, signal.SIGINT, signal.SIGTERM))
            process = self.start("add", name, "--url", self.server.url, "--client-id", CLIENT)
            process.stdin.write(SECRET.encode() + b"\n")
            process.stdin.close()
            time.sleep(moments.uniform(0, 1.3 * duration))
            process.send_signal(sent)
            code = process.wait(LIMIT)
            process.stdout.close()
            process.stderr.close()
            self.assertIn(code, (0, -sent))
            there = name in self.profiles()
            complete += there
            if sent != signal.SIGKILL:
                self.assertEqual(there, self.current() == name, "half done")
                self.assertEqual(there, code == 0, "an interruption that stored something")
            self.assertIn("Old", self.profiles())
            self.assertIn(self.current(), self.profiles())
            # Whoever comes next finds everything in order: secrets, lock and settings.
            self.assertEqual(self.done("check", "Old"), "Old: works\n")
        print(f"killed or interrupted {number + 1} times, {complete} additions were complete")


class ProcessTest(ProfileTest):
    def test_neither_the_toolkit_nor_what_modules_bring_is_linked(self):
        linked = subprocess.run(["ldd", PROGRAM], stdout=subprocess.PIPE, text=True, check=True, timeout=LIMIT).stdout
        self.assertIn("libplist", linked)
        for name in ("libQt", "libX", "libxcb", "libcurl", "libsecret", "libglib", "libsodium"):
            self.assertNotIn(name, linked)

    def test_list_and_show_load_no_module(self):
        self.add("Demo")
        trace = self.home + "/trace"
        for words in (("list",), ("show",), ("use", "Demo"), ("--help",), ("terms",)):
            subprocess.run(["strace", "-f", "-qq", "-e", "trace=openat", "-o", trace, *self.command(*words)],
                           env={**self.environment, "ASAN_OPTIONS": "detect_leaks=0"}, stdout=subprocess.DEVNULL,
                           check=True, timeout=LIMIT)
            with open(trace, encoding="utf-8") as file:
                opened = file.read()
            self.assertIn("libstdc++", opened)
            self.assertNotRegex(opened, r"zarn-(http|keychain)\.so|libcurl|libsecret")

    def test_no_secret_is_in_a_file_but_the_keychain_or_in_a_core_dump(self):
        self.add("Demo")
        for folder, _, names in os.walk(self.home):
            for name in names:
                with open(os.path.join(folder, name), "rb") as file:
                    self.assertNotIn(SECRET.encode(), file.read(), name)
        process = subprocess.Popen(self.command("add", "x", "--url", self.server.url, "--user", USER),
                                   stdin=subprocess.PIPE, env=self.environment)
        deadline = time.monotonic() + LIMIT
        limits = ""
        while "Max core file size        0                    0" not in limits and time.monotonic() < deadline:
            with open(f"/proc/{process.pid}/limits", encoding="ascii") as file:
                limits = file.read()
        self.assertRegex(limits, r"Max core file size +0 +0")
        process.kill()
        process.communicate()

    def test_one_line_says_that_the_file_is_used_and_no_other(self):
        ended = subprocess.run(self.command("add", "D", "--url", self.server.url, "--client-id", CLIENT),
                               input=SECRET.encode(), stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                               env=self.environment, check=True, timeout=LIMIT)
        self.assertEqual(ended.stderr.decode(), FILE_LINE)

    def test_a_locked_keyring_without_anybody_to_ask_is_an_error_with_advice(self):
        self.add("Demo")
        desktop = os.path.join(SOURCE, "tests/support/with_desktop")
        script = f"cp -r {self.home}/config/* $XDG_CONFIG_HOME/ && {PROGRAM} use Demo && exec {PROGRAM} token"
        ended = subprocess.run([desktop, "--no-x", "--locked", "--password", "secret", "--timeout", "60", "--", "sh",
                                "-c", script], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=90,
                               check=False)
        self.assertEqual((ended.returncode, ended.stdout), (5, '"Demo" is the current server\n'))
        self.assertRegex(ended.stderr, r"(?m)^zarn-profile: Demo: The keyring .*; unlock it in a desktop session")


if __name__ == "__main__":
    unittest.main(verbosity=2)
