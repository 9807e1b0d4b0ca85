#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A hot key that another program holds: who says so, and what happens once it is free.

usage: hotkey_test.py TRIAL_PROGRAM [CASE...]

Needs a desktop of its own with sound (tests/support/desktop) in a world of its own (tests/support/isolated).
"""
import subprocess

import windows
from held_keys import ALT, CONTROL, PRESETS, HeldKeys
from notifications import NotificationService
from windows import WindowsTest, key, provide_models, settings, store, wait_for

BEST = "ggml-large-v3-turbo-q8_0.bin"
FULL = "gemma-3-4b-it-Q4_K_M.gguf"
TAKEN = "Alt+Spazio è già usata da un altro programma: scegli un'altra scorciatoia"
CHOOSE = "Scegli la scorciatoia…"
WELCOME = ("Tieni premuto %s, parla, rilascia:\nil testo appare dove stai scrivendo.\n"
           "Tutto in locale — la tua voce non lascia mai questo computer.")


class RefusedKeyTest(WindowsTest):
    def hold(self, *combinations):
        self.held = HeldKeys(combinations)
        self.addCleanup(self.let_go)

    def let_go(self):
        if self.held:
            self.held.let_go()
            self.held = None

    def start_with_chosen_key(self, *arguments):
        """Chosen by the user, so that no other is taken in its place."""
        store({"onboardingDone": True, "hotkeyPreset": "opt-space", "dictationMode": "toggle"})
        provide_models(BEST)
        self.start(*arguments)
        wait_for("the program", windows.is_up)

    def open_dictation_tab(self):
        self.program.wait("Impostazioni Parlivo")
        self.program.explained("the tab", lambda: self.program.find("Dettatura", "page tab").do_action(0)
                               and self.program.find("Dettatura", "page tab list"))

    def test_the_settings_say_which_until_it_is_free(self):
        self.hold(PRESETS[0])
        self.start_with_chosen_key("--settings")
        self.open_dictation_tab()
        self.program.wait(TAKEN, "label")
        self.assertEqual(settings()["hotkeyPreset"], "opt-space", "the user's choice stays")
        self.let_go()
        self.program.wait_until_gone(TAKEN)
        key("alt+space")
        wait_for("the recording", lambda: windows.state() == "recording")
        key("alt+space")
        wait_for("its end", lambda: windows.state() != "recording")

    def test_the_first_page_names_the_preset_that_is_taken_instead(self):
        self.hold(PRESETS[0])
        self.start()
        self.program.wait(WELCOME % "Ctrl+Alt+Spazio", "label")
        self.wait_for_setting("hotkeyPreset", "ctrl-opt-space")

    def test_the_last_page_says_which_and_leads_to_the_choice(self):
        self.hold(*PRESETS)
        provide_models(BEST, FULL)
        self.start()
        self.program.wait("Just talk. It types.")
        self.program.wait(WELCOME % "il tasto che sceglierai", "label")
        for page in ("Dove salvo i modelli AI?", "Scegli il livello di efficacia", "Scarico i motori scelti",
                     "Permesso Microfono", "Permesso Accessibilità", "Tutto pronto"):
            self.program.press("Continua")
            self.program.wait(page)
        self.program.wait(TAKEN, "label")
        self.program.press(CHOOSE)
        self.program.wait("Impostazioni Parlivo")
        self.program.wait("Scorciatoia")

    def test_the_notification_leads_to_the_choice_and_goes_with_its_reason(self):
        service = NotificationService()
        self.addCleanup(service.end)
        self.hold(PRESETS[0])
        self.start_with_chosen_key()
        wait_for("the notification", lambda: service.calls)
        _, _, _, body, actions = service.calls[0]
        self.assertEqual(body, TAKEN)
        self.assertEqual(actions[1::2], [CHOOSE])
        service.choose(1, actions[0])
        self.program.wait("Impostazioni Parlivo")
        self.let_go()
        wait_for("the notification to be taken back", lambda: service.closed == [1])

    def body_for_a_key_named_like_markup(self, *capabilities):
        subprocess.run(["setxkbmap", "fr"], check=True)
        self.addCleanup(subprocess.run, ["setxkbmap", "us"], check=True)
        service = NotificationService(capabilities)
        self.addCleanup(service.end)
        self.hold(("ampersand", CONTROL | ALT))
        store({"onboardingDone": True, "hotkeyPreset": "own", "hotkeyCode": 18, "hotkeyModifiers": 0x1800})
        provide_models(BEST)
        self.start()
        wait_for("the notification", lambda: service.calls)
        return service.calls[0][3]

    def test_a_service_that_takes_markup_gets_text_all_the_same(self):
        self.assertTrue(self.body_for_a_key_named_like_markup("actions", "body", "body-markup")
                        .startswith("Ctrl+Alt+&amp; è già usata"))

    def test_a_service_without_markup_gets_the_letters(self):
        self.assertTrue(self.body_for_a_key_named_like_markup("actions", "body").startswith("Ctrl+Alt+& è già usata"))


if __name__ == "__main__":
    windows.main()
