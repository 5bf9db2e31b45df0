#!/usr/bin/env bash
# Builds the libFuzzer harnesses (clang, ASan + UBSan, build/fuzz) and runs
# each for a chosen time, after replaying the inputs kept in
# fuzz/regressions/<harness>/. A crash, a sanitizer or leak report, a broken
# promise (the harness aborts with "qxfuzz: ...") or an input that runs
# longer than a second is a finding: the input is left in
# build/fuzz/findings/<harness>/ and the script exits 1.
#   scripts/fuzz.sh [SECONDS] [HARNESS...]   default 60 s each, all harnesses
# The corpus grows in build/fuzz/corpus/<harness>/ from run to run.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
[ $# -gt 0 ] && shift
"$root/scripts/deps.sh" fuzz
build="$root/build/fuzz"
mkdir -p "$build"
CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQX_FUZZ=ON -DBUILD_TESTING=OFF -DQX_BUILD_TOOLS=OFF >"$build/configure.log"
if ! cmake --build "$build" -j"$(nproc)" >"$build/build.log" 2>&1; then
  grep -E -B2 -A8 "error" "$build/build.log" | head -60
  echo "== fuzz: build failed (log: $build/build.log)"
  exit 1
fi
harnesses=("$@")
if [ ${#harnesses[@]} -eq 0 ]; then
  for f in "$root"/fuzz/fuzz_*.cpp; do harnesses+=("$(basename "$f" .cpp)"); done
fi
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1
status=0
for h in "${harnesses[@]}"; do
  bin="$build/fuzz/$h"
  corpus="$build/corpus/$h"
  findings="$build/findings/$h"
  log="$build/$h.log"
  mkdir -p "$corpus" "$findings"
  flags=(-timeout=1 -rss_limit_mb=4096 -max_len=4096 -artifact_prefix="$findings/")
  regressions="$root/fuzz/regressions/$h"
  if [ -d "$regressions" ] && [ -n "$(ls -A "$regressions")" ]; then
    if ! "$bin" "${flags[@]}" "$regressions"/* >"$log" 2>&1; then
      echo "== $h: a kept regression input fails again (log: $log)"
      status=1
      continue
    fi
  fi
  if "$bin" "${flags[@]}" -max_total_time="$seconds" -print_final_stats=1 "$corpus" >"$log" 2>&1; then
    runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || echo "?")
    cov=$(grep -o 'cov: [0-9]*' "$log" | tail -1 | grep -o '[0-9]*' || echo "?")
    echo "== $h: ${seconds} s, $runs inputs, coverage $cov edges, corpus $(ls "$corpus" | wc -l), no finding"
  else
    echo "== $h: FINDING (log: $log; input in $findings/)"
    grep -E "ERROR|qxfuzz: |runtime error|SUMMARY" "$log" | head -5 || true
    status=1
  fi
done
exit $status
