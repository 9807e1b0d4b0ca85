# SPDX-License-Identifier: MIT
"""A notification service for tests: takes org.freedesktop.Notifications on the session bus and records what comes."""
from gi.repository import Gio, GLib

import threading

NAME = "org.freedesktop.Notifications"
PATH = "/org/freedesktop/Notifications"
INTERFACE = """
<node><interface name='org.freedesktop.Notifications'>
  <method name='GetCapabilities'><arg type='as' direction='out'/></method>
  <method name='Notify'>
    <arg type='s' direction='in'/><arg type='u' direction='in'/><arg type='s' direction='in'/>
    <arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='as' direction='in'/>
    <arg type='a{sv}' direction='in'/><arg type='i' direction='in'/><arg type='u' direction='out'/></method>
  <method name='CloseNotification'><arg type='u' direction='in'/></method>
  <method name='GetServerInformation'>
    <arg type='s' direction='out'/><arg type='s' direction='out'/>
    <arg type='s' direction='out'/><arg type='s' direction='out'/></method>
  <signal name='NotificationClosed'><arg type='u'/><arg type='u'/></signal>
  <signal name='ActionInvoked'><arg type='u'/><arg type='s'/></signal>
</interface></node>"""


class NotificationService:
    def __init__(self, capabilities=("actions", "body", "body-markup")):
        self.capabilities = list(capabilities)
        self.calls = []  # (name of the program, id that it replaces, summary, body, actions)
        self.icons = []  # of the calls
        self.shown = {}  # bodies by id
        self.closed = []
        self.last = 0
        ready = threading.Event()
        self.context = GLib.MainContext()
        self.loop = GLib.MainLoop(self.context)
        self.thread = threading.Thread(target=self.serve, args=(ready,), daemon=True)
        self.thread.start()
        assert ready.wait(30), "no notification service"

    def serve(self, ready):
        self.context.push_thread_default()
        address = Gio.dbus_address_get_for_bus_sync(Gio.BusType.SESSION)
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.bus = Gio.DBusConnection.new_for_address_sync(address, flags)
        description = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        self.bus.register_object(PATH, description, self.called, None, None)
        Gio.bus_own_name_on_connection(self.bus, NAME, Gio.BusNameOwnerFlags.NONE, lambda *_: ready.set(), None)
        self.loop.run()

    def called(self, _bus, _sender, _path, _interface, method, arguments, invocation):
        values = arguments.unpack()
        if method == "GetCapabilities":
            return invocation.return_value(GLib.Variant("(as)", (self.capabilities,)))
        if method == "Notify":
            name, replaced, icon, summary, body, actions, _hints, _time = values
            if replaced not in self.shown:
                self.last += 1
                replaced, asked = self.last, replaced
            else:
                asked = replaced
            self.shown[replaced] = body
            invocation.return_value(GLib.Variant("(u)", (replaced,)))
            # Only now: who waits for the call may press a button of it, whose number the program must know by then.
            self.icons.append(icon)
            return self.calls.append((name, asked, summary, body, actions))
        if method == "CloseNotification":
            self.closed.append(values[0])
            self.shown.pop(values[0], None)
            invocation.return_value(None)
            return self.emit("NotificationClosed", "(uu)", values[0], 3)
        return invocation.return_value(GLib.Variant("(ssss)", ("stand-in", "parlivo", "1", "1.2")))

    def emit(self, signal, form, *values):
        self.bus.emit_signal(None, PATH, NAME, signal, GLib.Variant(form, values))

    def choose(self, number, key):
        """The user presses a button."""
        self.emit("ActionInvoked", "(us)", number, key)

    def end(self):
        self.bus.close_sync()
        self.loop.quit()
        self.thread.join(30)
