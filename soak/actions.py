"""What users do. Each action takes the run and a generator of random numbers of its own."""

import dbus

from .checks import CUT_SHORT, RUNG_OUT
from .program import CONTENT

BUTTONS = {"play": 56, "stop": 148, "rtz": 232, "loudness": 331, "clear": 431}  # Middles, in points.
BUTTON_Y = 451
TIMELINE = (23, 457, 264)  # From, to, and how far down.
KEYS = ("space", "Return", "Tab", "Shift Tab", "Left", "Right", "Prior", "Next", "Home", "End", "Control r",
        "Control period")
MODIFIERS = {"Shift": "Shift_L", "Control": "Control_L", "Alt": "Alt_L"}

ACTIONS = {}  # Function by name, with its weight.
DESKTOP = []  # Names of the actions that need no session bus.


def action(weight, needs_bus=True):
    def add(function):
        name = function.__name__.replace("_", " ")
        ACTIONS[name] = (function, weight)
        if not needs_bus:
            DESKTOP.append(name)
        return function
    return add


def come_to_front(soak, window=None):
    window = window or soak.program.window
    display = soak.display
    soak.patience.until(lambda: display.is_active(window) or display.activate(window), 5,
                        "the window comes to the front", interval=0.05)


def place(soak, x, y):
    """A place in the window's content, which lies below the menu bar."""
    width, height = soak.display.size(soak.program.window)
    assert width == CONTENT
    return x, y + height - CONTENT


def point(soak, window, x, y):
    """Moves the pointer to a place of the window, which the window manager may still be about to show."""
    def reach():
        soak.display.point(window, x, y)
        return soak.display.is_under_pointer(window) or soak.display.activate(window)
    soak.patience.until(reach, 5, "the pointer reaches the window", interval=0.05)


def press(soak, button):
    come_to_front(soak)
    point(soak, soak.program.window, *place(soak, BUTTONS[button], BUTTON_Y))
    soak.display.click()


def press_keys(soak, keys):
    *modifiers, name = keys.split()
    soak.display.key(name, *[MODIFIERS[each] for each in modifiers])


# Buttons, keys, timeline

def clicking(button):
    def click(soak, random):
        press(soak, button)
    click.__name__ = f"click_{button}"
    return click


for button, weight in {"play": 14, "stop": 4, "rtz": 4, "loudness": 6, "clear": 3}.items():
    action(weight, needs_bus=False)(clicking(button))


@action(2, needs_bus=False)
def click_wildly(soak, random):
    for _ in range(random.randint(5, 20)):
        press(soak, random.choice(list(BUTTONS)))


@action(10, needs_bus=False)
def press_a_key(soak, random):
    come_to_front(soak)
    for _ in range(random.randint(1, 4)):
        press_keys(soak, random.choice(KEYS))


@action(8, needs_bus=False)
def drag_the_timeline(soak, random):
    come_to_front(soak)
    left, right, y = TIMELINE
    point(soak, soak.program.window, *place(soak, random.randint(left, right), y))
    soak.display.button(True)
    for _ in range(random.randint(1, 15)):
        soak.display.point(soak.program.window, *place(soak, random.randint(left - 10, right + 10), y))
        soak.patience.use(random.uniform(0, 0.05))
    soak.display.button(False)


# The window

@action(2, needs_bus=False)
def minimize_and_restore(soak, random):
    come_to_front(soak)
    window = soak.program.window
    soak.display.minimize(window)
    soak.patience.until(lambda: soak.display.is_minimized(window), 5, "the window is minimized")
    soak.patience.use(random.uniform(0, 1))
    if soak.program.player and random.random() < 0.5:
        soak.program.player.raise_window()
    else:
        soak.display.activate(window)
    soak.patience.until(lambda: not soak.display.is_minimized(window), 5, "the window is restored")


@action(3, needs_bus=False)
def move_the_window(soak, random):
    for _ in range(random.randint(1, 10)):
        soak.display.move(soak.program.window, random.randint(0, 700), random.randint(0, 200))


@action(1, needs_bus=False)
def look_at_the_information(soak, random):
    open_and_close(soak, "Control i", lambda title: "About" in title, lambda window: soak.display.key("Escape"))


@action(3, needs_bus=False)
def use_the_debugging_window(soak, random):
    if not soak.program.keeps_log:
        return
    x = random.randint(60, 560)

    def use(window):
        point(soak, window, x, soak.display.size(window)[1] - 25)  # The row of its buttons.
        soak.display.click()
        soak.display.close(window)
    open_and_close(soak, "Control b", lambda title: "Debugging Window" in title, use)


def open_and_close(soak, keys, is_meant, use):
    """Opens a window with keys, where the program has such a one, and closes it by `use`."""
    come_to_front(soak)
    press_keys(soak, keys)
    display, program = soak.display, soak.program
    opened = lambda: [window for window in display.windows(program.pid) if is_meant(display.title(window))]
    window = soak.patience.until(opened, 5, f"{keys} opens a window", "window")[0]
    come_to_front(soak, window)
    use(window)
    soak.patience.until(lambda: not opened(), 5, "the window closes", "window")


# The player on D-Bus

@action(8)
def ask_the_player(soak, random):
    soak.program.player.do(random.choice(("Play", "Pause", "PlayPause", "Stop", "Next", "Previous")))


@action(8)
def seek_by_the_bus(soak, random):
    player, song = soak.program.player, soak.program.player.song()
    share, is_relative = random.uniform(-0.1, 1.1), random.random() < 0.5
    if song and is_relative:
        player.do("Seek", "x", int(share * song[3] * 1e6 / 4))
    elif song:
        player.do("SetPosition", "ox", dbus.ObjectPath(song[0]), int(share * song[3] * 1e6))


# Opening files

@action(10)
def open_by_the_bus(soak, random):
    soak.program.player.do("OpenUri", "s", soak.songs.any(random).as_uri())
    if random.random() < 0.7:
        soak.checks.loaded()


@action(5)
def open_by_the_file_manager(soak, random):
    songs = [soak.songs.any(random).as_uri() for _ in range(random.randint(1, 3))]
    soak.program.open_by_application(songs)


@action(3)
def open_by_a_second_start(soak, random):
    song = soak.songs.any(random)
    soak.program.start_second(["--play"] * random.randint(0, 1) + [song])


@action(6, needs_bus=False)
def drop_files(soak, random):
    songs = [soak.songs.any(random) for _ in range(random.randint(1, 3))]
    come_to_front(soak)
    width, height = soak.display.size(soak.program.window)
    x, y = random.randint(1, width - 1), random.randint(1, height - 1)
    soak.source.drop(soak.program.window, x, y, [song.as_uri() for song in songs], soak.patience)


@action(3)
def open_by_the_dialog(soak, random):
    song, cancels = soak.songs.any(random), random.random() < 0.3
    come_to_front(soak)
    press_keys(soak, "Control o")
    display, program = soak.display, soak.program
    opened = lambda: [window for window in display.windows(program.pid) if "Open MIDI" in display.title(window)]
    dialog = soak.patience.until(opened, 10, "the dialog opens", "window")[0]
    soak.patience.until(lambda: display.is_active(dialog), 5, "the dialog has the focus")
    if cancels or not song.exists():
        display.key("Escape")
    else:
        link = soak.songs.short_name(song)
        display.type(str(link))
        display.key("Return")
    if not soak.patience.within(lambda: not opened(), 2):
        cancels = True  # Qt's dialog has shown a folder instead.
        display.close(dialog)
    soak.patience.until(lambda: not opened(), 10, "the dialog closes", "window")
    if not cancels and song in soak.songs.playable:
        soak.patience.until(lambda: program.player.title() == link.stem, 10,
                            "the chosen song is loaded", "file dialog")


# Listening

@action(10)
def listen(soak, random):
    soak.patience.use(random.uniform(0.2, 2))
    if soak.listener and soak.program.player.status() == "Playing":
        soak.checks.progress()


def play(soak, song):
    player = soak.program.player
    player.do("OpenUri", "s", song.as_uri())
    soak.patience.until(lambda: player.title() == song.stem and player.status() == "Playing", 10, "the song plays",
                        "no sound")


@action(3)
def hear_a_song(soak, random):
    play(soak, soak.songs.steady)
    soak.checks.sound()


@action(5)
def hear_silence(soak, random):
    how = random.choice(("Stop", "Pause", "clear", "stop"))
    player = soak.program.player
    if how in BUTTONS:
        press(soak, how)
    else:
        player.do(how)

    def has_ended():
        return player.status() != "Playing" or not player.do("Stop")
    soak.patience.until(lambda: player.status() != "Playing", 5, f"{how} ends the song", "interface")
    soak.checks.silence(CUT_SHORT, has_ended)  # The song may only now be loaded, and begin to play.


@action(2)
def hear_the_end(soak, random):
    """Notes that nothing ends are over with the song."""
    play(soak, soak.songs.hanging)
    soak.patience.until(lambda: soak.program.player.status() == "Stopped", 20, "the song ends", "no progress")
    soak.checks.silence(RUNG_OUT)


# Ending and starting again: seldom, so that a leak has time to show

@action(0.4)
def quit_and_start_again(soak, random):
    how = random.choice(("SIGTERM", "Control q", "close", "Quit"))
    if how in ("Control q", "close"):
        come_to_front(soak)
    ways = {"Control q": lambda _: press_keys(soak, how), "close": lambda _: soak.display.close(window),
            "Quit": lambda _: player.quit()}
    window, player = soak.program.window, soak.program.player
    if how in ways:
        soak.program.end(ways[how], how)
    else:
        soak.program.terminate()
    soak.start_program(random)


@action(0.3)
def kill_and_start_again(soak, random):
    soak.program.kill()
    soak.start_program(random)


@action(1)
def load_and_clear_many_times(soak, random):
    soak.memory.drill()
