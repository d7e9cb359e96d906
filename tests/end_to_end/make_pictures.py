# SPDX-License-Identifier: MIT
"""Takes the pictures that README shows: make_pictures.py BUILD_FOLDER PICTURE_FOLDER.

Run it under tests/support/with_desktop --wm openbox --screen 760x720.
"""

import datetime
import os
import subprocess
import sys

os.environ["ZARN_BUILD"] = os.path.abspath(sys.argv[1])

from desktop_windows import windows  # noqa: E402
from screen import activate, wait_for  # noqa: E402
from world import (ACTIONS_SUITE, SHARED_SUITE, STANDARD, VERSION_AND_BUILD, DemoServer, Program,  # noqa: E402
                   built, write_settings)

FOLDER = os.path.abspath(sys.argv[2])


def take(name, window="root"):
    """The screen without its empty margin, or one window with its frame."""
    trim = ["-trim", "+repage"] if window == "root" else []
    subprocess.run(["import", "-frame", "-window", window, *trim, os.path.join(FOLDER, name + ".png")], check=True)


def portal(scheme):
    process = subprocess.Popen(
        ["/usr/bin/python3", os.path.join(os.path.dirname(os.path.abspath(__file__)), "fake_portal.py"), str(scheme)],
        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    process.stdout.readline()
    return process


def with_program(work, **options):
    program = Program(environment=options)
    try:
        work(program.wait_for_window().screen)
    finally:
        program.end()


def terms(screen):
    screen.control("push button", "Accept")
    wait_for(lambda: len(screen.windows()) == 2, "both windows")
    take("terms", str(windows(screen.pid)[1].id))


def store_profiles():
    write_settings(STANDARD, {"agreedToTermsOfUse": True})
    write_settings(SHARED_SUITE, {"serversDict": {
        "Production": {"server": "https://zarn.example:8443", "date": datetime.datetime(2026, 1, 5)},
        "Staging": {"server": "https://staging.zarn.example", "date": datetime.datetime(2026, 2, 1)}}})
    write_settings(ACTIONS_SUITE, {"currentServer": "Production", "username": "admin", "useUsername": 1, "hideCreds": 1})


def main():
    os.makedirs(FOLDER, exist_ok=True)
    server = DemoServer()
    with_program(terms)
    write_settings(STANDARD, {"agreedToTermsOfUse": True})

    def add(screen):
        screen.fill("Display Name:", "Production")
        screen.fill("Server URL:", server.url)
        screen.toggle("Use username and password")
        screen.fill("Username:", server.USER)
        screen.fill("Password:", server.PASSWORD, role="password text")
        take("add")
        screen.press("Add")
        screen.alert()
        take("success")
        screen.alert().press("OK")

    with_program(add, SSL_CERT_FILE=server.ca_file, no_proxy="127.0.0.1")
    store_profiles()

    def profile(name):
        def work(screen):
            screen.control("push button", "Set")
            activate(screen.x_window("Zarn Actions"))
            take(name)
        return work

    with_program(profile("profile"))

    def about(name):
        def work(screen):
            screen.menu("Zarn Actions", "About Zarn Actions")
            wait_for(lambda: "About" in screen.window_titles(), "the About window")
            wait_for(lambda: screen.shows("label", f"Version {VERSION_AND_BUILD}"), "its contents")
            take(name, screen.x_window("About"))
        return work

    with_program(about("about"))
    dark = portal(1)
    with_program(profile("profile-dark"))
    with_program(about("about-dark"))
    dark.stdin.close()
    dark.wait()
    server.stop()


if __name__ == "__main__":
    assert os.path.exists(built("zarn-actions"))
    main()
