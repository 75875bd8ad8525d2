#!/usr/bin/env bash
# Builds the fuzz targets into build-fuzz and runs each for SECONDS (default
# 60) from the seed corpora (generated, and the hand-made Fuzz/seeds); crash
# inputs are copied into Fuzz/regressions/<target>/.  With --replay, runs
# every target over its hand-made seeds and regressions instead (the test
# suite replays the same without libFuzzer).  Exits non-zero when any target
# crashed.
#   usage: run.sh [SECONDS] | run.sh --replay
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
build=$root/build-fuzz
targets=(fuzz_parse fuzz_round_trip fuzz_edit fuzz_oom)

bash "$root/scripts/bootstrap.sh" fuzz || exit 2
mkdir -p "$build"
cmake -S "$here" -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang > "$build/configure.log" 2>&1 &&
  cmake --build "$build" -j "$(nproc)" > "$build/build.log" 2>&1 ||
  { tail -40 "$build/configure.log" "$build/build.log"; echo "build failed"; exit 2; }

status=0
if [[ ${1:-} == --replay ]]; then
  for t in "${targets[@]}"; do
    inputs=()
    for input in "$here/seeds/$t"/* "$here/regressions/$t"/*; do
      [[ -f $input ]] && inputs+=("$input")
    done
    if "$build/$t" "${inputs[@]}" > "$build/$t.replay.log" 2>&1; then
      echo "$t: ${#inputs[@]} seed and regression inputs pass"
    else
      echo "$t: CRASH (see $build/$t.replay.log)"
      grep -E "^(SUMMARY|fuzz check|==[0-9]+==ERROR)|^Running:" "$build/$t.replay.log" | tail -4
      status=1
    fi
  done
  exit $status
fi

seconds=${1:-60}
# The conformance suite (kept in the repository) seeds the corpora.
suite=$build/xmlts
[[ -d $suite/xmlconf ]] || { mkdir -p "$suite" &&
  (cd "$suite" && cmake -E tar xf "$root/Tests/conformance/xmlts20130923.zip"); }
bash "$here/make_corpus.sh" "$build/corpus" "$suite"

for t in "${targets[@]}"; do
  crashes=$build/crashes/$t
  rm -rf "$crashes" && mkdir -p "$crashes"
  "$build/$t" "$build/corpus/$t" "$here/seeds/$t" -dict="$here/xml.dict" -max_len=4096 -timeout=10 -rss_limit_mb=2048 \
    -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$crashes/" > "$build/$t.log" 2>&1
  result=$?
  execs=$(grep -o 'stat::number_of_executed_units: [0-9]*' "$build/$t.log" | grep -o '[0-9]*$')
  cov=$(grep -o 'cov: [0-9]*' "$build/$t.log" | tail -1 | grep -o '[0-9]*')
  ft=$(grep -o 'ft: [0-9]*' "$build/$t.log" | tail -1 | grep -o '[0-9]*')
  found=("$crashes"/*)
  if [[ $result -ne 0 || -e ${found[0]} ]]; then
    mkdir -p "$here/regressions/$t"
    [[ -e ${found[0]} ]] && cp "${found[@]}" "$here/regressions/$t/"
    echo "$t: execs ${execs:-?} cov ${cov:-?} ft ${ft:-?} CRASHED (exit $result; see $build/$t.log)"
    grep -E "^(SUMMARY|fuzz check)" "$build/$t.log" | head -2
    status=1
  else
    echo "$t: execs ${execs:-?} cov ${cov:-?} ft ${ft:-?} no crash"
  fi
done
exit $status
