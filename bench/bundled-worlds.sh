#!/usr/bin/env bash
# Measures the bundled worlds as a listener would meet them: how long the synthesizer takes to make
# all of them, how much room they take, and, on a render of each through sylvora-cli, the integrated
# loudness and true peak (EBU R128, ffmpeg's ebur128 filter) and a spectrogram (sox) to look at.
# Usage: bench/bundled-worlds.sh [BUILD_DIR] [DURATION] [SPECTROGRAM_FOLDER]
#   defaults: build, 10m, none (spectrograms are drawn only when a folder is given)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
duration=${2:-10m}
pictures=${3:-}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

start=$(date +%s%N)
"$build/tools/examplesynth/examplesynth" example "$scratch/worlds" >/dev/null
echo "synthesis of all worlds: $((($(date +%s%N) - start) / 1000000)) ms"
echo "size of all worlds: $(du -sk "$scratch/worlds" | cut -f1) KiB"

printf '%-16s %10s %10s %10s\n' world "I (LUFS)" "LRA (LU)" "peak (dBTP)"
for package in "$scratch"/worlds/*.sylvora; do
  name=$(basename "$package" .sylvora)
  "$build/src/cli/sylvora-cli" render "$package" -o "$scratch/render.flac" --duration "$duration" --seed 7 >/dev/null
  summary=$(ffmpeg -hide_banner -nostats -i "$scratch/render.flac" -af ebur128=peak=true -f null - 2>&1 | sed -n '/Summary:/,$p')
  loudness=$(awk '/ I:/ {print $2}' <<<"$summary")
  range=$(awk '/LRA:/ {print $2}' <<<"$summary" | head -n 1)
  peak=$(awk '/Peak:/ {print $2}' <<<"$summary")
  printf '%-16s %10s %10s %10s\n' "$name" "$loudness" "$range" "$peak"
  if [[ -n $pictures ]]; then
    mkdir -p "$pictures"
    sox "$scratch/render.flac" -n remix - rate 22050 spectrogram -x 1200 -y 360 -z 90 -t "$name, $duration" \
        -o "$pictures/spectrogram-$(echo "$name" | tr 'A-Z ' 'a-z-').png"
  fi
done
