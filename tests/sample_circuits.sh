#!/bin/sh
# Proves on the Draftel sample that its circuits still work after a conversion: every deck is simulated
# in the old project folder, the project is converted, and every converted deck, simulated in its own
# folder, has to give the same numbers.
#
#   sample_circuits.sh TVXCONV PROJECT_FOLDER SCRATCH_FOLDER
#
# TVXCONV is the program, PROJECT_FOLDER the sample (its neighbour "models" is used as well); only
# SCRATCH_FOLDER is written to, in a sub-folder that is emptied first. The status is 0 when all numbers
# agree, 77 when there is no simulator to ask, 2 for a wrong command line, otherwise 1, and the deck
# at fault is named.

script=sample_circuits
. "$(dirname "$0")/sample_simulation.sh"

if [ $# -ne 3 ]; then
    echo "usage: sample_circuits.sh TVXCONV PROJECT_FOLDER SCRATCH_FOLDER" >&2
    exit 2
fi
prepare "$1" "$2" "$3"
cp -R "$sample" "$work/amp" || exit 1
cp -R "$sample/../models" "$work/models" || exit 1
project=$work/amp
converted=$work/converted

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
    compare "$work/results/$deck.old" "$work/results/$deck.new" "$deck"
done
