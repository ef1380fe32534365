#!/usr/bin/env bash
# Runs "orvel-graphic-cards inventory" on simulated machines, to the end of each form. machines.sh WINE BIN SOURCE
set -uo pipefail
wine=$1
bin=$2
source=$3
export LC_ALL=C.UTF-8
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"
traps=$source/tests/inventory/machines

# run MACHINE ARGS…: runs the command; its exit status, standard output and standard error.
run() {
    status=0
    "$wine" "$bin/orvel-graphic-cards.exe" inventory --machine "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
}
succeeds() { [ "$status" -eq 0 ] || { echo "status $status: $(cat "$work/err")"; return 1; }; }
# The text without line breaks and indentation.
prints() { tr -s ' \n' ' ' <"$work/out" | grep -qF -- "$1" || { cat "$work/out"; return 1; }; }
json_is() { [ "$(jq -c "$1" "$work/out")" = "$2" ] || { jq -c "$1" "$work/out"; return 1; }; }

run "$traps/24-gigabytes.json"
check "24 GiB: exit status" succeeds
check "24 GiB: the text has the memory" prints "Memory 24 GiB dedicated"
run "$traps/24-gigabytes.json" --format openmetrics
check "24 GiB: the metrics have the bytes" prints \
    'orvel_graphics_card_dedicated_memory_bytes{card="PCI\\VEN_10DE&DEV_2504&SUBSYS_397D1462&REV_A1\\4&2283F625&0&08"} 25769803776'
run "$traps/disabled.json"
check "a disabled card is listed with its problem" prints "problem 22 (DISABLED)"
run "$traps/dxgi-hangs.json" --timeout 500
check "a hanging DXGI: exit status" succeeds
check "a hanging DXGI is named" prints "DXGI did not answer in time."
run "$traps/dxgi-hangs.json" --timeout 500 --format openmetrics
check "a hanging DXGI has not answered in the metrics" prints 'orvel_graphics_inventory_source_answered{source="dxgi"} 0'
run "$traps/dxgi-hangs.json" --timeout 500 --format ndjson
check "a hanging DXGI is in each line" json_is '.failed_sources[0]' '{"name":"dxgi","code":1460,"reason":"no answer"}'
run "$traps/names.json" --format ndjson
check "names outside ASCII are JSON" jq -e '.name | length > 0' "$work/out"
run "$traps/two-equal-cards.json" --format ndjson
check "two equal cards are two lines with keys of their own" test "$(jq -r 'select(.kind == "pci").instance_id' "$work/out" | sort -u | wc -l)" -eq 2
run "$traps/no-card.json"
check "a computer without a card" prints "No graphics adapter"

# Beside the record.
run nvidia-two-cards --compare --json
check "the second NVIDIA card is not in the record" json_is \
    '[.cards[] | select(.name == "NVIDIA GeForce RTX 3060" or .name == "NVIDIA GeForce RTX 2070 SUPER") | [.name, (.records | length), .note]] | sort' \
    '[["NVIDIA GeForce RTX 2070 SUPER",1,null],["NVIDIA GeForce RTX 3060",0,"The record lists one card of NVIDIA, the first."]]'
check "WMI's memory ends at 4095 MB" json_is \
    '[.cards[].differences[] | select(.field == "AdapterRam") | .record]' '["4095 MiB"]'
run ddr5-desktop --compare
check "DDR5: exit status" succeeds
check "DDR5 ends Intel's run" prints "The record's run for Intel ended: The machine's memory has a type without a known transfer rate"
check "DDR5: the cause on this computer" prints "On this computer: the memory has SMBIOS type 34"
run ddr5-desktop --html "Z:$work/page.html"
check "DDR5: the page has both" grep -q "Intel(R) UHD Graphics 770</h2>" "$work/page.html"
check "DDR5: the page has the reason" grep -q "run for Intel ended: The machine&#39;s memory" "$work/page.html"

echo "$((checks - failures)) of $checks checks on machines passed"
[ $failures -eq 0 ]
