# SPDX-License-Identifier: MIT
"""A settings portal: fake_portal.py SCHEME [SETTING=VALUE...]. A line on standard input changes a setting."""

import sys
import threading

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

SETTINGS = "org.freedesktop.portal.Settings"
APPEARANCE = "org.freedesktop.appearance"
GNOME = "org.gnome.desktop.interface"


class Portal(dbus.service.Object):
    settings = {}

    @dbus.service.method(SETTINGS, in_signature="as", out_signature="a{sa{sv}}")
    def ReadAll(self, namespaces):
        return {name: settings for name, settings in self.settings.items() if name in namespaces}

    @dbus.service.signal(SETTINGS, signature="ssv")
    def SettingChanged(self, namespace, key, value):
        pass

    def change(self, words):
        for namespace, key, value in settings_of(words):
            self.settings.setdefault(namespace, {})[key] = value
            self.SettingChanged(namespace, key, value)


def settings_of(words):
    """ "1" is a colour scheme; "contrast=1", "font-name=Sans 14" and the like are other settings."""
    for word in words:
        key, _, value = word.rpartition("=")
        yield {
            "": lambda: (APPEARANCE, "color-scheme", dbus.UInt32(int(value))),
            "contrast": lambda: (APPEARANCE, key, dbus.UInt32(int(value))),
            "accent-color": lambda: (APPEARANCE, key, dbus.Struct(
                [float(part) for part in value.split(",")], signature="ddd")),
            "font-name": lambda: (GNOME, key, dbus.String(value)),
            "text-scaling-factor": lambda: (GNOME, key, dbus.Double(float(value))),
            "high-contrast": lambda: ("org.gnome.desktop.a11y.interface", key, dbus.Boolean(value == "true")),
        }[key]()


def read_commands(portal):
    for line in sys.stdin:
        GLib.idle_add(portal.change, [line.strip()])
    GLib.idle_add(loop.quit)


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
name = dbus.service.BusName("org.freedesktop.portal.Desktop", bus)
portal = Portal(bus, "/org/freedesktop/portal/desktop")
portal.change(sys.argv[1:])
loop = GLib.MainLoop()
threading.Thread(target=read_commands, args=(portal,), daemon=True).start()
print("ready", flush=True)
loop.run()
