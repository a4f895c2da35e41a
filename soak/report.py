"""What a run did, in words and figures."""

import time
from collections import Counter, deque

LAST = 30  # Actions that a finding reports.


class Report:
    def __init__(self, file):
        self.file = open(file, "a")
        self.counts = {"action": Counter(), "fault": Counter()}
        self.last = deque(maxlen=LAST)
        self.notes = []
        self.start = time.monotonic()

    def does(self, kind, name, step, memory):
        self.counts[kind][name] += 1
        line = f"{time.monotonic() - self.start:8.2f} s  {memory:5.0f} MB  step {step}  {kind}: {name}"
        self.last.append(line)
        print(line, file=self.file, flush=True)

    def note(self, text):
        if text not in self.notes:
            self.notes.append(text)

    def print_counts(self):
        for kind, counts in self.counts.items():
            print(f"{sum(counts.values())} {kind}s: "
                  + ", ".join(f"{name} {count}" for name, count in counts.most_common()))
        for note in self.notes:
            print(f"Left out: {note}.")

    def print_last(self):
        print("The last that was done:")
        print("\n".join(self.last))
