#!/bin/sh
# Proves on the sample project that its circuits still work after a conversion: every deck is simulated
# in the old project folder, the project is converted, and every converted deck, simulated in its own
# folder, has to give the same numbers.
#
#   sample_circuits.sh TVXCONV PROJECT_FOLDER SCRATCH_FOLDER
#
# TVXCONV is the program, PROJECT_FOLDER the sample (its neighbour "models" is used as well); only
# SCRATCH_FOLDER is written to, in a sub-folder that is emptied first. The status is 0 when all numbers
# agree, 77 when there is no simulator to ask, 2 for a wrong command line, otherwise 1, and the deck
# at fault is named.
#
# How the simulator reads the decks:
# - ".LIB" with a file name alone means "include that file" only in its compatibility mode "ps".
# - It has no ".STMLIB". Outside of a control section the line is an error that ends the run. So the decks
#   hold it inside one, where an alias turns it into "set stimuli = FILE", and the next line runs that
#   file: a missing or misnamed stimulus file ends the run too, and its contents count. Names on such
#   a line are read in lower case, so it can only name a file that is referred to in lower case.

set -u
LC_ALL=C
export LC_ALL

fail() {
    echo "sample_circuits: $*" >&2
    exit 1
}

if [ $# -ne 3 ]; then
    echo "usage: sample_circuits.sh TVXCONV PROJECT_FOLDER SCRATCH_FOLDER" >&2
    exit 2
fi
if ! command -v ngspice >/dev/null 2>&1; then
    echo "sample_circuits: skipped, ngspice is not installed" >&2
    exit 77
fi

[ -x "$1" ] || fail "there is no program $1"
tvxconv=$(cd "$(dirname "$1")" && pwd)/$(basename "$1") || exit 1
sample=$(cd "$2" && pwd) || fail "there is no folder $2"
mkdir -p "$3" || exit 1
work=$(cd "$3" && pwd)/sample-circuits || exit 1

rm -rf "$work"
mkdir "$work" "$work/results" "$work/moved" || exit 1
cp -R "$sample" "$work/amp" || exit 1
cp -R "$sample/../models" "$work/models" || exit 1
project=$work/amp
converted=$work/converted

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

decks=0
for path in "$project"/amp-*.sim.cir; do
    [ -f "$path" ] || fail "$sample holds no decks"
    deck=$(basename "$path")
    simulate "$project" "$deck" "$work/results/$deck.old" "$deck"
    decks=$((decks + 1))
done

"$tvxconv" draftel "$project/amp.opj" --to "$converted" >"$work/results/listing" ||
    fail "the conversion failed with status $?"

found=$(find "$converted" -name '*.cir' | wc -l)
[ "$found" -eq "$decks" ] || fail "$decks decks before the conversion, $((found)) after it"

# What was moved has to be read in its new place: the flat files are no longer there to be found.
mv "$project"/amp[.-]* "$work/moved" || exit 1

for path in "$work"/moved/amp-*.sim.cir; do
    deck=$(basename "$path")
    name=${deck%.sim.cir}
    name=${name#amp-}
    schematic=${name%-*}
    profile=${name##*-}
    folder=$converted/amp-TevrixFiles/$schematic/$profile
    [ -f "$folder/$profile.cir" ] || fail "$deck: there is no converted deck $folder/$profile.cir"
    simulate "$folder" "$profile.cir" "$work/results/$deck.new" "$deck, converted"
    if ! diff "$work/results/$deck.old" "$work/results/$deck.new" >&2; then
        fail "$deck: the converted deck gives other numbers (< before, > after the conversion)"
    fi
    echo "$deck: $(($(wc -l <"$work/results/$deck.new"))) lines of numbers, the same after the conversion"
done
