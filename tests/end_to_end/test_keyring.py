# SPDX-License-Identifier: MIT
"""The window beside a keyring service that is silent, locked or dies: it answers all the while, waits end, and
nothing is lost while somebody types the keyring's password.

Needs a desktop without a keyring service of its own.
"""

import base64
import datetime
import os
import signal
import subprocess
import tempfile
import time
import unittest

from answers import LIMIT, Answers
from desktop_windows import windows
from screen import SLOWNESS, activate, keys, type_text, wait_for
from world import (ACTIONS_SUITE, SHARED_SUITE, STANDARD, DemoServer, WorldTest, log_messages, settings,
                   write_settings)

STAND_IN = os.path.join(os.path.dirname(os.path.realpath(__file__)), "../support/hostile_keyring")
SECRET = "geheim"
# How long a call of the keychain may take.
ANSWER_LIMIT = 10 * max(1, SLOWNESS / 2)
SILENT = "zarn-actions: keychain: the keyring service does not answer\n"
LOCKED = "zarn-actions: keychain: the keyring is locked; waiting for its unlock prompt\n"
DISMISSED = "zarn-actions: keychain: the keyring's unlock prompt was dismissed\n"


WAITING = "Waiting for the keyring to be unlocked"
REFUSED = "The keyring did not take the secret: "
NOT_ANSWERING = "The keyring is locked or does not answer"


class KeyringWorld(WorldTest):
    """A window with two profiles, and keyring services that take one another's place."""

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
        self.calls = tempfile.TemporaryFile("w+")
        self.addCleanup(self.calls.close)
        self.service = subprocess.Popen([STAND_IN, mode], stdout=subprocess.PIPE, stderr=self.calls, text=True)
        self.addCleanup(self.service.stdout.close)
        self.addCleanup(self.service.wait)
        self.addCleanup(self.service.kill)
        self.assertEqual(self.service.stdout.readline(), "ready\n")

    def start(self, server=None):
        self.program = self.start_program("--keychain=secret-service", server=server).wait_for_window()
        self.screen = self.program.screen
        self.answers = Answers(self, self.program)

    def called(self):
        """The names of the calls that the service has had, and "stored", SERVICE for each new item."""
        with open(f"/proc/self/fd/{self.calls.fileno()}", encoding="utf-8") as own:
            return own.read().split()

    def stored(self):
        words = self.called()
        return [words[i + 1] for i, word in enumerate(words) if word == "stored"]

    def status(self):
        """What the status line says."""
        return self.screen.named("notification")

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


class Keyring(KeyringWorld):
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
        self.assertEqual(self.status(), "")
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


class Unlocking(KeyringWorld):
    """The keyring is locked, and its prompt is open for longer than a silent service would be waited for."""

    def begin_look_up(self, mode="unanswered"):
        """Chooses a profile whose look-up opens the prompt, and waits until the status line says so."""
        self.serve("plain")
        self.start()
        self.serve(mode)
        self.screen.choose("Second")
        wait_for(lambda: self.status() == WAITING, "the status line to say why the window waits")

    def end_look_up(self):
        """Presses Tab, which the window hears once the look-up has ended."""
        keys("Tab")
        wait_for(lambda: self.screen.focused() not in (None, ("combo box", "Second")), "the end of the look-up", 30)

    def prove_credentials(self, mode):
        """Has a server's credentials proved while the keyring service is so; the alert that says that they are."""
        self.server = self.start_server()
        write_settings(SHARED_SUITE, {"serversDict": {
            "Mine": {"server": self.server.url, "date": datetime.datetime(2025, 1, 1)}}})
        write_settings(ACTIONS_SUITE, {**settings(ACTIONS_SUITE), "currentServer": "Mine",
                                       "username": DemoServer.USER})
        self.serve("plain")
        self.start(self.server)
        self.screen.fill("Password:", DemoServer.PASSWORD, role="password text")
        self.serve(mode)
        self.screen.press("Set")
        alert = self.screen.alert()
        self.assertEqual(alert.texts, ["Mine was successfully set"])
        return alert

    def assert_ended(self, seconds, errors):
        begin = time.monotonic()
        self.assertEqual(self.program.ended(), 0)
        self.assertLess(time.monotonic() - begin, seconds * SLOWNESS)
        self.assertEqual(self.program.errors(), errors)

    def test_a_slow_typist_loses_nothing_and_the_end_of_the_program_waits(self):
        alert = self.prove_credentials("answered=30")
        begin = time.monotonic()
        wait_for(lambda: self.status() == WAITING, "the status line to say what is waited for")
        wait_for(lambda: self.screen.focused() == ("push button", "OK"), "the alert to have the keyboard")
        # "Quit". From then on nobody answers assistive technology.
        keys("v")
        wait_for(lambda: not windows(self.program.process.pid), "the window to go")
        self.assertIsNone(self.program.process.poll())
        second = self.start_program()
        self.assertEqual((second.ended(25), second.output(), second.errors()), (
            1, "", "zarn-actions: another copy is storing secrets (is the keyring's unlock prompt open?), or "
            "zarn-profile is changing the profiles: try again\n"))
        self.assertEqual(self.program.ended(40), 0)
        print(f"keyring answered=30: the program ended after {time.monotonic() - begin:.1f} s")
        self.assertEqual(self.stored(), ["ZPMA-127.0.0.1", "ZPMA-zortcuts"])
        self.assertEqual(self.called().count("Prompt"), 1)
        self.assertEqual([line for line in log_messages() if "failed" in line], [])
        self.assertEqual(self.program.errors(), LOCKED)

    def test_writes_wait_while_the_window_is_used(self):
        alert = self.prove_credentials("answered=12")
        alert.press("OK")
        wait_for(lambda: self.status() == WAITING, "the status line to say what is waited for")
        self.assertLess(self.answers.take(), LIMIT)
        wait_for(lambda: self.stored() == ["ZPMA-127.0.0.1", "ZPMA-zortcuts"], "both items", 40)
        wait_for(lambda: self.status() == "", "the status line to be empty")
        self.assertLess(self.answers.take(), LIMIT)
        self.assertEqual([line for line in log_messages() if "failed" in line], [])

    def test_a_look_up_waits_for_the_prompt(self):
        self.begin_look_up("answered=12")
        begin = time.monotonic()
        self.answers.take()
        self.end_look_up()
        took = time.monotonic() - begin
        self.assertLess(self.answers.take(), LIMIT)
        print(f"keyring answered=12: the look-up took {took:.1f} s; {self.answers}")
        self.assertGreater(took, 10)
        self.assertEqual(self.password_length(), len(SECRET))
        self.assertEqual(self.status(), "")
        self.assertEqual(self.program.errors(), LOCKED)

    def test_esc_stops_the_waiting_and_not_the_prompt(self):
        self.begin_look_up()
        keys("Escape")
        begin = time.monotonic()
        self.end_look_up()
        self.assertLess(time.monotonic() - begin, 4 * SLOWNESS)
        self.assertEqual(self.password_length(), 0)
        wait_for(lambda: self.status() == "", "the status line to be empty")
        # The next look-up waits for the same prompt.
        self.screen.focus("text", "Username:")
        keys("Tab")
        wait_for(lambda: self.status() == WAITING, "the status line to say why the window waits")
        keys("Escape")
        wait_for(lambda: self.status() == "", "the status line to be empty")
        self.assertEqual(self.called().count("Prompt"), 1)
        self.assertEqual(self.called().count("Dismiss"), 0)
        self.assertEqual(self.program.errors(), LOCKED)

    def test_what_is_typed_during_the_wait_comes_afterwards_and_in_order(self):
        self.begin_look_up("answered=12")
        self.screen.focus("password text", "Password:")
        keys("End")
        type_text("and more")
        keys("BackSpace")
        wait_for(lambda: self.password_length() == len(SECRET + "and mor"), "what was typed", 30)

    def test_closing_the_window_during_a_look_up_ends_the_program(self):
        self.begin_look_up()
        activate(self.screen.x_window("Zarn Actions"))
        keys("alt+F4")
        self.assert_ended(4, LOCKED)

    def test_ctrl_q_during_a_look_up_ends_the_program(self):
        self.begin_look_up()
        activate(self.screen.x_window("Zarn Actions"))
        keys("ctrl+q")
        self.assert_ended(4, LOCKED)

    def test_a_signal_during_a_look_up_ends_the_program(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number):
                self.begin_look_up()
                self.program.process.send_signal(number)
                self.assert_ended(4, LOCKED)

    def test_a_signal_ends_the_program_while_a_silent_service_is_asked(self):
        self.serve("plain")
        self.start()
        self.serve("silent")
        self.screen.choose("Second")
        wait_for(lambda: self.screen.choice() == "Second" and self.called(), "the service to be asked")
        self.program.process.send_signal(signal.SIGTERM)
        self.assert_ended(4, "")

    def test_a_write_that_a_silent_service_swallows_is_in_the_log_when_the_program_ends(self):
        alert = self.prove_credentials("silent")
        begin = time.monotonic()
        alert.press("Quit")
        self.assertEqual(self.program.ended(), 0)
        self.assertLess(time.monotonic() - begin, 12 * SLOWNESS)
        self.assertEqual([line for line in log_messages() if "failed" in line],
                         [f"Write failed for service {service}, account {account}: {NOT_ANSWERING}."
                          for service, account in (("127.0.0.1", DemoServer.USER), ("ZPMA-zortcuts", "zortcuts"))])
        self.assertEqual(self.program.errors(), SILENT)

    def test_a_secret_that_was_not_stored_is_in_the_status_line(self):
        alert = self.prove_credentials("read-only")
        cause = REFUSED + "The keychain cannot be changed."
        alert.press("OK")
        wait_for(lambda: self.status() == cause, "the status line to say that nothing was stored")
        self.assertEqual(self.program.output().count(f"[credentials.save] {cause}\n"), 2)
        self.assertEqual([line for line in log_messages() if "failed" in line],
                         [f"Write failed for service {service}, account {account}: The keychain cannot be changed."
                          for service, account in (("127.0.0.1", DemoServer.USER), ("ZPMA-zortcuts", "zortcuts"))])
        self.assertNotIn(DemoServer.PASSWORD, self.program.output())


if __name__ == "__main__":
    unittest.main()
