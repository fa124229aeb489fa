"""Source trees of the benchmarks, the same on every run and every machine."""

import filecmp
import os
import random
import shutil
import stat


def make_tree(folder, files, folders, size, make_pool=None):
    """Fills `folder` with files in a two-level tree.

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


def small_files(files):
    """A maker of a tree of `files` files of 1 to 8 KiB."""
    return lambda folder: make_tree(folder, files, max(1, files // 100),
                                    lambda generator: generator.randint(1024, 8192))


def tiny_files(files, most):
    """A maker of a tree of `files` files of at most `most` bytes."""
    return lambda folder: make_tree(folder, files, max(1, files // 200),
                                    lambda generator: generator.randint(1, most))


def texts(files, size):
    """A maker of `files` files of `size` bytes that compress as text does."""
    def make(folder):
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
    return make


def make_once(path, make):
    """Calls `make(unfinished path)` unless an earlier run left `path`.

    The unfinished path has the ending of the real one: some archivers insist
    on their own.
    """
    if not path.exists():
        unfinished = path.with_name("unfinished-" + path.name)
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


def read_through(path):
    """Brings a file or tree into the page cache."""
    for file in [path] if path.is_file() else filter(lambda each: each.is_file(), path.rglob("*")):
        with open(file, "rb", buffering=0) as opened:
            while opened.read(1 << 22):
                pass
