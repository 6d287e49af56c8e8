"""Measures the window: how long it keeps its user waiting with a folder of 50,000 files, and how soon it is there.

    bench_window.py BUILD_FOLDER [--rounds N] [--only WORD] [--cold]

Of the other sections likewise, with the most that they may hold. The times are those of the interface thread, drawing
included, without a screen; each is the median of the rounds. The start is measured on a display of its own where there
is one (Xvfb, xdotool). Does nothing with a word that is not in
"window", and nothing for --cold.
"""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

import datasets

DATA = os.environ.get("ORDOVAN_BENCH_DATA", "/var/tmp/ordovan-bench")
FRAME = 16  # milliseconds
ROWS = (("scanning, a disk that takes 50 ms a folder: longest wait", "slowScanGapMs", FRAME),
        ("preview to shown list: longest wait", "takeOverMs", FRAME),
        ("a letter typed into the search, median", "keystrokeMedianMs", FRAME),
        ("the same, the slowest", "keystrokeWorstMs", FRAME),
        ("scroll a page", "scrollPageMs", FRAME),
        ("tick one file", "tickMs", FRAME),
        ("tick by age", "tickByAgeMs", FRAME),
        ("tick all", "tickAllMs", FRAME))

WAIT = 100  # milliseconds: what is felt as at once
SECTIONS = (
    ("start, records of 150,000 files: longest wait", "startMs", WAIT),
    ("preview of 25,000 files with them: longest wait", "previewMs", WAIT),
    ("duplicates, 10,000 groups: longest wait while they are searched for", "duplicatesSearchMs", WAIT),
    ("first shown", "duplicatesOpenMs", WAIT), ("scroll a page", "duplicatesScrollMs", FRAME),
    ("a letter typed into the search, median", "duplicatesKeyMedianMs", FRAME),
    ("the same, the slowest", "duplicatesKeyWorstMs", FRAME), ("keep another copy", "duplicatesKeepMs", WAIT),
    ("auto-pick", "duplicatesAutoPickMs", WAIT), ("preview again: longest wait", "duplicatesPreviewMs", WAIT),
    ("big files: first shown", "bigFilesOpenMs", WAIT), ("scroll a page", "bigFilesScrollMs", FRAME),
    ("a letter typed into the search, the slowest", "bigFilesKeyWorstMs", FRAME),
    ("recovery, 50,000 organized and 100,000 trashed files: first shown", "recoveryOpenMs", WAIT),
    ("longest wait while the files are looked up", "recoverySurveyMs", WAIT),
    ("scroll a page", "recoveryScrollMs", FRAME),
    ("a letter typed into the search, median", "recoveryKeyMedianMs", FRAME),
    ("the same, the slowest", "recoveryKeyWorstMs", FRAME),
    ("window activated, records read again: longest wait", "recoveryAgainMs", WAIT),
    ("history, 200 runs: first shown", "historyOpenMs", WAIT), ("scroll a page", "historyScrollMs", FRAME))


def sections(build, rounds):
    results = []
    for _ in range(rounds):
        with tempfile.TemporaryDirectory(prefix="ordovan-bench-", dir=DATA) as scratch:
            results.append(json.loads(subprocess.check_output([os.path.join(build, "benchmarks/sections_bench"), scratch])))
    wanted = {"groups": 10_000, "organized": 50_000, "trashed": 100_000, "duplicatesRows": 35_000,
              "recoveryRows": 150_002, "bigFilesRows": 51}
    for result in results:
        if any(result[key] != value for key, value in wanted.items()):
            sys.exit("a section does not hold what it should: %s" % result)
    for work, key, limit in SECTIONS:
        row(work, statistics.median(result[key] for result in results), limit)


def inbox(build, rounds):
    folder = datasets.make(DATA, "downloads-50000")
    files = sum(len(names) for _, _, names in os.walk(os.fsencode(folder)))
    results = []
    for _ in range(rounds):
        with tempfile.TemporaryDirectory(prefix="ordovan-bench-") as records:
            text = subprocess.check_output([os.path.join(build, "benchmarks/inbox_bench"), folder, records])
        result = json.loads(text)
        if result["proposals"] + result["conflicts"] != files or result["rows"] < files:
            sys.exit("the list does not hold every file: %s, %d files" % (result, files))
        if result["excluded"] != 0 or not 0 < result["tickedByAge"] < result["proposals"]:
            sys.exit("the ticks are wrong: %s" % result)
        results.append(result)
    for work, key, limit in ROWS:
        row(work, statistics.median(result[key] for result in results), limit)
    memory = statistics.median(result["memoryMiB"] for result in results)
    print("| memory of a preview with its list | %.0f MiB, %.0f bytes a file | |" % (memory, memory * 1048576 / files))


def lists(build, rounds):
    results = [json.loads(subprocess.check_output([os.path.join(build, "benchmarks/ui_bench")])) for _ in range(rounds)]
    if any(result["rows"] != 50_000 for result in results):
        sys.exit("the list does not hold every row: %s" % results)
    for work, key in (("a list of 50,000 rows: first shown", "showMs"), ("scroll a page of it", "scrollPageMs"),
                      ("all its rows replaced", "resetMs")):
        row(work, statistics.median(result[key] for result in results), FRAME if key != "showMs" else None)


def row(work, milliseconds, limit):
    mark = " **over**" if limit and milliseconds > limit else ""
    print("| %s | %.2f ms%s | %s |" % (work, milliseconds, mark, "%d ms" % limit if limit else ""))


def start(build, rounds):
    """From the start of the process to its window on the display."""
    if not (shutil.which("Xvfb") and shutil.which("xdotool")):
        return
    read, write = os.pipe()
    display = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "1300x900x24", "-nolisten", "tcp"],
                               pass_fds=[write], stderr=subprocess.DEVNULL)
    os.close(write)
    times = []
    try:
        number = b""
        while not number.endswith(b"\n"):
            number += os.read(read, 16)
        for _ in range(rounds + 1):  # the first warms up
            with tempfile.TemporaryDirectory(prefix="ordovan-bench-") as home:
                environment = {"HOME": home, "XDG_RUNTIME_DIR": home, "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8",
                               "DISPLAY": ":" + number.decode().strip(), "QT_QPA_PLATFORM": "xcb"}
                begun = time.perf_counter()
                program = subprocess.Popen([os.path.join(build, "OrdovanApp/ordovan")], env=environment,
                                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", "^ordovan\\+$"], env=environment,
                               stdout=subprocess.DEVNULL, check=True, timeout=60)
                times.append((time.perf_counter() - begun) * 1000)
                program.terminate()
                program.wait(timeout=60)
    finally:
        display.terminate()
        display.wait()
        os.close(read)
    row("start to first window (Xvfb)", statistics.median(times[1:]), None)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--only", default="")
    parser.add_argument("--cold", action="store_true")
    options = parser.parse_args()
    if options.only not in "window" or options.cold:
        return
    print("\n| Window, 50,000 files | time | at most |\n|---|---|---|")
    inbox(options.build, options.rounds)
    lists(options.build, options.rounds)
    sections(options.build, options.rounds)
    start(options.build, options.rounds)


if __name__ == "__main__":
    main()
