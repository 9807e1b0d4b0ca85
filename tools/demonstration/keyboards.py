# SPDX-License-Identifier: MIT
"""Hands on the keyboard of an X display or of a Wayland session."""

import contextlib
import os
import socket
import struct
import subprocess
import threading
import time
from pathlib import Path

from demonstration.waiting import Failure

# Codes of positions on the keyboard as X and Wayland's keymaps count them (evdev's code + 8).
ALT, SPACE, CONTROL, S = 64, 65, 37, 39


class Keyboard:
    """Hands on the display's keyboard, and the times at which its keys moved, in ms of the X server's clock."""

    def __init__(self):
        from Xlib import X, display
        from Xlib.ext import record, xtest

        self._X, self._xtest = X, xtest
        self._display = display.Display()
        self._listener = display.Display()
        self.events = []  # (pressed, key code, ms)
        everything = {
            "core_requests": (0, 0), "core_replies": (0, 0), "ext_requests": (0, 0, 0, 0),
            "ext_replies": (0, 0, 0, 0), "delivered_events": (0, 0), "errors": (0, 0),
            "client_started": False, "client_died": False,
        }  # fmt: skip
        keys = everything | {"device_events": (X.KeyPress, X.KeyRelease)}
        self._context = self._listener.record_create_context(0, [record.AllClients], [keys])
        self._listener.sync()
        thread = threading.Thread(target=self._listen, daemon=True)
        thread.start()

    def _listen(self):
        from Xlib.error import ConnectionClosedError

        with contextlib.suppress(ConnectionClosedError):  # the end of the display is the end of this, too
            self._listener.record_enable_context(self._context, self._take)

    def _take(self, reply):
        from Xlib.protocol import rq

        data = reply.data
        while data:
            event, data = rq.EventField(None).parse_binary_value(data, self._listener.display, None, None)
            self.events.append((event.type == self._X.KeyPress, event.detail, event.time))

    def press(self, *keys):
        for key in keys:
            self._xtest.fake_input(self._display, self._X.KeyPress, key)
        self._display.sync()

    def release(self, *keys):
        for key in reversed(keys):
            self._xtest.fake_input(self._display, self._X.KeyRelease, key)
        self._display.sync()

    def from_release_to_last_press(self, key):
        """Ms from the moment when `key` first came up to the last press of any key."""
        released = next(ms for pressed, code, ms in self.events if not pressed and code == key)
        return max((ms for pressed, _, ms in self.events if pressed), default=released) - released


class WaylandKeyboard:
    """A keyboard of its own in a Wayland session (zwp_virtual_keyboard_v1), spoken to without a library: a message
    is the object's number, its own number and its size, and then the arguments."""

    _PRESSED, _RELEASED = 1, 0
    # In the order in which they come into being: the compositor takes no gaps.
    _REGISTRY, _ANSWER, _SEAT, _MANAGER, _KEYBOARD = 2, 3, 4, 5, 6
    _MODIFIERS = {ALT: 1 << 3, CONTROL: 1 << 2}

    def __init__(self):
        path = Path(os.environ.get("XDG_RUNTIME_DIR", "/")) / os.environ["WAYLAND_DISPLAY"]
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._socket.connect(str(path))
        self._held = 0
        self._released = None
        self._send(1, 1, struct.pack("=I", self._REGISTRY))  # wl_display.get_registry
        names = self._globals()
        self._bind(names, "wl_seat", self._SEAT)
        self._bind(names, "zwp_virtual_keyboard_manager_v1", self._MANAGER)
        self._send(self._MANAGER, 0, struct.pack("=II", self._SEAT, self._KEYBOARD))
        self._send_keymap()

    def _send(self, target, opcode, arguments=b"", descriptor=None):
        message = struct.pack("=II", target, (8 + len(arguments)) << 16 | opcode) + arguments
        socket.send_fds(self._socket, [message], [] if descriptor is None else [descriptor])

    @staticmethod
    def _string(text):
        data = text.encode() + b"\0"
        return struct.pack("=I", len(data)) + data + bytes(-len(data) % 4)

    def _globals(self):
        """Reads until the answer to a question comes (wl_display.sync), which is after all globals."""
        names, received = {}, b""
        self._send(1, 0, struct.pack("=I", self._ANSWER))
        while chunk := self._socket.recv(65536):
            received += chunk
            while len(received) >= 8:
                target, word = struct.unpack_from("=II", received)
                if len(received) < word >> 16:
                    break
                body, received = received[8 : word >> 16], received[word >> 16 :]
                if target == self._ANSWER:
                    return names
                if target == self._REGISTRY and word & 0xFFFF == 0:
                    name, length = struct.unpack_from("=II", body)
                    names[body[8 : 8 + length - 1].decode()] = name
        raise Failure("the compositor ended the conversation")

    def _bind(self, names, interface, number):
        self._send(self._REGISTRY, 0, struct.pack("=I", names[interface]) + self._string(interface)
                   + struct.pack("=II", 1, number))  # fmt: skip

    def _send_keymap(self):
        """The keymap of the X server beside: a complete one."""
        text = subprocess.run(["xkbcomp", "-w0", os.environ["DISPLAY"], "-"], capture_output=True, check=True).stdout
        file = os.memfd_create("keymap")
        os.write(file, text + b"\0")
        self._send(self._KEYBOARD, 0, struct.pack("=II", 1, len(text) + 1), file)
        os.close(file)

    def _move(self, key, state):
        now = int(time.monotonic() * 1000) & 0xFFFFFFFF
        self._send(self._KEYBOARD, 1, struct.pack("=III", now, key - 8, state))
        if modifier := self._MODIFIERS.get(key):
            self._held = self._held | modifier if state else self._held & ~modifier
            self._send(self._KEYBOARD, 2, struct.pack("=IIII", self._held, 0, 0, 0))

    def press(self, *keys):
        for key in keys:
            self._move(key, self._PRESSED)

    def release(self, *keys):
        for key in reversed(keys):
            self._move(key, self._RELEASED)
        self._released = self._released or time.monotonic()

    def since_release(self):
        """Ms from the first release of a key until now."""
        return (time.monotonic() - self._released) * 1000
