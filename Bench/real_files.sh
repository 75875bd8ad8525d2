#!/bin/bash
# Collects real-world XML files that Debian packages ship into a folder, as
# this library reads them: a document type declaration (which the library
# does not support) is cut out, nothing else is changed.  Prints one
# --file=PATH argument per file for the benchmark; a file whose package is
# not installed is left out with a note on standard error.
#
# Usage: Bench/real_files.sh DIR
# The packages: shared-mime-info, iso-codes, xkb-data, python3-wadllib,
# libgirepository1.0-dev.
set -euo pipefail
dir=${1:?usage: real_files.sh DIR}
mkdir -p "$dir"
files=(
    /usr/share/mime/packages/freedesktop.org.xml
    /usr/share/xml/iso-codes/iso_639-3.xml
    /usr/share/X11/xkb/rules/base.xml
    /usr/lib/python3/dist-packages/wadllib/tests/data/launchpad-wadl.xml
    /usr/share/gir-1.0/GObject-2.0.gir
    /usr/share/gir-1.0/GLib-2.0.gir
    /usr/share/gir-1.0/Gio-2.0.gir
)
for file in "${files[@]}"; do
    if [[ ! -f $file ]]; then
        echo "real_files: $file is not installed; left out" >&2
        continue
    fi
    out="$dir/$(basename "$file")"
    python3 - "$file" "$out" <<'PY'
import re, sys
text = open(sys.argv[1], 'rb').read()
# The declaration with its internal subset, if any: <!DOCTYPE name ... [ ... ]>
text = re.sub(rb'<!DOCTYPE[^\[>]*(\[.*?\]\s*)?>', b'', text, count=1, flags=re.S)
open(sys.argv[2], 'wb').write(text)
PY
    echo "--file=$out"
done
