#!/usr/bin/env bash
# package.sh ZIP SOURCE BUILD WINE: tests the package as its users get it. Everything tested comes from the unpacked zip.
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
msvc_flags=(--target=x86_64-pc-windows-msvc -fexceptions -fcxx-exceptions -isystem "$here/msvc-crt" -Wall -Wextra -Werror
    "-I$package/include" "-I$package/simulation/include")

# --- hosts -------------------------------------------------------------------------------------------------------------------

for dll in msvcrt ole32 kernel32 shell32; do llvm-dlltool -m i386:x86-64 -d "$here/msvc-crt/$dll.def" -l "$dll.lib"; done
clang++ "${msvc_flags[@]}" -c "$here/msvc-crt/startup.cpp" -o startup.obj

# msvc_host SOURCE PROGRAM LIBRARY…: a program in MSVC's ABI.
msvc_host() {
    clang++ "${msvc_flags[@]}" -std=c++17 -c "$1" -o "$2.obj" &&
        lld-link /nologo /nodefaultlib /subsystem:console /entry:mainCRTStartup "/out:$2.exe" "$2.obj" startup.obj \
            msvcrt.lib ole32.lib kernel32.lib shell32.lib "${@:3}"
}
msvc_libraries=("$package/lib/orvel-graphic-cards-enumeration.lib" "$package/simulation/lib/orvel-simulation.lib")

# mingw_project FOLDER BUILD: a CMake project that finds the package.
mingw_project() {
    cmake -S "$1" -B "$2" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$source/cmake/Toolchain-mingw64.cmake" \
        -DCMAKE_PREFIX_PATH="$package" \
        -DPLOG_INCLUDE="$build/deps/include" && ninja -C "$2"
}
run() { "$wine" "$@" </dev/null | tr -d '\r'; } # Windows programs write CR LF

check "the checksum file matches the zip" sh -c "cd '$(dirname "$zip")' && sha256sum --check '$name.zip.sha256'"
# cmake_lists FOLDER LINE…: a project of these lines.
cmake_lists() {
    mkdir -p "$1"
    { printf '%s\n' "cmake_minimum_required(VERSION 3.21)" "project(t CXX)" "${@:2}"; } >"$1/CMakeLists.txt"
}
for example in "$package"/examples/*/; do
    example=$(basename "$example")
    check "the example $example builds with MinGW from find_package" mingw_project "$package/examples/$example" "$example"
done
flags() { PKG_CONFIG_PATH=$package/lib/pkgconfig pkg-config --cflags --libs "$@"; }
pkg_config_host() { # SOURCE PROGRAM MODULE…: the flags quote the folder's name, which contains a space, for the shell
    eval x86_64-w64-mingw32-g++-posix -std=c++17 -static '"$1"' -o '"$2"' "$(flags "${@:3}")"
}
check "the plain example builds with the flags of pkg-config" pkg_config_host "$package/examples/plain/main.cpp" \
    pkg-config.exe orvel-graphic-cards-enumeration
check "the simulated example builds with the flags of pkg-config" pkg_config_host "$package/examples/simulated/main.cpp" \
    pkg-config-simulated.exe orvel-simulation
check "the simulated example builds in MSVC's ABI" msvc_host "$package/examples/simulated/main.cpp" simulated-msvc \
    "${msvc_libraries[@]}"
for machine in intel-laptop workstation; do
    cp "$machines/$machine.json" "$machine-é木.json"
    run simulated/simulated.exe "$machine-é木.json" >mingw.txt 2>mingw-log.txt
    run simulated-msvc.exe "$machine-é木.json" >msvc.txt 2>msvc-log.txt
    check "both hosts print the same cards of $machine" same mingw.txt msvc.txt
    check "both hosts print the same log of $machine" same mingw-log.txt msvc-log.txt
    check "the hosts print cards of $machine" holds msvc.txt "Intel: Intel(R) UHD Graphics"
done
check "the hosts print the cards of all vendors" holds msvc.txt "3 cards"
run simulated-msvc.exe none.json >msvc.txt 2>msvc-log.txt
check "a host gets the error of a machine file" holds msvc-log.txt none.json
run plog/plog-host.exe "$machines/workstation.json" >plog.txt 2>&1
check "the host's own log has the library's lines" holds plog.txt \
    "orvel::shared::enumeration::ADLWrapper::ADLWrapper"
check "the log also has the host's own lines" holds plog.txt "found NVIDIA GeForce RTX 3060"

# --- without a PATH: the files copied beside a program are sufficient -------------------------------------------------------

run_alone() { WINEPATH="" run "$@"; }
run_alone plain/plain.exe >alone.txt 2>&1
check "the plain example runs with the DLLs that CMake copies" holds alone.txt " cards"
run_alone c/c-host.exe >alone.txt 2>&1
check "the host in C runs" holds alone.txt " cards"
check "the host in C gets the library's lines" holds alone.txt "graphics cards: "
run_alone plugin/plugin-host.exe >alone.txt 2>&1
check "the plug-in's host loads it" holds alone.txt " cards"
run_alone simulated/simulated.exe "$machines/workstation.json" >alone.txt 2>&1
check "a test program runs with the DLLs that CMake copies" holds alone.txt "3 cards"
check "a test program gets the simulation's nvml.dll" cmp simulated/nvml.dll "$package/simulation/nvml.dll"
check "another program gets the substitute" cmp plain/nvml.dll "$package/bin/fallback/nvml.dll"

cmake -S "$package/examples/unit-test" -B unit-test -DCMAKE_CROSSCOMPILING_EMULATOR="$wine" >/dev/null
unit_tests() { WINEPATH="" ctest --test-dir "$1" --output-on-failure </dev/null 2>&1; }
check "the example's unit tests pass" unit_tests unit-test
sed 's/cards.size() == 2/cards.size() == 3/' "$package/examples/unit-test/tests.cpp" >wrong-tests.cpp
mkdir -p wrong && cp "$package/examples/unit-test/CMakeLists.txt" wrong/ && mv wrong-tests.cpp wrong/tests.cpp
mingw_project wrong wrong-build >/dev/null 2>&1
cmake -S wrong -B wrong-build -DCMAKE_CROSSCOMPILING_EMULATOR="$wine" >/dev/null
check "a wrong unit test fails" grep -q 'finds-both-chips (Failed)' <(unit_tests wrong-build)

# --- the inventory -----------------------------------------------------------------------------------------------------------

inventory_library=$package/lib/orvel-graphic-cards-inventory.lib
# Every host gets the same documents; the inventory's DLL needs no other DLL of the package.
msvc_c_host() { # SOURCE PROGRAM LIBRARY…: a C program in MSVC's ABI
    clang --target=x86_64-pc-windows-msvc -std=c99 -isystem "$here/msvc-crt" -Wall -Wextra -Wpedantic -Werror \
        "-I$package/include" -c "$1" -o "$2.obj" &&
        lld-link /nologo /nodefaultlib /subsystem:console /entry:mainCRTStartup "/out:$2.exe" "$2.obj" startup.obj \
            msvcrt.lib ole32.lib kernel32.lib shell32.lib "${@:3}"
}
source_of_host=$package/examples/inventory/main.c
mkdir inventory-msvc && cp "$package/bin/orvel-graphic-cards-inventory.dll" inventory-msvc/
check "the inventory's C program builds in MSVC's ABI" msvc_c_host "$source_of_host" inventory-msvc/host "$inventory_library"
run_alone inventory/inventory-host.exe >mingw.txt 2>&1
run_alone inventory-msvc/host.exe >msvc.txt 2>&1
check "the inventory's program runs with its DLL alone" holds mingw.txt " adapters"
check "the inventory's MSVC and MinGW programs print the same" same mingw.txt msvc.txt
check "CMake copies nothing but the inventory's DLL" same <(echo inventory/orvel-graphic-cards-inventory.dll) <(ls inventory/*.dll)
pkg_config_c_host() {
    eval x86_64-w64-mingw32-gcc-posix -std=c99 '"$1"' -o '"$2"' "$(flags orvel-graphic-cards-inventory)"
}
check "the inventory's program builds with the flags of pkg-config" pkg_config_c_host "$source_of_host" inventory-pkg-config.exe
check "the package has the schema of the inventory's documents" cmp "$package/schema/inventory.schema.json" \
    "$source/inventory/schema/inventory.schema.json"
grep -oE '\bOrvelInventory[A-Z][A-Za-z]*\(' "$package/include/OrvelInventory.h" | tr -d '(' | sort >declared.txt
x86_64-w64-mingw32-objdump -p "$package/bin/orvel-graphic-cards-inventory.dll" |
    sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' | awk '/^\t\[/ { print $NF }' | sort >exported.txt
check "the inventory exports what its header declares, and nothing else" same declared.txt exported.txt

# A plug-in in its own folder, loaded in every way by a host in another folder.
check "a host that loads a plug-in builds in MSVC's ABI" msvc_host "$here/loading.cpp" loading-msvc
check "a host that loads a plug-in builds with MinGW" x86_64-w64-mingw32-g++-posix -std=c++17 -static "$here/loading.cpp" \
    -o loading-mingw.exe -lole32
plugin=$(windows "$work/plugin/plugin/graphics-plugin.dll")
printf '%s\n' "plain: error 126" "altered: loaded" "load folder: loaded" >expected.txt
for abi in msvc mingw; do
    run_alone "loading-$abi.exe" "$plugin" >loading.txt 2>&1
    check "the plug-in loads with either flag in the $abi host" same expected.txt loading.txt
    mv plugin/plugin/orvel-shared-wmi-client.dll plugin/
    run_alone "loading-$abi.exe" "$plugin" >loading.txt 2>&1
    check "without the WMI client DLL the plug-in does not load in the $abi host" same \
        <(printf '%s: error 126\n' plain altered "load folder") loading.txt
    mv plugin/orvel-shared-wmi-client.dll plugin/plugin/
done

# --- find_package -------------------------------------------------------------------------------------------------------------

configures() { # FOLDER [PACKAGE]
    cmake --fresh -S "$1" -B "$1/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$source/cmake/Toolchain-mingw64.cmake" \
        -DCMAKE_PREFIX_PATH="${2:-$package}"
}
refuses() { # REASON FOLDER [PACKAGE]
    if configures "${@:2}" >refused.txt 2>&1; then echo "it is accepted" && return 1; fi
    tr -s ' \n' ' ' <refused.txt | grep -qF -- "$1" || { cat refused.txt && return 1; }
}
finds="find_package(orvel-graphic-cards-enumeration"
IFS=. read -r major _ < <(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
for range in "" "$major" "$major.0...<$((major + 1))" "$major.0...$major.99"; do
    cmake_lists version "$finds $range REQUIRED)"
    check "find_package accepts version \"$range\"" configures version
done
for range in "$((major + 1))" "0.1...<$major" "$major.1...$major.9"; do
    cmake_lists version "$finds $range REQUIRED)"
    check "find_package refuses version \"$range\"" refuses "$range" version
done
cmake_lists components "$finds REQUIRED COMPONENTS simulations)"
check "find_package refuses an unknown component" refuses 'There is no component "simulations"' components
cmake_lists components "$finds REQUIRED OPTIONAL_COMPONENTS simulations simulation)" \
    "if(orvel-graphic-cards-enumeration_simulations_FOUND OR NOT TARGET orvel::simulation)" \
    "    message(FATAL_ERROR wrong)" "endif()"
check "an unknown optional component is not found, and known components are" configures components
cmake_lists components "$finds REQUIRED)" "if(TARGET orvel::simulation)" "    message(FATAL_ERROR wrong)" "endif()"
check "the simulation is only available if requested" configures components
cmake_lists standard "set(CMAKE_CXX_STANDARD 11)" "$finds REQUIRED)" "add_executable(modern main.cpp)" \
    "target_link_libraries(modern PRIVATE orvel::graphic-cards-enumeration)"
printf '#include "GraphicCards.h"\nint main() { static_assert(__cplusplus >= 201703L); }\n' >standard/main.cpp
check "a program that links the library is compiled as C++17" mingw_project standard standard/build

cp -r "$package" "another copy"
cmake_lists copies "add_subdirectory(a)" "add_subdirectory(b)"
mkdir copies/a copies/b
echo "int main() {}" | tee copies/a/main.cpp >copies/b/main.cpp
copy() { # FOLDER PACKAGE
    printf '%s\n' "$finds REQUIRED COMPONENTS simulation PATHS \"$2\" NO_DEFAULT_PATH)" "add_executable($1 main.cpp)" \
        "target_link_libraries($1 PRIVATE orvel::graphic-cards-enumeration orvel::simulation)" \
        "file(GENERATE OUTPUT \${CMAKE_BINARY_DIR}/$1.txt CONTENT \"\$<TARGET_RUNTIME_DLLS:$1>\")" \
        "unset(orvel-graphic-cards-enumeration_DIR CACHE)" >"copies/$1/CMakeLists.txt"
}
copy a "$package"
copy b "$work/another copy"
check "two folders of a project use two copies" configures copies none
check "each folder has the DLLs of its copy" same \
    <(sed "s|$package/|$work/another copy/|g" copies/build/a.txt) copies/build/b.txt
cmake_lists twice "$finds REQUIRED PATHS \"$package\" NO_DEFAULT_PATH)" "unset(orvel-graphic-cards-enumeration_DIR CACHE)" \
    "$finds REQUIRED PATHS \"$work/another copy\" NO_DEFAULT_PATH)"
check "a second copy in one folder is refused" refuses "of another copy of the package" twice none
cmake_lists incomplete "$finds REQUIRED COMPONENTS simulation)"
for file in bin/orvel-shared-wmi-client.dll lib/liborvel-graphic-cards-enumeration.dll.a simulation/opencl.dll; do
    mv "another copy/$file" missing
    check "find_package refuses a package without $file" refuses "/$file\" is missing" incomplete "$work/another copy"
    mv missing "another copy/$file"
done

cmake_lists inventory-only "find_package(orvel-graphic-cards-inventory 1.0 REQUIRED)" \
    "if(TARGET orvel::graphic-cards-enumeration OR NOT EXISTS \"\${ORVEL_INVENTORY_SCHEMA}\")" "    message(FATAL_ERROR wrong)" \
    "endif()"
check "the inventory is found without the enumeration" configures inventory-only
for file in bin/orvel-graphic-cards-inventory.dll lib/liborvel-graphic-cards-inventory.dll.a schema/inventory.schema.json; do
    mv "another copy/$file" missing
    check "find_package refuses an inventory without $file" refuses "/$file\" is missing" inventory-only "$work/another copy"
    mv missing "another copy/$file"
done

# Installs the overlay port's files as vcpkg would.
printf '%s\n' "function(vcpkg_install_copyright)" "endfunction()" \
    "include(\"$package/ports/orvel-graphic-cards-enumeration/portfile.cmake\")" >port.cmake
check "the port takes the package" env ORVEL_GRAPHIC_CARDS_PACKAGE="$package" cmake -DPORT=orvel-graphic-cards-enumeration \
    -DCURRENT_PACKAGES_DIR="$work/port" -P port.cmake
check "find_package finds the installed port" configures incomplete "$work/port"
check "find_package finds the inventory of the installed port" configures inventory-only "$work/port"

# --- documents ----------------------------------------------------------------------------------------------------------------

leads_somewhere() { [ -e "$(dirname "$1")/${2%%#*}" ] || { echo "no $2 in $1" && return 1; }; }
lacks_the_project() { ! grep -nE '\./dev|(^|[ `(])(src|tests|wmi-client|bench|fuzz|cmake)/' "$1"; }
while IFS= read -r document; do
    title=${document#"$package/"}
    while IFS= read -r link; do
        [[ $link == http* ]] || check "$title: link $link" leads_somewhere "$document" "$link"
    done < <(grep -oE '\]\([^)]+\)' "$document" | grep -E '[./#]' | sed 's/^](//; s/)$//')
    check "$title refers only to the package's contents" lacks_the_project "$document"
    while IFS= read -r path; do check "$title: path $path" test -e "$package/$path"; done < <(
        grep -oE '`(bin|debug|docs|examples|include|lib|licenses|ports|schema|simulation)/[^`* ]*`' "$document" | tr -d '`' | grep -v NAME | sort -u)
done < <(find "$package" -name '*.md')
check "the known limits come first" same <(echo "## Known limits") <(grep -m1 '^## ' "$package/README.md")
awk '/^```cpp$/ { wanted = 1; next } /^```$/ { wanted = 0 } wanted' "$package/README.md" >first.cpp
check "README's first program builds in MSVC's ABI" msvc_host first.cpp first-msvc "${msvc_libraries[0]}"
check "README's first program builds with the flags of pkg-config" pkg_config_host first.cpp first.exe \
    orvel-graphic-cards-enumeration
awk '/^```cmake$/ { wanted = 1; next } /^```$/ { wanted = 0 } wanted' "$package/README.md" >first.txt
mkdir -p first && mv first.txt first/CMakeLists.txt && cp first.cpp first/main.cpp
check "README's first project builds" mingw_project first first/build
for program in first first-msvc; do
    run "$program.exe" >first.txt 2>&1
    check "README's first program runs: $program" holds first.txt " cards"
done

# --- the package's own program -------------------------------------------------------------------------------------------------

check "the package's command-line tool runs on a machine of the package" run "$package/bin/orvel-graphic-cards.exe" \
    --machine "$machines/workstation.json"
check "the command-line tool starts on this computer with the substitute nvml.dll" run "$package/bin/orvel-graphic-cards.exe"

# Every getter and every argument of the constructor that the header declares.
getters=$(sed -n 's/^    .* \(Get[A-Za-z]*\)() const;$/        Print("\1", card.\1());/p' "$package/include/GraphicCardInfo.h")
arguments=$(sed -n 's/^    \(unsigned int\|const char\*\|bool\|float\) [A-Z][A-Za-z]*;$/\1/p' "$package/include/GraphicCardInfo.h" |
    awk '{ type = $0 }
        type == "unsigned int" { print NR "U" }
        type == "const char*" { print "\"t" NR "\"" }
        type == "bool" { print(NR % 2 ? "false" : "true") } # adjacent arguments differ
        type == "float" { print NR ".5F" }' | paste -sd, -)
fields=$(sed -n 's/^    \(unsigned int\|const char\*\|bool\|float\) \([A-Z][A-Za-z]*\);$/Get\2/p' "$package/include/GraphicCardInfo.h")
awk -v getters="$getters" -v arguments="$arguments" '/@GETTERS@/ { print getters; next }
    /@BUILT_GETTERS@/ { built = getters; gsub(/Print\("/, "Print(\"built ", built); print built; next }
    { gsub(/@ARGUMENTS@/, arguments); print }' "$here/getters.cpp.in" >getters.cpp
reads_every_property() {
    local count
    count=$(python3 "$source/properties/generate.py" --count)
    [ "$(grep -c '^ *Print("Get' getters.cpp)" -eq "$count" ] && [ "$(grep -c 'Print("built Get' getters.cpp)" -eq "$count" ]
}
check "the program reads every property" reads_every_property
check "a host that reads every getter builds in MSVC's ABI" msvc_host getters.cpp getters-msvc "${msvc_libraries[@]}"
check "a host that reads every getter builds with MinGW" x86_64-w64-mingw32-g++-posix -std=c++17 -static getters.cpp \
    "-I$package/include" "-I$package/simulation/include" -o getters-mingw.exe \
    "-L$package/lib" -lorvel-graphic-cards-enumeration "-L$package/simulation/lib" -lorvel-simulation -lole32
jq '.wmi.failures = [{"contains": "SELECT Speed", "status": "0x80041001"}]' "$machines/intel-laptop.json" >throws.json
# The expected output for a record of these arguments: each field with the number of its position, written as its type.
paste -d= <(echo "$fields") <(echo "$arguments" | tr , '\n' | sed 's/[UF]$//; s/"//g') | sed 's/^/built /' >built.txt
for machine in "$machines/workstation.json" throws.json; do
    run getters-mingw.exe "$machine" >mingw.txt 2>&1
    run getters-msvc.exe "$machine" >msvc.txt 2>&1
    check "both hosts read the same values from every getter" same mingw.txt msvc.txt
    check "each getter returns the constructor's argument at its position" same built.txt <(grep '^built ' msvc.txt)
    check "an assignment returns its target" holds msvc.txt "the target: 1"
    check "an assignment shares the texts" holds msvc.txt "shared text: 1"
done
check "MSVC and MinGW hosts catch a status as long" holds msvc.txt "thrown long 0x80041001"

check "a GraphicCards host builds in MSVC's ABI" msvc_host "$here/modern.cpp" modern-msvc "${msvc_libraries[@]}"
check "a GraphicCards host builds with MinGW" x86_64-w64-mingw32-g++-posix -std=c++17 -static "$here/modern.cpp" \
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
    check "GraphicCards can be moved, iterated and enumerated again in the $abi host" same expected.txt modern.txt
done

# --- hosts that misbehave ------------------------------------------------------------------------------------------------------

check "a host that misbehaves builds in MSVC's ABI" msvc_host "$here/misbehaving.cpp" misbehaving-msvc "${msvc_libraries[@]}"
check "a host that misbehaves builds with MinGW" x86_64-w64-mingw32-g++-posix -std=c++17 -static "$here/misbehaving.cpp" \
    "-I$package/include" "-I$package/simulation/include" -o misbehaving-mingw.exe \
    "-L$package/lib" -lorvel-graphic-cards-enumeration "-L$package/simulation/lib" -lorvel-simulation -lole32
# survives SCENARIO MACHINE LINE…: the MSVC and the MinGW host print these lines, and leave nothing open.
survives() {
    local scenario=$1 machine=$2 abi
    printf '%s\n' "${@:3}" "all closed: true" >expected.txt
    for abi in msvc mingw; do
        run "misbehaving-$abi.exe" "$machines/$machine.json" "$scenario" >misbehaving.txt 2>&1
        sed '/^report: /d' misbehaving.txt >printed.txt
        sed -n 's/^report: //p' misbehaving.txt | jq -r '"all closed: \([.live[]] | add == 0)"' >>printed.txt
        check "$scenario: the $abi host on $machine" same expected.txt printed.txt
    done
}
lines=$(jq '.log | length' "$source/machines/expected/workstation.json")
all="thrown: 0, lines: $lines, other lines: 0"
survives counts workstation "cards: 3, $all"
survives throws workstation "cards: 3, $all"
survives "replaces itself" workstation "cards: 3, thrown: 0, lines: 1, other lines: $((lines - 1))"
survives "ends itself" workstation "cards: 3, thrown: 0, lines: 1, other lines: 0"
survives "all severities" workstation "cards: 3, $all"
survives "no severity" workstation "cards: 3, thrown: 0, lines: 0, other lines: 0"
survives traps amd-desktop-ddr5 "traps kept: 1" "cards: 1, thrown: 0, lines: 0, other lines: 0"
survives unmasks amd-desktop-ddr5 "cards: 1, thrown: 0, lines: 8, other lines: 0"
survives "destroys twice" workstation "left: 0" "destroyed twice"
cp throws.json "$machines/"
survives traps throws "traps kept: 1" "cards: 0, thrown: 1, lines: 0, other lines: 0"

# --- threads and nulls ---------------------------------------------------------------------------------------------------------

check "a host with two threads builds in MSVC's ABI" msvc_host "$here/apartments.cpp" apartments-msvc "${msvc_libraries[1]}"
check "a host with two threads builds with MinGW" x86_64-w64-mingw32-g++-posix -std=c++17 -static "$here/apartments.cpp" \
    "-I$package/simulation/include" -o apartments-mingw.exe "-L$package/simulation/lib" -lorvel-simulation -lole32
# finds CARDS TOUCHED WHEN MAIN WORKER: the MSVC and the MinGW host find this number of cards on the workstation.
finds() {
    local abi
    for abi in msvc mingw; do
        WINEPATH="$folder\\simulation" run "apartments-$abi.exe" "$machines/workstation.json" "$plugin" "${@:3}" >apartments.txt 2>&1
        check "${*:3}: the $abi host finds the machine's cards" same <(echo "cards: $1") \
            <(grep -v '^report: ' apartments.txt || echo "cards: none")
        check "${*:3}: the $abi host's report shows whether the machine was queried" same <(echo "$2") \
            <(sed -n 's/^report: //p' apartments.txt | jq .touched)
    done
}
for when in early late; do
    for main in sta mta; do
        for worker in sta mta; do finds 3 true $when $main $worker; done
    done
done
finds 3 true late mta none # such a thread belongs to the multi-threaded apartment
finds 0 true late sta none # COM is not initialised on the worker's thread
finds none false late sta idle

check "a host that passes null builds in MSVC's ABI" msvc_host "$here/nulls.cpp" nulls-msvc "${msvc_libraries[@]}"
check "a host that passes null builds with MinGW" x86_64-w64-mingw32-g++-posix -std=c++17 -static "$here/nulls.cpp" \
    "-I$package/include" "-I$package/simulation/include" -o nulls-mingw.exe \
    "-L$package/lib" -lorvel-graphic-cards-enumeration "-L$package/simulation/lib" -lorvel-simulation -lole32
{
    printf '%s\n' "no path: 1, the path of the machine file is null" "no path, no problem: 1" \
        "no text: 1, somewhere: /: the text is null" "no source: 1, the source name of the machine is null" "in place: 0" \
        "no calls yet: 0, of null: -1" "NVML initialised: 1, NVML's functions: 1, connections: 1"
} >expected.txt
for abi in msvc mingw; do
    run "nulls-$abi.exe" "$machines/workstation.json" >nulls.txt 2>&1
    check "null is refused in the $abi host, and calls are counted" same expected.txt <(grep -v '^report: ' nulls.txt)
done

# --- exceptions ---------------------------------------------------------------------------------------------------------------

x86_64-w64-mingw32-g++-posix -std=c++20 -O2 -shared -static "-I$source/src" "$here/throwing.cpp" \
    "$source/src/abi/MsvcException.cpp" "$source/src/formulas/RunFailure.cpp" -o throwing.dll
llvm-dlltool -m i386:x86-64 -d "$here/throwing.def" -l throwing.lib
check "a host that catches builds in MSVC's ABI" msvc_host "$here/catching.cpp" catching throwing.lib
run catching.exe >caught.txt 2>&1
one_round=$'status: long 0x80041010\nbad_alloc: bad_alloc bad allocation\nruntime_error: exception driver gone
long text: exception xxxxxxxxxxxxxxxxxxxx\nunknown: exception unknown exception\nnothing: nothing'
kept=$'meanwhile: exception driver gone\nkept bad_alloc: bad_alloc bad allocation
meanwhile: exception xxxxxxxxxxxxxxxxxxxx\nkept runtime_error: exception driver gone\nkept text: driver gone'
printf '%s\n%s\n%s\nby value: caught\n' "$one_round" "$one_round" "$kept" >expected.txt
check "MSVC hosts catch each exception as its own type" same expected.txt caught.txt

# --- headers ------------------------------------------------------------------------------------------------------------------

for header in "$package"/include/*.h "$package"/simulation/include/*.h; do
    [ "$(basename "$header")" = GraphicCardPlog.h ] && continue # needs plog; the plog example includes it
    for standard in c++17 c++20; do
        check "$(basename "$header") compiles alone with GCC as $standard" x86_64-w64-mingw32-g++-posix "-std=$standard" -Wall \
            -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Werror -fsyntax-only -include "$header" -x c++ /dev/null
        check "$(basename "$header") compiles alone in MSVC's ABI as $standard" clang++ "${msvc_flags[@]}" "-std=$standard" \
            -Weverything -Wno-c++98-compat -Wno-c++98-compat-pedantic -Wno-padded -fsyntax-only -include "$header" -x c++ /dev/null
    done
    check "$(basename "$header") includes neither windows.h nor the standard library" lacks "$header" "windows.h"
done
no_std_types() { ! grep -nE 'std::(string|vector|unique_ptr|shared_ptr|map)' "$package"/include/GraphicCard{Enumeration,Info,Log,Api}.h; }
check "no exported class contains a standard-library type" no_std_types
for compiler in x86_64-w64-mingw32-gcc-posix "clang --target=x86_64-pc-windows-msvc"; do
    for standard in c99 c17; do
        # shellcheck disable=SC2086 # $compiler includes an option
        for header in GraphicCardLog.h OrvelInventory.h; do
            check "$header compiles as $standard with ${compiler%% *}" $compiler "-std=$standard" -Wall -Wextra -Wpedantic \
                -Werror "-I$package/include" -fsyntax-only -include $header -x c /dev/null
        done
    done
done
check "GraphicCardLog.h does not include plog" lacks <(x86_64-w64-mingw32-g++-posix -M \
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

check "the MSVC names match the headers" same <("$source/cmake/make-msvc-exports.sh" "$package/include") \
    "$source/src/abi/MsvcExports.def"
library=$package/bin/orvel-graphic-cards-enumeration.dll
x86_64-w64-mingw32-objdump -p "$library" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' | awk '/^\t\[/ { print $NF }' |
    sort >exports.txt
sed -n 's/^    "\(?.*\)" = .*/\1/p' "$source/src/abi/MsvcExports.def" | sort >msvc-names.txt
sed -n 's/^    ".*" = \(_Z.*\)/\1/p; s/^    "\(_Z.*\)" = .*/\1/p' "$source/src/abi/MsvcExports.def" | sort >gcc-names.txt
check "the DLL exports every MSVC name" same msvc-names.txt <(comm -12 exports.txt msvc-names.txt)
check "the DLL exports every GCC name" same gcc-names.txt <(comm -12 exports.txt gcc-names.txt)
printf 'GetGraphicCardsVersion\nSetGraphicCardLog\n' >c-names.txt
check "the DLL exports the C functions" same c-names.txt <(comm -12 exports.txt c-names.txt)
# GCC exports two names for each constructor and destructor; no MSVC name refers to the second.
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
check "the change log's newest version is the project's" same <(echo "## $version") <(grep -m1 '^## [0-9]' "$package/CHANGELOG.md")
check "the vcpkg port's version is the project's" holds "$source/ports/orvel-graphic-cards-enumeration/vcpkg.json" "\"$version\""
check "the pkg-config file's version is the project's" holds \
    "$package/lib/pkgconfig/orvel-graphic-cards-enumeration.pc" "Version: $version"

has_version() { # the text of a version resource is UTF-16
    local hex
    hex=$(printf 'FileVersion\0\0%s\0' "$version" | iconv -t UTF-16LE | xxd -p | tr -d '\n')
    xxd -p "$1" | tr -d '\n' | grep -q "$hex"
}
# Base relocations in code pages would make the loader write to the code.
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
allowed='ADVAPI32|SETUPAPI|USER32|VERSION|KERNEL32|msvcrt|ole32|OLEAUT32|SHELL32|dwmapi|dxgi|nvml|orvel-shared-wmi-client|orvel-graphic-cards-enumeration'
only_known_imports() {
    ! x86_64-w64-mingw32-objdump -p "$1" | sed -n 's/.*DLL Name: \(.*\)\.dll/\1/Ip' | grep -viE "^($allowed)$"
}
for binary in "$package"/bin/*.dll "$package"/bin/*.exe "$package"/bin/fallback/*.dll; do
    file=$(basename "$binary")
    x86_64-w64-mingw32-objdump -p "$binary" >headers.txt
    check "$file carries the project's version" has_version "$binary"
    for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do check "$file has $flag" holds headers.txt "$flag"; done
    check "$file can be relocated" holds headers.txt "Base Relocation Directory [.reloc]"
    check "$file has no text relocations" has_no_text_relocations "$binary"
    check "$file imports only Windows' DLLs, nvml.dll and DLLs of the package" only_known_imports "$binary"
    debug=$(find "$package/debug" -name "$file.debug" -o -name "fallback-$file.debug" | head -1)
    x86_64-w64-mingw32-nm "$debug" >symbols.txt
    check "$file has stack protection" holds symbols.txt __stack_chk_fail
    check "$file names its debug file" grep -q "$(basename "$debug")" "$binary"
done

echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
