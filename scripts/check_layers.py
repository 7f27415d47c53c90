#!/usr/bin/env python3
"""check_layers.py ROOT

Compares the includes of orvane/ and cli/ with the layer table of docs/architecture.md, and looks for
headers that include each other in a circle. Prints each finding; exit 1 if there is one.
"""

import re
import sys
from pathlib import Path

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
SOURCES = (".h", ".cpp")


def table(text, name):
    """Rows of the table between the markers `name` and `/name`, each a list of cells."""
    match = re.search(rf"<!-- {name} -->(.*?)<!-- /{name} -->", text, re.DOTALL)
    if not match:
        sys.exit(f"docs/architecture.md has no table '{name}'")
    rows = [line for line in match.group(1).splitlines() if line.startswith("|")]
    return [[cell.strip() for cell in row.strip("|").split("|")] for row in rows[2:]]


def code_spans(cell):
    return re.findall(r"`([^`]+)`", cell)


def read_layers(root):
    text = (root / "docs/architecture.md").read_text(encoding="utf-8")
    return {code_spans(row[0])[0]: set(code_spans(row[2])) for row in table(text, "layers")}


def read_includes(root):
    """{path: included paths}, both relative to the root; only files of the project."""
    files = [path.relative_to(root) for top in ("orvane", "cli")
             for path in sorted((root / top).rglob("*")) if path.suffix in SOURCES]
    known = set(files)
    includes = {}
    for file in files:
        named = INCLUDE.findall((root / file).read_text(encoding="utf-8", errors="replace"))
        includes[file] = [Path(name) for name in named if Path(name) in known]
    return includes


def folder(file):
    """"core" for orvane/core/x/y.h, "cli" for cli/x.h."""
    return file.parts[1] if file.parts[0] == "orvane" and len(file.parts) > 2 else file.parts[0]


def upward_includes(includes, allowed):
    for file, targets in includes.items():
        source = folder(file)
        if source not in allowed:
            yield f"{file}: the folder '{source}' is not in the layer table"
            continue
        for target in targets:
            if folder(target) in allowed[source] | {source}:
                continue
            yield f"{file} includes {target}: '{source}' may not include '{folder(target)}'"


def cycles(includes):
    """Depth-first search over the files; each include that leads back into the open path is one."""
    state, path = {}, []

    def visit(node):
        state[node] = "open"
        path.append(node)
        for target in sorted(includes[node]):
            if state.get(target) == "open":
                yield "circle: " + " -> ".join(map(str, path[path.index(target):] + [target]))
            elif target not in state:
                yield from visit(target)
        path.pop()
        state[node] = "done"

    for node in sorted(includes):
        if node not in state:
            yield from visit(node)


def main():
    root = Path(sys.argv[1])
    allowed = read_layers(root)
    includes = read_includes(root)
    findings = list(upward_includes(includes, allowed)) + list(cycles(includes))
    print(*findings, sep="\n", end="\n" if findings else "")
    print(f"{len(includes)} files, {len(findings)} findings")
    sys.exit(1 if findings else 0)


if __name__ == "__main__":
    main()
