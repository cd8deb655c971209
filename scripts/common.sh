# What the scripts share; they source it.
# shellcheck shell=bash

set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

fail() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# Runs a command and shows what it printed only when it fails.
quietly() {
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    if [ "$status" -ne 0 ]; then cat "$log" >&2; fi
    rm -f "$log"
    return "$status"
}

# The C++ files of the checkout, one on a line: what git knows and will know, or in an unpacked archive
# all that is there.
sources() {
    local list
    list=$(git -C "$root" -c safe.directory='*' ls-files --cached --others --exclude-standard \
        -- '*.h' '*.cpp' 2>/dev/null) || list=
    if [ -n "$list" ]; then
        printf '%s\n' "$list"
    else
        (cd "$root" && find . -name build -prune -o \( -name '*.h' -o -name '*.cpp' \) -print)
    fi
}
