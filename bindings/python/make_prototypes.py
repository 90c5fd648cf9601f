#!/usr/bin/env python3
"""make_prototypes.py > orblink/_prototypes.py

Writes the argument and result types of every function that the library exports, from its headers."""

import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
import public_headers  # noqa: E402

NUMBERS = {"int": "c_int", "uint8_t": "c_uint8", "uint16_t": "c_uint16", "uint32_t": "c_uint32"}
CALLBACKS = ("MacEntryCallback", "MsgBuilder", "MsgParser")

HEAD = '''"""Made by make_prototypes.py from the library's headers."""

from ctypes import POINTER, c_int, c_uint8, c_uint16, c_uint32, c_void_p
from typing import Any

from . import records as r

# Result and arguments of each function.
PROTOTYPES: dict[str, tuple[Any, tuple[Any, ...]]] = {
'''


def ctype(text):
    text = text.replace("const ", "").replace("struct ", "").replace(" ", "")
    if text == "void":
        return "None"
    if text == "void*":
        return "c_void_p"
    if text.endswith("*"):
        return f"POINTER({ctype(text[:-1])})"
    if text in NUMBERS:
        return NUMBERS[text]
    if text in CALLBACKS or text[0].isupper():
        return f"r.{text}"
    raise ValueError(f"no type for '{text}'")


def line(function):
    arguments = ", ".join(ctype(parameter.type) for parameter in function.parameters)
    if len(function.parameters) == 1:
        arguments += ","
    return f'    "{function.name}": ({ctype(function.result)}, ({arguments})),\n'


def broken(text):
    """Lines of at most 100 columns."""
    if len(text) <= 101:
        return text
    cut = text.rindex(", ", 0, 100)
    return text[:cut + 1] + "\n" + broken(" " * 8 + text[cut + 2:])


headers = (public_headers.SWITCH_HEADERS + public_headers.PHY_HEADERS +
           public_headers.SERVICE_HEADERS)
functions = public_headers.functions(ROOT, headers)
sys.stdout.write(HEAD + "".join(broken(line(function)) for function in functions) + "}\n")
