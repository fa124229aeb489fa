#!/usr/bin/env python3
"""Compares morvunp with other programs on RAR archives. See README.md."""

import random
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import common  # noqa: E402

CASES = ("normal", "stored", "solid", "small", "small-quick-open", "list", "solid-list")


def make_text(folder, files, size):
    """Files that compress as text does, the same on every run."""
    generator = random.Random(2)
    words = ["".join(generator.choices("etaoinshrdlu", k=generator.randint(2, 9)))
             for _ in range(4_000)]
    folder.mkdir()
    for number in range(files):
        with open(folder / f"F{number:07}.TXT", "w") as file:
            left = size
            while left > 0:
                text = " ".join(generator.choices(words, k=10_000))[:left]
                file.write(text)
                left -= len(text)


def make_archive(tree, archive, switches):
    subprocess.run(["rar", "a", "-idq", "-r", "-ma5", *switches, archive, "."], cwd=tree,
                   check=True, stdin=subprocess.DEVNULL)


def make_data(options, name, make_tree, switches):
    """A source tree and the archive of it, kept for later runs."""
    data = options.work / ("rar-quick" if options.quick else "rar")
    data.mkdir(exist_ok=True)
    tree = common.make_once(data / make_tree.__name__, make_tree)

    def make(path):
        # The archiver insists on its own ending.
        unfinished = path.with_suffix(".rar")
        make_archive(tree, unfinished, switches)
        unfinished.rename(path)

    return tree, common.make_once(data / f"{name}.rar", make)


def engine_command(options):
    """The engine has no command of its own: a small one is built here."""
    command = options.work / "unrar_engine"
    source = Path(__file__).resolve().parent / "unrar_engine.cpp"
    subprocess.run(["g++", "-O2", source, "-o", command, "-lunrar"], check=True)
    return str(command)


def extraction(options, title, tree, archive):
    path = str(archive)
    return common.Case(title, [
        common.Contender(common.OURS,
                         [str(options.morvunp), "extract", "-q", path, "-C", "{out}"], archive),
        common.Contender("the engine, empty callback", [engine_command(options), path, "{out}"],
                         archive, ["dpkg-query", "-Wf", "${Version}", "libunrar-dev"]),
        common.Contender("unrar x", ["unrar", "x", "-idq", path, "{out}/"], archive, ["unrar"]),
        common.Contender("7z with its RAR module", ["7z", "x", "-y", "-bd", "-o{out}", path],
                         archive, ["7z"]),
        common.Contender("bsdtar", ["bsdtar", "-xf", path, "-C", "{out}"], archive,
                         ["bsdtar", "--version"]),
    ], common.bytes_below(tree))


def listing(options, title, archive):
    path = str(archive)
    return common.Case(title, [
        common.Contender(common.OURS, [str(options.morvunp), "list", path], archive),
        common.Contender("unrar l", ["unrar", "l", path], archive, ["unrar"]),
        common.Contender("7z with its RAR module", ["7z", "l", path], archive, ["7z"]),
        common.Contender("bsdtar", ["bsdtar", "-tvf", path], archive, ["bsdtar", "--version"]),
    ])


def main():
    options = common.parse_options(__doc__, cases=CASES)
    size = 1 if options.quick else 24
    files = 300 if options.quick else 10_000
    # For each file that it writes, the engine reads the record that makes lists
    # quick from its start, which takes quadratic time.
    fewer = 300 if options.quick else 2_000

    def large_tree(path):
        make_text(path, 4, size << 20)

    def small_tree(path):
        common.make_tree(path, files, files // 100, lambda generator: generator.randint(1024, 8192))

    def fewer_tree(path):
        common.make_tree(path, fewer, fewer // 100, lambda generator: generator.randint(1024, 8192))

    def run(name, make_case, title, make_tree, *switches):
        if name not in options.cases:
            return
        tree, archive = make_data(options, make_case.__name__ + "-" + name, make_tree, switches)
        if make_case is listing:
            common.run_case(listing(options, title, archive), options)
        else:
            common.verify(options, tree, archive)
            common.run_case(extraction(options, title, tree, archive), options)

    text = f"4 texts of {size} MiB"
    run("normal", extraction, f"Extracting {text}, normal", large_tree, "-m3")
    run("stored", extraction, f"Extracting {text}, stored", large_tree, "-m0")
    run("solid", extraction, f"Extracting {text}, solid", large_tree, "-m3", "-s")
    run("small", extraction, f"Extracting {files:,} files of 1-8 KiB, no quick-open record",
        small_tree, "-m3", "-qo-")
    run("small-quick-open", extraction,
        f"Extracting {fewer:,} files of 1-8 KiB, with a quick-open record", fewer_tree, "-m3")
    run("list", listing, f"Listing {files:,} files", small_tree, "-m3")
    run("solid-list", listing, f"Listing {files:,} files, solid", small_tree, "-m3", "-s")


if __name__ == "__main__":
    main()
