"""The smallest window and twice the scale: what one works with is on the screen, whole."""
import pathlib
import tempfile
import unittest

import harness

SIZE = (1600, 1200)
CONTROLS = ("Smart Inbox", "History", "Choose Folder…", "Search proposed files", "Export Plan…", "Organize 2 Files…")


def setUpModule():
    global desk
    desk = harness.Desk("%dx%d" % SIZE)


def tearDownModule():
    desk.close()


class Sizes(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="sizes-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name) / "A folder with quite a long name, as they happen to be"
        harness.tree(self.folder, {"a.pdf": "a", "b.jpg": "b"})

    def assert_usable(self, window):
        left, top, width, height = window.extents("ordovan+", role="frame")
        places = {name: window.extents(name) for name in CONTROLS}
        for name, (x, y, w, h) in places.items():
            self.assertTrue(w > 0 and h > 0, name)
            self.assertTrue(left <= x and x + w <= left + width, "%s sticks out sideways: %s" % (name, (x, y, w, h)))
            self.assertTrue(top <= y and y + h <= top + height, "%s sticks out: %s" % (name, (x, y, w, h)))

    def test_at_twice_the_scale_everything_is_in_the_window(self):
        with desk.start(self.folder, environment={"QT_SCALE_FACTOR": "2"}) as window:
            window.wait("2 proposed · 0 need review")
            self.assert_usable(window)

    def test_at_800_by_600_everything_is_in_the_window(self):
        with desk.start(self.folder) as window:
            window.wait("2 proposed · 0 need review")
            window.focus()
            window.resize(800, 600)
            harness.until(lambda: window.extents("ordovan+", role="frame")[2:] == (800, 600), "it does not shrink")
            self.assert_usable(window)


if __name__ == "__main__":
    harness.main()
