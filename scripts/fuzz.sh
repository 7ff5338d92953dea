#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, AddressSanitizer and UndefinedBehaviorSanitizer) in
# build-fuzz/, makes their seed corpora, and runs each target for SECONDS seconds (default 60),
# one per core at a time.
# Exits non-zero when any target finds a crash, a hang, a leak or a sanitizer report; the input
# that did it is left in build-fuzz/fuzz-findings/TARGET/.
#
#   bash scripts/fuzz.sh [SECONDS] [TARGET...]      targets: loader alias preferences decoder
#
# SYLVORA_FUZZ_SEED=N fixes libFuzzer's random seed, so that a run from a fresh corpus tries much the same
# inputs wherever it runs (CI does: what it finds can be looked for again here with its seed).
# SYLVORA_FUZZ_JOBS=N runs N processes of each target on one shared corpus (seeds SEED, SEED+1, ... when
# fixed), for long campaigns on every core; the executions reported are their sum.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
targets=("$@")
((${#targets[@]})) || targets=(loader alias preferences decoder)

bash scripts/install-deps.sh
dir=build-fuzz
CC=clang-14 CXX=clang++-14 cmake -S . -B "$dir" -G Ninja -DSYLVORA_BUILD_FUZZERS=ON -DSYLVORA_BUILD_TESTS=OFF \
  -DSYLVORA_BUILD_BENCHMARKS=OFF -DSYLVORA_WERROR=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
# The example world seeds the loader and the decoders; the one scripts/test.sh made is taken when
# it is there (CI runs the tests first), so it is not synthesized a second time under the sanitizers.
example="build/examples/Evening Forest.sylvora"
build_targets=(sylvora-fuzz-seeds "${targets[@]/#/sylvora_fuzz_}")
if [[ ! -f $example/data.plist ]]; then
  example="$dir/examples/Evening Forest.sylvora"
  build_targets+=(examples)
fi
cmake --build "$dir" -j "$(nproc)" --target "${build_targets[@]}"

export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export LSAN_OPTIONS=suppressions=$PWD/fuzz/third_party_leaks.supp
seeds=$dir/fuzz-seeds
rm -rf "$seeds"
"$dir/fuzz/sylvora-fuzz-seeds" "$seeds" "$example" fuzz/seeds

declare -A max_len=([loader]=65536 [alias]=4096 [preferences]=16384 [decoder]=65536)

# One process of a target; its findings and log go to build-fuzz/fuzz-findings/TARGET/.
fuzz_target() {
  local target=$1 job=$2 corpus=$dir/fuzz-corpus/$1 findings=$dir/fuzz-findings/$1
  mkdir -p "$corpus" "$findings"
  local inputs=("$corpus") extra
  for extra in "$seeds/$target" "fuzz/seeds/$target" "fuzz/regressions/$target"; do
    [[ -d $extra ]] && inputs+=("$extra")
  done
  local options=(-max_total_time="$seconds" -timeout=30 -rss_limit_mb=4096 -max_len="${max_len[$target]}"
                 -artifact_prefix="$findings/" -print_final_stats=1)
  [[ -f fuzz/$target.dict ]] && options+=(-dict="fuzz/$target.dict")
  [[ -n ${SYLVORA_FUZZ_SEED:-} ]] && options+=(-seed="$((SYLVORA_FUZZ_SEED + job - 1))")
  "$dir/fuzz/sylvora_fuzz_$target" "${options[@]}" "${inputs[@]}" 2>"$findings/log-$job.txt"
}

jobs=${SYLVORA_FUZZ_JOBS:-1}
units=()
for target in "${targets[@]}"; do
  for ((job = 1; job <= jobs; ++job)); do units+=("$target:$job"); done
done

# As many processes at once as there are cores: each still runs its SECONDS on a core of its own.
failed=()
running=()
declare -A pids=()
declare -A executed=()
finish_running() {
  local unit
  for unit in "${running[@]}"; do
    local target=${unit%%:*} job=${unit##*:}
    local log=$dir/fuzz-findings/$target/log-$job.txt
    if ! wait "${pids[$unit]}"; then
      tail -n 60 "$log" >&2
      failed+=("$unit")
    fi
    local count
    count=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    executed[$target]=$((${executed[$target]:-0} + ${count:-0}))
  done
  running=()
}
for unit in "${units[@]}"; do
  fuzz_target "${unit%%:*}" "${unit##*:}" &
  pids[$unit]=$!
  running+=("$unit")
  ((${#running[@]} < $(nproc))) || finish_running
done
finish_running
for target in "${targets[@]}"; do
  echo "== $target: ${executed[$target]} executions in ${seconds}s by $jobs process(es)"
done

if ((${#failed[@]})); then
  echo "findings in: ${failed[*]} (inputs in $dir/fuzz-findings/)" >&2
  exit 1
fi
echo "no findings"
