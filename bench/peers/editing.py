#!/usr/bin/env python3
"""editing.py BUILD_FOLDER [--rounds N] [--minutes N]

Whole processes that edit stereo of 24 bits to a 24-bit WAV, in alternation: processor and wall time,
as medians of the ratios within a round, and the highest resident memory beside the size of the
programme as floats. The peers do not sync to the disk; what that costs us is waiting, which the wall
times have.
"""

import argparse
import json
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

RATE = 48000
LOUDNORM = "loudnorm=I=-16:TP=-1:LRA=20"


def run(*commands):
    """Processor seconds, wall seconds and peak resident bytes of processes, one after the other."""
    processor, peak = 0.0, 0
    begin = time.perf_counter()
    for command in commands:
        process = subprocess.Popen([str(part) for part in command], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        if status != 0:
            sys.exit(f"failed: {' '.join(map(str, command))}")
        processor += usage.ru_utime + usage.ru_stime
        peak = max(peak, usage.ru_maxrss * 1024)
    return processor, time.perf_counter() - begin, peak


def make_programme(path, minutes):
    """Noise whose level changes every few seconds, with bursts at full scale for the limiter."""
    subprocess.run(["sox", "-R", "-n", "-r", str(RATE), "-c", "2", "-b", "24", path, "synth",
                    str(60 * minutes), "pinknoise", "tremolo", "0.13", "80", "vol", "-3dB"],
                   check=True)


def loudnorm_passes(source, target):
    """The commands of both passes; the second is told what the first one measures."""
    first = ["ffmpeg", "-hide_banner", "-nostats", "-i", source, "-af",
             LOUDNORM + ":print_format=json", "-f", "null", "-"]
    report = subprocess.run(first, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                            check=True).stderr
    measured = json.loads(re.findall(r"\{[^{}]*\}", report)[-1])
    second = ["ffmpeg", "-v", "error", "-y", "-i", source, "-af",
              f"{LOUDNORM}:linear=true:measured_I={measured['input_i']}"
              f":measured_TP={measured['input_tp']}:measured_LRA={measured['input_lra']}"
              f":measured_thresh={measured['input_thresh']}:offset={measured['target_offset']}",
              "-ar", RATE, "-c:a", "pcm_s24le", target]
    return [first, second]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=Path)
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--minutes", type=int, default=10)
    options = parser.parse_args()
    orvane = options.build / "bin" / "orvane"
    end = 60 * options.minutes
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        source = folder / "source.wav"
        make_programme(source, options.minutes)

        def ours(*words):
            return [[orvane, "edit", *words, source, "-o", folder / "o.wav", "--force", "-q"]]

        def ffmpeg(audio_filter):
            return [["ffmpeg", "-v", "error", "-y", "-i", source, "-af", audio_filter, "-c:a",
                     "pcm_s24le", folder / "f.wav"]]

        def sox(*effects):
            return [["sox", source, folder / "s.wav", *effects]]

        edits = {
            "gain": (ours("gain", "-3"),
                     {"FFmpeg volume": ffmpeg("volume=-3dB"), "SoX gain": sox("gain", "-3")}),
            "fade": (ours("fade", "in", "0", end),
                     {"FFmpeg afade": ffmpeg(f"afade=t=in:d={end}:curve=tri"),
                      "SoX fade": sox("fade", "t", end)}),
            "limit": (ours("limit", "--ceiling", "-6"),
                      {"FFmpeg alimiter": ffmpeg("alimiter=limit=0.5:level=0:attack=5:release=100")}),
            "normalize": (ours("normalize", "--target", "-16"),
                          {"FFmpeg loudnorm, two passes": loudnorm_passes(source,
                                                                          folder / "f.wav")}),
        }
        floats = end * RATE * 2 * 4
        print(f"{options.minutes} min of stereo s24; median of {options.rounds} rounds")
        for edit, (own, peers) in edits.items():
            times, ratios = [], {peer: [] for peer in peers}
            for _ in range(options.rounds):
                mine = run(*own)
                times.append(mine)
                for peer, commands in peers.items():
                    theirs = run(*commands)
                    ratios[peer].append((mine[0] / theirs[0], mine[1] / theirs[1]))
            processor, wall, peak = (statistics.median(column) for column in zip(*times))
            print(f"{edit}: {processor:.2f} s of processor time, {wall:.2f} s of wall time, "
                  f"{peak / floats:.2f} of the float size resident ({peak / 2**20:.0f} MiB)")
            for peer, pairs in ratios.items():
                processor, wall = (statistics.median(column) for column in zip(*pairs))
                print(f"  {processor:.3f} of the processor time of {peer}, {wall:.3f} of the wall time")


if __name__ == "__main__":
    main()
