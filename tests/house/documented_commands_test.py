#!/usr/bin/env python3
"""Runs every `orvane` command that a document shows, in the order in which they stand there.

usage: documented_commands_test.py SOURCE_FOLDER PROGRAM
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile

# Wrong figures are other tests' business: here a command has to do what it says it does.
DONE, TARGET_MISSED = 0, 3


def run(command, folder, environment=None):
    return subprocess.run(["bash", "-c", command], cwd=folder, env=environment, text=True,
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=300)


def make(folder, command):
    end = run(command, folder)
    if end.returncode != 0:
        sys.exit(f"cannot make the sounds: {command}\n{end.stderr}")


def documented_targets(source):
    text = (source / "docs" / "formats.md").read_text()
    return re.search(r"## Delivery targets.*?```json\n(.*?)```", text, re.DOTALL).group(1)


def make_sounds(folder, source):
    """The files that the documents name."""
    (folder / "house.json").write_text(documented_targets(source))
    make(folder, "sox -n -r 48000 -b 16 -c 2 song.wav synth 4 pinknoise vol 0.3")
    for name in ("mix.wav", "spot.wav", "stems.wav", "album.wav", "good.wav", "song2.wav"):
        make(folder, f"cp song.wav {name}")
    make(folder, "sox -n -r 48000 -b 16 film.wav synth 130 sine 440 vol 0.1")
    make(folder, "ffmpeg -v error -i song.wav -filter_complex channelsplit[l][r] -map [l] -map [r]"
                 " -c:a pcm_s16le film.mov")
    make(folder, "ffmpeg -v error -i song.wav song.flac")
    make(folder, "mkdir archive && cp song.flac archive && cp song.flac 01.flac && cp song.flac 02.flac")
    make(folder, "ffmpeg -v error -i song.wav -f ffmetadata -i <(printf "
                 "';FFMETADATA1\\n[CHAPTER]\\nTIMEBASE=1/1000\\nSTART=0\\nEND=4000\\ntitle=One\\n')"
                 " -map 0:a -map_chapters 1 -c:a aac -f mp4 book.m4b")
    (folder / "take.raw").write_bytes(bytes(512 + 6 * 48000))
    (folder / "stems.pcm").write_bytes(bytes(24 * 96000))
    (folder / "album.cue").write_text(
        'FILE "album.wav" WAVE\n  TRACK 01 AUDIO\n    TITLE "One"\n    INDEX 01 00:00:00\n')
    (folder / "analysis.json").write_text(json.dumps({
        "source": "test", "analysedAt": "2024-01-31T12:00:00Z", "duration": 4.0,
        "stems": [], "beats": [], "bars": [], "sections": [{"start": 0, "end": 4}],
        "segments": [], "phrases": [], "keys": [], "paces": []}))


def commands_of(document):
    for block in re.findall(r"```sh\n(.*?)```", document.read_text(), re.DOTALL):
        for line in block.splitlines():
            command = re.sub(r"\s{2,}#.*", "", line).replace("FILE…", "good.wav")
            command = re.sub(r"\bFILE\b", "good.wav", command)
            if re.search(r"(^|\| )orvane ", command):
                yield command


def main():
    source, program = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]).resolve()
    documents = [source / "README.md", *sorted((source / "docs").glob("*.md"))]
    failures, count = [], 0
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        make_sounds(folder, source)
        environment = {"PATH": f"{program.parent}:/usr/local/bin:/usr/bin:/bin", "HOME": name,
                       "TMPDIR": name}
        for document in documents:
            for command in commands_of(document):
                count += 1
                end = run(command, folder, environment)
                allowed = (DONE, TARGET_MISSED) if "--enforce" in command else (DONE,)
                if end.returncode not in allowed:
                    failures.append(f"{document.name}: {command}\n  exit code {end.returncode}: "
                                    f"{end.stderr.strip()}")
    if count < 20:
        failures.append(f"only {count} commands were found in the documents")
    print(f"{count} commands, {len(failures)} failures", *failures, sep="\n")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
