#!/usr/bin/env python3
"""pages_test.py SOURCE_DIR BUILD_DIR

Every function, program and file has a page; mandoc has nothing to say about any of them, and what
they refer to is there."""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

root, build = Path(sys.argv[1]), Path(sys.argv[2])
sys.dont_write_bytecode = True
sys.path.insert(0, str(root / "scripts"))
import public_headers  # noqa: E402

WANTED = ["orblinkctl.1", "orblink-web.1", "orblink-vboard.1", "orblink-hal-check.1",
          "orblink-board.5", "orblink-config.5", "orblink.7", "orblink-messages.7"]
complaints = []
with tempfile.TemporaryDirectory() as folder:
    place = Path(folder)
    subprocess.run([root / "docs/man/make_pages.py", root, place], check=True)
    pages = {path.name: path for path in place.rglob("*.[1-8]")}
    pages |= {path.name: path for path in (root / "tools").rglob("*.1")}
    pages["orblink-hal-check.1"] = root / "tools/orblink_hal_check/orblink-hal-check.1"
    manual = subprocess.run([build / "bin/orblinkctl", "manual"], check=True, capture_output=True)
    pages["orblinkctl.1"] = place / "orblinkctl.1"
    pages["orblinkctl.1"].write_bytes(manual.stdout)

    functions = public_headers.functions(
        root, public_headers.SWITCH_HEADERS + public_headers.PHY_HEADERS +
        public_headers.SERVICE_HEADERS + public_headers.PLATFORM_HEADERS)
    WANTED += [f"{function.name}.3" for function in functions]
    complaints += [f"no page {name}" for name in WANTED if name not in pages]

    texts = {name: path.read_text(encoding="utf-8") for name, path in pages.items()}
    for name, text in texts.items():
        for other in re.findall(r"^\.so man\d/(\S+)", text, re.M) + [
                f"{page}.{section}" for page, section in
                re.findall(r"^\.Xr (\S+) (\d)", text, re.M) +
                re.findall(r"^\.BR (\S+) \((\d)\)", text.replace("\\-", "-"), re.M)]:
            if other not in pages:
                complaints.append(f"{name} refers to {other}, which is not there")
    for verb in ("run", "serve", "attach", "exec", "control"):
        usage = subprocess.run([build / "bin/orblink-vboard", verb, "--help"], check=True,
                               capture_output=True, text=True).stdout
        options = set(re.findall(r"--[a-z][\w-]+", usage)) - {"--help"}
        lines = texts["orblink-vboard.1"].replace("\\-", "-")
        complaints += [f"orblink-vboard.1 has no {option} of {verb}" for option in options
                       if option not in lines]
    whole = [pages[name] for name, text in sorted(texts.items()) if not text.startswith(".so ")]
    said = subprocess.run(["mandoc", "-T", "lint", "-W", "all", *whole], capture_output=True,
                          text=True).stdout
    # It looks for pages on this machine only, and was answered above.
    complaints += [line for line in said.splitlines()
                   if "referenced manual not found" not in line and "mandoc.db" not in line]
if len(functions) < 115 or len(whole) < 20:
    complaints.append(f"only {len(functions)} functions and {len(whole)} pages")
print("\n".join(complaints) or f"{len(functions)} functions, {len(whole)} pages")
sys.exit(1 if complaints else 0)
