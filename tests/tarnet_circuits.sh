#!/bin/sh
# Proves on the Tarnet sample that its circuits still work after a conversion: every deck is simulated in
# the old view of its cell, the library is converted, and every converted deck, simulated in its own folder,
# has to give the same numbers. The cell that comes converted is compared as well.
#
#   tarnet_circuits.sh TVXCONV LIBRARY_FOLDER SCRATCH_FOLDER
#
# TVXCONV is the program, LIBRARY_FOLDER the sample; only SCRATCH_FOLDER is written to, in a sub-folder that
# is emptied first. The status is 0 when all numbers agree, 77 when there is no simulator to ask, 2 for
# a wrong command line, otherwise 1, and the deck at fault is named.

script=tarnet_circuits
. "$(dirname "$0")/sample_simulation.sh"

if [ $# -ne 3 ]; then
    echo "usage: tarnet_circuits.sh TVXCONV LIBRARY_FOLDER SCRATCH_FOLDER" >&2
    exit 2
fi
prepare "$1" "$2" "$3"
library=$work/library
cp -R "$sample" "$library" || exit 1
# A folder with a "." in its name is no cell.
rm -rf "$library"/*.*

decks=0
for path in "$library"/*/cfg_analog/*.sim.cir; do
    [ -f "$path" ] || fail "$sample holds no decks"
    deck=$(basename "$path")
    cell=$(basename "${path%/cfg_analog/*}")
    simulate "$library/$cell/cfg_analog" "$deck" "$work/results/$cell-$deck.old" "$cell, $deck"
    decks=$((decks + 1))
done

"$tvxconv" tarnet "$library" >"$work/results/listing" || fail "the conversion failed with status $?"

found=$(find "$library" -path '*/tvx_sim_1/profiles/*' -name '*.cir' | wc -l)
[ "$found" -eq "$decks" ] || fail "$decks decks before the conversion, $((found)) after it"

# What was copied has to be read in its new place: the files of the old views are no longer there to be
# found, only their folders, which the conversion leaves where they are.
for view in "$library"/*/cfg_analog; do
    cell=$(basename "$(dirname "$view")")
    mkdir "$work/moved/$cell" || exit 1
    find "$view" -maxdepth 1 -type f -exec mv {} "$work/moved/$cell" ';' || exit 1
done

for path in "$work"/moved/*/*.sim.cir; do
    deck=$(basename "$path")
    cell=$(basename "$(dirname "$path")")
    profile=${deck%.sim.cir}
    folder=$library/$cell/tvx_sim_1/profiles/$profile
    [ -f "$folder/$profile.cir" ] || fail "$cell, $deck: there is no converted deck $folder/$profile.cir"
    simulate "$folder" "$profile.cir" "$work/results/$cell-$deck.new" "$cell, $deck, converted"
    compare "$work/results/$cell-$deck.old" "$work/results/$cell-$deck.new" "$cell, $deck"
done
