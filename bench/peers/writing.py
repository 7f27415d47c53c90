#!/usr/bin/env python3
"""writing.py BUILD_FOLDER [--rounds N] [--minutes N]

Processor time of whole processes that write stereo floats as 24-bit WAV, in alternation, and the
medians of the ratios within a round. What syncing to the disk costs is waiting and not counted; the
peers do not sync at all. Also the highest resident memory, for the length and for a tenth of it.
"""

import array
import tempfile
from pathlib import Path

from runner import RATE, medians, options_of, race, run


def make_floats(path, minutes):
    block = array.array("f", [(i * 7919 % 65536 - 32768) / 40000 for i in range(RATE * 2)])
    with open(path, "wb") as file:
        for _ in range(60 * minutes):
            file.write(block.tobytes())


def main():
    options = options_of(__doc__, rounds=9, minutes=10)
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        source, short = folder / "floats", folder / "short"
        make_floats(source, options.minutes)
        make_floats(short, max(options.minutes // 10, 1))

        def ours(file):
            return [options.orvane, "raw", "convert", file, "--raw", f"f32le,{RATE},2", "--encoding",
                    "s24", "-o", folder / "o.wav", "--force", "-q"]

        peers = {
            "FFmpeg": [["ffmpeg", "-v", "error", "-y", "-f", "f32le", "-ar", RATE, "-ac", 2, "-i",
                        source, "-c:a", "pcm_s24le", folder / "f.wav"]],
            "SoX": [["sox", "-t", "f32", "-r", RATE, "-c", 2, source, "-b", 24, folder / "s.wav"]],
        }
        cost, ratios = race(options.rounds, [ours(source)], peers)
        print(f"{options.minutes} min of stereo f32 to s24 WAV: {cost.processor:.2f} s of processor time")
        for peer, rounds in ratios.items():
            print(f"  {medians(rounds).processor:.2f} of {peer}'s")
        print(f"  {cost.memory / 2**20:.0f} MiB resident, {run(ours(short)).memory / 2**20:.0f} MiB for "
              "a tenth of the length")


if __name__ == "__main__":
    main()
