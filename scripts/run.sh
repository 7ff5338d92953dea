#!/usr/bin/env bash
# Installs what is missing, builds everything and plays the bundled example world: in the desktop
# application where there is a display, with the command-line player where there is none.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
dir=$(bash scripts/build.sh | tail -n 1)
world="$dir/examples/Evening Forest.sylvora"
if [[ -n ${DISPLAY:-} || -n ${WAYLAND_DISPLAY:-} ]]; then
  exec "$dir/src/app/sylvora" "$world"
fi
echo "No display: playing with sylvora-cli (Ctrl+C stops)." >&2
exec "$dir/src/cli/sylvora-cli" play "$world" "$@"
