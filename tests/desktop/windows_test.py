#!/usr/bin/python3
"""Works the real program's windows from outside, as somebody with a screen reader does: over the accessibility bus.

usage: windows_test.py PARLIVO [CASE...]

Needs a desktop of its own (tests/support/desktop) in a world of its own (tests/support/isolated).
"""
import http.server
import json
import os
import pathlib
import signal
import subprocess
import sys
import threading
import time
import unittest

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402

PATIENCE = 40
LAUNCHER = "/usr/libexec/at-spi-bus-launcher"


def wait_for(what, condition):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        try:
            found = condition()
        except GLib.Error:  # what was looked at has just gone
            found = None
        if found:
            return found
        time.sleep(0.05)
    raise AssertionError(f"waited in vain for {what}")


class Web(http.server.ThreadingHTTPServer):
    """The product's site and an Ollama service in one; scripted by the tests."""

    def __init__(self, port=0):
        super().__init__(("127.0.0.1", port), Handler)
        self.status = 200
        self.posts = []
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def end(self):
        self.shutdown()
        self.server_close()

    @property
    def address(self):
        return f"http://127.0.0.1:{self.server_port}"


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        if self.path == "/api/tags":
            return self.answer(200, json.dumps({"models": [{"name": "qwen"}, {"name": "gemma3:4b"}]}).encode())
        return self.answer(404, b"not found")

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"]))
        self.server.posts.append((self.path, json.loads(body)))
        self.answer(self.server.status, b"{}")

    def answer(self, status, body):
        self.send_response(status)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


class Program:
    """The running program and what can be seen of it on the accessibility bus."""

    def __init__(self, path, web, *arguments):
        environment = dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", PARLIVO_MODEL_HOST=web.address,
                           PARLIVO_SITE_BASE=web.address)
        self.path = path
        self.process = subprocess.Popen([path, *arguments], env=environment)

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        try:
            self.process.wait(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            raise AssertionError("the program did not end when asked to") from None

    def everything(self):
        """All that is on the screen, from the outside in."""
        desktop = Atspi.get_desktop(0)
        for i in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(i)
            if application and application.get_process_id() == self.process.pid:
                yield from showing(application)

    def find(self, name, role=None):
        for item in self.everything():
            if item.get_name() == name and role in (None, item.get_role_name()):
                return item
        return None

    def wait(self, name, role=None):
        try:
            return wait_for(f"{role or 'something'} named “{name}”", lambda: self.find(name, role))
        except AssertionError as failure:
            raise AssertionError(f"{failure}; there is\n{self.picture()}") from None

    def press(self, name, role=None):
        item = self.wait(name, role)
        wait_for(f"“{name}” to be enabled", lambda: has(item, Atspi.StateType.ENABLED))
        item.do_action(0)

    def picture(self):
        """What a failed test saw."""
        return "\n".join(f"  {item.get_role_name()}: {item.get_name()}" for item in self.everything())


def has(item, state):
    item.clear_cache()
    return item.get_state_set().contains(state)


def showing(item):
    item.clear_cache()
    for i in range(item.get_child_count()):
        child = item.get_child_at_index(i)
        if child and has(child, Atspi.StateType.SHOWING):
            yield child
            yield from showing(child)


def settings_file():
    return pathlib.Path(os.environ["XDG_CONFIG_HOME"], "Parlivo", "Parlivo.json")


def settings():
    try:
        return json.loads(settings_file().read_text())
    except (FileNotFoundError, json.JSONDecodeError):
        return {}


def store(values):
    settings_file().parent.mkdir(parents=True, exist_ok=True)
    settings_file().write_text(json.dumps(values))


class WindowsTest(unittest.TestCase):
    def setUp(self):
        store({})
        self.web = Web()
        self.addCleanup(self.web.end)
        self.program = None

    def start(self, path, *arguments):
        self.program = Program(path, self.web, *arguments)
        self.addCleanup(self.program.end)

    def wait_for_setting(self, key, value):
        wait_for(f"{key} to be {value!r}, it is {settings().get(key)!r}", lambda: settings().get(key) == value)


class SettingsTest(WindowsTest):
    def setUp(self):
        super().setUp()
        store({"onboardingDone": True})
        self.start(PARLIVO, "--settings")
        self.program.wait("Impostazioni Parlivo")

    def choose(self, words, key, value):
        self.program.press(words)
        self.wait_for_setting(key, value)

    def tab(self, name):
        def open_it():
            tab = self.program.find(name, "page tab")
            if tab is None:
                return False
            tab.do_action(0)
            # The list of tabs bears the name of the one that is open.
            return self.program.find(name, "page tab list")
        try:
            wait_for(f"the tab {name}", open_it)
        except AssertionError as failure:
            raise AssertionError(f"{failure}; there is\n{self.program.picture()}") from None

    def test_general(self):
        self.choose("Suoni di inizio/fine registrazione", "soundsEnabled", False)
        self.choose("Mostra il riquadro con la waveform", "overlayEnabled", False)
        self.choose("Istantanea (incolla tutto insieme)", "typingSpeed", "instant")
        self.choose("Naturale (~85 caratteri/s)", "typingSpeed", "natural")
        self.choose("Modalità debug (salva le trascrizioni nel log)", "debugMode", True)
        self.program.press("Avvia Parlivo al login")
        entry = pathlib.Path(os.environ["XDG_CONFIG_HOME"], "autostart", "it.parlivo.Parlivo.desktop")
        wait_for("the autostart entry", entry.exists)
        self.assertIn(f'Exec="{os.path.realpath(PARLIVO)}"', entry.read_text())
        self.program.press("Avvia Parlivo al login")
        wait_for("the autostart entry to go", lambda: not entry.exists())

    def test_dictation(self):
        self.tab("Dettatura")
        self.choose("Premi per iniziare, ripremi per fermare", "dictationMode", "toggle")
        self.choose("Veloce", "asrTier", "fast")

    def test_cleanup(self):
        ollama = Web(11434)
        self.addCleanup(ollama.end)
        self.tab("Pulizia AI")
        self.choose("Leggera", "cleanupTier", "light")
        self.choose("Alta — anche grammatica e riformulazioni", "cleanupLevel", "high")
        self.choose("Usa prompt personalizzato", "customPromptEnabled", True)
        stepper = self.program.wait("Pulisci solo testi oltre", "spin button")
        stepper.set_current_value(60)
        self.wait_for_setting("cleanupMinChars", 60)
        self.program.wait("gemma3:4b")

    def test_dictionary(self):
        self.tab("Dizionario")
        self.program.wait("Dizionario", "text").set_text_contents("Parlivo\nGiulia")
        self.wait_for_setting("dictionary", "Parlivo\nGiulia")


class FeedbackTest(WindowsTest):
    def test_refused_and_then_sent(self):
        store({"onboardingDone": True})
        self.start(PARLIVO, "--feedback")
        self.program.press("4 stelle")
        self.program.wait("Cosa non va? Cosa miglioreresti?", "text").set_text_contents("Bello")
        self.web.status = 500
        self.program.press("Invia feedback")
        self.program.wait("Invio non riuscito — controlla la connessione e riprova.")
        self.assertNotIn("feedbackGiven", settings())
        self.web.status = 200
        self.program.press("Invia feedback")
        self.program.wait("Grazie davvero.")
        self.wait_for_setting("feedbackGiven", True)
        path, feedback = self.web.posts[-1]
        self.assertEqual(path, "/api/feedback")
        self.assertEqual((feedback["rating"], feedback["text"], feedback["email"]), (4, "Bello", ""))
        self.assertRegex(feedback["macos"], r"^Version .+ \(Build .+\)$")


def accessibility_bus():
    session = Gio.bus_get_sync(Gio.BusType.SESSION)
    return session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                             Gio.DBusCallFlags.NONE, -1, None)


def main():
    global PARLIVO
    PARLIVO = sys.argv[1]
    with subprocess.Popen([LAUNCHER, "--launch-immediately"]) as launcher:
        try:
            wait_for("the accessibility bus", accessibility_bus)
            Atspi.init()
            unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)
        finally:
            launcher.terminate()


if __name__ == "__main__":
    main()
