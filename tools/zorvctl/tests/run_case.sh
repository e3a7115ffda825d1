#!/usr/bin/env bash
# run_case.sh ZORVCTL CASE [LIB_WITHOUT_FACTORY]: diffs CASE.sh's output with CASE.out (ZORVCTL_UPDATE=1 rewrites it).
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$(dirname "$0")"
ZORVCTL=$1 WORK=$work LIB_WITHOUT_FACTORY=${3:-} bash "$2.sh" >"$work/actual" 2>&1 || true
[ "${ZORVCTL_UPDATE:-}" = 1 ] && exec cp "$work/actual" "$2.out"
diff -u "$2.out" "$work/actual"
