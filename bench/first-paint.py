#!/usr/bin/env python3
"""Compares the time from fork to the first painted pixel of two windows, in pairs, in a display of its own.

  bench/first-paint.py PROGRAM OTHER_PROGRAM [--pairs N] [-- ARGUMENTS OF BOTH]

The pixel that is watched is the middle of the screen, which a window in its usual place covers. Printed are the medians
in milliseconds, the median ratio of the pairs, and a warm-up pair is left out. The Debian package xvfb is needed.
"""

import ctypes
import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

WIDTH, HEIGHT, LONGEST = 1280, 800, 20
x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype = x11.XGetImage.restype = ctypes.c_void_p
x11.XDefaultRootWindow.argtypes = x11.XDestroyImage.argtypes = [ctypes.c_void_p]
x11.XGetImage.argtypes = [ctypes.c_void_p, ctypes.c_ulong] + 2 * [ctypes.c_int] + 2 * [ctypes.c_uint] + [
    ctypes.c_ulong, ctypes.c_int]
x11.XGetPixel.argtypes = [ctypes.c_void_p, ctypes.c_int, ctypes.c_int]
x11.XGetPixel.restype = ctypes.c_ulong


def middle(display):
    image = x11.XGetImage(display, x11.XDefaultRootWindow(display), WIDTH // 2, HEIGHT // 2, 1, 1, 0xFFFFFF, 2)
    pixel = x11.XGetPixel(image, 0, 0)
    x11.XDestroyImage(image)
    return pixel


def until(display, is_painted):
    end = time.monotonic() + LONGEST
    while (middle(display) != 0) != is_painted:
        if time.monotonic() > end:
            sys.exit("The middle of the screen did not change.")


def painted_after(display, program, arguments, environment):
    until(display, False)
    start = time.monotonic()
    process = subprocess.Popen([program, *arguments], env=environment, stderr=subprocess.DEVNULL)
    until(display, True)
    after = time.monotonic() - start
    process.kill()
    process.wait()
    return 1000 * after


def compare(display, programs, arguments, environment, pairs):
    times = [[painted_after(display, program, arguments, environment) for program in programs]
             for _ in range(pairs + 1)][1:]
    for program, column in zip(programs, zip(*times)):
        print(f"{statistics.median(column):7.1f} ms  {program}")
    print(f"{statistics.median(first / second for first, second in times):7.2f} times as long")


def main():
    own, _, both = " ".join(sys.argv[1:]).partition(" -- ")
    words = own.split()
    pairs = 20
    if "--pairs" in words:
        at = words.index("--pairs")
        pairs = int(words[at + 1])
        del words[at:at + 2]
    programs = [str(Path(word).resolve()) for word in words]
    with tempfile.TemporaryDirectory() as folder:
        reading, writing = os.pipe()
        server = subprocess.Popen(["Xvfb", "-screen", "0", f"{WIDTH}x{HEIGHT}x24", "-nolisten", "tcp", "-displayfd",
                                   str(writing)], pass_fds=[writing], stderr=subprocess.DEVNULL)
        try:
            name = ":" + os.read(reading, 16).decode().strip()
            environment = dict(os.environ, DISPLAY=name, QT_QPA_PLATFORM="xcb", XDG_RUNTIME_DIR=folder, HOME=folder,
                               XDG_CONFIG_HOME=folder, XDG_DATA_HOME=folder, DBUS_SESSION_BUS_ADDRESS="disabled:")
            compare(x11.XOpenDisplay(name.encode()), programs, both.split(), environment, pairs)
        finally:
            server.terminate()
            server.wait()


if __name__ == "__main__":
    main()
