#!/usr/bin/env bash
# Runs every fuzzer in a directory for a few seconds on a scratch copy of its seed corpus.
set -euo pipefail
dir=$1
seconds=${2:-20}
root=$(cd "$(dirname "$0")/.." && pwd)
status=0
for fuzzer in "$dir"/fuzz_*; do
  [ -x "$fuzzer" ] || continue
  name=$(basename "$fuzzer")
  work=$(mktemp -d)
  if [ -d "$root/fuzz/corpus/$name" ]; then cp -r "$root/fuzz/corpus/$name/." "$work/"; fi
  echo "fuzz: $name for ${seconds}s"
  if ! "$fuzzer" -max_total_time="$seconds" -max_len=4096 -timeout=10 -rss_limit_mb=2048 \
      -print_final_stats=0 "$work" >"$work.log" 2>&1; then
    tail -n 60 "$work.log"
    echo "fuzz: $name FAILED"
    status=1
  else
    grep -E 'Done [0-9]+ runs' "$work.log" | tail -n 1 || true
  fi
  rm -rf "$work" "$work.log"
done
exit $status
