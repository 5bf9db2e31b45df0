#!/usr/bin/env bash
# The whole test suite under valgrind memcheck: an optimised build with debug
# information (build/memcheck), each test run by ctest under valgrind. Any
# invalid read or write, use of an uninitialised value, or definitely or
# indirectly lost block fails the test that caused it. The logs are in
# build/memcheck/Testing/Temporary/MemoryChecker.*.log.
#   scripts/memcheck.sh [ctest -R regex]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh" memcheck
build="$root/build/memcheck"
mkdir -p "$build"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DMEMORYCHECK_COMMAND=/usr/bin/valgrind \
  "-DMEMORYCHECK_COMMAND_OPTIONS=--error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite,indirect --show-leak-kinds=definite,indirect --track-origins=yes --num-callers=30" \
  >"$build/configure.log"
if ! cmake --build "$build" -j"$(nproc)" >"$build/build.log" 2>&1; then
  grep -E -B2 -A8 "error" "$build/build.log" | head -60
  echo "== memcheck: build failed (log: $build/build.log)"
  exit 1
fi
# The test that installs the package runs CMake, not the library.
export QX_UNDER_VALGRIND=1
(cd "$build" && ctest -T memcheck -j"$(nproc)" -E '^install_package$' ${1:+-R "$1"} --output-on-failure) \
  >"$build/memcheck.log" 2>&1 && rc=0 || rc=$?
grep -E "tests passed|Defect|defects|Memory checking results|^ *[0-9]+/[0-9]+ MemCheck.*(Defects|Failed)" "$build/memcheck.log" | tail -20
if [ $rc -ne 0 ] || grep -q "Defects:" "$build/memcheck.log"; then
  echo "== memcheck: FAILED (log: $build/memcheck.log)"
  exit 1
fi
echo "== memcheck: clean"
