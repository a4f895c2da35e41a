"""What must hold at all times."""

import re
import time

from .bus import HANG
from .finding import Finding

PLAY_BUTTON = {"Playing": "Pause", "Paused": "Resume", "Stopped": "Play"}
TIME = re.compile(r"(\d+):(\d\d):(\d\d)\.(\d\d)$")
CENTISECOND = 0.011  # The display is cut or rounded to this.
SETTLED = 1.0  # Seconds in which the interface follows the player.
CUT_SHORT = 3.0  # Seconds until a song that was stopped is silent, through all buffers.
RUNG_OUT = 13.0  # After the last note: releases of ten seconds are let ring.
SOUNDS = 8.0  # Seconds until a song sounds, also when the device has to be opened again.


def seconds(text):
    hours, minutes, whole, hundredths = map(int, TIME.search(text).groups())
    return hours * 3600 + minutes * 60 + whole + hundredths / 100


class Checks:
    def __init__(self, soak):
        self.soak = soak
        self.patience = soak.patience
        self.delay_at_question = 0.0
        self.excused = None  # A question whose answer is late through no fault of the program.
        self.compared = 0

    def watch(self):
        """Looks for a crash, a hang and complaints; called all the time."""
        program = self.soak.program
        if not program or not program.process:
            return
        if program.process.poll() is not None:
            status, program.process = program.process.returncode, None
            raise Finding("crash", f"it ended by itself with status {status}: {' / '.join(program.new_errors()[:3])}")
        if lines := program.new_errors():
            raise Finding("standard error", " / ".join(lines[:3]))
        self.watch_answers(program)

    def watch_answers(self, program):
        pulse = self.soak.pulse
        waiting = pulse.waiting()
        if waiting < HANG / 4:
            self.delay_at_question = program.run_delay()
        if program.is_stopped_by_others():
            self.excused = pulse.asked
        waiting -= program.run_delay() - self.delay_at_question
        if waiting > HANG * self.patience.slow and pulse.asked and pulse.asked != self.excused:
            raise Finding("hang", f"the window has not answered for {waiting:.2f} s")

    # The interface and the player

    def agreement(self):
        """The interface says what the player says, now or a moment later."""
        if not self.soak.program.player:
            return
        self.compared += 1
        differences = []

        def agree():
            differences[:] = self.differences()
            return not differences
        if not self.patience.within(agree, SETTLED, 0.05):
            raise Finding("interface", "; ".join(differences))

    def differences(self):
        player, interface = self.soak.program.player, self.soak.program.interface
        status, song, before = player.status(), player.song(), player.position()
        shown = {view: interface.show(view) for view in interface.paths}
        loudness_is_enabled = interface.is_enabled("loudness")
        after = player.position()
        if (status, song) != (player.status(), player.song()) or after < before:
            return ["the player changes all the time"]
        facts = [
            (shown["play"] == PLAY_BUTTON[status], f"the button says {shown['play']} while the player is {status}"),
            (loudness_is_enabled == (status != "Playing"), f"Loudness is on offer or not, contrary to {status}"),
            (self.is_between(before, after, shown["progress"]),
             f"{shown['progress']} is not between {before} s and {after} s"),
            *self.song_facts(song, status, shown),
        ]
        return [text for holds, text in facts if not holds]

    def is_between(self, before, after, progress):
        polling = 0.15 * self.patience.slow if after > before else 0
        return before - polling - CENTISECOND <= seconds(progress) <= after + CENTISECOND

    @staticmethod
    def song_facts(song, status, shown):
        length = song[3] if song else 0
        yield abs(seconds(shown["length"]) - length) <= CENTISECOND, f"{shown['length']} for a song of {length} s"
        if song:
            name = shown["file"].rpartition(".")[0]
            yield name == song[1], f"the name {shown['file']} for the song {song[1]}"
            yield shown["status"] != "READY", "READY for a song"
        else:
            yield status == "Stopped", f"{status} without a song"
            yield not shown["status"].startswith("Loaded MIDI"), f"{shown['status']} without a song"

    def loaded(self):
        """Waits for the end of loading. Returns the song, if there is one."""
        program = self.soak.program
        self.patience.until(lambda: program.interface.show("status") != "Loading", 10, "the file is loaded", "hang")
        return program.player.song()

    # Sound

    def silence(self, within, has_ended=lambda: True):
        """Nothing sounds any more, for half a second at least."""
        if not self.soak.listener:
            return
        start = time.monotonic()

        def is_silent():
            listener = self.soak.listener
            return not listener or (has_ended() and listener.last_block > start + 0.5 and listener.silence() > 0.5)
        self.patience.until(is_silent, within, "silence", "stuck note")

    def sound(self):
        """Something sounds."""
        start = time.monotonic()
        self.patience.until(lambda: self.soak.listener.hears_since(start), SOUNDS, "the song is heard", "no sound")

    def progress(self):
        """A song that plays goes on."""
        player = self.soak.program.player
        start = player.position()
        self.patience.until(lambda: player.status() != "Playing" or player.position() != start, SOUNDS,
                            f"the song goes on at {start:.2f} s", "no progress", 0.1)
