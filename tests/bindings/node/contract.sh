#!/usr/bin/env bash
# contract.sh SOURCE BUILD WINE: tests the enumeration library in Node.js, a program that MSVC built.
set -uo pipefail
source=$1
build=$2
wine=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"
source "$source/tests/bindings/node/node.sh"

with_koffi "$work"
cp "$source/tests/bindings/node/contract.mjs" "$work/"
# Only machines with NVIDIA's driver, because the library imports nvml.dll.
for release in 18 22; do
    for machine in workstation hybrid-laptop nvidia-workstation; do
        check "Node.js $release reads the records of $machine by MSVC's names" node $release "$work" contract.mjs \
            "$(windows_path "$source/machines/$machine.json")" "$(windows_path "$source/machines/expected/$machine.json")" \
            "$(windows_path "$source/src/abi/MsvcExports.def")"
    done
done

echo "$((checks - failures)) of $checks checks of an MSVC host passed"
[ $failures -eq 0 ]
