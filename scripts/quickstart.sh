#!/bin/bash
# Runs the README's "Five minutes" commands exactly as they stand there, with
# HOME pointing at a temporary folder so that the installation lands there
# and nothing outside it is touched.  Fails when any command fails or the
# tool or the example prints nothing.
set -euo pipefail
cd "$(dirname "$0")/.."
block=$(awk '/^## Five minutes/ {section = 1; next}
             /^## / {section = 0}
             section && /^```sh$/ {inside = 1; next}
             section && /^```$/ {inside = 0; next}
             section && inside' README.md)
[ -n "$block" ] || { echo "quickstart: no commands found in README.md" >&2; exit 1; }
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
echo "$block"
output=$(HOME="$home" bash -euo pipefail -c "$block")
echo "$output"
grep -q "elements" <<<"$output"       # the example walked the sample
grep -q "catalog" <<<"$output"        # the installed tool drew its tree
