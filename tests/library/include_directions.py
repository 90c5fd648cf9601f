#!/usr/bin/env python3
"""include_directions.py SOURCE_DIR PUBLIC_HEADER...

The tables in CONTRIBUTING.md and in the README files whose last column is "May include" say what a folder may include: what
is in its own row and in those of the folders around it, and these folders themselves. No folder
includes another one that includes it, directly or over others."""

import os
import re
import sys

INCLUDE = re.compile(r'\s*#\s*include\s*"([^"]+)"')
SOURCES = (".c", ".cpp", ".h", ".hpp")


def folders(root):
    """The folders that belong to the project, with the files in each."""
    for path, inner, files in os.walk(root):
        inner[:] = [name for name in sorted(inner) if not name.startswith(".")]
        if path == root and "build" in inner:
            inner.remove("build")
        yield os.path.relpath(path, root), files


def allowed_by_readmes(root):
    """Of each folder that has a row: the folders that its last cell names, and other words."""
    allowed = {}
    for folder, files in folders(root):
        name = "CONTRIBUTING.md" if folder == "." else "README.md"
        if name not in files:
            continue
        around = None
        for line in open(os.path.join(root, folder, name), encoding="utf-8"):
            cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
            if not line.startswith("|"):
                around = None
            elif cells[-1] == "May include":
                around = os.path.join(folder, *re.findall(r"`([^`]+)`", cells[0]))
            elif around is not None and not cells[0].startswith("--"):
                for name in re.findall(r"`([^`]+)`", cells[0]):
                    allowed[place_of(root, around, name)] = rights(root, around, cells[-1])
    return allowed


def rights(root, around, cell):
    named = {place_of(root, around, name) for name in re.findall(r"`([^`]+)`", cell)}
    return named | ({"public headers"} if "public headers" in cell else set())


def place_of(root, around, name):
    """A room is named from its README's folder, anything else from the top."""
    inside = os.path.normpath(os.path.join(around, name))
    return inside if os.path.isdir(os.path.join(root, inside)) else os.path.normpath(name)


def within(folder, outer):
    return (folder + "/").startswith(outer + "/")


def includes(root):
    """(place, folder, included file) of each include of a file of the project."""
    for folder, files in folders(root):
        for name in sorted(files):
            if not name.endswith(SOURCES):
                continue
            path = os.path.normpath(os.path.join(folder, name))
            with open(os.path.join(root, path), encoding="utf-8") as lines:
                for number, line in enumerate(lines, 1):
                    match = INCLUDE.match(line)
                    if match:
                        yield f"{path}:{number}", folder, from_the_top(root, folder, match.group(1))


def from_the_top(root, folder, header):
    """A header that is named from beside the file that includes it."""
    beside = os.path.normpath(os.path.join(folder, header))
    return beside if os.path.isfile(os.path.join(root, beside)) else header


def cycle(graph):
    """A path that ends where it began, or nothing."""
    done = set()

    def visit(folder, path):
        if folder in path:
            return path[path.index(folder):] + [folder]
        if folder in done:
            return None
        for target in sorted(graph.get(folder, ())):
            found = visit(target, path + [folder])
            if found:
                return found
        done.add(folder)
        return None

    for folder in sorted(graph):
        found = visit(folder, [])
        if found:
            return found
    return None


def main():
    root, public = sys.argv[1], set(sys.argv[2:])
    allowed = allowed_by_readmes(root)
    complaints, graph, seen = [], {}, 0
    for place, folder, header in includes(root):
        target = os.path.dirname(header)
        seen += 1
        if target == folder or within(folder, "tests"):
            continue
        rows = [row for row in allowed if within(folder, row)]
        if not rows:
            complaints.append(f"no README has a row for the folder {folder}")
            continue
        graph.setdefault(folder, set()).add(target)
        may = {folder}.union(*(allowed[row] for row in rows))
        if target not in rows and not any(within(target, outer) for outer in may) and \
                not ("public headers" in may and header in public):
            complaints.append(f'{place}: must not include "{header}"')
    for folder in sorted(allowed):
        if not os.path.isdir(os.path.join(root, folder)):
            complaints.append(f"a README has a row for the folder {folder}, which does not exist")
    around = cycle(graph)
    if around:
        complaints.append("a circle of folders: " + " -> ".join(around))
    if seen < 500:
        complaints.append(f"only {seen} includes found: looking in the wrong place")
    print("\n".join(sorted(set(complaints))))
    return 1 if complaints else 0


sys.exit(main())
