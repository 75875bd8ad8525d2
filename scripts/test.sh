#!/bin/bash
# Builds everything and runs the whole test suite.
#   scripts/test.sh             release build in build/
#   scripts/test.sh --sanitize  AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh

dir=build
options=(-DCMAKE_BUILD_TYPE=Release)
if [ "${1:-}" = "--sanitize" ]; then
    dir=build-asan
    options=(-DCMAKE_BUILD_TYPE=Debug -DVRKXML_SANITIZE=ON)
fi
cmake -S . -B "$dir" "${options[@]}" -DVRKXML_BUILD_TESTS=ON >/dev/null
cmake --build "$dir" -j"$(nproc)"
cd "$dir"
ctest --output-on-failure -j"$(nproc)"
