"""Pages that are parts of the guides in docs/: the guide is what people edit.

The guides are Markdown of a simple kind: paragraphs, headings, lists, tables, code."""

import re
from dataclasses import dataclass

import mdoc


@dataclass
class Guide:
    name: str
    section: int
    about: str
    source: str
    parts: tuple[str, ...]    # headings; "" is what stands before the first one
    see_also: tuple[str, ...]


GUIDES = (
    Guide("orblink-vboard", 1, "run programs against a board that does not exist",
          "docs/virtual-board.md",
          ("", "Running", "What programs find", "Ports as interfaces", "Control", "Faults"),
          ("orblinkctl 1", "orblink-board 5", "orblink 7")),
    Guide("orblink-board", 5, "boards of the virtual board", "docs/virtual-board.md",
          ("Board files",), ("orblink-vboard 1", "orblink 7")),
    Guide("orblink-config", 5, "configurations and labels of orblinkctl", "docs/configuration.md",
          ("", "Switches", "PHYs", "Labels"), ("orblinkctl 1", "orblink 7")),
    Guide("orblink", 7, "control of a gateway's external Ethernet switches and PHYs",
          "docs/architecture.md", ("", "Parts", "State", "Callers", "Failures"),
          ("orblink-vboard 1", "orblink-web 1", "orblinkctl 1", "ethphy_init 3", "orblink_init 3",
           "orblink-board 5", "orblink-config 5", "orblink-messages 7")),
)


def parts_of(text):
    """{heading: lines} of the second level."""
    parts, title = {"": []}, ""
    fenced = False
    for line in text.splitlines():
        fenced ^= line.startswith("```")
        head = None if fenced else re.match(r"## (.*)", line)
        if head:
            title = head[1]
            parts[title] = []
        elif not line.startswith("# ") or fenced:
            parts[title].append(line)
    return parts


def plain(text):
    """Links are their words; emphasis and code are marked by nothing but their place."""
    text = re.sub(r"\[([^]]+)\]\([^)]*\)", r"\1", text)
    text = re.sub(r"<(https?://[^>]+)>", r"\1", text)
    return text.replace("**", "").replace("\\|", "|").replace("`", "")


def began(cell):
    """A cell as a sentence: a word begins it with a capital letter, code as it is written."""
    return plain(cell[0].upper() + cell[1:] if cell[:1].islower() else cell)


def blocks(lines):
    """(kind, lines) of what belongs together."""
    block, kind = [], None
    for line in [*lines, ""]:
        if kind == "code":
            if line.startswith("```"):
                yield kind, block
                block, kind = [], None
            else:
                block.append(line)
            continue
        starts = ("code" if line.startswith("```") else "table" if line.startswith("|") else
                  "head" if line.startswith("### ") else
                  "item" if re.match(r"(?:- |\d+\. )", line) else None)
        if kind == "table" and starts == "table":
            block.append(line)
        elif starts or not line.strip():
            if block:
                yield kind, block
            block, kind = ([] if starts == "code" or not starts else [line]), starts
        else:
            block.append(line)
            kind = kind or "text"
    if block:
        yield kind, block


def table(rows):
    """A row is a tag, and its other cells are the text."""
    cells = [[cell.strip() for cell in re.split(r"(?<!\\)\|", row.strip().strip("|"))]
             for row in rows]
    titles, lines = cells[0], [".Bl -tag -width Ds"]
    for row in cells[2:]:
        tag = mdoc.escaped(plain(row[0].strip("|").strip())).replace('"', '""')
        lines.append(f'.It Li "{tag}"')
        texts = []
        for title, cell in zip(titles[1:], row[1:]):
            cell = began(cell)
            if cell:
                shown = cell if len(row) == 2 or title in ("Value", "Effect") else f"{title}: {cell}"
                texts.append(shown if shown.endswith((".", "?", "!")) else shown + ".")
        lines += mdoc.prose(" ".join(texts))
    return lines + [".El"]


def body(lines):
    out, listed = [], False
    for kind, block in blocks(lines):
        if listed and kind != "item":
            out.append(".El")
            listed = False
        if kind == "code":
            out += mdoc.literal_block("\n".join(block))
        elif kind == "table":
            out += table(block)
        elif kind == "head":
            out.append(mdoc.request("Ss", plain(block[0].removeprefix("### "))).replace('"', ""))
        elif kind == "item":
            out += ([] if listed else [".Bl -bullet"])
            listed = True
            out += [".It", *mdoc.prose(plain(re.sub(r"^(?:- |\d+\. )", "", " ".join(block))))]
        else:
            out += ([".Pp"] if out and not out[-1].startswith((".Ss", ".Sh")) else [])
            out += mdoc.prose(plain(" ".join(block)))
    return out + ([".El"] if listed else [])


def text(root, guide, date):
    parts = parts_of((root / guide.source).read_text(encoding="utf-8"))
    lines = [f".Dd {date}", f".Dt {guide.name.upper()} {guide.section}", ".Os", ".Sh NAME",
             f".Nm {guide.name}", f".Nd {guide.about}"]
    for title in guide.parts:
        heading = title.upper() if title else "DESCRIPTION"
        lines += [f".Sh {heading}", *body(parts[title])]
    lines += [".Sh SEE ALSO"]
    lines += [f".Xr {name} ," for name in guide.see_also[:-1]] + [f".Xr {guide.see_also[-1]}"]
    return "\n".join(lines) + "\n"
