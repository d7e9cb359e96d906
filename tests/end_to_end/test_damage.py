# SPDX-License-Identifier: MIT
"""Damaged files: the program starts, says so in one line a file, and keeps what it found beside the new one."""

import datetime
import glob
import os
import re
import subprocess
import unittest

from screen import wait_for
from world import (ACTIONS_SUITE, SHARED_SUITE, STANDARD, DemoServer, WorldTest, built, config_folder,
                   settings, write_settings)

FILE_CHOSEN = ("zarn-actions: keychain: no keyring service is used: items are kept in an encrypted file that is "
               "protected by file permissions")
HOST = "127.0.0.1"
# Cut in the middle, not a property list at all, nested without end, and empty.
DAMAGES = (b'<?xml version="1.0"?><plist version="1.0"><dict><key>username</key><str', b"\0\xff" * 40,
           b"<plist>" + b"<array>" * 5000, b"")


def read(path):
    with open(path, "rb") as file:
        return file.read()


def put(path, contents):
    with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "wb") as file:
        file.write(contents)


def copies(path):
    return glob.glob(glob.escape(path) + ".damaged-*")


class Damage(WorldTest):
    def setUp(self):
        super().setUp()
        self.forget_keychain()
        self.server = self.start_server()
        self.keychain = os.path.join(os.environ["XDG_DATA_HOME"], "zarn-actions", "keychain")
        self.key = os.path.join(os.environ["XDG_STATE_HOME"], "zarn-actions", "keychain.key")

    @staticmethod
    def forget_keychain():
        for name in ("XDG_DATA_HOME", "XDG_STATE_HOME"):
            subprocess.run(["rm", "-rf", os.path.join(os.environ[name], "zarn-actions")], check=True)

    def store(self):
        """What an earlier run left: a profile and its secret."""
        write_settings(STANDARD, {"agreedToTermsOfUse": True, "saveCreds": 1})
        write_settings(SHARED_SUITE, {"serversDict": {
            "Kept": {"server": self.server.url, "date": datetime.datetime(2025, 1, 1)}}})
        write_settings(ACTIONS_SUITE, {
            "currentServer": "Kept", "username": DemoServer.USER, "hideCreds": 1, "useUsername": 1})
        self.run_keychain_writer(f"add,ZPMA-{HOST},{DemoServer.USER},{DemoServer.PASSWORD}")

    @staticmethod
    def run_keychain_writer(operation):
        done = subprocess.run([built("keychain_probe"), "file", operation], capture_output=True, text=True,
                              check=True, timeout=60)
        assert done.stdout.split()[1] == "0", done.stdout

    def start(self):
        self.program = self.start_program("--keychain=file", server=self.server).wait_for_window()
        self.screen = self.program.screen
        # The keychain is opened behind the first paint.
        wait_for(lambda: FILE_CHOSEN in self.program.errors(), "the keychain file to be chosen")

    def end(self):
        self.program.process.terminate()
        self.assertEqual(self.program.ended(), 0)
        return self.program.errors().splitlines()

    def password_length(self):
        return self.screen.control("password text", "Password:").get_text_iface().get_character_count()

    def shows_the_stored_profile(self):
        self.assertEqual(self.screen.choice(), "Kept")
        self.assertEqual(self.screen.text("Server URL:"), self.server.url)
        wait_for(lambda: self.password_length() == len(DemoServer.PASSWORD), "the stored password")

    def assert_kept(self, path, contents, line, pattern):
        """One copy with these bytes, and a line that names both."""
        kept = copies(path)
        self.assertEqual(len(kept), 1, kept)
        self.assertRegex(kept[0], r"\.damaged-\d{8}T\d{6}Z\Z")
        self.assertEqual(read(kept[0]), contents)
        self.assertEqual(os.stat(kept[0]).st_mode & 0o777, 0o600)
        self.assertRegex(line, pattern.format(file=re.escape(path), copy=re.escape(kept[0])))

    def check_settings(self, domain, look, forgotten=()):
        count = 0
        for damage in DAMAGES:
            with self.subTest(damage=damage[:20]):
                self.clear_world()
                self.forget_keychain()
                self.store()
                others = {name: settings(name) for name in (STANDARD, SHARED_SUITE, ACTIONS_SUITE) if name != domain}
                path = os.path.join(config_folder(), domain + ".plist")
                put(path, damage)
                self.start()
                look()
                lines = self.end()
                self.assertEqual(len(lines), 2, lines)
                self.assertEqual(lines.count(FILE_CHOSEN), 1)
                lines.remove(FILE_CHOSEN)
                self.assert_kept(path, damage, lines[0],
                                 r"\Azarn-actions: damaged settings \(.+\) read as empty: {file} is kept as {copy}\Z")
                # Nothing that was not damaged is lost.
                for name, before in others.items():
                    before = {key: value for key, value in before.items() if key not in forgotten}
                    self.assertEqual({key: settings(name).get(key) for key in before}, before, name)
                self.assertTrue(os.path.exists(self.keychain))
                # The next start finds the copy and makes no other.
                self.start()
                self.end()
                self.assertEqual(len(copies(path)), 1)
                count += 1
        print(f"{count} damaged settings files ({domain}): started, kept and reported in one line each")

    def test_damaged_standard_settings(self):
        def look():
            # The agreement is forgotten, so it is asked for again; the profile is behind it.
            self.screen.press("Accept")
            wait_for(lambda: not self.screen.find("push button", "Accept"), "the terms of use to close")
            self.assertEqual(self.screen.choice(), "Kept")

        self.check_settings(STANDARD, look)

    def test_damaged_shared_settings(self):
        # Without profiles none is the current one.
        self.check_settings(SHARED_SUITE, lambda: self.screen.control("push button", "Add"), ("currentServer",))

    def test_damaged_settings_of_the_actions(self):
        self.check_settings(ACTIONS_SUITE, lambda: self.assertIn("Kept", self.screen.choices()))

    def set_again(self):
        self.screen.press("Set")
        self.assertEqual(self.screen.alert().texts, ["Kept was successfully set"])
        self.screen.alert().press("OK")

    def start_without_password(self):
        """The program works on: the profile is there, and what is typed anew is proved."""
        self.start()
        self.assertEqual(self.screen.text("Server URL:"), self.server.url)
        self.assertEqual(self.password_length(), 0)
        self.screen.fill("Password:", DemoServer.PASSWORD, role="password text")
        self.set_again()

    def test_a_file_that_is_no_keychain_is_kept_beside_the_new_one(self):
        self.store()
        key = read(self.key)
        damaged = b"X" + read(self.keychain)[1:]
        put(self.keychain, damaged)
        self.start_without_password()
        lines = self.end()
        self.assertEqual(lines[:1], [FILE_CHOSEN])
        self.assertEqual(len(lines), 2, lines)
        self.assert_kept(self.keychain, damaged, lines[1],
                         r"\Azarn-actions: keychain: the keychain file is damaged and reads as empty "
                         r"\({file} is kept as {copy}\)\Z")
        self.assertEqual(read(self.key), key)
        self.start()
        self.shows_the_stored_profile()
        self.assertEqual(self.end(), [FILE_CHOSEN])

    def test_a_keychain_file_that_was_changed_is_left_untouched(self):
        self.store()
        key, whole = read(self.key), read(self.keychain)
        # A byte of the tag, one of the items, one of the header, and the end missing.
        changed = (whole[:-1] + bytes([whole[-1] ^ 1]), whole[:60] + bytes([whole[60] ^ 128]) + whole[61:],
                   whole[:16] + bytes([whole[16] ^ 4]) + whole[17:], whole[:-1])
        for damaged in changed:
            put(self.keychain, damaged)
            self.start_without_password()
            self.assertEqual(self.end(), [
                FILE_CHOSEN, "zarn-actions: keychain: the keychain file was changed by someone else or belongs to "
                f"another key; it is left untouched ({self.keychain})"])
            self.assertEqual(read(self.keychain), damaged)
            self.assertEqual(read(self.key), key)
            self.assertEqual(copies(self.keychain) + copies(self.key), [])
        print(f"{len(changed)} changed keychain files: started, left untouched and reported in one line each")
        # With the file repaired everything is there again.
        put(self.keychain, whole)
        self.start()
        self.shows_the_stored_profile()
        self.assertEqual(self.end(), [FILE_CHOSEN])


if __name__ == "__main__":
    unittest.main()
