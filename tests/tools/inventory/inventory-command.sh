#!/usr/bin/env bash
# inventory-command.sh WINE BIN SOURCE: tests "orvel-graphic-cards inventory" as users run it, on Wine's own platform.
set -uo pipefail
wine=$1
bin=$2
source=$3
export LC_ALL=C.UTF-8
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"
program=$bin/orvel-graphic-cards.exe

# run ARGS…: runs the command, and stores its exit status, standard output and standard error.
run() {
    status=0
    "$wine" "$program" inventory "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
}
exits_with() { [ "$status" -eq "$1" ] || { echo "status $status: $(cat "$work/err")"; return 1; }; }
prints() { grep -qF -- "$1" "$work/out" || { cat "$work/out"; return 1; }; }
says() { grep -qF -- "$1" "$work/err" || { cat "$work/err"; return 1; }; }
is_silent() { [ ! -s "$work/$1" ]; }
json_is() { [ "$(jq -c "$1" "$work/out")" = "$2" ] || { jq -c "$1" "$work/out"; return 1; }; }
fits_80_columns() { ! awk 'length > 80' "$work/out" | grep .; }
has_no_carriage_return() { ! grep -q $'\r' "$work/out"; }

run
check "the inventory exits with 0" exits_with 0
check "the inventory lists Wine's adapter" prints "Card 1: "
check "the text names the depth" prints "1 card, asked at depth drivers"
check "the text fits 80 columns" fits_80_columns
check "the text has no carriage return" has_no_carriage_return
check "standard error is empty" is_silent err

run --json --depth system
check "JSON is the library's full form" json_is '[.schema_version, .form, .depth, (.cards | length)]' '[1,"full","system",1]'
check "depth system does not ask DXGI" json_is '[.sources[] | select(.name == "dxgi") | .state]' '["not asked"]'
check "the document follows the schema" \
    python3 "$source/tests/inventory/validate.py" "$source/inventory/schema/inventory.schema.json" "$work/out"
run --flat
check "--flat is the library's flat form" json_is '[.form, (.cards[0].instance_id | type)]' '["flat","string"]'
check "the flat form follows the schema" \
    python3 "$source/tests/inventory/validate.py" "$source/inventory/schema/inventory.schema.json" "$work/out"
run --format flat --output "$work/flat.json"
check "--output leaves standard output empty" is_silent out
check "--output writes the document" jq -e '.form == "flat"' "$work/flat.json"
run --output "$work/no/such/folder"
check "a file that cannot be written exits with 2" exits_with 2
run --depth abyss
check "a wrong depth exits with 2" exits_with 2
run --machine "$work/none.json"
check "a missing machine file exits with 2" exits_with 2

# The library is loaded at run time, so a copy of the program without the library starts.
mkdir "$work/alone"
cp "$program" "$work/alone"
program=$work/alone/orvel-graphic-cards.exe
run
check "without the DLL the status is 3" exits_with 3
check "without the DLL it is named" says "orvel-graphic-cards-inventory.dll cannot be loaded (error 126): it must be beside"
cp "$bin/old-inventory/orvel-graphic-cards-inventory.dll" "$work/alone"
run
check "an old DLL exits with 3" exits_with 3
check "an old DLL is named with its version" says \
    "orvel-graphic-cards-inventory.dll has version 0.9.0, but this program needs 1.0.0 or a later one"
cp "$bin/orvel-graphic-cards-inventory.dll" "$work/alone"
run
check "with the DLL alone beside it the command works" exits_with 0

echo "$((checks - failures)) of $checks checks of the inventory command passed"
[ $failures -eq 0 ]
