#!/usr/bin/env bash
# What steady play costs: a world of two crossfading two-minute loops (44.1 kHz FLAC) played by
# sylvora-cli through a private PulseAudio null sink, beside sox's `play -m` of the same two files
# through its native PulseAudio driver and a GStreamer audiomixer pipeline into the same sink.
# Rounds are interleaved (each program alone, 2 s to settle, then measured), and the least round
# of each counts: noise on a shared machine only adds. CPU is read from a cpuacct cgroup of the
# program's own (nanoseconds; cgroup v2's cpu.stat in microseconds where v1 is missing), and for
# Sylvora the wake-ups per second of each thread (voluntary context switches).
# Then the volume-change timings of output_latency_bench (build the sylvora-cli, examplesynth and
# output_latency_bench targets first).
# Usage: bench/playback_cost.sh [build-dir] [rounds, default 5] [seconds per round, default 12]
# Run as root (the cgroup, and the packages below if missing).
set -euo pipefail

# sox's native PulseAudio driver and GStreamer's mixer are only needed here, not by Sylvora.
bench_packages=(libsox-fmt-pulse gstreamer1.0-tools gstreamer1.0-plugins-base gstreamer1.0-plugins-good
                gstreamer1.0-pulseaudio bc)
missing=()
for p in "${bench_packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" > /dev/null
fi

source "$(dirname "$0")/world_common.sh"
rounds=${2:-5}
seconds=${3:-12}

make_two_loops_world
start_pulse

if [[ -d /sys/fs/cgroup/cpuacct ]]; then
  group=/sys/fs/cgroup/cpuacct/sylvora-bench-$$
  mkdir "$group"
  cpu_ns() { cat "$group/cpuacct.usage"; }
  cpu_source="cgroup v1 cpuacct.usage (ns)"
else
  group=/sys/fs/cgroup/sylvora-bench-$$
  mkdir "$group"
  cpu_ns() { awk '/^usage_usec/ { print $2 * 1000 }' "$group/cpu.stat"; }
  cpu_source="cgroup v2 cpu.stat usage_usec"
fi
cleanups+=("rmdir $group")

# Voluntary context switches of every thread of a process, as "name tid count" lines.
switches() {
  local task
  for task in /proc/"$1"/task/*; do
    echo "$(cat "$task/comm") ${task##*/} $(awk '/^voluntary_ctxt_switches/ { print $2 }' "$task/status")"
  done 2> /dev/null
}

wakeups=""
measure() {  # measure COMMAND...: runs it in the cgroup, prints its CPU % of one core over a round
  (echo "$BASHPID" > "$group/cgroup.procs" && exec "$@" > /dev/null 2>&1) &
  local pid=$!
  sleep 2
  local c0 t0 c1 t1 before after
  before=$(switches "$pid")
  c0=$(cpu_ns); t0=$(now)
  sleep "$seconds"
  c1=$(cpu_ns); t1=$(now)
  after=$(switches "$pid")
  kill -INT "$pid" 2> /dev/null || true
  wait "$pid" 2> /dev/null || true
  wakeups=$(join -1 2 -2 2 <(sort -k2 <<< "$before") <(sort -k2 <<< "$after") |
    awk -v s="$(echo "$t1 - $t0" | bc)" '{ n = ($5 - $3) / s; total += n; printf "%s %.1f/s  ", $2, n }
                                         END { printf "= %.1f/s", total }')
  echo "scale=3; 100 * ($c1 - $c0) / (($t1 - $t0) * 1000000000)" | bc
}

gst_mix=(gst-launch-1.0 -q audiomixer name=mix ! audioconvert ! pulsesink
         filesrc location="$scratch/brook.flac" ! flacparse ! flacdec ! audioconvert ! mix.
         filesrc location="$scratch/breeze.flac" ! flacparse ! flacdec ! audioconvert ! mix.)
sylvora=(); sox_play=(); gst=()
for ((round = 1; round <= rounds; round++)); do
  sylvora+=("$(measure "$cli" play "$scratch/Two Loops.sylvora"; echo "$wakeups" > "$scratch/wakeups.$round")")
  sox_play+=("$(AUDIODRIVER=pulseaudio measure play -q -m "$scratch/brook.flac" "$scratch/breeze.flac")")
  gst+=("$(measure "${gst_mix[@]}")")
  echo "round $round: sylvora-cli ${sylvora[-1]}%  play -m ${sox_play[-1]}%  gst audiomixer ${gst[-1]}%"
  echo "  sylvora-cli wake-ups: $(cat "$scratch/wakeups.$round")"
done
best_sylvora=$(least "${sylvora[@]}")
best_sox=$(least "${sox_play[@]}")
best_gst=$(least "${gst[@]}")
ratio=$(echo "scale=3; $best_sylvora / $best_sox" | bc)
echo "least of $rounds rounds of ${seconds} s, % of one core, from $cpu_source:"
echo "  sylvora-cli play (native PulseAudio):   $best_sylvora  (${ratio}x play -m)"
echo "  play -m (sox, pulseaudio driver):       $best_sox"
echo "  gst-launch audiomixer -> pulsesink:     $best_gst"
wake_total=$(least $(sed 's/.*= \([0-9.]*\)\/s/\1/' "$scratch"/wakeups.*))
echo "  sylvora-cli wake-ups, whole process, least round: $wake_total/s"
# How soon a volume change is heard, in steady play and with low latency asked (after 10 s of play).
"$build/bench/output_latency_bench" 10 "$scratch/brook.flac" "$scratch/breeze.flac"
verdict=ok
(($(echo "$ratio <= 0.5" | bc))) || verdict="costs more than 0.5x play -m"
(($(echo "$wake_total < 30" | bc))) || verdict="$verdict; wakes 30 times a second or more"
echo "verdict: $verdict"
