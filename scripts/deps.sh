#!/usr/bin/env bash
# Installs, with apt, what building and testing libqxmath needs and the
# machine lacks. Needs root only when something is missing.
#   scripts/deps.sh build   compiler and CMake
#   scripts/deps.sh test    also GoogleTest, the test run's tools and the fuzzers' clang
#   scripts/deps.sh fuzz    clang with libFuzzer and the sanitizer runtimes
#   scripts/deps.sh coverage  also gcovr
#   scripts/deps.sh memcheck  also valgrind
#   scripts/deps.sh bench   also Google Benchmark and the benchmarks' peers (LAPACK,
#                           SISL, GSL, OpenCASCADE, scipy for /usr/bin/python3)
set -euo pipefail
want=(g++ cmake make pkg-config)
case "${1:-build}" in
  test) want+=(libgtest-dev libgmock-dev binutils libeigen3-dev libgsl-dev clang libclang-rt-14-dev) ;;
  fuzz) want+=(clang libclang-rt-14-dev) ;;
  coverage) want+=(libgtest-dev libgmock-dev binutils libeigen3-dev libgsl-dev gcovr) ;;
  memcheck) want+=(libgtest-dev libgmock-dev binutils libeigen3-dev libgsl-dev valgrind) ;;
  bench) want+=(libbenchmark-dev libeigen3-dev liblapack-dev libsisl-dev libgsl-dev
               libocct-modeling-algorithms-dev libocct-modeling-data-dev
               libocct-foundation-dev python3-scipy) ;;
esac
missing=()
for p in "${want[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
if [ "$(id -u)" -ne 0 ]; then
  echo "deps: missing ${missing[*]}; run as root or install them with apt-get" >&2
  exit 1
fi
echo "deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
