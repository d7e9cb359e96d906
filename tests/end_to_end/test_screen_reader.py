# SPDX-License-Identifier: MIT
"""What a real screen reader, Orca, says from the first start to a registered server: conversation.txt."""

import json
import os
import re
import shutil
import subprocess
import tempfile
import unittest

from screen import keys, type_text, wait_for
from world import DemoServer, WorldTest, keychain_items

HERE = os.path.dirname(os.path.abspath(__file__))
PREFERENCES = """\
import orca.settings
orca.settings.speechServerFactory = "recording_speech"
orca.settings.enableBraille = False
"""


class Orca:
    def __init__(self):
        folder = os.path.join(os.environ["XDG_DATA_HOME"], "orca")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "orca-customizations.py"), "w", encoding="utf-8") as file:
            file.write(PREFERENCES)
        self._file = os.path.join(folder, "spoken")
        self._output = tempfile.TemporaryFile("w+")
        self._process = subprocess.Popen(
            ["orca"], stdin=subprocess.DEVNULL, stdout=self._output, stderr=subprocess.STDOUT,
            env={**os.environ, "PYTHONPATH": HERE, "PYTHONDONTWRITEBYTECODE": "1", "ZARN_TEST_SPOKEN": self._file})
        try:
            wait_for(lambda: self.spoken() == ["Screen reader on."], "the screen reader to come up", 30)
        except AssertionError as error:
            self._output.seek(0)
            output = self._output.read()
            self.end()
            raise AssertionError(f"the screen reader does not start: {output}") from error

    def end(self):
        # Asked to end, it would wait for a speech service.
        self._process.kill()
        self._process.wait()
        self._output.close()

    def recorded(self):
        """Everything that a synthesizer would have been given, as [kind, text]."""
        try:
            with open(self._file, encoding="utf-8") as file:
                return [json.loads(line) for line in file.read().splitlines()]
        except FileNotFoundError:
            return []

    def spoken(self):
        """Whole utterances, without the echo of keys."""
        return [text for kind, text in self.recorded() if kind == "speech"]


def steps(path):
    """What the user does and what is said then: a line that is not indented, and the lines below it."""
    found = []
    with open(path, encoding="utf-8") as file:
        for line in file.read().splitlines():
            if line.startswith("    "):
                found[-1][1].append(line.strip())
            elif line:
                found.append((line, []))
    return found


@unittest.skipUnless(shutil.which("orca"), "orca is not installed: ./test --long installs it")
class ScreenReader(WorldTest):
    maxDiff = None

    def setUp(self):
        super().setUp()
        self.server = self.start_server()
        # Long enough for the screen reader to say what goes on meanwhile.
        for path in ("/api/oauth/token", "/api/v1/zarn-pro-version"):
            self.server.fault(path=path, delay_ms="2500")
        self.orca = Orca()
        self.addCleanup(self.orca.end)
        self.heard = len(self.orca.spoken())

    def said(self):
        """What was said since the last step. Ports differ from run to run."""
        return [re.sub(r"\bport \d+", "port 8443", text.strip()) for text in self.orca.spoken()[self.heard:]]

    def start(self):
        self.program = self.start_program(server=self.server).wait_for_window()
        self.screen = self.program.screen

    def type_wrong_secret(self):
        self.screen.focus("password text", "Client Secret:")
        type_text("not-this-one")

    def fill(self):
        for label, text in (("Display Name:", "Production"), ("Server URL:", self.server.url),
                            ("Client ID:", DemoServer.CLIENT)):
            self.screen.fill(label, text)

    def correct_secret(self):
        self.screen.fill("Client Secret:", DemoServer.SECRET, role="password text")

    def test_from_the_terms_to_a_registered_server(self):
        actions = {"Start the program.": self.start, "Fill in the name, the address and the client id.": self.fill,
                   "Type a client secret that is wrong.": self.type_wrong_secret,
                   "Correct the client secret.": self.correct_secret}
        happened = []
        expected = steps(os.path.join(HERE, "conversation.txt"))
        for action, speech in expected:
            if action in actions:
                actions[action]()
            else:
                keys(re.fullmatch(r"Press (\S+)\.", action)[1])
            try:
                wait_for(lambda: len(self.said()) >= len(speech) and self.said()[-1:] == speech[-1:], action, 15)
            except AssertionError:
                pass  # The comparison says what was said instead.
            happened.append((action, self.said()))
            self.heard = len(self.orca.spoken())
            if happened != expected[:len(happened)]:
                break
        self.assertEqual(happened, expected)
        self.assertEqual(self.program.ended(), 0)
        self.assertEqual(len(keychain_items()), 2)
        everything = "\n".join(text for _, text in self.orca.recorded())
        for secret in (DemoServer.SECRET, "not-this-one"):
            self.assertNotIn(secret, everything)
        # Nor letter by letter.
        self.assertNotIn("not", "".join(text for kind, text in self.orca.recorded() if kind != "speech"))


if __name__ == "__main__":
    unittest.main()
