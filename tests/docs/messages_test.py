#!/usr/bin/env python3
"""messages_test.py SOURCE_DIR

docs/messages.toml has every line that the library and its HALs write and every complaint of
orblinkctl and of the boot's units, each once, and no other; each says what it means and what
to do."""

import sys
import tomllib
from collections import Counter
from pathlib import Path

root = Path(sys.argv[1])
sys.path.insert(0, str(root / "scripts"))
import messages  # noqa: E402

with open(root / "docs/messages.toml", "rb") as file:
    table = tomllib.load(file)
written = {f"{severity}: {text}": places for (severity, text), places in
           messages.lines_of(root).items()}
for kind, texts in messages.complaints_of(root).items():
    written |= {f"{kind}: {text}": ["tools/orblinkctl/access/refusals.cpp"] for text in texts}
written |= {f"HAL's {severity}: {text}": places for (severity, text), places in
            messages.hal_lines_of(root).items()}
for kind, texts, place in (
        ("kernel", messages.kernel_reasons_of(root), "hals/linux_switch/session.cpp"),
        ("failure", messages.failures_of(root), "tools/orblinkctl"),
        ("boot", messages.boot_complaints_of(root), "packaging/boot/bring-up")):
    written |= {f"{kind}: {text}": [place] for text in texts}
listed = Counter(f"{row['severity']}: {line}" for row in table["library"] for line in row["lines"])
listed.update(f"HAL's {row['severity']}: {line}" for row in table["hal"] for line in row["lines"])
for kind in ("refusal", "reason", "kernel", "failure", "boot"):
    listed.update(f"{kind}: {line}" for row in table[kind] for line in row["lines"])

complaints = [f"not in the table: {line} ({', '.join(written[line])})"
              for line in sorted(written.keys() - listed.keys())]
complaints += [f"written nowhere: {line}" for line in sorted(listed.keys() - written.keys())]
complaints += [f"{count} times in the table: {line}" for line, count in listed.items() if count > 1]
for row in (row for rows in table.values() for row in rows):
    if not row["lines"] or not row["means"].endswith(".") or not row["do"].endswith("."):
        complaints.append(f"means and do are sentences about lines: {row}")
if len(written) < 500:
    complaints.append(f"only {len(written)} lines found")
print("\n".join(complaints) or f"{len(written)} lines")
sys.exit(1 if complaints else 0)
