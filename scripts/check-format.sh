#!/usr/bin/env bash
# Checks (or with --fix, applies) .clang-format on C++ files.
# With a git revision as argument, only the files changed since it are looked at.
set -euo pipefail
cd "$(dirname "$0")/.."
fix=0
base=""
for a in "$@"; do
  case "$a" in
    --fix) fix=1 ;;
    *) base=$a ;;
  esac
done
fmt=$(command -v clang-format-14 || command -v clang-format)
if [ -n "$base" ]; then
  files=$(git diff --name-only --diff-filter=ACMR "$base" -- '*.h' '*.cpp' || true)
else
  files=$(git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp')
fi
[ -n "$files" ] || exit 0
if [ $fix -eq 1 ]; then
  echo "$files" | xargs "$fmt" -i
else
  echo "$files" | xargs "$fmt" --dry-run --Werror
fi
