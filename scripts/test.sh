#!/bin/bash
# Builds everything and runs the whole test suite.  Fails when a test fails
# and also when one does not run: every test runs in these builds.
#   scripts/test.sh              release build
#   scripts/test.sh --sanitize   AddressSanitizer + UndefinedBehaviorSanitizer (Debug)
#   scripts/test.sh --no-simd    release build without the SSE2 paths
#   scripts/test.sh --bench      release build with the benchmarks, whose smoke run joins in
# The compiler is the environment's (CC=clang CXX=clang++ for clang).  Each
# compiler and mode builds in a folder of its own: build, build-asan,
# build-nosimd, build-clang, build-clang-asan, ...
set -euo pipefail
cd "$(dirname "$0")/.."

mode=${1:-}
dir=build
[[ ${CXX:-} == *clang* ]] && dir+=-clang
type=Release sanitize=OFF simd=ON bench=OFF
steps=(test)
case $mode in
    "") ;;
    --sanitize) dir+=-asan; type=Debug; sanitize=ON; steps=(sanitize) ;;
    --no-simd) dir+=-nosimd; simd=OFF ;;
    --bench) bench=ON; steps+=(bench) ;;
    *) echo "usage: scripts/test.sh [--sanitize | --no-simd | --bench]" >&2; exit 2 ;;
esac
bash scripts/bootstrap.sh "${steps[@]}"

cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=$type -DVRKXML_BUILD_TESTS=ON -DVRKXML_SANITIZE=$sanitize \
    -DVRKXML_SIMD=$simd -DVRKXML_BUILD_BENCH=$bench -DVRKXML_TEST_CONFORMANCE=ON >/dev/null
cmake --build "$dir" -j"$(nproc)"
log=$dir/ctest.log
(cd "$dir" && ctest --output-on-failure -j"$(nproc)") | tee "$log"
if grep -qE '\((Skipped|Disabled)\)$' "$log"; then
    echo "test: the tests listed as not run above must run in this build;" \
         "their output is in $dir/Testing/Temporary/LastTest.log" >&2
    exit 1
fi
