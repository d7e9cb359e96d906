# SPDX-License-Identifier: MIT
"""The status line in the real window: what goes on, and the cause of each failure."""

import contextlib
import json
import os
import socket
import subprocess
import sys
import tempfile
import unittest

from screen import _walk, is_showing, wait_for
from world import ACTIONS_SUITE, SHARED_SUITE, DemoServer, WorldTest, config_folder, current_profile, settings

# A process of its own: who handles events must not remember the tree.
LISTENER = """
import gi, json, sys
gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib

def heard(event):
    try:
        event.source.clear_cache()
        if event.source.get_role_name() == "notification" and event.detail1:
            print(json.dumps(event.source.get_name()), flush=True)
    except GLib.Error:
        pass  # It is gone already.

listener = Atspi.EventListener.new(heard)
listener.register("object:state-changed:showing")
print(json.dumps("ready"), flush=True)
Atspi.event_main()
"""


class StatusTest(WorldTest):
    def setUp(self):
        super().setUp()
        self.accept_terms()

    def start(self, server=None, environment=None):
        self.program = self.start_program(server=server, environment=environment).wait_for_window()
        self.screen = self.program.screen

    def status(self):
        for window in self.screen.windows():
            for node in _walk(window):
                if node.get_role_name() == "notification":
                    return node.get_name()
        return None

    def add(self, url, secret=DemoServer.SECRET):
        self.screen.fill("Display Name:", "Demo")
        self.screen.fill("Server URL:", url)
        self.screen.fill("Client ID:", DemoServer.CLIENT)
        self.screen.fill("Client Secret:", secret, role="password text")
        self.screen.press("Add")

    def printed(self):
        """What stands on standard output about requests."""
        return [line for line in self.program.output().splitlines() if line.startswith("[TokenDelegate.")]

    def assert_cause(self, cause, operation="getToken"):
        wait_for(lambda: self.status() == cause, f"the status {cause!r}, which is {self.status()!r}", 30)
        self.assertEqual(self.printed()[-1], f"[TokenDelegate.{operation}] {cause}")

    def assert_failure(self, url, alert, cause):
        before = len(self.printed())
        self.add(url)
        shown = self.screen.alert()
        self.assertEqual(shown.texts, [alert])
        self.assert_cause(cause)
        self.assertEqual(len(self.printed()), before + 1)
        shown.press("OK")
        self.assertEqual(self.status(), cause)
        self.screen.fill("Client ID:", "the next act")
        wait_for(lambda: self.status() == "", "the status to end")

    @contextlib.contextmanager
    def listening(self):
        """Reports what a screen reader has spoken so far."""
        with tempfile.TemporaryFile("w+") as heard, subprocess.Popen(
                [sys.executable, "-c", LISTENER], stdout=heard) as listener:
            def texts():
                heard.seek(0)
                return [json.loads(line) for line in heard.read().splitlines()]
            try:
                wait_for(texts, "the listener to be ready")
                yield lambda: texts()[1:]
            finally:
                listener.terminate()

    def content_size(self):
        for node in _walk(self.screen.windows()[0]):
            if node.get_role_name() == "filler":
                size = node.get_component_iface().get_size()
                return size.x, size.y
        return None


class Causes(StatusTest):
    def test_what_no_server_answers_has_its_cause(self):
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            closed = free.getsockname()[1]
        self.start()
        for url, host, cause in (
                ("https://zarn.invalid:8443", "zarn.invalid",
                 "The name zarn.invalid was not found; check its spelling and the network"),
                (f"https://127.0.0.1:{closed}", "127.0.0.1", f"127.0.0.1 refused the connection on port {closed}"),
                ("http://zarn.example", "zarn.example",
                 "http is only for servers on this computer; use https for zarn.example"),
                ("zarn.example:8443", "zarn.example", "The server URL must have the form https://host:port"),
                ("https://api.example", "api.example",
                 'A server whose name begins with "api" cannot be reached by that name')):
            with self.subTest(cause):
                self.assert_failure(url, "Failed to connect to " + host, cause)
        self.assertEqual(self.program.errors().splitlines(),
                         ["zarn-actions: nothing was sent to http://zarn.example: "
                          "http is allowed to this computer only, use https"])

    def test_each_refused_certificate_has_its_cause(self):
        for kind, cause in (("expired", "has expired"), ("not-yet-valid", "is not valid yet; check the clock"),
                            ("wrong-name", "is for another name"), ("self-signed", "is from an unknown authority"),
                            ("good", "is from an unknown authority")):
            with self.subTest(kind):
                server = self.start_server("--certificate", kind)
                self.clear_world()
                self.accept_terms()
                self.start(None if kind == "good" else server)
                self.assert_failure(server.url, "Failed to connect to 127.0.0.1",
                                    "The certificate of 127.0.0.1 " + cause)
                self.program.end()

    def test_each_odd_reply_has_its_cause(self):
        server = self.start_server()
        self.start(server)
        for fault, cause in (
                ({"endless": "1", "body": "x"}, "The reply of 127.0.0.1 is too large"),
                ({"raw": "SSH-2.0-server\r\n"}, "127.0.0.1 did not reply in HTTP; check the port"),
                ({"drop_after": "0"}, "127.0.0.1 ended the connection before its reply was complete")):
            with self.subTest(cause):
                server.fault(path="/api/oauth/token", times="1", **fault)
                self.assert_failure(server.url, "Failed to connect to 127.0.0.1", cause)
        for status, cause in (
                ("302", "127.0.0.1 redirects to https://sso.example:8443, where credentials are not sent"),
                ("404", "127.0.0.1 has no Zarn Pro service at this address (HTTP 404)"),
                ("503", "127.0.0.1 has a problem of its own (HTTP 503)")):
            with self.subTest(cause):
                server.fault(path="/api/oauth/token", times="1", status=status,
                             location="https://sso.example:8443/login?x")
                self.assert_failure(server.url, "Failed to authenticate. HTTP status code: " + status, cause)

    def test_an_old_server_is_refused_with_the_library_s_reason(self):
        server = self.start_server("--lowest-tls", "1.0", "--highest-tls", "1.1")
        self.start(server)
        self.add(server.url)
        self.screen.alert().press("OK")
        self.assertRegex(self.status(), "^No secure connection to 127.0.0.1: .*(version|protocol)")

    def test_a_wrong_secret_is_a_cause_and_a_later_success_leaves_nothing(self):
        server = self.start_server()
        self.start(server)
        self.add(server.url, "a wrong secret")
        self.screen.alert().press("OK")
        self.assert_cause("127.0.0.1 does not accept these credentials (HTTP 401)")
        self.add(server.url)
        alert = self.screen.alert()
        self.assertEqual(alert.texts, ["Demo was successfully set"])
        self.assertEqual(self.status(), "")
        alert.press("OK")
        self.assertEqual(self.status(), "")
        self.assertEqual(len(self.printed()), 1)
        for secret in (DemoServer.SECRET, "a wrong secret"):
            self.assertNotIn(secret, self.program.output() + self.program.errors())

    def test_what_ends_without_an_alert_has_its_cause_too(self):
        page = self.start_server("--fault", "path=/api/oauth/token&body=<html>Welcome</html>")
        version = self.start_server("--server-version", "11.4")
        for server, url, operation, cause in (
                (page, " " + page.url, "getToken", "The server URL holds a blank"),
                (page, page.url + "/<", "getToken", "The server URL holds the character <"),
                (page, page.url, "getToken", "The reply of 127.0.0.1 is not JSON; check the address and port"),
                (version, version.url, "getVersion", 'The version "11.4" of 127.0.0.1 was not understood')):
            with self.subTest(cause):
                self.clear_world()
                self.accept_terms()
                self.start(server)
                self.add(url)
                self.assert_cause(cause, operation)
                self.assertFalse(self.screen.has_alert())
                self.program.end()


class TimeOut(StatusTest):
    def test_a_silent_server_times_out_after_a_minute_and_the_status_says_what_goes_on(self):
        server = self.start_server("--fault", "path=/api/oauth/token&raw=HTTP/1.1 200&stall=1")
        self.start(server)
        self.add(server.url)
        wait_for(lambda: self.status() == "Asking 127.0.0.1 for a token", "the progress")
        # The user may go on typing meanwhile.
        self.screen.fill("Client ID:", "typed meanwhile")
        self.assertEqual(self.status(), "Asking 127.0.0.1 for a token")
        self.assertEqual(self.printed(), [])
        self.assertEqual(self.screen.alert(90).texts, ["Failed to connect to 127.0.0.1"])
        self.assert_cause("127.0.0.1 did not answer in time")


class Line(StatusTest):
    def test_a_screen_reader_hears_each_text_once(self):
        # A listener reads a text when it hears of it: each stays for a while.
        server = self.start_server("--fault", "path=/api/oauth/token&delay-ms=3000",
                                   "--fault", "path=/api/v1/zarn-pro-version&status=404&delay-ms=3000")
        # The toolkit sends no event that nobody listened for when it started.
        with self.listening() as heard:
            self.start(server)
            self.add(server.url)
            self.screen.alert().press("OK")
            expected = ["Asking 127.0.0.1 for a token", "Asking 127.0.0.1 for its version",
                        "127.0.0.1 has no Zarn Pro service at this address (HTTP 404)"]
            wait_for(lambda: len(heard()) >= len(expected), "the announcements")
            self.assertEqual(heard(), expected)

    def test_the_line_has_its_place_in_both_sizes_and_nothing_moves(self):
        server = self.start_server()
        self.start(server)
        self.assertEqual(self.content_size(), (518, 208))
        before = self.boxes()
        self.add("https://" + ".".join(["x" * 50] * 4) + ".invalid")
        self.screen.alert().press("OK")
        self.assertRegex(self.status(), "^The name x{20}…x{12}.invalid was not found")
        self.assertEqual(self.boxes(), before)
        self.screen.fill("Client ID:", "x")
        self.add(server.url)
        self.screen.alert().press("OK")
        self.program.end()
        self.start(server)
        wait_for(lambda: self.content_size() == (518, 85), "the small size")
        self.assertEqual(self.overlapping(), [])

    def test_a_setting_that_was_not_stored_is_in_the_line(self):
        server = self.start_server()
        self.start(server)
        # In the way of the new file, for an administrator too.
        obstacle = os.path.join(config_folder(), SHARED_SUITE + ".plist.tmp")
        os.makedirs(obstacle)
        self.add(server.url)
        alert = self.screen.alert()
        self.assertEqual(alert.texts, ["Demo was successfully set"])
        reason = f"cannot remove {obstacle}: Is a directory"
        cause = "The settings did not take the change: " + reason
        wait_for(lambda: self.status() == cause, f"the status {cause!r}, which is {self.status()!r}")
        self.assertIn("[settings.save] " + cause, self.program.output().splitlines())
        self.assertIn(f"zarn-actions: setting serversDict was not saved: {reason}",
                      self.program.errors().splitlines())
        self.assertEqual(settings(SHARED_SUITE), {"serversDict": {}})
        alert.press("OK")
        self.assertEqual(self.status(), cause)
        self.screen.fill("Client ID:", "the next act")
        wait_for(lambda: self.status() == "", "the status to end")

    def boxes(self):
        found = {}
        for node in _walk(self.screen.windows()[0]):
            if is_showing(node) and node.get_role_name() in (
                    "label", "text", "password text", "combo box", "check box", "push button", "notification"):
                place = node.get_component_iface().get_position(1)
                size = node.get_component_iface().get_size()
                found[(node.get_role_name(), node.get_name() if node.get_role_name() != "notification" else "")] = (
                    place.x, place.y, size.x, size.y)
        return found

    def overlapping(self):
        boxes = list(self.boxes().items())
        return [(name, other) for i, (name, a) in enumerate(boxes) for other, b in boxes[:i]
                if a[0] < b[0] + b[2] and b[0] < a[0] + a[2] and a[1] < b[1] + b[3] and b[1] < a[1] + a[3]]


class CredentialMode(StatusTest):
    """The kind of credentials on each way out of add mode, in both modes."""

    def register(self, by_username):
        self.server = self.start_server()
        self.start(self.server)
        if by_username:
            self.screen.toggle("Use username and password")
        user, secret = ((DemoServer.USER, DemoServer.PASSWORD) if by_username
                        else (DemoServer.CLIENT, DemoServer.SECRET))
        self.screen.fill("Display Name:", "First")
        self.screen.fill("Server URL:", self.server.url)
        self.screen.fill("Username:" if by_username else "Client ID:", user)
        self.screen.fill("Password:" if by_username else "Client Secret:", secret, role="password text")
        self.screen.press("Add")
        alert = self.screen.alert()
        self.assertEqual(alert.texts, ["First was successfully set"])
        alert.press("OK")

    def restart(self):
        self.program.end()
        self.start(self.server)

    def assert_mode(self, by_username):
        user = DemoServer.USER if by_username else DemoServer.CLIENT
        wait_for(lambda: self.screen.is_checked("Use username and password") == by_username, "the check box")
        label = "Username:" if by_username else "Client ID:"
        wait_for(lambda: self.screen.shows("text", label) and self.screen.text(label) == user, f"{label} {user}")
        secret = self.screen.control("password text", "Password:" if by_username else "Client Secret:")
        self.assertGreater(secret.get_text_iface().get_character_count(), 0)
        self.assertEqual(settings(ACTIONS_SUITE).get("useUsername", 0), int(by_username))
        wait_for(lambda: json.loads(current_profile() or "{}").get("useApiClient") == str(int(not by_username)),
                 "the current profile to agree")

    def ways_out(self, by_username):
        self.register(by_username)
        self.assert_mode(by_username)
        self.restart()
        self.screen.press("show username/password fields")
        self.assert_mode(by_username)
        self.screen.choose("Add Server...")
        wait_for(lambda: self.screen.shows("push button", "Add"), "add mode")
        self.assertFalse(self.screen.is_checked("Use username and password"))
        self.screen.press("Cancel")
        wait_for(lambda: self.screen.shows("push button", "Set"), "profile mode")
        self.assert_mode(by_username)
        self.restart()
        self.assert_mode(by_username)
        self.screen.choose("Add Server...")
        wait_for(lambda: self.screen.shows("push button", "Add"), "add mode")
        self.restart()
        self.assert_mode(by_username)
        # A success in the other kind is stored, and is there after a restart.
        self.screen.choose("Add Server...")
        wait_for(lambda: self.screen.shows("push button", "Add"), "add mode")
        self.add(self.server.url)
        self.screen.alert().press("OK")
        self.assert_mode(False)
        self.restart()
        self.assert_mode(False)
        self.assertEqual(set(settings(SHARED_SUITE)["serversDict"]), {"First", "Demo"})

    def test_with_a_username_and_a_password(self):
        self.ways_out(True)

    def test_with_an_api_client(self):
        self.ways_out(False)


if __name__ == "__main__":
    unittest.main()
