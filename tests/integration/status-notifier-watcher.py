#!/usr/bin/python3
"""A stand-in for the panel's tray host on a private session bus: it accepts StatusNotifierItem
registrations, and prints the labels of each registered item's exported menu (com.canonical.dbusmenu)
when the item registers and whenever its menu says it changed: "menu: <label>|<label>|...", and what its
icon shows: "icon: name=<IconName> light=<n> dark=<n>", counting the opaque pixels of its largest pixmap
that a dark panel (light ones) and a light panel (dark ones) would show."""
import sys

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

WATCHER = "org.kde.StatusNotifierWatcher"


def say(line):
    print(line, flush=True)


def labels(layout):
    """The labels of a dbusmenu layout (ia{sv}av), depth first."""
    _, properties, children = layout
    own = [str(properties["label"])] if "label" in properties else []
    return own + [label for child in children for label in labels(child)]


class Watcher(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(bus, "/StatusNotifierWatcher")
        self.bus, self.items, self.item, self.watching = bus, [], None, False

    @dbus.service.method(WATCHER, in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender):
        # An item names its bus name or its object path; the sender is the bus name either way.
        path = service if service.startswith("/") else "/StatusNotifierItem"
        self.items.append(sender + path)
        self.item = self.bus.get_object(sender, path)
        say("registered: " + sender)
        GLib.timeout_add(300, self.print_menu)
        GLib.timeout_add(300, self.print_icon)

    @dbus.service.method(WATCHER, in_signature="s")
    def RegisterStatusNotifierHost(self, service):
        pass

    # Qt reads properties through the introspection data, which dbus-python leaves without them.
    @dbus.service.method(dbus.INTROSPECTABLE_IFACE, out_signature="s", path_keyword="path",
                         connection_keyword="connection")
    def Introspect(self, path, connection):
        own = (f'<interface name="{WATCHER}"><property name="IsStatusNotifierHostRegistered" type="b" '
               'access="read"/><property name="ProtocolVersion" type="i" access="read"/><property '
               'name="RegisteredStatusNotifierItems" type="as" access="read"/>')
        return super().Introspect(path, connection).replace(f'<interface name="{WATCHER}">', own, 1)

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return self.GetAll(interface)[name]

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return {"IsStatusNotifierHostRegistered": True, "ProtocolVersion": dbus.Int32(0),
                "RegisteredStatusNotifierItems": dbus.Array(self.items, signature="s")}

    def print_icon(self):
        item = self.item.GetAll("org.kde.StatusNotifierItem", dbus_interface=dbus.PROPERTIES_IFACE)
        light = dark = largest = 0
        for width, height, argb in item.get("IconPixmap", []):  # network byte order
            if width <= largest or len(argb) < width * height * 4:
                continue
            largest, light, dark = width, 0, 0
            for i in range(0, width * height * 4, 4):
                a, r, g, b = argb[i:i + 4]
                if a < 200:
                    continue
                lightness = (r * 299 + g * 587 + b * 114) // 1000
                light += lightness > 190
                dark += lightness < 70
        say(f"icon: name={item.get('IconName', '')} light={light} dark={dark}")
        return False

    def print_menu(self):
        path = self.item.Get("org.kde.StatusNotifierItem", "Menu", dbus_interface=dbus.PROPERTIES_IFACE)
        menu = self.bus.get_object(self.item.bus_name, path)
        if not self.watching:
            self.watching = True
            for signal in ("LayoutUpdated", "ItemsPropertiesUpdated"):
                menu.connect_to_signal(signal, lambda *_: GLib.timeout_add(100, self.print_menu),
                                       dbus_interface="com.canonical.dbusmenu")
        _, layout = menu.GetLayout(0, -1, ["label"], dbus_interface="com.canonical.dbusmenu")
        say("menu: " + "|".join(labels(layout)))
        return False


DBusGMainLoop(set_as_default=True)
session = dbus.SessionBus()
watcher = Watcher(session)
name = dbus.service.BusName(WATCHER, session)
print("ready", file=sys.stderr, flush=True)
GLib.MainLoop().run()
