"""A folder from preview to organized and back, as a person goes about it; each step is looked up on the disk."""
import pathlib
import tempfile
import unittest

import harness

FILES = {
    "Lease agreement.pdf": "lease",
    "notes.txt": "notes",
    "photos/IMG_2031.jpg": "picture",
    "photos/IMG_2032.jpg": "another picture",
    "setup.dmg": "installer",
}
ORGANIZED = [
    "notes.txt",
    "ordovan+/Documents/Lease agreement.pdf",
    "ordovan+/Images/IMG_2031.jpg",
    "ordovan+/Images/IMG_2032.jpg",
    "ordovan+/Installers/setup.dmg",
]


def setUpModule():
    global desk
    desk = harness.Desk()


def tearDownModule():
    desk.close()


class Organize(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="organize-")
        self.addCleanup(temporary.cleanup)
        self.base = pathlib.Path(temporary.name)
        self.folder = self.base / "Downloads"
        harness.tree(self.folder, FILES)

    def test_a_folder_is_organized_as_ticked_and_put_back(self):
        with desk.start(self.folder) as window:
            window.wait("5 proposed · 0 need review")
            window.wait("Proposed — safe, no conflict")
            self.assertEqual(harness.listing(self.folder), sorted(FILES), "a preview moves nothing")

            window.press("notes.txt")
            window.wait("Organize 4 Files…")
            window.press("Organize 4 Files…")
            window.wait("Organize these files?")
            window.wait("Files move into the ordovan+ folder inside this folder. Nothing is copied or deleted, and you "
                        "can undo this from the Recovery Center.")
            self.assertEqual(harness.listing(self.folder), sorted(FILES), "a question moves nothing")
            window.press("Organize 4 Files")
            window.wait("Last organize run moved 4 files.")
            self.assertEqual(harness.listing(self.folder), ORGANIZED)

            window.press("Undo")
            window.wait("Last undo run put back 4 files.")
            self.assertEqual(harness.listing(self.folder), sorted(FILES))
            window.wait("5 proposed · 0 need review")
            self.assertTrue(window.find("Organize 4 Files…"), "what was unticked stays so")

    def test_it_is_told_that_rows_are_locked_during_a_run(self):
        harness.tree(self.folder, {"0/%04d.pdf" % number: str(number) for number in range(2000)})
        with desk.start(self.folder / "0") as window:
            window.wait("2000 proposed · 0 need review")
            window.press("Organize 2,000 Files…")
            window.wait("Organize these files?")
            told = window.told_states("0000.pdf", "enabled", lambda: window.press("Organize 2,000 Files"))
            self.assertEqual(told[:1], [False])
            window.wait("Last organize run moved")

    def test_everything_works_from_the_keyboard(self):
        with desk.start(self.folder) as window:
            window.wait("5 proposed · 0 need review")
            window.focus()
            window.key("ctrl+s")
            window.wait("Organize these files?")
            window.key("Escape")
            window.wait_gone("Organize these files?")
            window.key("ctrl+s")
            window.wait("Organize these files?")
            window.key("Return")
            window.wait("Last organize run moved 5 files.")
            window.key("ctrl+alt+z")
            window.wait("Last undo run put back 5 files.")
            self.assertEqual(harness.listing(self.folder), sorted(FILES))

    def test_search_and_folder_filter_narrow_what_is_shown(self):
        with desk.start(self.folder) as window:
            window.wait("IMG_2031.jpg")
            window.press("Images")
            window.wait_gone("setup.dmg")
            self.assertTrue(window.find("IMG_2032.jpg"))
            window.press("All folders")
            window.wait("setup.dmg")
            window.control("Search proposed files", role="text").get_component_iface().grab_focus()
            window.focus()
            window.type("lease")
            window.wait_gone("IMG_2031.jpg")
            self.assertTrue(window.find("Lease agreement.pdf"))
            self.assertEqual(harness.listing(self.folder), sorted(FILES))

    def test_the_plan_is_saved_where_it_is_asked_for(self):
        with desk.start(self.folder) as window:
            window.wait("5 proposed · 0 need review")
            window.focus()
            window.key("ctrl+shift+e")
            window.wait("A report of the preview. Nothing is moved.")
            window.enter("File name:", str(self.base / "report.csv"))
            window.key("Return")
            window.wait("The plan was saved.")
            report = (self.base / "report.csv").read_text()
            self.assertIn("Lease agreement.pdf", report)
            self.assertEqual(harness.listing(self.folder), sorted(FILES))

    def test_a_folder_is_chosen_in_the_dialog(self):
        with desk.start() as window:
            window.wait("Start with your Downloads folder")
            window.press("Choose Folder…", role="push button")
            window.dialog("Choose Folder")
            window.enter("Directory:", str(self.folder))
            window.key("Return")
            window.wait("5 proposed · 0 need review")
            self.assertEqual(harness.listing(self.folder), sorted(FILES))

    def test_a_folder_that_can_not_be_read_says_so(self):
        with desk.start(self.base / "nowhere") as window:
            window.wait("Couldn't preview this folder")
            window.wait("We couldn't read that folder. Check permissions and try again.")
            window.wait("Preview unavailable")
            self.assertTrue(window.find("Try Another Folder"))

    def test_the_next_start_offers_the_folder_and_can_undo(self):
        home = self.base / "home"
        home.mkdir()
        with desk.start(self.folder, home=home) as window:
            window.wait("5 proposed · 0 need review")
            window.focus()
            window.key("ctrl+s")
            window.wait("Organize these files?")
            window.key("Return")
            window.wait("Last organize run moved 5 files.")
            window.key("ctrl+q")
            self.assertEqual(window.wait_for_end(), 0)
        with desk.start(home=home) as window:
            window.press("Downloads")
            window.wait("0 proposed · 0 need review")
            window.focus()
            window.key("ctrl+alt+z")
            window.wait("Last undo run put back 5 files.")
            self.assertEqual(harness.listing(self.folder), sorted(FILES))


if __name__ == "__main__":
    harness.main()
