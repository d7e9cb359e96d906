# SPDX-License-Identifier: MIT
"""A walk through every menu, button, field and alert with real key presses and nothing else."""

import os
import unittest

from screen import keys, type_text, wait_for
from stand_ins import FileManager, Opener
from update_page import UpdatePage
from world import (ACTIONS_SUITE, SHARED_SUITE, STANDARD, VERSION, DemoServer, WorldTest, current_profile,
                   settings)

FEEDBACK = "zarn-actions.example/feedback", "https://zarn-actions.example/feedback"
AGREEMENT = "Zarn Actions Software Licence Agreement", "https://zarn-actions.example/licence-agreement.pdf"
PAGE = "https://zarn-actions.example/releases"


class Keyboard(WorldTest):
    def setUp(self):
        super().setUp()
        self.opener = Opener()
        self.file_manager = FileManager()
        self.addCleanup(self.file_manager.stop)
        self.page = UpdatePage()
        self.addCleanup(self.page.stop)
        self.server = self.start_server()

    def start(self):
        environment = {**self.page.environment, **self.opener.environment()}
        self.program = self.start_program(server=self.server, environment=environment).wait_for_window()
        self.screen = self.program.screen
        return self.screen

    def wait_for_focus(self, role, name):
        wait_for(lambda: self.screen.focused() == (role, name),
                 f"{name!r} to have the keyboard (it has {self.screen.focused()})")

    def press(self, name, role="push button"):
        self.screen.tab_to(role, name)
        keys("space")

    def answer(self, texts, *answer):
        alert = self.screen.alert()
        self.assertEqual(alert.texts, texts)
        wait_for(lambda: self.screen.focused() == ("push button", alert.buttons[-1]), "a button to have the keyboard")
        keys(*answer)

    def alert(self, texts, *answer):
        self.answer(texts, *answer)
        wait_for(lambda: not self.screen.has_alert(), "the alert to go")

    def choose_from_menu(self, menu, letter):
        """Opens a menu of the bar and takes an item by its letter."""
        self.open_menu(menu)
        keys(letter)
        wait_for(lambda: not self.open_menus(), "the menu to close")

    def open_menus(self):
        """The last items of the menus of the bar that are open."""
        return [item for item in ("Quit Zarn Actions", "Select All") if self.screen.shows("menu item", item)]

    def open_menu(self, key):
        keys(key)
        wait_for(self.open_menus, "a menu to open")

    def accept(self):
        screen = self.screen
        screen.control("push button", "Accept")
        screen.tab_to("push button", "Accept")
        self.assertEqual(settings(STANDARD), {})
        keys("space")
        wait_for(lambda: not screen.shows("push button", "Accept"), "the terms to go")
        self.assertEqual(settings(STANDARD), {"agreedToTermsOfUse": True})

    def open_links(self, notice):
        """Tab goes from link to link in a notice, Return opens the one it is at."""
        self.wait_for_focus("label", notice)
        before = len(self.opener.opened())
        for count, (text, address) in enumerate((FEEDBACK, AGREEMENT), before + 1):
            self.screen.tab()
            self.wait_for_focus("link", text)
            keys("Return")
            wait_for(lambda: len(self.opener.opened()) == count, address + " to open")
            self.assertEqual(self.opener.opened()[-1], address)

    def register(self):
        """Adds the demonstration server, Tab by Tab in the order of the fields."""
        screen = self.screen
        self.wait_for_focus("text", "Display Name:")
        screen.tab_to("check box", "Use username and password")
        keys("space")
        wait_for(lambda: screen.is_checked("Use username and password"), "the box to be checked")
        screen.tab_to("text", "Display Name:", key="shift+Tab")
        for role, label, text in (("text", "Display Name:", "By keyboard"), ("text", "Server URL:", self.server.url),
                                  ("text", "Username:", DemoServer.USER),
                                  ("password text", "Password:", DemoServer.PASSWORD)):
            self.wait_for_focus(role, label)
            type_text(text)
            keys("Tab")
        self.wait_for_focus("check box", "Use username and password")
        keys("Tab")
        self.wait_for_focus("check box", "Save credentials")
        keys("space")
        keys("Tab")
        self.wait_for_focus("push button", "Cancel")
        keys("Tab")
        self.wait_for_focus("push button", "Add")
        keys("space")
        self.alert(["By keyboard was successfully set"], "Return")
        self.assertEqual(settings(STANDARD)["saveCreds"], 1)
        self.assertEqual(settings(ACTIONS_SUITE)["useUsername"], 1)
        self.assertEqual(list(settings(SHARED_SUITE)["serversDict"]), ["By keyboard"])
        wait_for(current_profile, "the current profile")

    def test_exit_by_keyboard(self):
        self.start().control("push button", "Exit")
        self.press("Exit")
        self.assertEqual(self.program.ended(), 0, self.program.errors())
        self.assertEqual(settings(STANDARD), {"agreedToTermsOfUse": False})

    def test_menus_and_windows(self):
        screen = self.start()
        screen.control("push button", "Accept")
        self.open_links("Terms of Use")
        self.accept()
        self.assertTrue(os.path.isdir(os.path.join(os.environ["HOME"], "Library/Logs")))

        self.choose_from_menu("alt+z", "l")
        folder = f"file://{os.environ['HOME']}/Library/Logs/"
        wait_for(lambda: self.file_manager.shown == [folder], "the file manager to be asked")

        self.choose_from_menu("alt+z", "a")
        wait_for(lambda: "About" in screen.window_titles(), "the About window")
        self.open_links("Notice")
        keys("alt+F4")
        wait_for(lambda: "About" not in screen.window_titles(), "the About window to go")

        row = "<tr><td>Current Version</td><td>"
        self.page.publish(row + f"{VERSION}</td></tr>")
        self.choose_update("No updates are currently available.", "Return")
        self.page.publish(row + "2.0.0</td></tr>")
        # Return presses "View", the first button; Escape, and Tab with Space, press "Ignore".
        self.choose_update("A new versions is available.", "Return")
        wait_for(lambda: PAGE in self.opener.opened(), "the page to open")
        opened = self.opener.opened()
        for ignore in (("Escape",), ("Tab", "space")):
            self.choose_update("A new versions is available.", *ignore)
        self.assertEqual(self.opener.opened(), opened)

        self.edit_by_menu()
        keys("ctrl+q")
        self.assertEqual(self.program.ended(), 0)
        self.assertEqual(self.program.errors(), "")

    def choose_update(self, message, *answer):
        self.open_menu("alt+z")
        keys("c")
        self.alert([f"Running Zarn Actions: {VERSION}", message], *answer)

    def edit_by_menu(self):
        """The entries of "Edit" in the name field."""
        screen = self.screen
        self.wait_for_focus("text", "Display Name:")
        type_text("some words")
        for letters in ("a", "t", "p", "p", "u", "r"):
            self.choose_from_menu("alt+e", letters)
        wait_for(lambda: screen.text("Display Name:") == "some wordssome words", "the text to be there twice")
        self.choose_from_menu("alt+e", "a")
        self.choose_from_menu("alt+e", "d")
        wait_for(lambda: screen.text("Display Name:") == "", "the text to go")

    def test_from_the_terms_to_quit(self):
        screen = self.start()
        self.accept()
        self.register()

        # Choosing the profile that is chosen already brings the disclosure button back.
        screen.choose("By keyboard")
        screen.control("push button", "hide username/password fields")
        self.press("hide username/password fields")
        wait_for(lambda: not screen.shows("text", "Server URL:"), "the fields to go")
        keys("space")
        wait_for(lambda: screen.shows("text", "Server URL:"), "the fields to come")

        self.press("Quit")
        self.assertEqual(self.program.ended(), 0)

        # The next run, from the server menu: add mode and back with "Cancel".
        screen = self.start()
        screen.choose("Add Server...")
        self.wait_for_focus("text", "Display Name:")
        type_text("given up")
        self.press("Cancel")
        wait_for(lambda: screen.choice() == "By keyboard", "the profile to be back")

        # Removal, answered with Esc, then with Return.
        for key, left in (("Escape", ["By keyboard"]), ("Return", [])):
            screen.choose("By keyboard", modifier="alt")
            self.alert(["Are you sure you want to remove By keyboard from the list?"], key)
            self.assertEqual(list(settings(SHARED_SUITE)["serversDict"]), left)
        self.assertEqual(screen.choices(), ["", "Add Server..."])
        self.press("Quit")
        self.assertEqual(self.program.ended(), 0)
        self.assertEqual(self.program.errors(), "")

    def test_v_quits_from_the_result_alert(self):
        screen = self.start()
        self.accept()
        self.wait_for_focus("text", "Display Name:")
        type_text("Nobody")
        self.press("Add")
        self.answer(["Failed to connect to "], "v")
        self.assertEqual(self.program.ended(), 0)
        self.assertEqual(self.program.errors(), "")


    def test_alt_and_a_letter_lead_to_each_control(self):
        screen = self.start()
        screen.control("push button", "Accept")
        keys("alt+a")
        wait_for(lambda: not screen.shows("push button", "Accept"), "the terms to go")
        self.wait_for_focus("text", "Display Name:")
        keys("alt+w")
        wait_for(lambda: screen.is_checked("Use username and password"), "the box to be checked")
        for key, role, label, text in (("alt+u", "text", "Server URL:", self.server.url),
                                       ("alt+n", "text", "Username:", DemoServer.USER),
                                       ("alt+p", "password text", "Password:", DemoServer.PASSWORD),
                                       ("alt+d", "text", "Display Name:", "By letters")):
            keys(key)
            self.wait_for_focus(role, label)
            type_text(text)
        keys("alt+a")
        self.alert(["By letters was successfully set"], "alt+o")
        keys("alt+r")
        wait_for(lambda: screen.focused()[0] == "combo box", "the server menu to have the keyboard")
        keys("alt+v")
        wait_for(lambda: screen.is_checked("Save credentials"), "the box to be checked")
        # Choosing the profile that is chosen already brings the disclosure button back.
        screen.choose("By letters")
        screen.control("push button", "hide username/password fields")
        keys("alt+h")
        wait_for(lambda: not screen.shows("text", "Server URL:"), "the fields to go")
        keys("alt+h")
        wait_for(lambda: screen.shows("text", "Server URL:"), "the fields to come")
        keys("alt+t")
        self.alert(["By letters was successfully set"], "alt+o")
        screen.choose("Add Server...")
        self.wait_for_focus("text", "Display Name:")
        keys("alt+c")
        screen.control("push button", "Quit")
        keys("alt+q")
        self.assertEqual(self.program.ended(), 0)
        self.assertEqual(self.program.errors(), "")

    def test_a_letter_of_the_terms_declines_them(self):
        self.start().control("push button", "Exit")
        keys("alt+x")
        self.assertEqual(self.program.ended(), 0)
        self.assertEqual(settings(STANDARD), {"agreedToTermsOfUse": False})

    def test_the_keys_of_every_program(self):
        """F1 opens the About window, F10 the menu, and ctrl+W closes the window in front."""
        screen = self.start()
        self.accept()
        self.wait_for_focus("text", "Display Name:")
        type_text("typed")
        self.choose_from_menu("F10", "l")
        wait_for(lambda: self.file_manager.shown, "the file manager to be asked")
        self.open_menu("F10")
        keys("Escape")
        wait_for(lambda: not self.open_menus(), "the menu to close")
        self.wait_for_focus("text", "Display Name:")
        for _ in range(2):
            keys("F1")
            wait_for(lambda: "About" in screen.window_titles(), "the About window")
            self.wait_for_focus("label", "Notice")
            keys("ctrl+w")
            wait_for(lambda: "About" not in screen.window_titles(), "the About window to go")
        self.wait_for_focus("text", "Display Name:")
        self.assertEqual(screen.text("Display Name:"), "typed")
        keys("ctrl+w")
        self.assertEqual(self.program.ended(), 0)
        self.assertEqual(self.program.errors(), "")

    def test_the_terms_stay_whatever_key_is_pressed(self):
        screen = self.start()
        screen.control("push button", "Accept")
        self.wait_for_focus("label", "Terms of Use")
        keys("ctrl+w", "Escape", "alt+F4", "Tab")
        self.assertTrue(screen.shows("push button", "Accept"))
        self.assertIsNone(self.program.process.poll())


if __name__ == "__main__":
    unittest.main()
