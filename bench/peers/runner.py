"""What the programs of this folder share: whole processes, run in alternation and weighed."""

import argparse
import os
import statistics
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

RATE = 48000


@dataclass
class Cost:
    """Of processes: seconds of processor and wall time, peak resident bytes, and the share of the time on
    processors that the machine's host gave to others."""

    processor: float = 0
    wall: float = 0
    memory: int = 0
    stolen: float = 0


def stolen_seconds():
    """So far, by the kernel's count."""
    with open("/proc/stat", encoding="ascii") as file:
        return int(file.readline().split()[8]) / os.sysconf("SC_CLK_TCK")


def run(*commands, code=0):
    """What commands cost, one after the other; the memory is that of the largest. All must end with
    that exit code."""
    cost = Cost()
    begin, stolen = time.monotonic(), stolen_seconds()
    for command in commands:
        process = subprocess.Popen([str(part) for part in command], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        if os.waitstatus_to_exitcode(status) != code:
            sys.exit(f"failed: {' '.join(map(str, command))}")
        cost.processor += usage.ru_utime + usage.ru_stime
        cost.memory = max(cost.memory, usage.ru_maxrss * 1024)
    cost.wall = time.monotonic() - begin
    stolen = stolen_seconds() - stolen
    cost.stolen = stolen / (stolen + cost.processor)
    return cost


def race(rounds, ours, peers, tries=0):
    """Runs lists of commands in alternation, `rounds` times, or `tries` times, of which the `rounds` with
    the least stolen count. Gives the medians of what ours cost, and by the peers' names the ratios of ours
    to theirs within each round, with the larger share of time stolen from either."""
    costs, ratios = [], {peer: [] for peer in peers}
    for _ in range(max(rounds, tries)):
        mine = run(*ours)
        costs.append(mine)
        for peer, commands in peers.items():
            theirs = run(*commands)
            ratios[peer].append(Cost(mine.processor / theirs.processor, mine.wall / theirs.wall,
                                     stolen=max(mine.stolen, theirs.stolen)))

    def quietest(found):
        return sorted(found, key=lambda cost: cost.stolen)[:rounds]

    return medians(quietest(costs)), {peer: quietest(found) for peer, found in ratios.items()}


def medians(costs):
    return Cost(*(statistics.median(getattr(cost, field) for cost in costs)
                  for field in ("processor", "wall", "memory", "stolen")))


def into_page_cache(path):
    with open(path, "rb") as file:
        while file.read(1 << 24):
            pass
    return path


def programme_of(build, seconds, seed=1):
    """Music-like audio, made once, in the page cache."""
    folder = build / "programmes"
    folder.mkdir(exist_ok=True)
    path = folder / f"{seconds}s_{seed}.wav"
    if not path.exists():
        unfinished = path.with_suffix(".unfinished")
        subprocess.run([build / "bin" / "make_programme", unfinished, str(seconds), str(seed)], check=True)
        unfinished.rename(path)
    return into_page_cache(path)


def options_of(description, rounds, **others):
    """The build folder, `--rounds`, and more numbers and texts by their names with their defaults."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("build", type=Path)
    for name, default in {"rounds": rounds, **others}.items():
        parser.add_argument("--" + name.replace("_", "-"), type=type(default), default=default)
    options = parser.parse_args()
    options.orvane = options.build / "bin" / "orvane"
    return options
