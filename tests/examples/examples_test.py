#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""The actions in examples/, against the demonstration server, with odd texts in every value.

    examples_test.py SOURCE_FOLDER BUILD_FOLDER CMAKE

Runs itself under with_desktop: once with a keyring service, once without a session bus.
"""

import base64
import datetime
import json
import os
import plistlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

SOURCE, BUILD, CMAKE = (os.path.abspath(path) for path in sys.argv[1:4])
LIMIT = 60
EXAMPLES = {
    "shell": os.path.join(SOURCE, "examples/server-version.sh"),
    "Python": os.path.join(SOURCE, "examples/server_version.py"),
    "C++": os.path.join(BUILD, "server-version"),
}
ODD = "\"'\\ $(id) `id` %41 <&> \u00e9\u05d0\u30af\U0001f511\n\\n{{\t"
NAME, USER, PASSWORD = "--name " + ODD, "user " + ODD, "password " + ODD
CLIENT, SECRET = "client " + ODD, "secret " + ODD
VERSION = "11 " + ODD
REFUSED, UNREACHABLE, NOT_FOUND = 1, 3, 4


class DemoServer:
    def __init__(self, folder, reply):
        self.ca_file = os.path.join(folder, "ca.pem")
        self.record = os.path.join(folder, "requests")
        self.process = subprocess.Popen(
            [os.path.join(BUILD, "zarn-pro-demo"), "--print-json", "--lifetime", "300", "--no-http",
             "--record", self.record, "--ca-file", self.ca_file, "--user", USER, "--password", PASSWORD, "--client-id", CLIENT,
             "--client-secret", SECRET, "--fault",
             urllib.parse.urlencode({"path": "/api/v1/zarn-pro-version", **reply})],
            stdout=subprocess.PIPE, text=True)
        self.url = json.loads(self.process.stdout.readline())["https_url"]

    def requests(self):
        with open(self.record, encoding="utf-8") as file:
            return [json.loads(line)["target"] for line in file]

    def stop(self):
        self.process.terminate()
        self.process.wait(LIMIT)
        self.process.stdout.close()


class ActionsTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="examples-")
        self.addCleanup(shutil.rmtree, self.folder)
        self.clear()
        self.start_server(body=json.dumps({"version": VERSION}))

    @staticmethod
    def clear():
        for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"):
            shutil.rmtree(os.path.join(os.environ[name], "zarn-actions"), ignore_errors=True)
        if "DBUS_SESSION_BUS_ADDRESS" in os.environ:
            subprocess.run(["secret-tool", "clear", "access-group", "Q7X2M9K4TA.org.zarnie.zpshortcuts"], check=False)

    def start_server(self, **reply):
        """What it sends for its version is `reply`."""
        self.server = DemoServer(self.folder, reply)
        self.addCleanup(self.server.stop)
        self.environment = {**os.environ, "PATH": BUILD + ":" + os.environ["PATH"], "no_proxy": "127.0.0.1",
                            "SSL_CERT_FILE": self.server.ca_file}
        # curl looks at these first.
        for name in ("CURL_CA_BUNDLE", "SSL_CERT_DIR"):
            self.environment.pop(name, None)

    def settings(self, domain, values):
        folder = os.path.join(os.environ["XDG_CONFIG_HOME"], "zarn-actions")
        os.makedirs(folder, 0o700, exist_ok=True)
        path = os.path.join(folder, domain + ".plist")
        with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "wb") as file:
            plistlib.dump(values, file)

    def item(self, service, account, secret):
        done = subprocess.run(
            [os.path.join(BUILD, "keychain_probe"), "automatic", f"add,{service},{account},{secret}"],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True)
        assert done.stdout.startswith(b"add 0 "), done.stdout

    def register(self, by_username, url=None, secret=None):
        url = url or self.server.url + "/"
        user = USER if by_username else CLIENT
        secret = secret or (PASSWORD if by_username else SECRET)
        self.settings("com.zarn.ZarnActions", {"agreedToTermsOfUse": True})
        self.settings("group.R3V8N1P6WB.zarnie.SharedZPMA", {"serversDict": {
            NAME: {"server": url, "date": datetime.datetime(2026, 1, 31)}}})
        self.settings("group.Q7X2M9K4TA.zarnactions", {
            "currentServer": NAME, "username": user, "useUsername": 1 if by_username else 0})
        self.item(("ZPMA-" if by_username else "zortcuts-apiClient-") + "127.0.0.1", user, secret)
        current = (f'{{"server":"{url.rstrip("/")}", "username":"{user}", "password":"{secret}", '
                   f'"useApiClient":"{0 if by_username else 1}"}}')
        self.item("ZPMA-zortcuts", "zortcuts", base64.b64encode(current.encode()).decode())

    def run_each(self):
        """(example, exit status, standard output, standard error), with no secret in either text."""
        for example, program in EXAMPLES.items():
            done = subprocess.run([program], stdin=subprocess.DEVNULL, capture_output=True, env=self.environment,
                                  timeout=LIMIT, check=False)
            for secret in (PASSWORD, SECRET, "demo-token-"):
                self.assertNotIn(secret.encode(), done.stdout + done.stderr, example)
            yield example, done.returncode, done.stdout.decode(), done.stderr.decode()

    def check_failure(self, status, words):
        for example, code, out, err in self.run_each():
            with self.subTest(example=example):
                self.assertEqual((code, out), (status, ""), err)
                self.assertRegex(err, words)


class Versions(ActionsTest):
    def test_a_server_registered_by_username_tells_its_version(self):
        self.register(by_username=True)
        for example, code, out, err in self.run_each():
            with self.subTest(example=example):
                self.assertEqual((code, out), (0, VERSION + "\n"), err)

    def test_a_server_registered_by_api_client_tells_its_version(self):
        self.register(by_username=False)
        for example, code, out, err in self.run_each():
            with self.subTest(example=example):
                self.assertEqual((code, out), (0, VERSION + "\n"), err)


class Failures(ActionsTest):
    def test_no_profile(self):
        self.settings("com.zarn.ZarnActions", {"agreedToTermsOfUse": True})
        self.check_failure(NOT_FOUND, r"\Azarn-profile: .+\n\Z")

    def test_a_secret_that_the_server_refuses(self):
        self.register(by_username=True, secret="another")
        self.check_failure(REFUSED, r"zarn-profile: .+\n\Z")

    def test_a_server_that_is_not_there(self):
        self.register(by_username=True, url="https://127.0.0.1:1")
        self.check_failure(UNREACHABLE, r"zarn-profile: .+\n\Z")

    def test_a_reply_that_is_no_version(self):
        for body in ("<html>", "[]", '{"version":[1]}', ""):
            with self.subTest(body=body):
                self.clear()
                self.start_server(body=body)
                self.register(by_username=True)
                self.check_failure(REFUSED, r"server-version: the server's reply (is not JSON|has no version)\n\Z")

    def test_a_call_that_the_server_refuses(self):
        self.start_server(status=503)
        self.register(by_username=True)
        self.check_failure(REFUSED, r"server-version: the server refuses: HTTP status 503\n\Z")

    def test_the_token_does_not_follow_a_redirect(self):
        self.start_server(status=302, location="/elsewhere")
        self.register(by_username=True)
        self.check_failure(REFUSED, r"server-version: the server refuses: HTTP status 302\n\Z")
        self.assertNotIn("/elsewhere", self.server.requests())


class Project(unittest.TestCase):
    def test_the_one_in_cpp_is_a_project_of_its_own(self):
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run([CMAKE, "-S", os.path.join(SOURCE, "examples/cpp"), "-B", folder],
                                  capture_output=True, text=True, check=False)
            self.assertEqual(done.returncode, 0, done.stderr)


def in_desktop(options, *tests):
    return subprocess.run(
        [os.path.join(SOURCE, "tests/support/with_desktop"), "--no-x", *options, "--timeout", "200", "--",
         sys.executable, *sys.argv[:4], "--inside", *tests], check=False).returncode


if __name__ == "__main__":
    if "--inside" in sys.argv:
        unittest.main(argv=[sys.argv[0], *sys.argv[5:]], verbosity=2)
    sys.exit(in_desktop([], "Versions") or in_desktop(["--no-bus"]))
