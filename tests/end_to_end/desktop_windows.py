# SPDX-License-Identifier: MIT
"""The windows of a program as the window manager or the Wayland compositor sees them."""

import json
import subprocess
from collections import namedtuple

from screen import ON_WAYLAND, wait_for

Window = namedtuple("Window", "id title")


def _output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout


def _leaves(node):
    children = node["nodes"] + node["floating_nodes"]
    if "pid" in node:
        yield node
    for child in children:
        yield from _leaves(child)


def _compositors_windows():
    return sorted(_leaves(json.loads(_output("swaymsg", "--raw", "--type", "get_tree"))), key=lambda node: node["id"])


def windows(pid):
    """In the order in which they came up."""
    if ON_WAYLAND:
        return [Window(node["id"], node["name"]) for node in _compositors_windows() if node["pid"] == pid]
    lines = [line.split(maxsplit=4) for line in _output("wmctrl", "-l", "-p").splitlines()]
    return [Window(int(line[0], 16), "".join(line[4:])) for line in lines if line[2] == str(pid)]


def active_window():
    """The id of the window, of any program, that has the keyboard."""
    if ON_WAYLAND:
        return next((node["id"] for node in _compositors_windows() if node["focused"]), None)
    return int(_output("xdotool", "getactivewindow") or 0)


def ask_to_close(window):
    """Does what the close button of the window's frame does."""
    if ON_WAYLAND:
        subprocess.run(["swaymsg", f"[con_id={window.id}] kill"], check=True, stdout=subprocess.DEVNULL)
    else:
        subprocess.run(["wmctrl", "-i", "-c", str(window.id)], check=True)


def wait_until_active(window):
    wait_for(lambda: active_window() == window.id, f"the keyboard to be in {window}")
