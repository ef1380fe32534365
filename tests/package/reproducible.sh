#!/usr/bin/env bash
# reproducible.sh ZIP SOURCE BUILD: checks that the same sources in another folder build the same package, byte by byte.
set -euo pipefail
zip=$1
source=$2
build=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

copy=$work/elsewhere
mkdir -p "$copy/build"
tar -C "$source" -c --exclude=./build --exclude=./dist --exclude=./.git . | tar -C "$copy" -x
ln -s "$build/deps" "$copy/build/deps"
cmake -S "$copy" -B "$copy/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$copy/cmake/Toolchain-mingw64.cmake" -DBUILD_TESTING=OFF >/dev/null
ninja -C "$copy/build" --quiet program
second=$("$copy/cmake/make-package.sh" "$copy" "$copy/build" "$copy/dist")
if ! cmp "$zip" "$second"; then
    diff <(unzip -lv "$zip" | awk '{ print $7, $8 }') <(unzip -lv "$second" | awk '{ print $7, $8 }') || true
    echo "0 passed, 1 failed"
    exit 1
fi
echo "1 passed, 0 failed"
