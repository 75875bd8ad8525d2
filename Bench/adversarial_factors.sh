#!/bin/sh
# Builds the adversarial parse benchmark (Release), runs it and prints a
# markdown table: per document its size, median processor time per parse, throughput
# and time per byte relative to the ordinary document.
# Usage: Bench/adversarial_factors.sh [extra benchmark arguments]
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build-bench"
json="$build/adversarial_bench.json"

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DVRKXML_BUILD_TESTS=OFF -DVRKXML_BUILD_BENCH=ON >/dev/null
cmake --build "$build" --target vrkxml_adversarial_bench -j "$(nproc)" >/dev/null

echo "running..." >&2
"$build/Bench/vrkxml_adversarial_bench" --benchmark_format=json --benchmark_min_time=0.5 \
    --benchmark_repetitions=3 --benchmark_report_aggregates_only=true "$@" >"$json"

python3 - "$json" <<'PY'
import json, sys

# Medians of the repetitions (plain runs when started without repetitions),
# and the failures.
runs = [b for b in json.load(open(sys.argv[1]))["benchmarks"]
        if b.get("aggregate_name", "median") == "median" or "error_message" in b]
scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}

def per_byte(b):
    return b["cpu_time"] * scale[b["time_unit"]] / (b["MB"] * 1e6)

normal = next((per_byte(b) for b in runs if b["name"].startswith("normal") and "MB" in b), None)
print("| document | MB | ms per parse | MB/s | factor vs normal |")
print("|---|---:|---:|---:|---:|")
for b in runs:
    name = b.get("run_name", b["name"]).replace("/iterations:1", " (1 iteration)")
    if "MB" not in b:
        print(f"| {name} | | {b.get('error_message', 'no result')} | | |")
        continue
    ms = b["cpu_time"] * scale[b["time_unit"]]
    factor = f"{per_byte(b) / normal:.2f}" if normal else "n/a"
    print(f"| {name} | {b['MB']:.2f} | {ms:.1f} | {b['MB'] / ms * 1e3:.1f} | {factor} |")
PY
