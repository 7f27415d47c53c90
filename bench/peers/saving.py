#!/usr/bin/env python3
"""saving.py BUILD_FOLDER [--rounds N] [--minutes N] [--compared-minutes N]

Times of whole processes, in alternation, and the medians of the ratios within a round:
`orvane edit --in-place` against `orvane edit -o`, of stereo 24-bit WAV, sync included; `orvane diff` of
two such files against loading both (`load_files`), with the highest resident memory in buffers of one.
"""

import tempfile
from pathlib import Path

from runner import RATE, medians, options_of, race, run


def compare(name, ours, reference, rounds):
    """Prints the times of both and the median of their ratios; gives the peak memory of ours."""
    cost, ratios = race(rounds, [ours], {"reference": [reference]})
    walls = [ratio.wall for ratio in ratios["reference"]]
    print(f"{name}: {cost.wall:.2f} s, {medians(ratios['reference']).wall:.2f} times that "
          f"({min(walls):.2f} to {max(walls):.2f})")
    return cost.memory


def main():
    options = options_of(__doc__, rounds=7, minutes=10, compared_minutes=60)
    orvane = options.orvane
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)

        def noise(file, minutes, seed):
            run([orvane, "generate", "pink", "-o", file, "--channels", 2, "--bit-depth", "int24", "--rate",
                 RATE, "--duration", 60 * minutes, "--seed", seed, "-q"])

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
