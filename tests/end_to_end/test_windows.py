# SPDX-License-Identifier: MIT
"""What closes a window, which window an alert belongs to, who has the keyboard, and what a second start does.

On X11 and on Wayland, on a desktop without a keyring service of its own.
"""

import datetime
import os
import re
import subprocess
import time
import unittest

from desktop_windows import active_window, ask_to_close, wait_until_active, windows
from launcher import activation_token
from screen import ON_WAYLAND, keys, type_text, wait_for
from stand_ins import Opener
from update_page import UpdatePage
from world import SHARED_SUITE, STANDARD, VERSION, WorldTest, built, settings, write_settings

STARTS = 20 if os.environ.get("ZARN_LONG") else 5


class WindowsTest(WorldTest):
    def clear_world(self):
        self.clear_files()  # The desktop has no keyring service.

    def setUp(self):
        super().setUp()
        self.accept_terms()

    def start(self, **options):
        self.program = self.start_program(**options).wait_for_window()
        self.screen = self.program.screen
        self.screen.control("push button", "Add")

    def windows(self):
        return windows(self.program.process.pid)

    def show_about(self):
        count = len(self.windows())
        self.screen.menu("Zarn Actions", "About Zarn Actions")
        wait_for(lambda: len(self.windows()) > count, "the About window")
        return self.windows()[-1]

    def show_notice(self):
        """An alert of one button over whatever is open."""
        subprocess.run(["rm", "-rf", os.path.join(os.environ["HOME"], "Library")], check=True)
        count = len(self.windows())
        self.screen.menu("Zarn Actions", "Show Log Folder")
        wait_for(lambda: len(self.windows()) > count, "the alert")
        return self.windows()[-1]

    def go_to_another_program(self):
        ours = [window.id for window in self.windows()]
        # One that has still to get the keyboard would take it from the other program.
        wait_for(lambda: active_window() in ours, "a window of this program in front")
        if ON_WAYLAND:
            subprocess.run(["swaymsg", f"workspace empty-{time.monotonic()}"], check=True, stdout=subprocess.DEVNULL)
        else:
            foreign = subprocess.Popen([built("zarn-foreign-window"), "Other", "Other"], stdout=subprocess.PIPE)
            self.addCleanup(foreign.stdout.close)
            self.addCleanup(foreign.wait)
            self.addCleanup(foreign.terminate)
            self.assertEqual(foreign.stdout.readline(), b"shown\n")
        # For a moment no window may have it.
        wait_for(lambda: active_window() not in ours + [0], "another program in front")

    @staticmethod
    def start_again(token=None):
        """As a launcher does; `token` takes the place of the compositor's."""
        token = {"XDG_ACTIVATION_TOKEN": token or activation_token()} if ON_WAYLAND else {}
        return subprocess.run([built("zarn-actions")], capture_output=True, text=True, timeout=30, check=False,
                              env={**os.environ, **token})


class Closing(WindowsTest):
    def test_under_the_terms_nothing_closes(self):
        write_settings(STANDARD, {})
        self.program = self.start_program().wait_for_window()
        self.screen = self.program.screen
        self.screen.control("push button", "Accept")
        main, terms = wait_for(lambda: len(self.windows()) == 2 and self.windows(), "both windows")
        wait_until_active(terms)
        ask_to_close(main)
        ask_to_close(terms)
        self.screen.tab()  # The wishes came before this key.
        self.assertEqual(self.windows(), [main, terms])
        self.screen.press("Accept")
        wait_for(lambda: self.windows() == [main], "the terms to go")
        ask_to_close(main)
        self.assertEqual(self.program.ended(), 0)

    def test_under_an_alert_nothing_closes(self):
        self.start()
        main, about = self.windows()[0], self.show_about()
        self.screen.press("Add")
        alert = wait_for(lambda: len(self.windows()) == 3 and self.windows()[-1], "the alert")
        wait_until_active(alert)
        ask_to_close(main)
        ask_to_close(about)
        self.screen.tab()
        self.assertEqual(self.windows(), [main, about, alert])
        ask_to_close(alert)
        wait_for(lambda: self.windows() == [main, about], "the alert to go")
        ask_to_close(main)
        wait_for(lambda: self.windows() == [about], "the main window to go")
        self.assertIsNone(self.program.process.poll())
        ask_to_close(about)
        self.assertEqual(self.program.ended(), 0)

    def test_an_alert_under_another_one_stays_until_that_one_is_gone(self):
        page = UpdatePage()
        self.addCleanup(page.stop)
        page.publish(f"<tr><td>Current Version</td><td>{VERSION}</td></tr>")
        self.start(environment=page.environment)
        lower = self.show_notice()
        self.screen.menu("Zarn Actions", "Check for Updates…")
        upper = wait_for(lambda: len(self.windows()) == 3 and self.windows()[-1], "the second alert")
        wait_until_active(upper)
        ask_to_close(lower)
        keys("Tab")
        ask_to_close(upper)
        wait_for(lambda: upper not in self.windows(), "the second alert to go")
        self.assertIn(lower, self.windows())
        ask_to_close(lower)
        wait_for(lambda: lower not in self.windows(), "the first alert to go")
        self.assertIsNone(self.program.process.poll())

    def test_the_main_window_closes_after_the_call_of_the_keychain_that_is_under_way(self):
        keyring = subprocess.Popen(
            [os.path.join(os.path.dirname(__file__), "../support/hostile_keyring"), "silent"],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        for clean_up in (keyring.stderr.close, keyring.stdout.close, keyring.wait, keyring.kill):
            self.addCleanup(clean_up)
        self.assertEqual(keyring.stdout.readline(), "ready\n")
        write_settings(SHARED_SUITE, {"serversDict": {
            name: {"server": f"https://{name}.example", "date": datetime.datetime(2025, 1, 1)}
            for name in ("first", "second")}})
        self.program = self.start_program("--keychain=secret-service").wait_for_window()
        self.program.screen.choose("second")
        self.assertNotEqual(keyring.stderr.readline(), "")
        ask_to_close(self.windows()[0])
        self.assertEqual(self.program.ended(30), 0)


class Alerts(WindowsTest):
    def test_an_offer_that_nobody_takes_opens_nothing(self):
        page = UpdatePage()
        self.addCleanup(page.stop)
        page.publish("<tr><td>Current Version</td><td>2.0.0</td></tr>")
        opener = Opener()
        self.start(environment={**page.environment, **opener.environment()})

        def offer():
            self.screen.menu("Zarn Actions", "Check for Updates…")
            alert = wait_for(lambda: len(self.windows()) == 2 and self.windows()[-1], "the offer")
            wait_until_active(alert)
            return alert

        for leave in (lambda _: keys("Escape"), ask_to_close):
            leave(offer())
            wait_for(lambda: len(self.windows()) == 1, "the offer to go")
        offer()
        self.screen.alert().press("View")
        # What an earlier one opened would stand before it.
        wait_for(opener.opened, "the page to open")
        self.assertEqual(opener.opened(), ["https://zarn-actions.example/releases"])

    def test_an_alert_belongs_to_the_main_window_while_another_program_is_in_front(self):
        self.start(environment={"WAYLAND_DEBUG": "1"} if ON_WAYLAND else None)
        main = self.windows()[0]
        self.go_to_another_program()
        alert = self.show_notice()
        if ON_WAYLAND:
            first, *others = re.findall(r"get_toplevel\(new id (xdg_toplevel@\d+)\)", self.program.errors())
            self.assertIn(f"-> {others[-1]}.set_parent({first})", self.program.errors())
        else:
            owner = subprocess.run(["xprop", "-id", str(alert.id), "WM_TRANSIENT_FOR"], capture_output=True, text=True,
                                   check=True).stdout
            self.assertEqual(int(owner.split()[-1], 16), main.id, owner)


class SecondStart(WindowsTest):
    def test_it_brings_the_window_up_and_says_why_it_ends(self):
        self.start()
        main = self.windows()[0]
        self.go_to_another_program()
        second = self.start_again()
        self.assertEqual((second.returncode, second.stdout, second.stderr), (0, "Zarn Actions is already running\n", ""))
        wait_until_active(main)

    def test_it_brings_up_the_alert_that_is_open(self):
        self.start()
        alert = self.show_notice()
        self.go_to_another_program()
        self.start_again()
        wait_until_active(alert)


class Tokens(WindowsTest):
    """On Wayland alone, where a program needs the desktop's token to come to the front."""

    def test_what_is_no_token_of_the_compositor_does_no_harm(self):
        self.start(environment={"WAYLAND_DEBUG": "1"})
        main = self.windows()[0]
        self.go_to_another_program()
        for token in ("unknown", "two words", "x" * 5000):
            self.assertEqual(self.start_again(token).returncode, 0)
        self.start_again()
        wait_until_active(main)
        activated = re.findall(r'xdg_activation_v1@\d+\.activate\("([^"]*)"', self.program.errors())
        self.assertIn("unknown", activated)
        for token in activated:
            self.assertRegex(token, "^[!-~]{1,255}$")


class Keyboard(WindowsTest):
    def test_each_start_has_it_in_the_terms_and_then_in_the_main_window(self):
        for _ in range(STARTS):
            write_settings(STANDARD, {})
            program = self.start_program().wait_for_window()
            screen = program.screen
            screen.control("push button", "Accept")
            main, terms = wait_for(lambda: len(windows(program.process.pid)) == 2 and windows(program.process.pid),
                                   "both windows")
            wait_until_active(terms)
            screen.tab_to("push button", "Accept")
            keys("space")
            wait_for(lambda: windows(program.process.pid) == [main], "the terms to go")
            wait_until_active(main)
            wait_for(lambda: screen.focused() == ("text", "Display Name:"), "the keyboard in the first field")
            type_text("typed")
            wait_for(lambda: screen.text("Display Name:") == "typed", "the typed text")
            program.end()
        self.assertEqual(settings(STANDARD), {"agreedToTermsOfUse": True})


if __name__ == "__main__":
    unittest.main()
