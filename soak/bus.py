"""The program as the session bus sees it, and its interface as assistive software sees it."""

import time

import dbus
import dbus.bus

from .finding import Finding

PROPERTIES = "org.freedesktop.DBus.Properties"
PLAYER = "org.mpris.MediaPlayer2.Player"
ROOT = "org.mpris.MediaPlayer2"
ACCESSIBLE = "org.a11y.atspi.Accessible"
NO_ANSWER = ("org.freedesktop.DBus.Error.NoReply", "org.freedesktop.DBus.Error.Timeout")
HANG = 1.0  # Seconds that an answer may take.


def connect(address):
    bus = dbus.bus.BusConnection(address)
    bus.set_exit_on_disconnect(False)
    return bus


class Caller:
    """Calls methods of one program on one bus, and notes how long the answers take."""

    def __init__(self, bus, name, patience, run_delay):
        self.bus = bus
        self.name = name
        self.patience = patience
        self.worst = 0.0
        self.run_delay = run_delay  # Seconds that the program has waited for a processor so far.

    def call(self, path, interface, method, signature="", *arguments):
        return self.call_to(self.name, path, interface, method, signature, *arguments)

    def call_to(self, name, path, interface, method, signature="", *arguments):
        start, waited = time.monotonic(), self.run_delay()
        try:
            return self.bus.call_blocking(name, path, interface, method, signature, arguments,
                                          timeout=10 * HANG * self.patience.slow)
        except dbus.DBusException as failure:
            if failure.get_dbus_name() in NO_ANSWER:
                raise Finding("hang", f"{method} of {interface} is not answered") from failure
            raise
        finally:
            self.note(method, time.monotonic() - start - (self.run_delay() - waited))

    def note(self, method, seconds):
        self.worst = max(self.worst, seconds)
        if seconds > HANG * self.patience.slow:
            raise Finding("hang", f"{method} was answered after {seconds:.2f} s")

    def get(self, path, interface, name):
        return self.call(path, PROPERTIES, "Get", "ss", interface, name)


class MediaPlayer:
    """The MPRIS player."""

    PATH = "/org/mpris/MediaPlayer2"
    NAME = "org.mpris.MediaPlayer2.tambrel"

    def __init__(self, caller):
        self.caller = caller

    def do(self, method, signature="", *arguments):
        """Returns whether the player did not refuse."""
        try:
            self.caller.call(self.PATH, PLAYER, method, signature, *arguments)
            return True
        except dbus.DBusException as refusal:
            if refusal.get_dbus_name() == "org.freedesktop.DBus.Error.NotSupported":
                return False
            raise

    def quit(self):
        try:
            self.caller.call(self.PATH, ROOT, "Quit")
        except dbus.DBusException:
            pass  # The program may end before it answers.

    def raise_window(self):
        self.caller.call(self.PATH, ROOT, "Raise")

    def status(self):
        return str(self.caller.get(self.PATH, PLAYER, "PlaybackStatus"))

    def position(self):
        """Seconds."""
        return int(self.caller.get(self.PATH, PLAYER, "Position")) / 1e6

    def song(self):
        """Track, title, address and length in seconds; None without a song."""
        data = self.caller.get(self.PATH, PLAYER, "Metadata")
        if not data:
            return None
        return (str(data["mpris:trackid"]), str(data["xesam:title"]), str(data["xesam:url"]),
                int(data["mpris:length"]) / 1e6)

    def title(self):
        song = self.song()
        return song[1] if song else None


class Interface:
    """The names of the window's views. They are looked up once: they live as long as the window."""

    def __init__(self, caller, root):
        self.caller = caller
        self.root = root
        self.paths = {}

    def children(self, path):
        return [str(child) for _, child in self.caller.call(path, ACCESSIBLE, "GetChildren")]

    def name(self, path):
        return str(self.caller.get(path, ACCESSIBLE, "Name"))

    def role(self, path):
        return str(self.caller.call(path, ACCESSIBLE, "GetRoleName"))

    def all_below(self, path):
        for child in self.children(path):
            yield child
            yield from self.all_below(child)

    def windows(self):
        try:
            return self.children(self.root)
        except dbus.DBusException:  # It is on the bus, and not ready yet.
            return []

    def find(self):
        """Finds the views of the main window by what they show before there is a song."""
        for window in self.windows():
            views = [(path, self.role(path), self.name(path)) for path in self.all_below(window)]
            labels = [(path, name) for path, role, name in views if role == "label"]
            buttons = [path for path, role, _ in views if role in ("push button", "button")]
            if not any(name == "TAMBREL" for _, name in labels) or len(buttons) < 5:
                continue
            at = next(place for place, (_, name) in enumerate(labels) if name == "TAMBREL")
            starts = lambda text: next(path for path, name in labels if name.startswith(text))
            self.paths = {"status": labels[at + 1][0], "file": labels[at + 2][0], "progress": starts("PROGRESS "),
                          "length": starts("LENGTH ")}
            self.paths |= dict(zip(("play", "stop", "rtz", "loudness", "clear"), buttons))
            return True
        return False

    def show(self, view):
        return self.name(self.paths[view])

    def is_enabled(self, view):
        states = self.caller.call(self.paths[view], ACCESSIBLE, "GetState")
        return bool(states[0] & 1 << 8)  # ATSPI_STATE_ENABLED

    def press(self, path):
        self.caller.call(path, "org.a11y.atspi.Action", "DoAction", "i", 0)

    def find_question(self, beginning):
        """The buttons, by name, of the window that asks this; None when there is none."""
        for window in self.windows():
            views = [(path, self.role(path), self.name(path)) for path in self.all_below(window)]
            if any(name.startswith(beginning) for _, _, name in views):
                return {name.replace("&", ""): path for path, role, name in views if "button" in role}
        return None


def owned_names(bus, pid):
    """The names that a process owns on a bus."""
    daemon = ("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus")
    names = []
    for name in bus.call_blocking(*daemon, "ListNames", "", (), timeout=5):
        try:
            if bus.call_blocking(*daemon, "GetConnectionUnixProcessID", "s", (name,), timeout=5) == pid:
                names.append(str(name))
        except dbus.DBusException:
            continue  # Gone meanwhile.
    return names


def accessibility_address(bus):
    return str(bus.call_blocking("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", "", (), timeout=10))
