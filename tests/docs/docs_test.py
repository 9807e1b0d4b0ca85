#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Does what the documents say, word for word: their commands are run, their options and files looked for.

usage: docs_test.py BUILD_FOLDER [CASE...]

Needs a desktop of its own with sound (tests/support/desktop) in a world of its own (tests/support/isolated).
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

TIMEOUT = 60
PROJECT = pathlib.Path(__file__).resolve().parents[2]
MANUAL = (PROJECT / "docs/manual.md").read_text()
MANUAL_PAGE = (PROJECT / "docs/parlivo.1").read_text()
# Documents about the project, not the program.
ITALIAN_MANUAL = (PROJECT / "docs/manuale.md").read_text()
ITALIAN_PAGE = (PROJECT / "docs/parlivo.it.1").read_text()
PROJECT_DOCUMENTS = {name: (PROJECT / name).read_text()
                     for name in ("README.md", "CONTRIBUTING.md", "docs/manual.md", "docs/manuale.md")}


def manual_commands(manual=MANUAL):
    blocks = re.findall(r"^```sh\n(.*?)^```", manual, re.M | re.S)
    return [line for block in blocks for line in block.splitlines()]


def manual_page_commands(page=MANUAL_PAGE):
    blocks = re.findall(r"^\.EX\n(.*?)^\.EE", page, re.M | re.S)
    return [line.replace(r"\-", "-") for block in blocks for line in block.splitlines()]


def project_commands():
    """The commands of the project that its documents name: in lines of their own and in the text."""
    for name, text in PROJECT_DOCUMENTS.items():
        lines = re.findall(r"^    (\S.*)$", text, re.M) + re.findall(r"`([^`\n]+)`", text)
        for line in lines:
            words = line.removeprefix("sudo ").split()
            if re.fullmatch(r"\./\w+|tools/\w[\w-]*|tests/(support|package)/\w+", words[0]) and "." not in words[0][1:]:
                # What follows after two blanks explains.
                command = re.split(r"\s{2,}", line.removeprefix("sudo "))[0].split()
                yield name, command


class DocsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        folder = pathlib.Path(cls.folder.name)
        subprocess.run(["cmake", "--install", BUILD, "--prefix", folder / "installed", "--strip"], check=True,
                       stdout=subprocess.DEVNULL)
        subprocess.run([PROJECT / "tools/package", "zip", "--build", BUILD, "--output", folder], check=True,
                       stdout=subprocess.DEVNULL)
        cls.settle()
        cls.environment = dict(os.environ, PATH=f"{folder / 'installed/bin'}:{os.environ['PATH']}")

    @staticmethod
    def settle():
        """The first start lies behind the user."""
        settings = pathlib.Path(os.environ["XDG_CONFIG_HOME"], "Parlivo/Parlivo.json")
        settings.parent.mkdir(parents=True, exist_ok=True)
        settings.write_text('{"onboardingDone": true, "cleanupLevel": "none"}')
        models = pathlib.Path.home() / "Projects/Parlivo/models"
        models.mkdir(parents=True)
        shutil.copy(PROJECT / "resources/demo/ggml-model.bin", models / "ggml-large-v3-turbo-q8_0.bin")

    def run_shell(self, line, **more):
        return subprocess.run(["bash", "-c", line], cwd=self.folder.name, env=self.environment, capture_output=True,
                              text=True, timeout=TIMEOUT, **more)

    def start_program(self):
        program = subprocess.Popen(["parlivo"], env=self.environment)
        self.addCleanup(program.wait, TIMEOUT)
        self.addCleanup(self.run_shell, "parlivo --quit")
        end = time.monotonic() + TIMEOUT
        while self.run_shell("parlivo --release").returncode != 0:
            self.assertLess(time.monotonic(), end, "the program does not answer")
            time.sleep(0.1)

    def run_all(self, commands):
        self.assertGreater(len(commands), 2)
        self.start_program()
        for command in commands:
            outcome = self.run_shell(command)
            self.assertEqual(outcome.returncode, 0, f"{command}\n{outcome.stdout}{outcome.stderr}")

    def test_commands_of_the_manual(self):
        self.run_all(manual_commands())

    def test_commands_of_the_manual_page(self):
        self.run_all(manual_page_commands())

    def test_commands_of_the_italian_documents(self):
        self.run_all(manual_commands(ITALIAN_MANUAL) + manual_page_commands(ITALIAN_PAGE))

    def test_the_page_that_the_settings_open_is_the_manual(self):
        subprocess.run([PROJECT / "tools/manual-page", "--check"], check=True)
        page = (PROJECT / "resources/help/manuale.html").read_text()
        for picture in re.findall(r'<img src="([^"]+)"', page):
            self.assertTrue((PROJECT / "resources/help" / picture).exists(), picture)

    def test_the_program_can_be_ended_as_told(self):
        self.assertIn("`parlivo --quit` ends", MANUAL)
        self.start_program()
        self.assertEqual(self.run_shell("parlivo --quit").returncode, 0)
        end = time.monotonic() + TIMEOUT
        while self.run_shell("parlivo --release").returncode == 0:
            self.assertLess(time.monotonic(), end, "the program does not end")

    def test_options(self):
        told = set(re.findall(r"^  (--\w+)", self.run_shell("parlivo --help").stdout, re.M))
        self.assertGreater(len(told), 5)
        section = MANUAL_PAGE.split(".SH OPTIONS")[1].split(".SH EXIT")[0].replace(r"\-", "-")
        self.assertEqual(set(re.findall(r"^\.TP\n\.B (--\w+)", section, re.M)), told)
        section = ITALIAN_PAGE.split(".SH OPZIONI")[1].split(".SH STATO")[0].replace(r"\-", "-")
        self.assertEqual(set(re.findall(r"^\.TP\n\.B (--\w+)", section, re.M)), told)
        self.assertEqual(set(re.findall(r"parlivo (--\w+)", MANUAL)), told)

    def test_commands_of_the_project(self):
        commands = list(project_commands())
        self.assertIn(("README.md", ["./run"]), commands)
        self.assertIn(("README.md", ["./test"]), commands)
        for document, (command, *arguments) in commands:
            path = PROJECT / command
            self.assertTrue(os.access(path, os.X_OK), f"{document}: {command}")
            options = [word for word in arguments if word.startswith("--")]
            if options:
                said = subprocess.run([path, "--help"], capture_output=True, text=True, check=True).stdout
                for option in options:
                    self.assertIn(option, said, f"{document}: {command} {option}")

    def test_links_and_files(self):
        for document, text in PROJECT_DOCUMENTS.items():
            folder = (PROJECT / document).parent
            for target in re.findall(r"\]\((?!https?:)([^)#]+)", text):
                self.assertTrue((folder / target).exists(), f"{document}: {target}")
            for path in re.findall(r"`((?:docs|src|tests|tools|resources|bench)/[\w./-]*)", text):
                self.assertTrue((PROJECT / path).exists(), f"{document}: {path}")

    def test_names_of_the_code(self):
        listed = subprocess.run(["git", "-C", PROJECT, "ls-files", "-z", "--", "src", "tests", "cmake", "tools"],
                                capture_output=True, check=True).stdout.decode()
        code = "".join((PROJECT / name).read_text(errors="replace") for name in listed.split("\0")
                       if pathlib.Path(name).suffix in {".cpp", ".h", ".cmake", ".txt"})
        for document in ("CONTRIBUTING.md", "docs/architecture.md"):
            for name in re.findall(r"`([A-Za-z_][\w:]*)(?:\(\))?`", (PROJECT / document).read_text()):
                self.assertIn(name.split("::")[-1], code, f"{document} names `{name}`")

    def test_every_thread_has_its_row(self):
        names = set()
        for source in (PROJECT / "src").rglob("*.[ch]*"):
            names |= set(re.findall(r'"(parlivo\.(?!qm")[a-z]+)"', source.read_text()))
        self.assertGreater(len(names), 5)
        table = (PROJECT / "docs/architecture.md").read_text().split("## Threads")[1].split("\n\n- ")[0]
        for name in names:
            self.assertTrue(f"`{name}`" in table or f"`.{name.split('.')[1]}`" in table, f"the table lacks {name}")

    def test_the_version_is_told_everywhere(self):
        version = re.search(r"project\(Parlivo VERSION ([\d.]+)", (PROJECT / "CMakeLists.txt").read_text())[1]
        self.assertIn(f"\n## {version}\n", (PROJECT / "CHANGELOG.md").read_text())
        self.assertIn(f'"Parlivo {version}"', MANUAL_PAGE)
        self.assertIn(f'"Parlivo {version}"', ITALIAN_PAGE)
        self.assertEqual(set(re.findall(r"[Pp]arlivo[-_](\d[\d.]*\d)", MANUAL)), {version})


def main():
    global BUILD
    BUILD = sys.argv[1]
    unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)


if __name__ == "__main__":
    main()
