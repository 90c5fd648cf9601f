#!/usr/bin/env python3
"""covered.py SOURCE_DIR

Each function that the headers of both families declare is called once by the C++ layer, and is
compared with it by a test."""

import re
import sys
from pathlib import Path

root = Path(sys.argv[1])
sys.path.insert(0, str(root / "scripts"))
import public_headers  # noqa: E402


def text_of(files):
    return "\n".join(file.read_text(encoding="utf-8") for file in files)


layer = text_of(sorted((root / "bindings/cpp").rglob("*.hpp")))
tests = text_of(sorted((root / "tests/bindings/cpp").glob("*_test.cpp")))
declared = [function.name for function in public_headers.functions(
    root, public_headers.SWITCH_HEADERS + public_headers.PHY_HEADERS)]
complaints = []
for name in declared:
    calls = len(re.findall(rf"\b{name}\(", re.sub(r"//.*", "", layer)))
    if calls != 1:
        complaints.append(f"the layer calls {name} {calls} times")
    short = re.sub(r"^(ORBLINK|ETHPHY)_", "", name)
    if f'"{name}"' not in tests and f"SAME({short}, " not in tests:
        complaints.append(f"no test compares {name}")
if len(declared) < 74:
    complaints.append(f"only {len(declared)} functions found")
print("\n".join(complaints) or f"{len(declared)} functions")
sys.exit(1 if complaints else 0)
