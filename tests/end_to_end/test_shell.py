# SPDX-License-Identifier: MIT
"""Start-up, menus, About, terms and launch arguments of the real program."""

import os
import subprocess
import unittest

from desktop_windows import windows
from screen import activate, keys, wait_for
from world import STANDARD, VERSION_AND_BUILD, DemoServer, WorldTest, built, config_folder, log_messages, settings


class Terms(WorldTest):
    def start(self):
        self.program = self.start_program().wait_for_window()
        self.screen = self.program.screen
        self.screen.control("push button", "Accept")
        return self.screen

    def terms_window(self):
        """By the name that a task switcher shows, too."""
        both = wait_for(lambda: len(windows(self.program.process.pid)) == 2 and windows(self.program.process.pid),
                        "both windows")
        self.assertEqual([title for _, title in both], ["Zarn Actions", "Zarn Actions"])
        return str(both[1].id)

    def assert_still_asking(self):
        self.assertTrue(self.screen.shows("push button", "Accept"))
        self.assertIsNone(self.program.process.poll())

    def test_exit_ends_the_program_and_the_next_start_asks_again(self):
        self.start().press("Exit")
        self.assertEqual(self.program.ended(), 0)
        self.assertEqual(settings(STANDARD), {"agreedToTermsOfUse": False})
        self.start()

    def test_accepting_is_remembered(self):
        screen = self.start()
        screen.press("Accept")
        wait_for(lambda: not screen.find("push button", "Accept"), "the terms to go")
        self.assertEqual(settings(STANDARD), {"agreedToTermsOfUse": True})
        self.program.end()
        self.program = self.start_program().wait_for_window()
        self.program.screen.control("push button", "Add")
        self.assertFalse(self.program.screen.shows("push button", "Accept"))

    def test_the_window_manager_cannot_close_it(self):
        self.start()
        window = self.terms_window()
        activate(window)
        keys("Escape")
        keys("alt+F4")
        self.screen.tab()  # Whatever the keys before it did is over then.
        self.assert_still_asking()

    def test_it_has_one_size_and_no_decoration(self):
        self.start()
        window = self.terms_window()
        hints = subprocess.run(["xprop", "-id", window, "WM_NORMAL_HINTS", "_MOTIF_WM_HINTS"],
                               capture_output=True, text=True, check=True).stdout
        least = [line.split(":")[1].strip() for line in hints.splitlines() if "minimum size" in line]
        most = [line.split(":")[1].strip() for line in hints.splitlines() if "maximum size" in line]
        self.assertEqual(least, most)
        self.assertEqual(len(least), 1)
        before = subprocess.run(["xdotool", "getwindowgeometry", window], capture_output=True, text=True).stdout
        for state in ("fullscreen", "maximized_vert", "maximized_horz"):
            subprocess.run(["xdotool", "windowstate", "--add", state.upper(), window], check=False,
                           stderr=subprocess.DEVNULL)
        subprocess.run(["xdotool", "windowminimize", window], check=False)
        wait_for(lambda: self.screen.shows("push button", "Accept"), "the terms to be shown still")
        after = subprocess.run(["xdotool", "getwindowgeometry", window], capture_output=True, text=True).stdout
        self.assertEqual(before.split("Geometry")[1], after.split("Geometry")[1])


class Menus(WorldTest):
    def setUp(self):
        super().setUp()
        self.accept_terms()

    def start(self, *arguments, **options):
        self.program = self.start_program(*arguments, **options).wait_for_window()
        self.screen = self.program.screen
        return self.screen

    def abouts(self):
        return [title for title in self.screen.window_titles() if title == "About"]

    def test_about_twice_opens_two_windows(self):
        screen = self.start()
        screen.menu("Zarn Actions", "About Zarn Actions")
        wait_for(lambda: len(self.abouts()) == 1, "one About window")
        self.assertTrue(screen.shows("label", f"Version {VERSION_AND_BUILD}"))
        screen.menu("Zarn Actions", "About Zarn Actions")
        wait_for(lambda: len(self.abouts()) == 2, "two About windows")

    def test_a_foreign_about_window_keeps_ours_away(self):
        foreign = subprocess.Popen(
            [built("zarn-foreign-window"), "Zarn Print Desk", "About"], stdout=subprocess.PIPE, text=True)
        self.addCleanup(foreign.stdout.close)
        self.addCleanup(foreign.wait)
        self.addCleanup(foreign.terminate)
        self.assertEqual(foreign.stdout.readline(), "shown\n")
        screen = self.start()
        screen.menu("Zarn Actions", "About Zarn Actions")
        screen.menu("Zarn Actions", "About Zarn Actions")
        self.assertEqual(self.abouts(), [])

    def test_a_missing_log_folder_is_told_once(self):
        screen = self.start()
        subprocess.run(["rm", "-rf", os.path.join(os.environ["HOME"], "Library")], check=True)
        screen.menu("Zarn Actions", "Show Log Folder")
        alert = screen.alert()
        self.assertEqual(alert.texts, ["Alert", "There are currently no log files to display."])
        self.assertEqual(alert.buttons, ["OK"])
        alert.press("OK")
        self.assertFalse(screen.has_alert())

    def test_the_log_folder_opens_with_the_desktops_opener(self):
        tools = os.path.join(os.environ["ZARN_DESKTOP_SCRATCH"], "tools")
        os.makedirs(tools, exist_ok=True)
        record = os.path.join(tools, "opened")
        opener = os.path.join(tools, "xdg-open")
        with open(opener, "w", encoding="utf-8") as file:
            file.write(f'#!/bin/sh\nprintf "%s\\n" "$1" >> {record}\n')
        os.chmod(opener, 0o755)
        screen = self.start(environment={"PATH": tools + ":" + os.environ["PATH"]})
        screen.menu("Zarn Actions", "Show Log Folder")
        wait_for(lambda: os.path.exists(record) and open(record, encoding="utf-8").read(), "the opener", 15)
        with open(record, encoding="utf-8") as file:
            self.assertEqual(file.read(), f"file://{os.environ['HOME']}/Library/Logs/\n")

    def test_quit_ends_the_program(self):
        self.start().menu("Zarn Actions", "Quit Zarn Actions")
        self.assertEqual(self.program.ended(), 0)
        self.assertEqual(self.program.errors(), "")

    def test_an_open_about_window_keeps_the_program_alive(self):
        screen = self.start()
        screen.menu("Zarn Actions", "About Zarn Actions")
        wait_for(self.abouts, "the About window")
        activate(screen.x_window("Zarn Actions"))
        keys("alt+F4")
        wait_for(lambda: screen.window_titles() == ["About"], "the main window to go")
        self.assertIsNone(self.program.process.poll())
        activate(screen.x_window("About"))
        keys("alt+F4")
        self.assertEqual(self.program.ended(), 0)


class Process(WorldTest):
    def setUp(self):
        super().setUp()
        self.accept_terms()

    def run_briefly(self, *arguments, **options):
        return subprocess.run([built("zarn-actions"), *arguments], capture_output=True, text=True, timeout=30,
                              check=False, **options)

    def test_closing_the_main_window_quits(self):
        program = self.start_program().wait_for_window()
        activate(program.screen.x_window("Zarn Actions"))
        keys("alt+F4")
        self.assertEqual(program.ended(), 0)

    def test_a_killed_first_copy_keeps_nobody_away(self):
        first = self.start_program().wait_for_window()
        first.process.kill()
        first.process.wait()
        self.start_program().wait_for_window()

    def test_unknown_options_are_refused(self):
        for option in ("--unknown", "--keychain=cloud", "argument", "-lonely"):
            result = self.run_briefly(option)
            self.assertEqual(result.returncode, 2, option)
            self.assertEqual(result.stdout, "")
            self.assertEqual(len(result.stderr.splitlines()), 1, result.stderr)

    def test_help_and_version_need_nothing(self):
        nothing = {"PATH": "/usr/bin:/bin"}
        self.assertEqual(self.run_briefly("--version", env=nothing).stdout, f"Zarn Actions {VERSION_AND_BUILD}\n")
        helped = self.run_briefly("--help", env=nothing)
        self.assertEqual(helped.returncode, 0)
        self.assertIn("--keychain=", helped.stdout)
        self.assertEqual(helped.stderr, "")

    def test_without_a_display_it_says_so(self):
        environment = {key: value for key, value in os.environ.items() if key not in ("DISPLAY", "WAYLAND_DISPLAY")}
        result = self.run_briefly(env=environment)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(len(result.stderr.splitlines()), 1, result.stderr)

    def test_diagnose_finds_all_well(self):
        result = self.run_briefly("--diagnose")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertIn(config_folder(), result.stdout)

    def test_a_launch_argument_feeds_the_standard_domain(self):
        server = self.start_server()
        program = self.start_program("-forceBasicAuth", "1", server=server).wait_for_window()
        screen = program.screen
        screen.fill("Display Name:", "Demo")
        screen.fill("Server URL:", server.url)
        screen.fill("Client ID:", DemoServer.CLIENT)
        screen.fill("Client Secret:", DemoServer.SECRET, role="password text")
        screen.press("Add")
        screen.alert().press("OK")
        self.assertIn(f"[TokenDelegate.getToken] Force basic authentication on {server.url}: true", log_messages())
        self.assertIn(f"[TokenDelegate.getVersion] {server.url} set to use Basic Authentication", log_messages())
        self.assertNotIn("forceBasicAuth", settings(STANDARD))


if __name__ == "__main__":
    unittest.main()
