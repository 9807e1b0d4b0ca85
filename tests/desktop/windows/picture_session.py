# SPDX-License-Identifier: MIT
"""One run of the program of which pictures are taken, on a desktop with colours, a font and a screen of its own."""
import http.server
import json
import os
import pathlib
import subprocess
import threading

import windows
from windows import Atspi, GLib, Program, models_folder, store, wait_for

SIZES = {
    "ggml-large-v3-turbo-q5_0.bin": 574041195,
    "ggml-large-v3-turbo-q8_0.bin": 874188075,
    "qwen2.5-1.5b-instruct-q4_k_m.gguf": 1117320736,
    "gemma-3-4b-it-Q4_K_M.gguf": 2489757856,
}
BEST = "ggml-large-v3-turbo-q8_0.bin"
FULL = "gemma-3-4b-it-Q4_K_M.gguf"
SHARE = 0.38  # where a download stands in its picture
PIECE = bytes(1 << 20)

# What the KDE desktop stores, which Qt reads by itself.
DARK = """[Colors:Window]
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
LARGE = "font=DejaVu Sans,14,-1,5,50,0,0,0,0,0\n"


class Look:
    """What the desktop looks like, and where its pictures go."""

    def __init__(self, folder, manner, scale):
        self.folder = folder
        # What the pictures' names end with.
        self.words = [word for word in manner.split("-") if word not in ("light", "refused")]
        self.scale = int(scale)

    def path(self, name):
        return f"{self.folder}/{'-'.join([name, *self.words])}{'@2x' if self.scale == 2 else ''}.png"

    def apply(self):
        """Before the first program starts."""
        settings = "[General]\nwidgetStyle=Fusion\n"
        settings += LARGE if "large" in self.words else ""
        settings += DARK if "dark" in self.words else ""
        if len(settings.splitlines()) == 2:
            return
        folder = pathlib.Path(os.environ["XDG_CONFIG_HOME"])
        folder.mkdir(parents=True, exist_ok=True)
        (folder / "kdeglobals").write_text(settings)
        os.environ.update(XDG_CURRENT_DESKTOP="KDE", KDE_SESSION_VERSION="5", QT_QPA_PLATFORMTHEME="kde")


class Web(http.server.ThreadingHTTPServer):
    """The models' host, which stops in mid-file or breaks; and a site that takes feedback or refuses it."""

    daemon_threads = True

    def __init__(self, port=0):
        super().__init__(("127.0.0.1", port), Handler)
        self.broken = False
        self.status = 200
        self.update = None  # (version, changelog) on offer
        threading.Thread(target=self.serve_forever, daemon=True).start()

    @property
    def address(self):
        return f"http://127.0.0.1:{self.server_port}"


class Handler(windows.Handler):
    def do_GET(self):
        if self.path == "/api/tags":
            return self.answer(200, b'{"models": [{"name": "gemma3:4b"}]}')
        if self.path == "/updates.json" and self.server.update:
            return self.answer(200, self.feed(*self.server.update))
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

    def feed(self, version, changelog):
        return json.dumps({"version": version, "changelog": changelog, "url": f"{self.server.address}/Parlivo.zip",
                           "size": 1, "date": "2026-11-21", "sha256": "0" * 64}).encode()

    def do_POST(self):
        self.rfile.read(int(self.headers["Content-Length"]))
        self.answer(self.server.status, b"{}")


class Session:
    """One run of the program, from an empty home."""

    look = None  # of every session

    def __init__(self, settings, *arguments, models=(), display=None, update=None, **environment):
        self.web = Web()
        self.web.update = update
        subprocess.run(["rm", "-rf", str(windows.data_folder())], check=True)
        store(settings)
        models_folder().mkdir(parents=True)
        self.put_models(models)
        if display:
            environment["DISPLAY"] = display
        self.display = display
        self.program = Program(self.web, *arguments, **environment)

    def put_models(self, names):
        """Empty ones of the right size."""
        for name in names:
            with open(models_folder() / name, "wb") as file:
                file.truncate(SIZES[name])

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.program.end()
        self.web.shutdown()

    def picture(self, name, window, find=None, described=True):
        """Takes a picture of a window once it has stopped changing. `find` tells its number; None without one."""
        environment = dict(os.environ, **({"DISPLAY": self.display} if self.display else {}))
        path = self.look.path(name)
        before = number = None

        def by_title():
            search = ["xdotool", "search", "--onlyvisible", "--name", f"^{window}$"]
            numbers = subprocess.run(search, capture_output=True, text=True, env=environment, check=False).stdout.split()
            return numbers[-1] if numbers else None

        def still():
            """Two pictures running are the same; a window that goes meanwhile gives none."""
            nonlocal before, number
            number = (find or by_title)()
            grab = ["import", "-window", str(number), "-depth", "8", "-define", "png:compression-level=9", path]
            if not number or subprocess.run(grab, check=False, env=environment).returncode != 0:
                before = None
                return False
            now = subprocess.run(["identify", "-format", "%#", path], check=True, capture_output=True).stdout
            same, before = (number, now) == before, (number, now)
            return same
        wait_for(f"a still picture of {window}", still)
        where = subprocess.run(["xdotool", "getwindowgeometry", "--shell", number], check=True, capture_output=True,
                               text=True, env=environment).stdout
        place = dict(line.split("=") for line in where.split())
        self.check_place(path, *(int(place[key]) for key in ("X", "Y", "WIDTH", "HEIGHT")))
        if described and window != "Usa questa cartella":  # the toolkit's, or the desktop's
            corner = int(place["X"]), int(place["Y"])
            controls = wait_for("the controls", lambda: self.controls(*corner))
            pathlib.Path(path).with_suffix(".json").write_text(json.dumps(controls))
        # Few colours are enough for flat drawings, and make small files.
        subprocess.run(["convert", path, "-strip", "+dither", "-colors", "255", f"PNG8:{path}"], check=True)
        print(path)

    def check_place(self, path, left, top, width, height):
        screen = subprocess.run(["xdotool", "getdisplaygeometry"], check=True, capture_output=True, text=True).stdout
        right, bottom = map(int, screen.split())
        if left < 0 or top < 0 or left + width > right or top + height > bottom:
            print(f"{path}: {width}x{height} at {left},{top} sticks out of the screen")

    def alert(self, name, button, described=True):
        """Takes a picture of the alert with this button; `described` only without another window around it."""
        self.program.explained("the alert's button", lambda: self.program.find(button))
        # Another window of the program may have the same title; one of a former run may be about to go.
        _, title = wait_for("the alert's window", self.active_window)
        self.picture(name, title, lambda: (self.active_window() or (None,))[0], described)

    def active_window(self):
        return active_window(self.program.process.pid)

    def controls(self, left, top):
        """Where they are in a picture of the window at this corner, for tools/contrast."""
        controls = []
        scale = self.look.scale
        for item in self.program.everything():
            role = item.get_role_name()
            named = role in windows.CONTROLS | {"label", "progress bar"} and item.get_name()
            if not named and role != "scroll bar":
                continue
            place = extents(item)
            if is_cut_off(item, place):
                continue
            enabled = windows.has(item, Atspi.StateType.ENABLED)
            controls.append({"role": role, "name": item.get_name(), "state": "" if enabled else "disabled ",
                             "area": [place.x * scale - left, place.y * scale - top, place.width * scale,
                                      place.height * scale]})
        return controls


def active_window(process):
    """(number, title) if it is this process's."""
    def ask(*question):
        run = subprocess.run(["xdotool", *question], capture_output=True, text=True, check=False)
        return run.stdout.strip() if run.returncode == 0 else ""
    number = ask("getactivewindow")
    title = number and ask("getwindowname", number)
    return (number, title) if title and ask("getwindowpid", number) == str(process) else None


def extents(item):
    if not item.get_component_iface():
        raise GLib.Error("it has just gone")
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


