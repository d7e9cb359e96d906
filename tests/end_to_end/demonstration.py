# SPDX-License-Identifier: MIT
"""Registers the demonstration server in the real window and prints what an action would find.

usage: demonstration.py BUILD_FOLDER OUTPUT_FOLDER
"""

import os
import subprocess
import sys

os.environ["ZARN_BUILD"] = os.path.abspath(sys.argv[1])

from screen import screenshot, wait_for  # noqa: E402
from world import (ACTIONS_SUITE, SHARED_SUITE, DemoServer, Program, built, current_profile,  # noqa: E402
                   keychain_items, log_lines, settings)


def masked(text):
    return text.replace(DemoServer.PASSWORD, "*" * 8)


def register(screen, server):
    screen.press("Accept")
    wait_for(lambda: not screen.find("push button", "Accept"), "the terms of use to close")
    screen.fill("Display Name:", "Demonstration server")
    screen.fill("Server URL:", server.url)
    screen.toggle("Use username and password")
    screen.fill("Username:", DemoServer.USER)
    screen.fill("Password:", DemoServer.PASSWORD, role="password text")
    screen.press("Add")
    alert = screen.alert()
    print("The program says:", " / ".join(alert.texts))
    if alert.texts != ["Demonstration server was successfully set"]:
        raise AssertionError("the demonstration server was not registered")
    alert.press("OK")


def terminal(server):
    """The same from a terminal."""
    environment = {**os.environ, "SSL_CERT_FILE": server.ca_file, "no_proxy": "127.0.0.1"}
    print("\nIn a terminal")
    for command in ("list", "token"):
        done = subprocess.run([built("zarn-profile"), command], env=environment, capture_output=True, text=True,
                              timeout=60, check=False)
        if done.returncode or not done.stdout.strip():
            raise AssertionError(f"zarn-profile {command} failed: {done.stderr}")
        print(f"  $ zarn-profile {command}\n  {'*' * 8 if command == 'token' else done.stdout.rstrip()}")


def report(server, picture):
    profile = settings(SHARED_SUITE)["serversDict"]["Demonstration server"]
    current = settings(ACTIONS_SUITE)
    if profile["server"] != server.url or current["currentServer"] != "Demonstration server":
        raise AssertionError("the settings do not hold what was typed")
    items = wait_for(lambda: len(keychain_items()) == 2 and keychain_items(), "two keychain items")
    if items[("ZPMA-127.0.0.1", DemoServer.USER)][1] != DemoServer.PASSWORD:
        raise AssertionError("the keychain does not hold the password")
    text = current_profile()
    print("\nProfile\n  Demonstration server:", profile["server"], "added", profile["date"], "UTC")
    print("\nCurrent\n  currentServer:", current["currentServer"], "\n  username:", current["username"])
    print("\nKeychain")
    for (service, account), (label, _, attributes) in sorted(items.items()):
        print(f"  {label}: secret ********, access group {attributes['access-group']}")
    print("\nCurrent profile, decoded\n ", masked(text))
    print("\nLog")
    for stamp, message in log_lines():
        print(" ", stamp, masked(message))
    print("\nScreenshot\n ", picture)


def main():
    output = os.path.abspath(sys.argv[2])
    os.makedirs(output, exist_ok=True)
    picture = os.path.join(output, "window.png")
    server = DemoServer()
    program = None
    try:
        program = Program(environment={"SSL_CERT_FILE": server.ca_file, "no_proxy": "127.0.0.1"})
        screen = program.wait_for_window().screen
        register(screen, server)
        wait_for(lambda: not screen.has_alert(), "the alert to go")
        screenshot(picture)
        report(server, picture)
        if program.errors():
            raise AssertionError("the program complained: " + program.errors())
        program.end()
        program = None
        terminal(server)
    finally:
        if program:
            program.end()
        server.stop()


if __name__ == "__main__":
    try:
        main()
    except AssertionError as problem:
        sys.exit(f"demonstration: {problem}")
    except KeyError as missing:
        sys.exit(f"demonstration: the program left no {missing}")
    except (OSError, ValueError, subprocess.SubprocessError) as problem:
        sys.exit(f"demonstration: {problem}")
