#!/bin/bash
# Parse + destroy under three allocators: glibc's malloc, jemalloc and
# mimalloc (the latter two through LD_PRELOAD, Debian's libjemalloc2 and
# libmimalloc2.0), each with its own default settings (the benchmark's
# --malloc-defaults), for libvrkxml, libxml2 and tinyxml2 on the same
# documents.  Prints a markdown table: MB/s and our ratio to each peer.
# The memory counters mean nothing here (they read glibc's heap).
#
# Usage: Bench/allocators.sh [--real] [benchmark arguments]
# Environment: VRKXML_PERF_MIN_TIME (default 0.2), VRKXML_PERF_REPETITIONS
# (default 5).
set -euo pipefail

source "$(dirname "$0")/perf_setup.sh"
if [[ ${1:-} == --real ]]; then
    shift
    take_real_files
fi
build_bench

libdir=/usr/lib/$(gcc -print-multiarch)
declare -A preload=([glibc]="" [jemalloc]="$libdir/libjemalloc.so.2" [mimalloc]="$libdir/libmimalloc.so.2")
results=()
for allocator in glibc jemalloc mimalloc; do
    library=${preload[$allocator]}
    if [[ -n $library && ! -f $library ]]; then
        echo "allocators: $library not installed; $allocator left out" >&2
        continue
    fi
    out="$build/allocator-$allocator.json"
    echo "running under $allocator..." >&2
    (cd "$build" && LD_PRELOAD=$library Bench/vrkxml_parse_bench --malloc-defaults --sizes=1 \
        "--benchmark_filter=/(vrkxml|libxml2|tinyxml2)/parse_destroy$" \
        "--benchmark_min_time=${VRKXML_PERF_MIN_TIME:-0.2}" "--benchmark_repetitions=${VRKXML_PERF_REPETITIONS:-5}" \
        --benchmark_enable_random_interleaving=true --benchmark_out_format=json "--benchmark_out=$out" \
        "${real[@]}" "$@" >/dev/null)
    results+=("$allocator=$out")
done

python3 - "${results[@]}" <<'PY'
import json, math, statistics, sys
from collections import defaultdict

tables = {}
for argument in sys.argv[1:]:
    allocator, path = argument.split("=", 1)
    runs = defaultdict(list)
    for b in json.load(open(path))["benchmarks"]:
        if b.get("run_type") == "iteration" and "bytes_per_second" in b:
            document, library, _ = b["run_name"].split("/", 2)
            runs[(document, library)].append(b["bytes_per_second"] / 1e6)
    tables[allocator] = {key: statistics.median(values) for key, values in runs.items()}

documents = sorted({d for table in tables.values() for d, _ in table})
header = ["document"]
for allocator in tables:
    header += [f"{allocator}: libvrkxml", "÷ libxml2", "÷ tinyxml2"]
print("| " + " | ".join(header) + " |")
print("|---" + "|---:" * (len(header) - 1) + "|")
ratios = defaultdict(list)
for d in documents:
    row = [d]
    for allocator, table in tables.items():
        ours = table.get((d, "vrkxml"))
        row.append(f"{ours:,.0f}" if ours else "–")
        for peer in ("libxml2", "tinyxml2"):
            theirs = table.get((d, peer))
            if ours and theirs:
                ratios[(allocator, peer)].append(ours / theirs)
                row.append(f"{ours / theirs:.2f}")
            else:
                row.append("–")
    print("| " + " | ".join(row) + " |")
geomean = lambda v: math.exp(sum(map(math.log, v)) / len(v)) if v else None
row = ["**geometric mean**"]
for allocator, table in tables.items():
    row.append("")
    for peer in ("libxml2", "tinyxml2"):
        g = geomean(ratios[(allocator, peer)])
        row.append(f"**{g:.2f}**" if g else "–")
print("| " + " | ".join(row) + " |")
PY
