#!/usr/bin/env bash
# Fails on a C++ file of the repository that is not as .clang-format writes it.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files '*.cpp' '*.hpp' 2>/dev/null || find . -name '*.[ch]pp' -not -path './build*')
if ! clang-format --dry-run --Werror "${files[@]}" 2>/tmp/format.$$; then
  grep -E '^[^ ].*: (error|warning)' /tmp/format.$$ | cut -d: -f1 | sort -u | sed 's/^/format: not formatted: /' >&2
  rm -f /tmp/format.$$
  echo "format: run clang-format -i on the files above" >&2
  exit 1
fi
rm -f /tmp/format.$$
echo "format: ${#files[@]} files as .clang-format writes them"
