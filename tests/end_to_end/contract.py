# SPDX-License-Identifier: MIT
"""The golden files of the contract in docs/for-actions.md: contract/N/ is what version N of it leaves."""

import base64
import json
import os
import re
import shutil

from screen import wait_for
from world import ACTIONS_SUITE, SCHEMA, config_folder, keychain_items, settings

FOLDER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "contract")
PORT = 8443
DATE = "2026-01-31T12:00:00Z"

USERNAME, PASSWORD = "us\"er\\ \u00e9", "p\"ass\\w\u00f6rd' <&>"
CLIENT, SECRET = "cl\"ient\\ \u00fc", "se\\cret\" %41"
SERVER_OPTIONS = ("--user", USERNAME, "--password", PASSWORD, "--client-id", CLIENT, "--client-secret", SECRET)
FIRST, SECOND = "B\u00fcro \"Nord\" \\ <1>", "Cloud \u30af\u30e9\u30a6\u30c9"


def versions():
    return sorted(int(name) for name in os.listdir(FOLDER))


def choose(screen, name):
    screen.choose(name)
    wait_for(lambda: settings(ACTIONS_SUITE).get("currentServer") == name, name + " to be the current server")


def register(screen, port):
    """One server by username, one by API client, with odd texts, in the empty window."""
    def add(name, url, user, secret, labels):
        screen.fill("Display Name:", name)
        screen.fill("Server URL:", url)
        screen.fill(labels[0], user)
        screen.fill(labels[1], secret, role="password text")
        screen.press("Add")
        alert = screen.alert()
        assert alert.texts == [name + " was successfully set"], alert.texts
        alert.press("OK")

    screen.toggle("Use username and password")
    add(FIRST, f"https://127.0.0.1:{port}/", USERNAME, PASSWORD, ("Username:", "Password:"))
    screen.choose("Add Server...")
    add(SECOND, f"https://localhost:{port}", CLIENT, SECRET, ("Client ID:", "Client Secret:"))
    choose(screen, FIRST)
    screen.press("hide username/password fields")
    wait_for(lambda: settings(ACTIONS_SUITE).get("hideCreds") == 0, "the choice to hide the fields to be stored")
    choose(screen, SECOND)


def settings_texts(port):
    """{name: text} of the settings files, as if they had been written on the golden port and date."""
    texts = {}
    for name in os.listdir(config_folder()):
        if name.endswith(".plist"):
            with open(os.path.join(config_folder(), name), encoding="utf-8") as file:
                text = file.read().replace(f":{port}", f":{PORT}")
            texts[name] = re.sub(r"(<date>)[^<]*", r"\g<1>" + DATE, text)
    return texts


def with_golden_port(secret, port):
    """The current profile has the port inside its Base64."""
    try:
        return base64.b64encode(
            base64.b64decode(secret, validate=True).replace(b":%d" % port, b":%d" % PORT)).decode()
    except ValueError:
        return secret


def keyring_items(port):
    """Label, attributes and secret of each item in the keyring, as if on the golden port."""
    found = wait_for(lambda: len(keychain_items()) >= 3 and keychain_items(), "three keychain items")
    # The items are found by their schema.
    return [{"label": label, "attributes": {"xdg:schema": SCHEMA, **attributes},
             "secret": with_golden_port(secret, port)}
            for _, (label, secret, attributes) in sorted(found.items())]


def golden_settings(version):
    texts = {}
    folder = os.path.join(FOLDER, str(version), "config")
    for name in os.listdir(folder):
        with open(os.path.join(folder, name), encoding="utf-8") as file:
            texts[name] = file.read()
    return texts


def golden_items(version):
    with open(os.path.join(FOLDER, str(version), "items.json"), encoding="utf-8") as file:
        return json.load(file)


def put_in_place(version):
    """Leaves the golden files where that version left its own, with the file keychain."""
    for folder, variable in (("config", "XDG_CONFIG_HOME"), ("data", "XDG_DATA_HOME"), ("state", "XDG_STATE_HOME")):
        target = os.path.join(os.environ[variable], "zarn-actions")
        shutil.rmtree(target, ignore_errors=True)
        os.makedirs(target, 0o700)
        source = os.path.join(FOLDER, str(version), folder)
        for name in os.listdir(source):
            shutil.copyfile(os.path.join(source, name), os.path.join(target, name))
            os.chmod(os.path.join(target, name), 0o600)
