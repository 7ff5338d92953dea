#!/usr/bin/env bash
# Underrun soak of the audio engine: 100 streamed voices at real-time pace while another process
# keeps one core busy. Usage: bench/audio_soak.sh [build-dir] [seconds, default 600]
set -euo pipefail
build=${1:-build}
seconds=${2:-600}
yes > /dev/null &
busy=$!
trap 'kill "$busy" 2>/dev/null || true' EXIT
SYLVORA_SOAK_SECONDS=$seconds "$build/bench/audio_soak_bench" --benchmark_counters_tabular=true
