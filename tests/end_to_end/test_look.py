# SPDX-License-Identifier: MIT
"""The desktop's font, text size, accent colour and contrast, and a focus that is seen."""

import datetime
import unittest

from pictures import background, colors_of, contrast, pixels, text_contrast
from screen import NotFound, keys, type_text, wait_for
from test_appearance import DARK, LIGHT, DesktopTest
from world import ACTIONS_SUITE, SHARED_SUITE, STANDARD, write_settings


class Look(DesktopTest):
    CONTROLS = (("label", "Display Name:"), ("label", "Server URL:"), ("label", "Client ID:"),
                ("label", "Client Secret:"), ("text", "Display Name:"), ("text", "Server URL:"),
                ("check box", "Use username and password"), ("check box", "Save credentials"),
                ("push button", "Cancel"), ("push button", "Add"))

    def controls(self):
        return [(name, self.screen.area(self.screen.control(role, name))) for role, name in self.CONTROLS]

    def misplaced(self):
        placed = self.controls()
        left, top, width, height = self.window_area("Zarn Actions")
        for index, (name, (x, y, w, h)) in enumerate(placed):
            if x < left or y < top or x + w > left + width or y + h > top + height:
                yield f"{name} beyond the window"
            for other, (ox, oy, ow, oh) in placed[index + 1:]:
                if x < ox + ow and ox < x + w and y < oy + oh and oy < y + h:
                    yield f"{name} over {other}"

    def assert_nothing_overlaps(self):
        try:
            wait_for(lambda: not list(self.misplaced()), "every control to have its place")
        except NotFound:
            self.fail(list(self.misplaced()))

    def test_the_window_has_the_desktops_font_and_follows_it(self):
        self.accept_terms()
        self.portal(LIGHT)
        self.start()
        # Without a choice of the user's the window has its usual size.
        before = dict(self.controls())
        self.assertEqual(self.window_area("Zarn Actions")[2], 518)
        self.set("font-name=DejaVu Sans 18")
        wait_for(lambda: dict(self.controls())["Add"][3] > 1.4 * before["Add"][3], "larger buttons")
        wait_for(lambda: self.window_area("Zarn Actions")[2] > 518, "a larger window")
        self.assert_nothing_overlaps()
        large = dict(self.controls())
        self.set("text-scaling-factor=1.5")
        wait_for(lambda: dict(self.controls())["Add"][3] > 1.2 * large["Add"][3], "still larger buttons")
        self.assert_nothing_overlaps()
        self.assertEqual(self.program.errors(), "")

    def test_the_window_starts_with_the_desktops_font(self):
        self.accept_terms()
        self.portal(LIGHT, "font-name=DejaVu Sans 18")
        self.start()
        self.assertGreater(self.window_area("Zarn Actions")[2], 518)
        self.assert_nothing_overlaps()

    def test_the_terms_grow_with_the_font_and_their_buttons_stay_in_sight(self):
        write_settings(STANDARD, {})
        self.portal(LIGHT)
        self.start()
        self.screen.control("push button", "Accept")
        terms = self.screen.window_with("push button", "Accept")
        before = self.screen.area(terms)
        for font in ("font-name=DejaVu Sans 14", "font-name=DejaVu Sans 24"):
            self.set(font)
            wait_for(lambda: self.screen.area(terms)[2] > before[2], "wider terms")
            before = self.screen.area(terms)
        for button in ("Exit", "Accept"):
            x, y, width, height = self.screen.area(self.screen.control("push button", button))
            self.assertTrue(0 <= x and 0 <= y and x + width <= 1280 and y + height <= 1024, button)

    def assert_high_contrast(self, scheme, ground):
        self.accept_terms()
        self.portal(scheme, "contrast=1")
        self.start()
        wait_for(lambda: background(colors_of(self.window_area("Zarn Actions"))) == ground, "high contrast")
        for name, area in self.controls():
            self.assertGreaterEqual(text_contrast(colors_of(area)), 7, name)
        self.assert_frames_stand_out(4.5)

    def test_high_contrast_in_light(self):
        self.assert_high_contrast(LIGHT, (255, 255, 255))

    def test_high_contrast_in_dark(self):
        self.assert_high_contrast(DARK, (0, 0, 0))

    def test_the_accent_color_is_that_of_selected_text(self):
        self.accept_terms()
        self.portal(LIGHT, "accent-color=0.8,0.1,0.1")
        self.start()
        field = self.screen.control("text", "Display Name:")
        wait_for(lambda: self.screen.focused() == ("text", "Display Name:"), "the keyboard")
        type_text("selected")
        wait_for(lambda: self.screen.text("Display Name:") == "selected", "the text")
        keys("ctrl+a")
        wait_for(lambda: colors_of(self.screen.area(field)).get((204, 26, 26), 0) > 50, "the accent behind the text")

    def assert_focus_is_seen(self, *settings):
        """A ring on every control that stands out at 3 to 1 from what is around it."""
        self.accept_terms()
        self.portal(*settings)
        screen = self.start()
        for role, name in self.CONTROLS:
            if role != "label":
                self.assert_ring_appears(role, name)

    def assert_ring_appears(self, role, name):
        node = self.screen.control(role, name)
        if self.screen.focused() == (role, name):
            keys("Tab")
        wait_for(lambda: self.screen.focused() != (role, name), "the focus to move on")
        _, _, width, height = self.screen.area(node)

        def ring():
            """The contrast of the colour that most pixels take with the focus, with what is around them."""
            focused = colors_of(self.screen.area(node))
            brought = {color: count - without.get(color, 0) for color, count in focused.items()}
            color = max(brought, key=brought.get)
            # Two pixels wide at least on two sides.
            if brought[color] < 4 * height:
                return 0
            return min(contrast(color, ground) for ground in grounds)

        # Within the control's frame, and around it.
        grounds = background(self.inside(role, name)), background(colors_of(self.window_area("Zarn Actions")))
        without = colors_of(self.screen.area(node))
        self.screen.tab_to(role, name)
        wait_for(lambda: ring() >= 3, f"a ring around {name} ({role})")

    def test_the_focus_is_seen_in_light(self):
        self.assert_focus_is_seen(LIGHT)

    def test_the_focus_is_seen_in_dark(self):
        self.assert_focus_is_seen(DARK)

    def test_the_focus_is_seen_in_high_contrast(self):
        self.assert_focus_is_seen(LIGHT, "contrast=1")

    def test_the_focus_is_seen_in_dark_high_contrast(self):
        self.assert_focus_is_seen(DARK, "contrast=1")

    def assert_focus_is_seen_in_a_profile(self, *settings):
        self.accept_terms()
        write_settings(SHARED_SUITE, {"serversDict": {
            "Production": {"server": "https://zarn.example:8443", "date": datetime.datetime(2026, 1, 5)}}})
        write_settings(ACTIONS_SUITE, {"currentServer": "Production", "hideCreds": 1})
        self.portal(*settings)
        self.start()
        # The menu has the keyboard first, and its ring may be on the screen a moment longer.
        for role, name in (("push button", "hide username/password fields"), ("combo box", "Production")):
            self.assert_ring_appears(role, name)

    def test_the_focus_is_seen_on_the_server_menu_and_the_triangle_in_light(self):
        self.assert_focus_is_seen_in_a_profile(LIGHT)

    def test_the_focus_is_seen_on_the_server_menu_and_the_triangle_in_dark(self):
        self.assert_focus_is_seen_in_a_profile(DARK)

    def test_a_style_that_the_user_forces_is_taken(self):
        self.accept_terms()
        looks = []
        for environment in ({}, {"QT_STYLE_OVERRIDE": "windows"}):
            program = self.start_program(environment=environment).wait_for_window()
            button = program.screen.control("push button", "Cancel")
            wait_for(lambda: len(colors_of(program.screen.area(button))) > 3, "a painted button")
            x, y, _, _ = program.screen.area(button)
            looks.append(pixels((x, y, 40, 16)))
            self.assertEqual(program.errors(), "")
            program.process.terminate()
            program.ended()
        self.assertNotEqual(*looks)


if __name__ == "__main__":
    unittest.main()
