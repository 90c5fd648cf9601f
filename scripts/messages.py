"""The lines that the library writes and the complaints of orblinkctl, as they stand in the sources.

A line is (severity, text): "error", "notice", "info" or "trace" for the log, "mailbox" for what the
mailbox client writes to standard output. The text has no "%s:%d " for function and source line."""

import re
from pathlib import Path

FOLDERS = ("board", "common", "hwmbox", "phy", "platform", "switch", "switch_hal_services")
CALL = re.compile(r"\b(?:(?:OB|EP)_(ERROR|NOTICE|INFO|TRACE)(?:_AS|_AT|_AT_AS|_TWICE)?|(HWMB_PRINT))\(")
SITE = re.compile(r"^(?:%s[:.]%d:? ?)+")
DEFINITION_OR_REMARK = re.compile(r"^(?:#define|//).*(?:\\\n.*)*", re.M)
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


def lines_of(root):
    """{(severity, text): [file:line, ...]}; a call whose format is no literal is an error."""
    found = {}
    for folder in FOLDERS:
        for path in sorted((Path(root) / folder).rglob("*.[ch]*")):
            text = DEFINITION_OR_REMARK.sub(lambda gone: "\n" * gone[0].count("\n"),
                                            path.read_text(encoding="utf-8"))
            for call in CALL.finditer(text):
                format_text = first_argument_text(text, call.end())
                place = f"{path.relative_to(root)}:{text.count(chr(10), 0, call.start()) + 1}"
                if format_text is None:
                    raise ValueError(f"{place}: the format is no literal")
                severity = "mailbox" if call[2] else call[1].lower()
                shown = SITE.sub("", re.sub(r"(\\[nt])+", " ", format_text)).strip()
                found.setdefault((severity, shown), []).append(place)
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
