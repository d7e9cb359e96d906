# SPDX-License-Identifier: MIT
"""A speech server for the screen reader that writes down what it is given: a line of JSON for each utterance."""

import json
import os

from orca import speechserver


class SpeechServer(speechserver.SpeechServer):
    _only = None

    @staticmethod
    def getFactoryName():
        return "Recording"

    @staticmethod
    def getSpeechServers():
        return [SpeechServer.getSpeechServer()]

    @staticmethod
    def getSpeechServer(info=None):
        SpeechServer._only = SpeechServer._only or SpeechServer()
        return SpeechServer._only

    @staticmethod
    def shutdownActiveServers():
        SpeechServer._only = None

    def getInfo(self):
        return ["Recording", "recording"]

    def getVoiceFamilies(self):
        return []

    @staticmethod
    def _record(kind, text):
        with open(os.environ["ZARN_TEST_SPOKEN"], "a", encoding="utf-8") as file:
            file.write(json.dumps([kind, text]) + "\n")

    def speak(self, text=None, acss=None, interrupt=True):
        self._record("speech", text)

    def speakCharacter(self, character, acss=None):
        self._record("character", character)

    def speakKeyEvent(self, event, acss=None):
        self._record("key", event.getKeyName())
