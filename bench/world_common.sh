# Shared by the world-level figure scripts (sourced, not run): a scratch folder under /tmp, the
# built programs, CPU and memory readings from /proc, and a private PulseAudio server.

build=$(cd "${1:-build}" && pwd)
e2e_scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")/../tests/e2e" && pwd)
cli="$build/src/cli/sylvora-cli"
synth="$build/tools/examplesynth/examplesynth"
for program in "$cli" "$synth"; do
  [[ -x $program ]] || { echo "missing $program: build the sylvora-cli and examplesynth targets first" >&2; exit 1; }
done
scratch=$(mktemp -d /tmp/sylvora-bench-XXXXXX)
cleanups=()
cleanup() {
  local i
  for ((i = ${#cleanups[@]} - 1; i >= 0; i--)); do eval "${cleanups[i]}" || true; done
  rm -rf "$scratch"
}
trap cleanup EXIT

# CPU seconds (user + system) a process has used so far.
cpu_seconds() {
  local fields
  read -ra fields < <(sed 's/^.*) //' "/proc/$1/stat")
  # After the command name: field 14 (utime) and 15 (stime) of stat are at 11 and 12 here.
  echo "scale=4; (${fields[11]} + ${fields[12]}) / $(getconf CLK_TCK)" | bc
}

# Resident memory of a process in kB.
rss_kb() { awk '/^VmRSS:/ { print $2 }' "/proc/$1/status"; }

now() { date +%s.%N; }

# Starts a private PulseAudio daemon with a null sink "sylvora_bench" and exports what clients
# need to reach it.
start_pulse() {
  local dir="$scratch/pulse"
  "$e2e_scripts/private-pulse.sh" "$dir" sylvora_bench 2> "$scratch/pulse.log" &
  pulse_pid=$!
  cleanups+=("kill $pulse_pid 2>/dev/null; wait $pulse_pid 2>/dev/null")
  # The clients share the daemon's folders, so that none of them writes to the user's.
  export XDG_RUNTIME_DIR="$dir/run" PULSE_RUNTIME_PATH="$dir/run/pulse" PULSE_STATE_PATH="$dir/state"
  export HOME="$dir/home" PULSE_SERVER="unix:$dir/run/native" PULSE_SINK=sylvora_bench
  local tries=0
  until pactl info > /dev/null 2>&1; do
    kill -0 "$pulse_pid" 2>/dev/null || { cat "$scratch/pulse.log" >&2; echo "pulseaudio did not start" >&2; exit 1; }
    ((++tries < 200)) || { echo "pulseaudio does not answer" >&2; exit 1; }
    sleep 0.05
  done
}

# CPU % of one core that process PID used over one round of $seconds (set by the script).
cpu_over_round() {
  local c0 t0 c1 t1
  c0=$(cpu_seconds "$1"); t0=$(now)
  sleep "$seconds"
  c1=$(cpu_seconds "$1"); t1=$(now)
  echo "scale=3; 100 * ($c1 - $c0) / ($t1 - $t0)" | bc
}

# The least of a list of numbers.
least() { printf '%s\n' "$@" | sort -g | head -n 1; }

# The world the playback figures share: two two-minute 44.1 kHz FLAC loops crossfading over 119 s,
# so the second loop joins one second in and both play and fade, tick by tick, for the whole measured
# time, as sox mixes both files all the time. Leaves the files in $scratch.
make_two_loops_world() {
  sox -D -n -r 44100 -c 2 "$scratch/brook.flac" synth 120 pinknoise vol 0.25 2> /dev/null
  sox -D -n -r 44100 -c 2 "$scratch/breeze.flac" synth 120 brownnoise vol 0.25 2> /dev/null
  "$synth" assemble "$scratch/Two Loops.sylvora" --name "Two Loops" --crossfade 119 \
    --loop "$scratch/brook.flac" --loop "$scratch/breeze.flac" > /dev/null
}
