#!/usr/bin/env bash
# The main job: builds libqxmath and its tools (no tests) and starts a
# session with the arguments given, printing its tolerances and WCS.
#   scripts/main.sh [--scale S] [--fine] [--origin X Y Z]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh" build
build="$root/build/release"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" >/dev/null
if [ $# -eq 0 ]; then set -- --scale 25.4; fi
exec "$build/tools/qxsession" "$@"
