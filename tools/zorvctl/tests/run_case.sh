#!/usr/bin/env bash
# Usage: run_case.sh ZORVCTL CASE [LIB_WITHOUT_FACTORY]: runs CASE.sh (ZORVCTL, WORK, a scratch
# directory, and LIB_WITHOUT_FACTORY set) and diffs its output with CASE.out (ZORVCTL_UPDATE=1
# rewrites CASE.out).
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$(dirname "$0")"
ZORVCTL=$1 WORK=$work LIB_WITHOUT_FACTORY=${3:-} bash "$2.sh" >"$work/actual" 2>&1 || true
[ "${ZORVCTL_UPDATE:-}" = 1 ] && exec cp "$work/actual" "$2.out"
diff -u "$2.out" "$work/actual"
