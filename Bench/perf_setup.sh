# Sourced by the benchmark scripts: where things are, the real-world files
# of --real, and the Release build of the benchmark in build-perf/.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build="$root/build-perf"
real=()

# Fills `real` with the --file arguments of Bench/real_files.sh.
take_real_files() {
    mapfile -t real < <(bash "$root/Bench/real_files.sh" "$build/real")
}

build_bench() {
    cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DVRKXML_BUILD_TESTS=OFF -DVRKXML_BUILD_BENCH=ON >/dev/null
    cmake --build "$build" --target vrkxml_parse_bench -j "$(nproc)" >/dev/null
}
