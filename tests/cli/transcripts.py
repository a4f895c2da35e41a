#!/usr/bin/env python3
"""Runs the commands of a transcript among the songs of songs.py and compares what they do with what it says.

  transcripts.py PROGRAM TRANSCRIPT

A transcript is a text of commands ("$ "), each run by the shell in the same new folder and followed by what it wrote
on standard output (">"), on standard error ("!"), which files it made ("+"), changed ("*") or removed ("-"), and its
exit status ("="). To add a command, write its line and let scripts/accept-expected fill in the rest.
"""

import difflib
import hashlib
import os
import re
import signal
import struct
import subprocess
import sys
import tempfile
import wave
from math import log10
from pathlib import Path

import songs

HELPERS = """
# Ends a rendering by a signal as soon as it has written sound to its file, which has no name yet. The shell has a
# background process ignore SIGINT, which it would respect.
interrupted() {
    signal=$1 output=$2; shift 2
    env --default-signal=INT "$@" -o "$output" & process=$!
    while written=$(sed -n 's/^wchar: //p' /proc/$process/io 2>/dev/null); [ "${written:-99999}" -lt 10000 ]; do :; done
    kill -s $signal $process; wait $process
}
"""


def dump(content):
    for at in range(0, len(content), 16):
        yield f"    {at:04x}  {content[at:at + 16].hex(' ')}"


def level(samples):
    peak = max(map(abs, samples), default=0)
    return f"{20 * log10(peak / 32768):.0f} dBFS" if peak > 300 else "next to nothing"


def described(file):
    """What there is to compare of one file."""
    if not file.is_file():
        return ["folder" if file.is_dir() else "neither file nor folder"]
    content, mode = file.read_bytes(), f"{file.stat().st_mode & 0o777:o}"
    if content[8:12] == b"WAVE":
        with wave.open(str(file)) as sound:
            form = f"{sound.getnchannels()} channels of {8 * sound.getsampwidth()} bits at {sound.getframerate()} Hz"
            samples = [each[0] for each in struct.iter_unpack("<h", sound.readframes(sound.getnframes()))]
            # The last digits depend on FluidSynth's version.
            seconds = f"{sound.getnframes() / sound.getframerate():.1f} s"
        return [f"{mode}, {form}, {seconds}, left {level(samples[::2])}, right {level(samples[1::2])}"]
    if len(content) > 400:
        return [f"{mode}, {len(content)} bytes, SHA-256 {hashlib.sha256(content).hexdigest()}"]
    return [f"{mode}, {len(content)} bytes", *dump(content)]


def files(folder):
    return {file.name: described(file) for file in Path(folder).iterdir()}


def changes(before, after):
    for name in sorted(before.keys() | after.keys()):
        if before.get(name) != after.get(name):
            sign = "+" if name not in before else "*" if name in after else "-"
            first, *rest = after.get(name, [""])
            yield f"{sign} {os.fsencode(name).decode(errors='backslashreplace')}: {first}".rstrip(": ")
            yield from rest


def lines(sign, output):
    text = output.decode(errors="backslashreplace")
    text = re.sub(r"\d+\.\d\d s, peak", lambda m: f"{float(m[0][:-7]):.1f} s, peak", text)
    text = re.sub(r"-?\d+\.\d\d dBFS", lambda m: f"{float(m[0][:-5]):.0f} dBFS", text)
    text = re.sub(r"^tambrel-midi \d+\.\d+\.\d+$", "tambrel-midi (version)", text)
    return [f"{sign} {line}".rstrip() for line in text.split("\n")[:-1]] + (
        [f"{sign} {text.split(chr(10))[-1]} (no line break)"] if text and text[-1] != "\n" else [])


def run(command, folder, environment):
    before = files(folder)
    with subprocess.Popen(["/bin/sh", "-c", HELPERS + command], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True) as process:
        try:
            output, errors = process.communicate(timeout=60)
            status = str(process.returncode)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            output, errors = process.communicate()
            status = "it did not end"
    return [*lines(">", output), *lines("!", errors), *changes(before, files(folder)), f"= {status}"]


def transcript(kept, program):
    environment = {**os.environ, "PATH": f"{program.parent}:/usr/bin:/bin", "TAMBREL_SOUNDFONT": "bank.sf2"}
    os.umask(0o022)
    result = []
    with tempfile.TemporaryDirectory() as folder:
        songs.write(folder)
        subprocess.run([Path(__file__).parents[2] / "scripts/make-test-bank", Path(folder, "bank.sf2")], check=True)
        for line in kept:
            if line[:2] in ("# ", "$ "):
                result += ["", line] if line[0] == "#" and result else [line]
            if line[:2] == "$ ":
                result += run(line[2:], folder, environment)
    return result


def main():
    program, file = Path(sys.argv[1]).resolve(), Path(sys.argv[2])
    kept = file.read_text().splitlines()
    received = transcript(kept, program)
    if "TAMBREL_ACCEPT_EXPECTED" in os.environ:
        file.write_text("\n".join(received) + "\n")
    elif received != kept:
        sys.exit("\n".join(difflib.unified_diff(kept, received, str(file), "received", lineterm="")) +
                 "\nIf this is right: scripts/accept-expected")


main()
