#!/bin/bash
# Installs what building and testing need, on a fresh Debian machine; does
# nothing when everything is there already.
set -euo pipefail

# Building and the test suite; the benchmarks; fuzzing (clang and its
# sanitizer runtimes); the memcheck pass; the peer libraries the performance
# benchmark compares with.
packages=(cmake g++ make pkg-config libgtest-dev libbenchmark-dev clang libclang-rt-14-dev valgrind
          libpugixml-dev libxml2-dev libexpat1-dev libtinyxml2-dev libxerces-c-dev)
missing=()
for package in "${packages[@]}"; do
    dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
done
if ((${#missing[@]})); then
    echo "installing: ${missing[*]}"
    sudo_cmd=()
    [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
    "${sudo_cmd[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq "${missing[@]}"
fi
