"""The program under test: starting it, what it needs, how it ends."""

import re
import signal
import time
from contextlib import contextmanager
from pathlib import Path

import dbus

from . import bus as session
from .finding import Finding
from .processes import state_of

LOG_FOLDER = ".local/share/Kestrune Software/Tambrel/Beta Logs"
MAIN_WINDOW = "Tambrel"
CONTENT = 480  # Width and height of what lies below the menu bar, in points.
# What the program may say on standard error: that a file cannot be played,
EXPECTED = re.compile(r"^tambrel: (Could not read|Malformed MIDI data|Unsupported Standard MIDI File|"
                      r"Invalid MIDI 2\.0 clip|.*: Not a file that Tambrel opens)")
# and for a while, that there is no sound server.
WITHOUT_SOUND = re.compile(r"^tambrel: Could not prepare MIDI playback: No sound output could be opened\.")


class Program:
    def __init__(self, machine, display, pulse, path):
        self.machine = machine
        self.patience = machine.patience
        self.display = display
        self.pulse = pulse
        self.path = str(path)
        self.errors = machine.logs / "stderr.txt"
        self.errors_read = 0
        self.process = None
        self.window = self.player = self.interface = self.application = None
        self.starts = 0
        self.worst_answer = 0.0
        self.is_stopped = False  # By SIGSTOP of ours.
        self.keeps_log = None  # Not known yet.
        self.can_write = True  # Its home folder.

    # Beginning

    def start(self, *arguments, on_bus=True):
        self.starts += 1
        asks = self.marker().exists() and self.keeps_log
        self.process = self.machine.processes.start([self.path, *map(str, arguments)], self.errors,
                                                    self.machine.environment)
        self.window = self.patience.until(self.find_window, 10, "the window shows", "hang")
        self.pulse.window = self.window.id
        self.player = self.interface = self.application = None
        if on_bus:
            self.find_interface()
            if asks:
                self.answer_question()
            self.find_player()
        if self.keeps_log is None:
            self.keeps_log = bool(self.patience.within(self.marker().exists, 2))

    def find_window(self):
        for window in self.display.windows(self.process.pid):
            if self.display.title(window) == MAIN_WINDOW and self.display.size(window)[0] == CONTENT:
                return window
        return None

    def caller(self, bus, name):
        return session.Caller(bus, name, self.patience, self.run_delay)

    def find_interface(self):
        bus = session.connect(self.machine.environment["DBUS_SESSION_BUS_ADDRESS"])
        accessibility = session.connect(session.accessibility_address(bus))
        name = self.patience.until(lambda: session.owned_names(accessibility, self.process.pid), 10,
                                   "assistive software sees the program", "hang")[0]
        self.bus = bus
        self.interface = session.Interface(self.caller(accessibility, name), "/org/a11y/atspi/accessible/root")
        self.patience.until(self.interface.find, 10, "assistive software sees the views", "interface")

    def find_player(self):
        wanted = session.MediaPlayer.NAME
        owned = lambda: [name for name in session.owned_names(self.bus, self.process.pid) if name.startswith(wanted)]
        name = self.patience.until(owned, 10, "the player comes to the bus", "hang")[0]
        self.player = session.MediaPlayer(self.caller(self.bus, name))
        names = session.owned_names(self.bus, self.process.pid)
        self.application = next((name for name in names if name.startswith("software.kestrune.")), None)

    def answer_question(self, answer=None):
        """The question after a crash, which must come."""
        text = "Tambrel may not have closed normally last time."
        buttons = self.patience.until(lambda: self.interface.find_question(text), 10,
                                      "the question about the earlier crash comes", "crash prompt")
        answer = answer or ("Email Report" if self.starts % 2 else "Not Now")
        self.machine.mail.unlink(missing_ok=True)
        self.interface.press(buttons[answer])
        if answer == "Email Report":
            self.patience.until(self.machine.mail.exists, 20, "the report reaches the mail program", "crash prompt")

    # What it is like

    @property
    def pid(self):
        return self.process.pid

    def marker(self):
        return self.machine.home / LOG_FOLDER / "Tambrel-session-active.marker"

    def run_delay(self):
        """Seconds that its main thread has waited for a processor: no fault of the program."""
        try:
            return int(Path(f"/proc/{self.process.pid}/schedstat").read_text().split()[1]) / 1e9
        except (OSError, IndexError, AttributeError):
            return 0.0  # It ends, or has ended.

    def memory(self):
        """MB in memory that it has asked for itself."""
        for line in Path(f"/proc/{self.pid}/status").read_text().splitlines():
            if line.startswith("RssAnon:"):
                return int(line.split()[1]) / 1024
        return 0.0

    def new_errors(self):
        """Lines on standard error since the last time that are no usual complaint about a file."""
        with open(self.errors, "rb") as file:
            file.seek(self.errors_read)
            text = file.read()
        end = text.rfind(b"\n") + 1
        self.errors_read += end
        lines = text[:end].decode(errors="replace").splitlines()
        return [line for line in lines if line.strip() and not self.is_expected(line)]

    def is_expected(self, line):
        return EXPECTED.match(line) or (self.machine.sound_is_missing() and WITHOUT_SOUND.match(line))

    def is_stopped_by_others(self):
        return state_of(self.pid) == "T" and not self.is_stopped

    # End

    def forget(self):
        self.forget_callers()
        self.pulse.window = self.window = None

    def forget_callers(self):
        for each in (self.player, self.interface):
            if each:
                self.worst_answer = max(self.worst_answer, each.caller.worst)
        self.player = self.interface = self.application = None

    def end(self, ask, what, expected=0):
        """Has it end by `ask`, and waits for that; any other exit status than the expected one is a finding."""
        self.pulse.window = None
        process, self.process = self.process, None  # Its end is no crash.
        pid = process.pid
        try:
            ask(process)
        finally:
            status = None
            end = time.monotonic() + 10 * self.patience.slow
            while status is None and time.monotonic() < end:
                status = process.poll()
                time.sleep(0.01)
            self.forget()
        if status is None:
            self.process = process
            raise Finding("hang", f"process {pid} has not ended 10 s after {what}")
        self.machine.processes.started.remove(process)
        if status != expected:
            raise Finding("crash", f"exit status {status} after {what}")
        if expected == 0 and self.keeps_log and self.marker().exists() and self.can_write:
            raise Finding("marker", f"a normal end ({what}) is taken for a crash")

    def terminate(self):
        self.end(lambda process: process.send_signal(signal.SIGTERM), "SIGTERM")

    def kill(self):
        self.end(lambda process: process.kill(), "SIGKILL", -signal.SIGKILL)

    # What is done to it

    @contextmanager
    def unwritable(self):
        """While its home folder cannot be written."""
        self.can_write = False
        yield
        self.can_write = True

    @contextmanager
    def stopped(self):
        """By SIGSTOP; asked for nothing meanwhile."""
        window, self.pulse.window = self.pulse.window, None
        self.is_stopped = True
        self.process.send_signal(signal.SIGSTOP)
        try:
            yield
        finally:
            self.process.send_signal(signal.SIGCONT)
            self.is_stopped = False
            self.pulse.window = window

    def lose_bus(self):
        self.forget_callers()

    def start_second(self, arguments):
        """A start that hands its files over, and ends at once."""
        second = self.machine.processes.start([self.path, *map(str, arguments)], self.errors,
                                              self.machine.environment)
        ended = self.patience.until(lambda: second.poll() is not None, 5, "a second start ends", "hang")
        self.machine.processes.started.remove(second)
        if ended and second.returncode != 0:
            raise Finding("crash", f"exit status {second.returncode} of a second start")

    def open_by_application(self, uris):
        """As the file manager does; False where the program is no application of the bus."""
        if not self.application:
            return False
        path = "/" + self.application.replace(".", "/").replace("-", "_")
        self.player.caller.call_to(self.application, path, "org.freedesktop.Application", "Open", "asa{sv}", uris,
                                   dbus.Dictionary({}, signature="sv"))
        return True
