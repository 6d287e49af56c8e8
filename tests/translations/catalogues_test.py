"""The translations have a finished text for every text of the sources and none that is no more, and say what it says:
the same insertions, mnemonics and punctuation that the layout relies on."""
import filecmp
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
FOLDER = ROOT / "OrdovanApp/translations"
sys.dont_write_bytecode = True


LITERAL = re.compile(r'(?:u|QStringLiteral\()"((?:\\.|[^"\\])*)"')
NO_TEXTS = {"ordovan+", "Markdown (*.md)", "CSV (*.csv)", "ShowItems", "ShowFolders", "SettingChanged", "ReadAll",
            "POSIX", "Fusion", "MM…", "Sans", "Sans Serif", "DejaVu Sans", "Bitstream Vera Sans", "Liberation Sans",
            "Inter", "Cantarell", "Noto Sans"}


class Message:
    def __init__(self, context, element):
        self.context = context
        self.source = element.findtext("source")
        translation = element.find("translation")
        self.is_finished = translation is not None and translation.get("type") is None
        self.has_plural = element.get("numerus") == "yes"
        self.texts = [form.text or "" for form in translation.iter("numerusform")] or [translation.text or ""]

    def __str__(self):
        return "%s: %s -> %s" % (self.context, self.source, self.texts)


def messages(file):
    root = xml.etree.ElementTree.parse(file).getroot()
    return [Message(context.findtext("name"), element) for context in root.iter("context")
            for element in context.iter("message")]


def insertions(text):
    return sorted(set(re.findall(r"%L?[1-9n]", text)))


class Catalogues(unittest.TestCase):
    def each(self):
        for file in sorted(FOLDER.glob("ordovan_*.ts")):
            for message in messages(file):
                for text in message.texts:
                    yield message, text

    def test_are_those_of_the_sources(self):
        with tempfile.TemporaryDirectory() as folder:
            for file in FOLDER.glob("*.ts"):
                shutil.copy(file, folder)
            subprocess.run([ROOT / "scripts/translations", folder], check=True, capture_output=True)
            for file in FOLDER.glob("*.ts"):
                self.assertTrue(filecmp.cmp(file, pathlib.Path(folder) / file.name, shallow=False),
                                "%s is not that of the sources; run scripts/translations" % file.name)

    def test_leave_out_no_text_of_the_window(self):
        """A literal that reads like a text is one, unless it is known not to be."""
        for folder in ("screens", "models", "theme"):
            for file in sorted((ROOT / "OrdovanApp" / folder).glob("*.[ch]*")):
                for literal in LITERAL.findall(file.read_text()):
                    reads = re.search(r"[A-Za-z]{2}", literal) and re.search(r"^[A-Z]|^[^<]*[a-z] [a-z]", literal)
                    self.assertTrue(not reads or literal in NO_TEXTS, "%s: %s is not translated" % (file.name, literal))

    def test_are_finished(self):
        for message, text in self.each():
            self.assertTrue(message.is_finished and text.strip(), message)

    def test_are_many_enough(self):
        self.assertGreater(len(messages(FOLDER / "ordovan_de.ts")), 100)
        self.assertTrue(all(message.has_plural for message in messages(FOLDER / "ordovan_en.ts")))

    def test_keep_insertions(self):
        for message, text in self.each():
            self.assertEqual(insertions(text), insertions(message.source), message)

    def test_keep_mnemonics_and_ends(self):
        for message, text in self.each():
            self.assertEqual(text.count("&"), message.source.count("&"), message)
            self.assertEqual(text.endswith("…"), message.source.endswith("…"), message)
            self.assertEqual(text.endswith("."), message.source.endswith("."), message)
            self.assertEqual(text, text.strip(), message)
            self.assertNotIn("...", text, message)

    def test_say_the_same_of_the_same(self):
        """One text has one translation, wherever it stands."""
        known = {}
        for message in messages(FOLDER / "ordovan_de.ts"):
            self.assertEqual(known.setdefault(message.source, message.texts), message.texts, message)


if __name__ == "__main__":
    unittest.main()
