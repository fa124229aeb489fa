"""Disc images, ISO 9660 and UDF."""

import subprocess

from benchmark import ROOT, Benchmark, peer
from data import make_tree, small_files, tiny_files

CP = peer("cp -r of the source tree", "cp -r {tree}/. {out}", reads="tree")
LIST_7ZZ = peer("7zz", "7zz l {archive}", "7zz")
EXTRACT_7ZZ = peer("7zz", "7zz x -y -bd -o{out} {archive}", "7zz")

LISTERS = [LIST_7ZZ, peer("bsdtar", "bsdtar -tf {archive}"),
           peer("isoinfo", "isoinfo -l -i {archive}"),
           peer("xorriso", "xorriso -indev stdio:{archive} -find /", "xorriso -version")]
EXTRACTORS = [CP, EXTRACT_7ZZ, peer("bsdtar", "bsdtar -xf {archive} -C {out}"),
              peer("xorriso", "xorriso -osirrox on -indev stdio:{archive} -extract / {out}",
                   "xorriso -version")]


def image_maker(*switches):
    def make(tree, image):
        subprocess.run(["genisoimage", "-quiet", "-iso-level", "3", *switches, "-V", "BENCH",
                        "-o", image, tree], check=True, stdin=subprocess.DEVNULL)
    return make


def udfread_command(options):
    """libudfread has no command: a small one is built here."""
    command = options.work / "udfread_list"
    subprocess.run(["gcc", "-O2", ROOT / "bench/udfread_list.c", "-o", command, "-ludfread"],
                   check=True)
    return command


LIBUDFREAD = peer("libudfread, names only", "{tool} {archive}",
                  "dpkg-query -Wf ${Version} libudfread-dev", build=udfread_command)


def benchmarks(quick):
    many = 5_000 if quick else 100_000
    files = 1_000 if quick else 20_000
    size = 8 if quick else 64
    iso = image_maker()
    # A bridge image: everybody here who knows UDF prefers it to ISO 9660.
    udf = image_maker("-udf")
    many_tree = ("iso-many", tiny_files(many, 200))
    small_tree = ("iso-small", small_files(files))
    large_tree = ("iso-large", lambda folder: make_tree(folder, 4, 1, lambda _: size << 20))
    return [
        Benchmark("iso-list", f"Listing an ISO 9660 image of {many:,} files", *many_tree,
                  "many.iso", iso, LISTERS, extracts=False),
        Benchmark("iso-small", f"Extracting {files:,} files of 1-8 KiB from ISO 9660",
                  *small_tree, "small.iso", iso, EXTRACTORS),
        Benchmark("iso-large", f"Extracting 4 files of {size} MiB from ISO 9660", *large_tree,
                  "large.iso", iso, EXTRACTORS),
        Benchmark("udf-list", f"Listing a UDF image of {many:,} files", *many_tree,
                  "many-udf.iso", udf, [LIST_7ZZ, LIBUDFREAD], extracts=False),
        Benchmark("udf-small", f"Extracting {files:,} files of 1-8 KiB from UDF", *small_tree,
                  "small-udf.iso", udf, [CP, EXTRACT_7ZZ]),
    ]
