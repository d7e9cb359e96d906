# SPDX-License-Identifier: MIT
"""A settings portal: fake_portal.py SCHEME. A line on standard input changes the colour scheme."""

import sys
import threading

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

SETTINGS = "org.freedesktop.portal.Settings"
APPEARANCE = "org.freedesktop.appearance"


class Portal(dbus.service.Object):
    scheme = 0

    @dbus.service.method(SETTINGS, in_signature="ss", out_signature="v")
    def Read(self, namespace, key):
        if (namespace, key) != (APPEARANCE, "color-scheme"):
            raise dbus.DBusException("no such setting", name="org.freedesktop.portal.Error.NotFound")
        return dbus.UInt32(self.scheme, variant_level=2)

    @dbus.service.signal(SETTINGS, signature="ssv")
    def SettingChanged(self, namespace, key, value):
        pass

    def change(self, scheme):
        self.scheme = scheme
        self.SettingChanged(APPEARANCE, "color-scheme", dbus.UInt32(scheme, variant_level=1))


def read_commands(portal):
    for line in sys.stdin:
        GLib.idle_add(portal.change, int(line))
    GLib.idle_add(loop.quit)


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
name = dbus.service.BusName("org.freedesktop.portal.Desktop", bus)
portal = Portal(bus, "/org/freedesktop/portal/desktop")
portal.scheme = int(sys.argv[1])
loop = GLib.MainLoop()
threading.Thread(target=read_commands, args=(portal,), daemon=True).start()
print("ready", flush=True)
loop.run()
