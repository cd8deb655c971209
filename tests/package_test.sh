#!/usr/bin/env bash
# Packs a build, unpacks what came of it into empty folders and uses that as a stranger would. On Linux these are
# the three Debian packages, whose contents and dependencies are looked at too; of a Windows build it is the zip.
#
#   package_test.sh CMAKE BUILD_FOLDER SOURCE_FOLDER SCRATCH_FOLDER COMPILER [RUN...]
#
# RUN is the command that runs a Windows program. Exit status: 0 passed, 77 skipped, anything else failed.
set -euo pipefail

# shellcheck source=tests/installation.sh
. "${0%/*}/installation.sh"
packages=$scratch/packages

[[ $flags != *-fsanitize=* ]] || skip "a build with a sanitizer is not for others"
generator=$(sed -n 's/^set(CPACK_GENERATOR "\(.*\)")$/\1/p' "$build/CPackConfig.cmake")
tools=("$compiler")
case $generator in
    DEB) tools+=(dpkg-deb dpkg-shlibdeps dpkg-architecture file) ;;
    ZIP)
        # Status 125: there is no Wine, or none that works here.
        status=0
        "${run[@]}" cmd.exe /c exit >"$scratch/run.log" 2>&1 || status=$?
        if [ ${#run[@]} -eq 0 ] || [ $status -eq 125 ]; then skip "nothing here runs Windows programs"; fi
        ;;
    *) skip "no test for packages of the kind \"$generator\"" ;;
esac
for tool in "${tools[@]}"; do
    command -v "$tool" >/dev/null || skip "there is no $tool"
done

# With a umask that must not show in what comes of it.
pack() (
    umask 077
    "$(cached CMAKE_CPACK_COMMAND)" --config "$build/CPackConfig.cmake" -B "$packages" >"$scratch/pack.log" 2>&1 || {
        cat "$scratch/pack.log"
        fail "cpack"
    }
    if grep -i warning "$scratch/pack.log"; then fail "cpack warned"; fi
)

# What differs between two texts, each line of which may stand anywhere in it.
expectSame() {
    local what=$1
    diff <(sort <<<"$2") <(sort <<<"$3") || fail "$what (expected <, found >)"
}

field() { dpkg-deb -f "$packages/${1}_${revision}_$architecture.deb" "$2"; }

# Unpacks a package and looks at what all of them have to have; the arguments after it are its files but those
# of the samples.
tryDebianPackage() {
    local package=$1 file=$packages/${1}_${revision}_$architecture.deb documents=usr/share/doc/$1 text
    shift
    mkdir "$scratch/$package"
    dpkg-deb -x "$file" "$scratch/$package"
    expectSame "the files of $package" "$(printf '%s\n' "$@" "$documents/"{changelog,changelog.Debian}.gz \
        "$documents/copyright")" \
        "$(cd "$scratch/$package" && find . ! -type d ! -path '*/examples/*' | sed 's,^\./,,')"
    if dpkg-deb -c "$file" | grep -vE '^(drwxr-xr-x|lrwxrwxrwx|-rw-r--r--) root/root ' |
        grep -vE '^-rwxr-xr-x root/root .* \./usr/bin/'; then
        fail "owner or permissions of these"
    fi
    text=$(gzip -cd "$scratch/$package/$documents/changelog.Debian.gz")
    [[ $text == "tvxconv ($revision) "* ]] || fail "the Debian changelog does not begin with $revision"
    text=$(gzip -cd "$scratch/$package/$documents/changelog.gz")
    [[ $text == *$'\n'"## $version "* ]] || fail "the changelog says nothing of $version"
}

tryDebianPackages() {
    local triplet lib config package
    local runtime=libtvxconv${version%%.*} soVersion=${version%%.*}
    revision=$version-1
    architecture=$(dpkg --print-architecture)
    triplet=$(dpkg-architecture -q DEB_HOST_MULTIARCH)
    lib=usr/lib/$triplet
    config=$(cached CMAKE_BUILD_TYPE)
    expectSame "the packages" "$(printf '%s\n' {"$runtime",libtvxconv-dev,tvxconv}"_${revision}_$architecture.deb")" \
        "$(cd "$packages" && ls -- *.deb)"

    tryDebianPackage "$runtime" "$lib/DraDsnReader.so" \
        "$lib/"lib{tvxconv,tvx_wobj}".so."{"$soVersion","$version"}
    tryDebianPackage libtvxconv-dev "$lib/"lib{tvxconv,tvx_wobj}.so \
        "$lib/cmake/tvxconv/tvxconv"{Config,ConfigVersion,Targets,"Targets-${config,,}"}.cmake \
        "$lib/pkgconfig/tvxconv.pc" \
        usr/include/tvxconv/interface/{hostStrings,I{Draftel,Tarnet}ProjectConverter,libraryApi}.h \
        usr/include/tvxconv/{platform/export,dsnreader/dsnreader}.h usr/include/tvx_wobj/tvx_wobj.h \
        usr/share/doc/libtvxconv-dev/hosting.md
    tryDebianPackage tvxconv usr/bin/tvxconv usr/share/doc/tvxconv/{README.md,docs/formats.md}

    for package in "$runtime" tvxconv; do
        [[ $(field "$package" Depends) =~ libc6\ .*libstdc\+\+6\  ]] ||
            fail "$package depends on $(field "$package" Depends)"
    done
    for package in libtvxconv-dev tvxconv; do
        [[ $(field "$package" Depends) == "$runtime (= $revision)"* ]] ||
            fail "$package depends on $(field "$package" Depends)"
    done
    expectSame "what $runtime tells of its libraries" \
        "$(printf '%s\n' {libtvxconv,libtvx_wobj}" $soVersion $runtime (= $revision)")" \
        "$(dpkg-deb -I "$packages/${runtime}_${revision}_$architecture.deb" shlibs)"
    echo "passed: contents of the Debian packages"

    # Where one system has them all. The space shows that no place is known beforehand.
    local root="$scratch/un packed"
    mkdir "$root"
    for package in "$packages"/*.deb; do dpkg-deb -x "$package" "$root"; done
    prefix=$root/usr
    binFolder=bin
    libFolder=lib/$triplet
    includeFolder=include
    sample=$prefix/share/doc/tvxconv/examples/amp
    tryProgram
    tryHeaders
    tryFindPackage -DCMAKE_PREFIX_PATH="$prefix"
    if command -v pkg-config >/dev/null; then tryPkgConfig; fi
    echo "passed: programs from the Debian packages"
}

tryZip() {
    local name=tvxconv-$version-windows-x86_64 config file
    config=$(cached CMAKE_BUILD_TYPE)
    mkdir "$scratch/un packed"
    (cd "$scratch/un packed" && "$cmake" -E tar xf "$packages/$name.zip")
    prefix="$scratch/un packed/$name"
    expectSame "the files of the zip" "$(printf '%s\n' LICENSE \
        {CHANGELOG,README,docs/{architecture,formats,hosting}}.md \
        bin/{tvxconv.exe,{tvxconv,tvx_wobj,DraDsnReader}.dll} lib/lib{tvxconv,tvx_wobj}.dll.a \
        "lib/cmake/tvxconv/tvxconv"{Config,ConfigVersion,Targets,"Targets-${config,,}"}.cmake \
        lib/pkgconfig/tvxconv.pc \
        include/tvxconv/interface/{hostStrings,I{Draftel,Tarnet}ProjectConverter,libraryApi}.h \
        include/tvxconv/{platform/export,dsnreader/dsnreader}.h include/tvx_wobj/tvx_wobj.h)" \
        "$(cd "$prefix" && find . ! -type d ! -path './examples/*' ! -path './licenses/*' | sed 's,^\./,,')"
    for file in "$prefix"/bin/*.dll; do expectOwnLibraries "$file"; done

    binFolder=bin
    libFolder=lib
    includeFolder=include
    sample=$prefix/examples/amp
    tryProgram
    tryHeaders
    # The consumer lies in a folder of its own, so it has to be told where the DLLs are.
    export WINEPATH="$drive$prefix/bin"
    tryFindPackage -DCMAKE_TOOLCHAIN_FILE="$(cached CMAKE_TOOLCHAIN_FILE)" \
        -Dtvxconv_DIR="$prefix/lib/cmake/tvxconv"
    echo "passed: contents of the zip, programs from it"
}

pack
if [ "$generator" = DEB ]; then tryDebianPackages; else tryZip; fi
