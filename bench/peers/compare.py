#!/usr/bin/env python3
"""compare.py BUILD_FOLDER [--rounds N] [--minutes N]

Times whole processes in alternation, so that whatever else the machine does falls on all of them,
and prints medians of the ratios within a round. Programmes are made once, in BUILD_FOLDER/programmes,
and read once before anything is timed: all runs find them in the page cache.
"""

import os
import statistics
import subprocess
import time
from pathlib import Path

from runner import options_of, programme_of, run

SHORT_FILES = 200
SHORT_SECONDS = 10
MIB = 1 << 20


def anonymous_peak(command):
    """Highest resident memory that is not backed by a file, in bytes: the kernel's RssAnon and
    RssShmem, sampled every 2 ms in a run that is not timed. What is allocated for the programme
    stays to the end of it, so that nothing large falls between two samples."""
    process = subprocess.Popen([str(part) for part in command], stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    status = Path(f"/proc/{process.pid}/status")
    peak = 0
    while process.poll() is None:
        try:
            fields = dict(line.split(":", 1) for line in status.read_text().splitlines())
            peak = max(peak, sum(int(fields[name].split()[0]) for name in ("RssAnon", "RssShmem")))
        except (OSError, KeyError):  # it has just ended
            pass
        time.sleep(0.002)
    return peak * 1024


def timed_in_alternation(commands, rounds):
    """Seconds per name, one per round."""
    times = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            times[name].append(run(command).wall)
    return times


def ratios(times, name, reference):
    return [a / b for a, b in zip(times[name], times[reference])]


def compare_peers(build, programme, minutes, rounds):
    tools = build / "bin"
    orvane = [tools / "orvane", "analyze", "-q", programme]
    commands = {
        "orvane analyze": orvane,
        "map_and_convert": [tools / "map_and_convert", programme],
        "ffmpeg ebur128=peak=true": [
            "ffmpeg", "-nostdin", "-nostats", "-i", programme, "-filter_complex",
            "ebur128=peak=true:framelog=verbose", "-f", "null", "-"],
        "libebur128 with libsndfile": [tools / "peer_libebur128", programme],
    }
    times = timed_in_alternation(commands, rounds)
    print(f"\n{minutes} minutes of stereo, 48 kHz, 24 bits; {rounds} rounds\n")
    print("| program | seconds (median) | times orvane (median, lowest … highest) | anonymous MiB |")
    print("|---|---|---|---|")
    for name, command in commands.items():
        against = ratios(times, name, "orvane analyze")
        print(f"| {name} | {statistics.median(times[name]):.3f} | {statistics.median(against):.2f} "
              f"({min(against):.2f} … {max(against):.2f}) | {anonymous_peak(command) / MIB:.0f} |")
    print(f"\nThe programme takes {minutes * 60 * 48000 * 2 * 4 / MIB:.0f} MiB as floats.")


def added(build, programme, minutes, rounds):
    """What speech detection and the reports add."""
    outputs = build / "programmes" / "reports"
    outputs.mkdir(exist_ok=True)
    orvane = [build / "bin" / "orvane", "analyze", "-q", "--force"]
    reports = [word for kind in ("html", "csv", "pdf", "report")
               for word in ("--" + kind, outputs / f"programme.{kind}")]
    times = timed_in_alternation({
        "plain": [*orvane, programme],
        "speech": [*orvane, "--speech", programme],
        "speech and reports": [*orvane, "--speech", *reports, programme]}, rounds)
    print(f"\nOptions on {minutes} minutes:")
    for name, reference in (("speech", "plain"), ("speech and reports", "speech")):
        costs = ratios(times, name, reference)
        print(f"- {name} {statistics.median(times[name]):.3f} s, {statistics.median(costs):.2f} "
              f"({min(costs):.2f} … {max(costs):.2f}) times {reference}")


def growth(build, minutes, rounds):
    files = {"1 s": programme_of(build, 1), "a sixth": programme_of(build, minutes * 10),
             "whole": programme_of(build, minutes * 60)}
    commands = {name: [build / "bin" / "orvane", "analyze", "-q", file]
                for name, file in files.items()}
    times = timed_in_alternation(commands, rounds)
    shares = [6 * (sixth - base) / (whole - base) for base, sixth, whole in
              zip(times["1 s"], times["a sixth"], times["whole"])]
    print(f"\nGrowth: 1 s {statistics.median(times['1 s']) * 1000:.1f} ms, {minutes * 10} s "
          f"{statistics.median(times['a sixth']):.3f} s, {minutes * 60} s "
          f"{statistics.median(times['whole']):.3f} s. Less the first, a sixth of the length costs "
          f"{statistics.median(shares):.3f} of a sixth of the time.")


def short_files(build, rounds):
    files = [programme_of(build, SHORT_SECONDS, seed) for seed in range(1, SHORT_FILES + 1)]
    cores = sorted(os.sched_getaffinity(0))
    command = [build / "bin" / "orvane", "analyze", "-q", "--jobs", "2", *files]
    times = timed_in_alternation({
        "two": ["taskset", "-c", ",".join(map(str, cores[:2])), *command],
        "one": ["taskset", "-c", cores[0], *command]}, rounds)
    gains = ratios(times, "one", "two")
    print(f"\n{SHORT_FILES} files of {SHORT_SECONDS} s: two cores {statistics.median(times['two']):.3f} s, "
          f"the same run on one of them {statistics.median(times['one']):.3f} s: "
          f"{statistics.median(gains):.2f} ({min(gains):.2f} … {max(gains):.2f}) times the throughput.")


def main():
    options = options_of(__doc__, 5, minutes=60)
    build = options.build.resolve()
    long_programme = programme_of(build, options.minutes * 60)
    compare_peers(build, long_programme, options.minutes, options.rounds)
    added(build, long_programme, options.minutes, options.rounds)
    growth(build, options.minutes, options.rounds)
    short_files(build, options.rounds)


if __name__ == "__main__":
    main()
