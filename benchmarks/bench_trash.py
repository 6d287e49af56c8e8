"""Times moving files to the Trash beside other programs that do it: each in turn (A B A B ...), on fresh copies.

    bench_trash.py BUILD_FOLDER [--rounds N] [--files N] [--only WORD] [--cold]

The files (1 to 64 KiB, from a fixed seed) and the Trash lie below $ORDOVAN_BENCH_DATA (default /var/tmp/ordovan-bench),
those of each run in a folder of their own, all of which go in the end (about 1 GB a round): ext4 passes over the numbers
of files deleted in the last minutes one by one, and every run after a deletion would measure that.
After each run it is checked that all files and nothing else are in the Trash. Programs that are not installed are left
out. The time of a process of ours is the one it measures itself; of the others the whole run, their start included.
Does nothing with a word that is not in "trash", and nothing for --cold: the files were written a moment ago.
"""
import argparse
import json
import os
import random
import shutil
import statistics
import subprocess
import sys
import time

DATA = os.environ.get("ORDOVAN_BENCH_DATA", "/var/tmp/ordovan-bench")


class Bench:
    def __init__(self, build, files):
        self.tool = os.path.join(build, "benchmarks/trash_bench")
        self.place = os.path.join(DATA, "trash")
        shutil.rmtree(self.place, ignore_errors=True)
        self.fills = 0
        self.files = files
        self.bytes = 0

    def fill(self):
        """A fresh tree on disk and no Trash."""
        self.fills += 1
        home = os.path.join(self.place, str(self.fills))
        self.folder = os.path.join(home, "tree")
        self.trash = os.path.join(home, "data/Trash")
        self.environment = dict(os.environ, HOME=home, XDG_DATA_HOME=home + "/data")
        rng, self.bytes, paths = random.Random(31), 0, []
        for i in range(self.files):
            path = os.path.join(self.folder, "folder %d" % (i % 50), "file %05d.dat" % i)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "xb") as file:
                self.bytes += file.write(rng.randbytes(int(1024 * 64 ** rng.random())))
            paths.append(path)
        subprocess.run(["sync", "-f", home], check=True)
        return paths

    def check(self, in_trash):
        counts = [len(os.listdir(os.path.join(self.trash, part))) if os.path.isdir(self.trash) else 0
                  for part in ("files", "info")]
        left = sum(len(files) for _, _, files in os.walk(self.folder))
        if counts != [in_trash, in_trash] or left != self.files - in_trash:
            sys.exit("the Trash holds %s, the folder %d" % (counts, left))

    def ours(self, mode, in_trash):
        self.fill()
        text = subprocess.check_output([self.tool, mode, self.folder], env=self.environment)
        self.check(in_trash)
        return json.loads(text)["seconds"]

    def peer(self, command):
        paths = self.fill()
        begun = time.perf_counter()
        subprocess.run(command + paths, env=self.environment, check=True)
        seconds = time.perf_counter() - begun
        self.check(self.files)
        return seconds


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("build")
    arguments.add_argument("--rounds", type=int, default=5)
    arguments.add_argument("--files", type=int, default=10_000)
    arguments.add_argument("--only", default="")
    arguments.add_argument("--cold", action="store_true")
    options = arguments.parse_args()
    if options.only not in "trash" or options.cold:
        return
    bench = Bench(options.build, options.files)
    peers = {"gio trash": ["gio", "trash"], "trash-put": ["trash-put"]}
    peers = {name: command for name, command in peers.items() if shutil.which(command[0])}
    rounds = []
    for _ in range(options.rounds + 1):  # the first warms up
        times = {mode: bench.ours(mode, 0 if mode in ("hash", "back") else bench.files)
                 for mode in ("move", "hash", "prove", "back")}
        times.update((name, bench.peer(command)) for name, command in peers.items())
        rounds.append(times)
        print(" ".join("%s %.3f" % item for item in times.items()), file=sys.stderr)
    shutil.rmtree(bench.place)
    rounds = rounds[1:]

    def row(work, limit, ours, theirs):
        ratio = statistics.median(ours(r) / theirs(r) for r in rounds)
        mark = " **over**" if limit and ratio > limit else ""
        print("| %s | %.3f s | %.3f s | %.2f%s | %s |" % (work, statistics.median(map(ours, rounds)),
                                                         statistics.median(map(theirs, rounds)), ratio, mark, limit or ""))

    count = format(bench.files, ",")
    print("\n| Work | ours | other | ratio | at most |\n|---|---|---|---|---|")
    for name in peers:
        row("%s files to the Trash: `%s`, one call" % (count, name), 0.6 if name == "gio trash" else 1,
            lambda r: r["move"], lambda r: r[name])
    if "gio trash" in peers:
        row("the same, each proved (%.0f MB): 0.6 gio trash + 1.2 SHA-256" % (bench.bytes / 1e6), 1,
            lambda r: r["prove"], lambda r: 0.6 * r["gio trash"] + 1.2 * r["hash"])
    row("all put back, proved again: SHA-256", None, lambda r: r["back"], lambda r: r["hash"])


if __name__ == "__main__":
    main()
