#!/usr/bin/env bash
# make-package.sh SOURCE BUILD DIST: creates the package from a finished build. The same build produces the same bytes.
set -euo pipefail
source=$1
build=$2
dist=$3

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
name=orvel-graphic-cards-enumeration-$version-win64
stage=$build/package/$name
tool=x86_64-w64-mingw32
export TZ=UTC LC_ALL=C SOURCE_DATE_EPOCH=946684800 # binutils writes timestamps into copies

rm -rf "$build/package"
mkdir -p "$stage"/{bin/fallback,debug,include,lib/cmake,lib/pkgconfig,schema} \
    "$stage"/simulation/{include,lib,machines}

# ship FILE FOLDER: copies a program or DLL, and moves its debug information to debug/.
ship() {
    local file
    file=$(basename "$1")
    $tool-objcopy --only-keep-debug "$1" "$stage/debug/$3$file.debug"
    $tool-objcopy --strip-all "$1" "$stage/$2/$file"
    (cd "$stage/debug" && $tool-objcopy --add-gnu-debuglink="$3$file.debug" "$stage/$2/$file")
}

# import_libraries DEFINITION DLL FOLDER: creates an import library for MSVC, and one for MinGW without the MSVC names.
import_libraries() {
    local stem=${2%.dll} definition=$build/package/$2.def
    { echo "LIBRARY $2"; sed 's/ = [^ ]*//; s/ @[0-9]*$//' "$1"; } >"$definition"
    llvm-dlltool -m i386:x86-64 -d "$definition" -l "$stage/$3/$stem.lib"
    sed -i '/^ *?/d' "$definition"
    llvm-dlltool -m i386:x86-64 -d "$definition" -l "$stage/$3/lib$stem.dll.a"
}

ship "$build/bin/orvel-graphic-cards-enumeration.dll" bin ""
ship "$build/bin/orvel-shared-wmi-client.dll" bin ""
ship "$build/bin/orvel-graphic-cards-inventory.dll" bin ""
ship "$build/bin/orvel-graphic-cards.exe" bin ""
ship "$build/bin/fallback/nvml.dll" bin/fallback fallback-
for dll in orvel-simulation opencl dxgi dwmapi nvapi64 nvml atiadlxx amdadlx64; do
    $tool-objcopy --strip-all "$build/bin/simulation/$dll.dll" "$stage/simulation/$dll.dll"
done
import_libraries "$build/orvel-graphic-cards-enumeration.def" orvel-graphic-cards-enumeration.dll lib
{
    echo EXPORTS
    sed -nE 's/^ORVEL_INVENTORY_API .*[ *](Orvel[A-Za-z]+)\(.*/    \1/p' "$source/include/OrvelInventory.h"
} >"$build/package/inventory.def"
import_libraries "$build/package/inventory.def" orvel-graphic-cards-inventory.dll lib
printf 'EXPORTS\n    OrvelSimulateMachine\n    OrvelSimulateMachineText\n    OrvelSimulationReport\n    OrvelSimulationCalls\n    OrvelStartRecording\n    OrvelEndRecording\n    OrvelEndSimulation\n' \
    >"$build/package/simulation.def"
import_libraries "$build/package/simulation.def" orvel-simulation.dll simulation/lib

cp "$source"/include/*.h "$stage/include/"
cp "$source/inventory/schema/inventory.schema.json" "$stage/schema/"
cp "$source"/simulation/include/*.h "$stage/simulation/include/"
cp "$source"/machines/*.json "$stage/simulation/machines/"
cp -r "$source/examples" "$source/ports" "$stage/"

# document FILE TARGET: copies a document and adapts its paths and commands to the package, which has no ./dev.
document() {
    sed -e '/(\.\.\/CONTRIBUTING\.md)/d' -e '/^<!-- .*\.\/dev generate.*-->$/d' -e 's|\./dev host|orvel-graphic-cards|g' -e 's|(\.\./inventory/schema/|(../schema/|g' -e 's|(\.\./machines/|(../simulation/machines/|g' \
        -e 's|\([ `"]\)machines/|\1simulation/machines/|g' "$source/$1" >"$stage/$2"
}
mkdir "$stage/docs"
for file in bug-reports fleets hosting inventory inventory-properties testing properties messages simulated-machines; do document "docs/$file.md" "docs/$file.md"; done
document machines/README.md simulation/machines/README.md
sed -i 's|(\.\./docs/|(../../docs/|g' "$stage/simulation/machines/README.md"
cp "$source"/{CHANGELOG,SECURITY}.md "$source/cmake/package/README.md" "$stage/"

cp "$source/cmake/package/orvel-package.cmake" "$stage/lib/cmake/"
for library in enumeration inventory; do
    library=orvel-graphic-cards-$library
    mkdir "$stage/lib/cmake/$library"
    cp "$source/cmake/package/$library-config.cmake" "$stage/lib/cmake/$library/"
    cmake "-DVERSION=$version" "-DFILE=$stage/lib/cmake/$library/$library-config-version.cmake" \
        -P "$source/cmake/package/version-file.cmake"
done
for file in "$source"/cmake/package/*.pc.in; do
    sed "s/@VERSION@/$version/g" "$file" >"$stage/lib/pkgconfig/$(basename "${file%.in}")"
done

"$source/cmake/copy-licences.sh" "$source" "$build" zip "$stage/licenses"

mkdir -p "$dist"
rm -f "$dist/$name".zip*
find "$build/package/$name" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
chmod -R u=rwX,go=rX "$stage"
(cd "$build/package" && find "$name" -type f | sort | zip -q -X -D -9 "$dist/$name.zip" -@)
(cd "$dist" && sha256sum "$name.zip" >"$name.zip.sha256")
echo "$dist/$name.zip"
