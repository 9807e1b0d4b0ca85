# SPDX-License-Identifier: MIT
"""What the tests of the windows share: the program, what a screen reader sees of it, and the servers it talks to."""
import http.server
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import threading
import time
import unittest

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402

TIMEOUT = 60
LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
DEMO = pathlib.Path(__file__).resolve().parents[3] / "resources" / "demo"
PROGRAM = sys.argv[1] if len(sys.argv) > 1 else ""

# The files of the trial program's catalogue.
MODELS = {
    "ggml-large-v3-turbo-q5_0.bin": b"x" * 3_000_001,
    "ggml-large-v3-turbo-q8_0.bin": (DEMO / "ggml-model.bin").read_bytes(),
    "qwen2.5-1.5b-instruct-q4_k_m.gguf": b"x" * 2_000_001,
    "gemma-3-4b-it-Q4_K_M.gguf": (DEMO / "cleanup.gguf").read_bytes(),
}


def wait_for(what, condition, timeout=TIMEOUT):
    end = time.monotonic() + timeout
    while time.monotonic() < end:
        try:
            found = condition()
        except GLib.Error:  # what was looked at has just gone
            found = None
        if found:
            return found
        time.sleep(0.05)
    raise AssertionError(f"waited in vain for {what}")


def role_of(item):
    """The name of its role; what AT-SPI called "push button" up to 2.54 is a "button" since."""
    name = item.get_role_name()
    return "push button" if name == "button" else name


class Web(http.server.ThreadingHTTPServer):
    """The product's site, the models' host and an Ollama service in one; scripted by the tests."""

    daemon_threads = True

    def __init__(self, port=0):
        super().__init__(("127.0.0.1", port), Handler)
        self.status = 200  # of an answer to feedback
        self.posts = []
        self.gets = []
        self.broken = set()  # models in whose place an error page comes
        self.held = {}  # models that stop at a share of their length until an event
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def hold(self, name, share):
        self.held[name] = share, threading.Event()

    def let_go(self, name):
        self.held.pop(name)[1].set()

    def end(self):
        for name in list(self.held):
            self.let_go(name)
        self.shutdown()
        self.server_close()

    @property
    def address(self):
        return f"http://127.0.0.1:{self.server_port}"

    def asked_for(self, name):
        return self.gets.count(f"/modelli/{name}")


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.server.gets.append(self.path)
        if self.path == "/api/tags":
            return self.answer(200, json.dumps({"models": [{"name": "qwen"}, {"name": "gemma3:4b"}]}).encode())
        name = self.path.removeprefix("/modelli/")
        if name not in MODELS or name in self.server.broken:
            return self.answer(404, b"not found")
        return self.send_model(MODELS[name], self.server.held.get(name))

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"]))
        self.server.posts.append((self.path, json.loads(body)))
        self.answer(self.server.status, b"{}")

    def send_model(self, content, held):
        share, event = held or (1, threading.Event())
        self.begin(200, len(content))
        first = int(len(content) * share)
        try:
            self.wfile.write(content[:first])
            if held:
                event.wait()
            self.wfile.write(content[first:])
        except OSError:  # the program was ended
            self.close_connection = True

    def begin(self, status, length):
        self.send_response(status)
        self.send_header("Content-Length", str(length))
        self.end_headers()

    def answer(self, status, body):
        self.begin(status, len(body))
        self.wfile.write(body)

    def log_message(self, *_):
        pass


class Program:
    """The running program and what can be seen of it on the accessibility bus."""

    def __init__(self, web, *arguments, **environment):
        variables = dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", PARLIVO_MODEL_HOST=web.address,
                         PARLIVO_SITE_BASE=web.address, **environment)
        self.process = subprocess.Popen([PROGRAM, *arguments], env=variables)

    def end(self):
        if self.process.poll() is not None:
            return
        self.process.send_signal(signal.SIGTERM)
        try:
            self.process.wait(timeout=TIMEOUT)
        except subprocess.TimeoutExpired:
            self.kill()
            raise AssertionError("the program did not end when asked to") from None

    def kill(self):
        self.process.kill()
        self.process.wait()

    def everything(self):
        """All that is on the screen, from the outside in."""
        desktop = Atspi.get_desktop(0)
        for i in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(i)
            if application and application.get_process_id() == self.process.pid:
                yield from showing(application)

    def find(self, name, role=None):
        for item in self.everything():
            if item.get_name() == name and role in (None, role_of(item)):
                return item
        return None

    def explained(self, what, condition):
        """Waits for a condition; a failure tells what there was to see."""
        try:
            return wait_for(what, condition)
        except AssertionError as failure:
            raise AssertionError(f"{failure}; there is\n{self.picture()}") from None

    def wait(self, name, role=None):
        return self.explained(f"{role or 'something'} named “{name}”", lambda: self.find(name, role))

    def wait_until_gone(self, name):
        self.explained(f"“{name}” to go", lambda: self.find(name) is None)

    def wait_for_words(self, *words):
        """Waits until exactly these labels are to be seen, from top to bottom."""
        self.explained(f"the words {words}", lambda: self.words() == list(words))

    def words(self):
        return [item.get_name() for item in self.everything() if role_of(item) == "label" and item.get_name()]

    def is_enabled(self, name):
        return has(self.wait(name), Atspi.StateType.ENABLED)

    def is_checked(self, name):
        return has(self.wait(name), Atspi.StateType.CHECKED)

    def has_focus(self, name, role=None):
        item = self.find(name, role)
        return item is not None and has(item, Atspi.StateType.FOCUSED)

    def focused(self):
        """Role and name of what has the keyboard."""
        for item in self.everything():
            if role_of(item) in CONTROLS and has(item, Atspi.StateType.FOCUSED):
                return role_of(item), item.get_name()
        return None

    def reachable_by_tab(self):
        """The names that Tab comes to, from the focused control on and once round."""
        found = [self.focused()]
        while True:
            key("Tab")
            now = self.explained("the focus to go on", lambda: self.changed_focus(found))
            if now in found:
                return [name for _, name in found]
            found.append(now)

    def picker(self, label):
        """A pop-up list by the words beside it; its name is what is chosen."""
        def found():
            return next((item for item in self.everything() if role_of(item) == "combo box"
                         and label in labels(item)), None)
        return self.explained(f"a pop-up list {label}", found)

    def changed_focus(self, found):
        now = self.focused()
        return now if now != found[-1] or len(self.tab_stops()) == 1 else None

    def tab_stops(self):
        return [item for item in self.everything() if role_of(item) in CONTROLS
                and has(item, Atspi.StateType.ENABLED) and has(item, Atspi.StateType.FOCUSABLE)]

    def press(self, name, role=None):
        item = self.wait(name, role)
        self.explained(f"“{name}” to be enabled", lambda: has(item, Atspi.StateType.ENABLED))
        item.do_action(0)

    def picture(self):
        return "\n".join(f"  {role_of(item)}: {item.get_name()}" for item in self.everything())


CONTROLS = {"push button", "check box", "radio button", "combo box", "spin button", "text", "page tab",
            "page tab list"}


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


def labels(item):
    return [relation.get_target(i).get_name() for relation in item.get_relation_set()
            if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY
            for i in range(relation.get_n_targets())]


def options(picker):
    options_list = picker.get_child_at_index(0)
    return [options_list.get_child_at_index(i).get_name() for i in range(options_list.get_child_count())]


def key(*names):
    """Presses keys on the keyboard, one after the other."""
    if names:
        subprocess.run(["xdotool", "key", *names], check=True)


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


def data_folder():
    return pathlib.Path(os.environ["XDG_DATA_HOME"], "Parlivo")


def models_folder():
    return data_folder() / "models"


def provide_models(*names):
    models_folder().mkdir(parents=True, exist_ok=True)
    for name in names:
        (models_folder() / name).write_bytes(MODELS[name])


def command(*arguments):
    """What a second start tells the one that runs."""
    subprocess.run([PROGRAM, *arguments], check=True)


def state():
    """What the program is doing, as it says on the session bus."""
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    return bus.call_sync("it.parlivo.Parlivo", "/it/parlivo/Parlivo", "org.freedesktop.DBus.Properties", "Get",
                         GLib.Variant("(ss)", ("it.parlivo.Parlivo1", "State")), None, Gio.DBusCallFlags.NONE,
                         -1, None).unpack()[0]


def is_up():
    """Whether there is a program to tell anything; before, a second start would become the first."""
    try:
        return bool(state())
    except GLib.Error:
        return False


def speak(words):
    """Says words into the microphone."""
    temporary = os.environ["TMPDIR"]
    subprocess.run(["espeak-ng", "-v", "it", "-w", f"{temporary}/voice.wav", words], check=True)
    subprocess.run(["sox", "-V1", f"{temporary}/voice.wav", "-r", "16000", "-c", "1", "-b", "16",
                    f"{temporary}/spoken.wav"], check=True)
    subprocess.run(["paplay", "--device=cavo", f"{temporary}/spoken.wav"], check=True)


def halting_at(build, step):
    """What is to be in the environment of a program that stops before a step (tests/support/Halt.cpp)."""
    return {"LD_PRELOAD": str(build / "tests/support/libhalt.so"), "PARLIVO_HALT": step}


def halted(name):
    """The processes of this name that have stopped."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        try:
            if entry.name.isdigit() and f"({name}) T " in (entry / "stat").read_text():
                found.append(int(entry.name))
        except OSError:  # it has just ended
            pass
    return found


def processes_named(name):
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        try:
            if entry.name.isdigit() and os.readlink(entry / "exe").endswith(f"/{name}"):
                found.append(int(entry.name))
        except OSError:  # it has just ended
            pass
    return found


class WindowsTest(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(data_folder(), ignore_errors=True)
        store({})
        self.web = Web()
        self.addCleanup(self.web.end)
        self.program = None

    def start(self, *arguments, **environment):
        self.program = Program(self.web, *arguments, **environment)
        self.addCleanup(self.program.end)

    def wait_for_setting(self, name, value):
        wait_for(f"{name} to be {value!r}, it is {settings().get(name)!r}", lambda: settings().get(name) == value)


def accessibility_bus():
    session = Gio.bus_get_sync(Gio.BusType.SESSION)
    return session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                             Gio.DBusCallFlags.NONE, -1, None)


def main():
    """Runs the cases named on the command line, after the program's path; all without any."""
    with subprocess.Popen([LAUNCHER, "--launch-immediately"]) as launcher:
        try:
            wait_for("the accessibility bus", accessibility_bus)
            Atspi.init()
            unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)
        finally:
            launcher.terminate()
