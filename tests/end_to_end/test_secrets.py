# SPDX-License-Identifier: MIT
"""Where secrets may be: in the keychain and in the requests, and nowhere else."""

import base64
import json
import os
import subprocess
import unittest
import urllib.parse

from gi.repository import Gio, GLib

from accessibility_bus import AccessibilityBus
from screen import keys, type_text, wait_for
from world import WorldTest, keychain_items

# Each has characters that every encoding changes, and is long enough not to occur by chance.
REJECTED = 'rejected-Ünicode+/"\\&%word'
PASSWORD = 'planted-pässword/+"\\%&end'
SECRET = "planted-client-Sécret-only-letters"
# Typed key by key. No other text that is typed here has a letter of it.
TYPED = 'QZjx7K+/"\\&% VBk'
TYPED_USER = "wrong"


def base64_forms(secret):
    """What any Base64 of a text around the secret holds, whatever its alignment."""
    for before in range(3):
        whole = base64.b64encode(b"\0" * before + secret).rstrip(b"=")
        # Letters at the ends share bits with what stands around.
        yield whole[(0, 2, 3)[before]:-1]


def encodings(text):
    """The six encodings, each in its spellings."""
    raw = text.encode()
    percent = urllib.parse.quote(text, safe="")
    return {
        "raw": [raw],
        "Base64": list(base64_forms(raw)),
        "percent": [percent.encode(), percent.lower().encode(), urllib.parse.quote_plus(text, safe="").encode()],
        "hexadecimal": [raw.hex().encode(), raw.hex().upper().encode()],
        "UTF-16": [text.encode("utf-16-le"), text.encode("utf-16-be")],
        "escaped": [json.dumps(text)[1:-1].encode(), json.dumps(text, ensure_ascii=False)[1:-1].encode()],
    }


def leaks(data, secrets):
    return [(secret, name) for secret in secrets for name, forms in encodings(secret).items()
            if any(form in data for form in forms)]


def files_below(folder):
    for path, _, names in os.walk(folder):
        for name in names:
            full = os.path.join(path, name)
            if os.path.isfile(full) and not os.path.islink(full):
                yield full


class Secrets(WorldTest):
    SECRETS = (REJECTED, PASSWORD, SECRET, TYPED)

    def setUp(self):
        super().setUp()
        self.accept_terms()
        self.server = self.start_server("--user", "planter", "--password", PASSWORD, "--client-id", "planted-id",
                                        "--client-secret", SECRET)
        self.bus = AccessibilityBus()
        self.addCleanup(self.bus.end)

    def assert_clean(self, what, data):
        self.assertEqual(leaks(data, self.SECRETS), [], what)

    def assert_process_clean(self):
        """The command line, the environment, and what the bus and the X server can tell of the program."""
        folder = f"/proc/{self.program.process.pid}"
        for name in ("cmdline", "environ"):
            try:
                with open(os.path.join(folder, name), "rb") as file:
                    self.assert_clean(name, file.read())
            except PermissionError:
                self.assertEqual(name, "environ")  # Nobody else may look at it at all.
        with open(os.path.join(folder, "limits"), encoding="ascii") as file:
            core = [line.split()[4:6] for line in file if line.startswith("Max core file size")]
        self.assertEqual(core, [["0", "0"]])
        names = Gio.bus_get_sync(Gio.BusType.SESSION, None).call_sync(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListNames", None,
            GLib.VariantType("(as)"), Gio.DBusCallFlags.NONE, 5000, None)
        self.assert_clean("names on the bus", "\n".join(names.unpack()[0]).encode())
        windows = subprocess.run(["xwininfo", "-root", "-tree"], capture_output=True, check=True, timeout=20)
        self.assert_clean("windows", windows.stdout)

    def assert_files_clean(self, allowed=()):
        seen = [path for path in files_below(os.environ["ZARN_DESKTOP_SCRATCH"]) if not path.startswith(allowed)]
        for ending in ("zarn-shortcuts.log", "com.zarn.ZarnActions.plist"):
            self.assertTrue(any(path.endswith(ending) for path in seen), ending)
        size = 0
        for path in seen:
            with open(path, "rb") as file:
                data = file.read()
            size += len(data)
            self.assert_clean(path, data)
        forms = sum(len(found) for secret in self.SECRETS for found in encodings(secret).values())
        print(f"{len(seen)} files with {size} bytes searched for {len(self.SECRETS)} secrets in {forms} forms: clean")

    def assert_nothing_is_heard(self):
        """Of all messages of the accessibility bus but those with which this test fills the fields."""
        messages = [message for message in self.bus.messages() if message.member != "SetTextContents"]
        for message in messages:
            self.assert_clean(f"{message.interface}.{message.member} {message.values}", message.raw)
        self.assert_clean("what a screen reader hears", json.dumps(self.bus.heard(), ensure_ascii=False).encode())
        letters = set(TYPED) - {" "}  # The space bar also opens the server menu.
        for message in messages:
            if message.is_event or message.key is not None:
                self.assertEqual(letters & set(message.texts), set(), message.values)
                self.assertNotIn(message.key, set(map(ord, letters)), message.values)
        print(f"{len(messages)} messages of the accessibility bus searched, {len(self.bus.heard())} of them heard: clean")

    def start(self, *arguments):
        self.program = self.start_program(*arguments, server=self.server).wait_for_window()
        self.screen = self.program.screen

    def end(self):
        self.assert_process_clean()
        self.screen.menu("Zarn Actions", "Quit Zarn Actions")
        self.assertEqual(self.program.ended(), 0)
        self.assert_clean("standard output", self.program.output().encode())
        self.assert_clean("standard error", self.program.errors().encode())

    def type_into(self, role, label, text):
        self.screen.focus(role, label)
        wait_for(lambda: self.screen.focused() == (role, label), f"{label} to have the keyboard")
        keys("ctrl+a", "BackSpace")
        field = self.screen.control(role, label).get_text_iface()
        wait_for(lambda: field.get_character_count() == 0, f"{label} to be empty")
        before = len(self.bus.heard())
        type_text(text)
        wait_for(lambda: field.get_character_count() == len(text), f"{label} to hold what was typed")
        return before

    def heard_since(self, before, kind):
        return "".join(text for event, _, _, text in self.bus.heard()[before:] if event == kind)

    def type_a_secret(self):
        """Letter by letter, in a field whose letters are heard and in one whose letters are not."""
        for role, label, text, heard in (("text", "Username:", TYPED_USER, TYPED_USER),
                                         ("password text", "Password:", TYPED, "*" * len(TYPED))):
            before = self.type_into(role, label, text)
            wait_for(lambda: self.heard_since(before, "object:text-changed:insert") == heard,
                     f"{heard} to be heard as it is typed into {label}")
            pressed_and_released = "".join(2 * letter for letter in heard)
            wait_for(lambda: sorted(self.heard_since(before, "key")) == sorted(pressed_and_released),
                     f"the keys of {heard} to be heard")
        self.screen.press("Add")
        alert = self.screen.alert()
        self.assertEqual(alert.texts, ["Failed to authenticate. HTTP status code: 401"])
        alert.press("OK")
        credentials = base64.b64encode(f"{TYPED_USER}:{TYPED}".encode()).decode()
        self.assertEqual(dict(self.server.requests()[-1]["headers"])["Authorization"], "Basic " + credentials)

    def use_username(self, on):
        if self.screen.is_checked("Use username and password") != on:
            self.screen.toggle("Use username and password")

    def add(self, user, secret, by_username):
        screen = self.screen
        self.use_username(by_username)
        screen.fill("Server URL:", self.server.url)
        screen.fill("Username:" if by_username else "Client ID:", user)
        label = "Password:" if by_username else "Client Secret:"
        screen.fill(label, secret, role="password text")
        shown = screen.control("password text", label).get_text_iface()
        self.assertEqual(shown.get_character_count(), len(secret))
        self.assert_clean("what assistive technology reads", shown.get_text(0, -1).encode())
        screen.press("Add")
        alert = screen.alert()
        self.assert_process_clean()
        texts = alert.texts
        self.assert_clean("alert", "\n".join(texts).encode())
        alert.press("OK")
        return texts

    def show_each_secret(self):
        screen = self.screen
        screen.press("show username/password fields")
        for profile in ("By name", "By client"):
            screen.choose(profile)
            wait_for(lambda: screen.choice() == profile, profile)
            for label, user, secret in (("Username:", "planter", PASSWORD), ("Client ID:", "planted-id", SECRET)):
                self.use_username(label == "Username:")
                wait_for(lambda: screen.text(label) == user, user)
                field = screen.control("password text", {"Username:": "Password:"}.get(label, "Client Secret:"))
                self.assertEqual(field.get_text_iface().get_character_count(), len(secret))
        screen.press("hide username/password fields")

    def use_everything(self, *arguments):
        self.start(*arguments)
        screen = self.screen
        screen.fill("Display Name:", "By name")
        self.assertEqual(self.add("planter", REJECTED, True), ["Failed to authenticate. HTTP status code: 401"])
        self.type_a_secret()
        self.server.fault(path="/api/v1/auth/token", times="1", drop_after="30")
        self.assertEqual(self.add("planter", PASSWORD, True), ["Failed to connect to 127.0.0.1"])
        self.assertEqual(self.add("planter", PASSWORD, True), ["By name was successfully set"])
        screen.choose("Add Server...")
        screen.fill("Display Name:", "By client")
        self.assertEqual(self.add("planted-id", SECRET, False), ["By client was successfully set"])
        self.end()
        # The next run fills the fields from the keychain.
        self.start(*arguments)
        self.show_each_secret()
        self.screen.press("Set")
        self.assertEqual(self.screen.alert().texts, ["By client was successfully set"])
        self.screen.alert().press("OK")
        self.end()
        self.assert_nothing_is_heard()

    def test_a_full_run_leaves_secrets_in_the_keyring_alone(self):
        self.use_everything()
        secrets = {key: item[1] for key, item in keychain_items().items()}
        self.assertEqual(secrets[("ZPMA-127.0.0.1", "planter")], PASSWORD)
        self.assertEqual(secrets[("zortcuts-apiClient-127.0.0.1", "planted-id")], SECRET)
        self.assert_files_clean(allowed=(os.path.join(os.environ["XDG_DATA_HOME"], "keyrings"),))

    def test_a_full_run_leaves_no_readable_secret_in_any_file(self):
        self.use_everything("--keychain=file")
        self.assertEqual(keychain_items(), {})
        self.assert_files_clean()

    def test_the_scan_sees_every_encoding(self):
        for secret in self.SECRETS:
            for name, forms in encodings(secret).items():
                for form in forms:
                    self.assertIn((secret, name), leaks(b"before" + form + b"after", self.SECRETS))
            for before in range(7):
                text = base64.b64encode(b"x" * before + secret.encode() + b":")
                self.assertEqual(leaks(text, self.SECRETS), [(secret, "Base64")])
        self.assertEqual(leaks(b"nothing of this kind", self.SECRETS), [])


if __name__ == "__main__":
    unittest.main()
