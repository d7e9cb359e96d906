# SPDX-License-Identifier: MIT
"""The demonstration server, the program, and what both leave behind."""

import base64
import glob
import json
import os
import plistlib
import re
import signal
import subprocess
import tempfile
import unittest
import urllib.parse
import urllib.request
import ssl

from screen import SLOWNESS, Screen, is_showing, keys, screenshot, type_text, wait_for  # noqa: F401

BUILD = os.environ.get("ZARN_BUILD", "")
SHARED_SUITE = "group.R3V8N1P6WB.zarnie.SharedZPMA"
ACTIONS_SUITE = "group.Q7X2M9K4TA.zarnactions"
STANDARD = "com.zarn.ZarnActions"
SCHEMA = "org.zarnie.zpshortcuts.GenericPassword"


def built(name):
    return os.path.join(BUILD, name)


def _information():
    with open(built("generated/Info.plist"), "rb") as file:
        return plistlib.load(file)


VERSION = _information()["CFBundleShortVersionString"]
VERSION_AND_BUILD = f"{VERSION} ({_information()['CFBundleVersion']})"


class DemoServer:
    """zarn-pro-demo, and what it received."""

    USER, PASSWORD = "demo", "zarn-demo-password"
    CLIENT, SECRET = "demo-client", "demo-client-secret"

    def __init__(self, *options):
        self.folder = tempfile.mkdtemp(prefix="demo-")
        self.ca_file = os.path.join(self.folder, "ca.pem")
        self.process = subprocess.Popen(
            [built("zarn-pro-demo"), "--print-json", "--lifetime", "300", "--ca-file", self.ca_file, *options],
            stdout=subprocess.PIPE, text=True)
        self.description = json.loads(self.process.stdout.readline())
        self.url = self.description["https_url"].rstrip("/")

    def stop(self):
        self.process.terminate()
        self.process.wait(10)
        self.process.stdout.close()

    def _control(self, path, fields=None):
        context = ssl.create_default_context(cafile=self.ca_file)
        data = urllib.parse.urlencode(fields).encode() if fields is not None else None
        opener = urllib.request.build_opener(
            urllib.request.ProxyHandler({}), urllib.request.HTTPSHandler(context=context))
        with opener.open(urllib.request.Request(self.url + path, data=data), timeout=10) as reply:
            return reply.read().decode()

    def fault(self, **fields):
        self._control("/demo/fault", {key.replace("_", "-"): value for key, value in fields.items()})

    def reset(self):
        self._control("/demo/reset", {})

    def requests(self):
        """What the server received so far, without what tests themselves asked."""
        received = [json.loads(line) for line in self._control("/demo/requests").splitlines()]
        return [request for request in received if not request["target"].startswith("/demo/")]


class Program:
    """One run of zarn-actions."""

    def __init__(self, *arguments, environment=None):
        variables = {**os.environ, **(environment or {})}
        self.out = tempfile.TemporaryFile("w+")
        self.err = tempfile.TemporaryFile("w+")
        self.process = subprocess.Popen([built("zarn-actions"), *arguments], stdin=subprocess.DEVNULL,
                                        stdout=self.out, stderr=self.err, env=variables)
        self.screen = Screen(self.process.pid)

    def wait_for_window(self):
        wait_for(lambda: self.process.poll() is not None or self.screen.windows(), "the first window", 20)
        if self.process.poll() is not None:
            raise AssertionError(f"the program ended with {self.process.returncode}: {self.errors()}")
        return self

    def ended(self, seconds=15):
        return self.process.wait(seconds * SLOWNESS)

    @staticmethod
    def _read(stream):
        # With a place of its own: the program writes on at the place that it shares with `stream`.
        with open(f"/proc/self/fd/{stream.fileno()}", encoding="utf-8", newline="") as own:
            return own.read()

    def output(self):
        return self._read(self.out)

    def errors(self):
        return self._read(self.err)

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.ended()
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
                raise
        self.out.close()
        self.err.close()


def config_folder():
    return os.path.join(os.environ["XDG_CONFIG_HOME"], "zarn-actions")


def settings(domain):
    try:
        with open(os.path.join(config_folder(), domain + ".plist"), "rb") as file:
            return plistlib.load(file)
    except FileNotFoundError:
        return {}


def write_settings(domain, values):
    os.makedirs(config_folder(), 0o700, exist_ok=True)
    path = os.path.join(config_folder(), domain + ".plist")
    with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "wb") as file:
        plistlib.dump(values, file)


def log_text():
    """All log files in order, as they are."""
    texts = []
    for path in sorted(glob.glob(os.path.join(os.environ["HOME"], "Library/Logs/*"))):
        with open(path, encoding="utf-8", newline="") as file:
            texts.append(file.read())
    return "".join(texts)


def log_lines():
    """The lines of all log files in order, each as (timestamp, message)."""
    lines = []
    for path in sorted(glob.glob(os.path.join(os.environ["HOME"], "Library/Logs/*"))):
        with open(path, encoding="utf-8") as file:
            for line in file.read().splitlines():
                match = re.fullmatch(r"([A-Z][a-z]{2} [A-Z][a-z]{2} \d\d \d\d:\d\d:\d\d) (.*)", line)
                assert match, f"not a log line: {line!r}"
                lines.append(match.groups())
    return lines


def log_messages():
    return [message for _, message in log_lines()]


def keychain_items():
    """{(service, account): (label, secret, attributes)} as secret-tool shows them."""
    found = subprocess.run(["secret-tool", "search", "--all", "--unlock", "xdg:schema", SCHEMA],
                           capture_output=True, text=True, check=False, timeout=20)
    items = {}
    for block in re.split(r"^\[/.*\]\n", found.stdout, flags=re.M)[1:]:
        fields = dict(line.split(" = ", 1) for line in block.splitlines() if " = " in line)
        # secret-tool writes the attributes to its other stream on some versions.
        items[fields["label"]] = fields
    attributes = [line.split(" = ", 1) for line in found.stderr.splitlines() if line.startswith("attribute.")]
    result = {}
    groups, current = [], {}
    for key, value in attributes:
        name = key[len("attribute."):]
        if name in current:
            groups.append(current)
            current = {}
        current[name] = value
    if current:
        groups.append(current)
    for group in groups:
        label = f"{group['service']} ({group['account']})"
        if label in items:
            result[(group["service"], group["account"])] = (label, items[label]["secret"], group)
    return result


def current_profile():
    items = keychain_items()
    item = items.get(("ZPMA-zortcuts", "zortcuts"))
    return base64.b64decode(item[1]).decode() if item else None


class WorldTest(unittest.TestCase):
    """A test with a server and a program; everything is ended whatever happens."""

    def start_server(self, *options):
        server = DemoServer(*options)
        self.addCleanup(server.stop)
        return server

    def start_program(self, *arguments, server=None, environment=None):
        variables = {"no_proxy": "127.0.0.1,localhost,::1", **(environment or {})}
        if server:
            variables["SSL_CERT_FILE"] = server.ca_file
        program = Program(*arguments, environment=variables)
        self.addCleanup(program.end)
        return program

    def accept_terms(self):
        write_settings(STANDARD, {"agreedToTermsOfUse": True})

    @staticmethod
    def clear_files():
        subprocess.run(["rm", "-rf", config_folder(), os.path.join(os.environ["HOME"], "Library")], check=True)

    def clear_world(self):
        self.clear_files()
        subprocess.run(["secret-tool", "clear", "xdg:schema", SCHEMA], check=False)

    def setUp(self):
        self.clear_world()
