# SPDX-License-Identifier: MIT
"""Takes the pictures of docs/desktops.md: make_desktop_pictures.py BUILD_FOLDER PICTURE_FOLDER.

Each is taken in a desktop of its own, with a server's profile and the About window. Beside what the tests need, it wants
the packages xsettingsd and grim.
"""

import datetime
import os
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
# What differs from a desktop that says nothing: options of with_desktop, settings of the portal, kdeglobals, settings
# of the X display, the language, and the name of the server.
DESKTOPS = {
    "kde-14-points": {"kde": "[General]\nfont=DejaVu Serif,14,-1,5,50,0,0,0,0,0\n"},
    "gnome-scaled-dark": {"portal": ["=1", "font-name=DejaVu Sans 11", "text-scaling-factor=1.5"]},
    "high-contrast": {"portal": ["=2", "contrast=1"]},
    "high-contrast-dark": {"portal": ["=1", "contrast=1"]},
    "xfce": {"x": 'Gtk/FontName "DejaVu Sans Condensed 12"\nXft/DPI 122880\nNet/ThemeName "Adwaita-dark"\n'},
    "wayland": {"options": ["--wayland"]},
    "right-to-left": {"server": "שרת ראשי", "language": "he_IL.UTF-8"},
}


def start(*command):
    return subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)


def take(path, shown):
    """The windows, one below the other, in few colours; on Wayland, which shows no single one, the screen."""
    pictures = []
    for window in shown:
        pictures.append(f"{path}.{len(pictures)}.png")
        command = ["grim"] if "WAYLAND_DISPLAY" in os.environ else ["import", "-frame", "-window", str(window.id)]
        subprocess.run([*command, pictures[-1]], check=True)
    subprocess.run(["convert", *pictures, "-background", "white", "-append", "-alpha", "off", "+dither",
                    "-colors", "64", "png8:" + path], check=True)
    for picture in pictures:
        os.remove(picture)


def inside(name, path):
    from desktop_windows import windows
    from screen import activate, wait_for
    from world import ACTIONS_SUITE, SHARED_SUITE, STANDARD, VERSION_AND_BUILD, Program, write_settings

    desktop = DESKTOPS[name]
    environment = {}
    if "portal" in desktop:
        start("/usr/bin/python3", os.path.join(HERE, "fake_portal.py"), *desktop["portal"]).stdout.readline()
    if "kde" in desktop:
        environment["XDG_CURRENT_DESKTOP"] = "KDE"
        with open(os.path.join(os.environ["XDG_CONFIG_HOME"], "kdeglobals"), "w", encoding="utf-8") as file:
            file.write(desktop["kde"])
    if "x" in desktop:
        settings = os.path.join(os.environ["HOME"], "xsettings")
        with open(settings, "w", encoding="utf-8") as file:
            file.write(desktop["x"])
        start("xsettingsd", "-c", settings)
        wait_for(lambda: "_XSETTINGS_S0" in subprocess.run(
            ["xlsatoms"], capture_output=True, text=True, check=True).stdout, "the settings manager")
    if "language" in desktop:
        environment["LANG"] = environment["LC_ALL"] = desktop["language"]
    server = desktop.get("server", "Production")
    write_settings(STANDARD, {"agreedToTermsOfUse": True})
    write_settings(SHARED_SUITE, {"serversDict": {
        server: {"server": "https://zarn.example:8443", "date": datetime.datetime(2026, 1, 5)}}})
    write_settings(ACTIONS_SUITE, {"currentServer": server, "username": "admin", "useUsername": 1, "hideCreds": 1})
    program = Program(environment=environment).wait_for_window()
    try:
        screen = program.screen
        screen.control("push button", "Set")
        screen.menu("Zarn Actions", "About Zarn Actions")
        screen.control("label", f"Version {VERSION_AND_BUILD}")
        shown = wait_for(lambda: len(windows(program.process.pid)) == 2 and windows(program.process.pid), "two windows")
        if "WAYLAND_DISPLAY" in os.environ:
            shown = shown[:1]
        else:
            for window, y in zip(shown, ("40", "460")):
                subprocess.run(["xdotool", "windowmove", "--sync", str(window.id), "12", y], check=True)
            activate(str(shown[0].id))
            screen.focus("text", "Username:")
            wait_for(lambda: screen.focused() == ("text", "Username:"), "the keyboard")
        take(path, shown)
    finally:
        program.end()


def main():
    build, folder = (os.path.abspath(argument) for argument in sys.argv[1:3])
    os.makedirs(folder, exist_ok=True)
    for name, desktop in DESKTOPS.items():
        options = desktop.get("options", ["--wm", "openbox", "--screen", "1100x1200"])
        subprocess.run([os.path.join(HERE, "../support/with_desktop"), *options, "--timeout", "120", "--",
                        "env", "ZARN_BUILD=" + build, "/usr/bin/python3", os.path.abspath(__file__), "--inside", name,
                        os.path.join(folder, name + ".png")], check=True)


if __name__ == "__main__":
    if sys.argv[1:2] == ["--inside"]:
        inside(*sys.argv[2:])
    else:
        main()
