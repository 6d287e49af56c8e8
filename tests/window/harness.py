"""Runs the window on a display, a bus and in a home of its own, and works it as a screen reader's user would: by the
names of what is on the screen, and with the keyboard.

A `Desk` is the display with its window manager and buses, one for a test program. `Desk.start` gives a `Window`: the
running program. Everything that was started ends with the desk. When a tool is missing, the test program says which and
ends with status 77, which the test runner reports as skipped.
"""
import contextlib
import ctypes
import json
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
COMMAND_LINE = os.environ.get("ORDOVAN_CLI", "")
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


def main(needs_command_line=False):
    """Runs the tests of the calling program."""
    missing = _what_is_missing()
    if missing:
        print("SKIPPED: the window is not tested, because these are missing: %s. scripts/bootstrap installs them."
              % ", ".join(missing), file=sys.stderr)
        sys.exit(SKIPPED)
    if not os.access(PROGRAM, os.X_OK):
        sys.exit("ORDOVAN must name the program to test.")
    if needs_command_line and not os.access(COMMAND_LINE, os.X_OK):
        sys.exit("ORDOVAN_CLI must name the command-line program to compare with.")
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
        self._start_window_manager()
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
        # Otherwise it starts anew, and takes its clients with it, whenever the last of them has gone.
        self._spawn("Xvfb", "-screen", "0", size + "x24", "-nolisten", "tcp", "-noreset", "-displayfd", str(write),
                    pass_fds=[write])
        os.close(write)
        with os.fdopen(read) as number:
            os.environ["DISPLAY"] = ":" + number.readline().strip()
        os.environ.pop("WAYLAND_DISPLAY", None)
        os.environ["XDG_RUNTIME_DIR"] = str(self.runtime)

    def _start_window_manager(self):
        """Nothing can be activated before it is there."""
        self._spawn("openbox", "--sm-disable")
        asked = ["xdotool", "get_num_desktops"]
        until(lambda: subprocess.run(asked, capture_output=True).returncode == 0, "no window manager")

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
           # The toolkit and the font library keep what they have until the process ends, and the keyboard library
           # copies strings that end by their length.
           "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0:strict_string_checks=0"}
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

    def child(self, node, name):
        """The part of a row that has this name, such as one of its buttons, or None."""
        parts = (node.get_child_at_index(index) for index in range(node.get_child_count()))
        return next((part for part in parts if part is not None and part.get_name() == name), None)

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

    def part(self, row, name):
        """A part of the first row with a name that has such a part."""
        def found():
            for node in self._nodes():
                with contextlib.suppress(Exception):
                    part = self.child(node, name) if node.get_name() == row else None
                    if part is not None:
                        return part
            return None
        return until(found, lambda: "there is no %r on %r, but:\n%s" % (name, row, self.outline()))

    def press(self, name, role=None, row=None):
        """Does what a screen reader does to activate the control, or one on a row."""
        self.act(self.part(row, name) if row else self.control(name, role), "press", "toggle", "showmenu")

    def act(self, node, *names):
        """Does the first action of a control that has one of these names, in small letters."""
        action = node.get_action_iface()
        known = [action.get_action_name(index).lower() for index in range(action.get_n_actions() if action else 0)]
        for index, name in enumerate(known):
            if name in names:
                action.do_action(index)
                return
        raise AssertionError("%r does none of %s, but %s" % (node.get_name(), names, known))

    def focus_on(self, name, role=None):
        """Gives a control or a row the keyboard focus."""
        self.focus()
        node = self.control(name, role)
        if not node.get_component_iface() or not node.get_component_iface().grab_focus():
            self.act(node, "setfocus")
        until(lambda: name in self.focused(), lambda: "%r has not the focus, but %s" % (name, self.focused()))

    def focused(self):
        """The names of what has the keyboard focus: a list and its current row have it together."""
        names = []
        for node in self._nodes():
            with contextlib.suppress(Exception):
                if node.get_state_set().contains(self.desk.atspi.StateType.FOCUSED):
                    names.append(node.get_name())
        return names

    def tab_to(self, name, key="Tab", most=40):
        """Goes with a key until a control of this name has the focus."""
        for _ in range(most):
            before = self.focused()
            if name in before:
                return
            self.key(key)
            until(lambda: self.focused() not in ([], before), lambda: "%s moves nothing from %s" % (key, before))
        raise AssertionError("%s does not lead to %r, but:\n%s" % (key, name, self.outline()))

    def state(self, name, state, role=None):
        """Whether the control has a state ("CHECKED", "SELECTED", "ENABLED", ...)."""
        states = self.control(name, role).get_state_set()
        return states.contains(getattr(self.desk.atspi.StateType, state))

    def told_states(self, name, state, act):
        """What assistive technologies are told of a state ("enabled", "checked", ...) of something of this name from
        `act()` on, until something is."""
        from gi.repository import GLib
        loop, told = GLib.MainLoop(), []

        def hear(event):
            with contextlib.suppress(Exception):
                if event.source.get_name() == name:
                    told.append(bool(event.detail1))
                    loop.quit()
        listener = self.desk.atspi.EventListener.new(hear)
        listener.register("object:state-changed:" + state)
        act()
        give_up = GLib.timeout_add(PATIENCE * 1000, loop.quit)
        loop.run()
        GLib.source_remove(give_up) if told else None
        listener.deregister("object:state-changed:" + state)
        return told

    def extents(self, name, role=None):
        """Its place on the screen: x, y, width, height."""
        box = self.control(name, role).get_component_iface().get_extents(self.desk.atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    def focus(self):
        """Gives the window the keyboard."""
        subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", "^ordovan\\+$", "windowactivate",
                        "--sync"], check=True, capture_output=True)

    def dialog(self, title):
        """Waits for a dialog with a frame of its own, and until it has the keyboard."""
        self.control(title, role="dialog")

        def active():
            asked = ["xdotool", "getactivewindow", "getwindowname"]
            return subprocess.run(asked, capture_output=True, text=True).stdout.strip()

        until(lambda: active() == title, lambda: "%r has not the keyboard, but %r" % (title, active()))

    def enter(self, field, text):
        """Puts a text into a field at once, as a screen reader does, in the place of what it holds. (Qt's file dialog
        completes what is typed, from folders that it lists meanwhile.)"""
        node = self.control(field, role="text").get_editable_text_iface()
        assert node.set_text_contents(text)

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


def read_all(root):
    """The files below a folder with what they hold."""
    return {name: (pathlib.Path(root) / name).read_bytes() for name in listing(root)}


def command_line(home, *arguments, status=0):
    """What the command-line program answers, as JSON; fails unless it ends with this status."""
    result = subprocess.run([COMMAND_LINE, *map(str, arguments), "--json"], env=_environment(home, {}), text=True,
                            capture_output=True, timeout=PATIENCE)
    if result.returncode != status:
        raise AssertionError("%s ended with %s: %s%s" % (arguments, result.returncode, result.stdout, result.stderr))
    return json.loads(result.stdout)


def start_command_line(home, *arguments):
    """The command-line program, running. The caller waits for its end."""
    return subprocess.Popen([COMMAND_LINE, *map(str, arguments)], env=_environment(home, {}), text=True,
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)


class SecondVolume:
    """A real file system besides the one of temporary files, in memory; seen by this process and those it starts, and
    gone with them. `available()` must be asked before there is a `Desk`."""

    _NEW_MOUNTS, _NEW_USERS = 0x00020000, 0x10000000
    _RECURSIVE, _PRIVATE = 0x4000, 0x40000
    _libc = ctypes.CDLL(None, use_errno=True)
    _available = None
    UNAVAILABLE = "NOT TESTED: no second volume can be mounted here (neither root nor user namespaces)"

    @classmethod
    def available(cls):
        if cls._available is None:
            cls._available = cls._enter_namespace()
        return cls._available

    @classmethod
    def _enter_namespace(cls):
        user, group = os.geteuid(), os.getegid()
        if cls._libc.unshare(cls._NEW_MOUNTS | (cls._NEW_USERS if user else 0)) != 0:
            return False
        if user:
            for name, text in (("uid_map", "%d %d 1" % (user, user)), ("setgroups", "deny"),
                               ("gid_map", "%d %d 1" % (group, group))):
                pathlib.Path("/proc/self", name).write_text(text)
        return cls._libc.mount(None, b"/", None, cls._RECURSIVE | cls._PRIVATE, None) == 0

    def __init__(self):
        self._place = tempfile.TemporaryDirectory(prefix="volume-")
        self.path = pathlib.Path(self._place.name)
        if self._libc.mount(b"ordovan-test", bytes(self.path), b"tmpfs", 0, b"mode=755,size=64m") != 0:
            error = OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))
            self._place.cleanup()
            raise error

    def close(self):
        detached = 2
        self._libc.umount2(bytes(self.path), detached)
        self._place.cleanup()
