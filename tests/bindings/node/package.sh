#!/usr/bin/env bash
# package.sh SOURCE BUILD WINE: tests the npm package as users get it: packed, installed without scripts into an empty folder, and
# used from there with Node.js for Windows under Wine.
set -uo pipefail
source=$1
build=$2
wine=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"
tests=$source/tests/bindings/node
name=orvel-graphic-cards-inventory
source "$tests/node.sh"

package=$("$source/cmake/make-node-package.sh" "$source" "$build" "$work/dist") || exit 1

# --- the package --------------------------------------------------------------------------------------------------------------

manifest() { tar -xzOf "$package" package/package.json | jq -re "$1"; }
manifest_has() { [ "$(manifest "$1")" = "$2" ] || { manifest "$1"; return 1; }; }
files_are() { diff <(tar -tzf "$package" | sed 's|^package/||' | sort) <(printf '%s\n' "$@" | sort); }
# The two files import only DLLs of Windows itself.
imports_only_windows() {
    local wrong
    tar -xzf "$package" -C "$work"
    wrong=$(x86_64-w64-mingw32-objdump -p "$work"/package/win32-x64/* | sed -n 's/^.*DLL Name: //p' |
        grep -viE '^(advapi32|kernel32|msvcrt|setupapi|user32)\.dll$')
    [ -z "$wrong" ] || { echo "$wrong"; return 1; }
}
statement=$(sed 1d "$source/licenses/project.txt")
readme_has_statement() { tar -xzOf "$package" package/README.md | tr '\n' ' ' | grep -qF "$statement"; }

mapfile -t licences < <(awk '!/^#/ && $3 ~ /npm/ { print "licenses/" $1 ".txt" }' "$source/licenses/components.txt")
check "the package contains nothing but what it needs" files_are README.md package.json index.js index.mjs index.d.ts index.d.mts \
    card.d.ts win32-x64/$name.node win32-x64/$name.dll licenses/project.txt "${licences[@]}"
check "both binaries import nothing but Windows' own DLLs" imports_only_windows
check "there is no install script" manifest_has '.scripts' null
check "there is no dependency" manifest_has '[.dependencies, .optionalDependencies, .os, .cpu] | map(values) | length' 0
check "the version is the project's" manifest_has .version "$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")"
check "the licence is the project's" manifest_has .license "$(sed -n 1p "$source/licenses/project.txt")"
check "README has the sentence on the licence" readme_has_statement
check "packing twice gives the same bytes" cmp "$package" "$("$source/cmake/make-node-package.sh" "$source" "$build" "$work/again")"

# --- installed ----------------------------------------------------------------------------------------------------------------

app=$work/app
check "npm installs the package without network and scripts" install_into "$app" "$package"
with_koffi "$app"
cp "$tests"/*.{mjs,cjs} "$app/"

# typed PROGRAM: compiles a TypeScript program to JavaScript.
typed() {
    cp "$tests/$1" "$app/"
    command node "$npm/typescript/lib/tsc.js" --strict --target es2022 --module nodenext \
        --lib es2022,dom --outDir "$app" "$app/$1"
}
check "five lines of TypeScript have the right types" typed program.mts
check "the types notice mistakes" typed wrong-types.mts

prints_cards() { node "$@" && grep -qE '^Wine Adapter ' "$work/node.out"; }
for release in 18 22; do
    check "the TypeScript program lists cards on Node.js $release" prints_cards $release "$app" program.mjs
    check "a CommonJS program lists cards on Node.js $release" prints_cards $release "$app" program.cjs
    check "the package is the C interface on Node.js $release" node $release "$app" usage.test.mjs
done

# --- failures -----------------------------------------------------------------------------------------------------------------

# with_library FOLDER OPTIONS…: a copy of the installation whose library is a fake compiled with these options.
with_library() {
    cp -r "$app" "$1"
    x86_64-w64-mingw32-gcc-posix -shared -Wall -Wextra -Werror -I "$source/include" "${@:2}" "$source/tests/bindings/FakeInventory.c" \
        -o "$1/node_modules/$name/win32-x64/$name.dll"
}
check "a library that fails is compiled" with_library "$work/failing"
for release in 18 22; do
    check "the library's failures, waiting and workers on Node.js $release" node $release "$work/failing" failures.test.mjs
done

broken() {
    for release in 18 22; do
        ORVEL_CODE=$2 ORVEL_MESSAGE=$3 node $release "$1" broken.test.mjs || return 1
    done
}
check "a library of another major version is compiled" with_library "$work/newer" -DFAKE_VERSION=20000
check "a library of another major version is refused" broken "$work/newer" ORVEL_WRONG_LIBRARY \
    "orvel-graphic-cards-inventory.dll is not of this package's version"
cp -r "$app" "$work/missing"
rm "$work/missing/node_modules/$name/win32-x64/$name.dll"
check "a missing library is an error with Windows' number" broken "$work/missing" ORVEL_LIBRARY_NOT_LOADED \
    "orvel-graphic-cards-inventory.dll cannot be loaded (Windows error 126)"
cp -r "$app" "$work/damaged"
echo "no program" >"$work/damaged/node_modules/$name/win32-x64/$name.dll"
check "a damaged library is an error with Windows' number" broken "$work/damaged" ORVEL_LIBRARY_NOT_LOADED \
    "orvel-graphic-cards-inventory.dll cannot be loaded (Windows error 193)"

# This system's own Node.js, which the tools above run on.
elsewhere() {
    (cd "$app" && ORVEL_CODE=ORVEL_UNSUPPORTED_PLATFORM ORVEL_MESSAGE="orvel-graphic-cards-inventory needs Node.js for 64-bit Windows \
(win32 x64), and this is linux $(command node -p process.arch)." command node broken.test.mjs)
}
check "on another system the package loads, and every function says what it needs" elsewhere

echo "$((checks - failures)) of $checks checks of the npm package passed"
[ $failures -eq 0 ]
