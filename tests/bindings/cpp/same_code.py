#!/usr/bin/env python3
"""same_code.py COMPILER -m32|-m64 SOURCE_DIR

Compiles calls.c and calls.cpp at -O2: each function calls the same functions, and the C++ one takes
no more instructions than the C one, but for a few that place a variable elsewhere."""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).parent
MOST_MORE = 3


def compiled(compiler, bits, root, source, place):
    cpp = source.endswith(".cpp")
    if compiler == "gcc":
        compiler = "g++" if cpp else "gcc"
    elif cpp:
        compiler += "++"
    target = Path(place) / (source + ".o")
    subprocess.run([compiler, bits, "-std=c++20" if cpp else "-std=c11", "-O2", "-Wall", "-Wextra",
                    "-Wconversion", "-Wno-sign-conversion", "-Werror", "-fno-stack-protector",
                    "-fcf-protection=none", "-fno-pic", "-fno-asynchronous-unwind-tables",
                    "-DNDEBUG", "-I", root, "-c", HERE / source, "-o", target], check=True)
    return disassembled(target)


def disassembled(target):
    """Of each function: the number of its instructions, and what it calls."""
    text = subprocess.run(["objdump", "-dr", "--no-show-raw-insn", target], check=True,
                          capture_output=True, text=True).stdout
    functions, name = {}, None
    for line in text.splitlines():
        head = re.match(r"[0-9a-f]+ <(\w+)>:", line)
        if head:
            name = head[1]
            functions[name] = [0, []]
        elif re.match(r"\s+[0-9a-f]+:\s+R_\w+", line):
            called = re.search(r"R_\w+\s+([A-Za-z]\w+)", line)
            if called:
                functions[name][1].append(called[1])
        elif name and re.match(r"\s+[0-9a-f]+:\t(?!nop|xchg +%ax,%ax|data16|cs nop|lea +0x0\()", line):
            functions[name][0] += 1
    return functions


def main():
    compiler, bits, root = sys.argv[1:]
    with tempfile.TemporaryDirectory() as place:
        c = compiled(compiler, bits, root, "calls.c", place)
        cpp = compiled(compiler, bits, root, "calls.cpp", place)
    complaints = [f"only one language has {name}" for name in c.keys() ^ cpp.keys()]
    for name in sorted(c.keys() & cpp.keys()):
        print(f"{name}: {c[name][0]} instructions in C, {cpp[name][0]} in C++")
        if not c[name][1] or c[name][1] != cpp[name][1]:
            complaints.append(f"{name}: C calls {c[name][1]}, C++ {cpp[name][1]}")
        if cpp[name][0] > c[name][0] + MOST_MORE:
            complaints.append(f"{name}: C++ takes more instructions than C")
    if len(c) < 15:
        complaints.append(f"only {len(c)} functions found")
    print("\n".join(complaints))
    return 1 if complaints else 0


sys.exit(main())
