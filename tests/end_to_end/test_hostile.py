# SPDX-License-Identifier: MIT
"""Servers that mean harm: the window answers at once all the while, and each ends as it should."""

import gzip
import time
import unittest

from answers import LIMIT, Answers
from screen import SLOWNESS, is_enabled, wait_for
from world import DemoServer, WorldTest, log_text

TOKEN = "/api/v1/auth/token"
CANNOT_CONNECT = ["Failed to connect to 127.0.0.1"]
NO_VERSION = "Attention"
SILENT = None

# What the server does, and the alert that ends it; without one the window is simply ready again.
REPLIES = {
    "an endless body": (dict(body="x" * 4096, endless="1", without_length="1"), CANNOT_CONNECT),
    "a hundred megabytes of JSON":
        (dict(body_start='{"token":"', body="x" * 65536, repeat="1600", body_end='"}'), CANNOT_CONNECT),
    "fifteen megabytes of JSON without a token":
        (dict(body_start='{"other":"', body="x" * 65536, repeat="240", body_end='"}'), NO_VERSION),
    "fifteen megabytes of numbers":
        (dict(body_start='{"token":[1', body=",1" * 32768, repeat="240", body_end="]}"), SILENT),
    "fifteen megabytes in a list":
        (dict(body_start='["', body="x" * 65536, repeat="240", body_end='"]'), SILENT),
    "ninety thousand keys":
        (dict(body="{" + ",".join(f'"k{i}":{i}' for i in range(90000)) + "}"), NO_VERSION),
    "two hundred thousand keys":
        (dict(body="{" + ",".join(f'"k{i}":{i}' for i in range(200000)) + "}"), SILENT),
    "nesting of 100,000": (dict(body="[", repeat="100000"), SILENT),
    "objects nested 100,000 deep": (dict(body='{"a":', repeat="100000"), SILENT),
    "invalid UTF-8": (dict(body=b'{"token":"\xff\xfe"}'), SILENT),
    "no JSON": (dict(body="<html>"), SILENT),
    "an empty body": (dict(body=""), SILENT),
    "huge numbers": (dict(body='{"token":"t","a":1e400,"b":-1e400,"c":' + "9" * 5000 + "}"), SILENT),
    "duplicate keys": (dict(body='{"token":"a","token":"b"}'), NO_VERSION),
    "a body that only claims to be compressed":
        (dict(header="Content-Encoding: gzip", body=b"\x1f\x8b\x08" + b"\0" * 1000), CANNOT_CONNECT),
    "a hundred megabytes compressed":
        (dict(header="Content-Encoding: gzip", body=gzip.compress(b"0" * 100_000_000)), CANNOT_CONNECT),
    "a redirect without end": (dict(status="302", location=TOKEN),
                               ["Failed to authenticate. HTTP status code: 302"]),
    "a flood of headers":
        (dict(raw="HTTP/1.1 200 OK\r\n" + "X-Flood: flood flood flood\r\n" * 20000 + "\r\n"), CANNOT_CONNECT),
    "no HTTP at all": (dict(raw="SSH-2.0-other\r\n"), CANNOT_CONNECT),
    "a reset before the first byte": (dict(drop_after="0"), CANNOT_CONNECT),
    "a reset in the status line": (dict(drop_after="7"), CANNOT_CONNECT),
    "a reset in the headers": (dict(drop_after="40"), CANNOT_CONNECT),
    "a body cut short": (dict(body="x" * 1000, drop_after="600", drop_quietly="1"), CANNOT_CONNECT),
}


class Hostile(WorldTest):
    def setUp(self):
        super().setUp()
        self.accept_terms()
        self.server = self.start_server()
        self.program = self.start_program(server=self.server).wait_for_window()
        self.screen = self.program.screen
        self.screen.toggle("Use username and password")
        self.screen.fill("Display Name:", "Hostile")
        self.screen.fill("Server URL:", self.server.url)
        self.screen.fill("Username:", DemoServer.USER)
        self.screen.fill("Password:", DemoServer.PASSWORD, role="password text")
        self.button = self.screen.control("push button", "Add")
        self.answers = Answers(self, self.program)

    def is_ready(self):
        return is_enabled(self.button) and not self.screen.shows("progress bar", "Validating")

    def outcome(self):
        """The alert's texts, or None once the window is ready again without one."""
        wait_for(lambda: self.screen.has_alert() or self.is_ready(), "the end of the request", 30)
        if not self.screen.has_alert():
            return SILENT
        alert = self.screen.alert()
        texts = alert.texts
        alert.press("OK")
        wait_for(self.is_ready, "the window to be ready again")
        return texts

    def test_each_ends_as_it_should_and_the_window_answers_all_the_while(self):
        replies = 0
        for name, (fault, expected) in REPLIES.items():
            with self.subTest(name):
                self.server.reset()
                self.server.fault(path=TOKEN, **{"status": "200", **fault})
                before = len(log_text())
                self.answers.take()
                self.screen.press("Add")
                wait_for(lambda: "Attempting to retrieve token" in log_text()[before:], "the request to be logged")
                texts = self.outcome()
                self.assertEqual(texts[0] if texts and expected == NO_VERSION else texts, expected)
                if expected is SILENT:
                    self.assertIn("[TokenDelegate.getToken] JSON error.\n", log_text()[before:])
                self.assertLess(self.answers.take(), LIMIT)
            replies += 1
        print(f"{replies} hostile replies: {self.answers}")
        self.server.reset()
        self.screen.press("Add")
        self.assertEqual(self.screen.alert().texts, ["Hostile was successfully set"])
        self.assertEqual(self.program.errors(), "")

    def test_one_byte_per_second_leaves_the_window_alive_and_quit_ends_it(self):
        self.server.fault(path=TOKEN, byte_ms="1000")
        self.screen.press("Add")
        wait_for(lambda: self.screen.shows("progress bar", "Validating"), "the request to run")
        time.sleep(5)
        self.assertLess(self.answers.take(), LIMIT)
        self.assertGreater(self.answers.count, 20)
        print(f"one byte a second: {self.answers}")
        self.assertFalse(is_enabled(self.button))
        # Menus open and windows come up while the reply trickles.
        self.screen.menu("Zarn Actions", "About Zarn Actions")
        wait_for(lambda: "About" in self.screen.window_titles(), "the About window")
        start = time.monotonic()
        self.screen.menu("Zarn Actions", "Quit Zarn Actions")
        self.assertEqual(self.program.ended(), 0)
        self.assertLess(time.monotonic() - start, 5 * SLOWNESS)
        self.assertEqual(self.program.errors(), "")


if __name__ == "__main__":
    unittest.main()
