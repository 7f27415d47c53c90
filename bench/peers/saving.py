#!/usr/bin/env python3
"""saving.py BUILD_FOLDER [--rounds N] [--minutes N] [--compared-minutes N]

Times of whole processes, in alternation, and the medians of the ratios within a round:
`orvane edit --in-place` against `orvane edit -o`, of stereo 24-bit WAV, sync included; `orvane diff` of
two such files against loading both (`load_files`), with the highest resident memory in buffers of one.
"""

import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

RATE = 48000


def resources_of(command):
    """Seconds until the end and peak resident bytes of a run."""
    begin = time.monotonic()
    process = subprocess.Popen([str(part) for part in command], stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit(f"failed: {' '.join(map(str, command))}")
    return time.monotonic() - begin, usage.ru_maxrss * 1024


def compare(name, ours, reference, rounds):
    """Prints the times of both and the median of their ratios; gives the peak memory of ours."""
    times, ratios = [], []
    for _ in range(rounds):
        seconds, memory = resources_of(ours)
        times.append(seconds)
        ratios.append(seconds / resources_of(reference)[0])
    print(f"{name}: {statistics.median(times):.2f} s, {statistics.median(ratios):.2f} times that "
          f"({min(ratios):.2f} to {max(ratios):.2f})")
    return memory


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=Path)
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--minutes", type=int, default=10)
    parser.add_argument("--compared-minutes", type=int, default=60)
    options = parser.parse_args()
    orvane = options.build / "bin" / "orvane"
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)

        def noise(file, minutes, seed):
            resources_of([orvane, "generate", "pink", "-o", file, "--channels", 2, "--bit-depth", "int24",
                          "--rate", RATE, "--duration", 60 * minutes, "--seed", seed, "-q"])

        song = folder / "song.wav"
        noise(song, options.minutes, 1)
        gain = [orvane, "edit", "gain", "-0.1", song, "-q"]
        anew = [*gain, "-o", folder / "new.wav", "--force"]
        compare(f"{options.minutes} min in place, of saving anew", [*gain, "--in-place"], anew,
                options.rounds)
        trim = [orvane, "edit", "trim", "1", str(60 * options.minutes), song, "-q"]
        compare("the same, keeping all but a second", [*trim, "--in-place"],
                [*trim, "-o", folder / "new.wav", "--force"], options.rounds)

        a, b = folder / "a.wav", folder / "b.wav"
        noise(a, options.compared_minutes, 1)
        noise(b, options.compared_minutes, 2)
        memory = compare(f"diff of {options.compared_minutes} min, of loading both",
                         [orvane, "diff", a, b, "-q"], [options.build / "bin" / "load_files", a, b],
                         options.rounds)
        buffer = options.compared_minutes * 60 * RATE * 2 * 4
        print(f"  {memory / buffer:.2f} buffers resident")


if __name__ == "__main__":
    main()
