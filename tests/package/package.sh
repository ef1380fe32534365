#!/usr/bin/env bash
# The package as its users meet it: everything here comes from the unpacked zip. package.sh ZIP SOURCE BUILD WINE
set -uo pipefail
zip=$1
source=$2
build=$3
wine=$4
here=$source/tests/package
work=$(mktemp -d "${TMPDIR:-/tmp}/a package.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
source "$source/tests/support/checks.sh"
holds() { grep -qF -- "$2" "$1" || { echo "no \"$2\" in:" && cat "$1"; }; }
lacks() { ! grep -nF -- "$2" "$1"; }

unzip -q "$zip" || exit 1
name=$(basename "$zip" .zip)
package=$work/$name
windows() { printf 'Z:%s' "${1//\//\\}"; }
folder=$(windows "$package")
export WINEPATH="$folder\\bin;$folder\\simulation"
export WINEDLLOVERRIDES="opencl,dxgi,dwmapi=n,b;mscoree,mshtml="
machines=$package/simulation/machines
msvc_flags=(--target=x86_64-pc-windows-msvc -fexceptions -fcxx-exceptions "-I$here/msvc-crt" -Wall -Wextra -Werror
    "-I$package/include" "-I$package/simulation/include")

# --- hosts -------------------------------------------------------------------------------------------------------------------

for dll in msvcrt ole32; do llvm-dlltool -m i386:x86-64 -d "$here/msvc-crt/$dll.def" -l "$dll.lib"; done
clang++ "${msvc_flags[@]}" -c "$here/msvc-crt/startup.cpp" -o startup.obj

# msvc_host SOURCE PROGRAM LIBRARY…: a program in MSVC's ABI.
msvc_host() {
    clang++ "${msvc_flags[@]}" -std=c++17 -c "$1" -o "$2.obj" &&
        lld-link /nologo /nodefaultlib /subsystem:console /entry:mainCRTStartup "/out:$2.exe" "$2.obj" startup.obj \
            msvcrt.lib ole32.lib "${@:3}"
}
msvc_libraries=("$package/lib/orvel-graphic-cards-enumeration.lib" "$package/simulation/lib/orvel-simulation.lib")

# mingw_project FOLDER BUILD: a CMake project that finds the package.
mingw_project() {
    cmake -S "$1" -B "$2" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$source/cmake/Toolchain-mingw64.cmake" \
        -DCMAKE_PREFIX_PATH="$package" \
        -DPLOG_INCLUDE="$build/deps/include" && ninja -C "$2"
}
run() { "$wine" "$@" </dev/null | tr -d '\r'; } # the C library writes the line ends of Windows

check "the sum beside the zip is the zip's" sh -c "cd '$(dirname "$zip")' && sha256sum --check '$name.zip.sha256'"
check "the plain example builds with MinGW from find_package" mingw_project "$package/examples/plain" plain
flags() { PKG_CONFIG_PATH=$package/lib/pkgconfig pkg-config "$1" orvel-graphic-cards-enumeration; }
# shellcheck disable=SC2046 # the flags are words
check "the plain example builds with the flags of pkg-config" x86_64-w64-mingw32-g++-posix -std=c++17 -static \
    "$package/examples/plain/main.cpp" -o pkg-config.exe $(flags --cflags) "-I$package/simulation/include" $(flags --libs) \
    "-L$package/simulation/lib" -lorvel-simulation -lole32
check "the plain example builds in MSVC's ABI" msvc_host "$package/examples/plain/main.cpp" plain-msvc "${msvc_libraries[@]}"
check "the plog example builds with MinGW from find_package" mingw_project "$package/examples/plog" plog
for machine in intel-laptop workstation; do
    run plain/plain.exe "$machines/$machine.json" >mingw.txt 2>mingw-log.txt
    run plain-msvc.exe "$machines/$machine.json" >msvc.txt 2>msvc-log.txt
    check "both hosts print the same cards of $machine" same mingw.txt msvc.txt
    check "both hosts print the same log of $machine" same mingw-log.txt msvc-log.txt
    check "the hosts print cards of $machine" holds msvc.txt "Intel: Intel(R) UHD Graphics"
done
check "the hosts print the cards of all vendors" holds msvc.txt "3 cards"
run plain-msvc.exe none.json >msvc.txt 2>msvc-log.txt
check "a host is told what is wrong with a machine file" holds msvc-log.txt none.json
run plog/plog-host.exe "$machines/workstation.json" >plog.txt 2>&1
check "the library's lines stand in the host's own log" holds plog.txt \
    "orvel::shared::enumeration::ADLWrapper::ADLWrapper"
check "the host's own lines stand beside them" holds plog.txt "found NVIDIA GeForce RTX 3060"

check "the package's host program runs on a machine of the package" run "$package/bin/orvel-graphic-cards.exe" \
    --machine "$machines/workstation.json"
check "it starts on this computer with the substitute nvml.dll" run "$package/bin/orvel-graphic-cards.exe"

# Every getter, and the constructor's arguments, as the header declares them.
getters=$(sed -n 's/^    .* \(Get[A-Za-z]*\)() const;$/        Print("\1", card.\1());/p' "$package/include/GraphicCardInfo.h")
arguments=$(sed -n 's/^    \(unsigned int\|const char\*\|bool\|float\) [A-Z][A-Za-z]*;$/\1/p' "$package/include/GraphicCardInfo.h" |
    awk '{ type = $0 }
        type == "unsigned int" { print NR "U" }
        type == "const char*" { print "\"t" NR "\"" }
        type == "bool" { print(NR == 43 ? "false" : "true") } # the two neighbours differ
        type == "float" { print NR ".5F" }' | paste -sd, -)
fields=$(sed -n 's/^    \(unsigned int\|const char\*\|bool\|float\) \([A-Z][A-Za-z]*\);$/Get\2/p' "$package/include/GraphicCardInfo.h")
awk -v getters="$getters" -v arguments="$arguments" '/@GETTERS@/ { print getters; next }
    /@BUILT_GETTERS@/ { built = getters; gsub(/Print\("/, "Print(\"built ", built); print built; next }
    { gsub(/@ARGUMENTS@/, arguments); print }' "$here/getters.cpp.in" >getters.cpp
has_49_getters() { [ "$(grep -c '^ *Print("Get' getters.cpp)" -eq 49 ] && [ "$(grep -c 'Print("built Get' getters.cpp)" -eq 49 ]; }
check "the header has 49 getters" has_49_getters
check "a host that reads every getter builds in MSVC's ABI" msvc_host getters.cpp getters-msvc "${msvc_libraries[@]}"
check "a host that reads every getter builds with MinGW" x86_64-w64-mingw32-g++-posix -std=c++17 -static getters.cpp \
    "-I$package/include" "-I$package/simulation/include" -o getters-mingw.exe \
    "-L$package/lib" -lorvel-graphic-cards-enumeration "-L$package/simulation/lib" -lorvel-simulation -lole32
jq '.wmi.failures = [{"contains": "SELECT Speed", "status": "0x80041001"}]' "$machines/intel-laptop.json" >throws.json
# What a record of the constructor's arguments has to print: the number of each field, in its type's form.
paste -d= <(echo "$fields") <(echo "$arguments" | tr , '\n' | sed 's/[UF]$//; s/"//g') | sed 's/^/built /' >built.txt
for machine in "$machines/workstation.json" throws.json; do
    run getters-mingw.exe "$machine" >mingw.txt 2>&1
    run getters-msvc.exe "$machine" >msvc.txt 2>&1
    check "both hosts read the same from every getter" same mingw.txt msvc.txt
    check "each getter reads the constructor's argument of its place" same built.txt <(grep '^built ' msvc.txt)
    check "an assignment returns its target" holds msvc.txt "the target: 1"
    check "an assignment shares the texts" holds msvc.txt "shared text: 1"
done
check "hosts of both compilers catch a status as long" holds msvc.txt "thrown long 0x80041001"

check "a host of GraphicCards builds in MSVC's ABI" msvc_host "$here/modern.cpp" modern-msvc "${msvc_libraries[@]}"
check "a host of GraphicCards builds with MinGW" x86_64-w64-mingw32-g++-posix -std=c++17 -static "$here/modern.cpp" \
    "-I$package/include" "-I$package/simulation/include" -o modern-mingw.exe \
    "-L$package/lib" -lorvel-graphic-cards-enumeration "-L$package/simulation/lib" -lorvel-simulation -lole32
IFS=. read -r major minor patch < <(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
two_cards=$'Intel(R) Iris(R) Xe Graphics, bus 0\nNVIDIA GeForce RTX 3060 Laptop GPU, bus 1'
{
    echo "version $((major * 10000 + minor * 100 + patch)), serves the headers: 1"
    printf 'older 0, newer 1, other major 0\nnone yet: 0\nagain: 2\n%s\nmoved from: 0\nmoved: 2\n%s\nsame bus: 1\n' \
        "$two_cards" "$two_cards"
} >expected.txt
for abi in msvc mingw; do
    run "modern-$abi.exe" "$machines/hybrid-laptop.json" >modern.txt 2>&1
    check "GraphicCards moves, walks and enumerates again in the $abi host" same expected.txt modern.txt
done

# --- hosts that misbehave ------------------------------------------------------------------------------------------------------

check "a host that misbehaves builds in MSVC's ABI" msvc_host "$here/misbehaving.cpp" misbehaving-msvc "${msvc_libraries[@]}"
check "a host that misbehaves builds with MinGW" x86_64-w64-mingw32-g++-posix -std=c++17 -static "$here/misbehaving.cpp" \
    "-I$package/include" "-I$package/simulation/include" -o misbehaving-mingw.exe \
    "-L$package/lib" -lorvel-graphic-cards-enumeration "-L$package/simulation/lib" -lorvel-simulation -lole32
# survives SCENARIO MACHINE LINE…: both hosts print these lines, and leave nothing open.
survives() {
    local scenario=$1 machine=$2 abi
    printf '%s\n' "${@:3}" "all closed: true" >expected.txt
    for abi in msvc mingw; do
        run "misbehaving-$abi.exe" "$machines/$machine.json" "$scenario" >misbehaving.txt 2>&1
        sed '/^report: /d' misbehaving.txt >told.txt
        sed -n 's/^report: //p' misbehaving.txt | jq -r '"all closed: \([.live[]] | add == 0)"' >>told.txt
        check "$scenario: the $abi host on $machine" same expected.txt told.txt
    done
}
all="thrown: 0, lines: 13, other lines: 0"
survives counts workstation "cards: 3, $all"
survives throws workstation "cards: 3, $all"
survives "replaces itself" workstation "cards: 3, thrown: 0, lines: 1, other lines: 12"
survives "ends itself" workstation "cards: 3, thrown: 0, lines: 1, other lines: 0"
survives "all severities" workstation "cards: 3, $all"
survives "no severity" workstation "cards: 3, thrown: 0, lines: 0, other lines: 0"
survives traps amd-desktop-ddr5 "traps kept: 1" "cards: 1, thrown: 0, lines: 0, other lines: 0"
survives unmasks amd-desktop-ddr5 "cards: 1, thrown: 0, lines: 8, other lines: 0"
survives "destroys twice" workstation "left: 0" "destroyed twice"
cp throws.json "$machines/"
survives traps throws "traps kept: 1" "cards: 0, thrown: 1, lines: 0, other lines: 0"

# --- exceptions ---------------------------------------------------------------------------------------------------------------

x86_64-w64-mingw32-g++-posix -std=c++20 -O2 -shared -static "-I$source/src" "$here/throwing.cpp" \
    "$source/src/enumeration/MsvcException.cpp" -o throwing.dll
llvm-dlltool -m i386:x86-64 -d "$here/throwing.def" -l throwing.lib
check "a host that catches builds in MSVC's ABI" msvc_host "$here/catching.cpp" catching throwing.lib
run catching.exe >caught.txt 2>&1
one_round=$'status: long 0x80041010\nbad_alloc: bad_alloc bad allocation\nruntime_error: exception driver gone
long text: exception xxxxxxxxxxxxxxxxxxxx\nunknown: exception unknown exception\nnothing: nothing'
kept=$'meanwhile: exception driver gone\nkept bad_alloc: bad_alloc bad allocation
meanwhile: exception xxxxxxxxxxxxxxxxxxxx\nkept runtime_error: exception driver gone\nkept text: driver gone'
printf '%s\n%s\n%s\nby value: caught\n' "$one_round" "$one_round" "$kept" >expected.txt
check "MSVC's hosts catch each exception as its own type" same expected.txt caught.txt

# --- headers ------------------------------------------------------------------------------------------------------------------

for header in "$package"/include/*.h "$package"/simulation/include/*.h; do
    [ "$(basename "$header")" = GraphicCardPlog.h ] && continue # needs plog; the plog example includes it
    for standard in c++17 c++20; do
        check "$(basename "$header") compiles alone with GCC as $standard" x86_64-w64-mingw32-g++-posix "-std=$standard" -Wall \
            -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Werror -fsyntax-only -include "$header" -x c++ /dev/null
        check "$(basename "$header") compiles alone in MSVC's ABI as $standard" clang++ "${msvc_flags[@]}" "-std=$standard" \
            -Weverything -Wno-c++98-compat -Wno-c++98-compat-pedantic -Wno-padded -fsyntax-only -include "$header" -x c++ /dev/null
    done
    check "$(basename "$header") takes in neither windows.h nor the standard library" lacks "$header" "windows.h"
done
no_std_types() { ! grep -nE 'std::(string|vector|unique_ptr|shared_ptr|map)' "$package"/include/GraphicCard{Enumeration,Info,Log,Api}.h; }
check "no exported class has a type of the standard library" no_std_types
for compiler in x86_64-w64-mingw32-gcc-posix "clang --target=x86_64-pc-windows-msvc"; do
    for standard in c99 c17; do
        # shellcheck disable=SC2086 # the compiler and its option
        check "GraphicCardLog.h compiles as $standard with ${compiler%% *}" $compiler "-std=$standard" -Wall -Wextra -Wpedantic \
            -Werror "-I$package/include" -fsyntax-only -include GraphicCardLog.h -x c /dev/null
    done
done
check "GraphicCardLog.h takes in no plog that its host has not" lacks <(x86_64-w64-mingw32-g++-posix -M \
    "-I$package/include" -isystem "$build/deps/include" -include GraphicCardLog.h -x c++ /dev/null) plog/
check "the headers refuse 32 bits" sh -c "! clang --target=i686-pc-windows-msvc -fsyntax-only -x c \
    '$package/include/GraphicCardLog.h' 2>32-bits.txt && grep -q '64-bit Windows' 32-bits.txt"
printf '#include "GraphicCardEnumeration.h"\n#include "GraphicCardInfo.h"
using namespace orvel::shared::enumeration;
void Assign(GraphicCardEnumeration& a, const GraphicCardEnumeration& b) { a = b; }
void Assign(GraphicCardInfo& a, const GraphicCardInfo& b) { a = b; }\n' >assigning.cpp
warns_twice() { [ "$("$@" -std=c++17 "-I$package/include" -fsyntax-only assigning.cpp 2>&1 | grep -c "shares the source's memory")" -ge 2 ]; }
check "an assignment warns with GCC" warns_twice x86_64-w64-mingw32-g++-posix
check "an assignment warns in MSVC's ABI" warns_twice clang++ "${msvc_flags[@]}" -Wno-error

# --- exports ------------------------------------------------------------------------------------------------------------------

check "the MSVC names are those of the headers" same <("$source/cmake/make-msvc-exports.sh" "$package/include") \
    "$source/src/enumeration/MsvcExports.def"
library=$package/bin/orvel-graphic-cards-enumeration.dll
x86_64-w64-mingw32-objdump -p "$library" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' | awk '/^\t\[/ { print $NF }' |
    sort >exports.txt
sed -n 's/^    "\(?.*\)" = .*/\1/p' "$source/src/enumeration/MsvcExports.def" | sort >msvc-names.txt
sed -n 's/^    ".*" = \(_Z.*\)/\1/p; s/^    "\(_Z.*\)" = .*/\1/p' "$source/src/enumeration/MsvcExports.def" | sort >gcc-names.txt
check "the DLL exports every MSVC name" same msvc-names.txt <(comm -12 exports.txt msvc-names.txt)
check "the DLL exports every GCC name" same gcc-names.txt <(comm -12 exports.txt gcc-names.txt)
printf 'GetGraphicCardsVersion\nSetGraphicCardLog\n' >c-names.txt
check "the DLL exports the functions of C" same c-names.txt <(comm -12 exports.txt c-names.txt)
# GCC has two names for a constructor or destructor, and those that MSVC's names do not lead to.
no_other_exports() {
    ! comm -23 exports.txt <(sort msvc-names.txt c-names.txt) | x86_64-w64-mingw32-c++filt |
        grep -vE '^orvel::shared::enumeration::GraphicCard(Enumeration|Info)::'
}
check "the DLL exports nothing else" no_other_exports

# --- binaries -----------------------------------------------------------------------------------------------------------------

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
check "the headers' version is the project's" holds "$package/include/GraphicCardApi.h" "VERSION \"$version\""
check "the headers' version numbers are the project's" same <(echo "$version") \
    <(sed -n 's/^#define .*VERSION_\(MAJOR\|MINOR\|PATCH\) //p' "$package/include/GraphicCardApi.h" | paste -sd.)
check "the change log's newest version is the project's" same <(echo "## $version") <(grep -m1 '^## ' "$package/CHANGELOG.md")
check "the vcpkg port's version is the project's" holds "$source/ports/orvel-graphic-cards-enumeration/vcpkg.json" "\"$version\""
check "the pkg-config file's version is the project's" holds \
    "$package/lib/pkgconfig/orvel-graphic-cards-enumeration.pc" "Version: $version"

has_version() { # the text of a version resource is UTF-16
    local hex
    hex=$(printf 'FileVersion\0\0%s\0' "$version" | iconv -t UTF-16LE | xxd -p | tr -d '\n')
    xxd -p "$1" | tr -d '\n' | grep -q "$hex"
}
# Base relocations whose page lies in the code would make the loader write to it.
has_no_text_relocations() {
    local size vma page start end
    read -r size vma < <(x86_64-w64-mingw32-objdump -h "$1" | awk '$2 == ".text" { print $3, $4 }')
    vma=$((16#$vma))
    start=$(x86_64-w64-mingw32-objdump -p "$1" | awk '/^ImageBase/ { print $2 }')
    start=$((vma - 16#$start))
    end=$((start + 16#$size))
    for page in $(x86_64-w64-mingw32-objdump -p "$1" | awk '/^Virtual Address:.*Chunk size/ { print $3 }'); do
        if ((16#$page >= start && 16#$page < end)); then echo "page $page" && return 1; fi
    done
}
allowed='ADVAPI32|VERSION|KERNEL32|msvcrt|ole32|OLEAUT32|SHELL32|dwmapi|dxgi|nvml|orvel-shared-wmi-client|orvel-graphic-cards-enumeration'
only_known_imports() {
    ! x86_64-w64-mingw32-objdump -p "$1" | sed -n 's/.*DLL Name: \(.*\)\.dll/\1/Ip' | grep -viE "^($allowed)$"
}
for binary in "$package"/bin/*.dll "$package"/bin/*.exe "$package"/bin/fallback/*.dll; do
    file=$(basename "$binary")
    x86_64-w64-mingw32-objdump -p "$binary" >headers.txt
    check "$file carries the project's version" has_version "$binary"
    for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do check "$file has $flag" holds headers.txt "$flag"; done
    check "$file can be moved as a whole" holds headers.txt "Base Relocation Directory [.reloc]"
    check "$file has no text relocations" has_no_text_relocations "$binary"
    check "$file imports nothing but Windows, nvml.dll and its siblings" only_known_imports "$binary"
    debug=$(find "$package/debug" -name "$file.debug" -o -name "fallback-$file.debug" | head -1)
    x86_64-w64-mingw32-nm "$debug" >symbols.txt
    check "$file has stack protection" holds symbols.txt __stack_chk_fail
    check "$file names its debug file" grep -q "$(basename "$debug")" "$binary"
done

echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
