#!/usr/bin/env bash
# make-python-package.sh SOURCE BUILD DIST: creates the Python wheel from a finished build. Needs Debian's own Python, the only one
# that finds the modules of Debian's packages.
set -euo pipefail
source=$1
build=$2
dist=$3

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
stage=$build/bindings/python
export SOURCE_DATE_EPOCH=946684800 # for the archive and for copies that binutils writes

rm -rf "$stage"
mkdir -p "$stage" "$dist"
cp -r "$source"/bindings/python/{README.md,pyproject.toml,setup.py,orvel_graphic_cards_inventory} "$stage/"
rm -rf "$stage"/orvel_graphic_cards_inventory/__pycache__
x86_64-w64-mingw32-strip -o "$stage/orvel_graphic_cards_inventory/orvel-graphic-cards-inventory.dll" \
    "$build/bin/orvel-graphic-cards-inventory.dll"
echo "$version" >"$stage/version.txt"
cp "$source/licenses/project.txt" "$stage/licence.txt"
"$source/cmake/copy-licences.sh" "$source" "$build" wheel "$stage/licenses"
chmod -R u=rwX,go=rX "$stage"
(cd "$stage" && /usr/bin/python3 -m build --wheel --no-isolation --outdir "$dist" >"$stage/build.log" 2>&1) ||
    { cat "$stage/build.log" >&2 && exit 1; }
echo "$dist/orvel_graphic_cards_inventory-$version-py3-none-win_amd64.whl"
