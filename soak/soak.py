"""One run: a desktop, the program on it, and actions and faults at random until the time is over."""

import time
from random import Random

import dbus

from .actions import ACTIONS
from .checks import CUT_SHORT, Checks
from .display import Display, Pulse
from .drop import Source
from .faults import FAULTS
from .finding import Finding, Patience
from .machine import Machine
from .memory import Memory
from .program import Program
from .report import Report
from .songs import Songs
from .sound import Listener

FAULT_SHARE = 0.08  # Of all steps.


class Soak:
    def __init__(self, options):
        self.options = options
        self.patience = Patience(options.slow)
        self.machine = Machine(self.patience)
        self.report = Report(self.machine.logs / "actions.txt")
        self.checks = Checks(self)
        self.memory = Memory(self)
        self.program = self.pulse = self.display = self.listener = None
        self.step = 0
        self.begun = time.monotonic()

    def elapsed(self):
        return time.monotonic() - self.begun

    def set_up(self):
        self.machine.start()
        name = self.machine.environment["DISPLAY"]
        self.display = Display(name)
        self.patience.until(self.display.has_window_manager, 10, "the window manager starts")
        self.source = Source(self.display)
        self.pulse = Pulse(name)
        self.pulse.start()
        self.songs = Songs(self.machine.folder / "songs", self.options.songs,
                           self.options.program.with_name("tambrel-midi"), self.options.slow)
        self.listen()
        self.program = Program(self.machine, self.display, self.pulse, self.options.program)
        self.patience.watch = self.checks.watch

    def run(self):
        self.set_up()
        self.begun = time.monotonic()
        self.start_program(Random(self.options.seed))
        try:
            while self.elapsed() < 60 * self.options.minutes:
                self.take_step()
            self.finish()
        except dbus.DBusException as failure:
            self.patience.within(lambda: False, 1)  # A crash is reported as one.
            raise Finding("bus", str(failure)) from failure

    def take_step(self):
        """Every step has random numbers of its own, so that no step depends on what came before."""
        self.step += 1
        random = Random(f"{self.options.seed}:{self.step}")
        if random.random() < FAULT_SHARE:
            name, function = choose(random, FAULTS)
            self.report.does("fault", name, self.step, self.program.memory())
            function(self, random)
        else:
            self.act(random)
        self.display.is_through(self.patience)
        self.checks.watch()
        self.checks.agreement()

    def act(self, random, names=None):
        name, function = choose(random, ACTIONS, names)
        self.report.does("action", name, self.step, self.program.memory())
        function(self, random)
        self.display.is_through(self.patience)  # A click must arrive before the next D-Bus call.

    def finish(self):
        self.program.player.do("Stop")
        self.checks.silence(CUT_SHORT)
        self.memory.drill()
        self.program.terminate()
        if lines := self.program.new_errors():
            raise Finding("standard error", " / ".join(lines[:3]))

    def start_program(self, random):
        song = self.songs.any(random)
        self.program.start(*random.choice(([], [song], ["--play", song])))

    # Listening

    def listen(self):
        self.listener = Listener(self.machine)
        self.listener.start()

    def deafen(self):
        self.listener, listener = None, self.listener
        listener.end()

    # End

    def figures(self):
        if not self.program:
            return
        answers = max(self.program.worst_answer, self.pulse.worst)
        print(f"{self.step} steps, {self.program.starts} starts, {self.checks.compared} times interface and player "
              f"compared; slowest answer {answers * 1000:.0f} ms")
        for start, before, after in self.memory.lines:
            print(f"memory of start {start}: {before:.1f} MB before, {after:.1f} MB after loading and clearing a song "
                  "many times")

    def picture(self):
        if self.display:
            self.display.screenshot(self.machine.logs / "screenshot.png", self.machine.environment)

    def close(self, keep):
        if self.pulse:
            self.pulse.ended.set()
            self.pulse.join(2)
        self.machine.close(keep)


def choose(random, table, names=None):
    names = names or list(table)
    name = random.choices(names, [table[each][1] for each in names])[0]
    return name, table[name][0]
