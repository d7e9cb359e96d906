# SPDX-License-Identifier: MIT
"""The program's windows as assistive technology sees them, and real key presses."""

import os
import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

# Sanitizer builds are slower; everything that waits is multiplied.
SLOWNESS = float(os.environ.get("ZARN_TEST_SLOWNESS", "1"))
ON_WAYLAND = "WAYLAND_DISPLAY" in os.environ


class NotFound(AssertionError):
    """What was waited for did not come."""


def wait_for(condition, what, seconds=10.0):
    """The first true answer of `condition`, asked again and again for a bounded time."""
    deadline = time.monotonic() + seconds * SLOWNESS
    while True:
        try:
            answer = condition()
        except GLib.Error:
            answer = None  # The tree changed under us.
        if answer:
            return answer
        if time.monotonic() > deadline:
            raise NotFound("waited in vain for " + what)
        time.sleep(0.02)


def keys(*names):
    """Presses keys as a keyboard would, such as "Tab" or "alt+v"."""
    if not ON_WAYLAND:
        subprocess.run(["xdotool", "key", "--delay", "15", *names], check=True)
        return
    for *modifiers, key in (name.split("+") for name in names):
        held = [option for modifier in modifiers for option in ("-M", modifier)]
        subprocess.run(["wtype", *held, "-k", key], check=True)


def type_text(text):
    command = ["wtype"] if ON_WAYLAND else ["xdotool", "type", "--delay", "8"]
    subprocess.run([*command, text], check=True)


def activate(window):
    """Has the window manager give an X11 window the keyboard: only then does it hear alt+F4 for it."""
    def is_active():
        active = subprocess.run(["xdotool", "getactivewindow"], capture_output=True, text=True, check=False)
        if active.stdout.strip() == window:
            return True
        subprocess.run(["xdotool", "windowactivate", window], stderr=subprocess.DEVNULL, check=False)
        return False

    wait_for(is_active, f"window {window} to be active")


def screenshot(path):
    subprocess.run(["import", "-window", "root", path], check=True)


def _walk(node, depth=0):
    if node is None or depth > 12:
        return
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child is None:
            continue
        yield child
        yield from _walk(child, depth + 1)


def _is(node, state):
    return node.get_state_set().contains(state)


def _labels(node):
    return [relation.get_target(i).get_name()
            for relation in node.get_relation_set()
            if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY
            for i in range(relation.get_n_targets())]


def is_showing(node):
    return _is(node, Atspi.StateType.SHOWING) and _is(node, Atspi.StateType.VISIBLE)


def is_enabled(node):
    return _is(node, Atspi.StateType.ENABLED) and _is(node, Atspi.StateType.SENSITIVE)


class Alert:
    """A modal alert: its texts in order, and its buttons by title."""

    def __init__(self, node):
        self._node = node

    def _shown(self, role):
        return [child for child in _walk(self._node) if child.get_role_name() == role and is_showing(child)]

    @property
    def texts(self):
        return [label.get_name() for label in self._shown("label") if label.get_name()]

    @property
    def buttons(self):
        return [button.get_name() for button in self._shown("push button")]

    def press(self, title):
        node = self._node
        for button in self._shown("push button"):
            if button.get_name() == title:
                button.get_action_iface().do_action(0)
                wait_for(lambda: not _still_there(node), "the alert to go")
                return
        raise NotFound(f"no button {title!r} among {self.buttons}")


def _still_there(node):
    try:
        return is_showing(node)
    except GLib.Error:
        return False


class Screen:
    """Everything that one process shows."""

    def __init__(self, pid):
        self.pid = pid

    def application(self):
        # Nothing here handles events, so nothing may be remembered.
        desktop = Atspi.get_desktop(0)
        desktop.set_cache_mask(Atspi.Cache.NONE)
        desktop.clear_cache()
        for index in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(index)
            if application is not None and application.get_process_id() == self.pid:
                application.set_cache_mask(Atspi.Cache.NONE)
                return application
        return None

    def windows(self):
        application = self.application()
        if application is None:
            return []
        found = []
        for index in range(application.get_child_count()):
            window = application.get_child_at_index(index)
            if window is not None and is_showing(window):
                found.append(window)
        return found

    def window_titles(self):
        return [window.get_name() for window in self.windows()]

    def x_window(self, title):
        """The X11 window of the program with this title."""
        def found():
            return subprocess.run(
                ["xdotool", "search", "--all", "--onlyvisible", "--pid", str(self.pid), "--name", f"^{title}$"],
                capture_output=True, text=True, check=False).stdout.split()

        return wait_for(found, f"a window titled {title!r}")[0]

    def find(self, role, name, shown=True):
        """A control by role and accessible name in any window, or None."""
        for window in self.windows():
            for node in _walk(window):
                if node.get_role_name() == role and node.get_name() == name and is_showing(node) == shown:
                    return node
        return None

    def window_with(self, role, name):
        """The window that a control is in."""
        def found():
            for window in self.windows():
                if any(node.get_role_name() == role and node.get_name() == name for node in _walk(window)):
                    return window
            return None

        return wait_for(found, f"a window with the {role} {name!r}")

    def control(self, role, name, seconds=10.0):
        return wait_for(lambda: self.find(role, name), f"{role} {name!r}", seconds)

    def named(self, role):
        """The accessible name of the first control of this role that is showing."""
        def found():
            for window in self.windows():
                for node in _walk(window):
                    if node.get_role_name() == role and is_showing(node):
                        return [node.get_name()]
            return None

        return wait_for(found, f"a {role}")[0]

    def shows(self, role, name):
        return self.find(role, name) is not None

    def text(self, label):
        """What a field holds."""
        node = self.control("text", label)
        return node.get_text_iface().get_text(0, -1)

    def fill(self, label, text, role="text"):
        """Puts a text into a field as if it had been pasted over what was there."""
        self.control(role, label).get_editable_text_iface().set_text_contents(text)

    def is_editable(self, label, role="text"):
        field = self.control(role, label)
        return _is(field, Atspi.StateType.EDITABLE) and not _is(field, Atspi.StateType.READ_ONLY)

    def press(self, name):
        button = self.control("push button", name)
        wait_for(lambda: is_enabled(button), f"button {name!r} to be enabled")
        button.get_action_iface().do_action(0)

    @staticmethod
    def area(node):
        """Where a control or window is on the screen: (x, y, width, height)."""
        box = node.get_component_iface().get_extents(Atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    def click(self, role, name):
        """Clicks with the mouse. A check box is hit where its mark is."""
        node = self.control(role, name)
        wait_for(lambda: is_enabled(node), f"{role} {name!r} to be enabled")
        x, y, width, height = self.area(node)
        across = 8 if role == "check box" else width // 2
        subprocess.run(["xdotool", "mousemove", str(x + across), str(y + height // 2), "click", "1"], check=True)

    def is_button_enabled(self, name):
        return is_enabled(self.control("push button", name))

    def toggle(self, name):
        self.control("check box", name).get_action_iface().do_action(0)

    def is_checked(self, name):
        return _is(self.control("check box", name), Atspi.StateType.CHECKED)

    def focus(self, role, name):
        self.control(role, name).get_component_iface().grab_focus()

    def _keyboard(self):
        for window in self.windows():
            for node in _walk(window):
                # The items of a closed menu go on saying that they have it.
                if _is(node, Atspi.StateType.FOCUSED) and is_showing(node) and node.get_role_name() != "list item":
                    return node
        return None

    def focused(self):
        """Role and name of what has the keyboard, or None."""
        node = self._keyboard()
        return (node.get_role_name(), node.get_name()) if node else None

    def _place(self):
        """Where the keyboard is: in a notice that is the caret, which goes from link to link."""
        node = self._keyboard()
        if not node:
            return None
        text = node.get_text_iface() if node.get_role_name() == "label" else None
        return node.get_role_name(), node.get_name(), text.get_caret_offset() if text else 0

    def tab(self, key="Tab"):
        """Presses Tab and waits until the keyboard is elsewhere."""
        before = wait_for(self._place, "something to have the keyboard")
        keys(key)
        wait_for(lambda: self._place() not in (before, None), f"{key} to move on from {before}")

    def tab_to(self, role, name, key="Tab"):
        """Presses Tab until a control has the keyboard."""
        passed = [wait_for(self.focused, "something to have the keyboard")]
        while passed[-1] != (role, name):
            if len(passed) > 15:
                raise NotFound(f"{role} {name!r} is not among {passed}")
            self.tab(key)
            passed.append(self.focused())

    def menu(self, menu, item):
        for window in self.windows():
            for node in _walk(window):
                if node.get_role_name() == "menu item" and node.get_name() == item:
                    node.get_action_iface().do_action(0)
                    return
        raise NotFound(f"no item {item!r} in menu {menu!r}")

    def pop_up(self):
        """The server menu: a combo box is named by its choice, and tells its label as a relation."""
        def found():
            for window in self.windows():
                for node in _walk(window):
                    if node.get_role_name() == "combo box" and is_showing(node) and "Server:" in _labels(node):
                        return node
            return None

        return wait_for(found, "the server menu")

    def choices(self):
        """The items of the server menu, separators as empty texts."""
        items = self._list()
        return [items.get_child_at_index(i).get_name() for i in range(items.get_child_count())]

    def _list(self):
        for node in _walk(self.pop_up()):
            if node.get_role_name() == "list":
                return node
        raise NotFound("the server menu has no list")

    def is_menu_open(self):
        return is_showing(self._list())

    def choice(self):
        return self.pop_up().get_name()

    def choose(self, title, modifier=None):
        """Chooses an item of the server menu with the keyboard, as a person would."""
        titles = self.choices()
        index = titles.index(title)
        # The toolkit lets no assistive technology give a menu the keyboard.
        self.tab_to("combo box", self.choice())
        keys("space")
        wait_for(self.is_menu_open, "the server menu to open")
        keys("Home", *["Down"] * len([name for name in titles[:index] if name]))
        keys(modifier + "+Return" if modifier else "Return")

    def alert(self, seconds=20.0):
        def found():
            for window in self.windows():
                if window.get_role_name() in ("dialog", "alert"):
                    alert = Alert(window)
                    if alert.buttons:
                        return alert
            return None

        return wait_for(found, "an alert", seconds)

    def has_alert(self):
        return any(window.get_role_name() in ("dialog", "alert") for window in self.windows())
