#!/usr/bin/env bash
# demo.sh PROGRAM
# Makes a short programme (speech over music) in demo/, shows what PROGRAM can tell about it, and
# writes its reports.
set -euo pipefail

program=$1
root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." >/dev/null && pwd -P)
source "$root/scripts/common.sh"
requirePackages "${demoPackages[@]}"
mkdir -p "$root/demo"
cd "$root/demo"

# The music: a slow chord, its notes spread over left and right, swelling and fading.
makeMusic() {
  local left=(synth 24 pluck A2 synth 24 sine mix A3 synth 24 sine mix E4)
  local right=(synth 24 pluck E2 synth 24 sine mix C#4 synth 24 sine mix A4)
  sox -q -R -n -r 48000 -c 1 left.wav "${left[@]}" tremolo 0.2 40 gain -n -14
  sox -q -R -n -r 48000 -c 1 right.wav "${right[@]}" tremolo 0.25 40 gain -n -14
  sox -q -M left.wav right.wav music.wav fade t 1.5 24 3
}

makeSpeech() {
  espeak-ng -v en -s 150 -w voice.wav "This is Orvane. It measures the loudness of a programme,
    its true peak and its dynamics, and it tells what a file really holds, whatever its name says."
  sox -q voice.wav -r 48000 speech.wav gain -n -5 pad 3 remix 1 1
}

if [[ ! -f programme.wav ]]; then
  say "Making the demo programme …"
  makeMusic
  makeSpeech
  sox -q -R -m -v 1 music.wav -v 1 speech.wav -b 24 made.wav
  sox -q -R made.wav -b 16 -t raw -e signed -L headerless.raw
  sox -q -R made.wav -b 16 made.flac
  mv -f made.flac misnamed.mp3
  rm -f left.wav right.wav music.wav voice.wav speech.wav
  mv -f made.wav programme.wav
fi

printf '%s\n' start,name 0,Music 3,Speech 14,"Music again" >chapters.csv

show() {
  printf '\n$ orvane'
  printf ' %s' "$@"
  printf '\n'
  "$program" "$@"
}

# The one part that may be missing without the rest minding.
hasSpeechModel() { [[ $("$program" --version) == *"Silero"* ]]; }

show --version
show identify programme.wav misnamed.mp3
show raw guess headerless.raw --rate 48000
show analyze headerless.raw --raw s16le,48000,2
show analyze programme.wav misnamed.mp3 --json

speech=()
if hasSpeechModel; then
  speech=(--speech)
  show dialogue detect programme.wav
  show dialogue show programme.wav
fi
show analyze programme.wav "${speech[@]}" --targets spotify,apple-podcasts,ebu-r128 \
  --chapters chapters.csv --force \
  --html programme.html --csv programme.csv --report programme.report.json
# Of its own, because only PDF needs a browser; without one the program says what to install.
show report programme.report.json --pdf programme.pdf --force || rm -f programme.pdf

# Writing: a test signal, an edit into a new file, one into a copy of the programme itself, a take
# spliced in, and what all that made different.
show generate sine -o tone.wav --level -18 --duration 2 --force
show edit normalize --target -16 programme.wav -o louder.wav --then "fade out 22 24" --force
cp -f programme.wav mended.wav
show edit gain -6 mended.wav --from 3 --to 5 --in-place
show splice insert --at 1 programme.wav tone.wav -o spliced.wav --force
show diff programme.wav mended.wav

printf '\nThe reports are:\n'
for report in programme.html programme.pdf programme.csv programme.report.json; do
  [[ ! -f $report ]] || printf '  %s\n' "$PWD/$report"
done
printf '"./run --help" lists everything else.\n'
