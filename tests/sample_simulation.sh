# What the tests on the circuits of the samples share; they source it after they have set `script` to
# their own name. A test looks for what it needs with `prepare`, runs every deck with `simulate` before the
# conversion and after it, and compares with `compare`.
#
# How the simulator reads the decks:
# - ".LIB" with a file name alone means "include that file" only in its compatibility mode "ps".
# - It has no ".STMLIB". Outside of a control section the line is an error that ends the run. So the decks
#   hold it inside one, where an alias turns it into "set stimuli = FILE", and the next line runs that
#   file: a missing or misnamed stimulus file ends the run too, and its contents count. Names on such
#   a line are read in lower case, so it can only name a file that is referred to in lower case.
# shellcheck shell=sh disable=SC2034,SC2154

set -u
LC_ALL=C
export LC_ALL

fail() {
    echo "$script: $*" >&2
    exit 1
}

# prepare TVXCONV SAMPLE_FOLDER SCRATCH_FOLDER: leaves the absolute paths of the program in `tvxconv`, of the
# sample in `sample`, and of an empty folder to work in, with the folders "results" and "moved" in it, in `work`.
# Ends the test with 77 when there is no simulator to ask.
prepare() {
    if ! command -v ngspice >/dev/null 2>&1; then
        echo "$script: skipped, ngspice is not installed" >&2
        exit 77
    fi
    [ -x "$1" ] || fail "there is no program $1"
    tvxconv=$(cd "$(dirname "$1")" && pwd)/$(basename "$1") || exit 1
    sample=$(cd "$2" && pwd) || fail "there is no folder $2"
    mkdir -p "$3" || exit 1
    work=$(cd "$3" && pwd)/$script || exit 1
    rm -rf "$work"
    mkdir "$work" "$work/results" "$work/moved" || exit 1
}

# simulate FOLDER DECK RESULT LABEL: runs the deck from its folder; leaves the numbers in RESULT, one line
# each or one row of a table each.
simulate() {
    # Without the user's own start-up file, which could change modes, formats and tolerances.
    (cd "$1" && ngspice -n -D ngbehavior=ps -b "$2") >"$3.stdout" 2>"$3.stderr" </dev/null
    status=$?
    if [ $status -ne 0 ]; then
        cat "$3.stderr" >&2
        fail "$4: ngspice ended with status $status"
    fi
    # The names of the included files are echoed; a folder may be called "errors".
    if grep -v 'File included as' "$3.stderr" | cat - "$3.stdout" |
        grep -i -e 'error' -e 'fatal' -e 'failed' -e 'interrupted' -e 'no such' -e "can't" >&2; then
        fail "$4: ngspice reported an error"
    fi
    # Left out: titles, the date above each table, times, memory sizes, modes.
    sed -e '/^Circuit: /d' \
        -e '/^ *\* /d' \
        -e '/ [A-Z][a-z][a-z] [A-Z][a-z][a-z] [ 0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9]  *[0-9]*$/d' \
        -e '/^Total .* time/d' \
        -e '/^\(Total \)*DRAM /d' \
        -e '/ngspice program size =/d' \
        -e '/^\(Shared ngspice\|Library\|Text (code)\) pages =/d' \
        -e '/^Stack = /d' \
        -e '/^Note: /d' \
        -e '/File included as/d' \
        -e '/^[[:space:]]*$/d' "$3.stdout" >"$3"
    grep -q '[0-9]e[-+][0-9]' "$3" || fail "$4: the run yields no numbers"
}

# compare OLD_RESULT NEW_RESULT LABEL: fails unless the numbers are the same.
compare() {
    if ! diff "$1" "$2" >&2; then
        fail "$3: the converted deck gives other numbers (< before, > after the conversion)"
    fi
    echo "$3: $(($(wc -l <"$2"))) lines of numbers, the same after the conversion"
}
