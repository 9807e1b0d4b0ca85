# SPDX-License-Identifier: MIT
"""Another program's hot keys, which nobody can have beside it."""
from Xlib import X, XK, display, error
from Xlib.ext import xinput

ALT, CONTROL, SHIFT, SUPER = X.Mod1Mask, X.ControlMask, X.ShiftMask, X.Mod4Mask
# (key, modifiers) of the four that are offered.
PRESETS = (("space", ALT), ("space", ALT | CONTROL), ("space", SUPER | SHIFT), ("grave", ALT))


class HeldKeys:
    """Holds combinations on the master keyboard, and on each single one, where a program could take them first."""

    def __init__(self, combinations, name=None):
        self.display = display.Display(name)
        self.root = self.display.screen().root
        self.combinations = [(self.code(key), modifiers) for key, modifiers in combinations]
        for code, modifiers in self.combinations:
            self.hold(code, modifiers)
        self.display.sync()

    def code(self, key):
        return self.display.keysym_to_keycode(XK.string_to_keysym(key))

    def hold(self, code, modifiers):
        for keyboard in self.keyboards():
            self.root.xinput_grab_keycode(keyboard, X.CurrentTime, code, X.GrabModeAsync, X.GrabModeAsync, False,
                                          xinput.KeyPressMask, [modifiers])
        refused = error.CatchError(error.BadAccess)
        self.root.grab_key(code, modifiers, False, X.GrabModeAsync, X.GrabModeAsync, onerror=refused)
        self.display.sync()
        # A window manager may have it, which is as good.

    def keyboards(self):
        devices = self.display.xinput_query_device(xinput.AllDevices).devices
        return [device.deviceid for device in devices if device.use == xinput.SlaveKeyboard]

    def let_go(self):
        """Frees all of them."""
        self.display.close()
