#!/usr/bin/env bash
# Runs every benchmark binary in a directory, one after the other.
set -euo pipefail
dir=$1
for b in "$dir"/bench_*; do
  [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  "$b" --benchmark_counters_tabular=true ${BENCH_ARGS:-}
done
