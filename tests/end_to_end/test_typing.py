# SPDX-License-Identifier: MIT
"""What people paste into the fields: each text in each field, as far as the server and the files."""

import unittest

from screen import is_enabled, wait_for
from world import SHARED_SUITE, DemoServer, WorldTest, current_profile, log_text, settings

# A field holds this many characters.
HELD = 32767
TEXTS = {
    "quotes and backslashes": "\"quoted\" 'single' back\\slash\\",
    "right to left": "\u202eright \u05d0\u05d1\u05d2 \u0627\u0644\u062d\u202c",
    "emoji": "\U0001f511\U0001f468\u200d\U0001f469\u200d\U0001f467",
    "line breaks": "one\r\ntwo\nthree\rfour",
    "control characters": "".join(map(chr, range(1, 32))) + "\x7f",
    "header": "x\r\nX-Planted: yes\r\n\r\nGET / HTTP/1.1",
    "markup": "<b>bold</b> &amp; %41 ${HOME} `id` {{1}}",
    "blanks": "  \t ",
    "a megabyte": "m" * 1_000_000,
    "ten megabytes": "\U0001f511 " * 2_000_000,
}
FIELDS = ("Display Name:", "Server URL:", "Username:", "Password:")


def held(text):
    """What a field holds of a text: so many UTF-16 units, half a character as a question mark."""
    return text.encode("utf-16-le")[:2 * HELD].decode("utf-16-le", "replace").replace("\ufffd", "?")


def stored(text):
    """What a settings file can hold of a text."""
    return "".join("\ufffd" if ord(letter) < 32 and letter not in "\t\n\r" else letter for letter in text)


class Typing(WorldTest):
    def setUp(self):
        super().setUp()
        self.accept_terms()
        self.server = self.start_server()
        self.program = self.start_program(server=self.server).wait_for_window()
        self.screen = self.program.screen
        self.ordinary = dict(zip(FIELDS, ("Ordinary", self.server.url, DemoServer.USER, DemoServer.PASSWORD)))

    def fill_in(self, **changes):
        screen = self.screen
        if screen.find("push button", "Set"):
            screen.choose("Add Server...")
        screen.control("push button", "Add")
        if not screen.is_checked("Use username and password"):
            screen.toggle("Use username and password")
        for label in FIELDS:
            text = changes.get(label, self.ordinary[label])
            screen.fill(label, text, role="password text" if label == "Password:" else "text")

    def outcome(self):
        """The alert's texts, or None when the window is ready again without one."""
        button = self.screen.control("push button", "Add")
        before = len(log_text())
        self.screen.press("Add")
        wait_for(lambda: len(log_text()) > before, "the request to be logged")

        def ended():
            ready = is_enabled(button) and not self.screen.shows("progress bar", "Validating")
            return self.screen.has_alert() or ready

        wait_for(ended, "the end of the request", 30)
        if not self.screen.has_alert():
            return None
        alert = self.screen.alert()
        texts = alert.texts
        alert.press("OK")
        return texts

    def check_each_in(self, label, expected):
        for name, text in TEXTS.items():
            with self.subTest(text=name):
                self.server.reset()
                before = len(log_text())
                self.fill_in(**{label: text})
                texts = self.outcome()
                expected(held(text), texts, log_text()[before:])
                for request in self.server.requests():
                    self.assertNotIn("X-Planted", dict(request["headers"]))
        # Nothing of it has done lasting harm.
        self.server.reset()
        self.fill_in()
        self.assertEqual(self.outcome(), ["Ordinary was successfully set"])

    def test_in_the_display_name(self):
        def expected(text, texts, _):
            self.assertEqual(texts, [text + " was successfully set"])
            self.assertEqual(settings(SHARED_SUITE)["serversDict"][stored(text)]["server"], self.server.url)

        self.check_each_in("Display Name:", expected)

    def test_in_the_server_url(self):
        def expected(text, texts, log):
            problem = "[TokenDelegate.getToken] Problem constructing the URL from " + text
            if texts is None:
                self.assertIn(problem, log)
            else:
                self.assertNotIn(problem, log)
                self.assertEqual(texts, ["Failed to connect to " + text.split(":")[0]])
            self.assertEqual(self.server.requests(), [])

        self.check_each_in("Server URL:", expected)

    def rejected(self, _, texts, __):
        self.assertEqual(texts, ["Failed to authenticate. HTTP status code: 401"])
        self.assertEqual(len(self.server.requests()), 1)

    def test_in_the_username(self):
        self.check_each_in("Username:", self.rejected)
        self.assertEqual(self.program.errors(), "")

    def test_in_the_password(self):
        self.check_each_in("Password:", self.rejected)
        self.assertEqual(self.program.errors(), "")


class Accepted(WorldTest):
    """A server that takes such credentials: they come to the keychain as they were typed."""

    USER = "us\"er\\ \U0001f511 \u05d0"
    PASSWORD = "p\"ass\\word' \u202e\u0627 <&> %41"

    def test_odd_credentials_are_kept_as_they_are(self):
        self.accept_terms()
        server = self.start_server("--user", self.USER, "--password", self.PASSWORD)
        program = self.start_program(server=server).wait_for_window()
        screen = program.screen
        screen.toggle("Use username and password")
        screen.fill("Display Name:", "Odd")
        screen.fill("Server URL:", server.url)
        screen.fill("Username:", self.USER)
        screen.fill("Password:", self.PASSWORD, role="password text")
        screen.press("Add")
        self.assertEqual(screen.alert().texts, ["Odd was successfully set"])
        screen.alert().press("OK")
        # Verbatim, although no reader of JSON takes it.
        text = wait_for(current_profile, "the current profile")
        self.assertEqual(text, '{"server":"%s", "username":"%s", "password":"%s", "useApiClient":"0"}'
                         % (server.url, self.USER, self.PASSWORD))
        self.assertEqual(program.errors(), "")


if __name__ == "__main__":
    unittest.main()
