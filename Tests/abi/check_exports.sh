#!/bin/sh
# check_exports.sh LIBRARY EXPORT_MAP NAME_LIST HEADER
# Fails when the shared library's defined dynamic symbols differ from the
# names the export map lists (nothing more, nothing less), when the export
# map and the interface's list of names (exported_names.txt) differ, or when
# the header does not declare one of those names.
set -eu
library=$1
map=$2
names=$3
header=$4

listed=$(mktemp); exported=$(mktemp); declared=$(mktemp)
trap 'rm -f "$listed" "$exported" "$declared"' EXIT
sed -n 's/^ *\([A-Za-z_][A-Za-z0-9_]*\);$/\1/p' "$map" | sort -u > "$listed"
nm -D --defined-only "$library" | awk '{print $3}' | sort -u > "$exported"
grep -v '^#' "$names" | sort -u > "$declared"

extra=$(comm -23 "$exported" "$listed")
if [ -n "$extra" ]; then
    echo "exported but not part of the interface:"; echo "$extra"; exit 1
fi
missing=$(comm -13 "$exported" "$listed")
if [ -n "$missing" ]; then
    echo "part of the interface but not exported:"; echo "$missing"; exit 1
fi
if ! diff -u "$declared" "$listed"; then
    echo "the export map differs from the interface's names ($names)"; exit 1
fi
# A declaration names the function or data right before its ( or [.
undeclared=$(while read -r name; do
    grep -qE "[^A-Za-z0-9_]$name(\\(|\\[)" "$header" || echo "$name"
done < "$declared")
if [ -n "$undeclared" ]; then
    echo "listed but not declared in $header:"; echo "$undeclared"; exit 1
fi
echo "exports ok: $(wc -l < "$exported") of $(wc -l < "$listed") names defined and declared"
