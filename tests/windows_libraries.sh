# The DLLs that every Windows brings along, as a pattern for grep -ixE. For the scripts that look at what a program
# needs; they source this file.

# shellcheck shell=sh
# shellcheck disable=SC2034
windowsLibraries='kernel32\.dll|msvcrt\.dll|advapi32\.dll|user32\.dll|shell32\.dll|ws2_32\.dll'
