"""Times ordovan+ against its peers: each pair in turn (A B A B ...), ratios of each round, their median in the table.

    bench.py BUILD_FOLDER [--rounds N] [--only WORD] [--cold]
"""
import argparse
import json
import os
import platform
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

import datasets

DATA = os.environ.get("ORDOVAN_BENCH_DATA", "/var/tmp/ordovan-bench")


class Bench:
    def __init__(self, build, rounds, cold):
        self.build, self.rounds, self.cold, self.rows = build, rounds, cold, []
        self.home = tempfile.mkdtemp(prefix="ordovan-bench-home-")
        self.environment = dict(os.environ, HOME=self.home, XDG_DATA_HOME=self.home + "/data",
                                XDG_CONFIG_HOME=self.home + "/config", LC_ALL="C.UTF-8")
        self.cli = os.path.join(build, "OrdovanCLI/ordovan-cli")

    def tool(self, name):
        return os.path.join(self.build, "benchmarks", name)

    def run(self, command, output=subprocess.DEVNULL):
        """Wall seconds, peak KiB and standard output (when asked for) of one process, start-up included."""
        if self.cold:
            subprocess.run(["sync"], check=True)
            with open("/proc/sys/vm/drop_caches", "w") as caches:
                caches.write("3")
        start = time.perf_counter()
        process = subprocess.Popen(command, stdout=output, stderr=subprocess.PIPE, env=self.environment)
        text = process.stdout.read() if output == subprocess.PIPE else b""
        errors = process.stderr.read()
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode not in (0, 1):
            sys.exit("%s: exit %d: %s" % (command, process.returncode, errors.decode(errors="replace")))
        return seconds, usage.ru_maxrss, text

    def timed(self, command):
        return lambda: self.run(command)[0]

    def compare(self, work, peer_name, ours, peer, limit, rounds=None):
        """One row: median seconds of both, and the median ratio of the rounds."""
        ours(), peer()  # warm up
        pairs = [(ours(), peer()) for _ in range(rounds or self.rounds)]
        mine, theirs = zip(*pairs)
        self.row(work, peer_name, statistics.median(mine), statistics.median(theirs),
                 statistics.median(a / b for a, b in pairs), limit)

    def row(self, work, peer_name, mine, theirs, ratio, limit):
        mark = "" if limit is None or ratio <= limit else " **over**"
        self.rows.append("| %s | %s | %s | %s | %.2f%s | %s |" % (
            work, mine if isinstance(mine, str) else "%.4f s" % mine, peer_name,
            theirs if isinstance(theirs, str) else "%.4f s" % theirs, ratio, mark, "" if limit is None else limit))
        print(self.rows[-1], file=sys.stderr)

    def engine(self, folder, repeats=1):
        return json.loads(self.run([self.tool("scan_bench"), folder, str(repeats)], subprocess.PIPE)[2])

    def find(self, folder):
        return ["find", folder, "-printf", "%s %T@ %p\\n"]


def count_files(folder):
    return sum(len(files) for _, _, files in os.walk(os.fsencode(folder)))


def check_engine(bench, folder):
    """The plan accounts for every file there is."""
    result, files = bench.engine(folder), count_files(folder)
    if result["files"] != files or result["proposals"] + result["conflicts"] != files:
        sys.exit("wrong result for %s: %s, %d files" % (folder, result, files))


def scans(bench):
    downloads = datasets.make(DATA, "downloads-50000")
    check_engine(bench, downloads)
    find = bench.timed(bench.find(downloads))
    bench.compare("scan and plan 50,000 files (engine)", "find -printf", lambda: bench.engine(downloads)["seconds"], find, 1.6)
    bench.compare("`ordovan-cli preview` of them", "find -printf", bench.timed([bench.cli, "preview", downloads]), find, 2.0)
    bench.compare("`ordovan-cli preview --json`", "find -printf", bench.timed([bench.cli, "preview", "--json", downloads]), find, 2.5)
    plan = json.loads(bench.run([bench.cli, "preview", "--json", downloads], subprocess.PIPE)[2])
    if len(plan["proposals"]) + len(plan["conflicts"]) + len(plan["skipped"]) != count_files(downloads):
        sys.exit("the JSON plan does not account for every file")
    for name, what in (("collide", "50,000 files of 50 names"), ("flat", "one folder of 50,000 files"), ("deep", "300 levels")):
        folder = datasets.make(DATA, name)
        check_engine(bench, folder)
        bench.compare(what + " (engine)", "find -printf", lambda: bench.engine(folder)["seconds"],
                      bench.timed(bench.find(folder)), 2.5)


def rule_based(bench):
    if shutil.which("organize") is None:
        return
    downloads = datasets.make(DATA, "downloads-50000")
    config = os.path.join(bench.home, "organize.yaml")
    with open(config, "w") as file:
        file.write("rules:\n  - locations: [{path: '%s', max_depth: null}]\n    subfolders: true\n"
                   "    filters: [{extension: [pdf, docx, txt]}]\n    actions: [{move: '%s/ordovan+/Documents/'}]\n"
                   % (downloads, downloads))
    ours = statistics.median(bench.run([bench.cli, "preview", downloads])[0] for _ in range(3))
    theirs = bench.run(["organize", "sim", config])[0]
    bench.row("`ordovan-cli preview`, 50,000 files", "organize sim (1 rule)", ours, theirs, ours / theirs, None)


def growth(bench):
    seconds = {}
    for count in (10_000, 100_000, 1_000_000):
        folder = datasets.make(DATA, "downloads-%d" % count)
        check_engine(bench, folder)
        results = [bench.engine(folder, 3 if count < 1_000_000 else 1) for _ in range(3)]
        seconds[count] = min(result["seconds"] for result in results)
        per_file = max(result["bytesPerFile"] for result in results if True)
        if count > 10_000:
            bench.row("scan and plan %s files" % format(count, ","), "a tenth of the files", seconds[count],
                      seconds[count // 10], seconds[count] / seconds[count // 10], 14)
    # Memory is what one pass needs: repeats would only show the largest.
    per_file = bench.engine(datasets.make(DATA, "downloads-1000000"))["bytesPerFile"]
    bench.row("memory, bytes a file at 1,000,000", "600 bytes", "%.0f" % per_file, "600", per_file / 600, 1.0)


def organizing(bench):
    folder = datasets.make(DATA, "organize-10000")
    before = subprocess.check_output(["sh", "-c", 'cd "$0" && find . -type f -printf "%p %s %T@\\n" | sort | sha256sum', folder])
    plan = json.loads(bench.run([bench.cli, "preview", "--json", folder], subprocess.PIPE)[2])
    pairs = os.path.join(bench.home, "pairs")
    with open(pairs, "wb") as file:
        for proposal in plan["proposals"]:
            file.write(os.fsencode(proposal["source"]) + b"\0" + os.fsencode(proposal["destination"]) + b"\0")
    yardstick = bench.tool("organize_yardstick")
    rounds = []
    for _ in range(bench.rounds + 1):  # the first warms up
        theirs = json.loads(bench.run([yardstick, pairs], subprocess.PIPE)[2])["seconds"]
        theirs_back = json.loads(bench.run([yardstick, pairs, "back"], subprocess.PIPE)[2])["seconds"]
        shutil.rmtree(os.path.join(folder, "ordovan+"))  # empty category folders
        ours, _, text = bench.run([bench.cli, "organize", "--yes", "--json", folder], subprocess.PIPE)
        moved = json.loads(text)["moved"]
        ours_back, _, text = bench.run([bench.cli, "undo", "--yes", "--json", folder], subprocess.PIPE)
        if moved != len(plan["proposals"]) or json.loads(text)["moved"] != moved:
            sys.exit("organize or undo left files behind")
        rounds.append((ours, theirs, ours_back, theirs_back))
        if os.path.isdir(os.path.join(folder, "ordovan+")):
            os.rmdir(os.path.join(folder, "ordovan+"))
    after = subprocess.check_output(["sh", "-c", 'cd "$0" && find . -type f -printf "%p %s %T@\\n" | sort | sha256sum', folder])
    if before != after:
        sys.exit("organize and undo did not give the same tree back")
    rounds = rounds[1:]
    median = lambda values: statistics.median(list(values))
    bench.row("`ordovan-cli organize`, %s files (whole process)" % format(len(plan["proposals"]), ","), "SHA-256 of all, bare renames",
              median(r[0] for r in rounds), median(r[1] for r in rounds), median(r[0] / r[1] for r in rounds), 1.15)
    bench.row("`ordovan-cli undo` of them (whole process)", "SHA-256 of all, bare renames",
              median(r[2] for r in rounds), median(r[3] for r in rounds), median(r[2] / r[3] for r in rounds), 1.15)
    pairs = json.loads(bench.run([bench.tool("run_record_bench"), folder, str(bench.rounds)], subprocess.PIPE)[2])
    pairs = pairs["withAndWithout"]
    bench.row("organize %s files with the run record" % format(len(plan["proposals"]), ","), "without it",
              median(a for a, _ in pairs), median(b for _, b in pairs), median(a / b for a, b in pairs), 1.05)


def journals(bench):
    path = os.path.join(DATA, "journal-1000000.json")
    tool = bench.tool("journal_bench")
    digest = bench.timed(["openssl", "dgst", "-sha256", path])
    written = lambda: json.loads(bench.run([tool, "write", path, "1000000"], subprocess.PIPE)[2])["seconds"]
    written()
    bench.compare("journal of 1,000,000 entries, written", "openssl dgst -sha256", written, digest, 2.0, rounds=5)
    peak = []

    def read():
        seconds, kilobytes, text = bench.run([tool, "read", path], subprocess.PIPE)
        result = json.loads(text)
        if result["entries"] != 1_000_000:
            sys.exit("the journal lost entries: %s" % result)
        peak.append(kilobytes)
        return result["seconds"]
    bench.compare("the same, read and checked", "openssl dgst -sha256", read, digest, 4.0, rounds=5)
    mebibytes = max(peak) / 1024
    bench.row("peak memory of reading it", "300 MiB", "%.0f MiB" % mebibytes, "300 MiB", mebibytes / 300, 1.0)


def startup(bench):
    def many(command):
        start = time.perf_counter()
        for _ in range(100):
            subprocess.run(command, stdout=subprocess.DEVNULL, env=bench.environment, check=True)
        return (time.perf_counter() - start) / 100

    def hyperfine(command):
        text = subprocess.check_output(["hyperfine", "-N", "-w", "20", "-r", "200", "--export-json", "/dev/stdout", "--style", "none",
                                        command], env=bench.environment, stderr=subprocess.DEVNULL)
        return json.loads(text)["results"][0]["median"]
    clock = hyperfine if shutil.which("hyperfine") else lambda command: many(command.split())
    bench.compare("`ordovan-cli --version`", "/bin/true", lambda: clock(bench.cli + " --version"), lambda: clock("/bin/true"), 8.0,
                  rounds=5)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--only", default="")
    parser.add_argument("--cold", action="store_true")
    options = parser.parse_args()
    bench = Bench(options.build, options.rounds, options.cold)
    os.makedirs(DATA, exist_ok=True)
    try:
        for part in (scans, rule_based, growth, organizing, journals, startup):
            if options.only in part.__name__:
                part(bench)
    finally:
        shutil.rmtree(bench.home, ignore_errors=True)
    if not bench.rows:
        return
    with open("/proc/cpuinfo") as info:
        model = next((line.split(":")[1].strip() for line in info if line.startswith("model name")), "unknown")
    print("%s, %d cores, Linux %s, %s cache, medians of %d rounds\n" % (
        model, os.cpu_count(), platform.release(), "cold" if options.cold else "warm", options.rounds))
    print("| Work | ordovan+ | Peer | peer's | Ratio | At most |\n|---|---|---|---|---|---|")
    print("\n".join(bench.rows))


if __name__ == "__main__":
    main()
