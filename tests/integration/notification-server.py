#!/usr/bin/python3
"""A stand-in for the desktop's notification server on a private session bus: it prints each
notification it is asked to show ("<ms since epoch>|<summary>|<body>|<icon>|<desktop entry>") and
otherwise behaves; "ready" on standard error once it serves."""
import sys
import time

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

NOTIFICATIONS = "org.freedesktop.Notifications"


class Server(dbus.service.Object):
    shown = 0

    @dbus.service.method(NOTIFICATIONS, in_signature="susssasa{sv}i", out_signature="u")
    def Notify(self, application, replaces, icon, summary, body, actions, hints, timeout):
        print(f"{time.time_ns() // 1000000}|{summary}|{body}|{icon}|{hints.get('desktop-entry', '')}",
              flush=True)
        self.shown += 1
        return self.shown

    @dbus.service.method(NOTIFICATIONS, out_signature="as")
    def GetCapabilities(self):
        return ["body", "actions"]

    @dbus.service.method(NOTIFICATIONS, in_signature="u")
    def CloseNotification(self, notification):
        pass


DBusGMainLoop(set_as_default=True)
session = dbus.SessionBus()
server = Server(session, "/org/freedesktop/Notifications")
name = dbus.service.BusName(NOTIFICATIONS, session)
print("ready", file=sys.stderr, flush=True)
GLib.MainLoop().run()
