#!/usr/bin/env python3
"""make_pages.py SOURCE_DIR PLACE

Writes the manual's pages of the functions, of the messages and of the files below PLACE
(man1, man3, man5, man7), from the public headers, docs/messages.toml and the guides in docs/."""

import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path[:0] = [str(HERE), str(HERE.parents[1] / "scripts")]
import functions  # noqa: E402
import guides  # noqa: E402
import message_page  # noqa: E402

DATE = "November 22, 2026"


def write(place, section, name, text):
    folder = place / f"man{section}"
    folder.mkdir(parents=True, exist_ok=True)
    (folder / f"{name}.{section}").write_text(text, encoding="utf-8")


def main():
    root, place = Path(sys.argv[1]), Path(sys.argv[2])
    for page in functions.PAGES:
        example = (HERE / "examples" / f"{page.name}.c").read_text(encoding="utf-8")
        write(place, 3, page.name, functions.page_text(root, page, DATE, example))
        for function in functions.functions_of(root, page):
            write(place, 3, function.name, f".so man3/{page.name}.3\n")
    write(place, 7, "orblink-messages", message_page.text(root, DATE))
    for guide in guides.GUIDES:
        write(place, guide.section, guide.name, guides.text(root, guide, DATE))


main()
