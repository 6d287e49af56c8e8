"""Folders to measure on: always the same names, sizes, bytes and times for the same arguments.

    datasets.py ROOT NAME...      makes ROOT/NAME unless it is there already

Names: downloads-N (N files in N/25 nested folders, mixed names), organize-N (N files of 4 to 256 KiB), collide (50,000
files with fifty names), flat (50,000 files in one folder), deep (300 nested folders, 10 files in each).
"""
import os
import random
import sys
import unicodedata

EXTENSIONS = ["pdf"] * 9 + ["jpg"] * 9 + ["JPG"] * 3 + ["png"] * 8 + ["docx"] * 4 + ["xlsx"] * 3 + ["txt"] * 3 + \
    ["csv"] * 2 + ["mp3"] * 2 + ["mp4"] * 2 + ["mov", "zip", "zip", "ZIP", "tar.gz", "dmg", "iso", "html", "json", "svg",
     "psd", "epub", "py", "gif", "webp", "heic", "md", "ttf", "xyz", ""]
STEMS = ["IMG_{a}", "DSC{a:05d}", "invoice {a}", "Invoice-{b}-{a}", "scan{a}", "Screenshot {b} at {a}", "report v{a}.{b}",
         "statement_{b}_{a}", "Track {b} - take {a}", "setup-{b}.{a}", "notes {a}", "backup{a}", "ticket-{a}", "data_{a}_{b}"]
FOREIGN = ["résumé {a}", "Überweisung {b} {a}", "naïve façade {a}", "Ångström {a}", "żółć {a} {b}", "Счёт {a}-{b}",
           "写真 {a}", "報告書 {b} {a}", "사진 {a}", "emoji 🎉 {a}", "crème brûlée {a}", "Straße {a}"]
FOLDERS = ["Archive", "photos", "Work", "Project {a}", "Taxes {b}", "Music", "Unterlagen", "Été {b}", "old", "client {a}",
           "写真 {a}", "misc {a}", "Semester {b}", "New folder ({a})"]
EPOCH = 1_700_000_000


def name(rng, patterns):
    text = rng.choice(patterns).format(a=rng.randrange(1, 4000), b=rng.randrange(1, 40))
    return unicodedata.normalize("NFD" if rng.random() < 0.4 else "NFC", text)


def folders(root, rng, count, deepest):
    os.makedirs(root)
    made, taken = [(root, 0)], set()
    while len(made) < count:
        parent, depth = made[int(len(made) * rng.random() ** 1.3)]
        child = name(rng, FOLDERS)
        key = (parent, unicodedata.normalize("NFC", child).casefold())
        if depth >= deepest or key in taken:
            continue
        taken.add(key)
        path = os.path.join(parent, child)
        os.mkdir(path)
        made.append((path, depth + 1))
    return [path for path, _ in made], taken


def write(path, data, when):
    with open(path, "xb") as file:
        file.write(data)
    os.utime(path, (when, when))


def scatter(root, count, folder_count, deepest, size_of, seed):
    rng = random.Random(seed * 1_000_003 + count)
    places, taken = folders(root, rng, folder_count, deepest)
    made = 0
    while made < count:
        folder = places[int(len(places) * rng.random() ** 1.5)]
        extension = rng.choice(EXTENSIONS)
        file = name(rng, FOREIGN if rng.random() < 0.18 else STEMS) + ("." + extension if extension else "")
        key = (folder, unicodedata.normalize("NFC", file).casefold())
        if key in taken:
            continue
        taken.add(key)
        write(os.path.join(folder, file), rng.randbytes(size_of(rng)), EPOCH + rng.randrange(50_000_000))
        made += 1


def collide(root):
    for i in range(1000):
        folder = os.path.join(root, "Folder %d" % i)
        os.makedirs(folder)
        for k in range(50):
            write(os.path.join(folder, "Report %d.PDF" % k), b"%d %d" % (i, k), EPOCH + i)


def flat(root):
    os.makedirs(root)
    for i in range(50_000):
        write(os.path.join(root, ("IMG_%d.jpg" if i % 3 else "img_%05d.JPG") % i), b"x", EPOCH + i)


def deep(root):
    path = root
    os.makedirs(path)
    for _ in range(300):
        path = os.path.join(path, "d")
        os.mkdir(path)
        for k in range(10):
            write(os.path.join(path, "f%d.txt" % k), b"", EPOCH)


def make(root, what):
    path = os.path.join(root, what)
    if os.path.isdir(path):
        return path
    partial = path + ".partial"
    os.makedirs(root, exist_ok=True)
    kind, _, number = what.partition("-")
    if kind == "downloads":
        count = int(number)
        scatter(partial, count, max(1, count // 25), 8, lambda rng: rng.randrange(0, 1500) if count <= 50_000 else 0, 11)
    elif kind == "organize":
        scatter(partial, int(number), max(1, int(number) // 50), 4, lambda rng: int(4096 * 64 ** rng.random()), 12)
    else:
        {"collide": collide, "flat": flat, "deep": deep}[what](partial)
    os.rename(partial, path)
    return path


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    for each in sys.argv[2:]:
        print(make(sys.argv[1], each))
