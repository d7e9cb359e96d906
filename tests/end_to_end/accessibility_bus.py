# SPDX-License-Identifier: MIT
"""All that goes over the accessibility bus, seen twice: by a listener as a screen reader is one, and as raw messages."""

import json
import os
import subprocess
import tempfile

from gi.repository import Gio, GLib

from screen import wait_for

HERE = os.path.dirname(os.path.abspath(__file__))


def _call(connection, *call, reply="(s)"):
    return connection.call_sync(*call, GLib.VariantType(reply), Gio.DBusCallFlags.NONE, 5000, None).unpack()[0]


def bus_address():
    session = Gio.bus_get_sync(Gio.BusType.SESSION, None)
    return _call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None)


def _texts(value):
    if isinstance(value, str):
        yield value
    elif isinstance(value, (list, tuple)):
        for each in value:
            yield from _texts(each)
    elif isinstance(value, dict):
        yield from _texts(list(value.items()))


class Message:
    """One message, raw and taken apart."""

    def __init__(self, raw):
        self.raw = raw
        message = Gio.DBusMessage.new_from_blob(raw, Gio.DBusCapabilityFlags.NONE)
        body = message.get_body()
        self.sender = message.get_sender()
        self.interface = message.get_interface() or ""
        self.member = message.get_member() or ""
        self.values = body.unpack() if body else ()

    @property
    def texts(self):
        return list(_texts(self.values))

    @property
    def key(self):
        """The number of the key that was pressed or released, or None."""
        if self.member in ("NotifyListenersSync", "NotifyListenersAsync", "NotifyEvent"):
            return self.values[0][1]
        return None

    @property
    def is_event(self):
        return self.interface.startswith("org.a11y.atspi.Event.")


class AccessibilityBus:
    """Records from its making to its end."""

    def __init__(self):
        # Without names: what the test itself puts into the fields is in them, too.
        self._raw = tempfile.TemporaryFile()
        self._heard = tempfile.TemporaryFile()
        self._monitor = subprocess.Popen(["dbus-monitor", "--address", bus_address(), "--binary"], stdout=self._raw)
        self._listener = subprocess.Popen(["/usr/bin/python3", os.path.join(HERE, "listener.py")], stdout=self._heard)
        wait_for(self._hears, "the listener to hear")
        wait_for(self.messages, "the monitor to see")

    @staticmethod
    def _read(stream):
        with open(f"/proc/self/fd/{stream.fileno()}", "rb") as own:
            return own.read()

    def _hears(self):
        return self._read(self._heard).startswith(b"ready\n")

    def end(self):
        for process in (self._listener, self._monitor):
            process.terminate()
            process.wait(10)
        self._raw.close()
        self._heard.close()

    def messages(self):
        """All complete messages so far."""
        data = self._read(self._raw)
        found = []
        while len(data) >= 16:
            size = Gio.DBusMessage.bytes_needed(data)
            if len(data) < size:
                break
            found.append(Message(data[:size]))
            data = data[size:]
        return found

    def heard(self):
        """What the listener has heard so far: [type, number, number, text]."""
        return [json.loads(line) for line in self._read(self._heard).decode().splitlines()[1:]]
