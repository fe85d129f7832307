#!/usr/bin/env bash
# Runs every fuzzer in a directory for a few seconds on a scratch copy of its seed corpus.
# A failing fuzzer's report is repeated at the end, so the last lines of a CI log show it.
set -euo pipefail
dir=$1
seconds=${2:-20}
root=$(cd "$(dirname "$0")/.." && pwd)
failures=$(mktemp)
trap 'rm -f "$failures"' EXIT
for fuzzer in "$dir"/fuzz_*; do
  [ -x "$fuzzer" ] || continue
  name=$(basename "$fuzzer")
  work=$(mktemp -d)
  mkdir -p "$work.out"
  if [ -d "$root/fuzz/corpus/$name" ]; then cp -r "$root/fuzz/corpus/$name/." "$work/"; fi
  echo "fuzz: $name for ${seconds}s"
  if ! "$fuzzer" -max_total_time="$seconds" -max_len=4096 -timeout=10 -rss_limit_mb=2048 \
      -print_final_stats=0 -artifact_prefix="$work.out/" "$work" >"$work.log" 2>&1; then
    tail -n 60 "$work.log"
    echo "fuzz: $name FAILED"
    {
      # Compact, since a CI log may keep only its last lines: the seed, the input that failed
      # (so that it can be replayed from the log alone), the first frames and the verdict.
      echo "== $name"
      grep -E '^INFO: Seed:' "$work.log" | head -n 1 || true
      for artifact in "$work.out"/*; do
        [ -f "$artifact" ] || continue
        echo "input $(basename "$artifact") (gzip, base64):"
        gzip -9nc "$artifact" | base64 -w 900
      done
      grep -E '^ *#[0-9]+ 0x[0-9a-f]+ in ' "$work.log" | grep -v -E 'libFuzzer|fuzzer::|__libc|_start' |
        head -n 8 || true
      grep -E 'ERROR|SUMMARY|deadly|uncaught|terminate|runtime error|check failed' "$work.log" |
        head -n 6 || true
    } >>"$failures"
  else
    grep -E 'Done [0-9]+ runs' "$work.log" | tail -n 1 || true
  fi
  rm -rf "$work" "$work.out" "$work.log"
done
if [ -s "$failures" ]; then
  echo "fuzz: failures"
  cat "$failures"
  exit 1
fi
