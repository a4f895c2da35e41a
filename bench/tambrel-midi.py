#!/usr/bin/env python3
"""Compares tambrel-midi with other programs and with itself, in pairs, one right after the other.

  bench/tambrel-midi.py PROGRAM [--pairs N] [dump|build|info|cores|render|one ...]

Each line is the median of the ratios of the pairs, by the clock and by the processor time, which other jobs on the
machine disturb less. The Debian packages midicsv, fluidsynth and timgm6mb-soundfont are needed.
"""

import os
import random
import resource
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

BANK = "/usr/share/sounds/sf2/TimGM6mb.sf2"


def track(events, generator):
    data = bytearray(b"\0\xff\x03\5Track")
    for _ in range(events):
        key = generator.randrange(30, 90)
        data += bytes([generator.randrange(1, 100), 0x90, key, 80, generator.randrange(1, 100), 0x80, key, 64])
    data += b"\0\xff\x2f\0"
    return b"MTrk" + len(data).to_bytes(4, "big") + data


def song(file, events, tracks=8, seed=1):
    generator = random.Random(seed)
    body = b"".join(track(events // tracks, generator) for _ in range(tracks))
    file.write_bytes(b"MThd\0\0\0\6\0\1" + tracks.to_bytes(2, "big") + b"\1\xe0" + body)


def measured(command):
    """Seconds by the clock and of the processor."""
    before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
    subprocess.run(command, shell=True, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return time.monotonic() - start, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def compare(name, slow, fast, pairs):
    ratios = []
    for _ in range(pairs):
        first, second = measured(slow), measured(fast)
        ratios.append((first[0] / second[0], first[1] / max(second[1], 1e-3)))
    clock, processor = (statistics.median(column) for column in zip(*ratios))
    print(f"{name}: {clock:.2f} times as fast by the clock, {processor:.2f} by the processor's time", flush=True)


def main():
    program, *rest = sys.argv[1:]
    program, pairs = str(Path(program).resolve()), 5
    if "--pairs" in rest:
        at = rest.index("--pairs")
        pairs = int(rest[at + 1])
        del rest[at:at + 2]
    chosen = rest or ["dump", "build", "info", "cores", "render", "one"]
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        if {"dump", "build", "info"} & set(chosen):
            song(Path("large.mid"), 2_500_000)
        if "dump" in chosen:
            compare("dump of 20 MB, midicsv", "midicsv large.mid large.csv", f"{program} dump large.mid >large.txt", pairs)
        if "build" in chosen:
            subprocess.run(f"midicsv large.mid large.csv; {program} dump large.mid >large.txt", shell=True, check=True)
            compare("build of 20 MB, csvmidi", "csvmidi large.csv back.mid", f"{program} build --force large.txt -o own.mid",
                    pairs)
        if "info" in chosen:
            compare("info of 20 MB, info --all", f"{program} info --all large.mid", f"{program} info large.mid", pairs)
        if "cores" in chosen:
            Path("many").mkdir()
            for i in range(10_000):
                song(Path(f"many/{i:05}.mid"), 400, seed=i)
            compare("info of 10,000 files, one core", f"taskset -c 0 {program} info many/*.mid",
                    f"taskset -c 0,1 {program} info many/*.mid", pairs)
        if {"render", "one"} & set(chosen):
            Path("songs").mkdir()
            for i in range(40):
                song(Path(f"songs/{i:02}.mid"), 400, seed=i)
        own = f"{program} render --force --rate 44100 --soundfont {BANK}"
        other = f"fluidsynth -ni -r 44100 -g 0.22 {BANK}"
        if "render" in chosen:
            compare("render -j2 of 40 songs, fluidsynth -F in a loop",
                    f"for f in songs/*.mid; do {other} -F $f.wav $f; done", f"{own} -j2 songs/*.mid", pairs)
        if "one" in chosen:
            compare("render of one song, fluidsynth -F", f"{other} -F one.wav songs/00.mid", f"{own} songs/00.mid -o own.wav",
                    pairs)


main()
