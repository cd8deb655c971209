#!/usr/bin/env bash
# Installs a build and uses the result as a stranger would: the program, each header by itself,
# find_package, pkg-config. The installed tree is moved before it is used, so nothing in it may know where it was.
#
#   install_test.sh CMAKE BUILD_FOLDER SOURCE_FOLDER SCRATCH_FOLDER COMPILER
#
# Exit status: 0 passed, 77 skipped, anything else failed.
set -euo pipefail

# shellcheck source=tests/installation.sh
. "${0%/*}/installation.sh"
command -v "$compiler" >/dev/null || skip "there is no $compiler"

"$cmake" --install "$build" --prefix "$scratch/first" >"$scratch/install.log" 2>&1 || {
    cat "$scratch/install.log"
    fail "cmake --install"
}
prefix="$scratch/moved here"
mv "$scratch/first" "$prefix"
binFolder=$(cached CMAKE_INSTALL_BINDIR)
libFolder=$(cached CMAKE_INSTALL_LIBDIR)
includeFolder=$(cached CMAKE_INSTALL_INCLUDEDIR)
sample=$source/examples/amp

tryProgram
tryHeaders
tryFindPackage -DCMAKE_PREFIX_PATH="$prefix"
echo "passed: program, headers, find_package"
if command -v pkg-config >/dev/null; then
    tryPkgConfig
    echo "passed: pkg-config"
else
    echo "left out: there is no pkg-config"
fi
