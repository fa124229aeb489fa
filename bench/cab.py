#!/usr/bin/env python3
"""Compares morvunp with other programs on cabinets. See README.md."""

import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import common  # noqa: E402


def make_text(generator):
    """Words, numbers and tables: what packs about three to one."""
    words = [generator.randbytes(generator.randint(2, 6)).hex()[:generator.randint(2, 9)]
             for _ in range(5000)]
    text = bytearray()
    while len(text) < 1 << 22:
        line = (words[min(int(generator.paretovariate(0.8)), len(words)) - 1] for _ in range(12))
        text += f"{' '.join(line)} {generator.randrange(1 << 20)}\n".encode()
        text += generator.randbytes(8)
    return bytes(text)


def make_mszip(tree, cabinet):
    files = sorted(str(path.relative_to(tree)) for path in tree.rglob("*") if path.is_file())
    subprocess.run(["gcab", "-c", "-z", cabinet, *files], check=True, cwd=tree,
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)


def make_lzx(options):
    """A function that makes LZX cabinets, with the writer of the tests."""
    command = options.work / "makecab"
    sources = [common.ROOT / "bench/makecab.cpp", *(common.ROOT / "tests/support").glob("*writer.cpp"),
               common.ROOT / "tests/support/cabbuilder.cpp"]
    subprocess.run(["g++", "-std=c++20", "-O2", "-I", common.ROOT / "tests", *sources, "-lz",
                    "-o", command], check=True)
    return lambda tree, cabinet: subprocess.run([command, cabinet, tree], check=True)


def make_data(options, name, files, folders, size, method, make):
    """A source tree and the cabinet of it, kept for later runs."""
    data = options.work / ("data-cab-quick" if options.quick else "data-cab")
    data.mkdir(exist_ok=True)
    tree = common.make_once(data / f"{name}-tree", lambda path: common.make_tree(
        path, files, folders, size, make_text))
    cabinet = common.make_once(data / f"{name}-{method}.cab", lambda path: make(tree, path))
    return tree, cabinet


def listing(options, title, cabinet):
    path = str(cabinet)
    return common.Case(title, [
        common.Contender(common.OURS, [str(options.morvunp), "list", path], cabinet),
        common.Contender("cabextract", ["cabextract", "-l", path], cabinet,
                         ["cabextract", "--version"]),
        common.Contender("7zz", ["7zz", "l", path], cabinet, ["7zz"]),
        common.Contender("bsdtar", ["bsdtar", "-tf", path], cabinet, ["bsdtar", "--version"]),
        common.Contender("gcab", ["gcab", "-t", path], cabinet, ["gcab", "--version"])])


def extraction(options, title, tree, cabinet, gcab=True):
    path = str(cabinet)
    contenders = [
        common.Contender(common.OURS,
                         [str(options.morvunp), "extract", "-q", path, "-C", "{out}"], cabinet),
        common.Contender("cabextract", ["cabextract", "-q", "-d", "{out}", path], cabinet,
                         ["cabextract", "--version"]),
        common.Contender("7zz", ["7zz", "x", "-y", "-bd", "-o{out}", path], cabinet, ["7zz"]),
        common.Contender("bsdtar", ["bsdtar", "-xf", path, "-C", "{out}"], cabinet,
                         ["bsdtar", "--version"])]
    if gcab:
        contenders.append(common.Contender("gcab", ["gcab", "-x", "-C", "{out}", path], cabinet,
                                           ["gcab", "--version"]))
    return common.Case(title, contenders, common.bytes_below(tree))


def main():
    options = common.parse_options(
        __doc__, cases=("list", "large", "small", "lzx-large", "lzx-small"))
    quick = options.quick

    def prepare(name, files, folders, size, method="mszip", make=make_mszip):
        tree, cabinet = make_data(options, name, files, folders, size, method, make)
        common.verify(options, tree, cabinet)
        return tree, cabinet

    files, folders = (1_000, 20) if quick else (20_000, 200)
    small = ("small", files, folders, lambda generator: generator.randint(1024, 8192))
    size = 8 if quick else 300
    large = ("large", 1, 1, lambda _: size << 20)
    if "list" in options.cases:
        many, spread = (5_000, 50) if quick else (65_535, 500)
        # More names than a command line holds.
        _, cabinet = prepare("many", many, spread, lambda generator: generator.randint(1, 20),
                             "lzx", make_lzx(options))
        common.run_case(listing(options, f"Listing a cabinet of {many:,} files", cabinet), options)
    if "large" in options.cases:
        common.run_case(extraction(options, f"Extracting {size} MiB, MSZIP", *prepare(*large)),
                        options)
    if "small" in options.cases:
        common.run_case(extraction(options, f"Extracting {files:,} files of 1-8 KiB, MSZIP",
                                   *prepare(*small)), options)
    if "lzx-large" in options.cases:
        data = prepare(*large, "lzx", make_lzx(options))
        common.run_case(extraction(options, f"Extracting {size} MiB, LZX", *data, gcab=False),
                        options)
    if "lzx-small" in options.cases:
        data = prepare(*small, "lzx", make_lzx(options))
        common.run_case(extraction(options, f"Extracting {files:,} files of 1-8 KiB, LZX", *data,
                                   gcab=False), options)


if __name__ == "__main__":
    main()
