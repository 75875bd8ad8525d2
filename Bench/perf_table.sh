#!/bin/bash
# Builds the performance benchmark (Release, in build-perf/), runs it with
# JSON output and prints markdown: the machine, the exact command, and the
# tables of Docs/performance.md (parse + destroy against the peers and the
# malloc floor, serialization, our other operations, memory).
#
# Usage: Bench/perf_table.sh [--real] [benchmark arguments]
#   e.g. Bench/perf_table.sh --sizes=1,10,100 --file=some.xml
# --real adds the real-world files of Bench/real_files.sh (files that Debian
# packages ship, their document type declarations cut out).
# Environment: VRKXML_PERF_MIN_TIME (seconds per case and repetition,
# default 0.1), VRKXML_PERF_REPETITIONS (default 3, run in random order
# across the cases; the tables show medians and list the cases that spread
# widely),
# and the benchmark's own VRKXML_BENCH_SIZES and VRKXML_BENCH_FILES.
# With the defaults the 1 and 10 MB documents take about six minutes on
# two cores.
set -euo pipefail

source "$(dirname "$0")/perf_setup.sh"
json="$build/parse_bench.json"
min_time=${VRKXML_PERF_MIN_TIME:-0.1}
repetitions=${VRKXML_PERF_REPETITIONS:-3}

if [[ ${1:-} == --real ]]; then
    shift
    take_real_files
fi
build_bench

command=(Bench/vrkxml_parse_bench "--benchmark_min_time=$min_time" "--benchmark_repetitions=$repetitions"
    --benchmark_display_aggregates_only=true --benchmark_enable_random_interleaving=true --benchmark_out_format=json --benchmark_out=parse_bench.json "${real[@]}" "$@")
load=$(cut -d' ' -f1-3 /proc/loadavg)
echo "running (progress on stderr)..." >&2
(cd "$build" && "${command[@]}" >&2)

package_version() { dpkg-query -W -f='${Version}' "$1" 2>/dev/null || echo "not installed"; }
{
    echo "cpu=$(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2- | sed 's/^ *//')"
    echo "cores=$(nproc)"
    echo "memory=$(awk '/MemTotal/ {printf "%.0f GiB", $2 / 1048576}' /proc/meminfo)"
    echo "system=$(. /etc/os-release && echo "$PRETTY_NAME"), kernel $(uname -r)"
    echo "compiler=$(c++ --version | head -n1)"
    echo "load=$load"
    echo "command=cd build-perf && ${command[*]}"
    for package in libpugixml-dev libxml2-dev libexpat1-dev libtinyxml2-dev libxerces-c-dev libbenchmark-dev; do
        echo "package=$package $(package_version "$package")"
    done
} >"$build/machine.txt"

python3 "$root/Bench/perf_table.py" "$json" "$build/machine.txt"
