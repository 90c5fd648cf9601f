#!/usr/bin/env python3
"""make_root.py ROOT [--package NAME]... FILE...
Copies files and directories of this machine to the same places below ROOT, programs with the
libraries that they are linked to and without what debuggers read, links with what they lead to.
Of a package everything comes but its documentation."""
import argparse
import functools
import os
import re
import shutil
import subprocess
from collections.abc import Iterator
from pathlib import Path

NOT_NEEDED = re.compile(r"/usr/share/(doc|man|locale|lintian|bash-completion|zsh|polkit-1|perl5)/")


def files_of_package(name: str) -> Iterator[Path]:
    listed = subprocess.run(["dpkg", "-L", name], check=True, capture_output=True, text=True)
    for line in listed.stdout.splitlines():
        path = Path(line)
        if not NOT_NEEDED.match(line) and not path.is_dir() and os.path.lexists(path):
            yield path


def is_program(path: Path) -> bool:
    with path.open("rb") as file:
        return file.read(4) == b"\x7fELF"


def libraries_of(path: Path) -> Iterator[Path]:
    shown = subprocess.run(["ldd", str(path)], check=False, capture_output=True, text=True)
    for name in re.findall(r"(/\S+\.so\S*)", shown.stdout):
        yield Path(name)


@functools.cache
def place(path: Path) -> Path:
    """Without links on the way; the last part may be one."""
    return path.parent.resolve() / path.name


class Root:
    def __init__(self, root: Path) -> None:
        self.root = root
        self.taken: set[Path] = set()

    def add(self, path: Path) -> None:
        here = place(path)
        if here in self.taken:
            return
        self.taken.add(here)
        there = self.root / here.relative_to("/")
        if here.is_symlink():
            there.parent.mkdir(parents=True, exist_ok=True)
            there.symlink_to(os.readlink(here))
            if here.exists():
                self.add(here.parent / os.readlink(here))
        elif here.is_dir():
            there.mkdir(parents=True, exist_ok=True)
            for inside in here.iterdir():
                self.add(inside)
        elif here.is_file():
            there.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(here, there)
            if is_program(here):
                subprocess.run(["strip", "--strip-debug", str(there)], check=False)
                for library in libraries_of(here):
                    self.add(library)


def main() -> None:
    line = argparse.ArgumentParser()
    line.add_argument("root", type=Path)
    line.add_argument("--package", action="append", default=[])
    line.add_argument("files", nargs="*", type=Path)
    options = line.parse_intermixed_args()
    root = Root(options.root)
    for merged in ("bin", "sbin", "lib", "lib32", "lib64"):
        (options.root / "usr" / merged).mkdir(parents=True, exist_ok=True)
        (options.root / merged).symlink_to(f"usr/{merged}")
    for package in options.package:
        for file in files_of_package(package):
            root.add(file)
    for file in options.files:
        root.add(file.absolute())


if __name__ == "__main__":
    main()
