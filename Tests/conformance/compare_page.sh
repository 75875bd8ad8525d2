#!/bin/bash
# Writes the conformance page with the report writer and compares it with
# the committed one.
#   compare_page.sh REPORT_WRITER SUITE_DIR EXPECTATIONS PAGE
set -euo pipefail
writer=$1 suite=$2 expectations=$3 page=$4
written=$(mktemp)
trap 'rm -f "$written"' EXIT
"$writer" "$suite" "$expectations" > "$written"
if ! diff -u "$page" "$written"; then
    echo "conformance: $page differs from what the report writer writes (above); rewrite it with" \
         "$writer $suite $expectations > $page" >&2
    exit 1
fi
echo "conformance: the page reads as the report writer writes it"
