"""What every benchmark of this folder shares: data, runs, measurement, tables.

A benchmark compares this project with other programs that do the same work on
the same data. It prints ratios (this project divided by the other program) and
never absolute times, which say more about the machine than about the code.
"""

import argparse
import filecmp
import os
import random
import re
import shutil
import stat
import statistics
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
COMMAND = ROOT / "build/release/hosts/terminal/morvunp"
OURS = "morvunp"


@dataclass
class Contender:
    name: str
    # Arguments; "{out}" stands for the folder that a run writes into.
    arguments: list
    # What the run reads, so that it can be brought into memory beforehand.
    reads: Path
    # How to ask for the version; the first number in the answer is taken.
    version: list = field(default_factory=list)

    def present(self):
        return shutil.which(self.arguments[0]) is not None


@dataclass
class Case:
    title: str
    contenders: list
    # Bytes that one run writes; 0 for a case that writes nothing.
    output_bytes: int = 0


def parse_options(description, cases):
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--work", type=Path, default=ROOT / "build/bench",
                        help="folder for data and output (default build/bench)")
    parser.add_argument("--rounds", type=int, default=5, help="timed rounds of each case")
    parser.add_argument("--quick", action="store_true",
                        help="a small data set: shows that everything works, measures little")
    parser.add_argument("--morvunp", type=Path, default=COMMAND,
                        help="the command to measure (default: the release build, made first)")
    parser.add_argument("--case", action="append", choices=cases, dest="cases",
                        help="run this case only; can be repeated")
    options = parser.parse_args()
    options.cases = options.cases or cases
    if options.rounds < 1:
        parser.error("--rounds must be at least 1")
    if options.morvunp == COMMAND:
        subprocess.run([ROOT / "scripts/setup", "bench"], check=True)
        subprocess.run([ROOT / "scripts/build", "release"], check=True)
    elif not os.access(options.morvunp, os.X_OK):
        parser.error(f"{options.morvunp} cannot be run")
    if not Path("/usr/bin/time").exists():
        parser.error("GNU time is missing; scripts/setup bench installs it")
    options.morvunp = options.morvunp.resolve()
    options.work = options.work.resolve()
    options.work.mkdir(parents=True, exist_ok=True)
    return options


# Data.


def make_tree(folder, files, folders, size, make_pool=None):
    """Fills `folder` with files in a two-level tree, the same on every run.

    `size(random)` gives the length of each file. All are cut out of what
    `make_pool(random)` gives, 4 MiB of noise when there is none. Names are upper case and no
    longer than 8.3, so that every program shows them alike.
    """
    generator = random.Random(1)
    places = []
    tops = max(1, folders // 25)
    for number in range(folders):
        place = folder / f"T{number % tops:07}" / f"D{number:07}"
        place.mkdir(parents=True)
        places.append(place)
    # Making all content anew would take long.
    pool = make_pool(generator) if make_pool else generator.randbytes(1 << 22)
    for number in range(files):
        left = size(generator)
        with open(places[number % folders] / f"F{number:07}.DAT", "wb") as file:
            while left > 0:
                part = min(left, 1 << 20)
                start = generator.randrange(len(pool) - part + 1)
                file.write(memoryview(pool)[start:start + part])
                left -= part


def make_once(path, make):
    """Calls `make(unfinished path)` unless an earlier run left `path`."""
    if not path.exists():
        unfinished = path.with_name(path.name + ".unfinished")
        remove(unfinished)
        make(unfinished)
        unfinished.rename(path)
    return path


def bytes_below(folder):
    return sum(path.stat().st_size for path in folder.rglob("*") if path.is_file())


def remove(path):
    """Removes a file or a tree, folders without write permission included."""
    if not path.is_dir():
        path.unlink(missing_ok=True)
        return
    for folder, _, _ in os.walk(path):
        os.chmod(folder, stat.S_IRWXU)
    shutil.rmtree(path)


def differences(left, right):
    """Paths that are not the same in both trees, by name and content."""
    found = []

    def paths(root):
        return {path.relative_to(root): path.is_dir() for path in root.rglob("*")}

    left_paths, right_paths = paths(left), paths(right)
    for path in sorted(left_paths.keys() | right_paths.keys()):
        if left_paths.get(path) != right_paths.get(path):
            found.append(path)
        elif not left_paths[path] and not filecmp.cmp(left / path, right / path, shallow=False):
            found.append(path)
    return found


# Runs.


@dataclass
class Run:
    wall: float
    cpu: float


def read_through(path):
    """Brings a file or tree into the page cache."""
    for file in [path] if path.is_file() else filter(Path.is_file, path.rglob("*")):
        with open(file, "rb", buffering=0) as opened:
            while opened.read(1 << 22):
                pass


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
    return Run(wall, usage.ru_utime + usage.ru_stime)


def peak_memory(arguments, name):
    """Runs once and returns the peak resident memory in bytes.

    The peak that wait4 reports starts at the size of the process that forked,
    so a small process has to do the forking: GNU time, not this interpreter.
    """
    with tempfile.NamedTemporaryFile("r") as report:
        execute(["/usr/bin/time", "-f", "%M", "-o", report.name, *arguments], name)
        return int(report.read()) * 1024


def verify(options, tree, archive):
    """A fast wrong answer is worth nothing: the output must equal the tree."""
    out = options.work / "verify"
    remove(out)
    out.mkdir()
    execute([str(options.morvunp), "extract", "-q", str(archive), "-C", str(out)], OURS)
    different = differences(tree, out)
    remove(out)
    if different:
        sys.exit(f"morvunp's output differs from {tree} in {len(different)} paths, "
                 f"first {different[0]}")
    print(f"\nverified: what morvunp extracts from {archive.name} equals its source tree")


class Workplace:
    """Gives every run that writes a fresh folder, and removes them at the end.

    Removing between runs would leave work behind for the next contender.
    """

    def __init__(self, folder):
        self.folder = folder
        self.count = 0
        remove(folder)
        folder.mkdir()

    def prepare(self, contender, writes):
        read_through(contender.reads)
        out = self.folder / f"{self.count:04}"
        self.count += 1
        if writes:
            out.mkdir()
            os.sync()
        return [argument.replace("{out}", str(out)) for argument in contender.arguments]

    def clear(self):
        remove(self.folder)


def verify(options, tree, archive):
    """A fast wrong answer is worth nothing: the output must equal the tree."""
    out = options.work / "verify"
    remove(out)
    out.mkdir()
    execute([str(options.morvunp), "extract", "-q", str(archive), "-C", str(out)], OURS)
    different = differences(tree, out)
    remove(out)
    if different:
        sys.exit(f"morvunp's output differs from {tree} in {len(different)} paths, "
                 f"first {different[0]}")
    print(f"\nverified: what morvunp extracts from {archive.name} equals its source tree")


def version_of(contender):
    if not contender.version:
        return ""
    answer = subprocess.run(contender.version, stdin=subprocess.DEVNULL, capture_output=True,
                            text=True, errors="replace")
    found = re.search(r"\d+(\.\d+)+", answer.stdout + answer.stderr)
    return found.group() if found else "?"


def run_case(case, options):
    contenders = [contender for contender in case.contenders if contender.present()]
    print(case.title)
    for contender in case.contenders:
        if contender not in contenders:
            print(f"  skipped: {contender.name} is not installed")

    needed = case.output_bytes * len(contenders) * (options.rounds + 1) * 1.2
    if needed > shutil.disk_usage(options.work).free:
        sys.exit(f"{options.work} needs {needed / 1e9:.0f} GB free for this; "
                 "use fewer --rounds or another --work")

    workplace = Workplace(options.work / "out")
    writes = case.output_bytes > 0
    memory = {}
    runs = {contender.name: [] for contender in contenders}
    try:
        # The first round is not timed: it measures memory and warms caches.
        for contender in contenders:
            memory[contender.name] = peak_memory(workplace.prepare(contender, writes),
                                                 contender.name)
        for number in range(options.rounds):
            # Another one starts each round, so that no place in it is a habit.
            turn = number % len(contenders)
            for contender in contenders[turn:] + contenders[:turn]:
                runs[contender.name].append(
                    execute(workplace.prepare(contender, writes), contender.name))
    finally:
        workplace.clear()
    print_table(contenders, runs, memory)


def print_table(contenders, runs, memory):
    def median(name, what):
        return statistics.median(getattr(run, what) for run in runs[name])

    def ratio(name, what):
        by_round = [getattr(ours, what) / getattr(theirs, what)
                    for ours, theirs in zip(runs[OURS], runs[name])]
        return (f"{median(OURS, what) / median(name, what):.2f} "
                f"({min(by_round):.2f}-{max(by_round):.2f})")

    rows = [("peer", "wall", "CPU", "peak memory")]
    for contender in contenders:
        if contender.name == OURS:
            continue
        rows.append((f"{contender.name} {version_of(contender)}".strip(),
                     ratio(contender.name, "wall"), ratio(contender.name, "cpu"),
                     f"{memory[OURS] / memory[contender.name]:.2f}"))
    widths = [max(len(row[column]) for row in rows) for column in range(4)]
    for row in rows:
        print("  " + "  ".join(text.ljust(width) for text, width in zip(row, widths)).rstrip())
    print(f"  morvunp / peer: medians of {len(runs[OURS])} rounds (lowest-highest round); "
          f"morvunp's peak memory: {memory[OURS] / 1e6:.1f} MB")
