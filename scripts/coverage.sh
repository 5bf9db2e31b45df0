#!/usr/bin/env bash
# Line and branch coverage of src/ by the whole test suite: an unoptimised
# gcov build (build/coverage), every test run, and gcovr's report, a summary
# on the terminal and an HTML page per source file in
# build/coverage/report/index.html. Exits 1 when a test fails or the
# coverage is under its floor (95 % of lines, 85 % of branches).
# QX_COVERAGE_BUILD=DIR builds elsewhere than build/coverage.
# Branches the compiler adds for exception unwinding are not counted: no
# source line can take them.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh" coverage
build="${QX_COVERAGE_BUILD:-$root/build/coverage}"
mkdir -p "$build"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Debug -DQX_COVERAGE=ON >"$build/configure.log"
if ! cmake --build "$build" -j"$(nproc)" >"$build/build.log" 2>&1; then
  grep -E -B2 -A8 "error" "$build/build.log" | head -60
  echo "== coverage: build failed (log: $build/build.log)"
  exit 1
fi
find "$build" -name '*.gcda' -delete
status=0
(cd "$build" && ctest -j"$(nproc)" --output-on-failure >"$build/ctest.log" 2>&1) || {
  tail -30 "$build/ctest.log"; echo "== coverage: tests failed"; status=1; }
mkdir -p "$build/report"
gcovr --root "$root" --filter "$root/src/" --object-directory "$build/src" \
  --exclude-throw-branches --exclude-unreachable-branches \
  --html-details "$build/report/index.html" --txt "$build/report/summary.txt" \
  --print-summary --fail-under-line 95 --fail-under-branch 85 "$build" | tail -3 || status=1
exit $status
