#!/usr/bin/env bash
# Loop handovers in every format: a one-loop world of a 1 kHz sine of 503 whole cycles (48 kHz,
# off the timer's grid) at crossfade 0, made at run time by FFmpeg's own encoders (libmp3lame,
# libvorbis, aac, libopus) and libsndfile (WAV, FLAC), rendered for 4 s. For each format: the
# worst step at a seam in dB below the tone (the residual x[n] - 2cos(w)x[n-1] + x[n-2], zero for
# a pure sine); beside it the step of the same file decoded by the project's decoder and joined end
# to start offline, with no player between, and the difference (0 dB: the player adds nothing, the
# step is the codec's rendering of the sound's edges); the same measure in the middle of the sound
# (the codec's own noise), the silence at the seams, how far the instances differ from the first
# (0: sample-exact handovers) and how far the output differs from the decoded file played over and over.
# Usage: bench/handover_seams.sh [build-dir]   (build the audio_tests target first)
set -euo pipefail
build=${1:-build}
"$build/tests/audio/audio_tests" --gtest_filter='EveryFormat/LoopHandover.*' | grep '^handover'
