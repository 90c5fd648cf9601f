#!/usr/bin/env python3
"""prototypes_test.py SOURCE_DIR

The module's prototypes are those of the headers and of everything that the library exports, and each
function of both families has a method."""

import re
import subprocess
import sys
from pathlib import Path

root = Path(sys.argv[1])
sys.path.insert(0, str(root / "bindings/python"))
sys.path.insert(0, str(root / "scripts"))
import public_headers  # noqa: E402
from orblink._prototypes import PROTOTYPES  # noqa: E402

complaints = []
made = subprocess.run([sys.executable, root / "bindings/python/make_prototypes.py"], check=True,
                      capture_output=True, text=True).stdout
if made != (root / "bindings/python/orblink/_prototypes.py").read_text(encoding="utf-8"):
    complaints.append("orblink/_prototypes.py is not what make_prototypes.py makes of the headers")

exported = set(re.findall(r"^ {4}(\w+);", (root / "cmake/liborblink.map").read_text(), re.M))
exported.discard("HWMB_socket")  # the one variable
if exported != set(PROTOTYPES):
    complaints.append(f"exported or declared only: {sorted(exported ^ set(PROTOTYPES))}")

methods = "".join((root / "bindings/python/orblink" / name).read_text(encoding="utf-8")
                  for name in ("switch.py", "phy.py"))
families = public_headers.functions(root,
                                    public_headers.SWITCH_HEADERS + public_headers.PHY_HEADERS)
for function in families:
    if f'"{function.name}"' not in methods:
        complaints.append(f"no method calls {function.name}")
if len(families) < 74 or len(exported) < 100:
    complaints.append(f"only {len(families)} of {len(exported)} functions looked at")
print("\n".join(complaints) or f"{len(exported)} functions")
sys.exit(1 if complaints else 0)
