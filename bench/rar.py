"""RAR archives."""

import subprocess

from benchmark import ROOT, Benchmark, peer
from data import small_files, texts


def engine_command(options):
    """The engine has no command of its own: a small one is built here."""
    command = options.work / "unrar_engine"
    subprocess.run(["g++", "-O2", ROOT / "bench/unrar_engine.cpp", "-o", command, "-lunrar"],
                   check=True)
    return command


EXTRACTORS = [peer("the engine, empty callback", "{tool} {archive} {out}",
                   "dpkg-query -Wf ${Version} libunrar-dev", build=engine_command),
              peer("unrar x", "unrar x -idq {archive} {out}/", "unrar"),
              peer("7z with its RAR module", "7z x -y -bd -o{out} {archive}", "7z"),
              peer("bsdtar", "bsdtar -xf {archive} -C {out}")]
LISTERS = [peer("unrar l", "unrar l {archive}", "unrar"),
           peer("7z with its RAR module", "7z l {archive}", "7z"),
           peer("bsdtar", "bsdtar -tvf {archive}")]


def packer(*switches):
    def make(tree, archive):
        subprocess.run(["rar", "a", "-idq", "-r", "-ma5", *switches, archive, "."], cwd=tree,
                       check=True, stdin=subprocess.DEVNULL)
    return make


def benchmarks(quick):
    size = 1 if quick else 24
    files = 300 if quick else 10_000
    # For each file that it writes, the engine reads the record that makes lists
    # quick from its start, which takes quadratic time.
    fewer = 300 if quick else 2_000
    large = ("rar-large", texts(4, size << 20))
    small = ("rar-small", small_files(files))
    text = f"4 texts of {size} MiB"
    return [
        Benchmark("rar-normal", f"Extracting {text} from RAR, normal", *large, "normal.rar",
                  packer("-m3"), EXTRACTORS),
        Benchmark("rar-stored", f"Extracting {text} from RAR, stored", *large, "stored.rar",
                  packer("-m0"), EXTRACTORS),
        Benchmark("rar-solid", f"Extracting {text} from RAR, solid", *large, "solid.rar",
                  packer("-m3", "-s"), EXTRACTORS),
        Benchmark("rar-small",
                  f"Extracting {files:,} files of 1-8 KiB from RAR, no quick-open record", *small,
                  "small.rar", packer("-m3", "-qo-"), EXTRACTORS),
        Benchmark("rar-replace", f"Replacing {fewer:,} existing files of 1-8 KiB from RAR",
                  "rar-fewer", small_files(fewer), "replace.rar", packer("-m3", "-qo-"),
                  [peer("unrar x -o+", "unrar x -o+ -idq {archive} {out}/", "unrar")],
                  replaces=True),
        Benchmark("rar-small-quick-open",
                  f"Extracting {fewer:,} files of 1-8 KiB from RAR, quick-open record",
                  "rar-fewer", small_files(fewer), "fewer.rar", packer("-m3"), EXTRACTORS),
        Benchmark("rar-list", f"Listing a RAR archive of {files:,} files", *small, "list.rar",
                  packer("-m3"), LISTERS, extracts=False),
        Benchmark("rar-solid-list", f"Listing a solid RAR archive of {files:,} files", *small,
                  "list-solid.rar", packer("-m3", "-s"), LISTERS, extracts=False),
    ]
