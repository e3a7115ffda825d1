#!/usr/bin/env bash
# Builds everything and runs every check and test: consistency checks, the suite, the suite under
# valgrind memcheck and under AddressSanitizer+UndefinedBehaviorSanitizer, the concurrency tests
# under ThreadSanitizer and the fuzzers for a bounded time.
# Usage: scripts/test.sh [--quick]  (--quick: plain suite only)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=${ZORV_BUILD_ROOT:-$root/build}
quick=0
[ "${1:-}" = "--quick" ] && quick=1
jobs=$(nproc)
timings=()

stage() {
  local name=$1
  shift
  local start=$SECONDS
  echo "== $name"
  "$@"
  timings+=("$(printf '%-34s %5ss' "$name" $((SECONDS - start)))")
}

checks() {
  bash "$root/tools/checks/check_interfaces.sh"
  python3 "$root/tools/checks/check_header_methods.py"
  python3 "$root/tools/checks/check_sources.py"
  bash "$root/tools/checks/check_format.sh"
}

suite() {
  local dir=$1
  shift
  bash "$root/scripts/build.sh" "$dir" "$@"
  ctest --test-dir "$dir" -j"$jobs" --output-on-failure
}

sanitized_suite() {
  ASAN_OPTIONS=detect_leaks=1:alloc_dealloc_mismatch=1:detect_stack_use_after_return=1 \
  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    suite "$out/asan" -DZORV_SANITIZE=address,undefined -DCMAKE_BUILD_TYPE=Debug
}

thread_suite() {
  bash "$root/scripts/build.sh" "$out/tsan" -DZORV_SANITIZE=thread -DCMAKE_BUILD_TYPE=Debug
  TSAN_OPTIONS="halt_on_error=1:detect_deadlocks=1:second_deadlock_stack=1:suppressions=$root/tests/tsan.supp" \
    ctest --test-dir "$out/tsan" -j"$jobs" --output-on-failure -R 'Concurrency|Stress'
}

fuzz() {
  bash "$root/scripts/fuzz.sh" "${ZORV_FUZZ_SECONDS:-30}"
}

stage "setup" bash "$root/scripts/setup.sh"
stage "consistency checks" checks
stage "suite" suite "$out/main" -DZORV_BENCH=ON
if [ $quick -eq 0 ]; then
  stage "suite, valgrind memcheck" bash "$root/scripts/memcheck.sh" "$out/main"
  stage "suite, ASan+UBSan+LSan" sanitized_suite
  stage "concurrency tests, TSan" thread_suite
  stage "fuzzers" fuzz
fi

echo "== Timings"
printf '%s\n' "${timings[@]}"
echo "== All stages passed"
