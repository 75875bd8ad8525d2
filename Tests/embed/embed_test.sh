#!/bin/bash
# embed_test.sh SOURCE_DIR WORK_DIR C_COMPILER CXX_COMPILER
# Configures and builds parent/, a project that embeds this one with
# add_subdirectory, with warnings our code does not silence (as a newer
# compiler's would be) and C++23, then checks that:
#   - the build passes although those warnings fire: no -Werror of ours
#     reaches the parent's build;
#   - our library is compiled in the parent's C++23, and raised to C++20
#     when the parent asks for C++17;
#   - the parent's empty build type stays empty, and nothing but the library
#     is built (no tests, examples, tool or benchmarks, no GoogleTest);
#   - the parent's program runs against the library.
set -uo pipefail
source_dir=$1
work=$2
cc=$3
cxx=$4
warnings="-Wall -Wextra -Wpadded"
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

rm -rf "$work"
mkdir -p "$work"
configure() {  # configure BUILD_DIR STANDARD
    cmake -S "$source_dir/Tests/embed/parent" -B "$1" -DVRKXML_SOURCE_DIR="$source_dir" \
        -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_STANDARD="$2" \
        -DCMAKE_C_FLAGS="$warnings" -DCMAKE_CXX_FLAGS="$warnings" \
        -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >"$1.configure.log" 2>&1 ||
        { cat "$1.configure.log"; fail "configuring the parent with C++$2"; return 1; }
}
# compiled_as BUILD_DIR REGEX: the compile command of every object of our
# library (and there is at least one) matches REGEX.
compiled_as() {
    local commands
    commands=$(grep -o '"command": "[^"]*vrkxml_objects[^"]*"' "$1/compile_commands.json")
    [ -n "$commands" ] && ! grep -vqE -- "$2" <<<"$commands"
}

if configure "$work/cxx17" 17; then
    compiled_as "$work/cxx17" '-std=(c|gnu)\+\+(20|2a) ' ||
        fail "with a C++17 parent, the library is not compiled as C++20"
fi

build=$work/cxx23
configure "$build" 23 || exit 1
cache=$build/CMakeCache.txt
grep -qx 'CMAKE_BUILD_TYPE:STRING=' "$cache" ||
    fail "the parent's empty build type was changed: $(grep '^CMAKE_BUILD_TYPE:' "$cache")"
for option in VRKXML_BUILD_TESTS VRKXML_BUILD_EXAMPLES VRKXML_BUILD_TOOL VRKXML_BUILD_BENCH \
              VRKXML_WARNINGS_AS_ERRORS; do
    grep -qx "$option:BOOL=OFF" "$cache" ||
        fail "$option is not OFF by default under a parent"
done
grep -q -- '-Werror' "$build/compile_commands.json" &&
    fail "-Werror reaches the parent's compile commands"
compiled_as "$build" '-std=(c|gnu)\+\+(23|2b) ' ||
    fail "the parent's C++23 is not used for the library"

if cmake --build "$build" -j2 >"$build.build.log" 2>&1; then
    grep -q 'warning:' "$build.build.log" ||
        fail "the parent's extra warnings never fired, so this proves nothing"
    output=$("$build/parent_app")
    [ "$output" = "children 2" ] || fail "the parent's program printed '$output', not 'children 2'"
else
    tail -30 "$build.build.log"
    fail "the parent's build failed"
fi
for built in vrkxml/Tools/vrkxml vrkxml/Tests vrkxml/Examples vrkxml/Bench; do
    [ -e "$build/$built" ] && fail "$built was built for the parent"
done

[ "$failures" -eq 0 ] && echo "embedding: the parent builds and runs, with its own warnings and standard"
exit $((failures != 0))
