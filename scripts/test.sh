#!/usr/bin/env bash
# Installs what is missing, builds everything and runs the whole test suite.
# With --sanitize the same suite runs under AddressSanitizer and UndefinedBehaviorSanitizer; with
# --no-app too, without the desktop application (see scripts/build.sh).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
dir=$(bash scripts/build.sh "$@" | tail -n 1)
export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir "$dir" --output-on-failure -j "$(nproc)"
