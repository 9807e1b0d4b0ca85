# SPDX-License-Identifier: MIT
"""A panel on the session bus, as a status item sees one: the watcher that it registers with, and its menu."""
import threading

from gi.repository import Gio, GLib

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
INTERFACE = f"""<node><interface name="{WATCHER}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
</interface></node>"""


class Panel:
    """Answers on a thread of its own; the questions are asked from the caller's."""

    def __init__(self):
        self.items = []  # bus names, the latest last
        ready = threading.Event()
        threading.Thread(target=self._serve, args=(ready,), daemon=True).start()
        ready.wait()

    def _serve(self, ready):
        context = GLib.MainContext()
        context.push_thread_default()
        self.bus = Gio.DBusConnection.new_for_address_sync(
            Gio.dbus_address_get_for_bus_sync(Gio.BusType.SESSION),
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
        interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        self.bus.register_object("/StatusNotifierWatcher", interface, self._called, self._asked, None)
        self.bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                           GLib.Variant("(su)", (WATCHER, 0)), None, Gio.DBusCallFlags.NONE, -1)
        ready.set()
        GLib.MainLoop(context).run()

    def _called(self, _bus, sender, _path, _interface, method, _arguments, invocation):
        if method == "RegisterStatusNotifierItem":
            self.items.append(sender)
        invocation.return_value(None)

    def _asked(self, _bus, _sender, _path, _interface, name):
        return {"IsStatusNotifierHostRegistered": GLib.Variant("b", True),
                "ProtocolVersion": GLib.Variant("i", 0),
                "RegisteredStatusNotifierItems": GLib.Variant("as", self.items)}[name]

    def _call(self, path, interface, method, arguments):
        return self.bus.call_sync(self.items[-1], path, interface, method, arguments, None, Gio.DBusCallFlags.NONE,
                                  10_000).unpack()

    def _menu(self):
        return self._call("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
                          GLib.Variant("(ss)", (ITEM, "Menu")))[0]

    def lines(self):
        """What the menu of the latest item shows when it is opened: label -> id. Empty without an item."""
        if not self.items:
            return {}
        menu = self._menu()
        self._call(menu, MENU, "AboutToShow", GLib.Variant("(i)", (0,)))
        _, (_, _, children) = self._call(menu, MENU, "GetLayout", GLib.Variant("(iias)", (0, -1, [])))
        return {properties["label"]: number for number, properties, _ in children
                if "label" in properties and properties.get("visible", True)}

    def choose(self, label):
        """Returns at once: what is chosen may wait for an answer of the user's."""
        arguments = GLib.Variant("(isvu)", (self.lines()[label], "clicked", GLib.Variant("i", 0), 0))
        self.bus.call(self.items[-1], self._menu(), MENU, "Event", arguments, None, Gio.DBusCallFlags.NONE, -1, None)
