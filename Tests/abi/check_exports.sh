#!/bin/sh
# check_exports.sh LIBRARY EXPORT_MAP [ABI_SHEET]
# Fails when the shared library's defined dynamic symbols differ from the
# names the export map lists (nothing more, nothing less), or when the export
# map and the interface sheet (if it is present) list different names.
set -eu
library=$1
map=$2
sheet=${3:-}

listed=$(mktemp); exported=$(mktemp); trap 'rm -f "$listed" "$exported"' EXIT
sed -n 's/^ *\([A-Za-z_][A-Za-z0-9_]*\);$/\1/p' "$map" | sort -u > "$listed"
nm -D --defined-only "$library" | awk '{print $3}' | sort -u > "$exported"

extra=$(comm -23 "$exported" "$listed")
if [ -n "$extra" ]; then
    echo "exported but not part of the interface:"; echo "$extra"; exit 1
fi
missing=$(comm -13 "$exported" "$listed")
if [ -n "$missing" ]; then
    echo "part of the interface but not exported:"; echo "$missing"; exit 1
fi

if [ -n "$sheet" ] && [ -f "$sheet" ]; then
    # Every name the sheet declares: functions and exported data.
    declared=$(mktemp); trap 'rm -f "$listed" "$exported" "$declared"' EXIT
    sed -n '/^## Exported data/,/^## Conveniences/p' "$sheet" \
      | grep -oE '\b(vrk[A-Za-z0-9_]+|Produce_[A-Za-z]+|unistrndup|NamedNodeMap_[A-Za-z]+|DOM_[A-Za-z]+|ShouldSwapUTF16|SwapUTF16|IdentifyCharacterEncoding|tokenToString|pushNameSpaceStack|popNameSpaceStack|getNameSpaceURI|resolveNameSpace|AttrValueRefResolve|DebugPrint|predefEnt|xml(lt|gt|amp|apos|quot)|UCSxmlns|XML10_NAMESPACE|XMLNS_URI)\b' \
      | grep -vE '^vrk(Node|NamedNodeMap|DOMException|ParseError|WriteFunc)$' | sort -u > "$declared"
    if ! diff -u "$declared" "$listed"; then
        echo "the export map differs from the interface sheet"; exit 1
    fi
else
    echo "interface sheet not found; checked the library against the export map only"
fi
echo "exports ok: $(wc -l < "$exported") of $(wc -l < "$listed") names defined"
