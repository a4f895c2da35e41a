"""Processes of the run. All of them, and those that they leave behind, end with it; no others do."""

import ctypes
import os
import signal
import subprocess
import time
from pathlib import Path

PR_SET_CHILD_SUBREAPER = 36


class Processes:
    def __init__(self):
        # Orphans of our children become our own, and are found at the end.
        ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
        self.started = []

    def start(self, command, log, environment, **options):
        """Starts a process that a Ctrl+C in the terminal does not reach."""
        with open(log, "ab") as output:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                       env=environment, start_new_session=True, **options)
        self.started.append(process)
        return process

    def end(self, process, number=signal.SIGTERM, patience=5):
        """Ends a process that we started, by force when it does not listen."""
        if process.poll() is None:
            process.send_signal(number)
            try:
                process.wait(patience)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        if process in self.started:
            self.started.remove(process)

    def end_all(self):
        for process in reversed(list(self.started)):
            process.send_signal(signal.SIGCONT)
            self.end(process)
        for number in (signal.SIGTERM, signal.SIGKILL):
            deadline = time.monotonic() + 3
            while (left := self.children()) and time.monotonic() < deadline:
                for pid in left:
                    os.kill(pid, number)
                self.reap()
                time.sleep(0.05)
            self.reap()

    @staticmethod
    def reap():
        """Takes leave of the ended processes that nobody else waits for."""
        try:
            while os.waitpid(-1, os.WNOHANG)[0]:
                pass
        except ChildProcessError:
            pass

    @staticmethod
    def children():
        """Our children that still run."""
        pids = Path(f"/proc/self/task/{os.getpid()}/children").read_text().split()
        return [int(pid) for pid in pids if state_of(int(pid)) not in ("Z", None)]


def state_of(pid):
    """The letter of the process's state, such as T for stopped; None when there is no such process."""
    try:
        return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0]
    except (OSError, IndexError):
        return None
