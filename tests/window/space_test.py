"""Freeing space: duplicates and big files go to the Trash and come back, here and on another volume. Each step is looked
up on the disk and with the command-line program."""
import os
import pathlib
import tempfile
import time
import unittest

import harness
from harness import command_line

REPORT, SONG = "the same report", "the same song, longer"
COPIES = {
    "a/report.pdf": REPORT,
    "b/report copy.pdf": REPORT,
    "report (1).pdf": REPORT,
    "music/song again.mp3": SONG,
    "song.mp3": SONG,
    "notes.txt": "nothing like it",
}


def setUpModule():
    global desk, second_volume
    second_volume = harness.SecondVolume() if harness.SecondVolume.available() else None
    desk = harness.Desk()


def tearDownModule():
    desk.close()
    if second_volume:
        second_volume.close()


class Space(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="space-")
        self.addCleanup(temporary.cleanup)
        self.base = pathlib.Path(temporary.name)
        self.home = self.base / "home"
        self.home.mkdir()
        self.folder = self.base / "Downloads"
        self.folder.mkdir()
        self.trash = self.home / ".local/share/Trash"

    def write(self, files, days_old=None):
        harness.tree(self.folder, files)
        for name, days in (days_old or {}).items():
            when = time.time() - days * 86400
            os.utime(self.folder / name, (when, when))

    def write_sizes(self, sizes):
        """Files of so many bytes, which take no room."""
        for name, size in sizes.items():
            path = self.folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(name)
            os.truncate(path, size)

    def trashed(self):
        """What can be put back, as the command-line program has it."""
        entries = command_line(self.home, "recovery", self.folder)["trashed"]
        self.assertTrue(all(entry["present"] for entry in entries), entries)
        return sorted(os.path.relpath(entry["original"], self.folder) for entry in entries)

    def runs(self):
        """The summaries in the history, newest first."""
        return [run["summary"] for run in command_line(self.home, "history")["records"]]

    def kept(self, window, *names):
        for name in names:
            harness.until(lambda: window.state(name, "CHECKED", role="radio button"), "%r is not kept" % name)

    def find_duplicates(self, window):
        window.press("Duplicates", role="list item")
        window.wait("Scans the files from your current preview and groups byte-for-byte identical copies.")
        window.press("Find Duplicates", role="push button")
        window.wait("Click a file to keep it. Extras go to the Trash — you can put them back here or from the Finder.")


class Duplicates(Space):
    def test_copies_are_chosen_trashed_and_put_back(self):
        self.write(COPIES, {"a/report.pdf": 3, "b/report copy.pdf": 9, "report (1).pdf": 1,
                            "music/song again.mp3": 4, "song.mp3": 2})
        before = harness.read_all(self.folder)
        with desk.start(self.folder, home=self.home) as window:
            window.wait("6 proposed")
            self.find_duplicates(window)
            window.wait("3 identical copies ·")
            window.wait("2 identical copies ·")
            self.kept(window, "report.pdf", "song again.mp3")
            self.pick_policies(window)
            self.pick_by_hand(window)

            window.press("Move All Extras to Trash…")
            window.wait("Move duplicate extras to the Trash?")
            window.wait("The copy you chose to keep stays. Each extra is checked again first, and anything that changed "
                        "is left alone. You can put files back from the Recovery Center or the Finder Trash.")
            self.assertEqual(harness.read_all(self.folder), before, "a question moves nothing")
            window.press("Move 3 Extras to Trash")
            window.wait("3 extras moved to the Trash ·")
            self.assertEqual(harness.listing(self.folder), ["b/report copy.pdf", "notes.txt", "song.mp3"])
            self.assertEqual(sorted(harness.read_all(self.trash / "files").values()),
                             sorted([REPORT.encode()] * 2 + [SONG.encode()]))
            self.assertEqual(self.trashed(), ["a/report.pdf", "music/song again.mp3", "report (1).pdf"])
            window.wait("Every file in this folder is unique by content.")

            window.press("Open Recovery Center")
            window.wait("3 files in the Trash can be put back (from Duplicates or Big Files).")
            window.press("Put Back from Trash", row="report (1).pdf")
            window.wait("Put back 1 file from the Trash.")
            self.assertIn("report (1).pdf", harness.listing(self.folder))
            self.assertEqual(self.trashed(), ["a/report.pdf", "music/song again.mp3"])
            window.wait("2 files in the Trash can be put back (from Duplicates or Big Files).")

            window.press("Put All Back…")
            window.press("Put All Back")
            window.wait("Nothing to recover")
            self.assertEqual(harness.read_all(self.folder), before)
            self.assertEqual(harness.listing(self.trash), [])
            self.assertEqual(self.trashed(), [])
            self.assertEqual(self.runs(), ["Put back 2 files from the Trash in Downloads",
                                           "Put back 1 file from the Trash in Downloads",
                                           "Moved 3 duplicate files to the Trash in Downloads"])

    def pick_policies(self, window):
        for policy, report, song in (("Oldest", "report copy.pdf", "song again.mp3"),
                                     ("Newest", "report (1).pdf", "song.mp3"),
                                     ("Shortest path", "report (1).pdf", "song.mp3"),
                                     ("Deepest path", "report.pdf", "song again.mp3")):
            window.press("Auto-pick the copy to keep")
            window.press(policy, role="menu item")
            self.kept(window, report, song)

    def pick_by_hand(self, window):
        window.press("report copy.pdf", role="radio button")
        self.kept(window, "report copy.pdf")
        window.act(window.control("song.mp3", role="radio button"), "keep this copy instead")
        self.kept(window, "song.mp3")
        self.assertFalse(window.state("song again.mp3", "CHECKED", role="radio button"))

    def test_an_extra_that_changed_is_left_alone(self):
        self.write({"a.txt": "equal", "b.txt": "equal"})
        with desk.start(self.folder, home=self.home) as window:
            window.wait("2 proposed")
            self.find_duplicates(window)
            self.write({"b.txt": "EQUAL"})
            window.press("Move All Extras to Trash…")
            window.press("Move 1 Extra to Trash")
            window.wait("0 extras moved to the Trash · 0 bytes · 1 skipped")
            self.assertEqual(harness.read_all(self.folder), {"a.txt": b"equal", "b.txt": b"EQUAL"})
            self.assertEqual(self.trashed(), [])

    def test_a_folder_without_copies_says_so(self):
        self.write({"a.txt": "one", "b.txt": "two"})
        with desk.start(self.folder, home=self.home) as window:
            window.wait("2 proposed")
            window.press("Duplicates", role="list item")
            window.press("Find Duplicates", role="push button")
            window.wait("No exact duplicates")
            window.wait("Every file in this folder is unique by content.")


class BigFiles(Space):
    def test_ticked_files_are_trashed_and_put_back(self):
        self.write_sizes({"movie.mp4": 12_000_000, "old/backup.zip": 11_000_000, "setup.dmg": 150_000_000,
                          "small.txt": 900})
        before = [(name, (self.folder / name).stat().st_size) for name in harness.listing(self.folder)]
        with desk.start(self.folder, home=self.home) as window:
            window.wait("4 proposed")
            window.press("Big Files", role="list item")
            window.wait("Largest files, biggest first")
            window.wait("Installers (.dmg, .pkg) are often safe to remove once the app is installed. Organize sends "
                        "them to ordovan+/Installers so you can review them in one place.")
            self.narrow(window)
            for name in ("movie.mp4", "backup.zip"):
                window.press(name, role="check box")
            window.wait("2 files")
            window.press("Move to Trash…")
            window.wait("Move 2 files to the Trash?")
            window.wait("23 MB goes to the macOS Trash, not deleted. Each file is checked again first; anything that "
                        "changed is left alone. Put files back from the Recovery Center.")
            window.press("Cancel")
            window.wait_gone("Move 2 files to the Trash?")
            window.press("backup.zip", role="check box")
            window.press("Move to Trash…")
            window.wait("Move 1 file to the Trash?")
            self.assertEqual(len(harness.listing(self.folder)), 4, "a question moves nothing")
            window.press("Move 1 file to Trash")
            window.wait("1 file moved to the Trash · 12 MB")
            self.assertEqual(harness.listing(self.folder), ["old/backup.zip", "setup.dmg", "small.txt"])
            self.assertEqual(self.trashed(), ["movie.mp4"])
            harness.until(lambda: not window.find("movie.mp4"), "a trashed file is still listed")

            window.press("Open Recovery Center")
            window.press("Put Back from Trash", row="movie.mp4")
            window.wait("Nothing to recover")
            self.assertEqual([(name, (self.folder / name).stat().st_size) for name in harness.listing(self.folder)],
                             before)
            self.assertEqual(self.trashed(), [])

    def narrow(self, window):
        window.press("Over 100 MB")
        harness.until(lambda: not window.find("movie.mp4"), "a small file shows")
        self.assertTrue(window.find("setup.dmg"))
        window.press("Over 1 GB")
        window.wait("No files this size")
        window.wait("Try a smaller size filter.")
        window.press("Over 10 MB")
        harness.until(lambda: window.find("movie.mp4"), "a large file is missing")
        self.assertFalse(window.find("small.txt"))
        window.press("Any size")
        harness.until(lambda: window.find("small.txt"), "a small file is missing")

    def test_quick_look_shows_any_file_and_changes_none(self):
        self.write({"letter.txt": "Dear reader,\n" + "…" * 500})
        self.write_sizes({"data.bin": 500, "nothing.csv": 0})
        before = harness.read_all(self.folder)
        with desk.start(self.folder, home=self.home) as window:
            window.wait("3 proposed")
            window.press("Big Files", role="list item")
            window.focus_on("letter.txt", role="check box")
            window.key("space")
            window.control("letter.txt", role="dialog")
            window.control("The beginning of the file")
            window.key("Down")
            window.wait("There is no preview for this kind of file.")
            window.key("Down")
            window.wait("This file is empty.")
            window.key("Escape")
            harness.until(lambda: not window.find("nothing.csv", role="dialog"), "the quick look stays")
            self.assertFalse(window.state("letter.txt", "CHECKED", role="check box"), "looking ticks nothing")
            self.assertEqual(harness.read_all(self.folder), before)


class AnotherVolume(Space):
    """The same on a second volume, whose Trash is its own."""

    def setUp(self):
        super().setUp()
        if second_volume is None:
            self.skipTest(harness.SecondVolume.UNAVAILABLE)
        self.folder = second_volume.path / "Stick"
        self.assertNotEqual(second_volume.path.stat().st_dev, self.home.stat().st_dev)

    def test_files_go_to_its_own_trash_and_come_back(self):
        self.write({**COPIES, "setup.dmg": "an installer"})
        before = harness.read_all(self.folder)
        trash = second_volume.path / (".Trash-%d" % os.getuid())
        with desk.start(self.folder, home=self.home) as window:
            window.wait("7 proposed")
            self.find_duplicates(window)
            window.press("Move All Extras to Trash…")
            window.press("Move 3 Extras to Trash")
            window.wait("3 extras moved to the Trash ·")
            window.press("Big Files", role="list item")
            window.press("setup.dmg", role="check box")
            window.press("Move to Trash…")
            window.press("Move 1 file to Trash")
            window.wait("1 file moved to the Trash ·")
            self.assertEqual(len(harness.listing(trash / "files")), 4)
            self.assertFalse(self.trash.exists(), "nothing crosses to the home's Trash")
            window.focus()
            window.key("ctrl+s")
            window.press("Organize 3 Files")
            window.wait("Last organize run moved 3 files.")
            self.assertEqual(len(command_line(self.home, "recovery", self.folder)["organized"]), 3)

            window.press("Recovery Center", role="list item")
            window.press("Undo Organize…")
            window.press("Undo Organize")
            window.wait("4 files in the Trash can be put back")
            window.wait_gone("can go back to where they came from.")
            window.press("Put All Back…")
            window.press("Put All Back")
            window.wait("Nothing to recover")
            self.assertEqual(harness.read_all(self.folder), before)
            self.assertEqual(harness.listing(trash), [])


if __name__ == "__main__":
    harness.main(needs_command_line=True)
