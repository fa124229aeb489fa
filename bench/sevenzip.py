#!/usr/bin/env python3
"""Compares morvunp with other programs on 7z archives. See README.md."""

import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import common  # noqa: E402
from rar import make_text  # noqa: E402

CASES = ("solid", "bcj", "stored", "small", "list")


def make_data(options, name, make_tree, switches):
    """A source tree and the archive of it, kept for later runs."""
    data = options.work / ("7z-quick" if options.quick else "7z")
    data.mkdir(exist_ok=True)
    tree = common.make_once(data / make_tree.__name__, make_tree)

    def make(path):
        # The archiver insists on its own ending.
        unfinished = path.with_suffix(".7z")
        subprocess.run(["7z", "a", "-bso0", "-bsp0", *switches, unfinished, "."], cwd=tree,
                       check=True, stdin=subprocess.DEVNULL)
        unfinished.rename(path)

    return tree, common.make_once(data / f"{name}.7z", make)


def extraction(options, title, tree, archive):
    path = str(archive)
    return common.Case(title, [
        common.Contender(common.OURS,
                         [str(options.morvunp), "extract", "-q", path, "-C", "{out}"], archive),
        # The command of the package that the engine comes from: what any
        # program on this engine can reach at best.
        common.Contender("7z -mmt1", ["7z", "x", "-y", "-bd", "-mmt1", "-o{out}", path], archive,
                         ["7z"]),
        common.Contender("7zz -mmt1", ["7zz", "x", "-y", "-bd", "-mmt1", "-o{out}", path], archive,
                         ["7zz"]),
        common.Contender("7zz", ["7zz", "x", "-y", "-bd", "-o{out}", path], archive, ["7zz"]),
        common.Contender("bsdtar", ["bsdtar", "-xf", path, "-C", "{out}"], archive,
                         ["bsdtar", "--version"]),
    ], common.bytes_below(tree))


def listing(options, title, archive):
    path = str(archive)
    return common.Case(title, [
        common.Contender(common.OURS, [str(options.morvunp), "list", path], archive),
        common.Contender("7zz", ["7zz", "l", path], archive, ["7zz"]),
        common.Contender("bsdtar", ["bsdtar", "-tvf", path], archive, ["bsdtar", "--version"]),
    ])


def main():
    options = common.parse_options(__doc__, cases=CASES)
    size = 1 if options.quick else 48
    files = 300 if options.quick else 4_000
    many = 1_000 if options.quick else 70_000

    def large_tree(path):
        make_text(path, 4, size << 20)

    def small_tree(path):
        common.make_tree(path, files, files // 100, lambda generator: generator.randint(1024, 8192))

    def many_tree(path):
        common.make_tree(path, many, many // 100, lambda generator: generator.randint(1, 50))

    def run(name, make_case, title, make_tree, *switches):
        if name not in options.cases:
            return
        tree, archive = make_data(options, name, make_tree, switches)
        if make_case is listing:
            common.run_case(listing(options, title, archive), options)
        else:
            common.verify(options, tree, archive)
            common.run_case(extraction(options, title, tree, archive), options)

    text = f"4 texts of {size} MiB"
    run("solid", extraction, f"Extracting {text}, LZMA2, solid", large_tree, "-mx3")
    run("bcj", extraction, f"Extracting {text}, BCJ and LZMA2 in several blocks", large_tree,
        "-m0=bcj", "-m1=lzma2:x1", "-mmt2")
    run("stored", extraction, f"Extracting {text}, stored", large_tree, "-mx0")
    run("small", extraction, f"Extracting {files:,} files of 1-8 KiB", small_tree, "-mx1")
    run("list", listing, f"Listing {many:,} files", many_tree, "-mx0")


if __name__ == "__main__":
    main()
