"""The C functions, by their names and with their types."""

import ctypes
from functools import cache
from typing import Any

from ._prototypes import PROTOTYPES

SONAME = "liborblink.so.0"


class Error(Exception):
    """A call failed. Why is in the log lines that the library has written."""

    def __init__(self, function: str) -> None:
        super().__init__(f"{function} failed; the log has the reason")
        self.function = function


@cache
def library() -> ctypes.CDLL:
    """The library, loaded when it is first needed."""
    loaded = ctypes.CDLL(SONAME)
    for name, (result, arguments) in PROTOTYPES.items():
        function = getattr(loaded, name)
        function.restype = result
        function.argtypes = arguments
    return loaded


def checked(name: str, argument: Any, kind: Any) -> Any:
    """An integer that its C type would cut is refused."""
    if isinstance(argument, int) and kind is not ctypes.c_void_p and kind(argument).value != argument:
        raise ValueError(f"{name}: {argument} is out of range")
    return argument


def call(name: str, *arguments: Any) -> Any:
    """Calls a function and gives its result, whatever it means."""
    kinds = PROTOTYPES[name][1]
    if len(arguments) != len(kinds):
        raise TypeError(f"{name} takes {len(kinds)} arguments, not {len(arguments)}")
    return getattr(library(), name)(
        *(checked(name, argument, kind) for argument, kind in zip(arguments, kinds)))


def do(name: str, *arguments: Any) -> None:
    """Calls a function whose result is 0 for success."""
    if call(name, *arguments) != 0:
        raise Error(name)
