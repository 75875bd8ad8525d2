#!/bin/bash
# Measures what the tests catch: applies each small fault of a fixed list
# (scripts/mutants.txt) to a scratch copy of the sources, builds, runs the
# fast tests and counts the fault as killed when they fail (or when it does
# not build, reported apart), as survived when they pass.
#   scripts/mutants.sh [--only N[,N...]] [--list FILE] [--by-test]
# --by-test runs every fast test on each fault (not only up to the first
# failure) and ends with, for each test, the faults it kills and how many of
# them no other test kills: a test whose own kills are all zero adds nothing
# the others do not catch.
# The scratch copy and its one build folder are build-mutants/ (kept between
# runs, so that each fault recompiles one object and relinks); the sources
# in the repository are never touched.  Prints "mutants: K killed of N" and
# the survivors, and leaves the whole log in build-mutants/mutants.log.
# Takes long (a minute or less per fault on two cores): run it under
# nice -n 19 on a shared machine.  Not part of CI.
#
# A fault is three lines of the list: the file, "- " and the exact text it
# replaces (unique in that file, so that the list survives unrelated edits),
# "+ " and the replacement (nothing: the text is dropped).  Lines starting
# with # are comments; a fault removed from the list stays there as a
# comment with the reason.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD

list=$root/scripts/mutants.txt
only=""
by_test=""
while (($#)); do
    case $1 in
        --only) only=",$2,"; shift 2 ;;
        --list) list=$(realpath "$2"); shift 2 ;;
        --by-test) by_test=1; shift ;;
        *) echo "usage: scripts/mutants.sh [--only N[,N...]] [--list FILE] [--by-test]" >&2; exit 2 ;;
    esac
done
bash scripts/bootstrap.sh test

scratch=$root/build-mutants
src=$scratch/src
build=$scratch/build
log=$scratch/mutants.log
mkdir -p "$src"
: > "$log"

# The fast tests: the unit-test programs, the tool's test and the fuzz
# replayers; not the conformance suite, the multi-gigabyte texts, the
# install and embedding builds.
slow='^(conformance|embed|install|abi|examples)\.|^TextLimits\.'

# The scratch copy follows the working tree (tracked and new files, and no
# file the tree no longer has); a copied file gets a new time, so that
# whatever was built from an older state of it is rebuilt.
sync_sources() {
    local file
    declare -A present=()
    while IFS= read -r -d '' file; do
        [[ -f $file ]] || continue
        present[$file]=1
        if ! cmp -s "$file" "$src/$file"; then
            mkdir -p "$src/$(dirname "$file")"
            cp "$file" "$src/$file"
        fi
    done < <(git ls-files -z --cached --others --exclude-standard)
    while IFS= read -r -d '' file; do
        file=${file#"$src/"}
        [[ -n ${present[$file]:-} ]] || rm "$src/$file"
    done < <(find "$src" -type f -print0)
}

build_and_test() {
    cmake --build "$build" -j"$(nproc)" >>"$log" 2>&1 || return 2
    local stop=--stop-on-failure
    [[ -n $by_test ]] && stop=
    rm -f "$build/Testing/Temporary/LastTestsFailed.log"
    # The slowest fast test takes 3 s: a fault that makes a loop endless is
    # caught by the time limit without waiting long for each test it hangs.
    (cd "$build" && ctest -j"$(nproc)" --timeout 20 $stop -E "$slow") >>"$log" 2>&1 || return 1
    return 0
}

sync_sources
# -O1 without the sanitizers: the test programs build and run fast, and
# their wrapped malloc still sees every block a fault leaks.
# Ninja when there is one: make's own walk over the targets costs seconds
# per fault.
generator=()
[[ ! -f $build/CMakeCache.txt ]] && command -v ninja >/dev/null && generator=(-G Ninja)
cmake -S "$src" -B "$build" "${generator[@]}" -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_FLAGS=-O1 -DCMAKE_C_FLAGS=-O1 -DVRKXML_BUILD_TESTS=ON \
    -DVRKXML_SANITIZE=OFF -DVRKXML_WARNINGS_AS_ERRORS=OFF -DVRKXML_TEST_CONFORMANCE=OFF \
    -DVRKXML_INSTALL=OFF -DVRKXML_BUILD_EXAMPLES=OFF >>"$log" 2>&1
echo "== unchanged sources" >>"$log"
if ! build_and_test; then
    echo "mutants: the unchanged sources fail the fast tests (see $log)" >&2
    exit 1
fi

# Reads the list into parallel arrays.
files=() originals=() replacements=()
{
    state=file
    while IFS= read -r line; do
        [[ $line == \#* ]] && continue
        case $state in
            file) [[ -z $line ]] && continue; file=$line; state=original ;;
            original)
                [[ $line == "- "* ]] || { echo "mutants: expected '- ' after $file" >&2; exit 2; }
                original=${line#- }; state=replacement ;;
            replacement)
                [[ $line == "+" || $line == "+ "* ]] ||
                    { echo "mutants: expected '+' after '- $original'" >&2; exit 2; }
                files+=("$file"); originals+=("$original"); replacements+=("${line#+ }")
                [[ $line == "+" ]] && replacements[-1]=""
                state=file ;;
        esac
    done
} < "$list"

[[ -n $by_test ]] && : > "$scratch/kills"
total=0 killed=0 unbuilt=0
survivors=()
for i in "${!files[@]}"; do
    n=$((i + 1))
    [[ -z $only || $only == *",$n,"* ]] || continue
    file=${files[i]} original=${originals[i]} replacement=${replacements[i]}
    target=$src/$file
    if [[ ! -f $target ]]; then
        echo "mutants: #$n names a missing file $file" >&2; exit 2
    fi
    text=$(cat "$target"; echo x)
    text=${text%x}
    rest=${text#*"$original"}
    if [[ $rest == "$text" || $rest == *"$original"* ]]; then
        echo "mutants: #$n: the text is not in $file exactly once: $original" >&2; exit 2
    fi
    total=$((total + 1))
    printf '%s' "${text%%"$original"*}$replacement$rest" > "$target"
    echo "== #$n $file: $original -> $replacement" >>"$log"
    status=0
    build_and_test || status=$?
    printf '%s' "$text" > "$target"  # a new time: rebuilt with the next fault
    if [[ -n $by_test && $status == 1 ]]; then
        # Lines "number:name" of the tests that failed.
        sed "s/^[0-9]*:/#$n /" "$build/Testing/Temporary/LastTestsFailed.log" >>"$scratch/kills"
    fi
    case $status in
        0) survivors+=("#$n $file: '$original' -> '$replacement'"); verdict=survived ;;
        1) killed=$((killed + 1)); verdict=killed ;;
        2) killed=$((killed + 1)); unbuilt=$((unbuilt + 1)); verdict="killed (does not build)" ;;
    esac
    echo "#$n $verdict" | tee -a "$log"
done

echo "mutants: $killed killed of $total ($unbuilt of them by a failed build)"
if ((${#survivors[@]})); then
    echo "survivors:"
    printf '  %s\n' "${survivors[@]}"
fi

if [[ -n $by_test ]]; then
    echo "kills by test (all, and those no other test makes):"
    (cd "$build" && ctest -N -E "$slow") | sed -n 's/^ *Test *#[0-9]*: //p' |
        sed 's/^/- /' | cat - "$scratch/kills" |
    awk '$1 == "-" { tests[$2] = tests[$2]; next }
         { tests[$2] = tests[$2] " " $1; count[$1]++ }
         END {
             for (t in tests) {
                 n = split(tests[t], ids, " "); own = 0
                 for (i = 1; i <= n; i++) if (count[ids[i]] == 1) own++
                 printf "  %3d %3d %s\n", n, own, t
             }
         }' | sort -k2,2n -k1,1n
fi
