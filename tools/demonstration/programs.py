# SPDX-License-Identifier: MIT
"""The programs that take part, and what they tell of themselves."""

import contextlib
import json
import os
import re
import subprocess
import urllib.error
import urllib.request
from datetime import datetime
from pathlib import Path

from demonstration.keyboards import CONTROL, S
from demonstration.waiting import Failure, say, until

# Name and sign of life of each engine.
RECOGNISER = ("whisper-server", "http://127.0.0.1:8765/")
CLEANER = ("llama-server", "http://127.0.0.1:8766/health")


class Programs(contextlib.ExitStack):
    """What was started here; gone with this, however it ends."""

    def start(self, *command, **options):
        process = subprocess.Popen(["setpriv", "--pdeathsig", "TERM", *map(str, command)], **options)
        self.callback(self._end, process)
        return process

    @staticmethod
    def _end(process):
        process.terminate()
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


def focused(node):
    """The window with the focus, as a list of none or one."""
    children = node["nodes"] + node["floating_nodes"]
    return [node] if node["focused"] else [window for child in children for window in focused(child)]


class Editor:
    """A text editor of the user's, with the focus."""

    def __init__(self, programs, keyboard, folder):
        self._keyboard = keyboard
        self._file = folder / "nota.txt"
        self._file.touch()
        self._saved = self._file.stat().st_mtime_ns
        programs.start(*self._as_a_user(), "mousepad", "--disable-server", self._file, stderr=subprocess.DEVNULL,
                       env=os.environ | self._easy_to_read())  # fmt: skip
        until("the editor's window", self._has_focus)

    @staticmethod
    def _as_a_user():
        """It warns whoever runs it as root, in red; so it is not told. In a Wayland session it must be, to reach the
        compositor, which belongs to another user then."""
        untold = os.geteuid() == 0 and "WAYLAND_DISPLAY" not in os.environ
        return ["unshare", "--user", "--map-user=1000"] if untold else []

    @staticmethod
    def _easy_to_read():
        """The environment in which the editor shows long lines whole, in larger letters."""
        settings = Path(os.environ["XDG_CONFIG_HOME"]) / "glib-2.0/settings/keyfile"
        settings.parent.mkdir(parents=True)
        settings.write_text("[org/xfce/mousepad/preferences/view]\nword-wrap=true\n"
                            "use-default-monospace-font=false\nfont-name='DejaVu Serif 15'\n", encoding="utf-8")
        return {"GSETTINGS_BACKEND": "keyfile"}

    def _has_focus(self):
        if "WAYLAND_DISPLAY" in os.environ:
            tree = subprocess.run(["swaymsg", "-r", "-t", "get_tree"], text=True, capture_output=True, check=True)
            return any(self._file.name in (window["name"] or "") for window in focused(json.loads(tree.stdout)))
        answer = subprocess.run(["xdotool", "getwindowfocus", "getwindowname"], text=True,
                                capture_output=True, check=False)  # fmt: skip
        return self._file.name in answer.stdout

    def text(self):
        """What it holds: saves it as a user does and reads the file."""
        self._keyboard.press(CONTROL, S)
        self._keyboard.release(CONTROL, S)
        until("the editor's file", lambda: self._file.stat().st_mtime_ns != self._saved)
        return self._file.read_text(encoding="utf-8")


class Bus:
    """The program's object on the session bus."""

    def __init__(self):
        from gi.repository import Gio, GLib

        self._GLib = GLib
        self._bus = Gio.bus_get_sync(Gio.BusType.SESSION)

    def property(self, name):
        arguments = self._GLib.Variant("(ss)", ("it.parlivo.Parlivo1", name))
        try:
            reply = self._bus.call_sync(
                "it.parlivo.Parlivo", "/it/parlivo/Parlivo", "org.freedesktop.DBus.Properties", "Get",
                arguments, None, 0, 5000, None)  # fmt: skip
        except self._GLib.Error:
            return None
        return reply.unpack()[0]


def answers(url):
    """Whether an engine gives the sign of life that the program itself waits for."""
    try:
        with urllib.request.urlopen(url, timeout=1) as reply:
            return reply.status == 200
    except urllib.error.HTTPError:
        return url == RECOGNISER[1]


class Parlivo:
    """The program from its bundle, with models from a folder and settings of its own."""

    def __init__(self, programs, bundle, models, settings):
        self._settle(models, settings)
        self._words = Path(os.environ["XDG_RUNTIME_DIR"]) / "Parlivo.stderr"
        environment = os.environ | {
            # Nobody is to be asked for updates or models.
            "PARLIVO_SITE_BASE": "http://127.0.0.1:9",
            "PARLIVO_MODEL_HOST": "http://127.0.0.1:9",
        }
        with open(self._words, "wb") as words:
            self._process = programs.start(bundle / "Contents/MacOS/Parlivo", env=environment, stderr=words)
        self._bus = Bus()

    def wait_until_ready(self, engines):
        until("Parlivo on the session bus", self._is_up)
        for name, url in engines:
            until(name, lambda url=url: answers(url), 60)

    @staticmethod
    def _settle(models, settings):
        home = Path(os.environ["HOME"])
        config = Path(os.environ["XDG_CONFIG_HOME"]) / "Parlivo"
        # The models are tiny, so no catalogue has them: one lies where a developer's own would, the other
        # under the name of the small tier.
        for link, model in (
            (home / "Projects/Parlivo/models/ggml-large-v3-turbo-q8_0.bin", "ggml-model.bin"),
            (home / ".local/share/Parlivo/models/qwen2.5-1.5b-instruct-q4_k_m.gguf", "cleanup.gguf"),
        ):
            link.parent.mkdir(parents=True)
            link.symlink_to(models / model)
        config.mkdir(parents=True)
        (config / "Parlivo.json").write_text(json.dumps(settings), encoding="utf-8")

    def _is_up(self):
        if self._process.poll() is not None:
            raise Failure(f"Parlivo ended with status {self._process.returncode}")
        return self.state()

    def state(self):
        return self._bus.property("State")

    def wait_for(self, state):
        until(f"the state {state}", lambda: self._is_up() == state, 90)

    def complaint(self):
        """The error that its menu shows, if any."""
        text = self._bus.property("StatusText") or ""
        return text if text.startswith("⚠️") else None

    @staticmethod
    def log():
        path = Path(os.environ["XDG_STATE_HOME"]) / "Parlivo/Parlivo.log"
        return path.read_text(encoding="utf-8") if path.exists() else ""

    def show_log(self):
        say("--- the program's log:")
        say(self.log())
        say("--- what it wrote to standard error:")
        say(self._words.read_text(encoding="utf-8"))


class Log:
    """The last dictation, as the program wrote it down because its debugging mode is on."""

    def __init__(self, text):
        #  [2025-01-31 09:00:00.000] message, which may go on over several lines
        records = re.split(r"^\[(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})\] ", text, flags=re.MULTILINE)
        self._records = [
            (datetime.fromisoformat(moment), message.rstrip("\n"))
            for moment, message in zip(records[1::2], records[2::2])
        ]

    def _record(self, start):
        for moment, message in reversed(self._records):
            if message.startswith(start):
                return moment, message.removeprefix(start)
        raise Failure(f"the log has no line '{start}…'")

    def recognised(self):
        return self._record("trascrizione grezza: ")[1][1:-1]

    def cleaned(self):
        return self._record("testo pulito: ")[1][1:-1]

    def engine_milliseconds(self):
        """From before the first request to an engine until after the last reply."""
        start = self._record("audio convertito: ")[0]
        end = self._record("testo pulito: ")[0]
        return (end - start).total_seconds() * 1000
