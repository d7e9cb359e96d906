# SPDX-License-Identifier: MIT
"""zarn-defaults, and the reader of docs/for-actions.md on what our own programs wrote."""

import datetime
import json
import os
import plistlib
import re
import subprocess
import sys
import tempfile
import unittest

BUILD, SOURCE = sys.argv.pop(1), sys.argv.pop(1)
STANDARD = "com.zarn.ZarnActions"
SHARED = "group.R3V8N1P6WB.zarnie.SharedZPMA"


class Defaults(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.environment = {"HOME": self.folder, "XDG_CONFIG_HOME": self.folder, "XDG_DATA_HOME": self.folder + "/data",
                            "XDG_STATE_HOME": self.folder + "/state", "PATH": BUILD + ":/usr/bin:/bin"}

    def run_tool(self, *words):
        return subprocess.run([os.path.join(BUILD, "zarn-defaults"), *words], capture_output=True, text=True,
                              env=self.environment, check=False, timeout=30)

    def assert_run(self, words, status, output=""):
        result = self.run_tool(*words)
        self.assertEqual((result.returncode, result.stdout), (status, output), result.stderr)
        return result

    def path(self, domain):
        return os.path.join(self.folder, "zarn-actions", domain + ".plist")

    def stored(self, domain):
        with open(self.path(domain), "rb") as file:
            return plistlib.load(file)

    def test_every_type_goes_in_and_comes_out(self):
        rows = [("text", "-string", "a & <b> ä", "a & <b> ä\n"), ("one", "-int", "-7", "-7\n"),
                ("real", "-float", "0.5", "0.5\n"), ("yes", "-bool", "true", "true\n"),
                ("when", "-date", "2026-01-31T12:00:00Z", "2026-01-31T12:00:00Z\n")]
        for key, kind, value, shown in rows:
            self.assert_run(["write", STANDARD, key, kind, value], 0)
            self.assert_run(["read", STANDARD, key], 0, shown)
        self.assert_run(["write", STANDARD, "bytes", "-data", "00ff10"], 0)
        stored = self.stored(STANDARD)
        self.assertEqual(stored["bytes"], b"\x00\xff\x10")
        self.assertEqual(stored["text"], "a & <b> ä")
        self.assertEqual((stored["one"], stored["real"], stored["yes"]), (-7, 0.5, True))
        self.assertEqual(stored["when"].isoformat(), "2026-01-31T12:00:00")
        self.assert_run(["list", STANDARD], 0, "bytes\none\nreal\ntext\nwhen\nyes\n")
        self.assertEqual(plistlib.loads(self.run_tool("read", STANDARD).stdout.encode()), stored)

    def test_json_is_what_is_stored(self):
        os.makedirs(os.path.dirname(self.path(STANDARD)))
        stored = {"text": 'a "quoted"\\ \u00e4\n', "one": -7, "real": 0.5, "yes": True, "none": [], "bytes": b"\0\xff\x10",
                  "when": datetime.datetime(2026, 1, 31, 12), "deep": {"k": [b"", {"when": datetime.datetime(1970, 1, 1)}]}}
        with open(os.open(self.path(STANDARD), os.O_WRONLY | os.O_CREAT, 0o600), "wb") as file:
            plistlib.dump(stored, file)
        expected = {**stored, "bytes": "AP8Q", "when": "2026-01-31T12:00:00Z",
                    "deep": {"k": ["", {"when": "1970-01-01T00:00:00Z"}]}}
        for words in (["--json", "read"], ["read", "--json"]):
            result = self.run_tool(*words, STANDARD)
            self.assertEqual((result.returncode, json.loads(result.stdout), result.stderr), (0, expected, ""))
        for key, value in expected.items():
            result = self.run_tool("--json", "read", STANDARD, key)
            self.assertEqual((result.returncode, json.loads(result.stdout)), (0, value))
            self.assertTrue(result.stdout.endswith("\n") and not result.stdout.endswith("\n\n"), result.stdout)
        self.assertEqual(json.loads(self.run_tool("list", "--json", STANDARD).stdout), sorted(stored))
        self.assertEqual(json.loads(self.run_tool("list", "--json", SHARED).stdout), [])
        self.assertEqual(json.loads(self.run_tool("read", "--json", SHARED).stdout), {})
        self.assert_run(["--json", "read", STANDARD, "absent"], 1)

    def test_what_json_cannot_hold_is_an_error_and_prints_nothing(self):
        self.assert_run(["write", STANDARD, "k", "-float", "inf"], 0)
        self.assertEqual(self.assert_run(["--json", "read", STANDARD], 3).stderr.count("\n"), 1)

    def test_a_value_may_look_like_the_option(self):
        self.assert_run(["write", STANDARD, "k", "-string", "--json"], 0)
        self.assert_run(["read", STANDARD, "k"], 0, "--json\n")

    def test_a_change_leaves_what_it_does_not_know(self):
        os.makedirs(os.path.dirname(self.path(SHARED)))
        known = {"serversDict": {"A": {"server": "https://a.example", "more": [1, {"x": b"y"}]}}, "future": 2**63}
        with open(self.path(SHARED), "wb") as file:
            plistlib.dump(known, file)
        self.assert_run(["write", SHARED, "added", "-int", "1"], 0)
        self.assertEqual(self.stored(SHARED), {**known, "added": 1})
        self.assert_run(["delete", SHARED, "added"], 0)
        self.assertEqual(self.stored(SHARED), known)

    def test_what_is_not_there(self):
        self.assert_run(["read", STANDARD, "absent"], 1)
        self.assert_run(["delete", STANDARD, "absent"], 0)
        self.assert_run(["list", STANDARD], 0)
        self.assertFalse(os.path.exists(self.path(STANDARD)))

    def test_wrong_usage_is_refused(self):
        for words in ([], ["read"], ["list", "../evil"], ["list", "a/b"], ["write", STANDARD, "k", "-int", "x"],
                      ["write", STANDARD, "k", "-bool", "maybe"], ["write", STANDARD, "k", "-data", "0"],
                      ["write", STANDARD, "k", "-kind", "v"], ["write", STANDARD, "k", "v"], ["frob", STANDARD],
                      ["--json", "delete", STANDARD, "k"], ["--json", "write", STANDARD, "k", "-int", "1"],
                      ["write", "--json", STANDARD, "k", "-int", "1"], ["--json"], ["-V", "list", STANDARD]):
            result = self.run_tool(*words)
            self.assertEqual((result.returncode, result.stdout), (2, ""), words)
            self.assertEqual(len(result.stderr.splitlines()), 1, words)

    def test_short_options_are_those_of_their_long_forms(self):
        self.assertEqual(self.run_tool("-h").stdout, self.run_tool("--help").stdout)
        version = self.run_tool("--version")
        self.assertEqual((version.returncode, version.stderr), (0, ""))
        self.assertRegex(version.stdout, r"\Azarn-defaults \d+\.\d+\S* \(\d+\)\n\Z")
        self.assertEqual(self.run_tool("-V").stdout, version.stdout)

    def test_standard_output_that_cannot_be_written_is_reported(self):
        self.assert_run(["write", STANDARD, "k", "-int", "1"], 0)
        for words in (["--version"], ["--help"], ["read", STANDARD], ["list", STANDARD]):
            with open("/dev/full", "w", encoding="ascii") as full:
                done = subprocess.run([os.path.join(BUILD, "zarn-defaults"), *words], stdout=full, text=True,
                                      stderr=subprocess.PIPE, env=self.environment, check=False, timeout=30)
            self.assertEqual((done.returncode, done.stderr),
                             (3, "zarn-defaults: standard output cannot be written\n"), words)

    def test_files_are_private_whatever_the_umask(self):
        before = os.umask(0)
        self.addCleanup(os.umask, before)
        self.assert_run(["write", STANDARD, "k", "-int", "1"], 0)
        self.assertEqual(os.stat(self.path(STANDARD)).st_mode & 0o777, 0o600)
        self.assertEqual(os.stat(os.path.dirname(self.path(STANDARD))).st_mode & 0o777, 0o700)

    def test_a_damaged_file_is_kept_beside_the_new_one(self):
        os.makedirs(os.path.dirname(self.path(STANDARD)))
        with open(os.open(self.path(STANDARD), os.O_WRONLY | os.O_CREAT, 0o600), "w", encoding="utf-8") as file:
            file.write("<plist><dict><key>half")
        result = self.run_tool("write", STANDARD, "k", "-int", "1")
        self.assertEqual(result.returncode, 0)
        kept = [name for name in os.listdir(os.path.dirname(self.path(STANDARD))) if ".damaged-" in name]
        self.assertEqual(len(kept), 1)
        self.assertIn(kept[0], result.stderr)
        self.assertEqual(self.stored(STANDARD), {"k": 1})

    def test_the_documented_reader_reads_what_was_written(self):
        with open(os.path.join(SOURCE, "docs/for-actions.md"), encoding="utf-8") as file:
            reader = re.search(r"```python\n(.*?)```", file.read(), re.DOTALL).group(1)
        os.makedirs(os.path.dirname(self.path(SHARED)))
        with open(os.open(self.path(SHARED), os.O_WRONLY | os.O_CREAT, 0o600), "wb") as file:
            plistlib.dump({"serversDict": {}}, file)
        space = {"__name__": "reader"}
        os.environ.update(self.environment)
        exec(compile(reader, "reader", "exec"), space)  # pylint: disable=exec-used
        self.assertEqual(space["profiles"](), {})
        self.assertEqual(space["settings"]("absent"), {})
        match = space["PROFILE"].fullmatch(
            '{"server":"https://a", "username":"u\\"x", "password":"p", "username":"q", "useApiClient":"0"}')
        self.assertIsNotNone(match)
        self.assertEqual(match.group(4), "0")


if __name__ == "__main__":
    unittest.main()
