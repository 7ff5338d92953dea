#!/usr/bin/env bash
# CPU cost of playing a world of two crossfading two-minute loops (44.1 kHz FLAC) through a
# PulseAudio null sink, beside sox's `play -m` mixing the same two files into the same server,
# and the same world on the null output (sox reaches the server through ALSA's PulseAudio plugin).
# Sylvora plays through its native PulseAudio output; bench/playback_cost.sh adds GStreamer, a
# cgroup for CPU and wake-ups per thread.
# Rounds are interleaved (each program alone, 2 s to settle, then measured), and the least round of
# each counts: noise on a shared machine only adds.
# Usage: bench/world_playback_cpu.sh [build-dir] [rounds, default 4] [seconds per round, default 12]
set -euo pipefail
source "$(dirname "$0")/world_common.sh"
rounds=${2:-4}
seconds=${3:-12}

make_two_loops_world
start_pulse

measure() {  # measure NAME COMMAND...: starts the command, returns its CPU % over one round
  local name=$1
  shift
  "$@" > /dev/null 2>&1 &
  local pid=$!
  sleep 2
  local c0 t0 c1 t1
  c0=$(cpu_seconds "$pid"); t0=$(now)
  sleep "$seconds"
  c1=$(cpu_seconds "$pid"); t1=$(now)
  kill -INT "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
  echo "scale=3; 100 * ($c1 - $c0) / ($t1 - $t0)" | bc
}

sylvora=(); sox_play=(); null=()
for ((round = 1; round <= rounds; round++)); do
  sylvora+=("$(SDL_AUDIODRIVER=pulseaudio measure sylvora "$cli" play "$scratch/Two Loops.sylvora")")
  sox_play+=("$(measure sox play -q -m "$scratch/brook.flac" "$scratch/breeze.flac")")
  null+=("$(PULSE_SERVER=unix:/nonexistent SDL_AUDIODRIVER=sylvora-none measure null "$cli" play "$scratch/Two Loops.sylvora")")
  echo "round $round: sylvora-cli (PulseAudio) ${sylvora[-1]}%  play -m ${sox_play[-1]}%  sylvora-cli (null output) ${null[-1]}%"
done
best_sylvora=$(least "${sylvora[@]}")
best_sox=$(least "${sox_play[@]}")
best_null=$(least "${null[@]}")
echo "least of $rounds rounds of ${seconds} s, % of one core:"
echo "  sylvora-cli play, PulseAudio null sink: $best_sylvora"
echo "  play -m (sox), same files, same sink:   $best_sox"
echo "  sylvora-cli play, null output:          $best_null"
verdict=ok
(($(echo "$best_sylvora < 1.0" | bc))) || verdict="NOT under 1% of a core"
(($(echo "$best_sylvora <= $best_sox" | bc))) || verdict="$verdict; costs more than play -m"
echo "verdict: $verdict"
