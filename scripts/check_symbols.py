#!/usr/bin/env python3
"""check_symbols.py exports LIBRARY…     everything exported lies in namespace orvane, but
                                       for the entries of the decoder modules
check_symbols.py quiet OBJECT_FOLDER…    no object prints or ends the process; only `precondition` may
check_symbols.py run-paths PREFIX…       the binaries in bin/ and lib/ find what they need from where
                                       they lie themselves, and only below PREFIX
"""

import re
import subprocess
import sys
from pathlib import Path

EXPORTED = re.compile(
    r"^((vtable|VTT|typeinfo|typeinfo name) for |(non-virtual|virtual) thunk to )?"
    r"(orvane::|std::hash<orvane::)|^orvane(FFmpeg|FLAC|MP3)Module$")

FORBIDDEN = {
    "abort", "exit", "_exit", "_Exit", "quick_exit", "__assert_fail",
    "printf", "fprintf", "vprintf", "vfprintf", "puts", "fputs", "putchar", "perror",
    "__printf_chk", "__fprintf_chk", "__vprintf_chk", "__vfprintf_chk",
    "stdout", "stderr", "std::cout", "std::cerr", "std::clog",
}
STOPS_THE_PROCESS = "platform/precondition.cpp.o"


def nm(*arguments):
    return subprocess.run(["nm", *arguments], check=True, capture_output=True,
                          text=True).stdout.splitlines()


def foreign_exports(library):
    """Defined dynamic symbols outside the namespace, as nm names them without their arguments."""
    for line in nm("-D", "-C", "--defined-only", library):
        _, kind, name = line.split(" ", 2)
        # A function template's name begins with its return type.
        if kind == "A" or EXPORTED.match(name) or re.match(r"^\S+ orvane::", name):
            continue
        yield f"{library} exports {name}"


def noisy_objects(folder):
    objects = sorted(Path(folder).rglob("*.o"))
    if not objects:
        yield f"{folder} holds no object files"
    for path in objects:
        if str(path).endswith(STOPS_THE_PROCESS):
            continue
        used = {line.split()[-1].split("@")[0] for line in nm("-C", "-u", path)}
        for name in sorted(used & FORBIDDEN):
            yield f"{path.name} uses {name}"


def is_binary(path):
    if path.is_symlink() or not path.is_file():
        return False
    with path.open("rb") as file:
        return file.read(4) == b"\x7fELF"


def foreign_run_paths(prefix):
    """An entry that is empty or relative stands for the folder that a program is started in."""
    prefix = Path(prefix).resolve()
    binaries = [path for folder in ("bin", "lib") for path in sorted((prefix / folder).rglob("*"))
                if is_binary(path)]
    if not binaries:
        yield f"{prefix} holds no binaries"
    for path in binaries:
        dynamic = subprocess.run(["readelf", "-W", "-d", path], check=True, capture_output=True,
                                 text=True).stdout
        for kind, text in re.findall(r"\((RPATH|RUNPATH|NEEDED)\).*\[(.*)\]", dynamic):
            if kind == "NEEDED":
                if "/" in text:
                    yield f"{path.name} needs a library by its path, {text}"
                continue
            for entry in text.split(":"):
                place = Path(entry.replace("$ORIGIN", str(path.parent), 1)).resolve()
                if not re.match(r"\$ORIGIN(/|$)", entry) or not place.is_relative_to(prefix):
                    yield f"{path.name} looks for libraries in '{entry}'"


def main():
    check = {"exports": foreign_exports, "quiet": noisy_objects,
             "run-paths": foreign_run_paths}[sys.argv[1]]
    findings = [finding for argument in sys.argv[2:] for finding in check(argument)]
    print(*findings, sep="\n", end="\n" if findings else "")
    sys.exit(1 if findings else 0)


if __name__ == "__main__":
    main()
