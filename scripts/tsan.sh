#!/bin/bash
# Builds the concurrency test with ThreadSanitizer and runs it: eight
# threads parsing, editing, writing and destroying documents of their own.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh tsan
flags="-fsanitize=thread -g -O1"
cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVRKXML_BUILD_TESTS=ON \
    -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_C_FLAGS="$flags" \
    -DCMAKE_EXE_LINKER_FLAGS=-fsanitize=thread -DCMAKE_SHARED_LINKER_FLAGS=-fsanitize=thread >/dev/null
cmake --build build-tsan -j"$(nproc)" --target vrkxml_concurrency_tests
TSAN_OPTIONS=halt_on_error=1 ./build-tsan/Tests/concurrency/vrkxml_concurrency_tests
