#!/bin/bash
# Installs the built library into a temporary prefix and builds two small
# consumers against it: a C program through pkg-config, and a C++ program
# on the C++ layer (vrkxml.hpp) through the CMake package and through
# pkg-config.  All must run.
#   install_test.sh BUILD_DIR C_COMPILER CXX_COMPILER [SANITIZER_FLAGS]
# A library built with sanitizers needs consumers built with the same flags
# (';'-separated, as CMake passes a list).
set -euo pipefail
build=$1 cc=$2 cxx=$3
read -r -a sanitize <<< "${4//;/ }"
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
test -L "$prefix/lib/libvrkxml.so" && test -L "$prefix/lib/libvrkxml.so.1" && test -f "$prefix/lib/libvrkxml.a"

# The soname links must be resolved by the loader at run time.
export LD_LIBRARY_PATH=$prefix/lib

export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
# shellcheck disable=SC2046
"$cc" -std=c99 -Wall -Wextra -pedantic -Werror "${sanitize[@]}" "$here/c_consumer.c" $(pkg-config --cflags --libs vrkxml) \
    -o "$work/c_consumer"
"$work/c_consumer"

cmake -S "$here/cxx_consumer" -B "$work/cxx" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_CXX_FLAGS="${sanitize[*]}" -DCMAKE_EXE_LINKER_FLAGS="${sanitize[*]}" >/dev/null
cmake --build "$work/cxx" >/dev/null
"$work/cxx/cxx_consumer"
# shellcheck disable=SC2046
"$cxx" -std=c++17 -Wall -Wextra -pedantic -Werror "${sanitize[@]}" "$here/cxx_consumer/main.cpp" \
    $(pkg-config --cflags --libs vrkxml) -o "$work/cxx_pkg_config"
"$work/cxx_pkg_config"
echo "install ok"
