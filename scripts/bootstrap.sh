#!/bin/bash
# Installs, on a fresh Debian machine, what the named steps need and nothing
# else; installs nothing when it is all there already.
#   scripts/bootstrap.sh [STEP...]       (default: build)
# Steps:
#   build     the library and the tool: compiler, CMake, make, pkg-config
#   test      build, and GoogleTest (scripts/test.sh)
#   sanitize  test, and clang's sanitizer runtimes when clang compiles
#   coverage  test with GCC, and gcovr (scripts/coverage.sh)
#   memcheck  test, and valgrind (scripts/memcheck.sh)
#   tsan      test (scripts/tsan.sh; GCC brings its runtime)
#   bench     build, Google Benchmark and the peer XML libraries (Bench/)
#   fuzz      clang with its libFuzzer and sanitizer runtimes, CMake (Fuzz/)
# The compiler is the one CC and CXX name: clang when either names clang,
# GCC when either does not (both when they differ).
set -euo pipefail

compilers() {
    [[ ${CC:-} == *clang* || ${CXX:-} == *clang* ]] && echo clang
    [[ ${CC:-} != *clang* || ${CXX:-} != *clang* ]] && echo g++
    return 0
}

packages=()
add() { packages+=("$@"); }
add_step() {
    case $1 in
        build) add cmake make pkg-config $(compilers) ;;
        test) add_step build; add libgtest-dev ;;
        sanitize)
            add_step test
            if compilers | grep -qx clang; then add libclang-rt-14-dev; fi ;;
        coverage) add_step test; add g++ gcovr ;;
        memcheck) add_step test; add valgrind ;;
        tsan) add_step test ;;
        bench)
            add_step build
            add libbenchmark-dev python3 libpugixml-dev libxml2-dev libexpat1-dev libtinyxml2-dev \
                libxerces-c-dev ;;
        fuzz) add cmake make clang libclang-rt-14-dev ;;
        *)
            echo "bootstrap: unknown step '$1'" \
                 "(build, test, sanitize, coverage, memcheck, tsan, bench, fuzz)" >&2
            exit 2 ;;
    esac
}
(($#)) || set -- build
for step in "$@"; do add_step "$step"; done

missing=()
for package in $(printf '%s\n' "${packages[@]}" | sort -u); do
    dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
done
if ((${#missing[@]})); then
    echo "installing: ${missing[*]}"
    sudo_cmd=()
    [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
    "${sudo_cmd[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq "${missing[@]}"
fi
