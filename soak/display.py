"""The X display as users and window managers work it: windows, mouse, keys, and how soon a window answers."""

import select
import subprocess
import threading
import time

from Xlib import X, XK, Xatom, error
from Xlib import display as xlib
from Xlib.ext import xtest
from Xlib.protocol import event

ROOT_EVENTS = X.SubstructureRedirectMask | X.SubstructureNotifyMask


class Display:
    def __init__(self, name):
        self.x = xlib.Display(name)
        self.root = self.x.screen().root
        self.helper = self.root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)  # Never shown.

    def atom(self, name):
        return self.x.intern_atom(name)

    def has_window_manager(self):
        return self.root.get_full_property(self.atom("_NET_SUPPORTING_WM_CHECK"), X.AnyPropertyType) is not None

    def windows(self, pid):
        """The program's windows that the window manager knows, lowest first; minimized ones too."""
        listed = self.root.get_full_property(self.atom("_NET_CLIENT_LIST_STACKING"), Xatom.WINDOW)
        windows = [self.x.create_resource_object("window", number) for number in (listed.value if listed else [])]
        return [window for window in windows if self.pid_of(window) == pid]

    def pid_of(self, window):
        try:
            value = window.get_full_property(self.atom("_NET_WM_PID"), Xatom.CARDINAL)
        except error.BadWindow:
            return None
        return value.value[0] if value else None

    def title(self, window):
        try:
            value = window.get_full_property(self.atom("_NET_WM_NAME"), X.AnyPropertyType)
        except error.BadWindow:
            return ""
        return value.value.decode() if value else ""

    def size(self, window):
        geometry = window.get_geometry()
        return geometry.width, geometry.height

    def is_active(self, window):
        active = self.root.get_full_property(self.atom("_NET_ACTIVE_WINDOW"), Xatom.WINDOW)
        return active is not None and active.value[0] == window.id

    def is_minimized(self, window):
        state = window.get_full_property(self.atom("_NET_WM_STATE"), Xatom.ATOM)
        return state is not None and self.atom("_NET_WM_STATE_HIDDEN") in state.value

    def tell_window_manager(self, window, message, *data):
        values = (list(data) + [0] * 5)[:5]
        message = event.ClientMessage(window=window, client_type=self.atom(message), data=(32, values))
        self.root.send_event(message, event_mask=ROOT_EVENTS)
        self.x.flush()

    def activate(self, window):
        self.tell_window_manager(window, "_NET_ACTIVE_WINDOW", 2)

    def minimize(self, window):
        self.tell_window_manager(window, "WM_CHANGE_STATE", 3)

    def close(self, window):
        self.tell_window_manager(window, "_NET_CLOSE_WINDOW", 0, 2)

    def move(self, window, x, y):
        has_x, has_y, static_gravity, from_pager = 1 << 8, 1 << 9, 10, 2 << 12
        self.tell_window_manager(window, "_NET_MOVERESIZE_WINDOW", has_x | has_y | static_gravity | from_pager, x, y)

    def is_under_pointer(self, window):
        below = self.root.query_pointer().child
        while below and below != X.NONE and below.id != window.id:
            below = below.query_pointer().child
        return bool(below and below != X.NONE)

    # Input

    def point(self, window, x, y):
        place = self.root.translate_coords(window, 0, 0)
        xtest.fake_input(self.x, X.MotionNotify, x=place.x + x, y=place.y + y)
        self.x.sync()

    def button(self, is_pressed, number=1):
        xtest.fake_input(self.x, X.ButtonPress if is_pressed else X.ButtonRelease, number)
        self.x.sync()

    def click(self):
        self.button(True)
        self.button(False)

    def key(self, name, *modifiers):
        """Presses a key of the US keyboard, named as X names it."""
        codes = [self.x.keysym_to_keycode(XK.string_to_keysym(each)) for each in [*modifiers, name]]
        for code in codes:
            xtest.fake_input(self.x, X.KeyPress, code)
        for code in reversed(codes):
            xtest.fake_input(self.x, X.KeyRelease, code)
        self.x.sync()

    def type(self, text):
        names = {"/": "slash", ".": "period", "-": "minus", "_": "underscore"}
        for character in text:
            is_shifted = character.isupper() or character == "_"
            self.key(names.get(character, character), *(["Shift_L"] if is_shifted else []))

    def is_through(self, patience):
        """Waits until the window manager, by which clicks go first, has passed on all input so far."""
        extents = self.atom("_NET_FRAME_EXTENTS")
        self.helper.delete_property(extents)
        self.tell_window_manager(self.helper, "_NET_REQUEST_FRAME_EXTENTS")
        patience.until(lambda: self.helper.get_full_property(extents, Xatom.CARDINAL), 5, "the input arrives")

    def screenshot(self, file, environment):
        return subprocess.run(["import", "-window", "root", str(file)], env=environment, timeout=20,
                              stderr=subprocess.DEVNULL).returncode == 0


class Pulse(threading.Thread):
    """Asks a window for a sign of life four times a second, as window managers do, and notes the delays.

    The answer comes out of the program's event loop, so it needs no session bus.
    """

    INTERVAL = 0.25  # Seconds.

    def __init__(self, display_name):
        super().__init__(daemon=True)
        self.x = xlib.Display(display_name)
        self.root = self.x.screen().root
        self.root.change_attributes(event_mask=X.SubstructureNotifyMask | X.StructureNotifyMask)
        self.protocols = self.x.intern_atom("WM_PROTOCOLS")
        self.ping = self.x.intern_atom("_NET_WM_PING")
        self.window = None  # Number of the window that is asked; none while no answer is due.
        self.asked = None  # When the question was asked that is still unanswered.
        self.worst = 0.0
        self.ended = threading.Event()

    def run(self):
        self.x.set_error_handler(lambda *_: None)  # Windows may go.
        serial = 0
        while not self.ended.is_set():
            window, serial = self.window, serial + 1
            if window is None:
                self.ended.wait(0.02)
                continue
            self.ask(window, serial)
            self.wait_for_answer(window, serial)
            self.ended.wait(self.INTERVAL)

    def ask(self, number, serial):
        window = self.x.create_resource_object("window", number)
        message = event.ClientMessage(window=window, client_type=self.protocols,
                                      data=(32, [self.ping, serial, number, 0, 0]))
        window.send_event(message)
        self.x.flush()
        self.asked = time.monotonic()

    def wait_for_answer(self, window, serial):
        while self.window == window and not self.ended.is_set():
            if not self.x.pending_events():
                select.select([self.x], [], [], 0.02)
                continue
            answer = self.x.next_event()
            if answer.type == X.ClientMessage and answer.client_type == self.protocols and \
                    answer.data[1][0] == self.ping and answer.data[1][1] == serial:
                self.worst = max(self.worst, time.monotonic() - self.asked)
                break
        self.asked = None

    def waiting(self):
        """Seconds that the window has owed an answer."""
        asked = self.asked
        return time.monotonic() - asked if asked else 0.0
