"""Taking things back: single files and all of them, what can not be taken back any more, and the same folder worked on
by the window and the command-line program at once. Each step is looked up on the disk and with that program."""
import os
import pathlib
import signal
import tempfile
import time
import unittest

import harness
from harness import command_line

FILES = {"letter.pdf": "letter", "photo.jpg": "picture", "trip/photo (1).jpg": "picture", "setup.dmg": "an installer"}
WAIT = "Another ordovan+ run is working in this folder. Try again when it has finished."


def setUpModule():
    global desk
    desk = harness.Desk()


def tearDownModule():
    desk.close()


class Recovering(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="recovery-")
        self.addCleanup(temporary.cleanup)
        self.base = pathlib.Path(temporary.name)
        self.home = self.base / "home"
        self.home.mkdir()
        self.folder = self.base / "Downloads"

    def fill(self, files):
        harness.tree(self.folder, files)
        return harness.read_all(self.folder)

    def recoverable(self, kind):
        """Where the files of a kind ("organized", "trashed") came from that can go back there."""
        entries = command_line(self.home, "recovery", self.folder)[kind]
        origin = "source" if kind == "organized" else "original"
        return sorted(os.path.relpath(entry[origin], self.folder) for entry in entries if entry["present"])

    def organize(self, window, count):
        window.focus()
        window.key("ctrl+s")
        window.press("Organize %d Files" % count)
        window.wait("Last organize run moved %d files." % count)


class Recovery(Recovering):
    def test_one_organized_file_goes_back_and_then_all(self):
        before = self.fill(FILES)
        with desk.start(self.folder, home=self.home) as window:
            window.press("Recovery Center", role="list item")
            window.wait("Nothing to recover")
            window.wait("After you organize files or move duplicates to the Trash, this is where you can undo it.")
            window.wait("4 proposed")
            self.organize(window, 4)
            window.press("Recovery Center", role="list item")
            window.wait("4 organized files can go back to where they came from.")
            window.wait("Undo is fail-closed: a file changed since organizing, or whose original slot is now occupied, "
                        "is left where it is.")
            window.press("Put Just This File Back", row="photo (1).jpg")
            window.wait("3 organized files can go back to where they came from.")
            self.assertEqual(harness.listing(self.folder),
                             ["ordovan+/Documents/letter.pdf", "ordovan+/Images/photo.jpg",
                              "ordovan+/Installers/setup.dmg", "trip/photo (1).jpg"])
            self.assertEqual(self.recoverable("organized"), ["letter.pdf", "photo.jpg", "setup.dmg"])
            window.press("Undo Organize…")
            window.wait("Undo everything organized in this folder?")
            window.press("Undo Organize", role="push button")
            window.wait("Nothing to recover")
            self.assertEqual(harness.read_all(self.folder), before)
            self.assertEqual(self.recoverable("organized"), [])

    def test_what_can_not_go_back_is_told_before_it_is_tried(self):
        self.fill(FILES)
        command_line(self.home, "big", self.folder, "--trash", self.folder / "setup.dmg", "--trash",
                     self.folder / "letter.pdf", "--yes")
        command_line(self.home, "organize", self.folder, "--yes")
        (self.folder / "ordovan+/Images/photo.jpg").unlink()
        (self.home / ".local/share/Trash/files/setup.dmg").unlink()
        with desk.start(self.folder, home=self.home) as window:
            window.press("Recovery Center", role="list item")
            window.wait("1 organized file can go back to where they came from.")
            window.wait("1 file in the Trash can be put back (from Duplicates or Big Files).")
            window.wait("This file is no longer there")
            window.wait("Missing: deleted or moved since organizing. Undo will skip it.")
            window.wait("No longer in the Trash (emptied or moved), so it can't be put back from here.")
            enabled = self.desk_state("ENABLED")
            for row, button, works in (("photo.jpg", "Put Just This File Back", False),
                                       ("photo (1).jpg", "Put Just This File Back", True),
                                       ("setup.dmg", "Put Back from Trash", False),
                                       ("letter.pdf", "Put Back from Trash", True)):
                self.assertEqual(window.part(row, button).get_state_set().contains(enabled), works, row)
            window.press("Put All Back…")
            window.press("Put All Back")
            window.wait("Put back 1 file from the Trash; 1 skipped.")
            window.press("Show Problems")
            window.wait("setup.dmg — No longer in the Trash (emptied or moved).")
            self.assertEqual(harness.listing(self.folder), ["letter.pdf", "ordovan+/Images/photo (1).jpg"])

    @staticmethod
    def desk_state(name):
        return getattr(desk.atspi.StateType, name)

    def test_search_narrows_both_lists(self):
        self.fill(FILES)
        command_line(self.home, "big", self.folder, "--trash", self.folder / "setup.dmg", "--yes")
        command_line(self.home, "organize", self.folder, "--yes")
        with desk.start(self.folder, home=self.home) as window:
            window.press("Recovery Center", role="list item")
            window.control("setup.dmg")
            window.focus_on("Search organized and trashed files", role="text")
            window.type("setup")
            harness.until(lambda: not window.find("letter.pdf"), "what does not match shows")
            self.assertTrue(window.find("setup.dmg"))
            window.type("nothing")
            window.wait("No matching files")


class Keyboard(Recovering):
    def test_a_folder_is_tidied_and_put_back_without_the_pointer(self):
        before = self.fill(FILES)
        with desk.start(home=self.home) as window:
            window.wait("Start with your Downloads folder")
            window.focus()
            window.key("ctrl+o")
            window.dialog("Choose Folder")
            window.enter("Directory:", str(self.folder))
            window.key("Return")
            window.wait("4 proposed · 0 need review")
            self.trash_extras(window)
            self.trash_the_installer(window)
            window.key("ctrl+s")
            window.wait("Organize these files?")
            window.key("Return")
            window.wait("Last organize run moved 2 files.")
            self.assertEqual(harness.listing(self.folder),
                             ["ordovan+/Documents/letter.pdf", "ordovan+/Images/photo.jpg"])

            window.key("ctrl+4")
            window.wait("2 organized files can go back to where they came from.")
            window.tab_to("Undo Organize…")
            window.key("space")
            window.wait("Undo everything organized in this folder?")
            window.key("Return")
            window.wait_gone("can go back to where they came from.")
            window.tab_to("Put All Back…")
            window.key("space")
            window.wait("Put all trashed files of this folder back?")
            window.key("Return")
            window.wait("Nothing to recover")
            self.assertEqual(harness.read_all(self.folder), before)
            self.assertEqual((self.recoverable("organized"), self.recoverable("trashed")), ([], []))

    def trash_extras(self, window):
        window.key("ctrl+shift+d")
        window.wait("2 identical copies ·")
        window.tab_to("Move All Extras to Trash…")
        window.key("space")
        window.wait("Move duplicate extras to the Trash?")
        window.tab_to("Move 1 Extra to Trash")
        window.key("space")
        window.wait("1 extra moved to the Trash ·")
        self.assertEqual(harness.listing(self.folder), ["letter.pdf", "photo.jpg", "setup.dmg"])

    def trash_the_installer(self, window):
        window.key("ctrl+3")
        window.wait("Largest files, biggest first")
        window.tab_to("setup.dmg")
        window.key("Return")
        harness.until(lambda: window.state("setup.dmg", "CHECKED", role="check box"), "it is not ticked")
        window.tab_to("Move to Trash…")
        window.key("space")
        window.wait("Move 1 file to the Trash?")
        window.tab_to("Move 1 file to Trash")
        window.key("space")
        window.wait("1 file moved to the Trash ·")
        self.assertEqual(harness.listing(self.folder), ["letter.pdf", "photo.jpg"])


class TwoPrograms(Recovering):
    """The window is open while the command-line program works in the same folder."""

    MANY = 3000

    def fill_with_many(self):
        return self.fill({"%04d.pdf" % number: str(number) for number in range(self.MANY)})

    def stop_when_begun(self, process, begun):
        """Halts a program in the middle of its run."""
        until = time.monotonic() + harness.PATIENCE
        while not begun():
            self.assertLess(time.monotonic(), until, "the run does not begin")
        os.kill(process.pid, signal.SIGSTOP)
        os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WNOWAIT)
        self.addCleanup(lambda: process.poll() is None and process.send_signal(signal.SIGCONT))

    def count(self, folder):
        return len(os.listdir(folder)) if folder.exists() else 0

    def test_the_window_waits_for_the_command_line(self):
        before = self.fill_with_many()
        organized = self.folder / "ordovan+/Documents"
        with desk.start(self.folder, home=self.home) as window:
            window.wait("3,000 proposed")
            window.focus()
            other = harness.start_command_line(self.home, "organize", self.folder, "--yes")
            self.stop_when_begun(other, lambda: self.count(organized) > 10)
            moved = self.count(organized)
            self.assertLess(moved, self.MANY, "it was halted too late")
            window.key("ctrl+s")
            window.press("Organize 3,000 Files")
            window.wait(WAIT)
            self.assertEqual(self.count(organized), moved, "the one that must wait moves nothing")
            other.send_signal(signal.SIGCONT)
            other.communicate(timeout=harness.PATIENCE)
            self.assertEqual(other.returncode, 0)
            self.assertEqual(self.count(organized), self.MANY)

            self.preview_again(window)
            window.wait("0 proposed")
            self.assertEqual(len(self.recoverable("organized")), self.MANY)
            window.key("ctrl+alt+z")
            window.wait("Last undo run put back 3,000 files.")
            self.assertEqual(harness.read_all(self.folder), before)

    def preview_again(self, window):
        window.focus()
        window.key("ctrl+o")
        window.dialog("Choose Folder")
        window.enter("Directory:", str(self.folder))
        window.key("Return")

    def test_the_command_line_waits_for_the_window(self):
        before = self.fill_with_many()
        organized = self.folder / "ordovan+/Documents"
        with desk.start(self.folder, home=self.home) as window:
            window.wait("3,000 proposed")
            window.focus()
            window.key("ctrl+s")
            window.wait("Organize these files?")
            window.key("Return")
            self.stop_when_begun(window.process, lambda: self.count(organized) > 10)
            moved = self.count(organized)
            self.assertLess(moved, self.MANY, "it was halted too late")
            self.assertEqual(command_line(self.home, "organize", self.folder, "--yes", status=3)["error"], WAIT)
            self.assertEqual(self.count(organized), moved, "the one that must wait moves nothing")
            window.process.send_signal(signal.SIGCONT)
            window.wait("Last organize run moved 3,000 files.")
            self.assertEqual(len(self.recoverable("organized")), self.MANY)
            command_line(self.home, "undo", self.folder, "--yes")
            self.assertEqual(harness.read_all(self.folder), before)
            window.key("ctrl+alt+z")
            harness.until(lambda: not window.find("0 proposed · 0 need review"), "the window believes what was before")
            self.assertEqual(harness.read_all(self.folder), before)

    def test_what_the_command_line_restored_is_gone_from_the_window(self):
        before = self.fill(FILES)
        with desk.start(self.folder, home=self.home) as window:
            window.wait("4 proposed")
            command_line(self.home, "duplicates", self.folder, "--trash", "--yes")
            window.press("Recovery Center", role="list item")
            window.wait("1 file in the Trash can be put back (from Duplicates or Big Files).")
            window.press("Smart Inbox", role="list item")
            command_line(self.home, "restore", self.folder, "--yes")
            self.assertEqual(harness.read_all(self.folder), before)
            window.press("Recovery Center", role="list item")
            window.wait("Nothing to recover")

    def test_a_run_with_an_old_preview_harms_nothing(self):
        before = self.fill(FILES)
        with desk.start(self.folder, home=self.home) as window:
            window.wait("4 proposed")
            command_line(self.home, "organize", self.folder, "--yes")
            organized = harness.read_all(self.folder)
            window.focus()
            window.key("ctrl+s")
            window.press("Organize 4 Files")
            window.wait("Last organize run moved 0 files")
            window.wait("0 proposed")
            self.assertEqual(harness.read_all(self.folder), organized)
            window.key("ctrl+alt+z")
            window.wait("Last undo run put back 4 files.")
            self.assertEqual(harness.read_all(self.folder), before)


if __name__ == "__main__":
    harness.main(needs_command_line=True)
