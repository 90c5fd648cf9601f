#!/usr/bin/env python3
"""tidy.py BUILD_DIR PATTERN MINIMUM [PLUGIN]

Runs clang-tidy over the sources of a compilation database whose paths in the tree match PATTERN; fewer
than MINIMUM are an error. Where BUILD_DIR compiles several sources together, they are put into one file
and looked at together: what the headers cost is paid once. Each is compiled alone first, so what it
forgets to include is seen. PLUGIN: tidy_tree_only.cpp, compiled. What was clean is remembered in
BUILD_DIR/tidy, under the contents of all files that were read, and not looked at again while these
stay as they are."""

import concurrent.futures
import functools
import hashlib
import json
import os
import re
import resource
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
TOGETHER = re.compile(r'^#include "(.+)"$', re.M)
CONFIGURATIONS = [ROOT / ".clang-tidy", *sorted(ROOT.glob("*/.clang-tidy"))]
TREE_ONLY = "orblink-tree-only"
HEADER = re.compile(r'#include [<"][^.>"]+(\.h|\.hpp)?[>"]')


@functools.lru_cache(maxsize=None)
def digest(path):
    return hashlib.sha256(Path(path).read_bytes()).hexdigest()


@functools.lru_cache(maxsize=None)
def output_of(*command, directory=None):
    return subprocess.run(command, cwd=directory, check=True, text=True,
                          stdout=subprocess.PIPE).stdout


class Unit:
    """What is looked at in one run: one source, or several that are compiled together."""

    def __init__(self, entry, build, plugin):
        self.build = build / "tidy"
        self.tidy = ["clang-tidy", "--quiet", *plugin]
        self.directory = entry["directory"]
        self.command = shlex.split(entry["command"])
        self.listed = os.path.realpath(entry["file"])
        self.sources = [self.listed]
        if "/Unity/" in self.listed:
            self.sources = TOGETHER.findall(Path(self.listed).read_text())

    def compile_command(self, source):
        """What the compiler is called with, without its output and the wrapper before it."""
        command = [word.replace(self.listed, source) for word in self.command]
        if Path(command[0]).name == "ccache":
            del command[0]
        output = command.index("-o")
        return command[:output] + command[output + 2:]

    def found(self, source, analysis, *settings):
        """What the analysis says of a source; nothing if it is known to say nothing."""
        command = self.compile_command(source)
        rule = output_of(*command, "-M", directory=self.directory)
        read = rule.partition(":")[2].replace("\\\n", " ").split()
        key = [output_of("clang-tidy", "--version"), *settings, *self.tidy, *command]
        key += [path + digest(os.path.join(self.directory, path)) for path in read]
        stamp = self.build / hashlib.sha256("\0".join(key).encode()).hexdigest()
        if not stamp.exists():
            run = subprocess.run(analysis(command), cwd=self.directory, text=True,
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            if run.returncode != 0:
                return run.stdout
        stamp.touch()
        return ""

    def found_by_tidy(self, main):
        return self.found(main, lambda command: [*self.tidy, main, "--", *command[1:]],
                          *map(digest, CONFIGURATIONS))

    def is_clean(self):
        """Whether there is nothing to find; what there is has been printed then."""
        if len(self.sources) == 1:
            complaints = self.found_by_tidy(self.sources[0])
        else:
            complaints = "".join(self.found(source, lambda command: [*command, "-fsyntax-only"])
                                 for source in self.sources)
            text, lines = put_together(self.sources)
            main = mirrored(self.sources[0], self.build).with_suffix(Path(self.listed).suffix)
            main.write_text(text)
            complaints += re.sub(re.escape(str(main)) + r":(\d+):",
                                 lambda place: lines[int(place[1]) - 1],
                                 self.found_by_tidy(str(main)))
        print(complaints, end="", flush=True)
        return complaints == ""


def mirrored(path, build):
    place = build / Path(path).relative_to(ROOT)
    place.parent.mkdir(parents=True, exist_ok=True)
    return place


def put_together(sources):
    """The text of all sources (some checks look at the main file only) and where its lines come from.
    A header that an earlier source has included is left out, or it would be found to be there twice."""
    lines, included, text = [], set(), []
    for source in sources:
        own = set()
        for number, line in enumerate(Path(source).read_text().splitlines(), 1):
            if HEADER.match(line):
                own.add(line)
            text.append("" if line in included else line)
            lines.append(f"{source}:{number}:")
        included |= own
    return "\n".join(text) + "\n", lines


def units(build, pattern, plugin):
    """With each source once: some are compiled for a library and for its tests."""
    entries = json.loads((build / "compile_commands.json").read_text())
    found = [Unit(entry, build, plugin) for entry in entries]
    taken = set()
    for unit in sorted(found, key=lambda unit: len(unit.sources)):
        unit.sources = [source for source in unit.sources if source not in taken
                        and re.match(pattern, source.removeprefix(str(ROOT)))
                        and Path(source).is_relative_to(ROOT)
                        and not Path(source).is_relative_to(build)]
        taken.update(unit.sources)
    return [unit for unit in found if unit.sources]


def main():
    build, pattern, minimum = Path(sys.argv[1]).resolve(), sys.argv[2], int(sys.argv[3])
    for path in CONFIGURATIONS:  # a file put together is looked at as what it is made of
        shutil.copy(path, mirrored(path, build / "tidy"))
    plugin = [word for path in sys.argv[4:] for word in ("--load=" + path, "--checks=" + TREE_ONLY)]
    found = units(build, pattern, plugin)
    sources = sum(len(unit.sources) for unit in found)
    if sources < minimum:
        sys.exit(f"too few sources to analyse: {sources}")
    with concurrent.futures.ThreadPoolExecutor(int(output_of("nproc"))) as pool:
        clean = sum(pool.map(Unit.is_clean, found))
    spent = resource.getrusage(resource.RUSAGE_CHILDREN)
    minutes = (spent.ru_utime + spent.ru_stime) / 60
    print(f"{sources} sources, {clean} of {len(found)} runs clean, {minutes:.1f} CPU minutes")
    sys.exit(clean != len(found))


if __name__ == "__main__":
    main()
