#!/usr/bin/env bash
# The main job: builds the library and the host simulator, then runs the demo session.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh"
bash "$root/scripts/build.sh" "$root/build" -DZORV_TESTS=OFF
"$root/build/tools/zorvctl/zorvctl" --svg "$root/build/demo.svg" -f "$root/tools/zorvctl/demo.zc" "$@"
echo "picture: $root/build/demo.svg"
