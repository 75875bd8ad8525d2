#!/usr/bin/env bash
# Writes the seed corpora of the fuzz targets into OUT/<target>/, the same
# bytes on every run.  With SUITE (the unpacked conformance suite) its .xml
# documents are added too.  Files already in OUT stay.
#   usage: make_corpus.sh OUT [SUITE]
set -euo pipefail
out=${1:?usage: make_corpus.sh OUT [SUITE]}
suite=${2:-}
targets=(fuzz_parse fuzz_round_trip fuzz_edit fuzz_oom)
for t in "${targets[@]}"; do mkdir -p "$out/$t"; done
out=$(cd "$out" && pwd)  # the suite is copied from inside its folder

# Documents as printf %b arguments.
docs=(
  '<a/>'
  '<a>text</a>'
  '<?xml version="1.0"?>\n<root/>'
  '<?xml version="1.0" encoding="UTF-8" standalone="yes"?><r a="1"/>'
  "<?xml version='1.0' encoding='utf-16'?><r/>"
  '<a b="1" c=\x27two\x27 d="&lt;&amp;&gt;&quot;&apos;"/>'
  '<p:a xmlns:p="urn:p" p:x="1"><p:b/><c xmlns="urn:d"><d/></c></p:a>'
  '<a xmlns="urn:x" xmlns:q="urn:q"><q:b q:c="v" xmlns:q="urn:other"/></a>'
  '<a xml:lang="en" xmlns:xml="http://www.w3.org/XML/1998/namespace"/>'
  '<a>&#65;&#x42;&#x10000;&#xE9;&#9;</a>'
  '<a>x &amp; y &lt; z</a>'
  '<a><![CDATA[<not> & markup]]>tail<![CDATA[]]></a>'
  '<?pi data?><!-- c --><a><?t?><!--x-->text</a><?after d?>'
  '<!-- leading --><a/><!-- trailing -->'
  '<a>\n  <b>one</b>\n  <b>two</b>\r\n</a>'
  '<a>caf\xc3\xa9 \xe4\xb8\xad \xf0\x9f\x98\x80</a>'
  '\xef\xbb\xbf<a>mark</a>'
  '<\xc3\xa9l\xc3\xa9ment attr\xe4\xb8\xad="v"/>'
  '<a b="1" b="2"/>'
  '<a><b></a></b>'
  '<a>&bogus;</a>'
  '<a>&#0;&#xD800;</a>'
  '<!-- a -- b --><a/>'
  '<a b=1/>'
  '<x:a/>'
  '<a xmlns:="u"/>'
  '<?xml version="2.0"?><a/>'
  '<?xml encoding="UTF-8"?><a/>'
  '<a'
  ''
  '<'
  ' '
  '<a>]]></a>'
  '<a><![CDATA[open</a>'
  '<?xml version="1.0" encoding="latin-1"?><a/>'
  '<a  b = "1"\t c\n=\x27x\x27 ></a >'
)
# Generated shapes: deep nesting, many attributes, many children.
deep=$(printf '<d>%.0s' {1..300})x$(printf '</d>%.0s' {1..300})
attrs="<a$(for i in {1..60}; do printf ' a%d="%d"' "$i" "$i"; done)/>"
kids="<a>$(for i in {1..80}; do printf '<k%d>t%d</k%d>&amp;' "$i" "$i" "$i"; done)</a>"
nsdeep="<n:a xmlns:n=\"u\">$(printf '<n:b xmlns:m%d="v">' {1..40})$(printf '</n:b>%.0s' {1..40})</n:a>"
docs+=("$deep" "$attrs" "$kids" "$nsdeep")

# One byte of the given value, without a subshell.  The first byte of an
# input is its mode (0: UTF-8; 1-7: UTF-16 orders, marks and odd addresses,
# see fuzz_support.h).
byte() { local hex; printf -v hex %02x "$(($1 & 255))"; printf "\\x$hex"; }

# Deterministic pseudo-random bytes for the edit programs.
state=12345
program() {
  local i
  for ((i = 0; i < $1; i++)); do
    state=$(((state * 1103515245 + 12345) % 2147483648))
    byte $((state >> 16))
  done
}

# seed NAME MODE FILE: one input per target for the document in FILE.
n=0
seed() {
  local name=$1 m=$2 file=$3 size
  size=$(stat -c %s "$file")
  if ((size > 65535)); then size=65535; fi
  n=$((n + 1))
  { byte "$m"; cat "$file"; } > "$out/fuzz_parse/$name"
  cp "$out/fuzz_parse/$name" "$out/fuzz_round_trip/$name"
  { byte $((n * 7)); printf "\\x00\\x00\\x00"; byte "$m"; cat "$file"; } > "$out/fuzz_oom/$name"
  { byte "$m"; byte "$size"; byte $((size >> 8))
    head -c "$size" "$file"; program 96; } > "$out/fuzz_edit/$name"
}

tmp=$(mktemp)
trap 'rm -f "$tmp"' EXIT
for i in "${!docs[@]}"; do
  printf '%b' "${docs[$i]}" > "$tmp"
  seed "doc-$(printf %02d "$i")-m0" 0 "$tmp"
  # The first dozen documents in every other presentation as well.
  if ((i < 12)); then
    for m in 1 2 3 4 5 6 7; do seed "doc-$(printf %02d "$i")-m$m" "$m" "$tmp"; done
  fi
done

if [[ -n $suite ]]; then
  # Plain documents are inputs of fuzz_parse and fuzz_round_trip as they are
  # (libFuzzer reads corpus folders recursively): one cp for all of them.
  list=$(mktemp)
  trap 'rm -f "$tmp" "$list"' EXIT
  (cd "$suite" && find . -type f -name '*.xml' -size -4097c | LC_ALL=C sort > "$list")
  for t in fuzz_parse fuzz_round_trip; do
    mkdir -p "$out/$t/suite"
    (cd "$suite" && xargs -d '\n' cp --parents -t "$out/$t/suite" < "$list")
  done
  # The other two need a header per file: every 16th document.
  i=0
  while read -r file; do
    i=$((i + 1))
    if ((i % 16 == 0)); then name=${file#./}; seed "suite-${name//\//_}" 0 "$suite/$file"; fi
  done < "$list"
fi
