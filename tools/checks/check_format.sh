#!/usr/bin/env bash
# Fails when a C or C++ source of the project is not formatted with the root .clang-format.
set -euo pipefail
cd "$(dirname "$0")/../.."
files=$(git ls-files '*.cpp' '*.h' '*.c' 2>/dev/null || find . -name '*.cpp' -o -name '*.h' -o -name '*.c')
[ -n "$files" ] || exit 0
# shellcheck disable=SC2086
if ! clang-format --dry-run --Werror $files 2>/tmp/format.$$; then
  grep -E '^[^ ].*(warning|error):' /tmp/format.$$ | cut -d: -f1 | sort -u | sed 's/^/not formatted: /'
  rm -f /tmp/format.$$
  echo "Run: clang-format -i <files>"
  exit 1
fi
rm -f /tmp/format.$$
