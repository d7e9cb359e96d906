# SPDX-License-Identifier: MIT
"""The two faces of the program: what zarn-profile does is what the window does."""

import glob
import os
import re
import shutil
import subprocess
import unittest

from world import (ACTIONS_SUITE, SHARED_SUITE, STANDARD, DemoServer, WorldTest, built, config_folder, keychain_items,
                   log_messages, settings, wait_for, write_settings)

BERLIN, CLIENT = 'B\u00e9rlin "q" \\ <&>', "A client"


class Window:
    """Each step in a run of its own, as that of a command is."""

    def __init__(self, test, server):
        self.test, self.server = test, server

    def run(self, step):
        program = self.test.start_program(server=self.server).wait_for_window()
        step(program.screen)
        program.end()

    def add(self, name, url, user, secret, by_username):
        def step(screen):
            if settings(SHARED_SUITE).get("serversDict"):
                screen.choose("Add Server...")
            screen.fill("Display Name:", name)
            screen.fill("Server URL:", url)
            if by_username:
                screen.toggle("Use username and password")
            screen.fill("Username:" if by_username else "Client ID:", user)
            screen.fill("Password:" if by_username else "Client Secret:", secret, role="password text")
            screen.press("Add")
            screen.alert().press("OK")
        self.run(step)

    def use(self, name):
        self.run(lambda screen: (screen.choose(name), wait_for(lambda: screen.choice() == name, "the choice")))

    def set(self, name, user, secret):
        """The kind of credentials was that of the server that was added last."""
        def step(screen):
            self.test.assertEqual(screen.choice(), name)
            screen.toggle("Use username and password")
            wait_for(lambda: screen.text("Username:") == user, "the stored user")
            screen.fill("Password:", secret, role="password text")
            screen.press("Set")
            screen.alert().press("OK")
        self.run(step)

    def remove(self, name):
        def step(screen):
            screen.choose(name, modifier="alt")
            screen.alert().press("OK")
        self.run(step)


class Terminal:
    def __init__(self, test, server):
        self.test, self.server = test, server

    def run(self, *words, secret="", code=0):
        environment = {**os.environ, "SSL_CERT_FILE": self.server.ca_file, "no_proxy": "127.0.0.1,localhost"}
        done = subprocess.run([built("zarn-profile"), *words], input=secret + "\n", env=environment, timeout=60,
                              capture_output=True, text=True, check=False)
        self.test.assertEqual(done.returncode, code, done.stderr)

    def add(self, name, url, user, secret, by_username):
        code = 0 if secret in (DemoServer.PASSWORD, DemoServer.SECRET) else 1
        self.run("add", name, "--url", url, "--user" if by_username else "--client-id", user, secret=secret, code=code)

    def use(self, name):
        self.run("use", name)

    def set(self, name, _, secret):
        self.run("set", name, secret=secret)

    def remove(self, name):
        self.run("remove", "--yes", name)


class Faces(WorldTest):
    def setUp(self):
        super().setUp()
        self.port = "0"

    def traces(self, face_of, start):
        """What each step leaves and sends, from one start and one port on."""
        self.clear_world()
        self.accept_terms()
        start()
        server = DemoServer("--https-port", self.port)
        try:
            self.port = server.url.rsplit(":", 1)[1]
            face, url, local = face_of(self, server), server.url + "/", f"https://localhost:{self.port}"
            steps = {
                "register a user": lambda: face.add(BERLIN, url, DemoServer.USER, DemoServer.PASSWORD, True),
                "register an API client": lambda: face.add(CLIENT, local, DemoServer.CLIENT, DemoServer.SECRET, False),
                "select": lambda: face.use(BERLIN),
                "prove again": lambda: face.set(BERLIN, DemoServer.USER, DemoServer.PASSWORD),
                "be refused": lambda: face.add("Refused", local, DemoServer.CLIENT, "wrong", False),
                "remove": lambda: face.remove(CLIENT),
            }
            found = {}
            for name, step in steps.items():
                shutil.rmtree(os.path.join(os.environ["HOME"], "Library"), ignore_errors=True)
                server.reset()
                step()
                found[name] = {"settings": self.settings_files(), "keychain": keychain_items(),
                               "requests": [self.comparable(request) for request in server.requests()],
                               "log": log_messages()}
            return found
        finally:
            server.stop()

    @staticmethod
    def comparable(request):
        return {key: request[key] for key in ("method", "target", "headers", "body")}

    @staticmethod
    def settings_files():
        """The bytes of each domain; the moment of a registration is no difference."""
        files = {}
        for path in glob.glob(os.path.join(config_folder(), "*.plist")):
            with open(path, "rb") as file:
                files[os.path.basename(path)] = re.sub(rb"<date>[-0-9T:]*Z</date>", b"<date/>", file.read())
        return files

    def compare(self, start):
        window = self.traces(Window, start)
        terminal = self.traces(Terminal, start)
        for step, expected in window.items():
            for what, value in expected.items():
                with self.subTest(step=step, what=what):
                    self.assertTrue(value or what in ("requests", "log"), "nothing to compare")
                    self.assertEqual(terminal[step][what], value)
        for step in ("register a user", "register an API client", "prove again", "be refused"):
            self.assertTrue(window[step]["requests"] and window[step]["log"], step)

    def test_both_store_send_and_log_the_same_from_nothing(self):
        self.compare(lambda: write_settings(ACTIONS_SUITE, {"hideCreds": 1}))

    def test_both_keep_what_others_stored(self):
        def start():
            write_settings(STANDARD, {"agreedToTermsOfUse": True, "other": [1, {"a": b"data"}]})
            write_settings(ACTIONS_SUITE, {"hideCreds": 1, "saveCreds": 0, "currentServer": "gone", "username": "x",
                                           "unknown": {"key": "value"}})
        self.compare(start)

    def test_a_window_that_is_open_is_left_alone(self):
        self.accept_terms()
        server = self.start_server()
        program = self.start_program(server=server).wait_for_window()
        before = self.settings_files()
        terminal = Terminal(self, server)
        terminal.run("add", "New", "--url", server.url, "--user", DemoServer.USER, secret=DemoServer.PASSWORD, code=7)
        terminal.run("use", "New", code=7)
        terminal.run("list")
        self.assertEqual(self.settings_files(), before)
        self.assertEqual(server.requests(), [])
        self.assertIsNone(program.process.poll())
        program.end()
        terminal.run("add", "New", "--url", server.url, "--user", DemoServer.USER, secret=DemoServer.PASSWORD)


if __name__ == "__main__":
    unittest.main()
