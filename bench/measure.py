"""Runs of programs and what they cost."""

import os
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass

from data import remove


@dataclass
class Cost:
    # Seconds; CPU is that of user and system together.
    wall: float
    cpu: float


def execute(arguments, name):
    """Runs once, output discarded, and returns what it cost."""
    with tempfile.TemporaryFile() as errors:
        start = time.perf_counter()
        process = subprocess.Popen(arguments, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=errors)
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            errors.seek(0)
            sys.exit(f"{name} failed with {process.returncode}: {arguments}\n"
                     + errors.read().decode(errors="replace"))
    return Cost(wall, usage.ru_utime + usage.ru_stime)


def peak_memory(arguments, name):
    """Runs once and returns the peak resident memory in bytes.

    The peak that wait4 reports starts at the size of the process that forked,
    so a small process has to do the forking: GNU time, not this interpreter.
    """
    with tempfile.NamedTemporaryFile("r") as report:
        execute(["/usr/bin/time", "-f", "%M", "-o", report.name, *arguments], name)
        return int(report.read()) * 1024


class Workplace:
    """Gives every run that writes a fresh folder, and removes them at the end.

    Removing between runs would leave work behind for the next contender.
    """

    def __init__(self, folder):
        self.folder = folder
        self.count = 0
        remove(folder)
        folder.mkdir(parents=True)

    def fresh(self):
        out = self.folder / f"{self.count:04}"
        self.count += 1
        out.mkdir()
        os.sync()
        return out

    def clear(self):
        remove(self.folder)
