#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Errors as the desktop's notifications, on a private bus with a notification service of the test's own.

usage: errors_test.py TRIAL_PROGRAM [CASE...]

Needs a desktop of its own with sound (tests/support/desktop) in a world of its own (tests/support/isolated).
"""
import os
import pathlib
import shutil
import tempfile
import urllib.parse

import windows
from notifications import NotificationService
from windows import WindowsTest, provide_models, store, wait_for

BEST = "ggml-large-v3-turbo-q8_0.bin"
NO_MICROPHONE = "Impossibile avviare la registrazione: Microfono non disponibile"


class NotificationTest(WindowsTest):
    def serve(self, *arguments):
        service = NotificationService(*arguments)
        self.addCleanup(service.end)
        return service

    def start_without_sound(self, **settings):
        store({"onboardingDone": True, **settings})
        provide_models(BEST)
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        for name in ("pavucontrol", "xdg-open"):
            opener = self.folder / name
            opener.write_text(f'#!/bin/sh\necho "$0 $1" > "{self.folder}/opened"\n')
            opener.chmod(0o755)
        self.start(PULSE_SERVER=f"unix:{self.folder}/no-sound", PATH=f"{self.folder}:/usr/bin:/bin",
                   XDG_CURRENT_DESKTOP="Test")
        wait_for("the program", windows.is_up)

    def opened(self):
        opened = self.folder / "opened"
        return wait_for("what the button opens", lambda: opened.exists() and opened.read_text())

    def test_an_error_leads_to_what_helps(self):
        service = self.serve()
        self.start_without_sound()
        windows.command("--toggle")
        wait_for("the notification", lambda: service.calls)
        name, replaced, summary, body, actions = service.calls[0]
        self.assertEqual((name, replaced, summary, body), ("Parlivo", 0, "Parlivo", NO_MICROPHONE))
        self.assertEqual(actions[1::2], ["Impostazioni audio"])
        service.choose(1, actions[0])
        self.assertIn("pavucontrol", self.opened())

    def test_the_icon_is_the_themes_and_without_one_the_bundles(self):
        service = self.serve()
        share = pathlib.Path(os.environ["TMPDIR"], "condivisi")
        themed = share / "icons/hicolor/48x48/apps/it.parlivo.Parlivo.png"
        themed.parent.mkdir(parents=True)
        self.addCleanup(shutil.rmtree, share)
        before = os.environ.get("XDG_DATA_DIRS")
        self.addCleanup(lambda: os.environ.pop("XDG_DATA_DIRS") if before is None
                        else os.environ.__setitem__("XDG_DATA_DIRS", before))
        os.environ["XDG_DATA_DIRS"] = str(share)
        for count in (1, 2):
            self.start_without_sound()
            windows.command("--toggle")
            wait_for("the notification", lambda count=count: len(service.icons) == count)
            self.program.end()
            themed.write_bytes(b"a picture")
        self.assertEqual(service.icons[1], "it.parlivo.Parlivo")
        self.assertTrue(service.icons[0].startswith("file:///"), service.icons[0])
        picture = pathlib.Path(urllib.parse.unquote(urllib.parse.urlparse(service.icons[0]).path))
        self.assertEqual(picture.read_bytes()[:4], b"\x89PNG")

    def test_a_second_error_takes_the_place_of_the_first(self):
        service = self.serve()
        self.start_without_sound()
        for count in (1, 2, 3):
            windows.command("--toggle")
            wait_for("the notification", lambda count=count: len(service.calls) == count)
        self.assertEqual([call[1] for call in service.calls], [0, 1, 1])
        self.assertEqual(len(service.shown), 1)

    def test_a_service_that_starts_anew_is_used(self):
        service = NotificationService()
        self.start_without_sound()
        windows.command("--toggle")
        wait_for("the notification", lambda: service.calls)
        service.end()
        # Nobody is there to show it, and nobody waits.
        windows.command("--toggle")
        service = self.serve(("body",))

        def shown():
            windows.command("--toggle")
            return service.calls
        wait_for("the notification", shown)
        self.assertEqual(service.calls[0][1], 0, "the new service knows none of the old ones")

    def test_the_switch_turns_them_off(self):
        service = self.serve()
        self.start_without_sound(notificationsEnabled=False)
        windows.command("--toggle")
        store({"onboardingDone": True, "notificationsEnabled": True})
        windows.command("--toggle")
        wait_for("the notification", lambda: service.calls)
        self.assertEqual(len(service.calls), 1, "the first error was not shown")


if __name__ == "__main__":
    windows.main()
