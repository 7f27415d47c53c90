#!/usr/bin/env python3
"""formats.py BUILD_FOLDER [--rounds N] [--tries N] [--minutes N] [--only NAME] [--peer NAME]
              [--before PROGRAM] [--plot FILE.svg]

`orvane analyze` on each kind of file, whole processes in alternation: against FFmpeg merely decoding it
and measuring it, against a program made of libebur128 and libsndfile where that reads it, WAV against a
program that only converts it, loud material and speech detection against the plain run, and 500 files
of five seconds against an earlier build of the program. Prints medians of the ratios within a round, and
the share of the time on processors that the machine's host took away: with more than a few percent, wall
times of more threads than one tell little. Of `--tries` rounds those count that lost the least.
"""

import subprocess

from plot import plot_bars
from runner import into_page_cache, medians, options_of, programme_of, race

CHANNELS_OF_PCM = {"wav": 2, "5.1.wav": 6, "192k.wav": 2}  # those that a program merely converts, too
UNREAD_BY_LIBSNDFILE = ("m4a", "plain.m4a")
SECOND_RUNS = 40  # of the shortest files in a row, which end too soon to be timed alone


def encoders():
    """Arguments of FFmpeg by the file that they make of the programme."""
    return {
        "wav": ["-c:a", "pcm_s24le"],
        "flac": ["-c:a", "flac", "-sample_fmt", "s16"],
        "mp3": ["-c:a", "libmp3lame", "-b:a", "192k"],
        "ogg": ["-c:a", "libvorbis", "-q:a", "6"],
        "opus": ["-c:a", "libopus", "-b:a", "128k"],
        "m4a": ["-c:a", "aac", "-b:a", "192k"],
        "plain.m4a": ["-c:a", "aac", "-b:a", "192k", "-aac_pns", "0"],  # no noise substitution
        "5.1.wav": ["-af", "pan=5.1|c0=c0|c1=c1|c2=c0|c3=c1|c4=c1|c5=c0", "-c:a", "pcm_s24le"],
        "192k.wav": ["-ar", "192000", "-c:a", "pcm_s24le"],
        "clipped.wav": ["-af", "volume=12dB", "-c:a", "pcm_s24le"],
    }


def make(folder, programme, seconds, name, arguments):
    path = folder / f"formats_{seconds}s.{name}"
    if not path.exists():
        unfinished = path.with_name("unfinished." + path.name)
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-i", programme, *arguments, unfinished],
                       check=True, stdin=subprocess.DEVNULL)
        unfinished.rename(path)
    return into_page_cache(path)


def row(name, cost, ratios):
    cells = [f"{peer}: {ratio.processor:.2f} processor, {ratio.wall:.2f} wall ({ratio.stolen:.0%} stolen)"
             for peer, ratio in ((peer, medians(costs)) for peer, costs in ratios.items())]
    print(f"| {name} | {cost.processor:.2f} | {cost.wall:.2f} | {cost.stolen:.0%} | "
          f"{cost.memory / 2**20:.0f} | {'; '.join(cells)} |", flush=True)


def short_files(folder, programme, count, seconds):
    """So many different files, cut from the programme over and over."""
    short = folder / f"{count}x{seconds}s"
    if not short.exists():
        unfinished = short.with_name("unfinished." + short.name)
        unfinished.mkdir(exist_ok=True)
        for i in range(count):
            subprocess.run(["ffmpeg", "-v", "error", "-y", "-ss", str(seconds * i % 250), "-t", str(seconds),
                            "-i", programme, "-c:a", "pcm_s24le", unfinished / f"{i:03}.wav"],
                           check=True, stdin=subprocess.DEVNULL)
        unfinished.rename(short)
    return sorted(short.iterdir())


def ffmpeg(path, *filters):
    return ["ffmpeg", "-nostdin", "-nostats", "-v", "error", "-i", path, *filters, "-f", "null", "-"]


def measure_kinds(options, orvane, files):
    """Rows of all kinds; gives the wall time of each in that of FFmpeg decoding it."""
    shares = {}
    for name, path in files.items():
        if options.only and options.only != name:
            continue
        peers = {"decoding": [ffmpeg(path)],
                 "ebur128": [ffmpeg(path, "-filter_complex", "ebur128=peak=true:framelog=verbose")]}
        if name not in UNREAD_BY_LIBSNDFILE:
            peers["libebur128"] = [[options.build / "bin" / "peer_libebur128", path]]
        if name == "clipped.wav":
            peers = {"unclipped": [[*orvane, files["wav"]]]}
        if name in CHANNELS_OF_PCM:
            peers["converting"] = [[options.build / "bin" / "map_and_convert", path, CHANNELS_OF_PCM[name]]]
        peers = {peer: commands for peer, commands in peers.items() if options.peer in ("", peer)}
        cost, ratios = race(options.rounds, [[*orvane, path]], peers, options.tries)
        row(name, cost, ratios)
        if "decoding" in ratios:
            shares[name] = medians(ratios["decoding"]).wall
    return shares


def measure_starts(options, orvane, folder):
    second = programme_of(options.build, 1)
    for name in ("wav", "flac", "mp3"):
        path = make(folder, second, 1, name, encoders()[name])
        cost, ratios = race(options.rounds, [[*orvane, path]] * SECOND_RUNS,
                            {"libebur128": [[options.build / "bin" / "peer_libebur128", path]]
                                           * SECOND_RUNS}, options.tries)
        row(f"one second of {name}, {SECOND_RUNS} runs", cost, ratios)
    cost, ratios = race(options.rounds, [[options.orvane, "--help"]] * SECOND_RUNS, {}, options.tries)
    row(f"--help, {SECOND_RUNS} runs", cost, ratios)


def main():
    options = options_of(__doc__, 5, minutes=20, tries=0, only="", peer="", before="", plot="")
    folder = options.build / "programmes"
    seconds = options.minutes * 60
    programme = programme_of(options.build, seconds)
    files = {name: make(folder, programme, seconds, name, arguments)
             for name, arguments in encoders().items() if options.only in ("", name)}
    orvane = [options.orvane, "analyze", "-q"]
    print(f"\n{options.minutes} minutes, {options.rounds} rounds\n")
    print("| file | processor s | wall s | stolen | MiB | ours ÷ others' (medians) |\n|---|---|---|---|---|---|")
    shares = measure_kinds(options, orvane, files)
    if options.plot:
        plot_bars(options.plot, "wall time of measuring, in that of FFmpeg decoding the same file", shares)
    if options.only:
        return
    cost, ratios = race(options.rounds, [[*orvane, "--speech", files["wav"]]],
                        {"without": [[*orvane, files["wav"]]]}, options.tries)
    row("wav --speech", cost, ratios)
    measure_starts(options, orvane, folder)
    short = short_files(folder, programme, 500, 5)
    command = ["analyze", "-q", "--jobs", "2", *short]
    cost, ratios = race(options.rounds, [[options.orvane, *command]],
                        {"before": [[options.before, *command]]} if options.before else {}, options.tries)
    row("500 files of 5 s, two jobs", cost, ratios)


if __name__ == "__main__":
    main()
