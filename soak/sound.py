"""Listens to what the sound server plays."""

import array
import subprocess
import threading
import time

RATE = 24000
BLOCK = RATE // 20  # Samples of 50 ms.
AUDIBLE = 8  # Of 32768. Silence is all zeros.


class Listener(threading.Thread):
    """The peak of each block of the sink's monitor. Lives as long as the server, or until it is ended."""

    def __init__(self, machine):
        super().__init__(daemon=True)
        self.machine = machine
        self.last_sound = 0.0  # When something was last audible, and
        self.last_block = 0.0  # when anything at all came in, in the time of `time.monotonic`.
        self.silent_since = None  # Start of the present silence.
        self.process = subprocess.Popen(
            ["parec", "--device=soak.monitor", "--raw", "--format=s16le", f"--rate={RATE}", "--channels=1",
             "--latency-msec=50"], env=machine.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            start_new_session=True)
        machine.processes.started.append(self.process)

    def run(self):
        while block := self.process.stdout.read(2 * BLOCK):
            samples = array.array("h", block[:len(block) // 2 * 2])
            self.last_block = time.monotonic()
            if samples and max(max(samples), -min(samples)) > AUDIBLE:
                self.last_sound = self.last_block
                self.silent_since = None
            elif self.silent_since is None:
                self.silent_since = self.last_block

    def silence(self):
        """Seconds of the silence that lasts."""
        since = self.silent_since
        return self.last_block - since if since else 0.0

    def hears_since(self, moment):
        return self.last_sound > moment

    def end(self):
        self.machine.processes.end(self.process)
        self.join(5)
