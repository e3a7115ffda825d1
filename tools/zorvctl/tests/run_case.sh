#!/usr/bin/env bash
# Runs one end-to-end case of zorvctl and compares everything it printed with the transcript.
# Usage: run_case.sh ZORVCTL CASE [LIB_WITHOUT_FACTORY]
# Runs CASE.sh (from this directory, with ZORVCTL, WORK (a scratch directory) and
# LIB_WITHOUT_FACTORY in its environment) and compares its stdout and stderr with CASE.out.
# With ZORVCTL_UPDATE=1 it rewrites CASE.out instead.
set -euo pipefail
dir=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$dir"
ZORVCTL=$1 WORK=$work LIB_WITHOUT_FACTORY=${3:-} bash "$2.sh" >"$work/actual" 2>&1 || true
if [ "${ZORVCTL_UPDATE:-}" = 1 ]; then
  cp "$work/actual" "$2.out"
  exit 0
fi
diff -u "$2.out" "$work/actual"
