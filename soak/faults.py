"""What goes wrong around the program. Each fault is over when its function returns."""

import os
import signal

from .actions import DESKTOP, come_to_front

FAULTS = {}  # Function by name, with its weight.


def fault(weight):
    def add(function):
        FAULTS[function.__name__.replace("_", " ")] = (function, weight)
        return function
    return add


def go_on(soak, random, names=None, most=3):
    """The user goes on, unaware."""
    for _ in range(random.randint(1, most)):
        soak.act(random, names)


@fault(3)
def sound_server_dies(soak, random):
    soak.deafen()
    soak.machine.end_sound(random.choice((signal.SIGKILL, signal.SIGTERM)))
    go_on(soak, random, DESKTOP)
    soak.patience.use(random.uniform(0, 4))
    soak.machine.start_sound()
    soak.listen()
    if soak.program.player.status() == "Playing":
        soak.checks.progress()


@fault(0.3)
def session_bus_goes(soak, random):
    """The program runs on without it; a new session has a new bus."""
    soak.program.lose_bus()
    soak.machine.end_bus()
    go_on(soak, random, DESKTOP, 6)
    soak.program.terminate()
    soak.machine.start_bus()
    soak.start_program(random)


def use_while(soak, random, spoil, restore, missing):
    """The user goes on while nothing can be written."""
    if not spoil():
        return soak.report.note(missing)
    try:
        with soak.program.unwritable():
            go_on(soak, random)
    finally:
        restore()


@fault(1)
def home_is_read_only(soak, random):
    use_while(soak, random, soak.machine.make_home_read_only, soak.machine.make_home_writable,
              "no read-only folder: that needs mounts of our own, or not to be root")


@fault(1)
def disk_is_full(soak, random):
    use_while(soak, random, soak.machine.fill_home, soak.machine.free_home,
              "no full disk: that needs root and mounts of our own")


@fault(2)
def file_is_cut_while_it_loads(soak, random):
    file = soak.songs.make_huge()
    open_it(soak, file)
    soak.patience.use(random.uniform(0, 0.15))
    os.truncate(file, random.randint(0, file.stat().st_size))
    soak.checks.loaded()


@fault(2)
def file_is_replaced_while_it_loads(soak, random):
    file = soak.songs.make_huge()
    open_it(soak, file)
    soak.patience.use(random.uniform(0, 0.15))
    other = soak.songs.any(random)
    content = other.read_bytes() if other.exists() else b""
    if random.random() < 0.5:
        file.write_bytes(content)  # Cut first, and then written into.
    else:
        soak.songs.write("new.mid", content).replace(file)
    soak.checks.loaded()


@fault(1)
def many_files_at_once(soak, random):
    for _ in range(random.randint(5, 15)):
        open_it(soak, soak.songs.make_huge() if random.random() < 0.2 else soak.songs.any(random))
    soak.checks.loaded()


@fault(2)
def it_is_stopped_and_continued(soak, random):
    come_to_front(soak)
    with soak.program.stopped():
        soak.patience.use(random.uniform(0.1, 3))


def open_it(soak, file):
    soak.program.player.do("OpenUri", "s", file.as_uri())
