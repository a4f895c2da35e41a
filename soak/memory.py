"""Looks for memory that is not given back."""

from .finding import Finding

ROUNDS = 20
# A leak that matters loses at least the bytes of a song, once per load: 20 rounds of the middle song are 16 MB.
MOST_IN_A_DRILL = 8.0  # MB.
# The allocator may keep as much now and then; a leak grows in every drill.
DRILLS_OF_A_LEAK = 3
# Between drills everything else is done too: after songs of 24 MB the allocator keeps about 50 MB to itself, once.
MOST_IN_A_RUN = 96.0  # MB, and for every hour
MOST_IN_AN_HOUR = 16.0  # MB more.


class Memory:
    def __init__(self, soak):
        self.soak = soak
        self.first = {}  # Number of the start of the program: first figure in MB, and when.
        self.lines = []

    def drill(self):
        """Loads and clears the same song again and again."""
        self.load_and_clear(3)  # The first time differs: fonts, caches, pools.
        for _ in range(DRILLS_OF_A_LEAK):
            before = self.soak.program.memory()
            self.load_and_clear(ROUNDS)
            after = self.settled(before + MOST_IN_A_DRILL)
            self.lines.append((self.soak.program.starts, before, after))
            # Sanitizers keep what was freed, and look for leaks themselves.
            if after <= before + MOST_IN_A_DRILL or self.soak.patience.slow > 1:
                break
        else:
            raise Finding("leak", f"{before:.1f} MB before, {after:.1f} MB after {ROUNDS} times loading and clearing, "
                                  "and it goes on")
        if self.soak.patience.slow <= 1:
            self.compare(after)

    def settled(self, limit):
        """The memory in use when it has come below a limit, or some time later: a thread frees it."""
        self.soak.patience.within(lambda: self.soak.program.memory() <= limit, 5, 0.1)
        return self.soak.program.memory()

    def compare(self, now):
        """With the first drill of the same process."""
        start, first = self.first.setdefault(self.soak.program.starts, (self.soak.elapsed(), now))
        hours = (self.soak.elapsed() - start) / 3600
        if now - first > MOST_IN_A_RUN + MOST_IN_AN_HOUR * hours:
            raise Finding("leak", f"{first:.1f} MB at first, {now:.1f} MB {hours * 60:.1f} minutes later")

    def load_and_clear(self, times):
        soak = self.soak
        player = soak.program.player
        for _ in range(times):
            player.do("OpenUri", "s", soak.songs.middle.as_uri())
            soak.patience.until(lambda: player.title() == soak.songs.middle.stem, 10,
                                "the song is loaded", "hang")
            soak.program.interface.press(soak.program.interface.paths["clear"])
            soak.patience.until(lambda: player.song() is None, 5, "the song is cleared", "interface")
