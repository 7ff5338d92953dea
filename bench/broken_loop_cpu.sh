#!/usr/bin/env bash
# What a loop sound whose file breaks under a playing world costs: sylvora-cli plays a world of two
# ten-second loops (44.1 kHz FLAC, crossfade 0, so each turn reads a file afresh) into a private
# PulseAudio null sink; its CPU is measured over a round with both files intact, then one file is
# replaced by garbage (renamed over it, as a careless copy would), and once the player says it
# cannot read it, measured again over a round of the same length. Rounds alternate on fresh players, and
# the least round of each kind counts: noise on a shared machine only adds.
# Usage: bench/broken_loop_cpu.sh [build-dir] [rounds, default 3] [seconds per round, default 20]
set -euo pipefail
source "$(dirname "$0")/world_common.sh"
rounds=${2:-3}
seconds=${3:-20}

sox -D -n -r 44100 -c 2 "$scratch/brook.flac" synth 10 pinknoise vol 0.25 2> /dev/null
sox -D -n -r 44100 -c 2 "$scratch/breeze.flac" synth 10 brownnoise vol 0.25 2> /dev/null
head -c 300000 /dev/urandom > "$scratch/garbage"
start_pulse

one_round() {  # one_round intact|broken: prints the CPU %
  local world="$scratch/Two Loops $1.sylvora"
  rm -rf "$world"
  "$synth" assemble "$world" --name "Two Loops" --crossfade 0 \
    --loop "$scratch/brook.flac" --loop "$scratch/breeze.flac" > /dev/null
  "$cli" play "$world" > "$scratch/status.$1" 2>&1 &
  local pid=$!
  sleep 2
  if [[ $1 == broken ]]; then
    cp "$scratch/garbage" "$world/Loop Sounds/breeze.flac.new"
    mv "$world/Loop Sounds/breeze.flac.new" "$world/Loop Sounds/breeze.flac"
    # Measured only once the broken sound has been picked (the draw decides when), has failed once
    # and sits out, with the one search for where its file went behind it.
    local waited=0
    until grep -q 'cannot read' "$scratch/status.$1" 2> /dev/null; do
      sleep 1
      if ((++waited > 180)); then echo "the broken sound was never tried" >&2; kill -INT "$pid"; return 1; fi
    done
    sleep 2
  fi
  cpu_over_round "$pid"
  kill -INT "$pid"
  wait "$pid" 2> /dev/null || true
}

intact=(); broken=()
for ((round = 1; round <= rounds; round++)); do
  intact+=("$(one_round intact)")
  broken+=("$(one_round broken)")
  echo "round $round: intact ${intact[-1]}%  one loop broken ${broken[-1]}%"
done
echo "least of $rounds rounds of ${seconds} s, % of one core:"
echo "  both loops intact:     $(least "${intact[@]}")"
echo "  one loop file garbage: $(least "${broken[@]}")"
echo "  status line while broken: $(grep -o 'cannot read: [^|]*' "$scratch/status.broken" | tail -n 1)"
