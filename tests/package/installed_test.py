#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The update that the installed program offers, accepted by a user to whom the program's files do not belong.

usage: installed_test.py BUNDLE

Part of deb_test, which provides the clean system, the user and the desktop.
"""
import pathlib
import plistlib
import sys

sys.path.insert(1, str(pathlib.Path(__file__).resolve().parents[1] / "desktop" / "update"))
import update_test  # noqa: E402


class InstalledTest(update_test.ForeignBundleTest):
    def install(self):
        self.home.mkdir(parents=True)  # stays empty
        self.bundle = pathlib.Path(sys.argv[1])
        self.assertTrue(all(path.lstat().st_uid == 0 for path in self.bundle.rglob("*")))
        self.version = plistlib.loads((self.bundle / "Contents/Info.plist").read_bytes())["CFBundleShortVersionString"]
        self.newer = self.version + ".1"

    def command(self):
        return ["/usr/bin/parlivo"]


if __name__ == "__main__":
    update_test.windows.main()
