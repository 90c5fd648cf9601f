#!/usr/bin/env python3
"""figures.py [--record] BUILD_DIR...

Figures that are the same in each run, of optimised builds for each ABI: instructions in user space
per call (valgrind), and what liborblink.so.0 takes. Compares them with bench/figures.txt, or writes
that table. Ends with 1 when one has left its tolerance, in either direction.

With --mapped LIBRARY --at-most BYTES: whether that is all that is mapped of this library.
"""
import glob
import os
import re
import subprocess
import sys
import tempfile

TABLE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "figures.txt")
CALLS = 10
# Share by which a figure may differ; the others must be as recorded.
TOLERANCE = {"instructions": 0.05, "bytes": 0.05, "stack": 0.1}


def output(*command, **how):
    return subprocess.run(command, check=True, capture_output=True, text=True, **how).stdout


def instructions(build):
    """Per call of each class, less what the loop takes."""
    with tempfile.TemporaryDirectory() as scratch:
        output("valgrind", "--tool=callgrind", f"--callgrind-out-file={scratch}/profile",
               f"{build}/bin/call_instructions")
        counted = {}
        for name in glob.glob(f"{scratch}/profile.*"):
            text = open(name, encoding="utf-8").read()
            mark = re.search(r"^desc: Trigger: Client Request: (\S+)$", text, re.M)
            if mark:
                counted[mark.group(1)] = int(re.search(r"^totals: (\d+)$", text, re.M).group(1))
    loop = counted.pop("nothing")
    return {f"instructions {name}": round((total - loop) / CALLS)
            for name, total in counted.items()}


def sizes(library):
    """Of the stripped library."""
    with tempfile.TemporaryDirectory() as scratch:
        stripped = f"{scratch}/library"
        output("strip", "-o", stripped, library)
        sections = {}
        for name, size in re.findall(r"^(\.\S+) +(\d+) ", output("size", "-A", stripped), re.M):
            sections[name] = int(size)
        loaded = [line.split() for line in output("readelf", "-lW", stripped).splitlines()
                  if line.split()[:1] == ["LOAD"]]
    return {
        "bytes mapped from the file": sum(int(part[4], 16) for part in loaded),
        "bytes text": sections[".text"],
        "bytes rodata": sections[".rodata"],
        "bytes unwind tables": sum(sections.get(name, 0) for name in (".eh_frame", ".eh_frame_hdr")),
        "bytes relocations": sum(size for name, size in sections.items()
                                 if name.startswith(".rel")),
        "bytes zeroed": sections.get(".bss", 0),
    }


def load_time(build, library):
    """Different in each run: shown and recorded, not compared."""
    return {"nanoseconds to load": int(output(f"{build}/bin/load_time", library))}


def held(build):
    found = dict(line.split() for line in output(f"{build}/bin/footprint").splitlines())
    return {"heap allocations in calls": int(found["heap-allocations"]),
            "pages of a process's own, loaded": int(found["own-pages-loaded"]),
            "pages of a process's own, switch calls": int(found["own-pages-switch"]),
            "pages of a process's own, PHY calls": int(found["own-pages-phy"]),
            "pages of a process's own, both": int(found["own-pages"]),
            "pages that calls of either family touch": int(found["own-pages-of-both-families"]),
            "stack of the deepest call": int(found["stack-bytes"])}


def measure(build):
    library = os.path.realpath(f"{build}/lib/liborblink.so.0")
    header = output("readelf", "-h", library)
    abi = "x86-64" if "ELF64" in header else "i386"
    return abi, {**instructions(build), **sizes(library), **held(build),
                 **load_time(build, library)}


def recorded():
    table = {}
    if os.path.exists(TABLE):
        for line in open(TABLE, encoding="utf-8"):
            if line.strip() and not line.startswith("#"):
                abi, value, name = line.split(maxsplit=2)
                table[abi, name.strip()] = int(value)
    return table


def main():
    arguments = sys.argv[1:]
    record = "--record" in arguments
    if len(arguments) == 4 and arguments[::2] == ["--mapped", "--at-most"]:
        mapped = sizes(arguments[1])["bytes mapped from the file"]
        print(f"{mapped} bytes mapped from {arguments[1]}, at most {arguments[3]}")
        return 0 if mapped <= int(arguments[3]) else 1
    builds = [word for word in arguments if word != "--record"]
    if not builds:
        sys.exit(__doc__.splitlines()[0])
    table = recorded()
    left = []
    for build in builds:
        abi, figures = measure(build)
        for name, value in figures.items():
            known = table.get((abi, name))
            share = TOLERANCE.get(name.split()[0], 0)
            fits = name.startswith("nanoseconds") or known is not None and abs(value - known) <= share * known
            print(f"{abi:7} {value:8} {known if known is not None else '-':>8}  {name}"
                  f"{'' if fits else '  <--'}")
            if not fits:
                left.append(name)
            table[abi, name] = value
    if record:
        with open(TABLE, "w", encoding="utf-8") as out:
            out.write("# Written by bench/figures.py --record; test.sh compares with it.\n")
            for (abi, name), value in sorted(table.items()):
                out.write(f"{abi:7} {value:8}  {name}\n")
        return 0
    if left:
        print(f"{len(left)} figures are not as bench/figures.txt has them: if they are meant to be, "
              "bench/figures.py --record")
    return 1 if left else 0


sys.exit(main())
