#!/usr/bin/env bash
# Configures and builds Sylvora into build/ (or build-sanitize/ with --sanitize).
#   --sanitize   AddressSanitizer and UndefinedBehaviorSanitizer, no benchmarks
#   --no-app     without the desktop application and its tests (what CI sanitizes, for time)
set -euo pipefail
cd "$(dirname "$0")/.."
dir=build
opts=(-DSYLVORA_WERROR=ON -DSYLVORA_BUILD_APP=ON)
for arg in "$@"; do
  case $arg in
    --sanitize)
      dir=build-sanitize
      opts+=(-DSYLVORA_SANITIZE=ON -DSYLVORA_BUILD_BENCHMARKS=OFF -DCMAKE_BUILD_TYPE=Debug) ;;
    --no-app) opts+=(-DSYLVORA_BUILD_APP=OFF) ;;
    *) echo "unknown option: $arg" >&2; exit 2 ;;
  esac
done
cmake -S . -B "$dir" -G Ninja "${opts[@]}" >/dev/null
cmake --build "$dir" -j "$(nproc)"
echo "$dir"
