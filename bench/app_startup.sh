#!/usr/bin/env bash
# From launching sylvora to the first sound of its world reaching a PulseAudio null sink, on a
# private X server, cache warm (one unmeasured launch first), each launch with fresh settings.
#   default      a tone world named on the command line (new to it, so its Get Info window opens too)
#   --first-run  no argument at all, as a new user's first launch: the bundled example world plays
#   --gone-worlds deleted|moved|restored
#                the tone world, with settings that know 200 worlds gone that way in a home folder of
#                100,000 files (made by alias_bench; SYLVORA_BENCH_DIR chooses where)
# The sink's monitor is read in 5-ms blocks while the application starts; the time is taken when
# the first block with sound arrives (above -30 dBFS for the tone; above -60 dBFS for the bundled
# world, which fades in and which the null sink otherwise keeps at exact silence), so the
# recording's own latency is counted against us.
# Usage: bench/app_startup.sh [--first-run | --gone-worlds FATE] [build-dir] [launches, default 7]
set -euo pipefail
first_run=false gone=""
if [[ ${1:-} == --first-run ]]; then first_run=true; shift; fi
if [[ ${1:-} == --gone-worlds ]]; then gone=$2; shift 2; fi
source "$(dirname "$0")/world_common.sh"
source "$(dirname "$0")/app_common.sh"
launches=${2:-7}

if $first_run; then
  [[ -d "$build/examples/Evening Forest.sylvora" ]] || { echo "missing the example world: build the examples target" >&2; exit 1; }
  launch=("$app") threshold=33 what="first launch to first sound of the bundled world"
else
  sox -D -n -r 44100 -c 2 "$scratch/tone.flac" synth 30 sine 440 vol 0.5 2> /dev/null
  "$synth" assemble "$scratch/Tone.sylvora" --name "Tone" --loop "$scratch/tone.flac"
  launch=("$app" "$scratch/Tone.sylvora") threshold=1036 what="launch to first sound"
fi
if [[ -n $gone ]]; then
  home=$("$build/bench/alias_bench" --prepare-gone-worlds "$gone")
  cleanups+=("rm -rf '$home'")
  what+=" with 200 $gone known worlds"
  # Every launch starts from the settings as prepared: a launch tidies the list it read.
  fresh_settings() {
    local dir
    dir=$(mktemp -d "$scratch/settings-XXXXXX")
    cp -r "$home/config" "$dir/config"
    export XDG_CONFIG_HOME="$dir/config" XDG_CACHE_HOME="$dir/cache"
  }
fi
start_pulse
start_x

first_sound() {  # prints seconds from launch to the first block with sound
  python3 - "$threshold" "${launch[@]}" << 'PY'
import array, os, signal, subprocess, sys, time
recorder = subprocess.Popen(["parec", "-d", "sylvora_bench.monitor", "--raw", "--format=s16le",
                             "--rate=48000", "--channels=2", "--latency-msec=5"],
                            stdout=subprocess.PIPE, bufsize=0)
block = 48 * 5 * 4  # 5 ms of 16-bit stereo
def read_block():
    data = b""
    while len(data) < block:
        more = recorder.stdout.read(block - len(data))
        if not more:
            sys.exit("the recorder stopped")
        data += more
    return array.array("h", data)
for _ in range(40):  # 0.2 s of silence first: the recorder is streaming
    read_block()
threshold = int(sys.argv[1])
launched = time.monotonic()
app = subprocess.Popen(sys.argv[2:], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
heard = None
while time.monotonic() - launched < 10:
    if max(abs(s) for s in read_block()) > threshold:
        heard = time.monotonic() - launched
        break
time.sleep(0.3)
app.send_signal(signal.SIGTERM)
app.wait()
recorder.terminate()
print(f"{heard:.3f}" if heard is not None else "never")
PY
}

fresh_settings
warm=$(first_sound)
echo "warm-up launch: $warm s"
times=()
for ((i = 1; i <= launches; i++)); do
  fresh_settings
  times+=("$(first_sound)")
  echo "launch $i: ${times[-1]} s"
done
sorted=($(printf '%s\n' "${times[@]}" | sort -g))
echo "$what over $launches warm launches: least ${sorted[0]} s, median ${sorted[$((launches / 2))]} s, most ${sorted[-1]} s"
verdict=ok
[[ ${sorted[-1]} != never ]] && (($(echo "${sorted[-1]} < 1.0" | bc))) || verdict="NOT under 1 s every time"
echo "verdict: $verdict"
