# SPDX-License-Identifier: MIT
"""Credential entry: modes, refills from the keychain, and leaving add mode."""

import datetime
import subprocess
import unittest

from screen import is_enabled, keys, type_text, wait_for
from world import ACTIONS_SUITE, SCHEMA, SHARED_SUITE, STANDARD, WorldTest, settings, write_settings


def store_item(service, account, secret):
    subprocess.run(["secret-tool", "store", "--label", f"{service} ({account})", "xdg:schema", SCHEMA,
                    "service", service, "account", account, "access-group",
                    "Q7X2M9K4TA.org.zarnie.zpshortcuts"], input=secret, text=True, check=True)


class Credentials(WorldTest):
    def setUp(self):
        super().setUp()
        self.accept_terms()

    def store(self, **more):
        write_settings(SHARED_SUITE, {"serversDict": {
            "First": {"server": "https://first.example", "date": datetime.datetime(2025, 1, 1)},
            "Second": {"server": "https://second.example/", "date": datetime.datetime(2025, 1, 2)}}})
        write_settings(ACTIONS_SUITE, {"currentServer": "First", "username": "admin", "hideCreds": 1, **more})

    def start(self):
        self.program = self.start_program().wait_for_window()
        self.screen = self.program.screen
        return self.screen

    def password_length(self, label):
        field = self.screen.control("password text", label)
        return field.get_text_iface().get_character_count()

    def test_switching_modes_for_a_host_with_an_entry_fills_both_fields(self):
        self.store(useUsername=1)
        store_item("ZPMA-first.example", "admin", "four")
        store_item("zortcuts-apiClient-first.example", "client", "sevenXX")
        screen = self.start()
        self.assertEqual((screen.text("Username:"), self.password_length("Password:")), ("admin", 4))
        screen.toggle("Use username and password")
        wait_for(lambda: screen.text("Client ID:") == "client", "the client id")
        self.assertEqual(self.password_length("Client Secret:"), 7)
        self.assertEqual(settings(ACTIONS_SUITE)["useUsername"], 0)
        self.assertEqual(self.program.output(), "[viewDidLoad] username: 1\n")

    def test_a_mode_without_an_entry_keeps_the_name_and_empties_the_password(self):
        self.store(useUsername=1)
        store_item("ZPMA-first.example", "admin", "four")
        screen = self.start()
        screen.toggle("Use username and password")
        wait_for(lambda: self.password_length("Client Secret:") == 0, "the password to go")
        self.assertEqual(screen.text("Client ID:"), "admin")

    def test_leaving_the_username_field_empties_the_password_and_looks_again(self):
        self.store(useUsername=1)
        store_item("ZPMA-first.example", "admin", "four")
        screen = self.start()
        screen.focus("text", "Username:")
        screen.fill("Username:", "somebody")
        keys("Tab")
        wait_for(lambda: self.password_length("Password:") == 0, "the password to go")
        screen.focus("text", "Username:")
        screen.fill("Username:", "admin")
        keys("Tab")
        wait_for(lambda: self.password_length("Password:") == 4, "the password to come back")
        self.assertEqual(self.program.output(),
                         "[viewDidLoad] username: 1\n"
                         + "[controlTextDidEndEditing] server: first.example\n" * 2)

    def test_leaving_the_password_field_does_nothing(self):
        self.store(useUsername=1)
        screen = self.start()
        screen.focus("password text", "Password:")
        # Keys wait for the look-up of the start, which empties the field.
        type_text("typed")
        wait_for(lambda: self.password_length("Password:") == 5, "the typed password")
        keys("Tab")
        keys("shift+Tab")
        self.assertEqual(self.password_length("Password:"), 5)

    def test_leaving_the_server_field_never_empties_the_password(self):
        screen = self.start()
        screen.fill("Client Secret:", "typed", role="password text")
        screen.focus("text", "Server URL:")
        screen.fill("Server URL:", "https://nobody.example")
        keys("Tab")
        self.assertEqual(self.password_length("Client Secret:"), 5)

    def test_cancel_on_a_fresh_installation_leaves_everything_disabled(self):
        screen = self.start()
        screen.press("Cancel")
        self.assertFalse(screen.is_button_enabled("Set"))
        self.assertTrue(screen.is_button_enabled("Quit"))
        for role, label in (("text", "Server URL:"), ("text", "Client ID:"), ("password text", "Client Secret:")):
            field = screen.control(role, label)
            self.assertFalse(is_enabled(field), label)

    def test_cancel_shows_a_stored_profile_again(self):
        self.store(useUsername=1)
        store_item("ZPMA-second.example", "root", "abc")
        screen = self.start()
        screen.choose("Add Server...")
        screen.fill("Display Name:", "given up")
        screen.press("Cancel")
        self.assertEqual(screen.choice(), "Second")
        self.assertEqual(screen.text("Server URL:"), "https://second.example/")
        self.assertEqual(sorted(settings(SHARED_SUITE)["serversDict"]), ["First", "Second"])

    def test_the_save_credentials_box_writes_the_standard_settings_only(self):
        self.store()
        before = settings(ACTIONS_SUITE)
        screen = self.start()
        screen.toggle("Save credentials")
        wait_for(lambda: settings(STANDARD).get("saveCreds") == 1, "the setting")
        screen.toggle("Save credentials")
        wait_for(lambda: settings(STANDARD).get("saveCreds") == 0, "the setting")
        self.assertEqual(settings(ACTIONS_SUITE), before)

    def test_the_disclosure_button_hides_and_shows_the_fields(self):
        self.store()
        screen = self.start()
        screen.press("hide username/password fields")
        wait_for(lambda: not screen.shows("text", "Server URL:"), "the fields to go")
        self.assertEqual(settings(ACTIONS_SUITE)["hideCreds"], 0)
        screen.press("show username/password fields")
        wait_for(lambda: screen.shows("text", "Server URL:"), "the fields to come")
        self.assertEqual(settings(ACTIONS_SUITE)["hideCreds"], 1)

    def test_choosing_a_profile_makes_it_current(self):
        self.store()
        screen = self.start()
        screen.choose("Second")
        wait_for(lambda: screen.text("Server URL:") == "https://second.example/", "the profile")
        self.assertEqual(settings(ACTIONS_SUITE)["currentServer"], "Second")


if __name__ == "__main__":
    unittest.main()
