#!/bin/sh
# Saving a world against `cp -r` of the same sound files, side by side in one run.
#
#   bench/save_vs_cp.sh [path/to/package_bench] [repetitions]
#
# Prints each benchmark's median speed and the save's share of cp's speed. A save copies every
# file uncached and flushes it to the disk before it replaces anything; plain `cp -r` leaves its
# copy in the page cache, so the flushed `cp -r` + `sync` is printed as well.
set -eu
BENCH=${1:-build/bench/package_bench}
REPS=${2:-5}
OUT=$(mktemp)
trap 'rm -f "$OUT"' EXIT

QT_QPA_PLATFORM=offscreen "$BENCH" --benchmark_filter='BM_Save|BM_Copy' \
    --benchmark_repetitions="$REPS" --benchmark_report_aggregates_only=true \
    --benchmark_format=csv >"$OUT" 2>/dev/null

# CSV columns: name,iterations,real_time,cpu_time,time_unit,bytes_per_second,...
awk -F, '
/_median"?,/ {
    name = $1; gsub(/"/, "", name); sub(/\/real_time_median$/, "", name)
    speed[name] = $6
    printf "%-36s %8.1f MB/s\n", name, $6 / 1e6
}
END {
    save = speed["BM_SaveWorld/20/10"]; contents = speed["BM_SavePackageContents/20/10"]
    cp = speed["BM_CopyWithCp/20/10"]; cpsync = speed["BM_CopyWithCpAndSync/20/10"]
    if (cp > 0) printf "save / cp -r:          %5.1f %%\n", 100 * save / cp
    if (cpsync > 0) printf "save / cp -r + sync:   %5.1f %%\n", 100 * save / cpsync
    if (cp > 0) printf "copying / cp -r:       %5.1f %%\n", 100 * contents / cp
}' "$OUT"
