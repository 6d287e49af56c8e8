"""The window around the screens: sections, menus, settings, how it starts and ends."""
import configparser
import os
import pathlib
import signal
import tempfile
import unittest

import harness


def setUpModule():
    global desk
    desk = harness.Desk()


def tearDownModule():
    desk.close()


class Shell(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="shell-")
        self.addCleanup(temporary.cleanup)
        self.base = pathlib.Path(temporary.name)
        self.home = self.base / "home"
        self.home.mkdir()

    def folder(self, name, count):
        """A folder of so many documents."""
        harness.tree(self.base / name, {"%d.pdf" % number: str(number) for number in range(count)})
        return self.base / name

    def test_every_section_is_reached_by_its_name(self):
        with desk.start(home=self.home) as window:
            window.wait("No folder selected")
            for name in ("Duplicates", "Big Files", "Recovery Center", "Rules", "History", "Smart Inbox"):
                window.press(name, role="list item")
                harness.until(lambda: window.state(name, "SELECTED", role="list item"), name + " is not selected")

    def test_the_menu_has_its_items(self):
        with desk.start(home=self.home) as window:
            window.press("Organize", role="menu item")
            for name in ("Choose Folder…", "Preview Downloads", "Organize Selected Files…", "Undo Organize",
                         "Find Duplicates", "Export Plan…"):
                window.control(name, role="menu item")
            self.assertFalse(window.state("Undo Organize", "ENABLED", role="menu item"))

    def test_settings_hold_at_once_and_at_the_next_start(self):
        with desk.start(self.folder("in", 1), home=self.home) as window:
            window.wait("1 proposed")
            window.focus()
            window.key("ctrl+comma")
            window.wait("Settings only change the preview. Nothing moves until you choose Organize.")
            window.press("Group files by month")
            window.press("Grape")
            harness.until(lambda: window.state("Group files by month", "CHECKED"), "it is not ticked")
            harness.until(lambda: window.state("Grape", "CHECKED"), "it is not chosen")
        with desk.start(home=self.home) as window:
            window.focus()
            window.key("ctrl+comma")
            window.wait("Group files by month")
            self.assertTrue(window.state("Group files by month", "CHECKED"))
            self.assertTrue(window.state("Grape", "CHECKED"))

    def test_about_tells_name_version_and_credits(self):
        with desk.start(home=self.home) as window:
            window.press("File", role="menu item")
            window.press("About ordovan+", role="menu item")
            window.wait("Careful folder organizing for macOS.")
            window.wait("Version ")

    def test_section_and_size_are_remembered(self):
        with desk.start(home=self.home) as window:
            window.focus()
            window.key("ctrl+5")
            harness.until(lambda: window.state("Rules", "SELECTED", role="list item"), "Rules is not selected")
            window.key("ctrl+w")
            self.assertEqual(window.wait_for_end(), 0)
        with desk.start(home=self.home) as window:
            self.assertTrue(window.state("Rules", "SELECTED", role="list item"))
        stored = configparser.ConfigParser(strict=False)
        stored.read(self.home / ".config/ordovan/ordovan.conf")
        self.assertEqual(stored["General"]["ordovan.window.section"], "rules")

    def test_a_second_start_hands_its_folder_over(self):
        first, second = self.folder("first", 1), self.folder("second", 2)
        with desk.start(first, home=self.home) as window:
            window.wait("1 proposed · 0 need review")
            result = desk.run(os.path.relpath(second), home=self.home)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
            window.wait("2 proposed · 0 need review")

    def test_a_window_that_was_killed_blocks_nobody(self):
        with desk.start(home=self.home) as window:
            window.process.kill()
            self.assertEqual(window.wait_for_end(), -signal.SIGKILL)
        with desk.start(self.folder("in", 3), home=self.home) as window:
            window.wait("3 proposed · 0 need review")

    def test_the_end_of_the_session_ends_it_in_order(self):
        with desk.start(home=self.home) as window:
            window.process.terminate()
            self.assertEqual(window.wait_for_end(), 0)

    def test_a_read_only_configuration_does_not_stop_it(self):
        blocked = self.base / "file"
        blocked.write_text("in the folder's place")
        with desk.start(self.folder("in", 2), home=self.home,
                        environment={"XDG_CONFIG_HOME": str(blocked)}) as window:
            window.wait("2 proposed · 0 need review")
            window.focus()
            window.key("ctrl+comma")
            window.press("Include hidden files")
            window.wait("This setting couldn't be saved. It holds until you quit ordovan+.")
            window.key("Escape")
            window.key("ctrl+q")
            self.assertEqual(window.wait_for_end(), 0)

    def test_dark_is_dark_and_light_is_light(self):
        with desk.start(home=self.home, environment={"ORDOVAN_COLOR_SCHEME": "light"}) as window:
            window.wait("Start with your Downloads folder")
            harness.until(lambda: desk.brightness() > 0.7, "the light window is dark")
            window.focus()
            window.key("ctrl+q")
            window.wait_for_end()
        with desk.start(home=self.home, environment={"ORDOVAN_COLOR_SCHEME": "dark"}) as window:
            window.wait("Start with your Downloads folder")
            harness.until(lambda: desk.brightness() < 0.3, "the dark window is light")


class CommandLine(unittest.TestCase):
    """What needs no window."""

    def run_without_display(self, *arguments):
        with tempfile.TemporaryDirectory() as home:
            return desk.run(*arguments, home=pathlib.Path(home), environment={"DISPLAY": "", "QT_QPA_PLATFORM": ""})

    def test_help_and_version_need_no_display(self):
        self.assertTrue(self.run_without_display("--help").stdout.startswith("Usage: ordovan [FOLDER]\n"))
        self.assertRegex(self.run_without_display("--version").stdout, r"^ordovan \d+\.\d+\.\d+\n$")

    def test_a_wrong_argument_is_a_sentence_and_status_2(self):
        result = self.run_without_display("--fast")
        self.assertEqual((result.returncode, result.stderr),
                         (2, "ordovan: There is no option --fast. See ordovan --help.\n"))


if __name__ == "__main__":
    harness.main()
