#!/usr/bin/env bash
# Configures and builds Sylvora into build/ (or build-sanitize/ with --sanitize).
set -euo pipefail
cd "$(dirname "$0")/.."
dir=build
opts=(-DSYLVORA_WERROR=ON)
if [[ ${1:-} == --sanitize ]]; then
  dir=build-sanitize
  opts+=(-DSYLVORA_SANITIZE=ON -DSYLVORA_BUILD_BENCHMARKS=OFF -DCMAKE_BUILD_TYPE=Debug)
fi
cmake -S . -B "$dir" -G Ninja "${opts[@]}" >/dev/null
cmake --build "$dir" -j "$(nproc)"
echo "$dir"
