#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The underlined letters: Alt with each of them goes to its control.

usage: letters_test.py TRIAL_PROGRAM [CASE...]

Needs a desktop of its own with sound (tests/support/desktop) in a world of its own (tests/support/isolated).
"""
import os
import pathlib
import re
import subprocess
import xml.etree.ElementTree

import windows
from held_keys import PRESETS, HeldKeys
from strict_display import StrictDisplay
from windows import Atspi, WindowsTest, data_folder, has, key, provide_models, settings, store, wait_for

BEST = "ggml-large-v3-turbo-q8_0.bin"
FULL = "gemma-3-4b-it-Q4_K_M.gguf"
FEEDBACK = "Il tuo parere su Parlivo"
CATALOGUE = pathlib.Path(__file__).resolve().parents[3] / "translations" / "parlivo_linux.ts"


def marked(*views):
    """The letters that these views' texts have in the catalogue."""
    found = []
    for context in xml.etree.ElementTree.parse(CATALOGUE).iter("context"):
        if context.find("name").text.removeprefix("parlivo::") in views:
            for translation in context.iter("translation"):
                found += re.findall(r"&(\w)", translation.text)
    return sorted(letter.lower() for letter in found)


class LettersTest(WindowsTest):
    title = "Parlivo"  # of the window

    def setUp(self):
        super().setUp()
        # What opens files or settings for the user notes only which.
        self.folder = pathlib.Path(os.environ["TMPDIR"], "bin")
        self.folder.mkdir(exist_ok=True)
        for name in ("pavucontrol", "xdg-open"):
            (self.folder / name).write_text('#!/bin/sh\necho "$0 $1" >>"$TMPDIR/opened"\n')
            (self.folder / name).chmod(0o755)
        self.path = f"{self.folder}:/usr/bin:/bin"
        self.pressed = []

    def wait_for_keyboard(self, title):
        """What a control says of its focus does not tell: it can be true before its window has the keyboard, and after."""
        def has_keyboard():
            run = subprocess.run(["xdotool", "getwindowfocus", "getwindowname"], capture_output=True, text=True,
                                 check=False)
            return run.stdout.strip() == title
        self.program.explained(f"the window “{title}” to have the keyboard", has_keyboard)

    def alt(self, letter, title=None):
        self.wait_for_keyboard(title or self.title)
        self.pressed.append(letter)
        key(f"alt+{letter}")

    def wait_for_opened(self, ending):
        opened = pathlib.Path(os.environ["TMPDIR"], "opened")
        wait_for(f"{ending} to be opened", lambda: opened.exists() and ending in opened.read_text())

    def assert_announced(self, name, letter):
        """The screen reader is told the letter."""
        self.assertEqual(self.program.wait(name, "push button").get_key_binding(0), f"Alt+{letter.upper()}")
        self.pressed.append(letter)


class SettingsLettersTest(LettersTest):
    title = "Impostazioni Parlivo"

    def setUp(self):
        super().setUp()
        store({"onboardingDone": True})
        provide_models(BEST, FULL)
        self.start("--settings", PATH=self.path)
        self.program.wait(self.title)

    def open_tab(self, letter, name):
        self.alt(letter)
        self.program.wait(name, "page tab list")
        self.pressed.remove(letter)

    def toggle(self, letter, words):
        before = self.program.is_checked(words)
        self.alt(letter)
        self.program.explained(f"“{words}” to change", lambda: self.program.is_checked(words) != before)

    def reach(self, letter, found):
        self.alt(letter)
        self.program.explained(f"the focus by Alt+{letter}", lambda: has(found(), Atspi.StateType.FOCUSED))

    def test_every_tab(self):
        for letter, name in (("d", "Dettatura"), ("p", "Pulizia AI"), ("z", "Dizionario"), ("g", "Generale")):
            self.alt(letter)
            self.program.wait(name, "page tab list")
        self.assertEqual(sorted(self.pressed), marked("SettingsView"))

    def test_general(self):
        for letter, words in (("l", "Avvia Parlivo al login"), ("s", "Suoni di inizio/fine registrazione"),
                              ("w", "Mostra il riquadro con la waveform"), ("n", "Notifiche degli errori"),
                              ("b", "Modalità debug (salva le trascrizioni nel log)")):
            self.toggle(letter, words)
        self.alt("c")
        self.program.press("Annulla", "push button")
        self.program.wait_until_gone("Usa questa cartella")
        self.alt("m")
        self.wait_for_opened("help/manuale.html")
        self.alt("f")
        self.program.wait(FEEDBACK)
        self.wait_for_keyboard(FEEDBACK)
        key("alt+a")
        self.program.wait_until_gone(FEEDBACK)
        self.alt("e")
        self.assertEqual(self.program.process.wait(timeout=windows.TIMEOUT), 0)
        self.assertEqual(sorted(self.pressed), marked("GeneralTab"))

    def test_dictation(self):
        self.open_tab("d", "Dettatura")
        self.reach("l", lambda: self.program.picker("Lingua"))
        self.reach("m", lambda: self.program.picker("Microfono"))
        self.program.press("Veloce")
        self.alt("c")
        self.program.wait_until_gone("Scarica")
        wait_for("the file", lambda: "ggml-large-v3-turbo-q5_0.bin" in os.listdir(windows.models_folder()))
        self.reach("s", lambda: self.program.picker("Scorciatoia"))
        key("End")
        self.program.wait("Scegli la combinazione…", "push button")
        self.alt("o")
        self.program.wait("Premi ora la combinazione (Esc annulla)", "push button")
        self.assertEqual(sorted(self.pressed),
                         marked("DictationTab", "MicrophonePicker", "KeyCaptureButton", "TierPicker"))

    def test_cleanup(self):
        self.open_tab("p", "Pulizia AI")
        self.reach("m", lambda: self.program.picker("Modello Ollama"))
        self.reach("s", lambda: self.program.wait("Pulisci solo testi oltre", "spin button"))
        self.toggle("u", "Usa prompt personalizzato")
        self.program.wait("Apri prompt.txt…")
        self.alt("a")
        self.wait_for_opened("prompt.txt")
        self.assertTrue((data_folder() / "prompt.txt").exists())
        self.assertEqual(sorted(self.pressed), marked("CleanupTab"))


class FirstRunLettersTest(LettersTest):
    def test_every_page(self):
        provide_models(FULL)
        self.web.broken.add(BEST)
        self.start(PATH=self.path, PULSE_SERVER=f"unix:{self.folder}/no-sound", XDG_CURRENT_DESKTOP="Test")
        self.program.wait("Just talk. It types.")
        self.alt("c")
        self.program.wait("Dove salvo i modelli AI?")
        self.alt("b")
        self.program.press("Annulla", "push button")
        self.program.wait_until_gone("Usa questa cartella")
        self.alt("c")
        self.program.wait("Scegli il livello di efficacia")
        self.alt("c")
        self.program.wait("Riprova")
        self.put_off_and_try_again()
        self.alt("c")
        self.program.wait("Permesso Microfono")
        self.alt("m")
        self.program.wait("Impostazioni audio")
        self.alt("a")
        self.wait_for_opened("pavucontrol")
        self.alt("s")
        self.program.wait("Permesso Accessibilità")
        self.alt("c")
        self.program.wait("Tutto pronto")
        self.alt("i")
        self.wait_for_setting("onboardingDone", True)
        # The two that are left have their own case.
        self.assertEqual(sorted({*self.pressed, "g", "l"}),
                         marked("OnboardingView", "FolderPage", "DownloadPage", "MicrophoneMeter", "ReadyPage"))

    def put_off_and_try_again(self):
        self.alt("r")
        wait_for("the second request", lambda: self.web.asked_for(BEST) == 2)
        self.program.wait("Riprova")
        self.alt("t")
        self.program.wait_until_gone("Scarico i motori scelti")
        self.web.broken.clear()
        windows.command()  # as a second start
        self.program.wait("Scarico i motori scelti")
        self.alt("r")
        self.program.wait("Tutto scaricato e verificato")

    def go_on_to(self, last):
        for title in ("Just talk. It types.", "Dove salvo i modelli AI?", "Scegli il livello di efficacia",
                      "Scarico i motori scelti", "Permesso Microfono", "Permesso Accessibilità", "Tutto pronto"):
            self.program.wait(title)
            if title == last:
                return
            self.program.press("Continua")

    def test_where_nobody_may_type(self):
        provide_models(BEST, FULL)
        display = StrictDisplay()
        self.addCleanup(display.end)
        self.start(DISPLAY=display.name)
        self.go_on_to("Permesso Accessibilità")
        self.assert_announced("Apri la guida", "g")

    def test_where_every_key_is_taken(self):
        provide_models(BEST, FULL)
        held = HeldKeys(PRESETS)
        self.addCleanup(held.let_go)
        self.start()
        self.go_on_to("Tutto pronto")
        self.assert_announced("Scegli la scorciatoia…", "l")
        self.alt("l")
        self.program.wait("Impostazioni Parlivo")
        self.assertNotIn("onboardingDone", settings())


if __name__ == "__main__":
    windows.main()
