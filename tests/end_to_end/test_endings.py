# SPDX-License-Identifier: MIT
"""Whatever the program is in the middle of, signals and the end of the session end it in good order.

Needs a desktop without a keyring service of its own.
"""

import datetime
import os
import signal
import subprocess
import unittest

from screen import ON_WAYLAND, wait_for
from stand_ins import Opener
from update_page import UpdatePage
from world import SHARED_SUITE, STANDARD, DemoServer, WorldTest, settings, write_settings

HERE = os.path.dirname(os.path.realpath(__file__))
SUPPORT = os.path.join(HERE, "../support")
TOKEN = "/api/oauth/token"


class Endings(WorldTest):
    """One test a state; a class below for each way to end."""

    arguments = ["--keychain=file"]

    def end_program(self):
        raise NotImplementedError

    def clear_world(self):
        self.clear_files()

    def setUp(self):
        super().setUp()
        self.accept_terms()
        self.opener = Opener()
        self.environment = self.opener.environment()

    def start(self, server=None):
        self.program = self.start_program(*self.arguments, server=server, environment=self.environment)
        self.program.wait_for_window()
        self.screen = self.program.screen

    def add_profiles(self, *servers):
        write_settings(SHARED_SUITE, {"serversDict": {
            name: {"server": f"https://{name.lower()}.example", "date": datetime.datetime(2025, 1, 1)}
            for name in servers}})

    def check_end(self):
        """Ends the program and compares what it leaves behind with what was there before."""
        before = settings(SHARED_SUITE), settings(STANDARD)
        self.end_program()
        self.assertEqual(self.program.ended(30), 0, self.program.errors())
        complaints = [line for line in self.program.errors().splitlines() if "keychain: " not in line]
        self.assertEqual(complaints, [])
        self.assertEqual((settings(SHARED_SUITE), settings(STANDARD)), before)
        self.assertEqual(self.opener.opened(), [])

    def test_the_form(self):
        self.start()
        self.screen.control("push button", "Add")
        self.check_end()

    def test_the_terms(self):
        write_settings(STANDARD, {})
        self.start()
        self.screen.control("push button", "Accept")
        self.check_end()
        self.assertEqual(settings(STANDARD), {})

    def test_an_alert(self):
        self.start()
        self.screen.control("push button", "Add")
        subprocess.run(["rm", "-rf", os.path.join(os.environ["HOME"], "Library")], check=True)
        self.screen.menu("Zarn Actions", "Show Log Folder")
        self.assertEqual(self.screen.alert().buttons, ["OK"])
        self.check_end()

    def test_the_question_for_a_name(self):
        server = self.start_server()
        self.start(server)
        self.screen.fill("Server URL:", server.url)
        self.screen.press("Add")
        self.assertEqual(self.screen.alert().buttons, ["Cancel", "OK"])
        self.check_end()
        self.assertEqual(server.requests(), [])

    def test_the_question_whether_to_remove_a_profile(self):
        self.add_profiles("First", "Second")
        self.start()
        self.screen.choose("Second", modifier="alt")
        self.assertEqual(self.screen.alert().texts, ["Are you sure you want to remove Second from the list?"])
        self.check_end()
        self.assertEqual(sorted(settings(SHARED_SUITE)["serversDict"]), ["First", "Second"])

    def test_the_question_whether_to_view_an_update(self):
        page = UpdatePage()
        self.addCleanup(page.stop)
        page.publish("<tr><td>Current Version</td><td>2.0.0</td></tr>")
        self.environment.update(page.environment)
        self.start()
        self.screen.control("push button", "Add")
        self.screen.menu("Zarn Actions", "Check for Updates…")
        self.assertEqual(self.screen.alert().buttons, ["Ignore", "View"])
        self.check_end()

    def test_the_about_window(self):
        self.start()
        self.screen.control("push button", "Add")
        self.screen.menu("Zarn Actions", "About Zarn Actions")
        wait_for(lambda: "About" in self.screen.window_titles(), "the About window")
        self.check_end()

    def add_server(self, server):
        self.start(server)
        self.screen.fill("Display Name:", "Demo")
        self.screen.fill("Server URL:", server.url)
        self.screen.fill("Client ID:", DemoServer.CLIENT)
        self.screen.fill("Client Secret:", DemoServer.SECRET, role="password text")
        self.screen.press("Add")

    def test_a_request(self):
        server = self.start_server()
        server.fault(path=TOKEN, delay_ms="60000")
        self.add_server(server)
        wait_for(server.requests, "the request to arrive")
        self.check_end()

    def serve_keyring(self, mode):
        keyring = subprocess.Popen([os.path.join(SUPPORT, "hostile_keyring"), mode], stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True)
        self.addCleanup(keyring.stderr.close)
        self.addCleanup(keyring.stdout.close)
        self.addCleanup(keyring.wait)
        self.addCleanup(keyring.kill)
        self.assertEqual(keyring.stdout.readline(), "ready\n")
        self.arguments = ["--keychain=secret-service"]
        return keyring

    def test_a_write_to_the_keychain_that_waits_for_the_user_is_done_first(self):
        keyring = self.serve_keyring("answered=3")
        self.add_server(self.start_server())
        self.assertEqual(self.screen.alert().texts, ["Demo was successfully set"])
        self.check_end()
        keyring.kill()
        self.assertEqual(keyring.stderr.read().split().count("CreateItem"), 2)

    def test_a_call_of_the_keychain(self):
        keyring = self.serve_keyring("silent")
        self.add_profiles("First", "Second")
        self.start()
        self.screen.choose("Second")
        self.assertNotEqual(keyring.stderr.readline(), "")
        self.check_end()


class Terminated(Endings):
    def end_program(self):
        self.program.process.send_signal(signal.SIGTERM)


class Interrupted(Endings):
    def end_program(self):
        self.program.process.send_signal(signal.SIGINT)


class SessionEnded(Endings):
    """On X11 the session manager ends the program; on Wayland the compositor goes."""

    def setUp(self):
        super().setUp()
        if ON_WAYLAND:
            self.bring_up_compositor()
            return
        self.manager = subprocess.Popen([os.path.join(HERE, "session_manager.py")], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)
        self.addCleanup(self.manager.wait)
        self.addCleanup(self.manager.stdout.close)
        self.addCleanup(self.manager.stdin.close)
        self.environment["SESSION_MANAGER"] = self.manager.stdout.readline().strip()

    def bring_up_compositor(self):
        """One of our own in the place of the desktop's, which ends with it."""
        folder = os.path.dirname(os.environ["SWAYSOCK"])
        subprocess.run(["swaymsg", "exit"], check=False, stderr=subprocess.DEVNULL)
        wait_for(lambda: not os.path.exists(os.environ["WAYLAND_DISPLAY"]), "the compositor to go")
        compositor = subprocess.Popen([os.path.join(SUPPORT, "compositor"), folder], stderr=subprocess.DEVNULL)
        self.addCleanup(compositor.wait)
        self.addCleanup(compositor.terminate)
        wait_for(lambda: "keyboard" in subprocess.run(["swaymsg", "-t", "get_inputs"], capture_output=True, text=True,
                                                      check=False).stdout, "the compositor")

    def end_program(self):
        if ON_WAYLAND:
            subprocess.run(["swaymsg", "exit"], check=False, stderr=subprocess.DEVNULL)
        else:
            self.manager.stdin.write("end\n")
            self.manager.stdin.flush()


if __name__ == "__main__":
    unittest.main()
