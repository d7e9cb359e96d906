#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""docs/many-machines.md: what stands there is run twice, and the second run changes nothing.

    with_desktop --no-x --no-bus many_machines_test.py SOURCE_FOLDER BUILD_FOLDER
"""

import json
import os
import plistlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE, BUILD = (os.path.abspath(path) for path in sys.argv[1:3])
LIMIT = 120
NOT_REACHABLE = 3
VARIABLES = ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME")
CLIENT, SECRET = "demo-client", "demo-client-secret"


def commands():
    """What the page has a shell do, in one script."""
    with open(os.path.join(SOURCE, "docs/many-machines.md"), encoding="utf-8") as file:
        return re.findall(r"```sh\n(.*?)```", file.read(), re.DOTALL)


class ManyMachines(unittest.TestCase):
    def setUp(self):
        for variable in VARIABLES:
            shutil.rmtree(os.path.join(os.environ[variable], "zarn-actions"), ignore_errors=True)
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = scratch.name
        self.hosts = re.findall(r"https://([a-z0-9-]+)\.example:8443", "".join(commands()))
        names = [word for host in self.hosts for word in ("--name", host + ".localhost")]
        ca_file = os.path.join(self.folder, "ca.pem")
        self.requests = os.path.join(self.folder, "requests")
        server = subprocess.Popen(
            [os.path.join(BUILD, "zarn-pro-demo"), "--print-json", "--lifetime", "300", "--no-http",
             "--ca-file", ca_file, "--record", self.requests, *names], stdout=subprocess.PIPE, text=True)
        self.addCleanup(server.stdout.close)
        self.addCleanup(server.wait, 10)
        self.addCleanup(server.terminate)
        self.port = json.loads(server.stdout.readline())["https_port"]
        self.environment = {**os.environ, "PATH": f"{self.folder}:{BUILD}:{os.environ['PATH']}",
                            "SSL_CERT_FILE": ca_file, "no_proxy": "localhost"}
        self.vault(f"printf '%s\\n' '{SECRET}'")

    def vault(self, line):
        path = os.path.join(self.folder, "vault_read")
        with open(path, "w", encoding="utf-8") as file:
            file.write(f"#!/bin/sh\n{line}\n")
        os.chmod(path, 0o700)

    def run_page(self, unreachable=None):
        """The exit status of each piece of the page; the host `unreachable` is not there."""
        results = []
        for piece in commands():
            piece = piece.replace(f"{unreachable}.example:8443", f"{unreachable}.localhost:1")
            piece = piece.replace(".example:8443", f".localhost:{self.port}")
            piece = re.sub(r"\|[a-z-]+$", "|" + CLIENT, piece, flags=re.M)
            done = subprocess.run(["sh", "-c", piece], cwd=self.folder, env=self.environment, capture_output=True,
                                  text=True, timeout=LIMIT, check=False, stdin=subprocess.DEVNULL)
            self.assertNotIn(SECRET, done.stdout + done.stderr)
            results.append(done.returncode)
        return results

    def profiles(self):
        return self.settings("group.R3V8N1P6WB.zarnie.SharedZPMA")["serversDict"]

    @staticmethod
    def stored():
        """Every file that was left, with its contents, but for the one that says which copy is running."""
        files = {}
        for variable in VARIABLES:
            for folder, _, names in os.walk(os.path.join(os.environ[variable], "zarn-actions")):
                for name in set(names) - {"zarn-actions.running"}:
                    with open(os.path.join(folder, name), "rb") as file:
                        files[os.path.join(folder, name)] = file.read()
        return files

    def asked(self):
        with open(self.requests, encoding="utf-8") as file:
            return len(file.readlines())

    @staticmethod
    def settings(domain):
        path = os.path.join(os.environ["XDG_CONFIG_HOME"], "zarn-actions", domain + ".plist")
        with open(path, "rb") as file:
            return plistlib.load(file)

    def test_the_second_run_changes_nothing(self):
        self.assertEqual(self.run_page(), [0] * len(commands()))
        profiles = self.profiles()
        self.assertEqual(sorted(record["server"] for record in profiles.values()),
                         sorted(f"https://{host}.localhost:{self.port}" for host in self.hosts))
        self.assertEqual(len(profiles), 10)
        self.assertEqual(self.settings("group.Q7X2M9K4TA.zarnactions")["currentServer"], "Basel")
        before, asked = self.stored(), self.asked()
        self.assertGreaterEqual(asked, 10)
        # Nothing is asked of the store of secrets either that would have to be right.
        self.vault("echo wrong")
        self.assertEqual(self.run_page(), [0] * len(commands()))
        self.assertEqual(self.stored(), before)
        self.assertEqual(self.asked(), asked)

    def test_a_server_that_cannot_be_reached_is_added_by_a_later_run(self):
        *before, loop, _ = self.run_page(unreachable="bsl")
        self.assertEqual((before, loop), ([0, 0], NOT_REACHABLE))
        self.assertEqual(len(self.profiles()), 9)
        self.assertEqual(self.run_page(), [0] * len(commands()))
        self.assertEqual(len(self.profiles()), 10)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
