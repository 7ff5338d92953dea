#!/usr/bin/env bash
# Underruns of steady play through the native PulseAudio output while two other processes keep
# both cores busy: two two-minute 44.1 kHz FLAC loops, restarted as they end, into a private
# null sink; then the volume-change timings of output_latency_bench.
# Usage: bench/playback_soak.sh [build-dir] [seconds, default 600]
set -euo pipefail
source "$(dirname "$0")/world_common.sh"
seconds=${2:-600}
sox -D -n -r 44100 -c 2 "$scratch/brook.flac" synth 120 pinknoise vol 0.25 2> /dev/null
sox -D -n -r 44100 -c 2 "$scratch/breeze.flac" synth 120 brownnoise vol 0.25 2> /dev/null
start_pulse
for core in 1 2; do
  yes > /dev/null &
  cleanups+=("kill $!")
done
"$build/bench/output_latency_bench" "$seconds" "$scratch/brook.flac" "$scratch/breeze.flac"
