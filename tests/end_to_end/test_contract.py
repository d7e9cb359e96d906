# SPDX-License-Identifier: MIT
"""What docs/for-actions.md promises stays as it is: the golden files, and the page itself."""

import base64
import json
import os
import plistlib
import re
import subprocess
import unittest

import contract
from world import ACTIONS_SUITE, SHARED_SUITE, WorldTest, built

PAGE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../docs/for-actions.md")
KINDS = {dict: "dictionary", str: "string", int: "integer"}


def page():
    with open(PAGE, encoding="utf-8") as file:
        return file.read()


class Writing(WorldTest):
    def test_the_program_leaves_what_the_newest_version_of_the_contract_says(self):
        self.maxDiff = None
        version = contract.versions()[-1]
        self.accept_terms()
        server = self.start_server(*contract.SERVER_OPTIONS)
        port = server.description["https_port"]
        program = self.start_program(server=server).wait_for_window()
        contract.register(program.screen, port)
        items = contract.keyring_items(port)
        program.end()
        self.assertEqual(items, contract.golden_items(version))
        self.assertEqual(contract.settings_texts(port), contract.golden_settings(version))


class Reading(WorldTest):
    """Each version of the contract that there has been."""

    def tool(self, name, *words):
        done = subprocess.run([built(name), *words], capture_output=True, check=False, timeout=30)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout.decode()

    def check_tools(self, version):
        items = contract.golden_items(version)
        listed = json.loads(self.tool("zarn-keychain", "--keychain=file", "--json", "list"))
        self.assertEqual(
            sorted((item["service"], item["account"], item["accessGroup"]) for item in listed),
            sorted((item["attributes"]["service"], item["attributes"]["account"], item["attributes"]["access-group"])
                   for item in items))
        for item in items:
            words = (item["attributes"]["service"], item["attributes"]["account"])
            self.assertEqual(self.tool("zarn-keychain", "--keychain=file", "show", *words), item["secret"])
        for name, text in contract.golden_settings(version).items():
            # JSON has no date.
            stored = json.loads(json.dumps(plistlib.loads(text.encode()),
                                           default=lambda date: date.strftime("%Y-%m-%dT%H:%M:%SZ")))
            domain = name.removesuffix(".plist")
            self.assertEqual(json.loads(self.tool("zarn-defaults", "--json", "read", domain)), stored)

        shown = json.loads(self.tool("zarn-profile", "--keychain=file", "show", "--json", "--reveal"))
        self.assertLessEqual({
            "name": contract.SECOND, "server": f"https://localhost:{contract.PORT}", "username": contract.CLIENT,
            "credentials": "api-client", "secret": contract.SECRET, "added": contract.DATE}.items(), shown.items())

    def check_window(self):
        program = self.start_program("--keychain=file").wait_for_window()
        screen = program.screen
        self.assertEqual(screen.choices(), [contract.FIRST, contract.SECOND, "", "Add Server..."])
        self.assertEqual(screen.choice(), contract.SECOND)
        self.assertFalse(screen.shows("text", "Server URL:"))
        screen.press("show username/password fields")
        self.assertEqual(screen.text("Client ID:"), contract.CLIENT)
        self.assertEqual(screen.text("Server URL:"), f"https://localhost:{contract.PORT}")
        program.end()

    def check_documented_reader(self):
        reader = re.search(r"```python\n(.*?)```", page(), re.DOTALL).group(1)
        space = {"__name__": "reader"}
        exec(compile(reader, "reader", "exec"), space)  # pylint: disable=exec-used
        self.assertEqual(sorted(space["profiles"]()), [contract.FIRST, contract.SECOND])
        secrets = {(item["attributes"]["service"], item["attributes"]["account"]): item["secret"]
                   for item in contract.golden_items(contract.versions()[-1])}
        space["secret"] = lambda service, account=None: secrets[service, account]
        self.assertEqual(space["current_profile"](), {
            "server": f"https://localhost:{contract.PORT}", "username": contract.CLIENT,
            "password": contract.SECRET, "useApiClient": True})

    def test_the_program_and_its_tools_read_every_version(self):
        for version in contract.versions():
            with self.subTest(version=version):
                contract.put_in_place(version)
                self.check_tools(version)
                self.check_documented_reader()
                self.check_window()


class Page(unittest.TestCase):
    """The page says what the golden files are."""

    def test_it_has_the_number_of_the_newest_version(self):
        self.assertEqual(re.findall(r"This is version (\d+) of it", page()), [str(contract.versions()[-1])])

    def test_it_lists_every_key_with_its_type(self):
        rows = dict(re.findall(r"^\| `([^|]*)` \| ([a-z]+)", page(), re.M))
        golden = contract.golden_settings(contract.versions()[-1])
        profiles = plistlib.loads(golden[SHARED_SUITE + ".plist"].encode())
        self.assertEqual({"serversDict"}, set(profiles))
        self.assertEqual(rows["serversDict"], KINDS[type(profiles["serversDict"])])
        for record in profiles["serversDict"].values():
            self.assertEqual({key: rows["serversDict.NAME." + key] for key in record},
                             {"server": "string", "date": "date"})
        for key, value in plistlib.loads(golden[ACTIONS_SUITE + ".plist"].encode()).items():
            named = [kind for names, kind in rows.items() if key in names.split("`, `")]
            self.assertEqual(named, [KINDS[type(value)]], key)

    def test_it_lists_every_attribute_and_text_of_the_items(self):
        for item in contract.golden_items(contract.versions()[-1]):
            attributes = item["attributes"]
            for name, value in attributes.items():
                fixed = name in ("xdg:schema", "access-group")
                self.assertIn(f"| `{name}` | `{value}` |" if fixed else f"| `{name}` | ", page())
            self.assertEqual(item["label"], f"{attributes['service']} ({attributes['account']})")
            host = re.sub(r"(127\.0\.0\.1|localhost)$", "", attributes["service"])
            self.assertIn(f"| `{host}`", page())

    def test_it_has_the_text_of_the_current_profile(self):
        form = re.search(r'^    (\{"server".*\})$', page(), re.M).group(1)
        values = {"URL": f"https://localhost:{contract.PORT}", "NAME": contract.CLIENT, "SECRET": contract.SECRET,
                  "0 or 1": "1"}
        text = re.sub("|".join(values), lambda found: values[found[0]], form)
        stored = [item["secret"] for item in contract.golden_items(contract.versions()[-1])
                  if item["attributes"]["account"] == "zortcuts"]
        self.assertEqual([base64.b64decode(secret).decode() for secret in stored], [text])


if __name__ == "__main__":
    unittest.main()
