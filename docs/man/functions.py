"""Section 3: a page for each theme of the public headers, and a link to it for each function."""

import re
from dataclasses import dataclass

import mdoc
import public_headers

LIBRARY = "-lorblink"
SWITCHES, PHYS = "switch/orblink_api.h", "phy/ethphy_api.h"


@dataclass
class Page:
    name: str
    header: str       # that is read
    section: str      # of it; empty for all of it
    include: str      # that a program includes
    about: str        # one line
    library: str = LIBRARY


PAGES = (
    Page("orblink_init", "switch/orblink_api.h", "Initialisation and queries", SWITCHES,
         "initialise the switch family, ask for its state"),
    Page("orblink_reset", "switch/orblink_api.h", "Bring-up and reset", SWITCHES,
         "take switches out of reset and put them into it"),
    Page("orblink_bridging", "switch/orblink_bridging.h", "", SWITCHES,
         "VLANs and provider bridging of a switch"),
    Page("orblink_ports", "switch/orblink_ports.h", "", SWITCHES, "ports of a switch"),
    Page("orblink_features", "switch/orblink_features.h", "", SWITCHES,
         "MAC table, snooping, registers and quality of service of a switch"),
    Page("ethphy_init", "phy/ethphy_api.h", "Initialisation and queries", PHYS,
         "initialise the PHY family, count its PHYs"),
    Page("ethphy_reset", "phy/ethphy_api.h", "Reset", PHYS,
         "take PHYs out of reset and put them into it"),
    Page("ethphy_state", "phy/ethphy_api.h", "Operations that work in any state", PHYS,
         "link, administrative state and records of a PHY"),
    Page("ethphy_registers", "phy/ethphy_api.h", "Operations that need the PHY enabled", PHYS,
         "counters, registers and speed of a PHY"),
    Page("orblink_hal_services", "switch_hal_services/orblink_hal_services.h", "",
         "switch/orblink_hal.h", "what the HAL library of a switch calls back"),
    Page("ethphy_hal_services", "phy/ethphy_hal.h", "", "phy/ethphy_hal.h",
         "what the HAL library of a PHY calls back"),
    Page("orblink_board", "board/board_services.h", "", "board/board_services.h",
         "board data, reset lines, SerDes lanes, MAC addresses"),
    Page("orblink_mailbox", "hwmbox/hwmbox.h", "", "hwmbox/hwmbox.h",
         "client of the hardware mailbox"),
    Page("orblink_platform", "platform/ob_platform.h", "", "platform/ob_platform.h",
         "log sink and other things that a product replaces", "-lobplatform"),
)
PACKAGES = {LIBRARY: "orblink", "-lobplatform": "obplatform"}
# Where the words of the functions' comments are explained.
TERMS = {"switch/orblink_bridging.h": SWITCHES, "switch/orblink_ports.h": SWITCHES,
         "switch/orblink_features.h": SWITCHES}


def functions_of(root, page):
    return [function for function in public_headers.functions_of(root, page.header)
            if not page.section or function.section == page.section]


def synopsis(function):
    """Callbacks and arrays need no care: the public functions have none written out."""
    lines = [mdoc.request("Ft", function.result.replace("*", " *"))]
    lines.append(mdoc.request("Fo", function.name))
    for parameter in function.parameters:
        lines.append(mdoc.request("Fa", f"{parameter.type.replace('*', ' *')} {parameter.name}"
                                  .replace("* ", "*").replace("*  *", "**")))
    if not function.parameters:
        lines.append(mdoc.request("Fa", "void"))
    if "..." in function.declaration:
        lines.append(".Fa ...")
    return lines + [".Fc"]


def description(group):
    """Functions that share a comment share their text."""
    first = group[0]
    lines = [mdoc.request("Ss", ", ".join(function.name for function in group))]
    for place, paragraph in enumerate(first.what):
        lines += ([".Pp"] if place else []) + mdoc.prose(paragraph)
    if first.answers:
        lines += [".Bl -tag -width Ds"]
        for answer in first.answers:
            lines += [f".It Fa {answer.name} Pq {answer.direction}",
                      *mdoc.prose(sentence(answer.text))]
        lines += [".El"]
    rows = [("Result", first.returns)] + [(note, text) for note, text in first.notes.items()
                                          if not (note == "Standard" and text == "none")]
    lines += [".Bl -tag -width Standard"]
    for title, text in rows:
        lines += [f".It {title}", *mdoc.prose(sentence(text))]
    return lines + [".El"]


def sentence(text):
    """An answer begins small in the header, and has no full stop."""
    shown = text if re.match(r"[A-Z0-9]|enum |\w+_|struct ", text) else text[0].upper() + text[1:]
    return shown if shown.endswith(".") else shown + "."


def terms(root, page):
    """The comment at the head of the header, as paragraphs and a list."""
    lines, list_open = [], False
    text = public_headers.opening_comment(root, TERMS.get(page.header, page.header))
    for block in re.split(r"\n\n|\n(?= - )", text):
        item = re.match(r" - (.*)", block, re.S)
        if item and not list_open:
            lines += [".Bl -bullet"]
        elif not item and list_open:
            lines += [".El"]
        list_open = bool(item)
        if item:
            lines += [".It", *mdoc.prose(item[1])]
            continue
        head, rows = re.match(r"(.*?)((?:\n {2}\S+ {2,}.*)*)$", block, re.S).groups()
        lines += ([".Pp"] if lines and not lines[-1].startswith((".El", ".Pp")) else [])
        lines += mdoc.prose(head)
        if rows:
            lines += mdoc.literal_block(rows.strip("\n"))
    return lines + ([".El"] if list_open else [])


def groups(found):
    """Functions side by side that share a comment."""
    gathered = []
    for function in found:
        if gathered and gathered[-1][0].what == function.what and \
                gathered[-1][0].answers == function.answers:
            gathered[-1].append(function)
        else:
            gathered.append([function])
    return gathered


def page_text(root, page, date, example):
    found = functions_of(root, page)
    lines = [mdoc.request("Dd", date).replace('"', ""), f".Dt {page.name.upper()} 3",
             ".Os", ".Sh NAME"]
    for place, function in enumerate(found):
        lines.append(f".Nm {function.name}" + (" ," if place + 1 < len(found) else ""))
    lines += [mdoc.request("Nd", page.about).replace('"', ""), ".Sh SYNOPSIS",
              f".In {page.include}"]
    for function in found:
        lines += synopsis(function)
    lines += [".Pp", "Link with", f".Fl {page.library.removeprefix('-')} ;",
              f".Ql pkg-config {PACKAGES[page.library]}", "knows the other options.", ".Sh DESCRIPTION"]
    lines += terms(root, page)
    for group in groups(found):
        lines += description(group)
    lines += [".Sh EXAMPLES", *mdoc.literal_block(example), ".Sh SEE ALSO"]
    others = [f"{other.name} 3" for other in PAGES if other.name != page.name]
    names = ["orblinkctl 1", *sorted(others), "orblink 7", "orblink-messages 7"]
    lines += [f".Xr {name} ," for name in names[:-1]] + [f".Xr {names[-1]}"]
    return "\n".join(lines) + "\n"
