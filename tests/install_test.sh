#!/usr/bin/env bash
# Installs a build and uses the result as a stranger would: the program, each header by itself,
# find_package, pkg-config. The installed tree is moved before it is used, so nothing in it may know where it was.
#
#   install_test.sh CMAKE BUILD_FOLDER SOURCE_FOLDER SCRATCH_FOLDER COMPILER
#
# Exit status: 0 passed, 77 skipped, anything else failed.
set -euo pipefail

if [ $# -ne 5 ]; then
    echo "usage: install_test.sh CMAKE BUILD_FOLDER SOURCE_FOLDER SCRATCH_FOLDER COMPILER" >&2
    exit 2
fi
cmake=$1
build=$2
source=$(cd "$3" && pwd)
scratch=$4
compiler=$5
unset DESTDIR LD_LIBRARY_PATH

fail() {
    printf 'FAILED: %s\n' "$*" >&2
    exit 1
}

command -v "$compiler" >/dev/null || {
    echo "skipped: no compiler $compiler"
    exit 77
}

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }

# A sanitizer in the library has to be in the program too.
flags=$(cached CMAKE_CXX_FLAGS)
read -r -a flagList <<<"$flags"
binFolder=$(cached CMAKE_INSTALL_BINDIR)
libFolder=$(cached CMAKE_INSTALL_LIBDIR)
includeFolder=$(cached CMAKE_INSTALL_INCLUDEDIR)

rm -rf "$scratch"
mkdir -p "$scratch"
scratch=$(cd "$scratch" && pwd)
"$cmake" --install "$build" --prefix "$scratch/first" >"$scratch/install.log" 2>&1 || {
    cat "$scratch/install.log"
    fail "cmake --install"
}
prefix="$scratch/moved here"
mv "$scratch/first" "$prefix"

# Only what was installed is used.
expectOwnLibraries() {
    local list
    list=$(ldd "$1")
    if grep -E 'not found|libtvx' <<<"$list" | grep -vF "=> $prefix/"; then fail "libraries of $1"; fi
}

version=$(cached CMAKE_PROJECT_VERSION)
program="$prefix/$binFolder/tvxconv"
expectOwnLibraries "$program"
printed=$("$program" --version) || fail "tvxconv --version ended with $?"
[[ $printed == *"$version"* ]] || fail "tvxconv --version printed \"$printed\" without $version"

# A conversion takes the design reader along. With a sanitizer it is the sanitizer's library that loads
# modules, and the program's search path does not count for that one.
example=$source/examples/amp/amp.opj
if [[ $flags != *-fsanitize=* ]]; then
    "$program" draftel "$example" --to "$scratch/program-result" >"$scratch/program.log" 2>&1 || {
        cat "$scratch/program.log"
        fail "the example, converted by the program"
    }
    [ -f "$scratch/program-result/amp.opj" ] || fail "the program left no project file"
fi

while IFS= read -r header; do
    "$compiler" "${flagList[@]}" -std=c++20 -fsyntax-only -I "$prefix/$includeFolder" \
        -I "$prefix/$includeFolder/tvxconv" -include "$header" -x c++ /dev/null || fail "$header by itself"
done < <(find "$prefix/$includeFolder" -name '*.h')

# The project is not there: the conversion makes its folder, looks for the design and says what it missed.
missing=$scratch/missing.opj
expected="status 10109
code 10109
message Failed to read file \"$missing\". Check the file syntax."

useConsumer() {
    local name=$1 consumer=$2 printed
    expectOwnLibraries "$consumer"
    printed=$("$consumer" "$missing" "$scratch/$name-missing") || fail "$consumer ended with $?"
    [ "$printed" = "$expected" ] || fail "$consumer printed"$'\n'"$printed"$'\n'"and not"$'\n'"$expected"
    [ -d "$scratch/$name-missing/missing-TevrixFiles" ] || fail "$consumer made no simulation root"

    printed=$("$consumer" "$example" "$scratch/$name-result") || fail "$consumer ended with $?"
    [[ $printed == "status 0"* ]] || fail "the example, converted by $consumer:"$'\n'"$printed"
    [ -f "$scratch/$name-result/amp.opj" ] || fail "$consumer left no project file"
}

buildConsumer() {
    "$cmake" -S "$source/tests/consumer" -B "$scratch/consumer" -G "$(cached CMAKE_GENERATOR)" \
        -DCMAKE_MAKE_PROGRAM="$(cached CMAKE_MAKE_PROGRAM)" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_PREFIX_PATH="$prefix" &&
        "$cmake" --build "$scratch/consumer"
}
buildConsumer >"$scratch/consumer.log" 2>&1 || {
    cat "$scratch/consumer.log"
    fail "the consumer by find_package"
}
useConsumer package "$scratch/consumer/consumer"
echo "passed: program, headers, find_package"

if ! command -v pkg-config >/dev/null; then
    echo "left out: there is no pkg-config"
    exit 0
fi
export PKG_CONFIG_PATH="$prefix/$libFolder/pkgconfig"
pkg-config --exact-version="$version" tvxconv || fail "the version that pkg-config tells"
# The output is quoted for the shell.
eval "options=($(pkg-config --cflags --libs tvxconv))"
# shellcheck disable=SC2154
"$compiler" "${flagList[@]}" -std=c++20 "$source/tests/consumer/main.cpp" -o "$scratch/byPkgConfig" \
    "${options[@]}" -Wl,-rpath,"$prefix/$libFolder" || fail "the consumer by pkg-config"
useConsumer pkgConfig "$scratch/byPkgConfig"
echo "passed: pkg-config"
