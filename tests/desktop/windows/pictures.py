#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Takes pictures of the windows of the real program, led through its states over the accessibility bus.

usage: pictures.py PARLIVO FOLDER light|dark|large|small|refused SCALE

light and dark are the desktop's colours, large is a font of 14 points, small is for a small screen.

Run by tools/screenshots, on a desktop of its own.
"""
import http.server
import json
import os
import pathlib
import subprocess
import sys
import threading

import windows
from held_keys import PRESETS, HeldKeys
from strict_display import StrictDisplay
from windows import Atspi, Program, models_folder, store, wait_for

_, PARLIVO, FOLDER, MANNER, SCALE = sys.argv

SIZES = {
    "ggml-large-v3-turbo-q5_0.bin": 574041195,
    "ggml-large-v3-turbo-q8_0.bin": 874188075,
    "qwen2.5-1.5b-instruct-q4_k_m.gguf": 1117320736,
    "gemma-3-4b-it-Q4_K_M.gguf": 2489757856,
}
BEST = "ggml-large-v3-turbo-q8_0.bin"
FULL = "gemma-3-4b-it-Q4_K_M.gguf"
KEY_TAKEN = "Alt+Spazio è già usata da un altro programma: scegli un'altra scorciatoia"
SHARE = 0.38  # where a download stands in its picture
PIECE = bytes(1 << 20)

# What the KDE desktop stores for its dark colours, which Qt reads by itself.
DARK = """[General]
widgetStyle=Fusion
[Colors:Window]
BackgroundNormal=42,42,46
ForegroundNormal=235,235,240
[Colors:Button]
BackgroundNormal=62,62,68
ForegroundNormal=235,235,240
[Colors:View]
BackgroundNormal=30,30,33
BackgroundAlternate=36,36,40
ForegroundNormal=235,235,240
[Colors:Selection]
BackgroundNormal=52,110,200
ForegroundNormal=255,255,255
[Colors:Tooltip]
BackgroundNormal=62,62,68
ForegroundNormal=235,235,240
"""


DESKTOPS = {
    "dark": DARK,
    "large": "[General]\nwidgetStyle=Fusion\nfont=DejaVu Sans,14,-1,5,50,0,0,0,0,0\n",
}


class Web(http.server.ThreadingHTTPServer):
    """The models' host, which stops in mid-file or breaks; and a site that takes feedback or refuses it."""

    daemon_threads = True

    def __init__(self, port=0):
        super().__init__(("127.0.0.1", port), Handler)
        self.broken = False
        self.status = 200
        threading.Thread(target=self.serve_forever, daemon=True).start()

    @property
    def address(self):
        return f"http://127.0.0.1:{self.server_port}"


class Handler(windows.Handler):
    def do_GET(self):
        if self.path == "/api/tags":
            return self.answer(200, b'{"models": [{"name": "gemma3:4b"}]}')
        size = SIZES.get(self.path.rsplit("/", 1)[-1])
        if size is None or self.server.broken:
            return self.answer(404, b"not found")
        self.begin(200, size)
        try:
            for _ in range(int(size * SHARE) // len(PIECE)):
                self.wfile.write(PIECE)
            threading.Event().wait()
        except OSError:  # the program was ended
            self.close_connection = True

    def do_POST(self):
        self.rfile.read(int(self.headers["Content-Length"]))
        self.answer(self.server.status, b"{}")


class Session:
    """One run of the program, from an empty home."""

    def __init__(self, settings, *arguments, models=(), display=None, **environment):
        self.web = Web()
        subprocess.run(["rm", "-rf", str(windows.data_folder())], check=True)
        store(settings)
        models_folder().mkdir(parents=True)
        for name in models:
            with open(models_folder() / name, "wb") as file:
                file.truncate(SIZES[name])
        if display:
            environment["DISPLAY"] = display
        self.display = display
        self.program = Program(self.web, *arguments, **environment)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.program.end()
        self.web.shutdown()

    def picture(self, name, window, number=None, described=True):
        """Takes a picture of a window once it has stopped changing."""
        environment = dict(os.environ, **({"DISPLAY": self.display} if self.display else {}))
        path = f"{FOLDER}/{name}{'' if MANNER in ('light', 'refused') else '-' + MANNER}{'@2x' if SCALE == '2' else ''}.png"
        number = number or wait_for(window, lambda: subprocess.run(
            ["xdotool", "search", "--onlyvisible", "--name", f"^{window}$"], capture_output=True, text=True,
            env=environment, check=False).stdout.split())[-1]
        before = None

        def still():
            nonlocal before
            subprocess.run(["import", "-window", number, "-depth", "8", "-define", "png:compression-level=9", path],
                           check=True, env=environment)
            now = subprocess.run(["identify", "-format", "%#", path], check=True, capture_output=True).stdout
            same, before = now == before, now
            return same
        wait_for("a still picture", still)
        where = subprocess.run(["xdotool", "getwindowgeometry", "--shell", number], check=True, capture_output=True,
                               text=True, env=environment).stdout
        corner = [int(line.partition("=")[2]) for line in where.split() if line.startswith(("X=", "Y="))]
        if described and window != "Usa questa cartella":  # the toolkit's, or the desktop's
            self.describe(pathlib.Path(path).with_suffix(".json"), corner)
        # Few colours are enough for flat drawings, and make small files.
        subprocess.run(["convert", path, "-strip", "+dither", "-colors", "255", f"PNG8:{path}"], check=True)
        print(path)


    def alert(self, name, button):
        """Takes a picture of the alert with this button."""
        self.program.explained("the alert's button to have the keyboard", lambda: self.program.find(button))
        number = subprocess.run(["xdotool", "getactivewindow"], capture_output=True, text=True, check=True).stdout
        title = subprocess.run(["xdotool", "getwindowname", number.strip()], capture_output=True, text=True,
                               check=True).stdout.strip()
        self.picture(name, title, number.strip(), described=False)

    def describe(self, path, corner):
        """Notes where the controls are in a picture of the window at this corner, for tools/contrast."""
        controls = []
        scale = int(SCALE)
        for item in self.program.everything():
            if item.get_role_name() not in windows.CONTROLS | {"label", "progress bar"} or not item.get_name():
                continue
            place = extents(item)
            if is_cut_off(item, place):
                continue
            enabled = windows.has(item, Atspi.StateType.ENABLED)
            controls.append({"role": item.get_role_name(), "name": item.get_name(), "state": "" if enabled else "disabled ",
                             "area": [place.x * scale - corner[0], place.y * scale - corner[1], place.width * scale,
                                      place.height * scale]})
        path.write_text(json.dumps(controls))


def extents(item):
    return item.get_component_iface().get_extents(Atspi.CoordType.SCREEN)


def is_cut_off(item, place):
    """Whether a part of it is scrolled out of sight."""
    parent = item.get_parent()
    while parent and parent.get_component_iface() and parent.get_role_name() != "application":
        around = extents(parent)
        if place.y < around.y or place.y + place.height > around.y + around.height:
            return True
        parent = parent.get_parent()
    return False


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
        session.alert("onboarding-alert", "Più tardi")
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
    # A row under the pointer looks chosen.
    subprocess.run(["xdotool", "mousemove", "0", "0"], check=True)
    if MANNER != "refused":  # whose pages show no folder
        move_home()
    if MANNER in DESKTOPS:
        pathlib.Path(os.environ["XDG_CONFIG_HOME"]).mkdir(parents=True, exist_ok=True)
        pathlib.Path(os.environ["XDG_CONFIG_HOME"], "kdeglobals").write_text(DESKTOPS[MANNER])
        os.environ.update(XDG_CURRENT_DESKTOP="KDE", KDE_SESSION_VERSION="5", QT_QPA_PLATFORMTHEME="kde")
    with subprocess.Popen([windows.LAUNCHER, "--launch-immediately"]) as launcher:
        try:
            wait_for("the accessibility bus", windows.accessibility_bus)
            Atspi.init()
            if MANNER == "refused":
                refused_permissions()
                return
            # The first run has colours of its own and looks the same in the dark.
            if MANNER != "dark":
                first_run()
            else:
                refused_key()
            settings_window()
            feedback_window()
        finally:
            launcher.terminate()


if __name__ == "__main__":
    main()
