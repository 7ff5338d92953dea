#!/usr/bin/env bash
# Offline render speed of a world of 20 loop sounds and 30 environment sounds (44.1 kHz FLAC and
# Ogg Vorbis, so the resampler is on) into a 48 kHz FLAC file, beside `sox -m` mixing two of its
# loop files into the same format. Rounds are interleaved and the least time of each counts.
# Usage: bench/world_render_speed.sh [build-dir] [rounds, default 3] [render seconds, default 600]
set -euo pipefail
source "$(dirname "$0")/world_common.sh"
rounds=${2:-3}
output_seconds=${3:-600}

sounds="$scratch/sounds"
mkdir -p "$sounds"
loops=()
for ((i = 1; i <= 20; i++)); do
  ext=$([[ $((i % 2)) -eq 0 ]] && echo ogg || echo flac)
  seconds=$((40 + i * 3))
  noise=$([[ $((i % 3)) -eq 0 ]] && echo brownnoise || echo pinknoise)
  sox -D -n -r 44100 -c 2 "$sounds/loop$i.$ext" synth "$seconds" "$noise" vol 0.2 2> /dev/null
  loops+=(--loop "$sounds/loop$i.$ext")
done
environment=()
for ((i = 1; i <= 30; i++)); do
  ext=$([[ $((i % 2)) -eq 0 ]] && echo ogg || echo flac)
  sox -D -n -r 44100 -c 2 "$sounds/env$i.$ext" synth "$((1 + i % 4))" sine "$((300 + 40 * i))" fade 0.05 0 0.3 vol 0.2 2> /dev/null
  environment+=(--environment "$sounds/env$i.$ext")
done
world="$scratch/Twenty Loops.sylvora"
"$synth" assemble "$world" --name "Twenty Loops" "${loops[@]}" "${environment[@]}" --interval 5:20
counts=$("$cli" info "$world" --json |
  python3 -c 'import json,sys; w=json.load(sys.stdin); print(w["status"], len(w["loop_sounds"]), len(w["environment_sounds"]))')
[[ $counts == "0 20 30" ]] || { echo "the bench world did not load whole (status, loops, environment: $counts)" >&2; exit 1; }

# `sox -m` of the two first loop files, 43 and 46 s long: its output is as long as the longer one.
sox_seconds=$(soxi -D "$sounds/loop2.ogg")

sylvora=(); soxmix=()
for ((round = 1; round <= rounds; round++)); do
  t0=$(now)
  "$cli" render "$world" -o "$scratch/world.flac" --duration "$output_seconds" --rate 48000 --seed "$round" > /dev/null
  t1=$(now)
  sox -D -m "$sounds/loop1.flac" "$sounds/loop2.ogg" -r 48000 -b 24 "$scratch/mix.flac" 2> /dev/null
  t2=$(now)
  sylvora+=("$(echo "scale=6; ($t1 - $t0) / $output_seconds" | bc)")
  soxmix+=("$(echo "scale=6; ($t2 - $t1) / $sox_seconds" | bc)")
  echo "round $round: sylvora-cli render $(echo "scale=3; $t1 - $t0" | bc) s for $output_seconds s;" \
       "sox -m $(echo "scale=3; $t2 - $t1" | bc) s for $sox_seconds s"
done
best_sylvora=$(least "${sylvora[@]}")
best_sox=$(least "${soxmix[@]}")
echo "least of $rounds rounds, seconds of work per second of output:"
echo "  sylvora-cli render (20 loops, 30 environment sounds): $best_sylvora ($(echo "scale=0; 1 / $best_sylvora" | bc)x real time)"
echo "  sox -m of two loop files:                           $best_sox ($(echo "scale=0; 1 / $best_sox" | bc)x real time)"
verdict=ok
(($(echo "1 / $best_sylvora >= 100" | bc))) || verdict="NOT 100x real time"
(($(echo "$best_sylvora <= $best_sox" | bc))) || verdict="$verdict; slower per output second than sox -m"
echo "verdict: $verdict"
