#!/bin/bash
# Line and branch coverage of the library (Source/) under the whole test
# suite, held to a floor: fails when any test fails, when lines fall below
# 99 % or branches below 93 %.
#   scripts/coverage.sh [build-dir]      (default: build-coverage)
# The library alone is instrumented (-DVRKXML_COVERAGE=ON), in a Debug build
# so that each counted line and branch is one of the source's own; gcovr
# merges the counts of every test program.  The per-file report, with the
# lines and branches never taken, is left in <build-dir>/coverage-*.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh coverage

dir=${1:-build-coverage}
min_lines=99
min_branches=93

# gcov reads what GCC wrote, whatever compiler the environment names.
CC=gcc CXX=g++ cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Debug -DVRKXML_COVERAGE=ON \
    -DVRKXML_BUILD_TESTS=ON >/dev/null
cmake --build "$dir" -j"$(nproc)"
find "$dir" -name '*.gcda' -delete  # the counts of this run alone
(cd "$dir" && ctest --output-on-failure -j"$(nproc)")

gcovr --root . --filter 'Source/' --object-directory "$dir" --txt "$dir/coverage-lines.txt"
gcovr --root . --filter 'Source/' --object-directory "$dir" --txt "$dir/coverage-branches.txt" \
    --branches --print-summary --fail-under-line "$min_lines" --fail-under-branch "$min_branches" ||
    { echo "coverage: below the floor of $min_lines % of lines or $min_branches % of branches" \
           "(not taken: $dir/coverage-lines.txt, $dir/coverage-branches.txt)" >&2; exit 1; }
echo "coverage: at or above $min_lines % of lines and $min_branches % of branches"
