#!/usr/bin/env bash
# make-node-package.sh SOURCE BUILD DIST: creates the npm package from a finished build.
set -euo pipefail
source=$1
build=$2
dist=$3

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
strip=x86_64-w64-mingw32-strip
export SOURCE_DATE_EPOCH=946684800 # binutils writes timestamps into copies

mkdir -p "$stage/win32-x64" "$dist"
cp "$source"/bindings/node/{README.md,index.js,index.mjs,index.d.ts,index.d.mts,card.d.ts} "$stage/"
jq --arg version "$version" --arg license "$(sed -n 1p "$source/licenses/project.txt")" '. + {$version, $license}' \
    "$source/bindings/node/package.json" >"$stage/package.json"
$strip -o "$stage/win32-x64/orvel-graphic-cards-inventory.node" "$build/bindings/node/orvel-graphic-cards-inventory.node"
$strip -o "$stage/win32-x64/orvel-graphic-cards-inventory.dll" "$build/bin/orvel-graphic-cards-inventory.dll"
"$source/cmake/copy-licences.sh" "$source" "$build" npm "$stage/licenses"
chmod -R u=rwX,go=rX "$stage"
(cd "$stage" && npm pack --silent --offline --ignore-scripts --pack-destination "$dist" >/dev/null)
echo "$dist/orvel-graphic-cards-inventory-$version.tgz"
