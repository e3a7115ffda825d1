#!/usr/bin/env bash
# Builds the libFuzzer targets (fuzz/*_fuzzer.cpp) with clang and runs each for a bounded time
# from a copy of its committed corpus (fuzz/corpus/<target>/). Fails on any crash, leak or
# sanitizer report. Usage: scripts/fuzz.sh SECONDS
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:?usage: scripts/fuzz.sh SECONDS}
out=${ZORV_BUILD_ROOT:-$root/build}/fuzz

targets=()
for src in "$root"/fuzz/*_fuzzer.cpp; do
  [ -e "$src" ] && targets+=("$(basename "$src" .cpp)")
done
if [ ${#targets[@]} -eq 0 ]; then
  echo "no fuzz targets"
  exit 0
fi

CC=clang CXX=clang++ cmake -S "$root" -B "$out" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DZORV_FUZZ=ON -DZORV_TESTS=OFF >/dev/null
cmake --build "$out" -j"$(nproc)" --target "${targets[@]}"

export ASAN_OPTIONS=alloc_dealloc_mismatch=1:detect_leaks=1
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
status=0
for target in "${targets[@]}"; do
  corpus="$out/corpus/$target"
  rm -rf "$corpus"
  mkdir -p "$corpus"
  if [ -d "$root/fuzz/corpus/$target" ]; then
    cp -R "$root/fuzz/corpus/$target/." "$corpus/"
  fi
  log="$out/$target.log"
  if "$out/fuzz/$target" -max_total_time="$seconds" -rss_limit_mb=2048 -print_final_stats=1 \
       -artifact_prefix="$out/$target-" "$corpus" >"$log" 2>&1; then
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    echo "$target: ${runs:-?} executions in ${seconds}s, no crash"
  else
    echo "$target: FAILED (log: $log, reproducer: $out/$target-*)"
    tail -n 60 "$log"
    status=1
  fi
done
exit $status
