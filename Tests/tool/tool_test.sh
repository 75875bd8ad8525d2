#!/bin/bash
# The command-line tool as a user runs it: check, cat, tree and stats on
# small documents; exit status; error reports; every kind of input that is
# no readable document; options it does not know.
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
expect_line() { grep -qF -- "$2" "$1" || { fail "$3: no line '$2' in $1"; cat "$1" >&2; }; }

printf '<?xml version="1.0"?>\n<!-- c -->\n<a x="it'"'"'s">1 &lt; 2<?p d?><b/></a>\n' >good.xml
printf '<a>\n  <b>\n\t<!-- \303\251 --->\n  </b>\n</a>\n' >bad.xml
printf '<?xml version="1.0" encoding="UTF-8"?>\n<a x="it&apos;s">1 &lt; 2<?p d?><b></b></a>\n' >good.cat
{
    printf 'bad.xml:3:9: error: ERR_COMMENT_HYPHENS (code 9): two hyphens (--) inside a comment\n'
    printf '  hint: -- may not stand inside a comment, and a comment may not end with --->\n'
    printf '\t<!-- \303\251 --->\n\t       ^\n'
} >bad.err

run check good.xml
expect_status 0 "check good"
printf 'good.xml: accepted by libvrkxml\n' >want
expect_file out want "check good"
[ -s err ] && fail "check good wrote to stderr"

run check bad.xml
expect_status 1 "check bad"
expect_file err bad.err "check bad"
[ -s out ] && fail "check bad wrote to stdout"

run check good.xml bad.xml good.xml
expect_status 1 "check three files"
printf 'good.xml: accepted by libvrkxml\ngood.xml: accepted by libvrkxml\n' >want
expect_file out want "check three files"

"$tool" check - <good.xml >out 2>err
status=$?
expect_status 0 "check stdin"
expect_line out '-: accepted by libvrkxml' "check stdin"

# What the library does not examine is accepted by default, never called
# well-formed, and refused by --strict.
printf '<a/>garbage <<<' >after.xml
printf '<a/><b/><c/>' >roots.xml
printf '<a>\001</a>' >control.xml
printf '<r a="1"b="2"/>' >spaceless.xml
run check after.xml roots.xml control.xml spaceless.xml
expect_status 0 "check what the library does not examine"
grep -q 'well-formed' out err && fail "check says well-formed"
for case in after.xml:ERR_CONTENT_AFTER_ROOT roots.xml:ERR_CONTENT_AFTER_ROOT \
    control.xml:ERR_NOT_A_CHARACTER spaceless.xml:ERR_ATTRIBUTE_SPACE; do
    run check --strict "${case%%:*}"
    expect_status 1 "check --strict ${case%%:*}"
    expect_line err "${case#*:}" "check --strict ${case%%:*}"
done
run check --strict good.xml
expect_status 0 "check --strict good"

printf '<!DOCTYPE a>\n<a/>' >doctype.xml
run check doctype.xml
expect_line err 'hint: document type declarations are not supported' "DOCTYPE hint"
printf '<p>a &nbsp; b</p>' >entity.xml
run check entity.xml
expect_line err '&nbsp; is not one of the five predefined entities' "entity hint"

run check --format=json good.xml bad.xml missing.xml
expect_status 2 "json"
{
    printf '{"file":"good.xml","accepted":true,"line":null,"column":null,"offset":null,"code":0,'
    printf '"name":null,"message":null,"hint":null}\n'
    printf '{"file":"bad.xml","accepted":false,"line":3,"column":9,"offset":19,"code":9,'
    printf '"name":"ERR_COMMENT_HYPHENS","message":"two hyphens (--) inside a comment",'
    printf '"hint":"-- may not stand inside a comment, and a comment may not end with --->"}\n'
    printf '{"file":"missing.xml","accepted":false,"line":null,"column":null,"offset":null,'
    printf '"code":104,"name":"ERR_READ",'
    printf '"message":"cannot read missing.xml: No such file or directory","hint":null}\n'
} >want
expect_file out want "json"

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

# Characters beyond U+FFFF come back byte for byte, from UTF-8 and from
# UTF-16 big-endian without a mark.
{
    printf '<?xml version="1.0" encoding="UTF-8"?>\n'
    printf '<a x="\360\237\230\200">\360\235\204\236</a>\n'
} >wide.xml
run cat wide.xml
expect_status 0 "cat beyond U+FFFF"
expect_file out wide.xml "cat beyond U+FFFF"
iconv -f UTF-8 -t UTF-16BE wide.xml >wide16.xml
run cat wide16.xml
expect_file out wide.xml "cat UTF-16BE without a mark"

printf '<r><a>x</a>  <b><c/></b></r>' >flat.xml
run cat --indent=3 flat.xml
{
    printf '<?xml version="1.0" encoding="UTF-8"?>\n'
    printf '<r>\n   <a>x</a>\n   <b>\n      <c></c>\n   </b>\n</r>\n'
} >want
expect_file out want "cat --indent=3"

run cat bad.xml
expect_status 1 "cat bad"
expect_file err bad.err "cat bad"
"$tool" cat good.xml >/dev/full 2>err
status=$?
expect_status 2 "cat to a full device"
expect_line err 'cannot write standard output: No space left on device' "cat to a full device"

# Inputs that are no readable document: a message and the documented status.
mkdir folder
: >empty.xml
mkfifo fifo.xml
printf '<a>\303(</a>' >latin.xml
run check missing.xml
expect_status 2 "missing file"
expect_line err 'vrkxml: cannot read missing.xml: No such file or directory' "missing file"
run check folder
expect_status 2 "directory"
expect_line err 'vrkxml: cannot read folder: Is a directory' "directory"
run check /proc/self/mem
expect_status 2 "unreadable file"
expect_line err 'Input/output error' "unreadable file"
if [ "$(id -u)" -ne 0 ]; then  # root reads any file
    cp good.xml locked.xml
    chmod 000 locked.xml
    run check locked.xml
    expect_status 2 "file without read permission"
    expect_line err 'cannot read locked.xml: Permission denied' "file without read permission"
fi
run check empty.xml
expect_status 1 "empty file"
expect_line err 'hint: the text is empty' "empty file"
timeout 10 cat good.xml >fifo.xml &  # a writer that never meets a reader gives up
run check fifo.xml
wait
expect_status 0 "FIFO"
run check latin.xml
expect_status 1 "malformed UTF-8"
expect_line err 'latin.xml:1:4: error: ERR_MALFORMED_TEXT (code 101)' "malformed UTF-8"

# Options: known ones per command, anything else refused with the usage.
for args in "" "check" "cat --utf16" "tree" "check --quiet good.xml" "frobnicate good.xml" \
    "--frobnicate" "cat --indent=x good.xml" "cat --indent=17 good.xml" \
    "check --format=xml good.xml" "tree --utf16 good.xml" "cat good.xml good.xml"; do
    # shellcheck disable=SC2086
    run $args
    expect_status 2 "vrkxml $args"
    expect_line err 'usage: vrkxml check' "vrkxml $args"
done
run -- check
expect_status 2 "-- as a command"
run check -- -x
expect_status 2 "a file named -x behind --"
expect_line err 'cannot read -x' "a file named -x behind --"

run --version
expect_status 0 "--version"
grep -qE '^vrkxml [0-9]+\.[0-9]+\.[0-9]+ \(libvrkxml\)$' out || fail "--version prints $(cat out)"
run --help
expect_status 0 "--help"
for section in 'EXIT STATUS' 'NOT EXAMINED BY THE LIBRARY (checked with --strict)'; do
    expect_line out "$section" "--help"
done

printf '<a x="1"><b>t</b><?p d?><![CDATA[c]]></a>' >small.xml
run tree small.xml
expect_status 0 "tree"
printf '<a x="1">\n  <b>\n    "t"\n  <?p "d"?>\n  CDATA "c"\n' >small.tree
expect_file out small.tree "tree"

run stats small.xml
expect_status 0 "stats"
grep -q '^  elements        2$' out && grep -q '^  attributes      1$' out && grep -q '^  depth           3$' out ||
    fail "stats counts"
run stats bad.xml
expect_status 1 "stats bad"

[ "$failures" -eq 0 ] || { echo "$failures failure(s)" >&2; exit 1; }
echo "all tool checks passed"
