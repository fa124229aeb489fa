"""What a benchmark is: one job on one archive, done by us and by others.

A result is always a ratio, this project divided by the other program: absolute
times say more about the machine than about the code.
"""

import re
import shutil
import statistics
import subprocess
import sys
from dataclasses import dataclass, field
from pathlib import Path
from typing import Callable

import data
import measure

ROOT = Path(__file__).resolve().parent.parent
COMMAND = ROOT / "build/release/bin/morvunp"
OURS = "morvunp"


@dataclass
class Peer:
    """A program that does the same job.

    `command` may hold {archive}, {tree} (what the archive was made of), {out}
    (a fresh folder) and {tool} (what `build(options)` answers). The first
    number in what `version` prints is its version.
    """
    name: str
    command: str
    version: str
    build: Callable | None = None
    reads: str = "archive"

    def is_installed(self):
        return self.build is not None or shutil.which(self.command.split()[0]) is not None

    def version_text(self):
        answer = subprocess.run(self.version.split(), stdin=subprocess.DEVNULL,
                                capture_output=True, text=True, errors="replace")
        found = re.search(r"\d+(\.\d+)+", answer.stdout + answer.stderr)
        return found.group() if found else "?"


def peer(name, command, version=None, **more):
    """A peer whose program tells its version with --version, or as `version` says."""
    return Peer(name, command, version or f"{command.split()[0]} --version", **more)


@dataclass
class Benchmark:
    """`make_tree(folder)` fills a source tree, and `make_archive(tree, archive)`
    packs it, once for all runs; both have plain and quick sizes in `options`.
    """
    name: str
    title: str
    tree: str
    make_tree: Callable
    archive: str
    make_archive: Callable
    peers: list
    # Extraction, or else a list.
    extracts: bool = True
    # All files are there already, and are replaced unasked.
    replaces: bool = False
    # What is measured, where it is not the command.
    program: Peer | None = None

    @property
    def ours(self):
        if self.program is not None:
            return Peer(OURS, self.program.command, "", build=self.program.build)
        command = "extract -q {archive} -C {out}" if self.extracts else "list {archive}"
        if self.replaces:
            command += " --overwrite=all"
        return Peer(OURS, "{tool} " + command, "", build=lambda options: options.morvunp)


@dataclass
class Result:
    title: str
    # (peer with version, wall, CPU, memory), ratios as text.
    rows: list
    # Peak memory of this project in bytes.
    memory: int
    rounds: int
    skipped: list = field(default_factory=list)


class Measurement:
    """One benchmark while it runs."""

    def __init__(self, benchmark, options):
        self.benchmark = benchmark
        self.options = options
        folder = options.work / ("quick" if options.quick else "full")
        folder.mkdir(parents=True, exist_ok=True)
        self.tree = data.make_once(folder / benchmark.tree, benchmark.make_tree)
        self.archive = data.make_once(folder / benchmark.archive,
                                      lambda path: benchmark.make_archive(self.tree, path))
        self.peers = [benchmark.ours] + [one for one in benchmark.peers if one.is_installed()]
        self.tools = {one.name: one.build(options) for one in self.peers if one.build}
        self.workplace = measure.Workplace(options.work / "out")

    def arguments(self, one):
        """Makes ready for one run; what it reads is brought into memory."""
        data.read_through(self.tree if one.reads == "tree" else self.archive)
        values = {"archive": self.archive, "tree": self.tree, "tool": self.tools.get(one.name)}
        if self.benchmark.extracts:
            values["out"] = self.workplace.fresh()
        if self.benchmark.replaces:
            shutil.copytree(self.tree, values["out"], symlinks=True, dirs_exist_ok=True)
        return [word.format(**values) for word in one.command.split()]

    def verify(self):
        """A fast wrong answer is worth nothing: the output must equal the tree."""
        out = self.workplace.fresh()
        measure.execute([str(self.options.morvunp), "extract", "-q", str(self.archive), "-C",
                         str(out)], OURS)
        different = data.differences(self.tree, out)
        if different:
            sys.exit(f"morvunp's output differs from {self.tree} in {len(different)} paths, "
                     f"first {different[0]}")

    def check_space(self):
        needed = data.bytes_below(self.tree) * len(self.peers) * (self.options.rounds + 1) * 1.2
        if self.benchmark.extracts and needed > shutil.disk_usage(self.options.work).free:
            sys.exit(f"{self.options.work} needs {needed / 1e9:.0f} GB free for this; "
                     "use fewer --rounds or another --work")

    def run(self):
        """Returns the costs by peer, a list of rounds each, and the peak memory by peer."""
        self.check_space()
        try:
            self.verify()
            # This round is not timed: it measures memory and warms caches.
            memory = {one.name: measure.peak_memory(self.arguments(one), one.name)
                      for one in self.peers}
            costs = {one.name: [] for one in self.peers}
            for number in range(self.options.rounds):
                # Another one starts each round, so that no place in it is a habit.
                turn = number % len(self.peers)
                for one in self.peers[turn:] + self.peers[:turn]:
                    costs[one.name].append(measure.execute(self.arguments(one), one.name))
        finally:
            self.workplace.clear()
        return costs, memory


def ratio(costs, name, what):
    def median(of):
        return statistics.median(getattr(cost, what) for cost in costs[of])

    by_round = [getattr(ours, what) / getattr(theirs, what)
                for ours, theirs in zip(costs[OURS], costs[name])]
    return f"{median(OURS) / median(name):.2f} ({min(by_round):.2f}-{max(by_round):.2f})"


def run(benchmark, options):
    measurement = Measurement(benchmark, options)
    costs, memory = measurement.run()
    rows = [(f"{one.name} {one.version_text()}", ratio(costs, one.name, "wall"),
             ratio(costs, one.name, "cpu"), f"{memory[OURS] / memory[one.name]:.2f}")
            for one in measurement.peers[1:]]
    return Result(benchmark.title, rows, memory[OURS], options.rounds,
                  [one.name for one in benchmark.peers if one not in measurement.peers])
