#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The first run, from the first page to the first dictation.

usage: onboarding_test.py TRIAL_PROGRAM [CASE...]

Needs a desktop of its own with sound (tests/support/desktop) in a world of its own (tests/support/isolated).
"""
import json
import os
import pathlib
import shutil
import subprocess
import tempfile

import windows
from strict_display import StrictDisplay
from windows import MODELS, WindowsTest, key, models_folder, provide_models, settings, store, wait_for

BEST = "ggml-large-v3-turbo-q8_0.bin"
FULL = "gemma-3-4b-it-Q4_K_M.gguf"

WELCOME = ("Parlivo", "Just talk. It types.",
           "Tieni premuto Alt+Spazio, parla, rilascia:\nil testo appare dove stai scrivendo.\n"
           "Tutto in locale — la tua voce non lascia mai questo computer.")
FOLDER = ("Dove salvo i modelli AI?",
          "I motori di trascrizione e pulizia (da 0.6 a 3.3 GB in base alle tue scelte) vengono scaricati una volta "
          "sola in questa cartella.")
FOLDER_NOTE = "La posizione predefinita va benissimo per la maggior parte delle persone."
QUALITY = ("Scegli il livello di efficacia",
           "TRASCRIZIONE (obbligatoria)",
           "Veloce", "Whisper turbo q5 · 574 MB · ottimo, più leggero",
           "Precisa", "Whisper turbo q8 · 834 MB · massima accuratezza (consigliata)",
           "PULIZIA AI (consigliata)",
           "Nessuna", "Solo Whisper · 0 MB · punteggiatura base, nessun download",
           "Leggera", "Qwen 2.5 1.5B · 1.1 GB · filler e punteggiatura, veloce",
           "Completa", "Gemma 3 4B · 2.5 GB · qualità massima (consigliata)")
DOWNLOAD = "Scarico i motori scelti"
DOWNLOADED = (DOWNLOAD, "Tutto scaricato e verificato")
MICROPHONE = ("Permesso Microfono",
              "Serve per registrare la tua voce mentre detti.\n"
              "L'audio viene trascritto su questo computer e subito cancellato.")
ACCESSIBILITY = ("Permesso Accessibilità",
                 "Serve per digitare il testo al posto tuo nell'app attiva.\n"
                 "Senza questo permesso Parlivo non può scrivere.\n\n"
                 "Si apre una guida: spiega come ottenerlo in questa sessione.")
READY = ("Tutto pronto",
         "Apri una qualsiasi app dove si scrive,\ntieni premuto Alt+Spazio e detta la tua prima frase.\n\n"
         "Mi trovi nel pannello 🎙️ — lì ci sono Impostazioni e feedback.\n"
         "Puoi cambiare livello di efficacia quando vuoi dalle Impostazioni.")
GRANTED = "Permesso concesso"
UNHEARD = "Il microfono non è accessibile: il servizio audio non risponde o lo nega"


class FirstRunTest(WindowsTest):
    def go_on(self):
        self.program.press("Continua")

    def go_to_quality(self):
        self.program.wait_for_words(*WELCOME)
        self.go_on()
        self.program.wait(FOLDER_NOTE)
        self.go_on()
        self.program.wait_for_words(*QUALITY)

    def go_to_the_last_page(self):
        self.go_to_download()
        self.program.wait_for_words(*DOWNLOADED)
        for page in (MICROPHONE, ACCESSIBILITY):
            self.go_on()
            self.program.wait_for_words(*page, GRANTED)
        self.go_on()

    def go_to_download(self):
        self.go_to_quality()
        self.go_on()
        self.program.wait(DOWNLOAD)


class PagesTest(FirstRunTest):
    def test_every_page_says_what_it_is_to_say(self):
        provide_models(BEST, FULL)
        self.start()
        self.program.wait_for_words(*WELCOME)
        self.program.wait("Passo 1 di 7")
        self.go_on()
        self.program.wait_for_words(*FOLDER, str(models_folder()), FOLDER_NOTE)
        self.assertNotIn("modelsDir", settings())
        self.go_on()
        self.program.wait_for_words(*QUALITY)
        self.wait_for_setting("modelsDir", str(models_folder()))
        self.go_on()
        self.program.wait_for_words(*DOWNLOADED)
        self.go_on()
        self.program.wait_for_words(*MICROPHONE, GRANTED)
        self.program.press("Salta")
        self.program.wait_for_words(*ACCESSIBILITY, GRANTED)
        self.program.wait("Salta")
        self.go_on()
        self.program.wait_for_words(*READY)
        self.assertIsNone(self.program.find("Salta"))
        self.program.wait("Passo 7 di 7")
        self.assertNotIn("onboardingDone", settings())
        self.program.press("Inizia a dettare")
        self.wait_for_setting("onboardingDone", True)
        self.program.wait_until_gone("Tutto pronto")
        self.assertEqual([path for path in self.web.gets if path.startswith("/modelli/")], [])

    def test_the_choices_are_stored_on_leaving_their_page(self):
        store({"asrTier": "fast", "cleanupTier": "light"})
        self.start()
        self.go_to_quality()
        self.assertTrue(self.program.is_checked("Veloce"))
        self.assertTrue(self.program.is_checked("Completa"), "proposed whatever is stored")
        self.program.press("Precisa")
        self.program.press("Nessuna")
        self.program.explained("the choice to be seen", lambda: self.program.is_checked("Nessuna"))
        self.assertEqual((settings()["asrTier"], settings()["cleanupTier"]), ("fast", "light"))
        self.go_on()
        self.wait_for_setting("asrTier", "best")
        self.wait_for_setting("cleanupTier", "none")

    def test_an_unfinished_first_run_begins_again(self):
        self.start()
        self.go_to_quality()
        self.program.end()
        self.start()
        self.program.wait_for_words(*WELCOME)

    def test_another_folder(self):
        chosen = pathlib.Path(os.environ["HOME"], "modelli miei")
        chosen.mkdir(exist_ok=True)
        self.start()
        self.program.wait_for_words(*WELCOME)
        self.go_on()
        self.program.press("Cambia…")
        self.program.wait("Annulla", "push button")
        self.program.press("Annulla")
        self.program.wait_until_gone("Usa questa cartella")
        self.program.wait(str(models_folder()))
        self.program.press("Cambia…")
        self.program.wait("Usa questa cartella", "push button")
        self.program.wait("Cartella:", "text").set_text_contents(str(chosen))
        self.program.press("Usa questa cartella", "push button")
        self.program.wait_for_words(*FOLDER, str(chosen), FOLDER_NOTE)
        self.go_on()
        self.wait_for_setting("modelsDir", str(chosen))


class DownloadTest(FirstRunTest):
    def test_one_after_the_other(self):
        self.web.hold(BEST, 0.5)
        self.web.hold(FULL, 0.25)
        self.start()
        self.go_to_download()
        for words in (DOWNLOAD, f"1 di 2: Precisa — {BEST}", "50%  ·  3 / 6 MB"):
            self.program.wait(words)
        self.assertFalse(self.program.is_enabled("Continua"))
        bar = self.program.wait("Avanzamento del download", "progress bar")
        self.assertAlmostEqual(bar.get_current_value() / bar.get_maximum_value(), 0.5, places=2)
        self.assertEqual(self.web.asked_for(FULL), 0)
        self.web.let_go(BEST)
        for words in (DOWNLOAD, f"2 di 2: Completa — {FULL}", "25%  ·  0 / 1 MB"):
            self.program.wait(words)
        self.assertEqual((models_folder() / BEST).read_bytes(), MODELS[BEST])
        self.web.let_go(FULL)
        self.program.wait_for_words(*DOWNLOADED)
        self.assertTrue(self.program.is_enabled("Continua"))
        self.assertEqual((models_folder() / FULL).read_bytes(), MODELS[FULL])
        self.assertEqual(sorted(os.listdir(models_folder())), sorted([BEST, FULL]))

    def test_after_an_error_the_rest_is_tried_again(self):
        self.web.broken.add(FULL)
        self.start()
        self.go_to_download()
        self.program.wait_for_words(DOWNLOAD, "Download incompleto (0MB su 1MB)")
        self.assertFalse(self.program.is_enabled("Continua"))
        self.program.press("Riprova")
        wait_for("the second request", lambda: self.web.asked_for(FULL) == 2)
        self.program.wait_for_words(DOWNLOAD, "Download incompleto (0MB su 1MB)")
        self.web.broken.clear()
        self.web.hold(FULL, 0.5)
        self.program.press("Riprova")
        for words in (DOWNLOAD, f"1 di 1: Completa — {FULL}", "50%  ·  0 / 1 MB"):
            self.program.wait(words)
        self.web.let_go(FULL)
        self.program.wait_for_words(*DOWNLOADED)
        self.assertEqual(self.web.asked_for(BEST), 1)

    def test_a_stalled_connection_is_told(self):
        self.web.hold(BEST, 0.5)
        self.start()
        self.go_to_download()
        self.program.wait("La connessione è ferma: non arriva nulla da più di 10 secondi")
        self.web.let_go(BEST)
        self.program.wait_for_words(*DOWNLOADED)

    def test_a_failed_download_can_wait(self):
        self.web.broken.add(BEST)
        self.start()
        self.go_to_download()
        self.program.press("Più tardi")
        self.program.wait_until_gone(DOWNLOAD)
        self.assertNotIn("onboardingDone", settings())
        self.web.broken.clear()
        windows.command()  # as a second start
        self.program.wait(DOWNLOAD)
        self.program.press("Riprova")
        self.program.wait_for_words(*DOWNLOADED)

    def test_killed_in_mid_download(self):
        self.web.hold(BEST, 0.99)
        self.start()
        self.go_to_download()
        self.program.wait("99%  ·  6 / 6 MB")
        self.program.kill()
        left = os.listdir(models_folder())
        self.assertEqual(len(left), 1)
        self.assertNotEqual(left, [BEST])
        self.start()
        self.program.wait_for_words(*WELCOME)
        wait_for("the left-over to go", lambda: os.listdir(models_folder()) == [])

    def test_ended_in_mid_download(self):
        self.web.hold(BEST, 0.5)
        self.start()
        self.go_to_download()
        self.program.wait("50%  ·  3 / 6 MB")
        self.program.end()
        self.assertEqual(os.listdir(models_folder()), [])


class PermissionTest(FirstRunTest):
    """Permissions that are not there at first. What would be opened for them is only noted."""

    def setUp(self):
        super().setUp()
        provide_models(BEST, FULL)
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        opener = self.folder / "xdg-open"
        opener.write_text(f'#!/bin/sh\necho "$1" > "{self.folder}/opened"\n')
        opener.chmod(0o755)

    def start_and_go_to(self, page, **environment):
        self.start(PATH=f"{self.folder}:{os.environ['PATH']}", **environment)
        self.go_to_download()
        for title in (DOWNLOAD, MICROPHONE[0], ACCESSIBILITY[0]):
            self.program.wait(title)
            if title == page:
                return
            self.go_on()

    def test_the_microphone_is_asked_for(self):
        sound = self.folder / "sound"
        self.start_and_go_to(MICROPHONE[0], PULSE_SERVER=f"unix:{sound}")
        self.program.press("Consenti microfono")
        self.program.wait_for_words(*MICROPHONE, UNHEARD)
        self.program.wait("Impostazioni audio", "push button")
        sound.symlink_to(pathlib.Path(os.environ["XDG_RUNTIME_DIR"], "pulse", "native"))
        self.program.press("Consenti microfono")
        self.program.wait_for_words(*MICROPHONE, GRANTED)
        self.assertIsNone(self.program.find("Consenti microfono"))
        self.program.wait("Livello del microfono", "progress bar")

    def test_the_accessibility_page_turns_by_itself(self):
        display = StrictDisplay()
        self.addCleanup(display.end)
        self.start_and_go_to(ACCESSIBILITY[0], DISPLAY=display.name)
        self.program.press("Apri la guida")
        opened = self.folder / "opened"
        wait_for("the help page", lambda: opened.exists() and opened.read_text())
        self.assertRegex(opened.read_text(), r"^file:///.*/help/accessibilita\.html$")
        self.program.wait_for_words(*ACCESSIBILITY)
        display.allow_typing()
        self.program.wait_for_words(*ACCESSIBILITY, GRANTED)
        self.assertIsNone(self.program.find("Apri la guida"))


class KeyboardTest(FirstRunTest):
    def test_return_goes_on_and_escape_asks(self):
        provide_models(BEST, FULL)
        self.start()
        self.program.wait_for_words(*WELCOME)
        self.program.explained("the focus", lambda: self.program.has_focus("Continua"))
        key("Escape")
        self.program.explained("the focus", lambda: self.program.has_focus("Continua ora"))
        key("Return")
        self.program.wait_until_gone("Continua ora")
        for page in (FOLDER[0], QUALITY[0], DOWNLOAD, MICROPHONE[0], ACCESSIBILITY[0], READY[0]):
            self.program.explained("the focus", lambda: self.program.has_focus("Continua"))
            key("Return")
            self.program.wait(page)
        self.program.explained("the focus", lambda: self.program.focused() == ("text", "Prova qui"))
        key("Return")
        self.wait_for_setting("onboardingDone", True)

    def test_tab_comes_to_everything(self):
        self.start()
        self.program.wait_for_words(*WELCOME)
        self.program.explained("the focus", lambda: self.program.has_focus("Continua"))
        self.assertEqual(self.program.reachable_by_tab(), ["Continua"])
        key("Return")
        self.program.wait(FOLDER_NOTE)
        self.assertEqual(self.program.reachable_by_tab(), ["Continua", "Cambia…"])
        self.go_on()
        self.program.wait_for_words(*QUALITY)
        # Of a group of choices Tab comes to the chosen one, the arrows to the others.
        self.assertEqual(self.program.reachable_by_tab(), ["Continua", "Precisa", "Completa"])

    def test_the_arrows_choose(self):
        self.start()
        self.go_to_quality()
        self.program.wait("Precisa", "radio button").grab_focus()
        self.program.explained("the focus", lambda: self.program.has_focus("Precisa"))
        key("Up")
        self.program.explained("the choice", lambda: self.program.is_checked("Veloce"))
        self.assertTrue(self.program.is_checked("Completa"), "the other group is one by itself")
        self.assertIsNone(settings().get("asrTier"))


class FirstDictationTest(FirstRunTest):
    """The first run with nothing but the voice and the size of the models replaced."""

    def open_terminal(self, written):
        terminal = subprocess.Popen(["xterm", "-T", "Lettera", "-e", "sh", "-c", f"stty raw -echo; cat > '{written}'"])
        self.addCleanup(terminal.wait)
        self.addCleanup(terminal.terminate)
        wait_for("the terminal", written.exists)
        wait_for("the terminal to have the keyboard", lambda: "Lettera" in subprocess.run(
            ["xdotool", "getactivewindow", "getwindowname"], capture_output=True, text=True, check=False).stdout)

    def test_the_first_sentence_lands_on_the_last_page(self):
        phrase = next(p for p in json.loads((windows.DEMO / "phrases.json").read_text())
                      if p["lang"] == "it" and len(p["raw"]) > 50)
        self.start()
        self.go_to_the_last_page()
        self.program.explained("the focus in the field", lambda: self.program.focused() == ("text", "Prova qui"))
        subprocess.run(["xdotool", "keydown", "Alt_L", "keydown", "space"], check=True)
        wait_for("the recording", lambda: windows.state() == "recording")
        windows.speak(phrase["spoken"])
        subprocess.run(["xdotool", "keyup", "space", "keyup", "Alt_L"], check=True)
        field = self.program.wait("Prova qui", "text")
        self.program.explained("the sentence", lambda: windows.Atspi.Text.get_text(field, 0, -1)
                               == phrase["clean"]["medium"])

    def test_from_the_first_page_to_the_first_sentence(self):
        phrase = next(p for p in json.loads((windows.DEMO / "phrases.json").read_text())
                      if p["lang"] == "it" and len(p["raw"]) > 50 and p["clean"]["medium"] != p["raw"])
        self.start()
        self.go_to_the_last_page()
        self.program.press("Inizia a dettare")
        self.program.wait_until_gone("Tutto pronto")
        written = pathlib.Path(os.environ["TMPDIR"], "written")
        self.open_terminal(written)
        subprocess.run(["xdotool", "keydown", "Alt_L", "keydown", "space"], check=True)
        wait_for("the recording", lambda: windows.state() == "recording")
        windows.speak(phrase["spoken"])
        subprocess.run(["xdotool", "keyup", "space", "keyup", "Alt_L"], check=True)
        wait_for(f"“{phrase['clean']['medium']}”, not “{written.read_text()}”",
                 lambda: written.read_text() == phrase["clean"]["medium"])
        self.wait_for_setting("dictationCount", 1)


if __name__ == "__main__":
    windows.main()
