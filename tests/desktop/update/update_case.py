# SPDX-License-Identifier: MIT
"""What the tests of updates share: the product's site, the running program seen from outside, the user's files."""
import hashlib
import http.server
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import threading
import unittest

sys.path.insert(1, str(pathlib.Path(__file__).resolve().parents[1] / "windows"))
import windows  # noqa: E402
from gi.repository import Atspi, Gio, GLib  # noqa: E402
from panel import Panel  # noqa: E402
from windows import DEMO, TIMEOUT, settings_file, wait_for  # noqa: E402

PROJECT = pathlib.Path(__file__).resolve().parents[3]
NAME = "it.parlivo.Parlivo"
BIG = 8 << 20
NEWS = "Più veloce.\nE capisce «perché»."
ENGINE_TIMEOUT = 200  # on a machine that is busy with everything else


class Site(http.server.ThreadingHTTPServer):
    """The product's site: a feed and an archive."""

    def __init__(self, version, archive):
        self.pages = {"/Parlivo.zip": archive}
        self.held = {}  # paths whose second half waits for an event
        super().__init__(("127.0.0.1", 0), Answer)
        self.address = f"http://127.0.0.1:{self.server_port}"
        self.pages["/updates.json"] = json.dumps({
            "version": version, "url": f"{self.address}/Parlivo.zip", "changelog": NEWS, "size": len(archive),
            "date": "2026-11-21", "sha256": hashlib.sha256(archive).hexdigest(), "further": [1, 2]}).encode()
        threading.Thread(target=self.serve_forever, daemon=True).start()


class Answer(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        page = self.server.pages.get(self.path)
        self.send_response(404 if page is None else 200)
        self.send_header("Content-Length", str(len(page or b"")))
        self.end_headers()
        half = len(page or b"") // 2
        self.wfile.write((page or b"")[:half])
        if self.path in self.server.held:
            self.server.held[self.path].wait()
        try:
            self.wfile.write((page or b"")[half:])
        except OSError:  # the program was killed
            self.close_connection = True

    def log_message(self, *_):
        pass


# --- the running program, from outside ----------------------------------------------------------------------

def ask_bus(path, interface, method, *arguments, name=NAME):
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    values = GLib.Variant("(" + "s" * len(arguments) + ")", arguments)
    return bus.call_sync(name, path, interface, method, values, None, Gio.DBusCallFlags.NO_AUTO_START, 10_000).unpack()


def property_of_program(name):
    return ask_bus("/it/parlivo/Parlivo", "org.freedesktop.DBus.Properties", "Get", "it.parlivo.Parlivo1", name)[0]


def quit_program():
    ask_bus("/it/parlivo/Parlivo", "it.parlivo.Parlivo1", "Quit")


def running_process():
    """The process that has the program's name on the bus."""
    return ask_bus("/org/freedesktop/DBus", "org.freedesktop.DBus", "GetConnectionUnixProcessID", NAME,
                   name="org.freedesktop.DBus")[0]


def seen(process):
    """All that a screen reader finds of a process on the screen."""
    desktop = Atspi.get_desktop(0)
    for i in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(i)
        if application and application.get_process_id() == process:
            yield from windows.showing(application)


def labels(process):
    return {item.get_name() for item in seen(process) if item.get_role_name() == "label"}


def press(process, words):
    def pressed():
        for item in seen(process):
            if item.get_name() == words and windows.role_of(item) == "push button":
                return item.do_action(0) or True
        return False
    wait_for(f"the button “{words}”", pressed)


# --- the user's files ---------------------------------------------------------------------------------------

def digest(folder):
    """Every file of a folder -> its content."""
    return {str(path.relative_to(folder)): hashlib.sha256(path.read_bytes()).hexdigest()
            for path in sorted(folder.rglob("*")) if path.is_file()}


def fingerprint(folder):
    """All that is in a folder -> kind, mode, time and content."""
    found = {}
    for path in sorted(folder.rglob("*")):
        status = path.lstat()
        content = os.readlink(path) if path.is_symlink() else path.is_file() and hashlib.sha256(path.read_bytes()).digest()
        found[str(path.relative_to(folder))] = status.st_mode, status.st_mtime_ns, content
    return found


class Ballast:
    """Leaves so many bytes free on the disk of the temporary files."""

    def __init__(self, left):
        folder = pathlib.Path(os.environ["TMPDIR"])
        free = os.statvfs(folder)
        with open(folder / "zavorra", "wb") as ballast:
            ballast.write(bytes(free.f_bavail * free.f_frsize - left))


class UpdateCase(unittest.TestCase):
    folder = "HOME"  # whose disk the bundle is on
    package_options = ("--no-libraries",)  # a tenth of the size: most of an update does not depend on it

    def setUp(self):
        self.scratch = pathlib.Path(tempfile.mkdtemp(dir="/tmp"))
        self.addCleanup(shutil.rmtree, self.scratch)
        self.processes = []
        self.addCleanup(self.end_all)
        self.panel = Panel()
        self.home = pathlib.Path(os.environ[self.folder], "Le mie \"app\" d'oro; $(touch pwned) `touch pwned`")
        self.bundle = self.home / "Parlivo.app"
        self.install()
        self.settle()
        self.archive = self.make_newer()

    def install(self):
        subprocess.run([PROJECT / "tools/package", "zip", *self.package_options, "--build", windows.PROGRAM, "--output",
                        self.scratch], check=True)
        archives = list(self.scratch.glob("Parlivo-*-linux-x86_64.zip"))
        self.assertEqual(len(archives), 1)
        self.version = archives[0].name.split("-")[1]
        self.newer = self.version + ".1"
        self.home.mkdir(parents=True)
        subprocess.run(["unzip", "-q", archives[0], "-d", self.home], check=True)

    def settle(self):
        """Settings and models of somebody who has used the program for a while."""
        settings_file().parent.mkdir(parents=True)
        settings_file().write_text(json.dumps({
            "onboardingDone": True, "cleanupLevel": "none", "dictionary": "Parlivo\nGiulia", "dictationCount": 7,
            "ofAnotherVersion": 1}))
        developers = pathlib.Path.home() / "Projects/Parlivo/models"
        developers.mkdir(parents=True)
        shutil.copy(DEMO / "ggml-model.bin", developers / "ggml-large-v3-turbo-q8_0.bin")
        self.data = pathlib.Path(os.environ["XDG_DATA_HOME"], "Parlivo")
        (self.data / "models").mkdir(parents=True)
        shutil.copy(DEMO / "cleanup.gguf", self.data / "models/qwen2.5-1.5b-instruct-q4_k_m.gguf")
        (self.data / "prompt.txt").write_text("Solo punteggiatura.")

    def make_newer(self):
        folder = self.scratch / "newer"
        contents = folder / "Parlivo.app/Contents"
        shutil.copytree(self.bundle, folder / "Parlivo.app", symlinks=True)
        plist = contents / "Info.plist"
        plist.write_text(plist.read_text().replace(f"<string>{self.version}</string>",
                                                   f"<string>{self.newer}</string>"))
        self.change(contents)
        subprocess.run(["zip", "-qry1", "../newer.zip", "Parlivo.app"], cwd=folder, check=True)
        self.expected = contents.parent
        return (self.scratch / "newer.zip").read_bytes()

    def change(self, contents):
        """What the newer version has and what it has no more."""
        (contents / "Resources/novità.txt").write_text("eccomi")
        (contents / "Resources/help/microfono.html").unlink()

    def open_site(self):
        site = Site(self.newer, self.archive)
        self.addCleanup(site.server_close)
        self.addCleanup(site.shutdown)
        return site

    def command(self):
        return [self.bundle / "Contents/MacOS/Parlivo"]

    def in_mounts_of_its_own(self, preparation):
        """The program's command after a shell command that mounts something for its eyes only; $1 is the bundle."""
        script = f'{preparation} && exec setpriv --inh-caps=-all --ambient-caps=-all "$1/Contents/MacOS/Parlivo"'
        # Root needs no user namespace for that, and gets none in a chroot.
        rights = [] if os.geteuid() == 0 else ["--user", "--map-current-user", "--keep-caps"]
        return ["unshare", *rights, "--mount", "sh", "-c", script, "sh", self.bundle]

    def start(self, address, **more):
        environment = dict(os.environ, PARLIVO_SITE_BASE=address, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", **more)
        process = subprocess.Popen(self.command(), env=environment)
        self.processes.append(process)
        wait_for("the program on the bus", lambda: running_process() == process.pid)
        wait_for("its state", lambda: property_of_program("State") == "idle")
        return process

    def end_all(self):
        for process in self.processes:
            if process.poll() is None:
                process.terminate()
                process.wait(TIMEOUT)
        try:
            quit_program()
        except GLib.Error:  # it has ended
            pass

    def accept_offer(self, process):
        line = f"⬆️ Aggiorna a Parlivo {self.newer}…"
        wait_for("the update in the menu", lambda: line in self.panel.lines())
        self.panel.choose(line)
        wait_for("the offer", lambda: {f"Parlivo {self.newer} è disponibile",
                                       f"Novità:\n{NEWS}\n\nL'app si riavvierà da sola al termine."} <= labels(process.pid))
        press(process.pid, "Aggiorna ora")

    def assert_nothing_left(self):
        self.assertEqual(list(pathlib.Path(os.environ["TMPDIR"]).glob("*parlivo-*")), [])
        self.assertEqual([path.name for path in self.home.iterdir() if path.name not in ("Parlivo.app", "pwned")], [])
        for folder in (pathlib.Path.cwd(), self.home, pathlib.Path.home()):
            self.assertFalse((folder / "pwned").exists(), folder)


class InterruptedCase(UpdateCase):
    """The program ends in the middle of an update, and is started again."""

    def start_update(self, site, step=""):
        program = self.start(site.address, **windows.halting_at(pathlib.Path(windows.PROGRAM), step))
        self.accept_offer(program)
        return program

    def leftovers(self):
        return [path for folder in (pathlib.Path(os.environ["TMPDIR"]), self.home)
                for pattern in ("parlivo-*", ".parlivo-*") for path in folder.glob(pattern)]

    def kill(self, program):
        left = self.leftovers()
        program.kill()
        program.wait()
        return left

    def assert_it_starts_and_cleans_up(self, site, version):
        program = self.start(site.address)
        self.assertEqual(property_of_program("Version"), version)
        wait_for("the left-overs to go", lambda: not self.leftovers())
        quit_program()
        program.wait(TIMEOUT)

    def assert_the_old_version_starts(self, site, before):
        self.assertEqual(digest(self.bundle), before)
        self.assert_it_starts_and_cleans_up(site, self.version)

    def hold_half_of_the_archive(self, site):
        site.held["/Parlivo.zip"] = threading.Event()
        program = self.start_update(site)
        temporary = pathlib.Path(os.environ["TMPDIR"])
        wait_for("half of the archive", lambda: [path for path in temporary.glob("parlivo-update-*.zip")
                                                 if path.stat().st_size >= len(self.archive) // 2])
        return program

    def halt(self, site, step):
        program = self.start_update(site, step)
        wait_for(step, lambda: program.pid in windows.halted("Parlivo"))
        return program
