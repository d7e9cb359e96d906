# SPDX-License-Identifier: MIT
"""What is typed stays typed: past fields that cannot be edited, past clicks, and past a request that failed."""

import base64
import datetime
import subprocess
import unittest

from pictures import colors_of, pixels
from screen import _walk, is_showing, keys, type_text, wait_for
from world import ACTIONS_SUITE, SHARED_SUITE, DemoServer, WorldTest, current_profile, write_settings

END_OF_EDITING = "[controlTextDidEndEditing] server: "
TYPED = "typed-by-hand"


class Fields(WorldTest):
    def setUp(self):
        super().setUp()
        self.accept_terms()
        self.server = self.start_server()

    def start(self):
        self.program = self.start_program(server=self.server).wait_for_window()
        self.screen = self.program.screen
        return self.screen

    def wait_for_focus(self, role, name):
        wait_for(lambda: self.screen.focused() == (role, name),
                 f"{name!r} to have the keyboard (it has {self.screen.focused()})")

    def click_into(self, role, name):
        self.screen.click(role, name)
        self.wait_for_focus(role, name)

    def type_into(self, role, name, text):
        self.click_into(role, name)
        keys("ctrl+a")
        type_text(text)
        field = self.screen.control(role, name).get_text_iface()
        wait_for(lambda: field.get_character_count() == len(text), f"{name} to hold what was typed")

    def answer(self, texts):
        alert = self.screen.alert()
        self.assertEqual(alert.texts, texts)
        wait_for(lambda: self.screen.focused() == ("push button", alert.buttons[-1]), "a button to have the keyboard")
        keys("Return")
        wait_for(lambda: not self.screen.has_alert(), "the alert to go")

    def credentials(self):
        """The user and the password of the last token request, each as the server received it."""
        tokens = [request for request in self.server.requests() if request["target"] == "/api/v1/auth/token"]
        scheme, value = dict(tokens[-1]["headers"])["Authorization"].split()
        self.assertEqual(scheme, "Basic")
        return base64.b64decode(value).decode().split(":", 1)

    def fill_in(self, password):
        screen = self.screen
        screen.toggle("Use username and password")
        screen.fill("Display Name:", "Head Office")
        screen.fill("Server URL:", self.server.url)
        self.type_into("text", "Username:", DemoServer.USER)
        self.type_into("password text", "Password:", password)

    def register(self):
        self.fill_in(DemoServer.PASSWORD)
        self.screen.press("Add")
        self.answer(["Head Office was successfully set"])
        wait_for(current_profile, "the current profile")

    def password_length(self):
        return self.screen.control("password text", "Password:").get_text_iface().get_character_count()

    def test_a_typed_secret_is_sent_although_the_focus_crosses_the_server_field(self):
        screen = self.start()
        self.register()
        self.assertFalse(screen.is_editable("Server URL:"))
        self.type_into("password text", "Password:", TYPED)
        # Its text can be selected all the same.
        self.click_into("text", "Server URL:")
        keys("ctrl+a")
        field = screen.control("text", "Server URL:").get_text_iface()
        wait_for(lambda: field.get_n_selections() == 1, "the address to be selected")
        screen.tab_to("push button", "Set", key="shift+Tab")
        keys("space")
        self.answer(["Failed to authenticate. HTTP status code: 401"])
        self.assertEqual(self.credentials(), [DemoServer.USER, TYPED])

    def test_a_click_empties_nothing(self):
        screen = self.start()
        self.fill_in(TYPED)
        self.click_into("text", "Username:")
        before = self.program.output().count(END_OF_EDITING)
        screen.click("check box", "Save credentials")
        wait_for(lambda: screen.is_checked("Save credentials"), "the box to be checked")
        self.assertEqual(screen.focused(), ("text", "Username:"))
        screen.click("push button", "Add")
        self.answer(["Failed to authenticate. HTTP status code: 401"])
        self.assertEqual(self.credentials(), [DemoServer.USER, TYPED])
        self.wait_for_focus("text", "Username:")
        self.assertEqual(self.password_length(), len(TYPED))
        self.assertEqual(self.program.output().count(END_OF_EDITING), before)

    def test_a_click_on_the_triangle_or_into_the_server_menu_empties_nothing(self):
        screen = self.start()
        self.register()
        screen.choose("Head Office")
        screen.control("push button", "hide username/password fields")
        self.type_into("password text", "Password:", TYPED)
        self.click_into("text", "Username:")
        before = self.program.output().count(END_OF_EDITING)
        screen.click("push button", "hide username/password fields")
        wait_for(lambda: not screen.shows("text", "Username:"), "the fields to go")
        screen.click("push button", "show username/password fields")
        self.wait_for_focus("text", "Username:")
        screen.click("combo box", "Head Office")
        wait_for(screen.is_menu_open, "the server menu to open")
        keys("Escape")
        self.wait_for_focus("text", "Username:")
        self.assertEqual(self.password_length(), len(TYPED))
        self.assertEqual(self.program.output().count(END_OF_EDITING), before)
        screen.click("push button", "Set")
        self.answer(["Failed to authenticate. HTTP status code: 401"])
        self.assertEqual(self.credentials(), [DemoServer.USER, TYPED])

    def test_a_retry_needs_the_keyboard_alone(self):
        screen = self.start()
        self.fill_in(TYPED)
        self.server.fault(path="/api/v1/auth/token", times="1", drop_after="30")
        screen.tab_to("push button", "Add")
        keys("space")
        self.answer(["Failed to connect to 127.0.0.1"])
        # Once more, and nothing else.
        self.wait_for_focus("push button", "Add")
        keys("Return")
        self.answer(["Failed to authenticate. HTTP status code: 401"])
        self.assertEqual(self.credentials(), [DemoServer.USER, TYPED])
        # Back to the password, and forward.
        self.wait_for_focus("push button", "Add")
        screen.tab_to("password text", "Password:", key="shift+Tab")
        type_text(DemoServer.PASSWORD)
        wait_for(lambda: self.password_length() == len(DemoServer.PASSWORD), "the password to be typed")
        screen.tab_to("push button", "Add")
        keys("space")
        self.answer(["Head Office was successfully set"])
        self.assertEqual(self.credentials(), [DemoServer.USER, DemoServer.PASSWORD])
        self.wait_for_focus("push button", "Set")
        self.assertEqual(self.program.errors(), "")

    def test_what_is_hidden_hands_the_keyboard_on_and_ends_no_editing(self):
        screen = self.start()
        screen.fill("Server URL:", self.server.url)
        screen.fill("Client ID:", DemoServer.CLIENT)
        screen.fill("Client Secret:", DemoServer.SECRET, role="password text")
        self.wait_for_focus("text", "Display Name:")
        type_text("Hidden soon")
        screen.click("push button", "Add")
        self.answer(["Hidden soon was successfully set"])
        self.wait_for_focus("text", "Server URL:")
        self.assertEqual(self.program.output().count(END_OF_EDITING), 0)
        screen.choose("Add Server...")
        self.wait_for_focus("text", "Display Name:")
        before = self.program.output().count(END_OF_EDITING)
        screen.click("push button", "Cancel")
        wait_for(lambda: screen.focused() not in (None, ("text", "Display Name:")), "another control to have the keyboard")
        self.assertEqual(self.program.output().count(END_OF_EDITING), before)

    def test_return_presses_what_has_the_keyboard_and_in_a_field_nothing(self):
        screen = self.start()
        for box in ("Use username and password", "Save credentials"):
            screen.tab_to("check box", box)
            keys("Return")
            wait_for(lambda: screen.is_checked(box), f"{box} to be checked")
        screen.tab_to("text", "Username:", key="shift+Tab")
        before = self.program.output().count(END_OF_EDITING)
        keys("Return")
        wait_for(lambda: self.program.output().count(END_OF_EDITING) > before, "the end of editing")
        self.assertFalse(screen.has_alert())
        self.assertEqual(self.server.requests(), [])
        screen.tab_to("push button", "Cancel")
        keys("Return")
        screen.control("push button", "Quit")

    def colors_inside(self, name):
        x, y, width, height = self.screen.area(self.screen.control("text", name))
        return colors_of((x + 6, y + 6, width - 12, height - 12))

    def test_an_empty_server_field_shows_the_form_of_an_address(self):
        screen = self.start()
        self.wait_for_focus("text", "Display Name:")
        wait_for(lambda: len(self.colors_inside("Client ID:")) == 1, "an empty field without a text")
        empty = self.colors_inside("Server URL:")
        self.assertGreater(len(empty), 1)
        screen.fill("Server URL:", "https://host:8443")
        # Where something is typed it is darker.
        wait_for(lambda: min(map(sum, self.colors_inside("Server URL:"))) < min(map(sum, empty)), "the typed text")
        screen.fill("Server URL:", "")
        wait_for(lambda: self.colors_inside("Server URL:") == empty, "the form of an address")

    def hover(self, role, name):
        x, y, width, height = self.screen.area(self.screen.control(role, name))
        for step in (0, 3):
            subprocess.run(["xdotool", "mousemove", str(x + width // 2 + step), str(y + height // 2)], check=True)

    def tool_tip(self):
        tips = [node for node in _walk(self.screen.application()) if node.get_role_name() == "tool tip" and is_showing(node)]
        # Addresses may be broken at what is no letter.
        return tips[0].get_name().replace("\u200b", "") if tips else None

    def test_a_long_address_is_whole_in_its_tool_tip_and_a_long_cause_too(self):
        screen = self.start()
        address = "https://a-server-of-a-long-name." + "and-so-on." * 12 + "invalid:8443/"
        screen.fill("Display Name:", "Long")
        screen.fill("Client ID:", "short")
        screen.fill("Server URL:", address)
        self.hover("text", "Server URL:")
        wait_for(lambda: self.tool_tip() == address, f"the address, not {self.tool_tip()!r}")
        self.hover("text", "Client ID:")
        wait_for(lambda: self.tool_tip() is None, "the tool tip to go")
        screen.press("Add")
        screen.alert().press("OK")
        cause = screen.named("notification")
        self.assertRegex(cause, "^The name a-server.*….*and-so-on.invalid was not found; check its spelling and the network$")
        self.hover("notification", cause)
        wait_for(lambda: self.tool_tip() == cause, f"the cause, not {self.tool_tip()!r}")

    def test_a_long_address_is_shown_from_its_start(self):
        start = "https://a-server-of-a-long-name." + "and-so-on." * 12 + "example:8443/"
        write_settings(SHARED_SUITE, {"serversDict": {
            name: {"server": start + end, "date": datetime.datetime(2026, 1, 1)} for name, end in (("A", "first"), ("B", "second"), ("C", "third"))}})
        write_settings(ACTIONS_SUITE, {"hideCreds": 1})
        screen = self.start()
        area = screen.area(screen.control("text", "Server URL:"))

        def shown(profile):
            screen.choose(profile)
            wait_for(lambda: screen.text("Server URL:").startswith(start) and screen.choice() == profile, profile)
            self.wait_for_focus("combo box", profile)
            return pixels(area)

        first = shown("A")
        self.assertEqual(shown("B"), first)
        # The end of the text, which a click and End bring into sight, is another.
        self.click_into("text", "Server URL:")
        keys("End")
        wait_for(lambda: pixels(area) != first, "the end of the text")
        self.assertEqual(shown("C"), first)


if __name__ == "__main__":
    unittest.main()
