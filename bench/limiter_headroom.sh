#!/usr/bin/env bash
# Headroom: a loud world (two loops recorded at -0.1 dBFS and a short environment sound at -0.5
# dBFS, made with sox) rendered for 60 s by sylvora-cli; counts the samples at or beyond -0.2 dBFS
# (a clip would be a run of them at 1.0). Then a quiet world, one -6 dBFS sine loop, rendered
# alone: its level out against its level in, in dB.
# Usage: bench/limiter_headroom.sh [build-dir]
set -euo pipefail
build=$(realpath "${1:-build}")
cli="$build/src/cli/sylvora-cli"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$scratch/Loud" "$scratch/Quiet"
sox -n -r 48000 -c 2 -b 16 "$scratch/Loud/low hum.wav" synth 40 sine 220 gain -0.1
sox -n -r 48000 -c 2 -b 16 "$scratch/Loud/high hum.wav" synth 37 sine 330 gain -0.1
sox -n -r 48000 -c 2 -b 16 "$scratch/Loud/knock.wav" synth 2 sine 440 gain -0.5
sox -n -r 48000 -c 2 -b 16 "$scratch/Quiet/tone.wav" synth 40 sine 500 gain -6.0206
"$cli" make "$scratch/Loud" -o "$scratch/Loud.sylvora" > /dev/null
"$cli" make "$scratch/Quiet" -o "$scratch/Quiet.sylvora" > /dev/null
"$cli" render "$scratch/Loud.sylvora" -o "$scratch/loud.wav" --duration 60 --seed 1 > /dev/null 2>&1
"$cli" render "$scratch/Quiet.sylvora" -o "$scratch/quiet.wav" --duration 20 --seed 1 > /dev/null 2>&1
sox -V1 "$scratch/loud.wav" -t f32 "$scratch/loud.f32"
sox -V1 "$scratch/quiet.wav" -t f32 "$scratch/quiet.f32"
python3 - "$scratch/loud.f32" "$scratch/quiet.f32" <<'PY'
import array, math, sys
def samples(path):
    a = array.array('f')
    with open(path, 'rb') as f:
        a.frombytes(f.read())
    return a
loud = samples(sys.argv[1])
rail = 10 ** (-0.2 / 20)
peak = max(abs(v) for v in loud)
print('loud world, 60 s: %d samples at or beyond -0.2 dBFS of %d; peak %.2f dBFS'
      % (sum(1 for v in loud if abs(v) >= rail), len(loud), 20 * math.log10(peak)))
quiet = samples(sys.argv[2])[2 * 48000 * 5:2 * 48000 * 15]
rms = math.sqrt(sum(v * v for v in quiet) / len(quiet))
print('quiet world (-6.02 dBFS sine): level change %+.4f dB' % (20 * math.log10(rms * math.sqrt(2) / 0.5)))
PY
