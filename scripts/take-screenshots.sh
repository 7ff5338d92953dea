#!/usr/bin/env bash
# Takes the screenshots the AppStream metainfo shows (data/screenshots/) from the built application
# under a private Xvfb and a private PulseAudio with a null sink (so the strip says what a listener
# sees, "Playing"), with empty settings, so anyone can take them again after the windows change.
# Usage: scripts/take-screenshots.sh [BUILD_DIR]   (needs Xvfb, xdotool and ffmpeg)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
app=$build/src/app/sylvora
worlds=$build/examples
out=data/screenshots
mkdir -p "$out"

scratch=$(mktemp -d)
tests/e2e/private-x.sh 1280x900 > "$scratch/display" 2> /dev/null &
xvfb=$!
pids=()
cleanup() {
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  kill "$xvfb" 2>/dev/null || true
  rm -rf "$scratch"
}
trap cleanup EXIT
tests/e2e/private-pulse.sh "$scratch/pulse" screenshots > /dev/null 2>&1 &
pids+=($!)
for _ in $(seq 50); do [[ -s $scratch/display ]] && break; sleep 0.1; done
export DISPLAY=:$(head -n 1 "$scratch/display") HOME=$scratch XDG_CONFIG_HOME=$scratch/config XDG_DATA_HOME=$scratch/data
export XDG_RUNTIME_DIR=$scratch QT_QPA_PLATFORM=xcb PULSE_SERVER=unix:$scratch/pulse/run/native
for _ in $(seq 50); do pactl info >/dev/null 2>&1 && break; sleep 0.1; done

# Grabs the window whose title matches $1 into $2, once it has been drawn.
grab() {
  local wid
  wid=$(xdotool search --sync --onlyvisible --name "$1" | head -n 1)
  # Without a window manager nothing restacks the windows: the others step aside meanwhile.
  local others=() other
  for other in $(xdotool search --onlyvisible --pid "${pids[-1]}"); do
    [[ $other == "$wid" ]] || others+=("$other")
  done
  for other in "${others[@]}"; do xdotool windowunmap "$other"; done
  sleep 1.5  # the picture and the texts are drawn a moment after the window maps
  eval "$(xdotool getwindowgeometry --shell "$wid")"
  ffmpeg -loglevel error -y -f x11grab -draw_mouse 0 -video_size "${WIDTH}x${HEIGHT}" -i "$DISPLAY+$X,$Y" -frames:v 1 "$2"
  for other in "${others[@]}"; do xdotool windowmap "$other"; done
  echo "$2: ${WIDTH}x${HEIGHT}"
}

# A first open shows the world's Get Info window at its ideal size.
for world in "Evening Forest" "Sea Shore" "Fireside"; do
  "$app" "$worlds/$world.sylvora" >/dev/null 2>&1 &
  pids+=($!)
  slug=$(echo "$world" | tr 'A-Z ' 'a-z-')
  grab "^$world Info" "$out/get-info-$slug.png"
  if [[ $world == "Evening Forest" ]]; then
    xdotool key --window "$(xdotool search --name "^$world Info" | head -n 1)" ctrl+e
    grab "World Editor" "$out/editor.png"
    xdotool key --window "$(xdotool search --name "^$world Info" | head -n 1)" ctrl+m
    grab "Mixer" "$out/mixer.png"
  fi
  kill "${pids[-1]}"; wait "${pids[-1]}" 2>/dev/null || true
  rm -rf "$scratch/config"  # each world opens as a first open
done
