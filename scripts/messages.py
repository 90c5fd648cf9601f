"""The lines that the library and its HALs write and the complaints of orblinkctl and of the boot's
units, as they stand in the sources.

A line is (severity, text): "error", "notice", "info" or "trace" for the log, "mailbox" for what the
mailbox client writes to standard output. The text has no "%s:%d " for function and source line."""

import re
from pathlib import Path

FOLDERS = ("board", "common", "hwmbox", "phy", "platform", "switch", "switch_hal_services")
CALL = re.compile(r"\b(?:(?:OB|EP|LS)_(ERROR|NOTICE|INFO|TRACE)(?:_AS|_AT|_AT_AS|_TWICE)?"
                  r"|(HWMB_PRINT))\(")
SITE = re.compile(r"^(?:%s[:.]%d:? ?)+")
DEFINITION_OR_REMARK = re.compile(r"^(?:#define|//).*(?:\\\n.*)*", re.M)
# Functions of orblinkctl whose results are complaints.
COMPLAINTS = re.compile(r"\b(?:NoAnswerText|DownText|OriginFault|RegionFault)\([^)]*\)\n"
                        r"\{\n(.*?)^\}", re.M | re.S)
DAMAGE = re.compile(r'text = ("the shared state[^;]*);')
RETURNED = re.compile(r'\breturn ((?:"(?:[^"\\]|\\.)*"|[^";])*);')
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')


def first_argument_text(text, start):
    """The string literals that come first among the arguments, put together."""
    rest = text[start:]
    caller = re.match(r"\s*\w+\s*,", rest)
    if caller:
        rest = rest[caller.end():]
    pieces, place = [], 0
    while True:
        space = re.match(r"\s*", rest[place:])
        place += space.end()
        literal = LITERAL.match(rest, place)
        if not literal:
            return "".join(pieces) if pieces else None
        pieces.append(literal[1])
        place = literal.end()


def lines_of(root, folders=FOLDERS):
    """{(severity, text): [file:line, ...]}; a call whose format is no literal is an error."""
    found = {}
    for folder in folders:
        for path in sorted((Path(root) / folder).rglob("*.[ch]*")):
            text = DEFINITION_OR_REMARK.sub(lambda gone: "\n" * gone[0].count("\n"),
                                            path.read_text(encoding="utf-8"))
            for call in CALL.finditer(text):
                format_text = first_argument_text(text, call.end())
                place = f"{path.relative_to(root)}:{text.count(chr(10), 0, call.start()) + 1}"
                if format_text is None:
                    raise ValueError(f"{place}: the format is no literal")
                severity = "mailbox" if call[2] else call[1].lower()
                line = re.sub(r"(\\[nt])+", " ", format_text).strip()
                if not call[0].startswith("LS_"):  # which puts the site in front itself
                    line = SITE.sub("", line)
                found.setdefault((severity, line), []).append(place)
    return found


def complaints_of(root):
    """{"refusal": [...], "reason": [...]}: what was not done, and why, in orblinkctl's words."""
    text = (Path(root) / "tools/orblinkctl/access/refusals.cpp").read_text(encoding="utf-8")
    refusals = text[text.index("kRefusals[]"):text.index("kReasons[]")]
    reasons = text[text.index("kReasons[]"):text.index("bool IsBoard")]
    return {
        "refusal": sorted({match[1] for match in re.finditer(r'\{"\w+",\s*"([^"]+)"\}', refusals)}
                          | {"the operation failed"}),
        "reason": sorted(re.findall(r'k\w+,\s*"([^"]+)"\}', reasons) +
                         re.findall(r'k\w+\[\] =\s*"([^"]+)"', reasons)),
    }


def hal_lines_of(root):
    """As lines_of, of the HALs that log."""
    found = lines_of(root, ("hals",))
    lacking = (Path(root) / "hals/linux_switch/lacking.cpp").read_text(encoding="utf-8")
    start = re.search(r'LS_ERROR\("([^"]+)" why', lacking)[1]
    for why in re.findall(r'LS_LACKING\("([^"]+)"\)', lacking):
        found.setdefault(("error", start + why), []).append("hals/linux_switch/lacking.cpp")
    return found


def kernel_reasons_of(root):
    """What the HAL for Linux's switches says of an error number."""
    text = (Path(root) / "hals/linux_switch/session.cpp").read_text(encoding="utf-8")
    words = text[text.index("WordsFor("):text.index("int Refuse(")]
    return sorted(set(re.findall(r'return "([^"]+)"', words)))


def expression(text, start):
    """Up to the bracket that closes what was opened before it."""
    depth, place = 0, start
    while depth or text[place] not in ")}]":
        if text[place] == '"':
            place = LITERAL.match(text, place).end()
            continue
        depth += (text[place] in "({[") - (text[place] in ")}]")
        place += 1
    return text[start:place]


def shown(words):
    """The literals of a C++ expression outside of its calls, with "..." for each value between."""
    result, depth = "", 0
    for literal, other in re.findall(r'("(?:[^"\\]|\\.)*")|([^"]+)', words):
        if literal and depth == 0:
            result += literal[1:-1]
        other = re.sub(r"std::string\((?=$)", "", other)
        depth += len(re.findall(r"[(\[{]", other)) - len(re.findall(r"[)\]}]", other))
        depth = max(depth, 0)
        if re.sub(r"[\s+)]", "", other) and not result.endswith("..."):
            result += "..."
    return result


def failures_of(root):
    """What orblinkctl ends with, other than by a refusal: the texts that are more than a name and
    what the system says."""
    found = set()
    for path in sorted((Path(root) / "tools/orblinkctl").rglob("*.cpp")):
        text = re.sub(r"(?<!:)//.*", "", path.read_text(encoding="utf-8"))
        for start in re.finditer(r"\bFailure\{", text):
            _, comma, words = expression(text, start.end()).partition(",")
            if comma:
                found.add(shown(words))
        for start in re.finditer(r"\bFailWith\((?=[^c])", text):
            found.add(shown(expression(text, start.end())) + ": ...")
        for body in COMPLAINTS.findall(text):
            found.update(shown(words) for words in RETURNED.findall(body))
        found.update(shown(words) for words in DAMAGE.findall(text))
    return sorted(text for text in found if re.search(r"[a-z]{2}", text))


def boot_complaints_of(root):
    """What the units of the boot write into the log, with "..." for each value."""
    text = (Path(root) / "packaging/boot/bring-up").read_text(encoding="utf-8")
    found = re.findall(r'complain "([^"]+)"', text) + re.findall(r"printf '([a-z][^']+)'", text)
    return sorted(re.sub(r"\$startup", "/etc/orblink/startup.toml", line).replace("$text", "...")
                  .replace("$wrong", "...").replace("%s", "...") for line in found)
