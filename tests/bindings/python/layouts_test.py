#!/usr/bin/env python3
"""layouts_test.py SOURCE_DIR COMPILER

Every structure of the Python module has the bytes that a C compiler gives it, for both ABIs."""

import ctypes
import subprocess
import sys
import tempfile
from pathlib import Path

root, compiler = Path(sys.argv[1]), sys.argv[2]
sys.path.insert(0, str(root / "bindings/python"))
from orblink import layouts, records  # noqa: E402

HEADERS = ("switch/orblink_records.h", "phy/ethphy_records.h", "hwmbox/hwmbox.h",
           "hals/vswitch/vswitch_hal.h", "hals/phy/ethphy_ieee8023.h")
# They have no names of their own in C, and are looked at as members.
UNNAMED = ("SwitchCapsPort", "SwitchLink")


def members(kind, base=0, path=""):
    """(path, offset, size) of all members, of arrays the first and the last element."""
    for name, inner in kind._fields_:
        place = base + getattr(kind, name).offset
        yield f"{path}{name}", place, ctypes.sizeof(inner)
        if issubclass(inner, ctypes.Array) and issubclass(inner._type_, ctypes.Structure):
            for index in (0, inner._length_ - 1):
                yield from members(inner._type_, place + index * ctypes.sizeof(inner._type_),
                                   f"{path}{name}[{index}].")
        elif issubclass(inner, ctypes.Structure):
            yield from members(inner, place, f"{path}{name}.")


def structures():
    for module in (records, layouts):
        for name in module.__all__:
            kind = getattr(module, name)
            if name not in UNNAMED and issubclass(kind, ctypes.Structure):
                yield name, kind


lines = [f'#include "{header}"' for header in HEADERS]
for name, kind in structures():
    lines.append(f'static_assert(sizeof(struct {name}) == {ctypes.sizeof(kind)}, "{name}");')
    for path, offset, size in members(kind):
        lines.append(f'static_assert(offsetof(struct {name}, {path}) == {offset}, "{path}");')
        lines.append(f'static_assert(sizeof(((struct {name}*)0)->{path}) == {size}, "{path}");')
assert len(lines) > 500, "structures are missing"
with tempfile.TemporaryDirectory() as place:
    program = Path(place) / "layouts.c"
    program.write_text("\n".join(lines) + "\ntypedef int Something;\n")
    for bits in ("-m64", "-m32"):
        subprocess.run([compiler, bits, "-std=c11", "-fsyntax-only", "-I", root, program],
                       check=True)
print(f"{len(lines)} checks")
