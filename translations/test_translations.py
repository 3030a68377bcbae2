# SPDX-License-Identifier: Apache-2.0
"""Every text for people is translated, and the translations fit the texts."""

from __future__ import annotations

import re
import shutil
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

FOLDER = Path(__file__).resolve().parent
COMMITTED = FOLDER / "velno_tr.ts"


def _messages() -> list[tuple[str, str]]:
    """Text and translation of each message."""
    found = []
    for message in ElementTree.parse(COMMITTED).iter("message"):
        found.append((message.findtext("source", ""), message.findtext("translation", "")))
    return found


def _placeholders(text: str) -> list[str]:
    return sorted(re.findall(r"%[0-9n]", text))


def _typed(text: str) -> list[str]:
    """Options, paths and example values: what a user types is no language."""
    return sorted(set(re.findall(r"--[a-z-]+|[a-z-]+\.[a-z]{2,}|[0-9a-z]+=[A-Z0-9]+|0x[0-9A-F]+", text)))


class Translations(unittest.TestCase):
    def test_nothing_is_new_and_nothing_is_left_over(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            updated = Path(folder) / "velno_tr.ts"
            shutil.copy(COMMITTED, updated)
            subprocess.run([FOLDER / "update", updated], check=True, stderr=subprocess.DEVNULL)
            self.assertEqual(updated.read_text("utf-8"), COMMITTED.read_text("utf-8"),
                             "run translations/update, and translate what is new")

    def test_everything_is_translated(self) -> None:
        self.assertGreater(len(_messages()), 40)
        self.assertNotIn("type=\"", COMMITTED.read_text("utf-8"))
        for text, translation in _messages():
            with self.subTest(text):
                self.assertTrue(translation)

    def test_translations_have_the_shape_of_their_texts(self) -> None:
        for text, translation in _messages():
            with self.subTest(text):
                self.assertEqual(_placeholders(translation), _placeholders(text))
                self.assertEqual(translation.count("\n"), text.count("\n"))
                self.assertEqual(re.match(r"\s*", translation)[0], re.match(r"\s*", text)[0])  # type: ignore
                self.assertEqual(translation.endswith((" ", "\n")), text.endswith((" ", "\n")))
                self.assertEqual(_typed(translation), _typed(text))


if __name__ == "__main__":
    unittest.main()
