#!/usr/bin/env bash
# Builds the benchmark suites (Release) and runs them, one binary per family.
#   scripts/bench.sh                 every suite
#   scripts/bench.sh numeric [args]  one suite, further arguments to Google Benchmark
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/deps.sh" bench
cd "$root"
cmake --preset bench >/dev/null
cmake --build --preset bench -j2
if [ $# -gt 0 ]; then
  suite="$1"; shift
  "build/bench/bench/bench_$suite" "$@"
else
  for b in build/bench/bench/bench_*; do "$b"; done
fi
