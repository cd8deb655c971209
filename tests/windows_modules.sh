#!/bin/sh
# Looks into what was built for Windows: what it needs, and what it exports.
#
#   windows_modules.sh OBJDUMP FOLDER
#
# The status is 0 when every program and library in FOLDER needs nothing but what comes with Windows and our own
# library, and the three libraries export what they should and nothing else.
set -u
objdump=$1
folder=$2
failed=0
# shellcheck source=tests/windows_libraries.sh
. "$(dirname "$0")/windows_libraries.sh"

fail() {
    echo "windows_modules: $*" >&2
    failed=1
}

needs() {
    "$objdump" -p "$1" | sed -n 's/^[[:space:]]*DLL Name: //p' | tr '[:upper:]' '[:lower:]' | sort -u
}

exports() {
    "$objdump" -p "$1" | sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^[[:space:]]*\[ *[0-9]*\] //p' |
        sed 's/^+base\[ *[0-9]*\] *[0-9a-f]* //' | sort
}

for name in tvxconv.dll tvx_wobj.dll DraDsnReader.dll tvxconv.exe tvxconv_host.exe tvxconv_tarnet_host.exe; do
    [ -f "$folder/$name" ] || fail "there is no $name"
done
for file in "$folder"/*.dll "$folder"/*.exe; do
    for needed in $(needs "$file" | grep -vixE "$windowsLibraries|tvx_wobj\.dll"); do
        fail "$(basename "$file") needs $needed"
    done
done

# The factories by their plain names, and of the interface classes what a C++ class consists of.
draftel=24IDraftelProjectConverter
tarnet=23ITarnetProjectConverter
expected=$(
    {
        echo createDraftelProjectConverter
        echo createTarnetProjectConverter
        for type in $draftel $tarnet; do
            for member in C1Ev C2Ev C1ERKS_ C2ERKS_ D0Ev D1Ev D2Ev aSERKS_; do echo "_ZN$type$member"; done
            echo "_ZTI$type"
            echo "_ZTV$type"
        done
    } | sort
)
found=$(exports "$folder/tvxconv.dll")
[ "$found" = "$expected" ] || fail "tvxconv.dll exports
$found
and should export
$expected"

found=$(exports "$folder/DraDsnReader.dll")
[ "$found" = getDsnInfo ] || fail "DraDsnReader.dll exports
$found"

# C++ functions of one namespace.
foreign=$(exports "$folder/tvx_wobj.dll" | grep -v '^_ZN8tvx_wobj[0-9]')
[ -z "$foreign" ] || fail "tvx_wobj.dll exports also
$foreign"
[ -n "$(exports "$folder/tvx_wobj.dll")" ] || fail "tvx_wobj.dll exports nothing"

exit $failed
