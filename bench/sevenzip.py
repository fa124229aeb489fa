"""7z archives."""

import subprocess

from benchmark import Benchmark, peer
from data import small_files, texts, tiny_files

# The first is the command of the package that the engine comes from: what any
# program on this engine can reach at best.
EXTRACTORS = [peer("7z -mmt1, the same engine", "7z x -y -bd -mmt1 -o{out} {archive}", "7z"),
              peer("7zz -mmt1", "7zz x -y -bd -mmt1 -o{out} {archive}", "7zz"),
              peer("7zz", "7zz x -y -bd -o{out} {archive}", "7zz"),
              peer("bsdtar", "bsdtar -xf {archive} -C {out}")]
LISTERS = [peer("7z, the same engine", "7z l {archive}", "7z"),
           peer("7zz", "7zz l {archive}", "7zz"), peer("bsdtar", "bsdtar -tvf {archive}")]


def packer(*switches):
    def make(tree, archive):
        subprocess.run(["7z", "a", "-bso0", "-bsp0", *switches, archive, "."], cwd=tree,
                       check=True, stdin=subprocess.DEVNULL)
    return make


def benchmarks(quick):
    size = 1 if quick else 48
    files = 300 if quick else 4_000
    many = 1_000 if quick else 70_000
    large = ("7z-large", texts(4, size << 20))
    text = f"4 texts of {size} MiB"
    return [
        Benchmark("7z-solid", f"Extracting {text} from 7z, LZMA2, solid", *large, "solid.7z",
                  packer("-mx3"), EXTRACTORS),
        Benchmark("7z-bcj", f"Extracting {text} from 7z, BCJ and LZMA2 in blocks", *large,
                  "bcj.7z", packer("-m0=bcj", "-m1=lzma2:x1", "-mmt2"), EXTRACTORS),
        Benchmark("7z-stored", f"Extracting {text} from 7z, stored", *large, "stored.7z",
                  packer("-mx0"), EXTRACTORS),
        Benchmark("7z-small", f"Extracting {files:,} files of 1-8 KiB from 7z", "7z-small",
                  small_files(files), "small.7z", packer("-mx1"), EXTRACTORS),
        Benchmark("7z-list", f"Listing a 7z archive of {many:,} files", "7z-many",
                  tiny_files(many, 50), "list.7z", packer("-mx0"), LISTERS, extracts=False),
    ]
