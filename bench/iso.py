#!/usr/bin/env python3
"""Compares morvunp with other programs on disc images. See README.md."""

import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import common  # noqa: E402


def make_image(tree, image, extra):
    subprocess.run(["genisoimage", "-quiet", "-iso-level", "3", *extra, "-V", "BENCH",
                    "-o", image, tree], check=True, stdin=subprocess.DEVNULL)


def make_data(options, name, files, folders, size, udf=False):
    """A source tree and the image of it, kept for later runs."""
    data = options.work / ("data-quick" if options.quick else "data")
    data.mkdir(exist_ok=True)
    tree = common.make_once(data / f"{name}-tree",
                            lambda path: common.make_tree(path, files, folders, size))
    # A bridge image: everybody here who knows UDF prefers it to ISO 9660.
    extra = ["-udf"] if udf else []
    image = common.make_once(data / (f"{name}-udf.iso" if udf else f"{name}.iso"),
                             lambda path: make_image(tree, path, extra))
    return tree, image


def list_contenders(options, image):
    path = str(image)
    return [common.Contender(common.OURS, [str(options.morvunp), "list", path], image),
            common.Contender("7zz", ["7zz", "l", path], image, ["7zz"])]


def extract_contenders(options, tree, image):
    path = str(image)
    return [common.Contender(common.OURS,
                             [str(options.morvunp), "extract", "-q", path, "-C", "{out}"], image),
            common.Contender("cp -r of the source tree", ["cp", "-r", f"{tree}/.", "{out}"], tree,
                             ["cp", "--version"]),
            common.Contender("7zz", ["7zz", "x", "-y", "-bd", "-o{out}", path], image, ["7zz"])]


def listing(options, title, image):
    path = str(image)
    return common.Case(title, list_contenders(options, image) + [
        common.Contender("bsdtar", ["bsdtar", "-tf", path], image, ["bsdtar", "--version"]),
        common.Contender("isoinfo", ["isoinfo", "-l", "-i", path], image,
                         ["isoinfo", "--version"]),
        common.Contender("xorriso", ["xorriso", "-indev", path, "-find", "/"], image,
                         ["xorriso", "-version"]),
    ])


def udfread_command(options):
    """libudfread has no command: a small one is built here."""
    command = options.work / "udfread_list"
    source = Path(__file__).resolve().parent / "udfread_list.c"
    subprocess.run(["gcc", "-O2", source, "-o", command, "-ludfread"], check=True)
    return str(command)


def udf_listing(options, title, image):
    return common.Case(title, list_contenders(options, image) + [
        common.Contender("libudfread, names only", [udfread_command(options), str(image)], image,
                         ["dpkg-query", "-Wf", "${Version}", "libudfread-dev"])])


def extraction(options, title, tree, image):
    path = str(image)
    return common.Case(title, extract_contenders(options, tree, image) + [
        common.Contender("bsdtar", ["bsdtar", "-xf", path, "-C", "{out}"], image,
                         ["bsdtar", "--version"]),
        common.Contender("xorriso", ["xorriso", "-osirrox", "on", "-indev", path,
                                     "-extract", "/", "{out}"], image, ["xorriso", "-version"]),
    ], common.bytes_below(tree))


def udf_extraction(options, title, tree, image):
    return common.Case(title, extract_contenders(options, tree, image), common.bytes_below(tree))


def main():
    options = common.parse_options(__doc__, cases=("list", "small", "large", "udf-list", "udf-small"))
    quick = options.quick

    def prepare(*what, udf=False):
        tree, image = make_data(options, *what, udf)
        common.verify(options, tree, image)
        return tree, image

    if "list" in options.cases:
        files, folders = (5_000, 50) if quick else (100_000, 500)
        _, image = prepare("many", files, folders, lambda generator: generator.randint(1, 200))
        common.run_case(listing(options, f"Listing an image of {files:,} files", image), options)
    if "small" in options.cases:
        files, folders = (1_000, 20) if quick else (20_000, 200)
        data = prepare("small", files, folders, lambda generator: generator.randint(1024, 8192))
        common.run_case(extraction(options, f"Extracting {files:,} files of 1-8 KiB", *data),
                        options)
    if "large" in options.cases:
        size = 8 if quick else 256
        data = prepare("large", 4, 1, lambda _: size << 20)
        common.run_case(extraction(options, f"Extracting 4 files of {size} MiB", *data), options)
    if "udf-list" in options.cases:
        files, folders = (5_000, 50) if quick else (100_000, 500)
        _, image = prepare("many", files, folders, lambda generator: generator.randint(1, 200),
                           udf=True)
        common.run_case(udf_listing(options, f"Listing a UDF image of {files:,} files", image),
                        options)
    if "udf-small" in options.cases:
        files, folders = (1_000, 20) if quick else (20_000, 200)
        data = prepare("small", files, folders, lambda generator: generator.randint(1024, 8192),
                       udf=True)
        common.run_case(
            udf_extraction(options, f"Extracting {files:,} files of 1-8 KiB from UDF", *data),
            options)


if __name__ == "__main__":
    main()
