#!/usr/bin/env bash
# Resident memory of sylvora-cli playing (null output) a world of 50 loop sounds of 5 minutes each
# and 50 environment sounds, over the same program playing an empty world. Long sounds are
# streamed, so the big world should cost little more than its bookkeeping.
# Usage: bench/world_memory.sh [build-dir] [seconds of play before each reading, default 20]
set -euo pipefail
source "$(dirname "$0")/world_common.sh"
seconds=${2:-20}

sounds="$scratch/sounds"
mkdir -p "$sounds"
sox -D -n -r 44100 -c 2 "$sounds/long.flac" synth 300 pinknoise vol 0.2 2> /dev/null
loops=()
for ((i = 1; i <= 50; i++)); do
  cp "$sounds/long.flac" "$sounds/loop$i.flac"  # distinct files: a world holds each file once
  loops+=(--loop "$sounds/loop$i.flac")
done
rm "$sounds/long.flac"
environment=()
for ((i = 1; i <= 50; i++)); do
  sox -D -n -r 44100 -c 2 "$sounds/env$i.flac" synth 1 sine "$((300 + 20 * i))" fade 0.05 0 0.3 vol 0.2 2> /dev/null
  environment+=(--environment "$sounds/env$i.flac")
done
# Short intervals, so environment sounds come and go while memory is read.
"$synth" assemble "$scratch/Fifty.sylvora" --name Fifty "${loops[@]}" "${environment[@]}" --interval 2:6
rm -rf "$sounds"
"$synth" assemble "$scratch/Empty.sylvora" --name Empty
counts=$("$cli" info "$scratch/Fifty.sylvora" --json |
  python3 -c 'import json,sys; w=json.load(sys.stdin); print(w["status"], len(w["loop_sounds"]), len(w["environment_sounds"]))')
[[ $counts == "0 50 50" ]] || { echo "the bench world did not load whole (status, loops, environment: $counts)" >&2; exit 1; }

# The highest resident size while playing: read every half second after the world has loaded.
peak_rss() {
  PULSE_SERVER=unix:/nonexistent SDL_AUDIODRIVER=sylvora-none "$cli" play "$1" > /dev/null 2>&1 &
  local pid=$! peak=0 rss
  cleanups+=("kill $pid 2>/dev/null")
  local end=$(($(date +%s) + seconds))
  while (($(date +%s) < end)); do
    rss=$(rss_kb "$pid")
    ((rss > peak)) && peak=$rss
    sleep 0.5
  done
  kill -INT "$pid"
  wait "$pid" || true
  echo "$peak"
}

fifty=$(peak_rss "$scratch/Fifty.sylvora")
empty=$(peak_rss "$scratch/Empty.sylvora")
added=$(((fifty - empty) / 1024))
echo "peak resident memory over $seconds s of play (null output):"
echo "  empty world:                                   $((empty / 1024)) MB"
echo "  50 loops of 5 min + 50 environment sounds:     $((fifty / 1024)) MB"
echo "  added by the world:                            $added MB (limit 64 MB)"
((added <= 64)) && echo "verdict: ok" || echo "verdict: MORE than 64 MB"
