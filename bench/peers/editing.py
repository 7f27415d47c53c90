#!/usr/bin/env python3
"""editing.py BUILD_FOLDER [--rounds N] [--minutes N]

Whole processes that edit stereo of 24 bits to a 24-bit WAV, in alternation: processor and wall time,
as medians of the ratios within a round, and the highest resident memory beside the size of the
programme as floats. The peers do not sync to the disk; what that costs us is waiting, which the wall
times have.
"""

import json
import re
import subprocess
import tempfile
from pathlib import Path

from runner import RATE, medians, options_of, race

LOUDNORM = "loudnorm=I=-16:TP=-1:LRA=20"


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
    options = options_of(__doc__, rounds=9, minutes=10)
    end = 60 * options.minutes
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        source = folder / "source.wav"
        make_programme(source, options.minutes)

        def ours(*words):
            return [[options.orvane, "edit", *words, source, "-o", folder / "o.wav", "--force", "-q"]]

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
            cost, ratios = race(options.rounds, own, peers)
            print(f"{edit}: {cost.processor:.2f} s of processor time, {cost.wall:.2f} s of wall time, "
                  f"{cost.memory / floats:.2f} of the float size resident "
                  f"({cost.memory / 2**20:.0f} MiB)")
            for peer, rounds in ratios.items():
                ratio = medians(rounds)
                print(f"  {ratio.processor:.3f} of the processor time of {peer}, "
                      f"{ratio.wall:.3f} of the wall time")


if __name__ == "__main__":
    main()
