"""Passes of the library over one archive, compared with each other."""

import subprocess

import cab
import rar
import sevenzip
from benchmark import ROOT, Benchmark, peer
from data import texts


def passes(options):
    """A small program on the library of the command that is measured."""
    build = options.morvunp.resolve().parent.parent
    program = options.work / "passes"
    subprocess.run(["g++", "-std=c++20", "-O2", ROOT / "bench/passes.cpp", f"-I{ROOT}/include",
                    f"-I{build}/include", f"-L{build}/lib", "-lmorvunp",
                    f"-Wl,-rpath,{build}/lib", "-o", program], check=True)
    return program


def kind(name, words):
    return peer(words, f"{{tool}} {name} {{archive}} {{out}}", "true", build=passes)


def benchmarks(quick):
    size = 1 if quick else 8
    tree = ("passes", texts(24, size << 20))
    archives = [("7z", "7z", sevenzip.packer("-mx1", "-ms=1g")),
                ("RAR", "rar", rar.packer("-m1", "-s")),
                ("a cabinet", "cab", cab.make_mszip)]
    cases = []
    for words, extension, pack in archives:
        archive = (f"passes.{extension}", pack)
        cases.append(Benchmark(f"pass-six-{extension}",
                               f"Six of 24 files out of {words}, solid, beside the last alone",
                               *tree, *archive, [kind("last", "the last file alone")],
                               program=kind("six", "six files")))
        cases.append(Benchmark(f"pass-test-{extension}",
                               f"Testing {words}, solid, beside writing", *tree, *archive,
                               [kind("write", "the pass that writes")],
                               program=kind("test", "the pass that tests")))
    return cases
