#!/usr/bin/env bash
# The Get Info window's slide with a 1920 x 1200 picture at full size: frames per second and CPU
# while sliding and while still, on an Xvfb display big enough for the picture and the menu bar.
# Usage: bench/info_slide.sh [build-dir, default build] [seconds per phase, default 5] [picture WxH] [short]
set -euo pipefail
build=${1:-build}
seconds=${2:-5}
picture=${3:-1920x1200}
# Xvfb picks a free display and says which once it accepts clients, so runs back to back never race
# for one another's display.
exec {ready}<> <(:)
"$(dirname "$0")/../tests/e2e/private-x.sh" 2048x1400 >&"$ready" 2> /dev/null &
xvfb=$!
trap 'kill "$xvfb" 2> /dev/null || true' EXIT
read -r -t 10 number <&"$ready"
display=:$number
DISPLAY=$display QT_QPA_PLATFORM=xcb "$build/bench/info_slide_fps" "$seconds" "$xvfb" "$picture" ${4:+"$4"}
