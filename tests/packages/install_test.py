#!/usr/bin/python3
"""Installs ordovan+ below a folder of its own and checks what is there: the engine as a library, the desktop entries,
metainfo, icons, manual pages and the timer. Needs $ORDOVAN_BUILD (a finished build) and $ORDOVAN_CXX."""
import gzip
import os
import pathlib
import re
import shutil
import struct
import subprocess
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD = os.environ["ORDOVAN_BUILD"]
CXX = os.environ["ORDOVAN_CXX"]
CXX_FLAGS = os.environ.get("ORDOVAN_CXX_FLAGS", "")
FILE_MANAGERS = ("org.gnome.Nautilus", "thunar", "zim")


def run(*command, **options):
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, **options)
    if done.returncode != 0:
        raise AssertionError("%s: %d\n%s%s" % (" ".join(map(str, command)), done.returncode, done.stdout, done.stderr))
    return done.stdout


def needs(program):
    return unittest.skipUnless(shutil.which(program), "NOT TESTED: %s is not installed" % program)


def tree(folder):
    return {str(path.relative_to(folder)): path.read_bytes() if path.is_file() else None
            for path in folder.rglob("*")}


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="ordovan-install-")
        cls.top = pathlib.Path(cls.folder.name)
        cls.prefix = cls.top / "prefix"
        run("cmake", "--install", BUILD, "--prefix", cls.prefix)
        cls.share = cls.prefix / "share"
        cls.id = next(cls.share.glob("metainfo/*.metainfo.xml")).name.removesuffix(".metainfo.xml")

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def setUp(self):
        self.home = pathlib.Path(tempfile.mkdtemp(dir=self.top))

    def environment(self, **more):
        """That of somebody with an empty home, on whose machine nothing else is installed."""
        known = {"HOME": self.home, "PATH": "%s:%s/bin:/usr/bin:/bin" % (self.home / "bin", self.prefix),
                 "XDG_DATA_DIRS": self.share, "XDG_CONFIG_DIRS": self.home / "none", "LANG": "C.UTF-8",
                 "XDG_RUNTIME_DIR": self.home}
        return {name: str(value) for name, value in (known | more).items()}

    def stub(self, name, text):
        """A program in front of all others of its name."""
        program = self.home / "bin" / name
        program.parent.mkdir(exist_ok=True)
        program.write_text("#!/bin/sh\n" + text)
        program.chmod(0o755)


class Engine(Installed):
    """The library, as a program elsewhere uses it."""

    FOLDER = {"a.pdf": "1", "b/photo.JPG": "2", "ordovan+/Documents/taken.pdf": "3", "taken.pdf": "4", ".hidden": "5"}

    def planned(self, program):
        root = self.home / "folder"
        for name, text in self.FOLDER.items():
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(text)
        before = tree(root)
        printed = run(program, root)
        self.assertEqual(tree(root), before)
        return printed.replace(str(root) + "/", "")

    PLAN = ("a.pdf -> ordovan+/Documents/a.pdf\n"
            "b/photo.JPG -> ordovan+/Images/photo.JPG\n"
            "taken.pdf: A file already exists at the destination. Will not overwrite; left untouched.\n")

    def test_is_found_by_cmake_and_plans_a_folder(self):
        run("cmake", "-S", self.share / "doc/libordovancore-dev/examples/engine", "-B", self.home / "build", "-G", "Ninja",
            "-DCMAKE_PREFIX_PATH=%s" % self.prefix, "-DCMAKE_CXX_COMPILER=%s" % CXX,
            "-DCMAKE_CXX_FLAGS=%s" % CXX_FLAGS)
        run("cmake", "--build", self.home / "build")
        self.assertEqual(self.planned(self.home / "build/engine-example"), self.PLAN)

    def test_is_found_by_pkg_config(self):
        place = next(self.prefix.rglob("ordovancore.pc")).parent
        # The folder named in the file is the one that was configured; here it is installed elsewhere.
        flags = run("pkg-config", "--define-variable=prefix=%s" % self.prefix, "--cflags", "--libs", "ordovancore",
                    env=self.environment(PKG_CONFIG_PATH=place)).split()
        program = self.home / "example"
        run(CXX, "-std=c++23", *CXX_FLAGS.split(), HERE / "examples/engine/main.cpp", "-o", program, *flags)
        self.assertEqual(self.planned(program), self.PLAN)

    def test_has_every_header_that_its_headers_include(self):
        headers = sorted((self.prefix / "include").rglob("*.h"))
        self.assertGreater(len(headers), 40)
        missing = [(header.name, name) for header in headers
                   for name in re.findall(r'#include "([^"]+)"', header.read_text())
                   if not (self.prefix / "include" / name).is_file()]
        self.assertEqual(missing, [])

    def test_keeps_headers_that_only_its_own_sources_include(self):
        headers = self.prefix / "include/OrdovanCore"
        kept = ["DuplicateBucket.h", "ReconcileItem.h", "platform/SystemPath.h", "testing/MemoryFileSystem.h"]
        self.assertEqual([name for name in kept if (headers / name).exists()], [])

    def test_has_an_example_of_about_thirty_lines(self):
        example = (HERE / "examples/engine/main.cpp").read_text().splitlines()
        self.assertLess(len([line for line in example if line]), 34)


class Desktop(Installed):
    """What the desktop is told."""

    def entries(self):
        return sorted((self.share / "applications").glob("*.desktop"))

    def test_entries_are_valid(self):
        self.assertEqual([entry.name for entry in self.entries()],
                         [self.id + ".desktop", "zz." + self.id + ".folder.desktop"])
        for entry in self.entries():
            self.assertEqual(run("desktop-file-validate", entry), "")

    def test_metainfo_is_valid_and_shows_pictures_that_exist(self):
        metainfo = self.share / "metainfo" / (self.id + ".metainfo.xml")
        run("appstreamcli", "validate", "--no-net", metainfo)
        shown = re.findall(r'width="(\d+)" height="(\d+)">[^<]*/(docs/pictures/[^<]+)<', metainfo.read_text())
        self.assertGreater(len(shown), 2)
        for width, height, picture in shown:
            self.assertEqual(struct.unpack(">II", (HERE / picture).read_bytes()[16:24]), (int(width), int(height)))

    def test_icons_have_the_sizes_of_their_folders(self):
        sizes = []
        for icon in (self.share / "icons/hicolor").rglob(self.id + ".png"):
            size = int(icon.parent.parent.name.split("x")[0])
            self.assertEqual(struct.unpack(">II", icon.read_bytes()[16:24]), (size, size))
            sizes.append(size)
        self.assertEqual(sorted(sizes), [16, 22, 24, 32, 48, 64, 96, 128, 256, 512])
        self.assertTrue((self.share / "icons/hicolor/scalable/apps" / (self.id + ".svg")).is_file())

    def launched(self, script):
        """The arguments that ordovan gets when a desktop (here: GLib) starts it."""
        self.stub("ordovan", 'printf "%s\\n" "$@" >"$HOME/part" && mv "$HOME/part" "$HOME/started"\n')
        code = "import os, time\nfrom gi.repository import Gio\n%s\nwhile not os.path.exists('%s'): time.sleep(0.02)\n"
        run("/usr/bin/python3", "-c", code % (script, self.home / "started"), env=self.environment(), timeout=60)
        return (self.home / "started").read_text().splitlines()

    def test_a_folder_is_handed_over_as_it_is_called(self):
        for entry in self.entries():
            (self.home / "started").unlink(missing_ok=True)
            folder = self.home / 'a "b" $c d'
            script = "Gio.DesktopAppInfo.new_from_filename('%s').launch([Gio.File.new_for_path('%s')], None)"
            self.assertEqual(self.launched(script % (entry, folder)), [str(folder)])

    @needs("xdg-user-dir")
    def test_downloads_are_previewed_where_the_user_has_them(self):
        (self.home / ".config").mkdir()
        (self.home / ".config/user-dirs.dirs").write_text('XDG_DOWNLOAD_DIR="$HOME/Meine Downloads"\n')
        script = "Gio.DesktopAppInfo.new_from_filename('%s').launch_action('preview-downloads', None)"
        self.assertEqual(self.launched(script % self.entries()[0]), ["--", str(self.home / "Meine Downloads")])

    def handlers(self):
        """The programs that open folders, the default one first."""
        run("update-desktop-database", self.share / "applications")
        told = run("gio", "mime", "inode/directory", env=self.environment())
        return re.search("“inode/directory”: (.*)", told).group(1), re.findall(r"^\t(.*)$", told, re.MULTILINE)

    def test_is_offered_for_folders_without_becoming_the_default(self):
        others = [self.share / "applications" / (name + ".desktop") for name in FILE_MANAGERS]
        try:
            for other in others:
                other.write_text("[Desktop Entry]\nType=Application\nName=Other\nExec=true %f\n"
                                 "MimeType=inode/directory;\n")
            default, offered = self.handlers()
            self.assertEqual(default, FILE_MANAGERS[0] + ".desktop")
            self.assertIn("zz." + self.id + ".folder.desktop", offered)
            others[0].unlink()
            others[1].unlink()
            self.assertEqual(self.handlers()[0], FILE_MANAGERS[2] + ".desktop")
        finally:
            for other in others:
                other.unlink(missing_ok=True)


class CommandLine(Installed):
    """ordovan-cli, as a script or a terminal finds it."""

    @needs("readelf")
    def test_uses_no_graphical_library(self):
        told = run("readelf", "--dynamic", "--wide", self.prefix / "bin/ordovan-cli")
        used = re.findall(r"\(NEEDED\).*\[(lib.*?)\.so", told)
        self.assertEqual([name for name in used if name.startswith("libQt")], ["libQt6Core"])
        self.assertEqual([name for name in used if re.match("libX|libxcb|libGL|libEGL|libwayland", name)], [])

    @needs("fish")
    def test_is_completed_by_fish_without_being_asked_to(self):
        self.assertEqual(run("fish", "-c", "complete -C 'ordovan-cli previ' | cut -f1", env=self.environment()),
                         "preview\n")

    @needs("zsh")
    def test_is_completed_by_zsh_from_where_it_looks(self):
        function = next((self.share / "zsh").rglob("_ordovan-cli"))
        self.assertIn(function.parent.name, ("site-functions", "vendor-completions"))
        self.assertEqual(run("zsh", "-f", HERE / "tests/reference/complete.zsh", function.parent, "ordovan-cli previ",
                             env=self.environment()), "preview\n")

    def test_is_completed_by_bash_under_its_own_name(self):
        script = ". %s; complete -p ordovan-cli" % (self.share / "bash-completion/completions/ordovan-cli")
        self.assertIn(" ordovan-cli", run("bash", "-c", script, env=self.environment()))


class Manual(Installed):
    def page(self, name):
        with gzip.open(self.share / "man/man1" / (name + ".1.gz"), "rt") as file:
            return file.read()

    def test_of_the_window_has_every_option_that_its_help_shows(self):
        told = run(self.prefix / "bin/ordovan", "--help", env=self.environment())
        options = re.findall(r"--?[a-z-]+\b", " ".join(line for line in told.splitlines() if line.startswith("  ")))
        self.assertEqual(options, ["-h", "--help", "--version"])
        for option in options:
            self.assertIn("\\fB%s\\fR" % option.replace("-", "\\-"), self.page("ordovan"))

    @needs("groff")
    @needs("mandoc")
    def test_pages_are_well_formed(self):
        for name in ("ordovan", "ordovan-cli"):
            page = self.home / (name + ".1")
            page.write_text(self.page(name))
            for check in (("groff", "-man", "-ww", "-z", page), ("mandoc", "-T", "lint", page)):
                done = subprocess.run(check, capture_output=True, text=True, check=False)
                self.assertEqual(done.stdout + done.stderr, "")

    def test_pages_name_the_version_that_the_programs_tell(self):
        for name in ("ordovan", "ordovan-cli"):
            version = run(self.prefix / "bin" / name, "--version", env=self.environment()).split()[1]
            self.assertIn('"ordovan+ %s"' % version, self.page(name))


class Timer(Installed):
    """The recipe of a timer that tells what could be organized."""

    def setUp(self):
        super().setUp()
        self.units = self.share / "doc/ordovan-cli/examples"
        self.service = (self.units / "ordovan-preview.service").read_text()
        self.downloads = self.home / "Downloads"
        self.downloads.mkdir()

    @needs("systemd-analyze")
    def test_units_are_valid(self):
        manual = "--man=yes" if shutil.which("man") else "--man=no"
        for unit in ("service", "timer"):
            done = subprocess.run(["systemd-analyze", "--user", manual, "verify", self.units / ("ordovan-preview." + unit)],
                                  capture_output=True, text=True, check=False,
                                  env=self.environment(MANPATH=self.share / "man"))
            said = [line for line in done.stderr.splitlines() if "ordovan" in line]
            self.assertEqual((done.returncode, said), (0, []), done.stderr)

    def test_runs_no_command_but_preview_and_has_all_files_read_only(self):
        self.assertEqual(re.findall(r"ordovan-cli (\S+)", self.service.split("[Service]")[1]), ["preview"])
        for setting in ("PrivateUsers=yes", "ProtectSystem=strict", "ProtectHome=read-only"):
            self.assertIn("\n%s\n" % setting, self.service)

    def notification(self, prefix=()):
        self.stub("notify-send", 'printf "%s\\n" "$@" >>"$HOME/bin/notified"\n')
        command = re.search(r"^ExecStart=/bin/sh -c '(.*)'$", self.service, re.MULTILINE).group(1)
        command = command.replace("$$", "$").replace("%%", "%")
        run(*prefix, "/bin/sh", "-c", command, env=self.environment())
        told = self.home / "bin/notified"
        return told.read_text().splitlines() if told.exists() else []

    def test_notifies_and_moves_nothing(self):
        (self.downloads / "a.pdf").write_text("a")
        before = tree(self.downloads)
        self.assertEqual(self.notification(), ["--app-name=ordovan+", "Downloads", "1 proposed · 0 need review"])
        self.assertEqual(tree(self.downloads), before)

    def test_does_so_with_files_that_can_not_be_written(self):
        (self.downloads / "a.pdf").write_text("a")
        (self.home / "bin").mkdir()
        mounts = 'mount --bind "$0" "$0" && mount --bind "$0/bin" "$0/bin" && mount -o remount,bind,ro "$0" && exec "$@"'
        prefix = ("unshare", "-rm", "/bin/sh", "-c", mounts, self.home)
        if subprocess.run([*prefix, "true"], capture_output=True, check=False).returncode != 0:
            self.skipTest("NOT TESTED: no mounts can be made here")
        self.assertEqual(self.notification(prefix)[1:], ["Downloads", "1 proposed · 0 need review"])

    def test_fails_where_the_preview_does(self):
        self.downloads.rmdir()
        with self.assertRaisesRegex(AssertionError, "no folder"):
            self.notification()
        self.assertFalse((self.home / "bin/notified").exists())

    def test_is_silent_where_nothing_could_be_organized(self):
        self.assertEqual(self.notification(), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
