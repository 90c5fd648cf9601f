"""The functions that the public headers declare, with what their comments answer.

A function's comment serves the declarations that follow it without a blank line."""

import re
from dataclasses import dataclass, field
from pathlib import Path

SWITCH_HEADERS = ("switch/orblink_api.h", "switch/orblink_bridging.h", "switch/orblink_ports.h",
                  "switch/orblink_features.h")
PHY_HEADERS = ("phy/ethphy_api.h",)
SERVICE_HEADERS = ("switch_hal_services/orblink_hal_services.h", "phy/ethphy_hal.h",
                   "board/board_services.h", "hwmbox/hwmbox.h")
PLATFORM_HEADERS = ("platform/ob_platform.h",)

DECLARATION = re.compile(
    r"^(?:OB_EXPORT )?(?P<result>(?:const )?(?:struct )?\w+(?: ?\*)?) ?(?P<name>\w+)"
    r"\((?P<parameters>[^;{()]*)\)\s*(?:__attribute__.*)?;$")


@dataclass
class Parameter:
    type: str
    name: str


@dataclass
class Answer:
    """One parameter's line of the comment."""
    direction: str
    name: str
    text: str


@dataclass
class Function:
    header: str
    section: str
    name: str
    result: str
    parameters: list[Parameter]
    declaration: str
    what: list[str] = field(default_factory=list)
    answers: list[Answer] = field(default_factory=list)
    returns: str = ""
    notes: dict[str, str] = field(default_factory=dict)


def split_comment(comment):
    """Paragraphs, parameters, result and notes of a comment's text."""
    lines = [re.sub(r"^\s*\*? ?", "", line) for line in comment.splitlines()]
    paragraphs, answers, returns, notes = [""], [], "", {}
    take = None
    for line in lines:
        tag = re.match(r"\\(param|return|note)(?:\[(\w+)\])?\s+(.*)", line)
        if tag and tag[1] == "param":
            name, text = tag[3].split(None, 1)
            answers.append(Answer(tag[2], name, text))
            take = "param"
        elif tag and tag[1] == "return":
            returns, take = tag[3], "return"
        elif tag:
            note, text = tag[3].split(": ", 1)
            notes[note], take = text, note
        elif take == "param":
            answers[-1].text = f"{answers[-1].text} {line.strip()}".strip()
        elif take == "return":
            returns = f"{returns} {line.strip()}".strip()
        elif take:
            notes[take] = f"{notes[take]} {line.strip()}".strip()
        elif not line.strip():
            paragraphs.append("")
        else:
            paragraphs[-1] = f"{paragraphs[-1]} {line.strip()}".strip()
    return [mended(text) for text in paragraphs if text], answers, returns, notes


def mended(text):
    """A word that was broken at its hyphen is whole again."""
    return re.sub(r"(\w)- (\w)", r"\1-\2", text)


def split_parameters(text):
    parameters = []
    for piece in " ".join(text.split()).split(","):
        piece = piece.strip()
        if piece in ("void", "...", ""):
            continue
        match = re.match(r"(.*?)(\w+)$", piece)
        parameters.append(Parameter(match[1].strip(), match[2]))
    return parameters


def functions_of(root, header):
    """The functions of one header, in its order."""
    functions, comment, section, collected = [], "", "", ""
    text = (Path(root) / header).read_text(encoding="utf-8")
    inside = False
    for line in text.splitlines():
        title = re.match(r"/\* -{2,} (.*?) -{2,} \*/", line)
        if title:
            section, comment = title[1], ""
        elif line.startswith("/*"):
            comment, inside = "", "*/" not in line
        elif inside:
            inside = "*/" not in line
            comment += line.replace("*/", "").rstrip() + "\n"
        elif not line.strip():
            comment, collected = "", ""
        elif comment:
            collected = f"{collected} {line.strip()}".strip()
            match = DECLARATION.match(collected)
            if match:
                functions.append(made(header, section, match, collected, comment))
            if collected.endswith((";", "{")):
                collected = ""
    return functions


def made(header, section, match, declaration, comment):
    what, answers, returns, notes = split_comment(comment)
    return Function(header, section, match["name"], match["result"].replace(" *", "*"),
                    split_parameters(match["parameters"]),
                    declaration.removeprefix("OB_EXPORT "), what, answers, returns, notes)


def functions(root, headers):
    return [function for header in headers for function in functions_of(root, header)]


def opening_comment(root, header):
    """The paragraphs and the list of the comment at the top of a header."""
    text = (Path(root) / header).read_text(encoding="utf-8")
    body = text[text.index("/*") + 2:text.index("*/")]
    lines = [re.sub(r"^\s*\*? ?", "", line, count=1) for line in body.splitlines()]
    return "\n".join(lines).strip("\n")
