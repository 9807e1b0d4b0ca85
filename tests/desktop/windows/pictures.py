#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Takes pictures of the windows of the real program, led through its states over the accessibility bus.

usage: pictures.py PARLIVO FOLDER MANNER SCALE

MANNER is light or dark, the desktop's colours; or words joined by hyphens, which end the pictures' names: dark, large (a
font of 14 points), small and laptop (of the screen); or refused, for the pages that ask for permissions.

Run by tools/screenshots, on a desktop of its own.
"""
import os
import pathlib
import subprocess
import sys

sys.path.insert(1, str(pathlib.Path(__file__).resolve().parents[1] / "update"))
import windows
from held_keys import PRESETS, HeldKeys
from panel import Panel
from picture_session import BEST, FULL, Look, Session
from strict_display import StrictDisplay
from windows import Atspi, provide_models, wait_for

_, PARLIVO, FOLDER, MANNER, SCALE = sys.argv
# Its models can be had, so that it can dictate.
TRIAL = pathlib.Path(PARLIVO).parents[3] / "tests/Trial.app/Contents/MacOS/Parlivo"

KEY_TAKEN = "Alt+Spazio è già usata da un altro programma: scegli un'altra scorciatoia"
CHANGES = """• Il microfono si sceglie nelle impostazioni
• Gli errori appaiono anche come notifiche
• La scorciatoia può essere qualunque combinazione"""


def first_run():
    with Session({}) as session:
        program = session.program
        program.wait("Just talk. It types.")
        session.picture("onboarding-1-welcome", "Parlivo")
        program.press("Continua")
        program.wait("Dove salvo i modelli AI?")
        session.picture("onboarding-2-folder", "Parlivo")
        program.press("Cambia…")
        program.wait("Usa questa cartella", "push button")
        session.picture("onboarding-2-folder-chooser", "Usa questa cartella")
        program.press("Annulla", "push button")
        program.wait_until_gone("Usa questa cartella")
        program.press("Continua")
        program.wait("Scegli il livello di efficacia")
        session.picture("onboarding-3-quality", "Parlivo")
        program.press("Continua")
        program.wait("38%  ·  316 / 833 MB")
        session.picture("onboarding-4-download", "Parlivo")
        program.wait("La connessione è ferma: non arriva nulla da più di 10 secondi")
        session.picture("onboarding-4-download-stalled", "Parlivo")
        windows.key("Escape")
        program.wait("Più tardi")
        session.alert("onboarding-alert", "Più tardi", described=False)
    with Session({}) as session:
        session.web.broken = True
        go_to_download(session.program)
        session.program.wait("Riprova")
        session.picture("onboarding-4-download-error", "Parlivo")
    with Session({}, models=(BEST, FULL)) as session:
        program = session.program
        go_to_download(program)
        program.wait("Tutto scaricato e verificato")
        session.picture("onboarding-4-download-done", "Parlivo")
        for name, title in (("5-microphone", "Permesso Microfono"), ("6-accessibility", "Permesso Accessibilità"),
                            ("7-ready", "Tutto pronto")):
            program.press("Continua")
            program.wait(title)
            session.picture(f"onboarding-{name}", "Parlivo")
    refused_key()


def refused_key():
    """The last page when another program has every key."""
    held = HeldKeys(PRESETS)
    with Session({}, models=(BEST, FULL)) as session:
        go_to_download(session.program)
        for title in ("Permesso Microfono", "Permesso Accessibilità", "Tutto pronto"):
            session.program.press("Continua")
            session.program.wait(title)
        session.program.wait(KEY_TAKEN)
        session.picture("onboarding-7-ready-key-taken", "Parlivo")
    held.let_go()
    stored = {"onboardingDone": True, "hotkeyPreset": "opt-space"}
    held = HeldKeys(PRESETS[:1])
    with Session(stored, "--settings", models=(BEST, FULL)) as session:
        session.program.wait("Impostazioni Parlivo")
        open_tab(session.program, "Dettatura")
        session.program.wait(KEY_TAKEN)
        session.picture("settings-2-dictation-key-taken", "Impostazioni Parlivo")
    held.let_go()
    with Session({**stored, "hotkeyPreset": "own", "hotkeyCode": 101, "hotkeyModifiers": 4096}, "--settings",
                 models=(BEST, FULL)) as session:
        session.program.wait("Impostazioni Parlivo")
        open_tab(session.program, "Dettatura")
        session.program.wait("La tua scorciatoia è Ctrl+F9")
        session.picture("settings-2-dictation-own-key", "Impostazioni Parlivo")


def go_to_download(program):
    for page in ("Just talk. It types.", "Dove salvo i modelli AI?", "Scegli il livello di efficacia"):
        program.wait(page)
        program.press("Continua")
    program.wait("Scarico i motori scelti")


def refused_permissions():
    """The pages that still ask: without a sound server, and on a display that lets nobody type."""
    display = StrictDisplay()
    with Session({}, models=(BEST, FULL), display=display.name) as session:
        program = session.program
        go_to_download(program)
        program.wait("Tutto scaricato e verificato")
        program.press("Continua")
        program.press("Consenti microfono")
        program.wait("Impostazioni audio")
        session.picture("onboarding-5-microphone-refused", "Parlivo")
        program.press("Continua")
        program.wait("Apri la guida")
        session.picture("onboarding-6-accessibility-refused", "Parlivo")
    display.end()


def open_tab(program, name):
    program.explained(f"the tab {name}", lambda: program.find(name, "page tab").do_action(0)
                      and program.find(name, "page tab list"))


def settings_window():
    stored = {"onboardingDone": True, "cleanupTier": "full", "dictionary": "Parlivo\nGiulia Bianchi\nStraordinaria S.r.l."}
    window = "Impostazioni Parlivo"
    with Session(stored, "--settings", models=(BEST, FULL)) as session:
        program = session.program
        program.wait(window)
        session.picture("settings-1-general", window)
        open_tab(program, "Dettatura")
        session.picture("settings-2-dictation", window)
        program.press("Veloce")
        program.press("Scarica")
        bar = program.wait("Avanzamento del download")
        wait_for("the progress", lambda: bar.get_current_value() > 370)
        session.picture("settings-2-dictation-download", window)
        open_tab(program, "Pulizia AI")
        session.picture("settings-3-cleanup", window)
        session.web.broken = True
        program.press("Leggera")
        program.press("Scarica")
        program.wait("Download incompleto (0MB su 1065MB)")
        session.picture("settings-3-cleanup-error", window)
        program.press("Usa prompt personalizzato")
        program.wait("Apri prompt.txt…")
        session.picture("settings-3-cleanup-prompt", window)
        open_tab(program, "Dizionario")
        session.picture("settings-4-dictionary", window)


def feedback_window():
    window = "Il tuo parere su Parlivo"
    with Session({"onboardingDone": True}, "--feedback", models=(BEST,)) as session:
        program = session.program
        program.wait(window)
        session.picture("feedback-1-empty", window)
        program.press("4 stelle")
        program.wait("Cosa non va? Cosa miglioreresti?", "text").set_text_contents(
            "Detto le email in metà tempo. Mi piacerebbe scegliere un altro suono di inizio.")
        program.wait("Email", "text").set_text_contents("giulia@esempio.it")
        session.picture("feedback-2-filled-in", window)
        session.web.status = 500
        program.press("Invia feedback")
        program.wait("Invio non riuscito — controlla la connessione e riprova.")
        session.picture("feedback-3-error", window)
        session.web.status = 200
        program.press("Invia feedback")
        program.wait("Grazie davvero.")
        session.picture("feedback-4-thanks", window)


def is_open(program, panel, line, button):
    """Whether the alert with this button is; else its line of the menu is chosen, which opens no second one."""
    if program.find(button):
        return True
    lines = panel.lines()
    if line in lines:
        panel.choose(line)
    return False


def updates():
    """An update on offer, its failure, and what is new after one."""
    panel = Panel()
    ready = {"onboardingDone": True}
    with Session(ready, models=(BEST,), update=("9.1.0", CHANGES)) as session:
        offer = "⬆️ Aggiorna a Parlivo 9.1.0…"
        wait_for("the offer to be answered", lambda: is_open(session.program, panel, offer, "Aggiorna ora"))
        session.alert("alert-update", "Aggiorna ora")
        session.program.press("Aggiorna ora")
        session.program.wait("Aggiornamento non riuscito")
        session.alert("alert-update-failed", "OK")
    for name, changes in (("alert-news", CHANGES), ("alert-news-long", "\n".join([CHANGES] * 12))):
        updated = {**ready, "lastSeenVersion": "0.9.0", "pendingChangelog": changes}
        with Session(updated, models=(BEST,)) as session:
            session.alert(name, "Ottimo")


class TrialSession(Session):
    """A run of the program that can dictate."""

    def put_models(self, names):
        provide_models(*names)


def invitation():
    """What comes after the twentieth dictation."""
    windows.PROGRAM = str(TRIAL)
    stored = {"onboardingDone": True, "cleanupLevel": "none", "dictationCount": 19}
    with TrialSession(stored, models=(BEST,)) as session:
        wait_for("the program", windows.is_up)
        windows.command("--press")
        wait_for("the recording", lambda: windows.state() == "recording")
        windows.speak("Buongiorno a tutti.")
        windows.command("--release")
        session.alert("alert-invitation", "Dì la tua")
    windows.PROGRAM = PARLIVO


def move_home():
    """To a folder that may be shown, where this world lets us have one."""
    if subprocess.run(["mount", "-n", "-t", "tmpfs", "tmpfs", "/home"], check=False).returncode != 0:
        return
    home = "/home/giulia"
    os.environ.update(HOME=home, XDG_CONFIG_HOME=f"{home}/.config", XDG_DATA_HOME=f"{home}/.local/share",
                      XDG_STATE_HOME=f"{home}/.local/state", XDG_CACHE_HOME=f"{home}/.cache")
    os.makedirs(home)


def main():
    windows.PROGRAM = PARLIVO
    Session.look = Look(FOLDER, MANNER, SCALE)
    # A row under the pointer looks chosen.
    subprocess.run(["xdotool", "mousemove", "0", "0"], check=True)
    if MANNER != "refused":  # whose pages show no folder
        move_home()
    Session.look.apply()
    with subprocess.Popen([windows.LAUNCHER, "--launch-immediately"]) as launcher:
        try:
            wait_for("the accessibility bus", windows.accessibility_bus)
            Atspi.init()
            if MANNER == "refused":
                refused_permissions()
                return
            # The first run has colours of its own and looks the same in the dark.
            if "dark" not in Session.look.words:
                first_run()
            else:
                refused_key()
            settings_window()
            feedback_window()
            updates()
            invitation()
        finally:
            launcher.terminate()


if __name__ == "__main__":
    main()
