"""Runs the window on a display, a bus and in a home of its own, and works it as a screen reader's user would: by the
names of what is on the screen, and with the keyboard.

A `Desk` is the display with its window manager and buses, one for a test program. `Desk.start` gives a `Window`: the
running program. Everything that was started ends with the desk. When a tool is missing, the test program says which and
ends with status 77, which the test runner reports as skipped.
"""
import contextlib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
import warnings

PROGRAM = os.environ.get("ORDOVAN", "")
SKIPPED = 77
PATIENCE = 60  # seconds until something that never comes is given up; nothing waits longer than it must

warnings.filterwarnings("ignore", category=DeprecationWarning)


def _what_is_missing():
    tools = [t for t in ("Xvfb", "openbox", "xdotool", "import", "dbus-daemon") if not shutil.which(t)]
    try:
        import gi
        gi.require_version("Atspi", "2.0")
    except (ImportError, ValueError) as error:
        tools.append("Atspi for Python (%s)" % error)
    return tools


def main():
    """Runs the tests of the calling program."""
    missing = _what_is_missing()
    if missing:
        print("SKIPPED: the window is not tested, because these are missing: %s. scripts/bootstrap installs them."
              % ", ".join(missing), file=sys.stderr)
        sys.exit(SKIPPED)
    if not os.access(PROGRAM, os.X_OK):
        sys.exit("ORDOVAN must name the program to test.")
    unittest.main(verbosity=2, warnings="ignore")


def until(condition, what, patience=PATIENCE):
    """The first true value of `condition()`; fails with `what()` (or the text `what`) when there is none in time."""
    deadline = time.monotonic() + patience
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(what() if callable(what) else what)
        time.sleep(0.03)


class Desk:
    """A private display of `size` with a window manager, a session bus and the accessibility bus. One a process."""

    def __init__(self, size="1280x800"):
        self._ends = contextlib.ExitStack()
        self.runtime = pathlib.Path(self._ends.enter_context(tempfile.TemporaryDirectory(prefix="desk-")))
        self.runtime.chmod(0o700)
        self._start_display(size)
        self._start_buses()
        self._spawn("openbox", "--sm-disable")
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi
        self.atspi = Atspi
        until(lambda: Atspi.get_desktop(0) is not None, "no accessibility bus")

    def _spawn(self, *command, **options):
        process = subprocess.Popen(command, **{"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, **options})
        self._ends.callback(_end, process)
        return process

    def _start_display(self, size):
        read, write = os.pipe()
        self._spawn("Xvfb", "-screen", "0", size + "x24", "-nolisten", "tcp", "-displayfd", str(write),
                    pass_fds=[write])
        os.close(write)
        with os.fdopen(read) as number:
            os.environ["DISPLAY"] = ":" + number.readline().strip()
        os.environ.pop("WAYLAND_DISPLAY", None)
        os.environ["XDG_RUNTIME_DIR"] = str(self.runtime)

    def _start_buses(self):
        """The accessibility bus is started by the session bus as soon as it is asked for."""
        bus = self._spawn("dbus-daemon", "--session", "--nofork", "--print-address", stdout=subprocess.PIPE, text=True)
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().strip()

    def close(self):
        self._ends.close()

    @contextlib.contextmanager
    def start(self, *arguments, home=None, environment=None, folder=None):
        """The program with these arguments, as a `Window`. It has been told to end when this returns."""
        with contextlib.ExitStack() as stack:
            home = home or pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory(prefix="home-")))
            window = Window(self, arguments, home, environment or {}, folder)
            stack.callback(window.end)
            yield window

    def run(self, *arguments, home, environment=None):
        """The program to its end: its status, output and messages."""
        return subprocess.run([PROGRAM, *arguments], env=_environment(home, environment or {}), text=True,
                              capture_output=True, timeout=PATIENCE)

    def key(self, *keys):
        subprocess.run(["xdotool", "key", "--clearmodifiers", *keys], check=True)

    def type(self, text):
        subprocess.run(["xdotool", "type", "--clearmodifiers", "--delay", "5", text], check=True)

    def picture(self, path):
        subprocess.run(["import", "-window", "root", str(path)], check=True)

    def brightness(self):
        """The mean of what is on the screen, 0 to 1."""
        result = subprocess.run(["import", "-window", "root", "-colorspace", "gray", "-format", "%[fx:mean]", "info:"],
                                check=True, capture_output=True, text=True)
        return float(result.stdout)


def _end(process):
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


def _environment(home, more):
    own = {"HOME": str(home), "XDG_CONFIG_HOME": str(home / ".config"), "XDG_DATA_HOME": str(home / ".local/share"),
           "QT_QPA_PLATFORM": "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "LC_ALL": "C.UTF-8", "TZ": "UTC",
           "ORDOVAN_COLOR_SCHEME": "light",
           # The toolkit and the font library keep what they have until the process ends.
           "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"}
    return {**os.environ, **own, **more}


class Window:
    """The running program and what it shows. Names are those that assistive technologies are given."""

    def __init__(self, desk, arguments, home, environment, folder):
        self.desk = desk
        self.home = home
        self._log = tempfile.TemporaryFile("w+")
        self.process = subprocess.Popen([PROGRAM, *map(str, arguments)], env=_environment(home, environment),
                                        stdout=self._log, stderr=subprocess.STDOUT, cwd=folder)
        until(self._is_shown, lambda: "no window; the program said: " + self.output())

    def _is_shown(self):
        if self.process.poll() is not None:
            raise AssertionError("it ended with %s: %s" % (self.process.returncode, self.output()))
        return self.find("ordovan+", role="frame") is not None

    def output(self):
        self._log.seek(0)
        return self._log.read()

    def end(self):
        _end(self.process)
        self._log.close()

    def _application(self):
        desktop = self.desk.atspi.get_desktop(0)
        desktop.clear_cache()
        for index in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(index)
            if child is not None and child.get_process_id() == self.process.pid:
                return child
        return None

    def _nodes(self):
        """Everything that is showing, from the top down."""
        showing = self.desk.atspi.StateType.SHOWING
        rows = [self._application()]
        while rows:
            node = rows.pop()
            try:
                if node is None:
                    continue
                node.clear_cache()
                if node.get_role_name() == "application" or node.get_state_set().contains(showing):
                    yield node
                    children = min(node.get_child_count(), 500)
                    rows += [node.get_child_at_index(i) for i in reversed(range(children))]
            except Exception:  # gone while it was looked at
                continue

    def find(self, name, role=None):
        """What shows under exactly this name, or None."""
        for node in self._nodes():
            try:
                if node.get_name() == name and role in (None, node.get_role_name()):
                    return node
            except Exception:
                continue
        return None

    def texts(self):
        names = []
        for node in self._nodes():
            with contextlib.suppress(Exception):
                names.append(node.get_name() or "")
        return names

    def shows(self, text):
        """Whether something shows whose name holds this text."""
        return any(text in name for name in self.texts())

    def wait(self, text):
        until(lambda: self.shows(text), lambda: "%r does not show, but:\n%s" % (text, self.outline()))

    def wait_gone(self, text):
        until(lambda: not self.shows(text), lambda: "%r still shows:\n%s" % (text, self.outline()))

    def outline(self):
        return "\n".join("%s %r" % (node.get_role_name(), node.get_name()) for node in self._nodes())

    def control(self, name, role=None):
        return until(lambda: self.find(name, role),
                     lambda: "there is no %r, but:\n%s" % (name, self.outline()))

    def press(self, name, role=None):
        """Does what a screen reader does to activate the control."""
        node = self.control(name, role)
        action = node.get_action_iface()
        for index in range(action.get_n_actions() if action else 0):
            if action.get_action_name(index).lower() in ("press", "toggle", "showmenu"):
                action.do_action(index)
                return
        raise AssertionError("%r can not be pressed" % name)

    def state(self, name, state, role=None):
        """Whether the control has a state ("CHECKED", "SELECTED", "ENABLED", ...)."""
        states = self.control(name, role).get_state_set()
        return states.contains(getattr(self.desk.atspi.StateType, state))

    def extents(self, name, role=None):
        """Its place on the screen: x, y, width, height."""
        box = self.control(name, role).get_component_iface().get_extents(self.desk.atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    def focus(self):
        """Gives the window the keyboard."""
        subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", "^ordovan\\+$", "windowactivate",
                        "--sync"], check=True, capture_output=True)

    def resize(self, width, height):
        subprocess.run(["xdotool", "getactivewindow", "windowsize", str(width), str(height)], check=True)

    def key(self, *keys):
        self.desk.key(*keys)

    def type(self, text):
        self.desk.type(text)

    def wait_for_end(self):
        """Its exit status."""
        return self.process.wait(PATIENCE)


def tree(root, files):
    """Writes files (name: content) below a folder, which is made."""
    for name, content in files.items():
        path = pathlib.Path(root) / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(content)


def listing(root):
    """The files below a folder, as sorted relative names."""
    root = pathlib.Path(root)
    return sorted(str(path.relative_to(root)) for path in root.rglob("*") if path.is_file())
