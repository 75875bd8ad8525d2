#!/bin/bash
# The main job: builds the library and the command-line tool, then runs the
# tool on the bundled sample (or on the files given).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/bootstrap.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target vrkxml_tool
if (($#)); then
    ./build/Tools/vrkxml "$@"
else
    ./build/Tools/vrkxml Tools/samples/catalog.xml
fi
