#!/usr/bin/env python3
"""check_test_places.py ROOT

Tests lie in the folder under tests/ that mirrors the folder of what they test. Two things are checked:
every folder with tests mirrors a folder of orvane/ or is tests/cli… itself, and a test that is named
after a source file lies at that file's mirrored path. Prints each finding; exit 1 if there is one.
"""

import sys
from pathlib import Path

# Helpers, oracles, rules of the tree; and what is tested of the program as a whole.
APART = {"support", "reference", "house", "damage"}
SOURCES = (".h", ".cpp")


def unit(name):
    """What a file holds: "k_weighting_kernel" for k_weighting_kernel.simd.cpp."""
    return name.split(".")[0]


def mirrored(folder):
    """The place of a source folder's tests: analysis for orvane/analysis, cli/options for itself."""
    return Path(*folder.parts[1:]) if folder.parts[0] == "orvane" else folder


def findings(root):
    units, folders = {}, set()
    for top in ("orvane", "cli"):
        for path in (root / top).rglob("*"):
            if path.suffix not in SOURCES:
                continue
            folder = mirrored(path.relative_to(root).parent)
            folders.add(folder)
            units.setdefault(unit(path.name), set()).add(folder)
    for path in sorted((root / "tests").rglob("*_test.cpp")):
        place = path.relative_to(root / "tests").parent
        if place.parts and place.parts[0] in APART:
            continue
        tested = units.get(path.name[: -len("_test.cpp")])
        if tested is not None and place not in tested:
            yield f"tests/{place}/{path.name} tests a file of {' or '.join(map(str, sorted(tested)))}"
        elif tested is None and place not in folders:
            yield f"tests/{place}/{path.name}: there is no such folder to test"


def main():
    root = Path(sys.argv[1])
    found = list(findings(root))
    print(*found, sep="\n", end="\n" if found else "")
    print(f"{len(found)} findings")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
