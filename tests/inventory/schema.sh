#!/usr/bin/env bash
# schema.sh SOURCE BUILD WINE: checks that documents of this computer match the published schema, that the schema rejects invalid
# documents, and that its names are those of the library.
set -uo pipefail
source=$1
build=$2
wine=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"
schema=$source/inventory/schema/inventory.schema.json

valid() { python3 "$source/tests/inventory/validate.py" --closed "$schema" "$1"; }
still_valid() { python3 "$source/tests/inventory/validate.py" "$schema" "$1"; }
invalid() { if valid "$1" >/dev/null; then echo "$1 is valid"; return 1; fi; }

document() { (cd "$build/bin" && "$wine" orvel-inventory-first-host.exe "$1" "$2" | tr -d '\r'); }

for depth in 1 2 3; do
    document "$depth" 0 >"$work/full-$depth.json"
    document "$depth" 1 >"$work/flat-$depth.json"
    check "the full form of depth $depth follows the schema" valid "$work/full-$depth.json"
    check "the flat form of depth $depth follows the schema" valid "$work/flat-$depth.json"
done

# broken NAME FILTER: a document with one fault.
broken() {
    jq "$2" "$work/full-2.json" >"$work/broken.json"
    check "the schema refuses $1" invalid "$work/broken.json"
}

broken "another schema version" '.schema_version = 2'
broken "the other form's cards" '.form = "flat"'
broken "a card without a name" 'del(.cards[0].name)'
broken "an unknown property" '.cards[0].colour = .cards[0].name'
broken "a value without a status" 'del(.cards[0].name.status)'
broken "a known value that is null" '.cards[0].vendor_id.value = null'
broken "an empty text" '.cards[0].instance_id.value = ""'
broken "a number as text" '.cards[0].vendor_id.value = "0"'
broken "an unknown value that is not null" '.cards[0].memory_type.value = "GDDR6"'
broken "a failure without a code" '.cards[0].name = {value: null, status: "failed", source: "setupapi", code: null, reason: "refused"}'
broken "a source that does not exist" '.sources[0].name = "wmi"'

# later FILTER: a document with an addition that a later release may make.
later() {
    jq "$1" "$work/full-2.json" >"$work/later.json"
    check "the schema accepts a later release's $2" still_valid "$work/later.json"
}
later '.cards[0].colour = .cards[0].name' property
later '.sources += [{name: "level_zero", state: "answered", code: null, reason: null}]' source
later '.cards[0].uuid = {value: null, status: "unavailable", source: "level_zero", code: null, reason: "too hot"}' reason

# The schema lists the same names as the library.
names() { grep -oE '^ *\{P::\w+, "[a-z_]+"' "$source/inventory/model/Properties.cpp" | grep -oE '[a-z_]+"$' | tr -d '"'; }
check "the schema lists the properties of the table" \
    diff <(names) <(jq -r '."$defs".fullCard.properties | keys_unsorted[]' "$schema")
check "both forms have the same properties" \
    diff <(names) <(jq -r '."$defs".flatCard.properties | keys_unsorted[]' "$schema")
reasons() { sed -n '/ReasonText(Reason/,/^}/s/.*return "\(.*\)";/\1/p' "$source/inventory/model/Names.cpp"; }
check "the schema lists the reasons of the library" \
    diff <(reasons) <(jq -r '."$defs".reasonOrNull.examples[]' "$schema")

echo "$((checks - failures)) of $checks checks of the schema passed"
[ $failures -eq 0 ]
