# SPDX-License-Identifier: MIT
"""The window beside a keyring service that is silent, locked or dies: it answers all the while, and waits end.

Needs a desktop without a keyring service of its own.
"""

import base64
import datetime
import os
import subprocess
import time
import unittest

from answers import LIMIT, Answers
from screen import SLOWNESS, keys, type_text, wait_for
from world import ACTIONS_SUITE, SHARED_SUITE, STANDARD, WorldTest, write_settings

STAND_IN = os.path.join(os.path.dirname(os.path.realpath(__file__)), "../support/hostile_keyring")
SECRET = "geheim"
# How long a call of the keychain may take.
ANSWER_LIMIT = 10 * max(1, SLOWNESS / 2)
SILENT = "zarn-actions: keychain: the keyring service does not answer\n"
LOCKED = "zarn-actions: keychain: the keyring is locked; waiting for its unlock prompt\n"
DISMISSED = "zarn-actions: keychain: the keyring's unlock prompt was dismissed\n"


class Keyring(WorldTest):
    def clear_world(self):
        self.clear_files()  # Each keyring service begins anew.

    def setUp(self):
        super().setUp()
        # The stand-ins hold one item, of "admin" on "host".
        write_settings(STANDARD, {"agreedToTermsOfUse": True})
        write_settings(SHARED_SUITE, {"serversDict": {
            "First": {"server": "https://first.example", "date": datetime.datetime(2025, 1, 1)},
            "Second": {"server": "https://host", "date": datetime.datetime(2025, 1, 2)}}})
        write_settings(ACTIONS_SUITE, {"currentServer": "First", "username": "admin", "hideCreds": 1, "useUsername": 1})
        self.service = None

    def serve(self, mode):
        """Puts a keyring service of this kind in the place of the one before."""
        if self.service:
            self.service.kill()
            self.service.wait()
        self.service = subprocess.Popen([STAND_IN, mode], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(self.service.stdout.close)
        self.addCleanup(self.service.wait)
        self.addCleanup(self.service.kill)
        self.assertEqual(self.service.stdout.readline(), "ready\n")

    def start(self, server=None):
        self.program = self.start_program("--keychain=secret-service", server=server).wait_for_window()
        self.screen = self.program.screen
        self.answers = Answers(self, self.program)

    def password_length(self):
        return self.screen.control("password text", "Password:").get_text_iface().get_character_count()

    def choose_and_wait(self, title):
        """Chooses a profile and presses Tab; the key is heard once the keychain has answered. Answers the seconds."""
        self.screen.choose(title)
        start = time.monotonic()
        wait_for(lambda: self.screen.choice() == title, "the choice")
        # Keys wait in the window while it waits for the keychain.
        keys("Tab")
        wait_for(lambda: self.screen.focused() not in (None, ("combo box", title)), "the end of the call", 30)
        return time.monotonic() - start

    def check(self, mode, errors, password=0):
        """A look-up while the service is so; then one while it behaves."""
        self.serve("plain")
        self.start()
        self.serve(mode)
        self.answers.take()
        took = self.choose_and_wait("Second")
        self.assertLess(self.answers.take(), LIMIT)
        self.assertLess(took, ANSWER_LIMIT)
        self.assertEqual(self.password_length(), password)
        print(f"keyring {mode}: the call took {took:.1f} s; {self.answers}")
        self.assertEqual(self.program.errors(), errors)
        # The window works afterwards, and so does the keyring once it is back.
        self.serve("read-only")
        self.choose_and_wait("First")
        self.assertEqual(self.password_length(), 0)
        self.choose_and_wait("Second")
        wait_for(lambda: self.password_length() == len(SECRET), "the stored password")
        self.screen.menu("Zarn Actions", "About Zarn Actions")
        wait_for(lambda: "About" in self.screen.window_titles(), "the About window")
        self.screen.menu("Zarn Actions", "Quit Zarn Actions")
        self.assertEqual(self.program.ended(), 0, self.program.errors())
        self.assertEqual(self.program.errors(), errors)
        return took

    def test_silent(self):
        self.assertGreater(self.check("silent", SILENT), 5)

    def test_silent_when_it_is_to_unlock(self):
        self.assertGreater(self.check("silent-unlock", LOCKED + SILENT), 5)

    def test_locked_with_a_prompt_that_is_never_answered(self):
        self.assertGreater(self.check("unanswered", LOCKED), 5)

    def test_locked_with_a_prompt_that_is_answered(self):
        self.assertGreater(self.check("answered=3", LOCKED, password=len(SECRET)), 2)

    def test_locked_with_a_prompt_that_is_dismissed(self):
        self.check("dismissed", LOCKED + DISMISSED)

    def test_dies_while_it_searches(self):
        self.check("dies=SearchItems", SILENT)

    def test_dies_while_it_gives_the_secret(self):
        self.check("dies=GetSecret", SILENT)

    def test_a_press_during_the_wait_sends_no_password_of_the_server_before(self):
        server = self.start_server()
        write_settings(SHARED_SUITE, {"serversDict": {
            "First": {"server": "https://first.example", "date": datetime.datetime(2025, 1, 1)},
            "Second": {"server": server.url, "date": datetime.datetime(2025, 1, 2)}}})
        self.serve("plain")
        self.start(server)
        self.screen.focus("password text", "Password:")
        # Keys wait for the look-up of the start, which empties the field.
        type_text("password-of-first")
        wait_for(lambda: self.password_length() == len("password-of-first"), "the typed password")
        self.serve("silent")
        self.screen.choose("Second")
        wait_for(lambda: self.screen.text("Server URL:") == server.url, "the other server's address")
        # Still there until the call ends: this is what must not be sent.
        self.assertEqual(self.password_length(), len("password-of-first"))
        # Assistive technology is served while keys wait.
        for _ in range(2):
            self.screen.press("Set")
        self.assertEqual(self.program.errors(), "")
        alert = self.screen.alert(30)
        self.assertEqual(self.program.errors(), SILENT)
        self.assertEqual(alert.texts[0], "Failed to authenticate. HTTP status code: 401")
        request, = server.requests()
        nobody = base64.b64encode(b"admin:").decode()
        self.assertEqual(dict(request["headers"])["Authorization"], "Basic " + nobody)
        alert.press("OK")
        wait_for(lambda: self.screen.is_button_enabled("Set"), "the end of the validation")
        self.assertEqual(len(server.requests()), 1)

    def test_silent_from_the_start(self):
        self.serve("silent")
        start = time.monotonic()
        self.start()
        self.assertLess(time.monotonic() - start, 5 * SLOWNESS)
        wait_for(lambda: SILENT in self.program.errors(), "the keyring to be given up", 30)
        wait_for(lambda: self.screen.choice() == "First", "the profile")
        self.assertLess(self.answers.take(), LIMIT)
        print(f"keyring silent from the start: {self.answers}")
        self.screen.menu("Zarn Actions", "Quit Zarn Actions")
        self.assertEqual(self.program.ended(), 0, self.program.errors())


if __name__ == "__main__":
    unittest.main()
