#!/bin/bash
# house.sh [COMMIT]
# Figures of the house, of the sources here or of a commit: files and lines of each folder, and how
# long functions are (from brace to brace; a function's braces stand alone on their lines).
set -euo pipefail
cd "$(dirname "$0")/.."

where=$PWD
if [ $# -gt 0 ]; then
    where=$(mktemp -d)
    trap 'rm -rf "$where"' EXIT
    git archive "$1" | tar -x -C "$where"
fi

python3 - "$where" <<'PYTHON'
import collections, os, re, statistics, sys

root = sys.argv[1]
folders = collections.Counter()
lines_of = collections.Counter()
functions = collections.defaultdict(list)
long_functions = collections.Counter()
longest_files = []


def kind(folder):
    top = folder.split("/")[0]
    if top in ("tests", "bench"):
        return "tests"
    return "library" if top not in ("tools", "toml", "virtual_board", "hals") else "programs and HALs"


def table_lines(body):
    """Lines of the longest initialiser in a body: what of it is a table."""
    longest = 0
    for first, line in enumerate(body):
        match = re.match(r"( *)\S.*(=|return) \{$|( *)return \{$", line.rstrip("\n"))
        if match:
            end = (match.group(1) or match.group(3) or "") + "};\n"
            longest = max(longest, body.index(end, first) - first + 1 if end in body[first:] else 0)
    return longest


def bodies(lines):
    """Length and first line of each body: a brace alone on its line, up to the one below it."""
    open_at = {}
    for number, line in enumerate(lines):
        match = re.fullmatch(r"( *)([{}])", line.rstrip("\n"))
        if match and match.group(2) == "{":
            open_at[match.group(1)] = number
        elif match and match.group(1) in open_at:
            first = open_at.pop(match.group(1))
            yield number - first + 1, first


for path, inner, files in os.walk(root):
    inner[:] = sorted(name for name in inner if not name.startswith(".") and
                      not (path == root and name.startswith("build")))
    for name in sorted(files):
        if not name.endswith((".c", ".cpp", ".h")):
            continue
        inside = os.path.relpath(os.path.join(path, name), root)
        folder = os.path.dirname(inside)
        lines = open(os.path.join(root, inside), encoding="utf-8").readlines()
        folders[folder] += 1
        lines_of[folder] += len(lines)
        longest_files.append((len(lines), inside))
        for length, first in bodies(lines):
            functions[kind(folder)].append((length, f"{inside}:{first + 1}"))
            if length - table_lines(lines[first:first + length]) > 60:
                long_functions[kind(folder)] += 1

print("| Folder | Files | Lines |\n|---|---|---|")
for folder in sorted(folders):
    print(f"| `{folder}/` | {folders[folder]} | {lines_of[folder]} |")
print(f"| all | {sum(folders.values())} | {sum(lines_of.values())} |\n")

print("| Function lines | Functions | Median | 90th percentile | Longest | Above 60 "
      "| without their tables |")
print("|---|---|---|---|---|---|---|")
for which in sorted(functions):
    found = sorted(functions[which])
    lengths = [length for length, _ in found]
    print(f"| {which} | {len(lengths)} | {statistics.median_low(lengths)} "
          f"| {lengths[len(lengths) * 9 // 10]} | {found[-1][0]} (`{found[-1][1]}`) "
          f"| {sum(length > 60 for length in lengths)} | {long_functions[which]} |")
longest = max(longest_files)
print(f"\nThe longest file has {longest[0]} lines: `{longest[1]}`.")
PYTHON
