#!/usr/bin/env python3
"""writing.py BUILD_FOLDER [--rounds N] [--minutes N]

Processor time of whole processes that write stereo floats as 24-bit WAV, in alternation, and the
medians of the ratios within a round. What syncing to the disk costs is waiting and not counted; the
peers do not sync at all. Also the highest resident memory, for the length and for a tenth of it.
"""

import argparse
import array
import os
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

RATE = 48000


def resources_of(command):
    """Processor seconds and peak resident bytes of a run."""
    process = subprocess.Popen([str(part) for part in command], stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit(f"failed: {' '.join(map(str, command))}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def make_floats(path, minutes):
    block = array.array("f", [(i * 7919 % 65536 - 32768) / 40000 for i in range(RATE * 2)])
    with open(path, "wb") as file:
        for _ in range(60 * minutes):
            file.write(block.tobytes())


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=Path)
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--minutes", type=int, default=10)
    options = parser.parse_args()
    orvane = options.build / "bin" / "orvane"
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        source, short = folder / "floats", folder / "short"
        make_floats(source, options.minutes)
        make_floats(short, max(options.minutes // 10, 1))
        raw = ["--raw", f"f32le,{RATE},2"]
        ours = [orvane, "raw", "convert", source, *raw, "--encoding", "s24", "-o",
                folder / "o.wav", "--force", "-q"]
        peers = {
            "FFmpeg": ["ffmpeg", "-v", "error", "-y", "-f", "f32le", "-ar", RATE, "-ac", 2, "-i",
                       source, "-c:a", "pcm_s24le", folder / "f.wav"],
            "SoX": ["sox", "-t", "f32", "-r", RATE, "-c", 2, source, "-b", 24, folder / "s.wav"],
        }
        ratios = {peer: [] for peer in peers}
        times = []
        for _ in range(options.rounds):
            seconds, _ = resources_of(ours)
            times.append(seconds)
            for peer, command in peers.items():
                ratios[peer].append(seconds / resources_of(command)[0])
        print(f"{options.minutes} min of stereo f32 to s24 WAV: "
              f"{statistics.median(times):.2f} s of processor time")
        for peer, values in ratios.items():
            print(f"  {statistics.median(values):.2f} of {peer}'s")
        long_peak = resources_of(ours)[1]
        ours[3] = short
        print(f"  {long_peak / 2**20:.0f} MiB resident, {resources_of(ours)[1] / 2**20:.0f} MiB for "
              "a tenth of the length")


if __name__ == "__main__":
    main()
