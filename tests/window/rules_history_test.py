"""Own rules and the log of past runs, as a person keeps them; compared with what the command-line program has."""
import pathlib
import tempfile
import unittest

import harness
from harness import command_line

FILES = {"setup.dmg": "installer", "tool.pkg": "another", "plan.draft": "a type of nobody's", "letter.pdf": "letter"}


def setUpModule():
    global desk
    desk = harness.Desk()


def tearDownModule():
    desk.close()


class Records(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="records-")
        self.addCleanup(temporary.cleanup)
        self.base = pathlib.Path(temporary.name)
        self.home = self.base / "home"
        self.home.mkdir()
        self.folder = self.base / "Downloads"
        harness.tree(self.folder, FILES)


class Rules(Records):
    def rules(self):
        return [(rule["extensions"], rule["folderName"])
                for rule in command_line(self.home, "rules", "list")["rules"]]

    def folders(self):
        return [folder for _, folder in self.rules()]

    def add(self, window, extensions, folder):
        window.focus_on("Extensions, e.g. dmg, pkg", role="text")
        window.type(extensions)
        window.tab_to("Folder name, e.g. Installers")
        window.type(folder)
        window.press("Add Rule")

    def test_rules_are_added_ordered_obeyed_and_deleted(self):
        with desk.start(self.folder, home=self.home) as window:
            window.wait("4 proposed")
            window.press("Rules", role="list item")
            window.wait("No rules yet.")
            self.add(window, "dmg, PKG", "Programs")
            window.wait("→ Programs")
            self.assertEqual(self.rules(), [(["dmg", "pkg"], "Programs")])
            window.wait("Files in the folder you're previewing that this rule would send to Programs: 2")
            self.add(window, ".draft", "Drafts")
            window.wait("→ Drafts")
            window.wait("not a built-in type")
            self.add(window, "dmg", "Images of disks")
            window.wait("Files in the folder you're previewing that this rule would send to Images of disks: 0")
            self.assertEqual(self.folders(), ["Programs", "Drafts", "Images of disks"])

            self.reorder(window)
            window.press("Delete rule for Drafts")
            window.wait_gone("→ Drafts")
            self.assertEqual(self.folders(), ["Images of disks", "Programs"])
            self.assertEqual(harness.listing(self.folder), sorted(FILES), "rules move nothing")

            window.focus()
            window.key("ctrl+s")
            window.press("Organize 4 Files")
            window.wait("Last organize run moved 4 files.")
            self.assertEqual(harness.listing(self.folder),
                             ["ordovan+/Documents/letter.pdf", "ordovan+/Images of disks/setup.dmg",
                              "ordovan+/Other/plan.draft", "ordovan+/Programs/tool.pkg"])
        with desk.start(home=self.home) as window:
            window.press("Rules", role="list item")
            window.wait("→ Images of disks")
            window.press("Delete rule for Programs")
            window.press("Delete rule for Images of disks")
            window.wait("No rules yet.")
            self.assertEqual(self.rules(), [])

    def reorder(self, window):
        """The last rule goes to the top, and comes before the first in what it takes."""
        window.focus_on("→ Images of disks", role="list item")
        window.key("alt+Up")
        harness.until(lambda: self.folders() == ["Programs", "Images of disks", "Drafts"], "it did not go up")
        window.key("alt+Up")
        harness.until(lambda: self.folders() == ["Images of disks", "Programs", "Drafts"], "it did not go up again")
        window.wait("Files in the folder you're previewing that this rule would send to Images of disks: 1")
        window.wait("Files in the folder you're previewing that this rule would send to Programs: 1")
        window.key("alt+Up")
        window.key("alt+Down")
        harness.until(lambda: self.folders() == ["Programs", "Images of disks", "Drafts"], "it did not go down")
        window.key("alt+Up")
        harness.until(lambda: self.folders() == ["Images of disks", "Programs", "Drafts"], "it did not go back up")

    def test_a_refused_rule_says_why_and_is_kept_for_mending(self):
        with desk.start(home=self.home) as window:
            window.press("Rules", role="list item")
            self.add(window, "dmg", "a/b")
            refusal = "Folder names can't contain / or :, start with a dot, or be longer than 64 characters."
            window.control(refusal, role="label")
            self.assertEqual(self.rules(), [])
            window.press("Pick a folder name")
            window.press("Installers", role="menu item")
            harness.until(lambda: not window.find(refusal, role="label"), "the refusal stays")
            window.wait_gone("Built-in folders")
            window.press("Add Rule")
            window.control("→ Installers", role="list item")
            self.assertEqual(self.rules(), [(["dmg"], "Installers")])

    def test_the_built_in_types_can_be_looked_up(self):
        with desk.start(home=self.home) as window:
            window.press("Rules", role="list item")
            window.press("Show Built-in Types")
            window.focus_on("Search types, e.g. pdf", role="text")
            window.type("dmg")
            window.wait("Installers")
            window.key("ctrl+a")
            window.type("nosuchtype")
            window.wait("Files of this type go to Other, unless a rule of yours sends them elsewhere.")


class History(Records):
    def kinds(self):
        return [run["kind"] for run in command_line(self.home, "history")["records"]]

    def test_runs_are_listed_narrowed_and_cleared(self):
        with desk.start(self.folder, home=self.home) as window:
            window.press("History", role="list item")
            window.wait("Each time you organize or undo, a summary appears here.")
            window.wait("4 proposed")
            window.focus()
            window.key("ctrl+s")
            window.press("Organize 4 Files")
            window.wait("Last organize run moved 4 files.")
            (self.folder / "ordovan+/Documents/letter.pdf").write_text("changed")
            window.key("ctrl+alt+z")
            window.wait("Last undo run put back 3 files")

            window.press("History", role="list item")
            window.wait("Restored 3 files in Downloads")
            window.wait("1 skipped")
            window.wait("Organized 4 files in Downloads")
            self.assertEqual(self.kinds(), ["undo", "organize"])
            window.press("Organize", role="radio button")
            window.wait_gone("Restored 3 files in Downloads")
            window.press("Put Back", role="radio button")
            window.wait("No runs of this kind")
            window.press("All", role="radio button")

            window.press("Clear History…")
            window.wait("Only this log is cleared. Organized files and Undo stay as they are.")
            window.key("Escape")
            window.wait_gone("Clear the run history?")
            self.assertEqual(self.kinds(), ["undo", "organize"])
            before = harness.read_all(self.folder)
            window.press("Clear History…")
            window.press("Clear History")
            window.wait("Each time you organize or undo, a summary appears here.")
            harness.until(lambda: self.kinds() == [], "the log is not cleared on the disk")
            self.assertEqual(harness.read_all(self.folder), before)
            self.assertEqual(len(command_line(self.home, "recovery", self.folder)["organized"]), 1,
                             "what can be undone is not in this log")

    def test_runs_of_the_command_line_are_in_it(self):
        with desk.start(self.folder, home=self.home) as window:
            window.wait("4 proposed")
            command_line(self.home, "organize", self.folder, "--yes")
            window.press("History", role="list item")
            window.wait("Organized 4 files in Downloads")
            window.press("Clear History…")
            window.press("Clear History")
            harness.until(lambda: self.kinds() == [], "the log is not cleared on the disk")


if __name__ == "__main__":
    harness.main(needs_command_line=True)
