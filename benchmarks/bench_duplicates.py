"""Times the search for duplicates beside other duplicate finders: each pair in turn (A B A B ...), warm or cold.

    bench_duplicates.py BUILD_FOLDER [--rounds N] [--only WORD] [--cold]

Makes its sets once, below $ORDOVAN_BENCH_DATA (default /var/tmp/ordovan-bench; about 5 GB), from fixed seeds. What each
set holds is known, and every search of ours is checked against it. Peers that are not installed are left out.
"""
import argparse
import json
import os
import random
import shutil
import subprocess
import sys

CHUNK = 1 << 20
SLOW = 4.0  # seconds from which on a peer is not asked many times
WORKER_MEMORY = 4 * (512 * 1024 + 64)  # what a worker reads into


# --- Sets. Each maker fills a folder and returns its groups: lists of relative paths.

def spread(index):
    return os.path.join("folder %d" % (index % 40), "sub %d" % (index % 7), "file %d.dat" % index)


def write(root, name, *pieces):
    path = os.path.join(root, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "xb") as file:
        for piece in pieces:
            file.write(piece)
    return name


def small(root):
    """20,000 files of 1 to 64 KiB, 30 % of them copies."""
    rng, groups, contents = random.Random(21), {}, []
    for i in range(20_000):
        if i % 10 < 7:
            content = rng.randbytes(int(1024 * 64 ** rng.random()))
            contents.append(content)
        else:
            content = contents[rng.randrange(len(contents))]
        groups.setdefault(content, []).append(write(root, spread(rng.randrange(10 ** 6) * 20_000 + i), content))
    return list(groups.values())


def large(root):
    """33 files of 20 to 400 MB: 17 in seven groups, 16 that part from one of their size at start, middle or end."""
    rng, groups, index = random.Random(22), [], 0

    def content(seed, size, changed=None):
        part = random.Random(seed)
        for begin in range(0, size, CHUNK):
            piece = bytearray(part.randbytes(min(CHUNK, size - begin)))
            if changed is not None and begin <= changed < begin + len(piece):
                piece[changed - begin] ^= 0xFF
            yield piece
    for members, megabytes in ((2, 150), (2, 20), (3, 90), (2, 400), (4, 35), (2, 120), (2, 60)):
        group = []
        for _ in range(members):
            group.append(write(root, spread(index), *content(index - len(group), megabytes * 10 ** 6)))
            index += 1
        groups.append(group)
    for megabytes in (25, 50, 80, 110, 40, 95, 30, 70):
        size = megabytes * 10 ** 6
        seed, where = 1000 + index, (0, size // 2, size - 1)[rng.randrange(3)]
        write(root, spread(index), *content(seed, size))
        write(root, spread(index + 1), *content(seed, size, where))
        index += 2
    return groups


def one_size(root):
    """20,000 files of 8 KiB, 5,000 of them copies."""
    rng, groups, contents = random.Random(23), {}, []
    for i in range(20_000):
        content = rng.randbytes(8192) if i % 4 else rng.choice(contents or [bytes(8192)])
        contents.append(content)
        groups.setdefault(content, []).append(write(root, spread(i), content))
    return list(groups.values())


def last_bytes(root):
    """20,000 files of 8 KiB that differ in their last bytes only."""
    content = random.Random(24).randbytes(8188)
    for i in range(20_000):
        write(root, spread(i), content, i.to_bytes(4, "big"))
    return []


def last_byte_large(root):
    """2,000 files of 300 kB that differ in their last bytes only."""
    content = random.Random(25).randbytes(299_998)
    for i in range(2_000):
        write(root, spread(i), content, i.to_bytes(2, "big"))
    return []


def all_equal(root):
    """20,000 files of one content of 8 KiB."""
    content = random.Random(26).randbytes(8192)
    return [[write(root, spread(i), content) for i in range(20_000)]]


def all_empty(root):
    """20,000 empty files."""
    return [[write(root, spread(i)) for i in range(20_000)]]


def tiny(root):
    """100,000 files of ten bytes, all equal."""
    return [[write(root, spread(i), b"0123456789") for i in range(100_000)]]


def prepared(data, maker):
    """The folder and the groups of a set, made unless they are there."""
    folder = os.path.join(data, "duplicates-" + maker.__name__)
    truth = folder + ".groups.json"
    if not os.path.exists(truth):
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(folder)
        groups = [group for group in maker(folder) if len(group) > 1]
        subprocess.run(["sync"], check=True)
        with open(truth + ".partial", "w") as file:
            json.dump(groups, file)
        os.rename(truth + ".partial", truth)
    with open(truth) as file:
        return folder, {frozenset(os.path.join(folder, name) for name in group) for group in json.load(file)}


# --- The comparison.

def peers(home, folder, with_empty):
    """Name and command of each peer that is installed, told to do no more than find the same files."""
    results = os.path.join(home, "rdfind.txt")
    empty = ["-ignoreempty", "false"] if with_empty else []
    commands = {
        "jdupes": ["jdupes", "-r", "-q"] + (["-z"] if with_empty else []) + [folder],
        "fdupes": ["fdupes", "-r", "-q", folder],
        "rdfind": ["rdfind"] + empty + ["-outputname", results, folder],
        "rdfind, SHA-256": ["rdfind"] + empty + ["-checksum", "sha256", "-outputname", results, folder],
        "rmlint": ["rmlint", "-T", "df,ef" if with_empty else "df", "-r", "-o", "fdupes:stdout", folder],
        "rmlint, byte by byte": ["rmlint", "-T", "df,ef" if with_empty else "df", "-r", "-pp", "-o", "fdupes:stdout", folder],
    }
    return [(name, command) for name, command in commands.items() if shutil.which(command[0])]


def check(text, truth, what):
    groups = {frozenset(group.split("\n")) for group in text.decode().split("\n\n") if group.strip()}
    if groups != truth:
        sys.exit("wrong result for %s: %d groups instead of %d" % (what, len(groups), len(truth)))


def compare_set(bench, data, maker, limits):
    """One row for each peer; `limits` holds those that are not 1.0."""
    folder, truth = prepared(data, maker)
    ours = [bench.tool("duplicates_bench"), folder]
    check(bench.run(ours, subprocess.PIPE)[2], truth, maker.__doc__)
    for name, command in peers(bench.home, folder, maker is all_empty):
        theirs = bench.timed(command)
        rounds = bench.rounds if theirs() < SLOW else 2
        bench.compare("duplicates: " + maker.__doc__.rstrip("."), name, bench.timed(ours), theirs, limits.get(name, 1.0), rounds)


def memory(bench, data):
    """Peak memory of the search beyond that of the scan, without what the workers read into."""
    for maker in (tiny, one_size):
        folder, truth = prepared(data, maker)
        process = subprocess.run([bench.tool("duplicates_bench"), folder], capture_output=True, check=True)
        check(process.stdout, truth, maker.__doc__)
        facts = json.loads(process.stderr)
        workers = min(4, os.cpu_count())
        per_file = max(0, facts["findKilobytes"] * 1024 - workers * WORKER_MEMORY) / facts["files"]
        bench.row("duplicates, memory a file: " + maker.__doc__.rstrip("."), "400 bytes", "%.0f" % per_file, "400", per_file / 400, 1.0)


def duplicates(bench, data, only=""):
    """All rows; in a cold run those of the two everyday sets."""
    sets = {small: {"jdupes": 0.5}, large: {"jdupes": 0.7}}
    if bench.cold:
        sets = {small: {"jdupes": 0.6}, large: {"jdupes": 0.6}}
    else:
        sets |= {maker: {} for maker in (one_size, last_bytes, last_byte_large, all_equal, all_empty, tiny)}
    for maker, limits in sets.items():
        if only in "duplicates " + maker.__name__:
            compare_set(bench, data, maker, limits)
    if not bench.cold and only in "duplicates memory":
        memory(bench, data)


def main():
    from bench import DATA, Bench
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--only", default="")
    parser.add_argument("--cold", action="store_true")
    options = parser.parse_args()
    os.makedirs(DATA, exist_ok=True)
    bench = Bench(options.build, options.rounds, options.cold)
    try:
        duplicates(bench, DATA, options.only)
    finally:
        shutil.rmtree(bench.home, ignore_errors=True)
    if bench.rows:
        print("\n| Work | ordovan+ | Peer | peer's | Ratio | At most |\n|---|---|---|---|---|---|")
        print("\n".join(bench.rows))


if __name__ == "__main__":
    main()
