# SPDX-License-Identifier: MIT
"""Light and dark, driven by a settings portal, and readable in both."""

import os
import subprocess
import unittest

from pictures import background, colors_of, text_contrast
from screen import NotFound, wait_for
from world import STANDARD, WorldTest, write_settings

LIGHT, DARK = 2, 1
GREY = (51, 51, 51)


class DesktopTest(WorldTest):
    def portal(self, *settings):
        process = subprocess.Popen(
            ["/usr/bin/python3", os.path.join(os.path.dirname(os.path.abspath(__file__)), "fake_portal.py"),
             *(str(setting) if "=" in str(setting) else f"={setting}" for setting in settings)], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.stdin.close)
        self.assertEqual(process.stdout.readline(), "ready\n")
        self.set = lambda setting: (process.stdin.write(setting + "\n"), process.stdin.flush())
        self.switch = lambda scheme: self.set(f"={scheme}")

    def start(self):
        self.program = self.start_program().wait_for_window()
        self.screen = self.program.screen
        return self.screen

    def inside(self, role, name):
        """The colours within the frame of a control."""
        x, y, width, height = self.screen.area(self.screen.control(role, name))
        inset = 4 if role in ("push button", "combo box") else 0
        return colors_of((x + inset, y + inset, width - 2 * inset, height - 2 * inset))

    def window_area(self, title):
        for window in self.screen.windows():
            if window.get_name() == title:
                return self.screen.area(window)
        raise NotFound(f"no window {title!r}")

    def assert_frames_stand_out(self, ratio=3):
        for role, name in (("text", "Server URL:"), ("password text", "Client Secret:"),
                           ("check box", "Save credentials")):
            x, y, width, height = self.screen.area(self.screen.control(role, name))
            if role == "check box":
                width = height  # The box alone.
            self.assertGreaterEqual(text_contrast(colors_of((x, y, width, height))), ratio, name)


class Appearance(DesktopTest):
    def open_about(self):
        self.screen.menu("Zarn Actions", "About Zarn Actions")
        wait_for(lambda: "About" in self.screen.window_titles(), "the About window")
        return lambda: colors_of(self.window_area("About"))

    def test_the_about_panel_turns_dark_and_back_while_open(self):
        self.accept_terms()
        self.portal(LIGHT)
        self.start()
        colors = self.open_about()
        # Black on the grey at 20 % over the light window.
        wait_for(lambda: background(colors())[0] > 180, "a light panel")
        self.assertIn((0, 0, 0), colors())
        self.switch(DARK)
        wait_for(lambda: background(colors()) == GREY, "the opaque grey")
        self.assertIn((255, 255, 255), colors())
        self.assertGreaterEqual(text_contrast(colors()), 4.5)
        self.switch(LIGHT)
        wait_for(lambda: background(colors())[0] > 180, "a light panel again")

    def assert_placeholder_is_readable(self):
        """It is no name: the field goes by its label."""
        field = self.screen.control("text", "Server URL:")
        self.assertEqual(self.screen.text("Server URL:"), "")
        self.assertEqual(field.get_description(), "https://host:8443")
        x, y, width, height = self.screen.area(field)
        self.assertGreaterEqual(text_contrast(colors_of((x + 4, y + 4, width - 8, height - 8))), 4.5)

    def test_without_a_portal_everything_is_light(self):
        self.accept_terms()
        self.start()
        colors = self.open_about()
        wait_for(lambda: background(colors())[0] > 180, "a light panel")
        self.assertEqual(self.program.errors(), "")

    def test_the_whole_program_starts_dark_and_readable(self):
        self.accept_terms()
        self.portal(DARK)
        screen = self.start()
        wait_for(lambda: max(background(colors_of(self.window_area("Zarn Actions")))) < 90, "a dark window")
        for role, name in (("label", "Display Name:"), ("label", "Server URL:"), ("push button", "Add"),
                           ("check box", "Use username and password"), ("menu item", "Zarn Actions")):
            counts = self.inside(role, name)
            self.assertLess(max(background(counts)), 110, name)
            self.assertGreaterEqual(text_contrast(counts), 4.5, name)
        self.assert_frames_stand_out()
        self.assert_placeholder_is_readable()

    def test_the_light_program_is_readable(self):
        self.accept_terms()
        screen = self.start()
        wait_for(lambda: min(background(colors_of(self.window_area("Zarn Actions")))) > 160, "a painted window")
        for role, name in (("label", "Display Name:"), ("label", "Server URL:"), ("push button", "Add"),
                           ("check box", "Use username and password"), ("menu item", "Zarn Actions")):
            counts = self.inside(role, name)
            self.assertGreater(min(background(counts)), 160, name)
            self.assertGreaterEqual(text_contrast(counts), 4.5, name)
        self.assert_frames_stand_out()
        self.assert_placeholder_is_readable()

    def test_the_terms_are_readable_in_dark(self):
        write_settings(STANDARD, {})
        self.portal(DARK)
        screen = self.start()
        self.assertGreaterEqual(text_contrast(self.inside("push button", "Accept")), 4.5)
        window = screen.window_with("push button", "Accept")
        wait_for(lambda: background(colors_of(self.screen.area(window))) == GREY, "the opaque grey")
        self.assertIn((255, 255, 255), colors_of(self.screen.area(window)))

    def test_the_terms_follow_while_open(self):
        write_settings(STANDARD, {})
        self.portal(LIGHT)
        screen = self.start()
        screen.control("push button", "Accept")
        window = screen.window_with("push button", "Accept")
        wait_for(lambda: background(colors_of(self.screen.area(window)))[0] > 180, "light terms")
        self.switch(DARK)
        wait_for(lambda: background(colors_of(self.screen.area(window))) == GREY, "dark terms")
        self.assertIn((255, 255, 255), colors_of(self.screen.area(window)))


if __name__ == "__main__":
    unittest.main()
