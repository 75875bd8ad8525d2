#!/bin/bash
# The main job: builds the library and the command-line tool, then checks
# the bundled sample and writes it back out (or checks the files given).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target vrkxml_tool
if (($#)); then
    ./build/Tools/vrkxml check "$@"
else
    ./build/Tools/vrkxml check Tools/samples/catalog.xml
    ./build/Tools/vrkxml cat Tools/samples/catalog.xml
fi
