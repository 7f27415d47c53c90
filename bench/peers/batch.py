#!/usr/bin/env python3
"""batch.py BUILD_FOLDER [--rounds N] [--files N] [--seconds S]

A batch of short files over 40 folders, a hundredth of which cannot be read: two jobs against one that is
held to one core, in alternation. Prints processor and wall time as medians of the ratios within a round,
after it has seen that both summaries have every file in its order and say the same.
"""

import csv
import statistics
import sys
import tempfile
import wave
from pathlib import Path

from runner import options_of, run

FOLDERS = 40
RATE = 48000


def make_files(root, count, seconds):
    """The paths in their order; every hundredth file is no audio, whatever its name says."""
    period = b"".join((i * 600 % 65536).to_bytes(2, "little") * 2 for i in range(RATE // 100))
    paths = []
    for i in range(count):
        path = root / f"{i * FOLDERS // count:02}" / f"{i:05}.wav"
        path.parent.mkdir(exist_ok=True)
        paths.append(path)
        if i % 100 == 7:
            path.write_text("nothing")
            continue
        with wave.open(str(path), "wb") as file:
            file.setnchannels(2)
            file.setsampwidth(2)
            file.setframerate(RATE)
            file.writeframes(period * round(seconds * 100))
    return paths


def measure(program, root, summary, jobs):
    """Processor and wall seconds of one run, and its rows."""
    command = [program, "analyze", "-q", "--recursive", "--force", "--jobs", jobs, "--summary", summary, root]
    cost = run(["taskset", "--cpu-list", "0", *command] if jobs == 1 else command, code=1)
    with open(summary, newline="", encoding="utf-8") as file:
        rows = list(csv.DictReader(file))
    return cost.processor, cost.wall, rows


def main():
    options = options_of(__doc__, 5, files=2000, seconds=1.0)
    with tempfile.TemporaryDirectory() as name:
        root = Path(name) / "batch"
        root.mkdir()
        paths = make_files(root, options.files, options.seconds)
        ratios = []
        for _ in range(options.rounds):
            two = measure(options.orvane, root, Path(name) / "two.csv", 2)
            one = measure(options.orvane, root, Path(name) / "one.csv", 1)
            if two[2] != one[2] or [row["path"] for row in one[2]] != list(map(str, paths)):
                sys.exit("the summaries differ, or lack files")
            ratios.append((two[0] / one[0], two[1] / one[1]))
            print(f"{one[0]:6.2f} s processor, {one[1]:6.2f} s wall by one job; "
                  f"two jobs: {ratios[-1][0]:.2f}, {ratios[-1][1]:.2f} of it", flush=True)
        for i, what in enumerate(("processor", "wall")):
            values = [ratio[i] for ratio in ratios]
            print(f"{what:9} time, two jobs ÷ one on one core: {statistics.median(values):.2f} "
                  f"({min(values):.2f} – {max(values):.2f})")


if __name__ == "__main__":
    main()
