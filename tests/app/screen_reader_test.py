#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""quarbel-gui as a screen reader meets it through AT-SPI, on a private Xvfb, session bus and
accessibility bus: selects CPU Single-Core and presses Run with AT-SPI actions, then checks what a
screen reader says (the name, Running then Done, the progress in steps over the 15 s run and its
60 clock ticks, the score with its interval), printing what it hears as it goes.
Usage: screen_reader_test.py QUARBEL_GUI (needs Xvfb, dbus-run-session, at-spi2-core, python3-gi
and python3-pyatspi; fails, naming what is missing, without them).
"""
import contextlib
import os
import re
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import time

DEADLINE = time.monotonic() + 85  # for each process of the test, start-up and clean-up included
BUS_LAUNCHERS = ["/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher"]
PROGRESS_STEP = 10  # percent: the window announces progress no more often than this
TITLE = "CPU Single-Core"


class Failure(Exception):
    pass


def fail(message):
    raise Failure(message)


def needed_programs():
    launcher = next((p for p in BUS_LAUNCHERS if os.access(p, os.X_OK)), None)
    missing = [name for name in ("Xvfb", "dbus-run-session") if shutil.which(name) is None]
    if launcher is None:
        missing.append("at-spi-bus-launcher (at-spi2-core)")
    if missing:
        fail("missing: " + ", ".join(missing))
    return launcher


def start_xvfb():
    # -noreset: the server would reset as its last client leaves (the probe below, the bus
    # launcher), refusing connections meanwhile and dropping the bus address it holds.
    read_end, write_end = os.pipe()
    xvfb = subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x880x24",
                             "-nolisten", "tcp", "-noreset"], pass_fds=(write_end,),
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(write_end)
    with os.fdopen(read_end) as numbers:
        number = numbers.readline().strip()
    # The number comes before the server answers: wait for its answer to a connection setup.
    end = time.monotonic() + 15
    while number and time.monotonic() < end:
        with contextlib.suppress(OSError), socket.socket(socket.AF_UNIX) as connection:
            connection.connect("/tmp/.X11-unix/X" + number)
            connection.sendall(struct.pack("<cxHHHHxx", b"l", 11, 0, 0, 0))
            if connection.recv(1) == b"\x01":
                return xvfb, ":" + number
        time.sleep(0.1)
    xvfb.kill()
    fail("Xvfb did not start")


@contextlib.contextmanager
def private_desktop():
    """Yields an environment with an X display, accessibility bus and folders of the test's own."""
    launcher = needed_programs()
    children = []
    with tempfile.TemporaryDirectory(prefix="quarbel-a11y-") as private:
        env = dict(os.environ)
        for variable, folder in [("XDG_CONFIG_HOME", "config"), ("XDG_DATA_HOME", "data"), ("TMPDIR", "tmp"),
                                 ("XDG_RUNTIME_DIR", "runtime"), ("QUARBEL_RUN_LOCK_DIR", "locks")]:
            env[variable] = os.path.join(private, folder)
            os.makedirs(env[variable], mode=0o700)
        try:
            xvfb, env["DISPLAY"] = start_xvfb()
            children.append(xvfb)
            os.environ.update(env)  # pyatspi finds the accessibility bus through these
            children.append(subprocess.Popen([launcher, "--launch-immediately"], env=env,
                                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
            yield env, children
        finally:
            for child in reversed(children):
                child.terminate()
                try:
                    child.wait(timeout=10)
                except subprocess.TimeoutExpired:
                    child.kill()
                    child.wait()


def wait_for(condition, seconds, pump):
    """Runs the event loop until condition() holds; False when `seconds` (or the test's time) ran out."""
    end = min(time.monotonic() + seconds, DEADLINE)
    while time.monotonic() < end:
        pump()
        if condition():
            return True
        time.sleep(0.02)
    pump()
    return bool(condition())


class Listener:
    """Records the events a screen reader acts on, and prints what it would say for each."""
    TYPES = ["object:property-change:accessible-name", "object:property-change:accessible-description",
             "object:property-change:accessible-value", "object:state-changed:selected"]

    def __init__(self):
        self.started = time.monotonic()
        self.events = []  # (event type, role, name, what was said)

    def __call__(self, event):
        source = event.source
        try:
            role, name = source.getRoleName(), source.name
            if event.type.endswith("accessible-value"):
                said = "%d %%" % round(source.queryValue().currentValue)
            elif event.type.endswith("accessible-description"):
                said = source.description
            elif event.type.endswith("accessible-name"):
                said = name
            else:
                said = ("" if event.detail1 else "not ") + event.type.rsplit(":", 1)[1]
        except Exception as error:  # an object gone by the time it is read says so
            role, name, said = "?", "?", "unreadable: %s" % error
        self.events.append((event.type, role, name, said))
        print("[%5.2f s] %-12s %-28s %s" % (time.monotonic() - self.started, role, "'%s'" % name, said),
              flush=True)

    def said(self, role, name=None, kind=None):
        return [s for t, r, n, s in self.events
                if r == role and (name is None or n == name) and (kind is None or t.endswith(kind))]


def find(pyatspi, root, role, name=None):
    found = pyatspi.findDescendant(
        root, lambda a: a is not None and a.getRoleName() == role and (name is None or a.name == name))
    return found or fail("no %s named '%s' in the window" % (role, name))


def press(accessible, action):
    actions = accessible.queryAction()
    names = [actions.getName(i) for i in range(actions.nActions)]
    if action not in names:
        fail("'%s' offers no %s action, only %s" % (accessible.name, action, names))
    actions.doAction(names.index(action))


def hear_a_run(pyatspi, pump, frame, listener):
    # The painted views have roles and names; each benchmark item says its state.
    sidebar = find(pyatspi, frame, "list", "Benchmarks")
    items = [sidebar.getChildAtIndex(i) for i in range(sidebar.childCount)]
    print("list 'Benchmarks': %s" % ", ".join("%s (%s)" % (i.name, i.description) for i in items))
    if len(items) != 13 or any(i.getRoleName() != "list item" or not i.name or not i.description for i in items):
        fail("the list should hold 13 named items with their state, not %s"
             % [(i.getRoleName(), i.name, i.description) for i in items])
    for role, name in [("tool bar", "Run controls"), ("label", "Global score"), ("panel", "Live stage"),
                       ("progress bar", "Progress"), ("panel", "Run summary"), ("panel", "System")]:
        print("%s '%s': %s" % (role, name, find(pyatspi, frame, role, name).description or "(nothing yet)"))
    item = next((i for i in items if i.name == TITLE), None) or fail("no item for " + TITLE)
    print("-- pressing %s" % TITLE)
    press(item, "Press")
    if not wait_for(lambda: "selected" in listener.said("list item", TITLE, "selected"), 10, pump):
        fail("selecting %s sent no selection event" % TITLE)
    if not item.getState().contains(pyatspi.STATE_SELECTED):
        fail("%s is not in the selected state" % TITLE)
    result = find(pyatspi, frame, "panel", "Result of " + TITLE)

    print("-- pressing Run")
    press(find(pyatspi, frame, "push button", "Run"), "Press")
    done = re.compile(r"Done, [0-9.]+ points")
    states = lambda: listener.said("list item", TITLE, "description")
    if not wait_for(lambda: any(done.fullmatch(s) for s in states()), 60, pump):
        fail("%s never said it was done; it said %s" % (TITLE, states()))
    wait_for(lambda: listener.said("label", "Global score", "description"), 5, pump)

    if "Running" not in states() or states().index("Running") > [bool(done.fullmatch(s)) for s in states()].index(True):
        fail("%s should say Running before Done: %s" % (TITLE, states()))
    if TITLE not in listener.said("panel", None, "name"):
        fail("the live stage was never named after " + TITLE)
    # Each value is read back as its event is handled: late, it reads a later step, or 0 once the
    # run has ended and the bar has gone back. So the events are counted: one a step at most.
    progress = [int(s.rstrip(" %")) for s in listener.said("progress bar", "Progress", "value")]
    if len(progress) < 5 or any(not 0 <= p <= 100 for p in progress):
        fail("the progress should be told as the run goes, in percent: %s" % progress)
    if len(progress) > 100 // PROGRESS_STEP + 1:
        fail("the progress floods the screen reader, once a step is enough: %s" % progress)

    print("-- after the run")
    for role, name, expected in [("panel", result.name, r"[0-9.]+ Quarbel points, ± [0-9.]+ % \(95 % interval"),
                                 ("label", "Global score", r"[0-9.]+ Quarbel points, 1 of 13 complete"),
                                 ("panel", "Run summary", r".*Total score [0-9.]+, 1 of 1 completed")]:
        described = find(pyatspi, frame, role, name).description
        print("%s '%s': %s" % (role, name, described))
        if not re.match(expected, described):
            fail("%s '%s' should match '%s', not '%s'" % (role, name, expected, described))


def inner(gui):
    with private_desktop() as (env, children):
        try:
            from gi.repository import Gio, GLib
            import pyatspi
        except ImportError as error:
            fail("PyGObject or pyatspi is missing (python3-gi, python3-pyatspi): %s" % error)
        context = GLib.MainContext.default()

        def pump():
            while context.pending():
                context.iteration(False)

        session = Gio.bus_get_sync(Gio.BusType.SESSION, None)
        launched = lambda: session.call_sync(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
            GLib.Variant("(s)", ("org.a11y.Bus",)), None, Gio.DBusCallFlags.NONE, -1, None).unpack()[0]
        if not wait_for(launched, 15, pump):
            fail("the accessibility bus launcher did not start")

        log = tempfile.TemporaryFile("w+", dir=env["TMPDIR"])
        gui_env = dict(env, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb")
        process = subprocess.Popen([gui], env=gui_env, stdout=log, stderr=subprocess.STDOUT)
        children.append(process)

        def window():
            if process.poll() is not None:
                log.seek(0)
                fail("quarbel-gui ended (%s); it said:\n%s" % (process.returncode, log.read()))
            apps = [a for a in pyatspi.Registry.getDesktop(0) if a is not None and a.get_process_id() == process.pid]
            return apps and pyatspi.findDescendant(apps[0], lambda a: a is not None and a.getRoleName() == "frame"
                                                   and a.name == "Quarbel")

        if not wait_for(window, 30, pump):
            fail("the window never showed to AT-SPI")
        listener = Listener()
        pyatspi.Registry.registerEventListener(listener, *Listener.TYPES)
        wait_for(lambda: False, 1.0, pump)  # the window learns of the listener before anything happens
        print("What a screen reader finds and hears:", flush=True)
        hear_a_run(pyatspi, pump, window(), listener)
        pyatspi.Registry.deregisterEventListener(listener, *Listener.TYPES)
        print("passed in %.1f s" % (time.monotonic() - listener.started))


def main():
    if len(sys.argv) != 2 and not (len(sys.argv) == 3 and sys.argv[1] == "--inner"):
        print(__doc__, file=sys.stderr)
        return 2
    try:
        if sys.argv[1] != "--inner":
            needed_programs()
            # Everything runs on a session bus of its own, which ends with the test.
            return subprocess.run(["dbus-run-session", "--", sys.executable, os.path.abspath(__file__), "--inner",
                                   os.path.abspath(sys.argv[1])], timeout=DEADLINE - time.monotonic() + 5).returncode
        inner(sys.argv[2])
        return 0
    except Failure as failure:
        print("FAILED: %s" % failure, file=sys.stderr, flush=True)
        return 1
    except subprocess.TimeoutExpired:
        print("FAILED: the test ran out of time", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
