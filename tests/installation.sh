# What install_test.sh and package_test.sh share: an installation, wherever it lies, is used as a stranger would: the
# program, each header by itself, find_package, pkg-config. They source this file with their own arguments, which
# are
#
#   CMAKE BUILD_FOLDER SOURCE_FOLDER SCRATCH_FOLDER COMPILER [RUN...]
#
# RUN is the command that runs a program of another system. The scratch folder is emptied. Before they try anything,
# they set
#
#   prefix binFolder libFolder includeFolder   where the installation is, and its folders below that
#   sample                                     the folder of the sample project

# shellcheck shell=bash
# shellcheck disable=SC2154

if [ $# -lt 5 ]; then
    echo "usage: ${0##*/} CMAKE BUILD_FOLDER SOURCE_FOLDER SCRATCH_FOLDER COMPILER [RUN...]" >&2
    exit 2
fi
cmake=$1
build=$2
source=$(cd "$3" && pwd)
rm -rf "$4"
mkdir -p "$4"
scratch=$(cd "$4" && pwd)
compiler=$5
run=("${@:6}")
# shellcheck source=tests/windows_libraries.sh
. "$source/tests/windows_libraries.sh"

unset DESTDIR LD_LIBRARY_PATH

fail() {
    printf 'FAILED: %s\n' "$*" >&2
    exit 1
}

skip() {
    echo "skipped: $*"
    exit 77
}

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }

# A sanitizer in the library has to be in the program too.
flags=$(cached CMAKE_CXX_FLAGS)
read -r -a flagList <<<"$flags"
version=$(cached CMAKE_PROJECT_VERSION)
suffix=
drive=
if [ ${#run[@]} -gt 0 ]; then
    suffix=.exe
    drive=Z: # where Wine shows the folders of this machine
fi

# The folders in which the loader looks for the libraries of a file are told from the file's own place: none is
# empty, which would be the current folder, and none is fixed.
expectOwnSearchPath() {
    local path
    if [ ${#run[@]} -gt 0 ]; then return; fi # Windows has no search paths in files
    path=$(LC_ALL=C readelf -d "$1" | sed -nE 's/.*\((RPATH|RUNPATH)\).*\[(.*)\]$/\2/p')
    [ -n "$path" ] || fail "there is no search path in $1"
    if tr ':' '\n' <<<"$path" | grep -vE '^\$ORIGIN(/|$)'; then fail "the search path \"$path\" of $1"; fi
}

# A file uses no library of ours but those of the installation, and on Windows no other that Windows lacks.
expectOwnLibraries() {
    local list
    if [ ${#run[@]} -eq 0 ]; then
        list=$(ldd "$1")
        if grep -E 'not found|libtvx' <<<"$list" | grep -vF "=> $prefix/"; then fail "libraries of $1"; fi
    else
        list=$("$(cached CMAKE_OBJDUMP)" -p "$1" | sed -n 's/^\tDLL Name: //p')
        if grep -vixE "tvxconv\.dll|tvx_wobj\.dll|$windowsLibraries" <<<"$list"; then fail "libraries of $1"; fi
    fi
}

# Compares what became of the sample with what is expected, apart from line ends on another system.
expectConverted() {
    local result=$1 expected=$1.expected
    [ -f "$result/amp.opj" ] || fail "there is no project file in $result"
    rm -rf "$expected"
    cp -R "$source/tests/data/amp-expected" "$expected"
    find "$expected" -type f -exec env LC_ALL=C sed -i -e "s|@PROJECT_PARENT@|$drive${sample%/*}|g" \
        -e "s|@PROJECT@|$drive$sample|g" -e "s|@PROJECT_BACKSLASHED@|$drive${sample//\//\\\\}|g" {} +
    if [ -n "$drive" ]; then find "$result" "$expected" -type f -exec sed -i 's/\r$//' {} +; fi
    diff -r "$expected" "$result" || fail "the sample, converted into $result"
}

tryProgram() {
    local program=$prefix/$binFolder/tvxconv$suffix printed file
    expectOwnLibraries "$program"
    # A sanitizer has its library in a folder of the compiler.
    if [[ $flags != *-fsanitize=* ]]; then
        for file in "$program" "$build/bin/tvxconv" \
            {"$prefix/$libFolder","$build/bin"}/{DraDsnReader,libtvxconv,libtvx_wobj}.so; do
            expectOwnSearchPath "$file"
        done
    fi
    printed=$("${run[@]}" "$program" --version) || fail "tvxconv --version ended with $?"
    [[ $printed == *"$version"* ]] || fail "tvxconv --version printed \"$printed\" without $version"

    # A conversion takes the design reader along. With a sanitizer it is the sanitizer's library that loads
    # modules, and the program's search path does not count for that one.
    if [[ $flags == *-fsanitize=* ]]; then return; fi
    "${run[@]}" "$program" draftel "$drive$sample/amp.opj" --to "$drive$scratch/program-result" \
        >"$scratch/program.log" 2>&1 || {
        cat "$scratch/program.log"
        fail "the sample, converted by the program"
    }
    expectConverted "$scratch/program-result"
}

tryHeaders() {
    local header
    while IFS= read -r header; do
        "$compiler" "${flagList[@]}" -std=c++20 -fsyntax-only -I "$prefix/$includeFolder" \
            -I "$prefix/$includeFolder/tvxconv" -include "$header" -x c++ /dev/null || fail "$header by itself"
    done < <(find "$prefix/$includeFolder" -name '*.h')
}

useConsumer() {
    local name=$1 consumer=$2 printed missing expected
    expectOwnLibraries "$consumer"
    # The project is not there: the conversion makes its folder, looks for the design and says what it missed.
    missing=$drive$scratch/missing.opj
    expected="status 10109
code 10109
message Failed to read file \"$missing\". Check the file syntax."
    printed=$("${run[@]}" "$consumer" "$missing" "$drive$scratch/$name-missing") ||
        fail "$consumer ended with $?"
    [ "${printed//$'\r'/}" = "$expected" ] ||
        fail "$consumer printed"$'\n'"$printed"$'\n'"and not"$'\n'"$expected"
    [ -d "$scratch/$name-missing/missing-TevrixFiles" ] || fail "$consumer made no simulation root"

    printed=$("${run[@]}" "$consumer" "$drive$sample/amp.opj" "$drive$scratch/$name-result") ||
        fail "$consumer ended with $?"
    [[ $printed == "status 0"* ]] || fail "the sample, converted by $consumer:"$'\n'"$printed"
    expectConverted "$scratch/$name-result"
}

# The arguments tell cmake where to find the installation.
buildConsumer() {
    "$cmake" -S "$source/tests/consumer" -B "$scratch/consumer" -G "$(cached CMAKE_GENERATOR)" \
        -DCMAKE_MAKE_PROGRAM="$(cached CMAKE_MAKE_PROGRAM)" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" "$@" &&
        "$cmake" --build "$scratch/consumer"
}

tryFindPackage() {
    buildConsumer "$@" >"$scratch/consumer.log" 2>&1 || {
        cat "$scratch/consumer.log"
        fail "the consumer by find_package"
    }
    useConsumer package "$scratch/consumer/consumer$suffix"
}

tryPkgConfig() {
    local options
    export PKG_CONFIG_PATH="$prefix/$libFolder/pkgconfig"
    pkg-config --exact-version="$version" tvxconv || fail "the version that pkg-config tells"
    # The output is quoted for the shell.
    eval "options=($(pkg-config --cflags --libs tvxconv))"
    "$compiler" "${flagList[@]}" -std=c++20 "$source/tests/consumer/main.cpp" -o "$scratch/byPkgConfig" \
        "${options[@]}" -Wl,-rpath,"$prefix/$libFolder" || fail "the consumer by pkg-config"
    useConsumer pkgConfig "$scratch/byPkgConfig"
}
