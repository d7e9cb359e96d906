# SPDX-License-Identifier: MIT
"""Listens as a screen reader does, and prints what it hears: a line of JSON for each event and key.

The toolkit sends events, and asks about keys, only while somebody listens."""

import json

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402


def heard(event):
    data = event.any_data if isinstance(event.any_data, (str, int)) else ""
    print(json.dumps([event.type, event.detail1, event.detail2, data]), flush=True)


def key(event):
    print(json.dumps(["key", event.id, event.hw_code, event.event_string]), flush=True)
    return False


events = Atspi.EventListener.new(heard)
for name in ("document", "focus", "mouse", "object", "terminal", "window"):
    events.register(name)
keys = Atspi.DeviceListener.new(key)
for modifiers in range(256):
    Atspi.register_keystroke_listener(keys, None, modifiers, (1 << Atspi.EventType.KEY_PRESSED_EVENT)
                                      | (1 << Atspi.EventType.KEY_RELEASED_EVENT), Atspi.KeyListenerSyncType.NOSYNC)
print("ready", flush=True)
Atspi.event_main()
