#!/usr/bin/env bash
# Builds and runs every test twice: a normal optimised build and an
# AddressSanitizer + UndefinedBehaviorSanitizer build (the allocation-failure
# sweep and the fuzzers' regression tests among them); then replays the kept
# fuzz inputs and fuzzes each harness briefly (QX_FUZZ_SECONDS, default 10).
# Exits non-zero when any build, test or fuzz run fails.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh" test
jobs=$(nproc)
status=0
run() { # name, cmake options...
  local name=$1; shift
  local build="$root/build/$name"
  echo "== $name build"
  cmake -S "$root" -B "$build" "$@" >/dev/null
  if ! cmake --build "$build" -j"$jobs" >"$build/build.log" 2>&1; then
    grep -E -B2 -A8 "error|Error" "$build/build.log" | head -80
    echo "== $name: build failed (log: $build/build.log)"
    status=1
    return
  fi
  echo "== $name tests"
  (cd "$build" && ctest --output-on-failure -j"$jobs") || status=1
}
run normal -DCMAKE_BUILD_TYPE=RelWithDebInfo
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1
run sanitize -DCMAKE_BUILD_TYPE=Debug -DQX_SANITIZE=ON
echo "== fuzz smoke"
"$root/scripts/fuzz.sh" "${QX_FUZZ_SECONDS:-10}" || status=1
[ $status -eq 0 ] && echo "== all tests passed" || echo "== FAILED"
exit $status
