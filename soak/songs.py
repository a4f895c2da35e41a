"""The songs of a run: real ones, and some that are made for trouble."""

import struct
import subprocess
from pathlib import Path

PACKAGED = (Path("/usr/share/games/openttd/baseset/openmsx"), Path("/usr/share/planetblupi/music"))
SUFFIXES = (".mid", ".midi", ".kar", ".smf", ".midi2", ".smf2", ".clip")
TICKS = 480  # A quarter note, of half a second.


def variable_length(number):
    rest, last = divmod(number, 128)
    return (bytes([byte | 0x80 for byte in variable_length(rest)]) if rest else b"") + bytes([last])


def track(events):
    data = events + b"\x00\xff\x2f\x00"
    return b"MTrk" + struct.pack(">I", len(data)) + data


def file_of(*tracks):
    return b"MThd" + struct.pack(">IHHH", 6, 1, len(tracks), TICKS) + b"".join(tracks)


def note(key, ticks):
    return b"\x00\x90" + bytes([key, 100]) + variable_length(ticks) + b"\x80" + bytes([key, 0])


def steady(seconds):
    """One organ note after the other, with no silence between them."""
    return file_of(track(b"\x00\xc0\x10" + b"".join(note(60 + at % 12, TICKS) for at in range(2 * seconds))))


def hanging(seconds):
    """Notes that nothing ends, held by the pedal."""
    held = b"\x00\xc0\x10\x00\xb0\x40\x7f" + b"".join(b"\x00\x90" + bytes([key, 100]) for key in (48, 60, 64, 67))
    return file_of(track(held + variable_length(2 * TICKS * seconds) + b"\xff\x06\x00"))


def large(notes):
    """Sixteen tracks of quick notes."""
    return file_of(*[track(b"".join(note(40 + at % 40, 30) for at in range(64)) * (notes // 1024))] * 16)


class Songs:
    def __init__(self, folder, given, converter, slow):
        self.folder = folder
        folder.mkdir()
        self.links = 0
        self.real = self.found(given)
        self.steady = self.write("steady.mid", steady(120))
        self.hanging = self.write("hanging.mid", hanging(3))
        self.middle = self.write("middle.mid", large(100_000))
        self.huge = large(int(3_000_000 / slow))
        self.broken = [
            self.write("empty.mid", b""),
            self.write("cut.mid", steady(10)[:200]),
            self.write("text.mid", b"This is no song.\n"),
            self.write("format2.mid", steady(2)[:9] + b"\x02" + steady(2)[10:]),
            self.write("noclip.midi2", b"SMF2CLIP" + b"\xff" * 40),
            folder / "missing.mid",
        ]
        self.clips = self.converted(converter)
        self.playable = [self.steady, self.hanging, self.middle]
        self.good = [*self.real, *self.playable, *self.clips]

    def write(self, name, content):
        file = self.folder / name
        file.write_bytes(content)
        return file

    @staticmethod
    def found(given):
        folders = [Path(given)] if given else [folder for folder in PACKAGED if folder.is_dir()]
        files = [file for folder in folders for file in sorted(folder.rglob("*")) if file.suffix.lower() in SUFFIXES]
        if given and not files:
            raise SystemExit(f"There are no songs in {given}")
        return files or [Path(__file__).parents[1] / "resources/demo.mid"]

    def converted(self, converter):
        """MIDI 2.0 clips, where the command-line program is there to make them."""
        clips = []
        for song in self.real[:3] if converter.exists() else []:
            clip = self.folder / (song.stem + ".midi2")
            if subprocess.run([converter, "convert", song, clip], capture_output=True).returncode == 0:
                clips.append(clip)
        return clips

    def any(self, random):
        """Mostly a song that can be played."""
        return random.choice(self.broken if random.random() < 0.15 else self.good)

    def short_name(self, song):
        """A link that is quick to type."""
        self.links += 1
        link = self.folder / f"s{self.links}{song.suffix}"
        link.symlink_to(song)
        return link

    def make_huge(self):
        """A file that takes long to load, anew."""
        return self.write("huge.mid", self.huge)
