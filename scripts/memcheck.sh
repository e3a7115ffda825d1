#!/usr/bin/env bash
# Runs every test of a built suite under valgrind memcheck, one test per process as under CTest:
# fails on any invalid access, use of an uninitialised value, or definitely or indirectly lost
# block. Complements the ASan stage: it also sees the uninstrumented platform libraries.
# Usage: scripts/memcheck.sh BUILD_DIR
set -euo pipefail
dir=${1:?usage: scripts/memcheck.sh BUILD_DIR}
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT

# One test under memcheck; on failure prints its name and leaves its log.
check() {
  local log="$logs/$(printf '%s' "$1" | tr '/' '_').log"
  if ! valgrind -q --error-exitcode=99 --leak-check=full \
      --errors-for-leak-kinds=definite,indirect \
      "$dir/zorv_tests" --gtest_filter="$1" >"$log" 2>&1; then
    echo "$1"
    cat "$log" >&2
  fi
}
export -f check
export dir logs

tests=$("$dir/zorv_tests" --gtest_list_tests | awk '/^[^ ]/ { suite = $1 } /^  / { print suite $1 }')
failed=$(printf '%s\n' "$tests" | xargs -P"$(nproc)" -I{} bash -c 'check "$1"' _ {})
if [ -n "$failed" ]; then
  echo "memcheck: failed:" $failed
  exit 1
fi
echo "memcheck: $(printf '%s\n' "$tests" | wc -l) tests clean"
