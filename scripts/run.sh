#!/usr/bin/env bash
# Installs what is missing, builds everything and plays the bundled example world.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
dir=$(bash scripts/build.sh | tail -n 1)
exec "$dir/src/cli/sylvora-cli" play "$dir/examples/Evening Forest.sylvora" "$@"
