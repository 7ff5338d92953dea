#!/usr/bin/env bash
# What the desktop application costs while a world plays: CPU with every window hidden, beside
# `sylvora-cli play` of the same world (two crossfading two-minute loops, as world_playback_cpu.sh),
# both into the same private PulseAudio null sink, rounds interleaved, the least round of each
# counting; then resident memory with the world playing and its Get Info window shown.
# The X server has no tray, and without a tray the application keeps one window up so it can always
# be quit; "hidden" is therefore the X server withdrawing every window of it (xdotool windowunmap),
# which is what a minimised or tray-only Sylvora looks like to Qt: nothing exposed, nothing painted.
# Usage: bench/app_playback_cpu.sh [build-dir] [rounds, default 4] [seconds per round, default 12]
set -euo pipefail
source "$(dirname "$0")/world_common.sh"
source "$(dirname "$0")/app_common.sh"
rounds=${2:-4}
seconds=${3:-12}

make_two_loops_world
start_pulse
start_x

hide_windows() {
  local window
  for window in $(xdotool search --all --onlyvisible --pid "$1" --name '' 2>/dev/null); do
    xdotool windowunmap "$window" 2>/dev/null || true
  done
}

app_round() {
  fresh_settings
  "$app" "$scratch/Two Loops.sylvora" > /dev/null 2>&1 &
  local pid=$!
  sleep 2
  hide_windows "$pid"
  local shown
  shown=$(xdotool search --all --onlyvisible --pid "$pid" --name '' 2>/dev/null | wc -l)
  [[ $shown == 0 ]] || echo "warning: $shown windows still shown" >&2
  sleep 1
  cpu_over_round "$pid"
  end_app "$pid"
}

cli_round() {
  "$cli" play "$scratch/Two Loops.sylvora" > /dev/null 2>&1 &
  local pid=$!
  sleep 3
  cpu_over_round "$pid"
  kill -INT "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
}

gui=(); cli_play=()
for ((round = 1; round <= rounds; round++)); do
  gui+=("$(app_round)")
  cli_play+=("$(cli_round)")
  echo "round $round: sylvora, windows hidden ${gui[-1]}%  sylvora-cli play ${cli_play[-1]}%"
done
best_gui=$(least "${gui[@]}")
best_cli=$(least "${cli_play[@]}")

# Memory: the world playing and its Get Info window up (a new world shows it by itself).
fresh_settings
"$app" "$scratch/Two Loops.sylvora" > /dev/null 2>&1 &
pid=$!
sleep 6
shown=$(xdotool search --all --onlyvisible --pid "$pid" --name '' 2>/dev/null | xargs -r -n1 xdotool getwindowname | tr '\n' ';')
rss=$(rss_kb "$pid")
end_app "$pid"

echo "least of $rounds rounds of ${seconds} s, % of one core:"
echo "  sylvora, world playing, every window hidden: $best_gui"
echo "  sylvora-cli play, same world, same sink:     $best_cli"
echo "resident memory, world playing, windows shown [$shown]: $((rss / 1024)) MB ($rss kB)"
verdict=ok
(($(echo "$best_gui <= $best_cli" | bc))) || verdict="costs more than sylvora-cli play"
((rss < 80 * 1024)) || verdict="$verdict; NOT under 80 MB"
echo "verdict: $verdict"
