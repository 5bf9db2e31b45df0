#!/usr/bin/env bash
# The main job: builds libqxmath and its tools (Release, no tests) and runs
# qxspline, the spline tool, on the example wing section: the knots and poles
# go to standard output, the picture to examples/qxspline-example.svg.
#   scripts/main.sh                      the example
#   scripts/main.sh [qxspline arguments] the tool on your own data (see --help)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh" build
build="$root/build/release"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" >/dev/null
if [ $# -eq 0 ]; then
  set -- "$root/examples/naca2412.txt" --svg "$root/examples/qxspline-example.svg"
fi
exec "$build/tools/qxspline" "$@"
