"""What ends a run, and how to wait for things."""

import time


class Finding(Exception):
    """Something is wrong with the program: `kind` in a word or two, and what was seen."""

    def __init__(self, kind, text):
        super().__init__(f"{kind}: {text}")
        self.kind = kind


class Patience:
    """Waits for conditions, never for time alone, and looks after the program meanwhile.

    `slow` stretches all limits, for programs that a sanitizer slows down.
    """

    def __init__(self, slow):
        self.slow = slow
        self.watch = lambda: None  # Called again and again during all waits.

    def until(self, condition, seconds, what, kind="timeout", interval=0.02):
        """Returns the condition's first true value; without one in time it is a finding."""
        value = self.within(condition, seconds, interval)
        if not value:
            raise Finding(kind, f"{what} not within {seconds * self.slow:g} s")
        return value

    def within(self, condition, seconds, interval=0.02):
        """Returns the condition's first true value, or the last one when the time is over."""
        end = time.monotonic() + seconds * self.slow
        while True:
            value = condition()
            if value or time.monotonic() > end:
                return value
            self.watch()
            time.sleep(interval)

    def use(self, seconds):
        """Lets the program alone for a time, as a user does who listens. Not stretched."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            self.watch()
            time.sleep(0.02)
