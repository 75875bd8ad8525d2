#!/bin/bash
# The command-line tool: check and cat on small documents, exit status,
# error reports with line, column and caret, standard input.
# Usage: tool_test.sh PATH_TO_VRKXML
set -u
tool=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }
run() { "$tool" "$@" >out 2>err; status=$?; }
expect_status() { [ "$status" -eq "$1" ] || fail "$2: exit $status, wanted $1"; }
expect_file() { cmp -s "$1" "$2" || { fail "$3: $1 differs"; diff "$2" "$1" >&2; }; }

printf '<?xml version="1.0"?>\n<!-- c -->\n<a x="it'"'"'s">1 &lt; 2<?p d?><b/></a>\n' >good.xml
printf '<a>\n  <b>\n\t<!-- \303\251 --->\n  </b>\n</a>\n' >bad.xml
printf '<?xml version="1.0" encoding="UTF-8"?>\n<a x="it&apos;s">1 &lt; 2<?p d?><b></b></a>\n' >good.cat
printf 'bad.xml:3:9: error: ERR_COMMENT_HYPHENS (code 9)\n\t<!-- \303\251 --->\n\t       ^\n' >bad.err

run check good.xml
expect_status 0 "check good"
printf 'good.xml: well-formed\n' >want
expect_file out want "check good"
[ -s err ] && fail "check good wrote to stderr"

run check bad.xml
expect_status 1 "check bad"
expect_file err bad.err "check bad"
[ -s out ] && fail "check bad wrote to stdout"

run check good.xml bad.xml good.xml
expect_status 1 "check three files"
printf 'good.xml: well-formed\ngood.xml: well-formed\n' >want
expect_file out want "check three files"
expect_file err bad.err "check three files"

"$tool" check - <good.xml >out 2>err
status=$?
expect_status 0 "check stdin"
printf -- '-: well-formed\n' >want
expect_file out want "check stdin"

run cat good.xml
expect_status 0 "cat"
expect_file out good.cat "cat"

"$tool" cat - <good.xml >out 2>err
status=$?
expect_status 0 "cat stdin"
expect_file out good.cat "cat stdin"

run cat --utf16 good.xml
expect_status 0 "cat --utf16"
[ "$(head -c 2 out | od -An -tx1 | tr -d ' ')" = "3c00" ] || fail "cat --utf16 does not begin with < in UTF-16LE"
# Every unit is ASCII here; the header names UTF-16, one unit longer than UTF-8.
[ "$(wc -c <out)" -eq $((2 * ($(wc -c <good.cat) + 1))) ] || fail "cat --utf16 length $(wc -c <out)"

run cat bad.xml
expect_status 1 "cat bad"
expect_file err bad.err "cat bad"

run check missing.xml
expect_status 2 "check missing file"
grep -q '^missing.xml: cannot read$' err || fail "check missing file: no message"

run
expect_status 2 "no arguments"
run check
expect_status 2 "check without files"
run cat --utf16
expect_status 2 "cat without file"

printf '<a x="1"><b>t</b><?p d?><![CDATA[c]]></a>' > small.xml
run tree small.xml
expect_status 0 "tree"
printf '<a x="1">\n  <b>\n    "t"\n  <?p "d"?>\n  CDATA "c"\n' > small.tree
expect_file out small.tree "tree"

run stats small.xml
expect_status 0 "stats"
grep -q '^  elements        2$' out && grep -q '^  attributes      1$' out && grep -q '^  depth           3$' out ||
    fail "stats counts"
run stats bad.xml
expect_status 1 "stats bad"

run --help
expect_status 0 "--help"
grep -q '^EXIT STATUS$' out || fail "--help has no exit status section"
run tree
expect_status 2 "tree without file"

[ "$failures" -eq 0 ] || { echo "$failures failure(s)" >&2; exit 1; }
echo "all tool checks passed"
