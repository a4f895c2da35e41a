"""Small songs, clips and files that are neither, for the transcripts: whole ones, odd ones, damaged ones."""

import os
from pathlib import Path


def quantity(number):
    """A variable-length quantity."""
    groups = [number & 0x7F]
    while number := number >> 7:
        groups.insert(0, number & 0x7F | 0x80)
    return bytes(groups)


def event(delta, *data):
    return quantity(delta) + bytes(data)


def note(delta, channel, key, velocity=82, length=96):
    """A note with its end; channels count from 1."""
    return event(delta, 0x8F + channel, key, velocity) + event(length, 0x7F + channel, key, 64)


def meta(delta, kind, payload=b""):
    return event(delta, 0xFF, kind) + quantity(len(payload)) + payload


def name(text):
    return meta(0, 3, text.encode())


def tempo(delta, microseconds):
    return meta(delta, 0x51, microseconds.to_bytes(3, "big"))


def key(delta, sharps, minor=0):
    return meta(delta, 0x59, bytes([sharps & 0xFF, minor]))


END = meta(0, 0x2F)


def song(*tracks, form=1, division=96, declared=None, header=6):
    count = len(tracks) if declared is None else declared
    start = b"MThd" + b"".join(n.to_bytes(w, "big") for n, w in [(header, 4), (form, 2), (count, 2), (division, 2)])
    return start + b"".join(b"MTrk" + len(track).to_bytes(4, "big") + track for track in tracks)


def clip(*words):
    return b"SMF2CLIP" + b"".join(word.to_bytes(4, "big") for word in words)


BAND = song(
    tempo(0, 333_333) + key(0, 2) + tempo(96, 500_000) + key(0, 1) + END,
    name("Fretless Bass") + note(0, 2, 40) + note(0, 2, 43) + END,
    name("Piano") + event(0, 0xC2, 38) + note(0, 3, 60) + event(0, 0xC2, 0) + note(0, 3, 64) + END,
    note(7, 10, 36) + note(480, 10, 36) + event(0, 0x99, 38, 0) + meta(96, 0x2F))
CLIP = clip(
    0x00300060, 0xF0200000, 0, 0, 0,             # 96 ticks a quarter; start of the clip.
    0xD0100000, 60_000_000, 0, 0,                # 100 beats a minute.
    0xD0100001, 0x03020800, 0, 0,                # 3/4.
    0x20903C60, 0x00400060, 0x20803C40,          # MIDI 1.0.
    0x41993C00, 0x01FF0000, 0x41E90000, 1 << 31, # MIDI 2.0: a soft drum, the bend's middle.
    0x20C10500, 0x10F80000,                      # A program; a clock, which is left out.
    0x00400060, 0xF0210000, 0, 0, 0)

FILES = {
    # Songs.
    "band.mid": BAND,
    "format0.mid": song(note(0, 1, 60) + note(0, 10, 36) + note(0, 3, 67) + END, form=0),
    "minor.MIDI": song(key(0, -3, 1) + tempo(0, 0) + tempo(0, 600_000) + END, note(0, 1, 60) + END),
    "silent.mid": song(meta(96, 0x2F), form=0),
    "timecode.mid": song(note(0, 1, 60) + note(1000, 1, 62) + END, division=0xE728),
    "division0.mid": song(note(0, 1, 60, length=3) + END, division=0),
    "running.mid": song(event(0, 0x99, 36, 80, 5, 36, 0, 5, 36, 1), event(3, 0xF0, 2, 1, 0xF7) + note(0, 1, 60)),
    "defect.mid": song(note(0, 10, 36) + event(1, 0xF8, 0) + note(0, 10, 38) + key(0, 5) + END),
    "extra-track.mid": song(note(0, 1, 60) + END, note(0, 2, 60) + END, declared=1),
    "left.mid": song(event(0, 0xC0, 0) + note(0, 1, 60, 96) + END),
    "absurd.mid": song(note(0, 1, 60) + meta(0x0FFF_FFFF, 0x2F), division=1),
    "words.mid": song(
        name("Words") + meta(0, 2, b"(c) Nobody") + key(0, 3, 1) + meta(0, 0x58, bytes([6, 3, 36, 8])) + tempo(0, 750_000)
        + event(0, 0xF0, 9, 0x41, 0x10, 0x42, 0x12, 0x40, 0, 0x7F, 0, 0xF7) + event(0, 0xF0, 2, 1, 0xF7)
        + event(5, 0xC3, 40) + meta(0, 5, b"La ") + note(0, 4, 60) + meta(0, 6, b"Verse \x1b[31m\xff") + tempo(2_000_000, 1)
        + END),
    "long.mid": song(note(0, 1, 60) + meta(1_000_000, 0x2F)),
    "two\nlines.mid": BAND,
    "-f.mid": BAND,
    os.fsdecode(b"caf\xe9 'n' \"bar\".mid"): BAND,
    # What is no song.
    "empty.clip": b"",
    "thirteen.mid": BAND[:13],
    "text.mid": b"Not a song, whatever it is called.",
    "header7.mid": song(END, header=7),
    "format2.mid": song(note(0, 1, 60) + END, form=2),
    "notracks.mid": song(),
    "cut.mid": BAND[:-1],
    # Clips.
    "clip.midi2": CLIP,
    "clip.mid": CLIP,
    "song.Clip": BAND,
    "half-word.smf2": CLIP[:-2],
    "cut.smf2": CLIP[:-4],
    "no-notes.clip": clip(0xD0100000, 60_000_000, 0, 0),
    "controller.clip": clip(0x20903C64, 0x40201234, 0),
    "endless.clip": clip(*[0x004FFFFF] * 4097, 0x20903C64),
}


def write(folder):
    for file, content in FILES.items():
        Path(folder, file).write_bytes(content)
    Path(folder, "folder.mid").mkdir()
    os.mkfifo(Path(folder, "pipe.mid"))
