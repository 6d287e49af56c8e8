#!/usr/bin/python3
"""Works the window for a while, as somebody does in an hour, and prints the memory that it has taken meanwhile.

    window_hour.py PROGRAM [--minutes N] [--files N]

Each round previews a folder again, types a search, organizes and undoes it, looks for duplicates, moves them to the
Trash and puts them back, and goes through the sections and the themes; the folder is then as it was before. The window
is on a display of its own, worked by the names of what is on it and by the keyboard, with what assistive technologies
are given. Not part of scripts/bench: it takes as long as it is told to.
"""
import argparse
import os
import pathlib
import random
import statistics
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent.parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE / "tests/window"))

THEMES = ("Sunset", "Grape", "Forest", "Candy", "Teal")
ENDINGS = ("pdf", "jpg", "mov", "zip", "mp3", "txt", "dmg", "py", "xlsx", "epub")


def make_folder(root, files):
    """Every tenth file is a copy of the one before it. Returns how many are."""
    seed = random.Random(11)
    copies = 0
    for number in range(files):
        folder = root / ("", "old", "work/reports")[number % 3]
        folder.mkdir(parents=True, exist_ok=True)
        if number % 10 != 9:
            content = seed.randbytes(seed.randrange(200, 4000))
        else:
            copies += 1
        (folder / ("%s %d.%s" % (seed.choice(("invoice", "scan", "holiday")), number, seed.choice(ENDINGS)))
         ).write_bytes(content)
    return copies


def memory_of(window):
    """MiB of memory that the program holds now."""
    with open("/proc/%d/status" % window.process.pid) as status:
        return next(int(line.split()[1]) for line in status if line.startswith("VmRSS")) / 1024


class Hour:
    def __init__(self, window, files, copies):
        self.window, self.files, self.copies = window, files, copies

    def proposed(self, count):
        self.window.wait("%d proposed · 0 need review" % count)

    def answer(self, question, key):
        self.window.wait(question)
        self.window.key(key)
        self.window.wait_gone(question)

    def preview_and_search(self):
        self.window.key("ctrl+1", "F5")
        self.proposed(self.files)
        self.window.key("ctrl+f")
        self.window.type("invoice 7")
        self.window.key("Escape")

    def organize_and_undo(self):
        self.window.key("ctrl+s")
        self.answer("Organize these files?", "Return")
        self.proposed(0)
        self.window.key("ctrl+alt+z")
        self.proposed(self.files)

    def trash_and_put_back(self):
        self.window.key("ctrl+shift+d")
        self.window.wait("identical copies")
        self.window.press("Move All Extras to Trash…")
        self.window.wait("Move duplicate extras to the Trash?")
        self.window.press("Move %d Extras to Trash" % self.copies)
        self.proposed(self.files - self.copies)
        self.window.key("ctrl+3", "Down", "Down", "space", "Escape", "ctrl+4")
        self.window.press("Put All Back…")
        self.answer("Put all trashed files of this folder back?", "Return")
        self.proposed(self.files)

    def look_around(self, theme):
        for number in range(1, 7):
            self.window.key("ctrl+%d" % number)
        self.window.key("ctrl+comma")
        self.window.wait("Group files by month")
        self.window.press(theme)
        self.window.key("Escape")
        self.window.wait_gone("Group files by month")

    def round(self, theme):
        self.preview_and_search()
        self.organize_and_undo()
        self.trash_and_put_back()
        self.look_around(theme)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--minutes", type=float, default=12)
    parser.add_argument("--files", type=int, default=2000)
    options = parser.parse_args()
    os.environ["ORDOVAN"] = os.path.abspath(options.program)
    import harness
    desk = harness.Desk()
    desk.atspi.set_timeout(60_000, 60_000)  # on a busy machine an answer may take its time
    with tempfile.TemporaryDirectory(prefix="ordovan-hour-") as home:
        folder = pathlib.Path(home, "Downloads")
        copies = make_folder(folder, options.files)
        with desk.start(folder, home=pathlib.Path(home)) as window:
            hour = Hour(window, options.files, copies)
            hour.proposed(options.files)
            window.focus()
            taken = [memory_of(window)]
            print("| round | minutes | MiB |\n|---|---|---|\n| start | 0.0 | %.1f |" % taken[0], flush=True)
            begun = time.monotonic()
            while time.monotonic() - begun < options.minutes * 60:
                hour.round(THEMES[(len(taken) - 1) % len(THEMES)])
                taken.append(memory_of(window))
                print("| %d | %.1f | %.1f |" % (len(taken) - 1, (time.monotonic() - begun) / 60, taken[-1]), flush=True)
    desk.close()
    third = max(1, len(taken) // 3)
    print("\n%d rounds; most %.1f MiB; the last third took %+.2f MiB more than the one before it, in the median."
          % (len(taken) - 1, max(taken), statistics.median(taken[-third:]) -
             statistics.median(taken[-2 * third:-third])))


if __name__ == "__main__":
    main()
