#!/usr/bin/env bash
# The host program as a person meets it: options, wrong input, missing DLLs. host-program.sh WINE BIN SOURCE
set -uo pipefail
wine=$1
bin=$2
source=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
checks=0

# run ARGS…: the program's exit status, standard output and standard error.
run() {
    status=0
    "$wine" "$bin/orvel-graphic-cards.exe" "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
    out=$(cat "$work/out")
    err=$(cat "$work/err")
}

check() {
    checks=$((checks + 1))
    if ! "${@:2}"; then
        failures=$((failures + 1))
        printf 'FAILED: %s\n  status %s\n  out: %.400s\n  err: %.400s\n' "$1" "$status" "$out" "$err"
    fi
}
exits_with() { [ "$status" -eq "$1" ]; }
says() { [[ $err == *"$1"* ]]; }
prints() { [[ $out == *"$1"* ]]; }
is_silent() { [ -z "$out" ]; }
is_one_line() { [ "$(wc -l <"$work/err")" -eq 1 ]; }
is_quiet() { [ -z "$err" ]; }
has_no_carriage_return() { ! grep -q $'\r' "$work/out"; }
json_is() { [ "$(jq -c "$1" "$work/out")" = "$2" ]; }

# refused NAME TEXT PART…: a machine file of this text is refused in one line that holds every part.
refused() {
    local name=$1
    printf '%s' "$2" >"$work/machine.json"
    run --machine "$work/machine.json"
    check "$name: exit status" exits_with 2
    check "$name: nothing on standard output" is_silent
    check "$name: one line" is_one_line
    check "$name: names the file" says machine.json
    local part
    for part in "${@:3}"; do check "$name: says $part" says "$part"; done
}

run --help
check "--help exits with 0" exits_with 0
check "--help tells the options" prints "--machine"
run --version
check "--version exits with 0" exits_with 0
check "--version tells the version" prints "orvel-graphic-cards $(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")"

run --nonsense
check "an unknown option exits with 2" exits_with 2
check "an unknown option is named" says --nonsense
check "an unknown option is told in one line" is_one_line
check "an unknown option prints nothing" is_silent
run stray
check "a stray argument exits with 2" exits_with 2
run --machine
check "--machine without a file exits with 2" exits_with 2

run --machine "$work/none.json"
check "a missing machine file exits with 2" exits_with 2
check "a missing machine file is named" says none.json
check "a missing machine file is told in one line" is_one_line

refused "broken JSON" '{"name": "x",' line
refused "unknown key" '{"wmi": {"classes": {}, "klasses": {}}}' /wmi klasses
refused "wrong type" '{"dxgi": {"adapters": {"VendorId": 1}}}' /dxgi/adapters array
refused "unknown interface" '{"vulkan": {}}' vulkan
refused "number as a word" '{"wmi": {"connect": "often"}}' /wmi/connect often
refused "no object" '[1]' object

machine=$source/machines/intel-laptop.json
run --machine "$machine"
check "a laptop is shown with status 0" exits_with 0
check "the card's section is headed by its name" prints "Card 1: Intel(R) UHD Graphics 620"
check "properties stand in groups" prints "Clocks and rates"
check "values have units" prints "1150 MHz"
check "lines end as on every system" has_no_carriage_return
check "without --log standard error is empty" is_quiet

run --machine "$machine" --json
check "JSON exits with 0" exits_with 0
check "JSON names schema and machine" json_is '[.schema, .machine]' '[1,"Laptop with Intel UHD Graphics 620"]'
check "JSON has 49 fields a card" json_is '[.cards[] | length]' '[49]'
check "JSON keeps the record's order" json_is '.cards[0] | keys_unsorted | [.[0], .[13], .[48]]' \
    '["AvailabilityCode","CardName","AdapterStatus"]'
check "JSON tells the trace and what is alive" json_is '[(.trace | length > 10), .live.wmi, .live.dxgi]' '[true,0,0]'
check "JSON tells that nothing was thrown" json_is .thrown null

run --machine "$machine" --json --log
check "--log writes lines to standard error" says "error orvel::shared::enumeration::"
check "--log leaves standard output alone" json_is .schema 1

jq '.wmi.failures = [{"contains": "SELECT Speed", "status": "0x80041001"}]' "$machine" >"$work/throws.json"
run --machine "$work/throws.json" --json
check "a thrown status exits with 4" exits_with 4
check "a thrown status is told" says "0x80041001"
check "a thrown status is in the JSON" json_is .thrown '{"type":"long","value":-2147217407}'

jq '.wmi.classes.Win32_PhysicalMemory[].SMBIOSMemoryType = 34' "$source/machines/amd-desktop.json" >"$work/ddr5.json"
run --machine "$work/ddr5.json" --json
check "an infinite number is a text" json_is '.cards[0].MemoryBandwidth' '"Infinity"'

mkdir "$work/bin"
cp "$bin"/*.exe "$bin"/orvel-*.dll "$work/bin/"
bin_folder=$bin
bin=$work/bin
run --json
check "without any nvml.dll the exit status is 3" exits_with 3
check "the missing nvml.dll is named, and what brings it" says "nvml.dll"
check "the missing nvml.dll is told in one line" is_one_line
check "a program without its library prints nothing" is_silent
cp "$bin_folder/fallback/nvml.dll" "$work/bin/"
run --json
check "with the substitute nvml.dll beside it the program runs on this computer" exits_with 0
check "on this computer no machine is named, and nothing is traced" json_is '[.machine, has("trace")]' '[null,false]'
check "the log says that there is no NVIDIA driver" json_is \
    '[.log[] | select(.message == "Unexpected error occurred: Failed to initialize NVAPI. Status code: -2")] | length' 1
rm "$work/bin/orvel-shared-wmi-client.dll"
run
check "a missing sibling library is named" says orvel-shared-wmi-client.dll
rm "$work/bin/orvel-graphic-cards-enumeration.dll"
run
check "a missing library exits with 3" exits_with 3
check "a missing library is named" says orvel-graphic-cards-enumeration.dll
run --machine "$machine"
check "a missing simulation exits with 3" exits_with 3
check "a missing simulation is named" says orvel-simulation.dll

echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
