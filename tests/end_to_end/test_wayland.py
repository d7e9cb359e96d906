# SPDX-License-Identifier: MIT
"""The way from the first start to a registered server, as a Wayland client."""

import unittest

from desktop_windows import windows
from screen import keys, type_text, wait_for
from world import SHARED_SUITE, VERSION_AND_BUILD, DemoServer, WorldTest, current_profile, keychain_items, settings


class Wayland(WorldTest):
    def test_from_the_terms_to_a_registered_server(self):
        server = self.start_server()
        program = self.start_program(server=server).wait_for_window()
        screen = program.screen
        screen.press("Accept")
        wait_for(lambda: not screen.shows("push button", "Accept"), "the terms to go")
        self.assertEqual([title for _, title in windows(program.process.pid)], ["Zarn Actions"])

        wait_for(lambda: screen.focused() == ("text", "Display Name:"), "the keyboard in the first field")
        type_text("Werk Süd")
        screen.fill("Server URL:", server.url)
        screen.fill("Client ID:", DemoServer.CLIENT)
        screen.fill("Client Secret:", DemoServer.SECRET, role="password text")
        screen.press("Add")
        alert = screen.alert()
        self.assertEqual(alert.texts, ["Werk Süd was successfully set"])
        wait_for(lambda: screen.focused() == ("push button", "OK"), "the keyboard in the alert")
        keys("Return")
        wait_for(lambda: not screen.has_alert(), "the alert to go")
        self.assertEqual(settings(SHARED_SUITE)["serversDict"]["Werk Süd"]["server"], server.url)
        wait_for(lambda: len(keychain_items()) == 2, "both keychain items")
        self.assertIn(f'"username":"{DemoServer.CLIENT}"', current_profile())

        screen.menu("Zarn Actions", "About Zarn Actions")
        wait_for(lambda: screen.shows("label", f"Version {VERSION_AND_BUILD}"), "the About window")
        screen.menu("Zarn Actions", "Quit Zarn Actions")
        self.assertEqual(program.ended(), 0)
        self.assertEqual(program.errors(), "")


if __name__ == "__main__":
    unittest.main()
