#!/usr/bin/env bash
# How soon a player is heard again when its sound server comes back: a world of one 1 kHz tone
# loop played by sylvora-cli (and by the desktop application under Xvfb), the private PulseAudio
# server killed (SIGKILL) under it, left away for a while, and started again. From the moment the
# new server answers, its sink's monitor is recorded in 5 ms blocks (first_sound_bench); the figure
# is the time from that moment to the arrival of the first block of the tone, so it errs long by a
# block and the monitor's latency, which a stream of silence (pacat, 20 ms latency) keeps short.
# The same measure of pacat playing the tone from the server's return ("reference") shows what the
# private server and its monitor add to any client.
# Usage: bench/server_return.sh [build-dir] [rounds, default 5] [seconds away, default 3]
#        (build the sylvora-cli, first_sound_bench, examplesynth and sylvora targets first; without
#        sylvora, the CLI only)
set -euo pipefail
source "$(dirname "$0")/world_common.sh"
rounds=${2:-5}
away=${3:-3}

sox -D -n -r 48000 -c 2 "$scratch/tone.flac" synth 20 sine 1000 vol 0.5 2> /dev/null
"$synth" assemble "$scratch/Tone.sylvora" --name "Tone" --crossfade 0 --loop "$scratch/tone.flac" > /dev/null
start_pulse

# One round: the server killed, away for $away s, started again; sets $figure to the seconds from
# the moment it answers to the first sound read from its sink's monitor.
figure=""
one_return() {  # one_return [reference]: with "reference", pacat plays the tone from the return on
  kill -KILL "$pulse_pid"
  wait "$pulse_pid" 2> /dev/null || true
  sleep "$away"
  start_pulse
  local back heard
  back=$(now)
  pacat --raw --format=s16le --rate=48000 --channels=2 --latency-msec=20 < /dev/zero &
  local keeper=$! reference=""
  if [[ $1 == reference ]]; then
    sox -D "$scratch/tone.flac" -t raw -e signed -b 16 - 2> /dev/null |
      pacat --raw --format=s16le --rate=48000 --channels=2 --latency-msec=20 &
    reference=$!
  fi
  heard=$("$build/bench/first_sound_bench" sylvora_bench.monitor 0.1 10)
  kill -INT "$keeper" $reference
  wait "$keeper" $reference 2> /dev/null || true
  if [[ $heard == none ]]; then
    figure=none
  else
    figure=$(printf '%.3f' "$(echo "$heard - $back" | bc)")
  fi
}

# measure NAME COMMAND...: runs the player, then $rounds returns of the server under it.
measure() {
  local name=$1
  shift
  local pid=""
  if [[ $name != reference ]]; then
    "$@" > "$scratch/$name.out" 2>&1 &
    pid=$!
  fi
  sleep 3
  local round figures=()
  for ((round = 1; round <= rounds; round++)); do
    one_return "$name"
    figures+=("$figure")
    sleep 1
  done
  if [[ -n $pid ]]; then
    kill -INT "$pid" 2> /dev/null || kill -TERM "$pid" 2> /dev/null || true
    wait "$pid" 2> /dev/null || true
  fi
  echo "$name: seconds from the server's return to the tone, each round: ${figures[*]}"
  echo "  worst: $(printf '%s\n' "${figures[@]}" | sort -g | tail -n 1) s"
}

# What the recording itself takes: pacat (20 ms latency) started with the tone at the server's return.
measure reference
measure sylvora-cli "$cli" play "$scratch/Tone.sylvora"
app="$build/src/app/sylvora"
if [[ -x $app ]]; then
  source "$(dirname "$0")/app_common.sh"
  start_x
  fresh_settings
  measure sylvora "$app" "$scratch/Tone.sylvora"
fi
