#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Tests of the texts that the user sees, as they stand in the sources: each is one literal in a translatable call,
so that a search finds it and Qt's lupdate can collect it for a translation."""

import collections
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
TRANSLATED = re.compile(rf'\b(?:tr|QT_TRANSLATE_NOOP|translate)\(\s*(?:"parlivo::\w+",\s*)?(?!"parlivo::)({LITERAL})(?!\s*,\s*")')

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


# Words that are wrong on any other system.
ONLY_ON_MACOS = re.compile(r"[⌥⌃⌘⇧]|\bMac\b|\bmacOS\b|barra dei menu|attiva Parlivo nell'elenco")


def messages(catalogue):
    """(context, source text) -> translation, of a file of Qt's translations."""
    return {(context.findtext("name"), message.findtext("source")): message.findtext("translation")
            for context in ElementTree.parse(catalogue).getroot().iter("context") for message in context.iter("message")}


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
            texts = self.collected(folder).keys()
        contexts = {context for context, _ in texts}
        found = {text for _, text in texts}
        self.assertEqual(found, written)
        for context in contexts:
            self.assertRegex(context, r"^parlivo::\w+$")

    def collected(self, folder):
        """The texts of the sources, as (context, text)."""
        result = Path(folder) / "texts.ts"
        run = subprocess.run([LUPDATE, "-silent", "-locations", "none", PROJECT / "src", "-ts", result],
                             capture_output=True, text=True, check=True)
        self.assertNotIn("Q_OBJECT", run.stderr)
        return messages(result)

    def test_linux_has_words_of_its_own_for_what_is_true_on_macos_only(self):
        with tempfile.TemporaryDirectory() as folder:
            texts = self.collected(folder).keys()
        linux = messages(PROJECT / "translations/parlivo_linux.ts")
        self.assertEqual(linux.keys() - texts, set(), "no such text in the sources")
        untrue = {(context, text) for context, text in texts if ONLY_ON_MACOS.search(text)}
        self.assertGreater(len(untrue), 8)
        self.assertEqual(untrue - linux.keys(), set())
        for translation in linux.values():
            self.assertIsNone(ONLY_ON_MACOS.search(translation), translation)

    def test_the_key_is_named_by_its_title_on_linux(self):
        for (context, text), translation in messages(PROJECT / "translations/parlivo_linux.ts").items():
            if context != "parlivo::HotKeyManager":
                self.assertEqual(text.count("⌥Spazio"), translation.count("%1"), text)

    def test_alt_reaches_each_control_of_a_page_by_a_letter_of_its_own(self):
        pages = {"GeneralTab": (), "DictationTab": ("MicrophonePicker", "KeyCaptureButton", "TierPicker"),
                 "CleanupTab": ("TierPicker",), "DictionaryTab": ()}
        # The permissions' two buttons and the foot's three stand for every page.
        first_run = ("FolderPage", "DownloadPage", "MicrophoneMeter", "ReadyPage")
        letters = collections.defaultdict(list)
        for (context, text), translation in messages(PROJECT / "translations/parlivo_linux.ts").items():
            marked = re.findall(r"&(\w)", translation)
            self.assertLessEqual(len(marked), 1, translation)
            if marked and text != "Apri Impostazioni" and context != "parlivo::FeedbackView":
                self.assertEqual(translation.replace("&", ""), text, "what is read stays the same")
            letters[context.removeprefix("parlivo::")] += [letter.lower() for letter in marked]
        self.assertEqual(len(letters["SettingsView"]), 4)
        for page, parts in pages.items():
            self.assert_different(letters, ("SettingsView", page, *parts))
        for page in first_run:
            self.assert_different(letters, ("OnboardingView", page))

    def assert_different(self, letters, parts):
        used = [letter for part in parts for letter in letters[part]]
        self.assertEqual(len(used), len(set(used)), f"{parts}: {used}")

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
