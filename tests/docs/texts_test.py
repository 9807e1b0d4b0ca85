#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Tests of the texts that the user sees, as they stand in the sources: each is one literal in a translatable call,
so that a search finds it and Qt's lupdate can collect it for a translation."""

import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
LUPDATE = Path("/usr/lib/qt6/bin/lupdate")
LITERAL = r'"(?:[^"\\]|\\.)*"'
TRANSLATED = re.compile(rf'\b(?:tr|QT_TRANSLATE_NOOP|translate)\(\s*(?:"parlivo::\w+",\s*)?({LITERAL})(?!\s*,\s*")')

# Where a sentence must be translatable. Words of the log, keys and names of files are not for the user's eyes.
# Adapters have few texts and many words of other programs; lupdate reads them all the same.
ROOMS = [path.name for path in (PROJECT / "src").iterdir() if path.is_dir() and path.name != "platform"]
SENTENCE = re.compile(rf'(?:u{LITERAL}_s|QStringLiteral\(\s*{LITERAL}\s*\))')
NOT_SHOWN = [
    r"Parlivo:? ?",  # the program's name
    r"QPushButton.*|QProgressBar.*",  # style sheets
    r"  %1 %2\\n",  # a line of --help, put together
    r"sottotitoli e revisione a cura di",  # compared with
    r"[:,\]] | Glossario: |yyyy-MM-dd HH:mm:ss.zzz",  # punctuation, formats
    r"Trascrizione in italiano, .*|.*ESATTAMENTE.*|.*\{TEXT\}.*",  # for the engines
    r"Parlivo: impossibile avviare whisper-server: ",  # for the system's log
]


def unescaped(literal):
    return literal[1:-1].replace("\\n", "\n").replace('\\"', '"').replace("\\\\", "\\")


def sources():
    for pattern in ("*.cpp", "*.h"):
        yield from (PROJECT / "src").rglob(pattern)


def code(path):
    return "\n".join(line for line in path.read_text().split("\n") if not line.lstrip().startswith(("//", "#include")))


class TextsTest(unittest.TestCase):
    def test_lupdate_finds_every_text(self):
        written = {unescaped(text) for path in sources() for text in TRANSLATED.findall(code(path))}
        self.assertGreater(len(written), 130)
        with tempfile.TemporaryDirectory() as folder:
            result = Path(folder) / "texts.ts"
            run = subprocess.run([LUPDATE, "-silent", "-locations", "none", PROJECT / "src", "-ts", result],
                                 capture_output=True, text=True, check=True)
            self.assertNotIn("Q_OBJECT", run.stderr)
            root = ElementTree.parse(result).getroot()
            contexts = [context.findtext("name") for context in root.iter("context")]
            found = {message.findtext("source") for message in root.iter("message")}
        self.assertEqual(found, written)
        for context in contexts:
            self.assertRegex(context, r"^parlivo::\w+$")

    def test_no_text_is_cut_into_pieces(self):
        cut = re.compile(rf'\btr\(\s*{LITERAL}\s*u?"')
        for path in sources():
            self.assertIsNone(cut.search(code(path)), path)

    def test_no_sentence_stands_outside_a_translatable_call(self):
        shown = []
        for room in ROOMS:
            for path in sorted((PROJECT / "src" / room).rglob("*.cpp")):
                for statement in re.split(r"[;{}]\n", code(path)):
                    if "Log::info" in statement or "qFatal" in statement:
                        continue
                    for match in SENTENCE.finditer(statement):
                        text = re.search(LITERAL, match.group(0)).group(0)[1:-1]
                        if " " in text and not any(re.fullmatch(known, text) for known in NOT_SHOWN):
                            shown.append(f"{path.name}: {text}")
        self.assertEqual(shown, [])


if __name__ == "__main__":
    if not LUPDATE.exists():
        sys.exit(f"texts_test: {LUPDATE} is missing; the package qt6-l10n-tools has it")
    unittest.main()
