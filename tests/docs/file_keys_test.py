#!/usr/bin/env python3
"""file_keys_test.py SOURCE_DIR

The guides name the keys that the programs' readers take, and no others."""

import re
import sys
from pathlib import Path

root = Path(sys.argv[1])


def keys_of_tables(guide, start, end=None):
    text = (root / guide).read_text(encoding="utf-8")
    text = text[text.index(start):text.index(end) if end else None]
    found = set()
    for cell in re.findall(r"^\| (`[^|]+`) \|", text, re.M):
        found |= set(re.findall(r"`(\w+)`", cell))
    return found


def text_of(name):
    return (root / name).read_text(encoding="utf-8")


complaints = []


def compare(what, documented, read):
    if not documented or documented != read:
        complaints.append(f"{what}: only in the guide {sorted(documented - read)}, "
                          f"only in the program {sorted(read - documented)}")


config = text_of("tools/orblinkctl/config/config_file.cpp")
settings = config[config.index("kSwitchSettings[]"):config.index("class Checker")]
compare("configuration", keys_of_tables("docs/configuration.md", "## Switches"),
        set(re.findall(r'\{"(\w+)", "[\w-]+"\}', settings)))

readers = "".join(path.read_text(encoding="utf-8")
                  for path in sorted((root / "virtual_board/description").glob("board*.cpp")))
documented = (keys_of_tables("docs/virtual-board.md", "## Board files", "## Ports as interfaces") |
              keys_of_tables("docs/virtual-board.md", "`[[switch.port]]` tables", "### Every counter"))
named = {key for key in documented if f'"{key}"' not in readers}
if len(documented) < 35 or named:
    complaints.append(f"board files: {len(documented)} keys, not read: {sorted(named)}")
guide = text_of("docs/virtual-board.md")
read = set(re.findall(r'\.(?:Require|Texts?|Word|Numbers?|NumberOrNone|Bool|Tables?)\("(\w+)"', readers))
unknown = {key for key in read if f"`{key}`" not in guide and f"{key}]]" not in guide}
if len(read) < 35 or unknown:
    complaints.append(f"board files: {len(read)} keys are read, not in the guide: {sorted(unknown)}")
print("\n".join(complaints) or "keys agree")
sys.exit(1 if complaints else 0)
