"""The window in the user's language: what is shown is translated, what is stored and printed is not."""
import pathlib
import tempfile
import unittest

import harness

FILES = {"Lease agreement.pdf": "lease", "photos/IMG_2031.jpg": "picture"}
GERMAN = {"LC_ALL": "de_DE.UTF-8", "LANGUAGE": ""}


def setUpModule():
    global desk
    desk = harness.Desk()


def tearDownModule():
    desk.close()


class Language(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="language-")
        self.addCleanup(temporary.cleanup)
        self.home = pathlib.Path(temporary.name)
        self.folder = self.home / "Downloads"
        harness.tree(self.folder, FILES)

    def start(self, environment):
        return desk.start(self.folder, home=self.home, environment=environment)

    def test_german_is_shown_and_english_is_stored(self):
        with self.start(GERMAN) as window:
            window.wait("2 vorgeschlagen")
            window.press("2 Dateien einsortieren…")
            window.wait("Diese Dateien einsortieren?")
            window.press("2 Dateien einsortieren")
            window.wait("Zuletzt 2 Dateien einsortiert.")
            window.press("Verlauf")
            window.wait("2 Dateien in „Downloads“ einsortiert")
        self.assertEqual(harness.listing(self.folder),
                         ["ordovan+/Documents/Lease agreement.pdf", "ordovan+/Images/IMG_2031.jpg"])
        history = harness.command_line(self.home, "history")
        self.assertEqual([record["summary"] for record in history["records"]], ["Organized 2 files in Downloads"])
        stored = "".join(file.read_text() for file in (self.home / ".local/share/ordovan").rglob("*.json"))
        self.assertNotIn("einsortiert", stored)

    def test_the_first_language_of_the_list_that_there_is_counts(self):
        with self.start({"LC_ALL": "fr_FR.UTF-8", "LANGUAGE": "fr:de:en"}) as window:
            window.wait("2 vorgeschlagen")

    def test_without_a_translation_texts_are_english(self):
        with self.start({"LC_ALL": "fr_FR.UTF-8", "LANGUAGE": ""}) as window:
            window.wait("2 proposed · 0 need review")


if __name__ == "__main__":
    harness.main(needs_command_line=True)
