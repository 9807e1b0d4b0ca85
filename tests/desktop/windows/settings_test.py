#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The settings window: every control, what it stores and what it sets in motion.

usage: settings_test.py TRIAL_PROGRAM [CASE...]

Needs a desktop of its own with sound (tests/support/desktop) in a world of its own (tests/support/isolated).
"""
import os
import pathlib
import shutil
import subprocess

import windows
from windows import (MODELS, Web, WindowsTest, data_folder, key, models_folder, processes_named, provide_models,
                     settings, store, wait_for)

FAST = "ggml-large-v3-turbo-q5_0.bin"
BEST = "ggml-large-v3-turbo-q8_0.bin"
LIGHT = "qwen2.5-1.5b-instruct-q4_k_m.gguf"
FULL = "gemma-3-4b-it-Q4_K_M.gguf"


class SettingsTest(WindowsTest):
    # What is stored at the start of every case, beside the end of the first run.
    stored = {}

    def setUp(self):
        super().setUp()
        store({"onboardingDone": True, **self.stored})
        provide_models(BEST, FULL)
        self.start("--settings")
        self.program.wait("Impostazioni Parlivo")

    def tab(self, name):
        def open_it():
            tab = self.program.find(name, "page tab")
            if tab is None:
                return False
            tab.do_action(0)
            # The list of tabs bears the name of the one that is open.
            return self.program.find(name, "page tab list")
        self.program.explained(f"the tab {name}", open_it)

    def choose(self, words, name, value):
        self.program.press(words)
        self.wait_for_setting(name, value)

    def pick(self, label, option, name, value):
        """Chooses from a pop-up list, with the keyboard."""
        picker = self.program.picker(label)
        # A pop-up list does not let a screen reader give it the focus.
        while not windows.has(picker, windows.Atspi.StateType.FOCUSED):
            before = self.program.focused()
            key("Tab")
            self.program.explained("the focus to go on", lambda before=before: self.program.focused() != before)
        options = windows.options(picker)
        key("Home")
        self.program.explained("the first option", lambda: self.program.picker(label).get_name() == options[0])
        key(*["Down"] * options.index(option))
        self.wait_for_setting(name, value)

    def wait_for_engine(self, name):
        return wait_for(f"{name} to run", lambda: processes_named(name))

    def wait_until_stopped(self, name, processes):
        wait_for(f"{name} to stop", lambda: not set(processes) & set(processes_named(name)))


class GeneralTabTest(SettingsTest):
    def setUp(self):
        # What opens files for the user notes only which.
        folder = pathlib.Path(os.environ["TMPDIR"], "bin")
        folder.mkdir(exist_ok=True)
        command = folder / "xdg-open"
        command.write_text('#!/bin/sh\necho "$1" >"$TMPDIR/opened"\n')
        command.chmod(0o755)
        before = os.environ["PATH"]
        os.environ["PATH"] = f"{folder}:{before}"
        self.addCleanup(os.environ.__setitem__, "PATH", before)
        super().setUp()

    def test_what_is_stored(self):
        self.assertTrue(self.program.is_checked("Suoni di inizio/fine registrazione"))
        self.choose("Suoni di inizio/fine registrazione", "soundsEnabled", False)
        self.choose("Mostra il riquadro con la waveform", "overlayEnabled", False)
        self.assertTrue(self.program.is_checked("Notifiche degli errori"))
        self.choose("Notifiche degli errori", "notificationsEnabled", False)
        self.assertTrue(self.program.is_checked("Veloce (~285 caratteri/s)"))
        self.choose("Istantanea (incolla tutto insieme)", "typingSpeed", "instant")
        self.choose("Naturale (~85 caratteri/s)", "typingSpeed", "natural")
        self.choose("Veloce (~285 caratteri/s)", "typingSpeed", "fast")
        self.choose("Modalità debug (salva le trascrizioni nel log)", "debugMode", True)
        self.choose("Modalità debug (salva le trascrizioni nel log)", "debugMode", False)
        self.program.wait("Con Istantanea il testo appare di colpo via clipboard; le altre modalità digitano lettera "
                          "per lettera.")
        self.program.wait("Di norma il log non contiene mai i tuoi testi. Attivala solo per diagnosticare problemi.")

    def test_launch_at_login(self):
        entry = pathlib.Path(os.environ["XDG_CONFIG_HOME"], "autostart", "it.parlivo.Parlivo.desktop")
        self.program.press("Avvia Parlivo al login")
        wait_for("the autostart entry", entry.exists)
        self.assertIn(f'Exec="{os.path.realpath(windows.PROGRAM)}"', entry.read_text())
        self.program.press("Avvia Parlivo al login")
        wait_for("the autostart entry to go", lambda: not entry.exists())

    def test_launch_at_login_that_cannot_be_had(self):
        folder = pathlib.Path(os.environ["XDG_CONFIG_HOME"], "autostart")
        shutil.rmtree(folder, ignore_errors=True)
        folder.write_text("in the way")
        self.addCleanup(folder.unlink)
        self.program.press("Avvia Parlivo al login")
        log = pathlib.Path(os.environ["XDG_STATE_HOME"], "Parlivo", "Parlivo.log")
        wait_for("the complaint", lambda: "launch-at-login errore: " in log.read_text())
        self.program.explained("the old state", lambda: not self.program.is_checked("Avvia Parlivo al login"))

    def test_the_models_move_with_their_folder(self):
        chosen = pathlib.Path(os.environ["HOME"], "altrove")
        chosen.mkdir()
        (models_folder() / "note.txt").write_text("mine")
        before = self.wait_for_engine("whisper-server")
        self.program.wait(str(models_folder()))
        self.program.press("Cambia…")
        self.program.wait("Cartella:", "text").set_text_contents(str(chosen))
        self.program.press("Usa questa cartella", "push button")
        self.wait_for_setting("modelsDir", str(chosen))
        self.program.wait(str(chosen))
        self.assertEqual(sorted(os.listdir(chosen)), sorted([BEST, FULL]))
        self.assertEqual((chosen / BEST).read_bytes(), MODELS[BEST])
        wait_for("the old ones to go", lambda: os.listdir(models_folder()) == ["note.txt"])
        self.wait_until_stopped("whisper-server", before)

    def test_a_cancelled_chooser_changes_nothing(self):
        self.program.press("Cambia…")
        self.program.press("Annulla", "push button")
        self.program.wait_until_gone("Usa questa cartella")
        self.program.wait(str(models_folder()))
        self.assertNotIn("modelsDir", settings())

    def test_the_manual_opens(self):
        opened = pathlib.Path(os.environ["TMPDIR"], "opened")
        command = pathlib.Path(os.environ["TMPDIR"], "bin", "xdg-open")
        self.assertTrue(command.exists(), "put there before the program's start")
        self.program.press("Apri il manuale")
        wait_for("the manual", lambda: opened.exists() and opened.read_text().endswith("help/manuale.html\n"))

    def test_the_program_ends(self):
        self.program.press("Esci da Parlivo")
        self.assertEqual(self.program.process.wait(timeout=windows.TIMEOUT), 0)

    def test_feedback_opens(self):
        self.program.press("Invia feedback…")
        self.program.wait("Il tuo parere su Parlivo")


class KilledMoveTest(WindowsTest):
    """The program is killed while it moves the models, and started again."""

    def kill_while_moving(self, chosen, step):
        store({"onboardingDone": True})
        provide_models(BEST, FULL)
        (models_folder() / "note.txt").write_text("mine")
        chosen.mkdir()
        self.addCleanup(shutil.rmtree, chosen)
        build = pathlib.Path(windows.PROGRAM).parents[4]
        self.start("--settings", **windows.halting_at(build, step))
        self.program.press("Cambia…")
        self.program.wait("Cartella:", "text").set_text_contents(str(chosen))
        self.program.press("Usa questa cartella", "push button")
        wait_for("the step", lambda: windows.halted("Parlivo") == [self.program.process.pid])
        self.program.kill()
        wait_for("its engines to die with it", lambda: not processes_named("whisper-server"))

    def assert_next_start_has(self, folder):
        self.start()
        wait_for("the recogniser", lambda: processes_named("whisper-server"))
        arguments = pathlib.Path(f"/proc/{processes_named('whisper-server')[0]}/cmdline").read_bytes().decode()
        self.assertIn(f"\0{folder / BEST}\0", arguments)
        self.assertIsNone(self.program.find("Scarica"))
        for name in (BEST, FULL):
            self.assertEqual((folder / name).read_bytes(), MODELS[name])
        self.assertEqual(sorted(os.listdir(data_folder())), ["models"])

    def test_while_the_last_copy_has_two_names(self):
        chosen = pathlib.Path("/dev/shm/altrove")
        self.kill_while_moving(chosen, f"Parlivo:unlink:{BEST}.parlivo-move")
        self.assertEqual(sorted(os.listdir(chosen)), sorted([BEST, f"{BEST}.parlivo-move", FULL]))
        self.assertNotIn("modelsDir", settings())
        self.assert_next_start_has(models_folder())
        self.assertEqual(os.listdir(chosen), [])

    def test_before_the_old_ones_go(self):
        chosen = pathlib.Path(os.environ["HOME"], "un altro posto")
        self.kill_while_moving(chosen, f"Parlivo:unlink:/models/{FULL}")
        self.assertEqual(settings()["modelsDir"], str(chosen))
        self.assertEqual(sorted(os.listdir(models_folder())), sorted([BEST, FULL, "note.txt"]))
        self.assert_next_start_has(chosen)
        self.assertEqual(os.listdir(models_folder()), ["note.txt"])


class DictationTabTest(SettingsTest):
    def setUp(self):
        super().setUp()
        self.tab("Dettatura")

    def test_what_is_stored(self):
        self.choose("Premi per iniziare, ripremi per fermare", "dictationMode", "toggle")
        self.choose("Tieni premuto per parlare (push-to-talk)", "dictationMode", "ptt")
        self.pick("Lingua", "Rilevamento automatico", "language", "auto")
        self.pick("Lingua", "English", "language", "en")
        self.program.wait("La lingua fissa è più accurata del rilevamento automatico sulle frasi brevi.")

    def test_the_microphone_can_be_named(self):
        self.program.explained("the microphones", lambda: windows.options(self.program.picker("Microfono"))[1:])
        offered = windows.options(self.program.picker("Microfono"))
        self.assertEqual(offered[0], "Quello scelto dal sistema")
        self.assertEqual(len(offered), 2, "the sink's monitor is no microphone")
        self.pick("Microfono", offered[1], "microphone", "microfono")
        self.pick("Microfono", offered[0], "microphone", "")

    def test_the_list_of_microphones_opens_none(self):
        """Desktops show a sign while one is in use. The virtual microphone is a stream of the server's own."""
        self.program.explained("the microphones", lambda: windows.options(self.program.picker("Microfono"))[1:])
        streams = subprocess.run(["pactl", "list", "short", "source-outputs"],
                                 check=True, capture_output=True, text=True)
        self.assertNotIn("protocol-native", streams.stdout)

    def test_another_hot_key_counts_at_once(self):
        self.pick("Scorciatoia", "Ctrl+Alt+Spazio", "hotkeyPreset", "ctrl-opt-space")
        self.choose("Premi per iniziare, ripremi per fermare", "dictationMode", "toggle")
        key("ctrl+alt+space")
        wait_for("the recording", lambda: windows.state() == "recording")
        key("ctrl+alt+space")
        wait_for("the end of the recording", lambda: windows.state() != "recording")

    def choose_own_key(self):
        picker = self.program.picker("Scorciatoia")
        while not windows.has(picker, windows.Atspi.StateType.FOCUSED):
            before = self.program.focused()
            key("Tab")
            self.program.explained("the focus to go on", lambda before=before: self.program.focused() != before)
        key("End")
        self.program.wait("Scegli la combinazione…", "push button")

    def capture(self, combination):
        self.program.press("Scegli la combinazione…", "push button")
        self.program.wait("Premi ora la combinazione (Esc annulla)", "push button")
        key(combination)

    def press_own_key(self, combination):
        self.capture(combination)
        self.program.wait("Scegli la combinazione…", "push button")

    def test_a_key_of_ones_own_counts_at_once(self):
        self.choose_own_key()
        self.assertNotIn("hotkeyPreset", settings())
        self.press_own_key("ctrl+F9")
        self.program.wait("Ctrl+F9 è libera: ora è la tua scorciatoia")
        self.wait_for_setting("hotkeyPreset", "own")
        self.assertEqual((settings()["hotkeyCode"], settings()["hotkeyModifiers"]), (101, 4096))
        self.choose("Premi per iniziare, ripremi per fermare", "dictationMode", "toggle")
        key("ctrl+F9")
        wait_for("the recording", lambda: windows.state() == "recording")
        key("ctrl+F9")
        wait_for("the end of the recording", lambda: windows.state() != "recording")

    def test_a_key_that_types_is_refused(self):
        self.choose_own_key()
        self.press_own_key("shift+a")
        self.program.wait("Maiusc+A non si può usare: serve Ctrl, Alt o Super, oppure un tasto funzione")
        self.press_own_key("Escape")
        self.assertNotIn("Maiusc+A", self.program.picture(), "the verdict on the try before")
        self.assertNotIn("hotkeyPreset", settings())

    def test_no_key_goes_without_a_verdict(self):
        """Those that the server acts on itself, that lock, that compose, that no layout prints anything on."""
        self.choose_own_key()
        subprocess.run(["setxkbmap", "de", "-option", "compose:menu"], check=True)
        unusable = "Questo tasto non si può usare come scorciatoia"
        alone = "%s non si può usare: serve Ctrl, Alt o Super, oppure un tasto funzione"
        no_key = ("Manca un tasto oltre a Ctrl, Alt, Super o Maiusc, "
                  "oppure il sistema tiene per sé la combinazione")
        withheld = "%s non si può usare: il sistema la tiene per sé"
        free = "%s è libera: ora è la tua scorciatoia"
        for pressed, verdict in (
                ("ctrl+alt+F9", withheld % "Ctrl+Alt+F9"), ("ctrl+alt+F1", withheld % "Ctrl+Alt+F1"),
                ("Caps_Lock", unusable), ("Caps_Lock", unusable), ("Num_Lock", unusable), ("Num_Lock", unusable),
                ("Scroll_Lock", unusable), ("Multi_key", alone % "Menu"), ("dead_acute", alone % "´"),
                ("KP_Begin", alone % "KP_Begin"), ("ISO_Level3_Shift+e", alone % "E"), ("Tab", alone % "Tab"),
                ("Return", alone % "Invio"), ("Print", free % "Stamp"), ("Pause", free % "Pausa"),
                ("XF86AudioPlay", free % "Riproduci/Pausa"), ("XF86Calculator", free % "Calculator"),
                ("ctrl+alt+Delete", free % "Ctrl+Alt+Canc"), ("super+F10", free % "Super+F10")):
            with self.subTest(key=pressed):
                self.press_own_key(pressed)
                self.program.wait(verdict)
        for pressed in ("Shift_L", "Super_L", "ctrl+alt", "ISO_Level3_Shift"):
            with self.subTest(key=pressed):
                self.capture(pressed)
                self.program.wait(no_key)
                key("Escape")
                self.program.wait("Scegli la combinazione…", "push button")

    def test_another_tier_stops_the_recogniser(self):
        before = self.wait_for_engine("whisper-server")
        self.choose("Veloce", "asrTier", "fast")
        self.wait_until_stopped("whisper-server", before)

    def test_a_tier_is_downloaded_in_its_place(self):
        self.web.hold(FAST, 0.5)
        self.choose("Veloce", "asrTier", "fast")
        self.program.press("Scarica")
        bar = self.program.wait("Avanzamento del download", "progress bar")
        self.program.explained("the progress", lambda: 0.49 < bar.get_current_value() / bar.get_maximum_value() < 0.51)
        self.program.press("Precisa")
        self.program.wait_until_gone("Avanzamento del download")
        self.web.let_go(FAST)
        wait_for("the file", lambda: (models_folder() / FAST).exists())
        self.assertEqual((models_folder() / FAST).read_bytes(), MODELS[FAST])
        self.program.press("Veloce")
        self.wait_for_setting("asrTier", "fast")
        self.assertIsNone(self.program.find("Scarica"))

    def test_a_download_that_fails_says_so_and_can_be_had_again(self):
        self.web.broken.add(FAST)
        self.choose("Veloce", "asrTier", "fast")
        self.program.press("Scarica")
        self.program.wait("Download incompleto (0MB su 2MB)")
        self.web.broken.clear()
        self.program.press("Scarica")
        self.program.wait_until_gone("Scarica")
        wait_for("the file", lambda: (models_folder() / FAST).exists())
        self.assertIsNone(self.program.find("Download incompleto (0MB su 2MB)"))


class CleanupTabTest(SettingsTest):
    stored = {"cleanupTier": "full", "cleanupModel": "gemma3:4b"}

    def setUp(self):
        self.ollama = Web(11434)
        self.addCleanup(self.ollama.end)
        super().setUp()
        self.tab("Pulizia AI")

    def test_what_is_stored(self):
        for words, level in (("Nessuna — testo grezzo di Whisper", "none"),
                             ("Leggera — solo punteggiatura e maiuscole", "light"),
                             ("Alta — anche grammatica e riformulazioni", "high"),
                             ("Media — anche filler rimossi (consigliata)", "medium")):
            self.choose(words, "cleanupLevel", level)
        self.program.wait("Se hai Ollama, viene usato come alternativa quando il motore integrato non è scaricato.")

    def test_the_least_length_goes_in_steps_of_ten(self):
        stepper = self.program.wait("Pulisci solo testi oltre", "spin button")
        self.assertEqual((stepper.get_minimum_value(), stepper.get_maximum_value()), (0, 300))
        self.assertEqual(stepper.get_current_value(), 50)
        stepper.grab_focus()
        self.program.explained("the focus", lambda: self.program.has_focus("Pulisci solo testi oltre", "spin button"))
        key("Up")
        self.wait_for_setting("cleanupMinChars", 60)
        key("Down", "Down")
        self.wait_for_setting("cleanupMinChars", 40)

    def test_ollamas_models_can_be_chosen(self):
        wait_for("the question for them", lambda: "/api/tags" in self.ollama.gets)
        self.pick("Modello Ollama", "qwen", "cleanupModel", "qwen")

    def test_another_tier_stops_the_cleaner(self):
        before = self.wait_for_engine("llama-server")
        self.choose("Nessuna", "cleanupTier", "none")
        self.wait_until_stopped("llama-server", before)

    def test_a_tier_is_downloaded_in_its_place(self):
        self.choose("Leggera", "cleanupTier", "light")
        self.program.press("Scarica")
        self.program.wait_until_gone("Scarica")
        wait_for("the file", lambda: (models_folder() / LIGHT).exists())
        self.assertEqual((models_folder() / LIGHT).read_bytes(), MODELS[LIGHT])

    def test_the_prompt_of_ones_own(self):
        prompt = data_folder() / "prompt.txt"
        self.assertIsNone(self.program.find("Apri prompt.txt…"))
        self.choose("Usa prompt personalizzato", "customPromptEnabled", True)
        self.program.wait("Il file sovrascrive i livelli qui sopra.")
        self.program.press("Apri prompt.txt…")
        wait_for("the file", prompt.exists)
        self.choose("Usa prompt personalizzato", "customPromptEnabled", False)
        self.program.wait_until_gone("Apri prompt.txt…")


class DictionaryTabTest(SettingsTest):
    def test_what_is_typed_is_stored(self):
        self.tab("Dizionario")
        self.program.wait("Nomi propri, brand e termini tecnici — uno per riga.")
        self.program.wait("Whisper li usa per riconoscerli meglio e la pulizia AI li scrive esattamente così (es. nomi "
                          "di persone, aziende, sigle del tuo lavoro).")
        self.program.wait("Dizionario", "text").set_text_contents("Parlivo\nGiulia")
        self.wait_for_setting("dictionary", "Parlivo\nGiulia")


class ReachTest(SettingsTest):
    """The window without a mouse."""

    stored = {"customPromptEnabled": True}

    def test_tab_comes_to_everything(self):
        expected = {
            "Generale": ["Generale", "Avvia Parlivo al login", "Suoni di inizio/fine registrazione",
                         "Mostra il riquadro con la waveform", "Notifiche degli errori", "Veloce (~285 caratteri/s)",
                         "Modalità debug (salva le trascrizioni nel log)", "Cambia…", "Apri il manuale",
                         "Invia feedback…", "Esci da Parlivo"],
            "Dettatura": ["Dettatura", "Alt+Spazio", "Tieni premuto per parlare (push-to-talk)", "Italiano",
                          "Quello scelto dal sistema", "Precisa"],
            "Pulizia AI": ["Pulizia AI", "Nessuna", "Media — anche filler rimossi (consigliata)", "Modello Ollama",
                           "Pulisci solo testi oltre", "Usa prompt personalizzato", "Apri prompt.txt…"],
            "Dizionario": ["Dizionario", "Dizionario"],
        }
        for tab, controls in expected.items():
            self.tab(tab)
            self.program.wait(tab, "page tab list").grab_focus()
            self.program.explained("the focus", lambda name=tab: self.program.has_focus(name, "page tab list"))
            self.assertEqual(self.program.reachable_by_tab(), controls)

    def test_every_control_has_a_name(self):
        for tab in ("Generale", "Dettatura", "Pulizia AI", "Dizionario"):
            self.tab(tab)
            nameless = [windows.role_of(item) for item in self.program.everything()
                        if windows.role_of(item) in windows.CONTROLS - {"text"} and not item.get_name()]
            self.assertEqual(nameless, [], tab)

    def test_escape_closes_and_another_start_shows_it_again(self):
        self.program.wait("Generale", "page tab list").grab_focus()
        # Not just any: the tab itself says that it has the focus before its window has the keyboard.
        self.program.explained("the focus", lambda: self.program.has_focus("Generale", "page tab list"))
        key("Escape")
        self.program.wait_until_gone("Impostazioni Parlivo")
        windows.command()
        self.program.wait("Impostazioni Parlivo")


if __name__ == "__main__":
    windows.main()
