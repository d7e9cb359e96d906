# SPDX-License-Identifier: MIT
"""Stand-ins for the desktop around the program: its file manager and its opener."""

import os
import tempfile
import threading

from gi.repository import Gio, GLib

FILE_MANAGER = """<node><interface name="org.freedesktop.FileManager1">
  <method name="ShowFolders"><arg type="as" direction="in"/><arg type="s" direction="in"/></method>
</interface></node>"""


class BusService:
    """A service of one object on the session bus, answered in a thread of its own."""

    def __init__(self, name, path, description):
        self._context = GLib.MainContext()
        self._loop = GLib.MainLoop.new(self._context, False)
        self._ready = threading.Event()
        self._name, self._path, self._description = name, path, description
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()
        if not self._ready.wait(20):
            raise AssertionError(f"{name} could not be offered on the session bus")

    def _run(self):
        self._context.push_thread_default()
        self.connection = Gio.DBusConnection.new_for_address_sync(
            os.environ["DBUS_SESSION_BUS_ADDRESS"],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None, None)
        interface = Gio.DBusNodeInfo.new_for_xml(self._description).interfaces[0]
        self.connection.register_object(self._path, interface, self._call, None, None)
        self.connection.call_sync(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
            GLib.Variant("(su)", (self._name, 0)), None, Gio.DBusCallFlags.NONE, 10000, None)
        self._ready.set()
        self._loop.run()
        self.connection.close_sync(None)

    def _call(self, _connection, _sender, _path, _interface, method, parameters, invocation):
        invocation.return_value(self.answer(method, parameters.unpack()))

    def answer(self, method, arguments):
        raise NotImplementedError

    def stop(self):
        self._context.invoke_full(GLib.PRIORITY_DEFAULT, self._loop.quit)
        self._thread.join(20)


class FileManager(BusService):
    """Records the folders that it is asked to show."""

    def __init__(self):
        self.shown = []
        super().__init__("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1", FILE_MANAGER)

    def answer(self, method, arguments):
        self.shown += arguments[0]
        return None


class Opener:
    """An xdg-open that writes down what it is asked to open."""

    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="opener-")
        self._record = os.path.join(self.folder, "opened")
        program = os.path.join(self.folder, "xdg-open")
        with open(os.open(program, os.O_WRONLY | os.O_CREAT, 0o700), "w", encoding="ascii") as file:
            file.write(f'#!/bin/sh\nprintf "%s\\n" "$@" >>{self._record}\n')

    def environment(self):
        return {"PATH": self.folder + ":" + os.environ["PATH"]}

    def opened(self):
        try:
            with open(self._record, encoding="utf-8") as file:
                return file.read().splitlines()
        except FileNotFoundError:
            return []
