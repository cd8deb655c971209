#!/bin/sh
# Runs a Windows program under Wine, for ctest: wine.sh PREFIX PROGRAM ARGUMENTS...
# The prefix (Wine's drive C: and registry) is made by the first call, and only seen by these calls. No window
# is ever opened. Status 125 when there is no usable Wine.
set -eu

WINEPREFIX=$1
shift
export WINEPREFIX WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe="
unset DISPLAY WAYLAND_DISPLAY
wine=$(command -v wine64 || command -v /usr/lib/wine/wine64 || command -v wine) || {
    echo "wine.sh: Wine is not installed" >&2
    exit 125
}
export WINELOADER="$wine"

if [ ! -e "$WINEPREFIX/ready" ]; then
    mkdir -p "$WINEPREFIX"
    (
        flock 9 # tests start at the same time
        if [ ! -e "$WINEPREFIX/ready" ]; then
            timeout 180 "$wine" wineboot.exe --init >"$WINEPREFIX/wineboot.log" 2>&1 </dev/null || {
                cat "$WINEPREFIX/wineboot.log" >&2
                echo "wine.sh: no prefix could be made in $WINEPREFIX" >&2
                exit 125
            }
            : >"$WINEPREFIX/ready"
        fi
    ) 9>"$WINEPREFIX/lock"
fi
exec "$wine" "$@"
