#!/bin/sh
# Converts the samples with the program of this system and with that for Windows, under Wine, and compares all
# that came of it: trees, listings, messages, statuses and reports.
#
#   compare_systems.sh PROGRAM WINDOWS_PROGRAM WINE_PREFIX EXAMPLES SCRATCH
#
# What differs by intention is made equal beforehand: line ends, and the folder in which a run takes place. Only
# SCRATCH is written to, which is emptied first. The status is 0 when nothing differs, 2 for a wrong command line,
# 77 when there is no PROGRAM, otherwise 1.
set -eu

[ $# -eq 5 ] || {
    echo "usage: compare_systems.sh PROGRAM WINDOWS_PROGRAM WINE_PREFIX EXAMPLES SCRATCH" >&2
    exit 2
}
[ -x "$1" ] || {
    echo "compare_systems: there is no $1 to compare with" >&2
    exit 77
}
program=$1
windowsProgram=$2
prefix=$3
examples=$4
scratch=$5
wine=$(dirname "$0")/../cmake/wine.sh
failed=0

rm -rf "$scratch"
mkdir -p "$scratch"
scratch=$(cd "$scratch" && pwd)

# Wine shows this system's folders as drive Z:.
runHere() { "$program" "$@"; }
runThere() { "$wine" "$prefix" "$windowsProgram" "$@"; }

# run NAME COMMAND...: on both systems, with each "@" of the command as the folder of the run.
run() {
    name=$1
    shift
    for system in here there; do
        root=$scratch/$name/$system
        mkdir -p "$root/files" "$scratch/$name/result-$system"
        cp -R "$examples/." "$root/files/"
        prepare "$root/files"
        drive=
        if [ $system = there ]; then drive=Z:; fi
        result=$scratch/$name/result-$system
        set +e
        (
            for argument; do
                shift
                case $argument in
                    @*) set -- "$@" "$drive$root/files${argument#@}" ;;
                    *) set -- "$@" "$argument" ;;
                esac
            done
            if [ $system = here ]; then runHere "$@"; else runThere "$@"; fi
        ) >"$result/output" 2>"$result/errors" </dev/null
        echo $? >"$result/status"
        set -e
        cp -R "$root/files" "$result/files"
        find "$result" -type f -exec sed -i 's/\r$//' {} +
        slashed=$(printf '%s' "$drive$root/files" | sed 's,[./],[./\\\\][./\\\\]*,g')
        find "$result" -type f -exec sed -i "s,$slashed,ROOT,gI" {} +
    done
    if diff -r "$scratch/$name/result-here" "$scratch/$name/result-there" >"$scratch/$name/difference"; then
        echo "$name: the same, status $(cat "$scratch/$name/result-here/status")," \
            "$(find "$scratch/$name/result-here/files" -type f | wc -l) files"
    else
        failed=1
        echo "$name: here (<) and on Windows (>) differ:"
        head -100 "$scratch/$name/difference"
    fi
}

prepare() { :; }
run draftel draftel @/amp/amp.opj --to @/new --report report.txt
run draftelAsJson draftel @/amp/amp.opj --to @/new --json
run draftelInPlace draftel @/amp/amp.opj --in-place --report report.txt
run tarnet tarnet @/tarnet --report report.txt
run tarnetAsJson tarnet @/tarnet --json

# The other kind of line ends in all text files.
prepare() {
    find "$1" -type f -exec sed -i 's/\r$//; s/$/\r/' {} +
}
run draftelWithCrLf draftel @/amp/amp.opj --to @/new
run tarnetWithCrLf tarnet @/tarnet

# Failures, and what is refused.
prepare() { rm "$1/amp/amp.dsn"; }
run withoutDesign draftel @/amp/amp.opj --to @/new --json
prepare() { echo '{' >"$1/amp/amp.opj"; }
run malformedProject draftel @/amp/amp.opj --to @/new
prepare() { echo text >"$1/new"; }
run fileAsDestination draftel @/amp/amp.opj --to @/new
prepare() { mkdir -p "$1/amp/amp-TevrixFiles" && echo text >"$1/amp/amp-TevrixFiles/SCHEMATIC1"; }
run fileInTheWay draftel @/amp/amp.opj --in-place
prepare() { :; }
run missingProject draftel @/none.opj --to @/new
run missingLibrary tarnet @/none
run wrongOption draftel --wrong
run version --version
run help --help

exit $failed
