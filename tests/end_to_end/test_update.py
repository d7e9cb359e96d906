# SPDX-License-Identifier: MIT
"""The update check of the real program against a page with a self-signed certificate."""

import os
import unittest

from screen import wait_for
from update_page import UpdatePage
from world import VERSION, WorldTest

ROW = "<tr><td>Current Version</td><td>"


class Update(WorldTest):
    def setUp(self):
        super().setUp()
        self.accept_terms()
        self.page = UpdatePage()
        self.addCleanup(self.page.stop)
        self.tools = os.path.join(os.environ["ZARN_DESKTOP_SCRATCH"], "tools")
        os.makedirs(self.tools, exist_ok=True)
        self.opened = os.path.join(self.tools, "opened")
        if os.path.exists(self.opened):
            os.remove(self.opened)
        opener = os.path.join(self.tools, "xdg-open")
        with open(opener, "w", encoding="utf-8") as file:
            file.write(f'#!/bin/sh\nprintf "%s\\n" "$1" >> {self.opened}\n')
        os.chmod(opener, 0o755)

    def start(self):
        environment = {**self.page.environment, "PATH": self.tools + ":" + os.environ["PATH"]}
        self.program = self.start_program(environment=environment).wait_for_window()
        self.screen = self.program.screen

    def check(self, body, status="200 OK"):
        self.page.publish(body, status)
        self.screen.menu("Zarn Actions", "Check for Updates…")
        return self.screen.alert()

    def assert_result(self, body, newer, status="200 OK"):
        alert = self.check(body, status)
        message = "A new versions is available." if newer else "No updates are currently available."
        self.assertEqual(alert.texts, [f"Running Zarn Actions: {VERSION}", message], body)
        self.assertEqual(sorted(alert.buttons), ["Ignore", "View"] if newer else ["OK"])
        alert.press("Ignore" if newer else "OK")

    def test_every_kind_of_page(self):
        self.start()
        self.assert_result(f"<html>{ROW}1.10.0</td></tr></html>", True)
        self.assert_result(f"{ROW}{VERSION}</td></tr>", False)
        self.assert_result(f"{ROW}0.9.9</td></tr>", False)
        self.assert_result(f"{ROW}{VERSION}b2</td></tr>", True)
        self.assert_result(f"{ROW}9.9.9</td></tr>", False, status="404 Not Found")
        self.assert_result(b"\xff" + f"{ROW}9.9.9</td>".encode(), False)
        self.assert_result("<html>nothing here</html>", False)
        self.assert_result(f"{ROW}</td></tr>{ROW}2.0.0</td>{ROW}0.1.0</td>", True)
        self.assert_result(f"{ROW}1.0t99</td></tr>", False)
        self.assert_result(f"{ROW}2d</td></tr>", True)
        self.assertEqual(self.program.errors(), "")

    def test_the_request_says_nothing_about_the_user(self):
        self.start()
        self.assert_result(f"{ROW}{VERSION}</td></tr>", False)
        self.assertEqual(self.page.requests,
                         ["GET /releases HTTP/1.1\r\nHost: zarn-actions.example\r\n\r\n"])

    def test_view_opens_the_page_and_ignore_does_not(self):
        self.start()
        self.check(f"{ROW}2.0.0</td></tr>").press("Ignore")
        self.assertFalse(os.path.exists(self.opened))
        self.check(f"{ROW}2.0.0</td></tr>").press("View")
        wait_for(lambda: os.path.exists(self.opened) and os.path.getsize(self.opened), "the page to open")
        with open(self.opened, encoding="utf-8") as file:
            self.assertEqual(file.read(), "https://zarn-actions.example/releases\n")

    def test_without_a_network_nothing_is_shown(self):
        self.start()
        self.page.reply = b""
        self.screen.menu("Zarn Actions", "Check for Updates…")
        wait_for(lambda: self.page.requests, "the request")
        # The next check is answered after this one has ended, and is the only one that shows anything.
        self.assert_result(f"{ROW}{VERSION}</td></tr>", False)
        self.assertFalse(self.screen.has_alert())


if __name__ == "__main__":
    unittest.main()
