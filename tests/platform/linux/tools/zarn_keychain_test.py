#!/usr/bin/python3 -sE
# SPDX-License-Identifier: MIT
"""The command-line program zarn-keychain. usage: zarn_keychain_test.py BUILD_FOLDER

Runs itself under with_desktop: once with gnome-keyring, once without any session bus.
"""

import json
import os
import pty
import subprocess
import sys
import unittest

SUPPORT = os.path.join(os.path.dirname(os.path.realpath(__file__)), "../../../support")
BUILD = ""
GROUP = "Q7X2M9K4TA.org.zarnie.zpshortcuts"
SECRET = "p\u00e4ss \"w\\rd\"\n"
FILE_LINE = ("zarn-keychain: keychain: no keyring service is used: items are kept in an encrypted "
             "file that is protected by file permissions\n")


def tool(*words, **options):
    run = subprocess.run([os.path.join(BUILD, "zarn-keychain"), *words], check=False,
                         stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)
    return run.returncode, run.stdout.decode(), run.stderr.decode()


def store(choice, service, account, secret):
    run = subprocess.run(
        [os.path.join(BUILD, "keychain_probe"), choice, f"add,{service},{account},{secret}"],
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True)
    assert run.stdout.startswith(b"add 0 "), run.stdout


class AnyStore:
    """What holds whichever store is used."""

    reported = ""
    choice = "automatic"

    def setUp(self):
        store(self.choice, "ZPMA-host", "admin", SECRET)
        store(self.choice, "ZPMA-host", "second", "other")
        store(self.choice, "odd\tservice\\", "", "x")

    def test_list_prints_names_and_no_secret(self):
        code, out, err = tool("list")
        self.assertEqual((code, err), (0, self.reported))
        self.assertEqual(sorted(out.splitlines()), [
            f"ZPMA-host\tadmin\t{GROUP}", f"ZPMA-host\tsecond\t{GROUP}",
            f"odd\\x09service\\x5C\t\t{GROUP}"])

    def test_list_prints_the_same_as_json(self):
        for words in (["--json", "list"], ["list", "--json"]):
            code, out, err = tool(*words)
            self.assertEqual((code, err), (0, self.reported))
            self.assertEqual(sorted(json.loads(out), key=lambda item: item["service"] + item["account"]), [
                {"service": "ZPMA-host", "account": "admin", "accessGroup": GROUP},
                {"service": "ZPMA-host", "account": "second", "accessGroup": GROUP},
                {"service": "odd\tservice\\", "account": "", "accessGroup": GROUP}])

    def test_show_writes_the_secret_byte_for_byte(self):
        self.assertEqual(tool("show", "ZPMA-host", "admin"), (0, SECRET, self.reported))
        self.assertEqual(tool("show", "ZPMA-host", "second"), (0, "other", self.reported))

    def test_show_without_account_takes_the_item_first_written(self):
        self.assertEqual(tool("show", "ZPMA-host"), (0, SECRET, self.reported))

    def test_show_of_nothing_exits_1(self):
        for words in (["nobody"], ["ZPMA-host", "nobody"], ["ZPMA-hos"]):
            code, out, err = tool("show", *words)
            self.assertEqual((code, out), (1, ""))
            self.assertEqual(
                err, self.reported + "zarn-keychain: The item could not be found in the keychain\n")

    def test_another_access_group_is_another_keychain(self):
        self.assertEqual(tool("--access-group=other", "show", "ZPMA-host")[0], 1)

    def test_show_is_refused_on_a_terminal_unless_forced(self):
        for force, expected in (([], (2, b"")), (["--force"], (0, SECRET.encode()))):
            leader, follower = pty.openpty()
            run = subprocess.run(
                [os.path.join(BUILD, "zarn-keychain"), *force, "show", "ZPMA-host"],
                stdout=follower, stderr=subprocess.PIPE, check=False)
            os.close(follower)
            try:
                seen = os.read(leader, 1000)
            except OSError:
                seen = b""
            os.close(leader)
            self.assertEqual((run.returncode, seen.replace(b"\r\n", b"\n")), expected)

    def test_wrong_usage_exits_2(self):
        for words in ([], ["list", "x"], ["show"], ["show", "a", "b", "c"], ["erase", "x"],
                      ["--keychain=other", "list"], ["--verbose", "list"],
                      ["--json", "show", "ZPMA-host"], ["--json=1", "list"]):
            code, out, err = tool(*words)
            self.assertEqual((code, out), (2, ""), words)
            self.assertEqual(err, "zarn-keychain: wrong usage; see zarn-keychain --help\n")

    def test_help_answers_on_standard_output(self):
        code, out, err = tool("--help")
        self.assertEqual((code, err), (0, ""))
        for word in ("list", "show SERVICE [ACCOUNT]", "--keychain=file", "exit status:"):
            self.assertIn(word, out)

    def test_short_options_are_those_of_their_long_forms(self):
        self.assertEqual(tool("-h"), tool("--help"))
        code, out, err = tool("-V")
        self.assertEqual((code, err), (0, ""))
        self.assertRegex(out, r"\Azarn-keychain \d+\.\d+\S* \(\d+\)\n\Z")
        self.assertEqual(tool("--version"), (code, out, err))
        self.assertEqual(tool("show", "--", "-V")[0], 1)

    def test_standard_output_that_cannot_be_written_exits_5_and_is_reported(self):
        for words in (["show", "ZPMA-host"], ["list"], ["--version"]):
            with open("/dev/full", "wb") as full:
                run = subprocess.run([os.path.join(BUILD, "zarn-keychain"), *words],
                                     stdout=full, stderr=subprocess.PIPE, check=False)
            self.assertEqual(run.returncode, 5, words)
            self.assertTrue(
                run.stderr.endswith(b"zarn-keychain: standard output cannot be written\n"), run.stderr)


class InTheKeyring(AnyStore, unittest.TestCase):
    def tearDown(self):
        subprocess.run(["secret-tool", "clear", "access-group", GROUP], check=True)

    def test_items_of_the_file_are_found_but_not_moved(self):
        store("file", "ZPMA-old", "admin", "in the file")
        self.assertEqual(tool("show", "ZPMA-old"), (0, "in the file", ""))
        self.assertIn(f"ZPMA-old\tadmin\t{GROUP}\n", tool("list")[1])
        self.assertEqual(tool("--keychain=file", "show", "ZPMA-old")[:2], (0, "in the file"))
        for name in ("XDG_DATA_HOME", "XDG_STATE_HOME"):
            subprocess.run(["rm", "-r", os.environ[name] + "/zarn-actions"], check=True)


class InTheFile(AnyStore, unittest.TestCase):
    reported = FILE_LINE

    def tearDown(self):
        for name in ("XDG_DATA_HOME", "XDG_STATE_HOME"):
            subprocess.run(["rm", "-r", os.environ[name] + "/zarn-actions"], check=True)

    def test_reading_changes_no_file(self):
        folder = os.environ["XDG_DATA_HOME"] + "/zarn-actions"
        before = {name: os.stat(f"{folder}/{name}").st_mtime_ns for name in os.listdir(folder)}
        tool("list")
        tool("show", "ZPMA-host")
        after = {name: os.stat(f"{folder}/{name}").st_mtime_ns for name in os.listdir(folder)}
        self.assertEqual(before, after)

    def test_forced_keyring_that_is_absent_exits_4(self):
        self.assertEqual(tool("--keychain=secret-service", "list")[:2], (4, ""))

    def test_keychain_with_another_key_exits_5(self):
        with open(os.environ["XDG_STATE_HOME"] + "/zarn-actions/keychain.key", "wb") as key:
            key.write(b"x" * 32)
        for words in (["list"], ["show", "ZPMA-host"]):
            self.assertEqual(tool(*words)[:2], (5, ""))


class Locked(unittest.TestCase):
    def test_locked_keyring_exits_3(self):
        self.assertEqual(tool("list")[:2], (3, ""))
        self.assertEqual(tool("show", "ZPMA-host")[:2], (3, ""))


def main():
    global BUILD
    BUILD = os.path.realpath(sys.argv[1])
    if len(sys.argv) > 2:
        suite = unittest.defaultTestLoader.loadTestsFromTestCase(globals()[sys.argv[2]])
        result = unittest.TextTestRunner(verbosity=2).run(suite)
        return 0 if result.wasSuccessful() and result.testsRun else 1
    return max(subprocess.run(
        [os.path.join(SUPPORT, "with_desktop"), "--no-x", *options, "--", sys.executable,
         os.path.realpath(__file__), BUILD, name], check=False).returncode
        for name, options in (("InTheKeyring", []), ("InTheFile", ["--no-bus"]),
                              ("Locked", ["--locked", "--password", "pw"])))


if __name__ == "__main__":
    sys.exit(main())
