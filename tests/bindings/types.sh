#!/usr/bin/env bash
# types.sh SOURCE: checks that the types of the bindings match the schema of the inventory's documents.
set -uo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"

check "the generated files match the schema" "$source/bindings/generate.py" --check

# differs FILE SED: after this edit of the schema, the file is reported as outdated.
mkdir -p "$work/inventory" "$work/bindings/node" "$work/bindings/python/orvel_graphic_cards_inventory"
differs() {
    cp -r "$source/inventory/schema" "$work/inventory/"
    cp "$source/bindings/generate.py" "$work/bindings/"
    cp "$source/bindings/node/card.d.ts" "$work/bindings/node/"
    cp "$source/bindings/python/orvel_graphic_cards_inventory/card.py" "$work/bindings/python/orvel_graphic_cards_inventory/"
    sed -i "$2" "$work/inventory/schema/inventory.schema.json"
    if "$work/bindings/generate.py" --check 2>"$work/different"; then echo "not noticed" && return 1; fi
    grep -F "$1 is not as" "$work/different" || { cat "$work/different" && return 1; }
}
for file in bindings/node/card.d.ts bindings/python/orvel_graphic_cards_inventory/card.py; do
    check "$file has the properties' descriptions" differs $file 's/name of the vendor/the vendor/'
    check "$file has the reasons" differs $file 's/"asleep"/"sleeps"/'
done

echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
