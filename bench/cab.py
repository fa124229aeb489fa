"""Cabinets."""

import subprocess

from benchmark import ROOT, Benchmark, peer
from data import make_tree

EXTRACTORS = [peer("cabextract", "cabextract -q -d {out} {archive}"),
              peer("7zz", "7zz x -y -bd -o{out} {archive}", "7zz"),
              peer("bsdtar", "bsdtar -xf {archive} -C {out}")]
GCAB = peer("gcab", "gcab -x -C {out} {archive}")
LISTERS = [peer("cabextract", "cabextract -l {archive}"), peer("7zz", "7zz l {archive}", "7zz"),
           peer("bsdtar", "bsdtar -tf {archive}"), peer("gcab", "gcab -t {archive}")]


def text(generator):
    """Words, numbers and tables: what packs about three to one."""
    words = [generator.randbytes(generator.randint(2, 6)).hex()[:generator.randint(2, 9)]
             for _ in range(5000)]
    text = bytearray()
    while len(text) < 1 << 22:
        line = (words[min(int(generator.paretovariate(0.8)), len(words)) - 1] for _ in range(12))
        text += f"{' '.join(line)} {generator.randrange(1 << 20)}\n".encode()
        text += generator.randbytes(8)
    return bytes(text)


def tree_maker(files, folders, size):
    return lambda folder: make_tree(folder, files, folders, size, text)


def make_mszip(tree, cabinet):
    files = sorted(str(path.relative_to(tree)) for path in tree.rglob("*") if path.is_file())
    subprocess.run(["gcab", "-c", "-z", cabinet, *files], check=True, cwd=tree,
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)


def make_lzx(tree, cabinet):
    """No package makes LZX cabinets; the writer of the tests does."""
    command = cabinet.parent / "makecab"
    support = ROOT / "tests/support"
    subprocess.run(["g++", "-std=c++20", "-O2", "-I", ROOT / "tests", ROOT / "bench/makecab.cpp",
                    *support.glob("*writer.cpp"), support / "cabbuilder.cpp", "-lz", "-o", command],
                   check=True)
    subprocess.run([command, cabinet, tree], check=True)


def benchmarks(quick):
    files, folders = (1_000, 20) if quick else (20_000, 200)
    many, spread = (5_000, 50) if quick else (65_535, 500)
    size = 8 if quick else 300
    large = ("cab-large", tree_maker(1, 1, lambda _: size << 20))
    small = ("cab-small", tree_maker(files, folders, lambda it: it.randint(1024, 8192)))
    return [
        # Its names are more than the command line of the MSZIP writer holds.
        Benchmark("cab-list", f"Listing a cabinet of {many:,} files", "cab-many",
                  tree_maker(many, spread, lambda it: it.randint(1, 20)), "many.cab", make_lzx,
                  LISTERS, extracts=False),
        Benchmark("cab-large", f"Extracting {size} MiB from a cabinet, MSZIP", *large,
                  "large.cab", make_mszip, [*EXTRACTORS, GCAB]),
        Benchmark("cab-small", f"Extracting {files:,} files of 1-8 KiB from a cabinet, MSZIP",
                  *small, "small.cab", make_mszip, [*EXTRACTORS, GCAB]),
        Benchmark("cab-lzx-large", f"Extracting {size} MiB from a cabinet, LZX", *large,
                  "large-lzx.cab", make_lzx, EXTRACTORS),
        Benchmark("cab-lzx-small", f"Extracting {files:,} files of 1-8 KiB from a cabinet, LZX",
                  *small, "small-lzx.cab", make_lzx, EXTRACTORS),
    ]
