#!/usr/bin/env bash
# --record: the file and its failures, and the platform as it is, which has to be the same when it is replayed without it.
# recording.sh SOURCE BUILD WINE
set -uo pipefail
source=$1
build=$2
wine=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"

# run ARGS…: the program's exit status, standard output and standard error.
run() {
    status=0
    "$wine" "$build/bin/orvel-graphic-cards.exe" "$@" >"$work/out" 2>"$work/errors" </dev/null || status=$?
}
exits_with() { [ "$status" -eq "$1" ] || { echo "exit status $status, not $1"; return 1; }; }
says() { grep -qF -- "$1" "$work/errors" || { cat "$work/errors"; return 1; }; }
prints() { grep -qF -- "$1" "$work/out" || { cat "$work/out"; return 1; }; }
json_is() { [ "$(jq -c "$2" "$1")" = "$3" ] || { echo "$2 is $(jq -c "$2" "$1"), not $3"; return 1; }; }
has_nothing_but() { [ "$(ls "$1")" = "$2" ] || { ls "$1"; return 1; }; }
# What an enumeration makes of a computer.
result() { jq -S '{cards, log, thrown}' "$1"; }
is_same() { diff <(result "$1") <(result "$2"); }
is_same_inventory() { diff <(jq -S . "$1") <(jq -S . "$2"); }

# --- the file -----------------------------------------------------------------------------------------------------------------

mkdir "$work/folder"
file=$work/folder/computer.json
run --machine workstation --record "$file"
check "--record exits with 0" exits_with 0
check "--record says where the recording is" prints computer.json
check "--record says how much it has replaced" prints "Replaced identifiers: "
check "a serial number is replaced" json_is "$file" '.wmi.classes.Win32_Bios[0].SerialNumber == "WS-2022-0042"' false
check "the file lists the serial number as replaced" json_is "$file" \
    '.recorded.replaced | index("/wmi/classes/Win32_Bios/0/SerialNumber") != null' true
check "the file has the Windows version" json_is "$file" '.recorded.windows | test("^[0-9.]+$")' true
check "the file has the path of a driver" json_is "$file" '[.recorded.dlls[] | select(.dll == "nvapi64.dll")] | length' 1
check "nothing is left behind" has_nothing_but "$work/folder" computer.json

cp "$file" "$work/former.json"
run --machine intel-laptop --record "$file"
check "an existing file is not replaced: exit status" exits_with 2
check "an existing file is not replaced: message" says "exists already"
check "an existing file is not replaced: content" cmp -s "$file" "$work/former.json"
run --machine workstation --record "$file" --force --record-identifiers
check "--force replaces an existing file" exits_with 0
check "--record-identifiers keeps a serial number" json_is "$file" '.wmi.classes.Win32_Bios[0].SerialNumber' '"WS-2022-0042"'
check "--record-identifiers lists nothing as replaced" json_is "$file" '.recorded.replaced' null
run --machine workstation --json && cp "$work/out" "$work/original.json"
run --machine "$file" --json
check "the recording gives what the machine gives" is_same "$work/original.json" "$work/out"

run --machine workstation --record "$work/no/such/folder/computer.json"
check "a missing folder: exit status" exits_with 2
check "a missing folder: message" says "cannot be written"
run --machine workstation --record "$work/folder" --force
check "a folder in place of the file: exit status" exits_with 2
check "a folder in place of the file: nothing is left behind" [ ! -e "$work/folder.part" ]

mkdir "$work/full"
if mount -t tmpfs -o size=8k tmpfs "$work/full" 2>/dev/null; then
    run --machine workstation --record "$work/full/computer.json"
    check "a full disk: nothing is left behind" has_nothing_but "$work/full" ""
    umount "$work/full"
else # without the right to mount: the file that the program writes first leads to a device that is always full
    ln -s /dev/full "$work/full/computer.json.part"
    run --machine workstation --record "$work/full/computer.json"
fi
check "a full disk: exit status" exits_with 2
check "a full disk: message" says "cannot be written"

run --force
check "--force needs --record" exits_with 2
run --record "$work/x.json" --doctor
check "--record goes without --doctor" exits_with 2

mkdir "$work/alone"
cp "$build/bin/orvel-graphic-cards.exe" "$work/alone"
status=0
(cd "$work/alone" && "$wine" orvel-graphic-cards.exe --record computer.json >"$work/out" 2>"$work/errors" </dev/null) || status=$?
check "without the library's DLLs it still records" exits_with 0
check "a DLL that is not there has no section" json_is "$work/alone/computer.json" 'has("nvml") or has("nvapi")' false

# --- the platform as it is ----------------------------------------------------------------------------------------------------

for adapter in 8086:1912 10de:1b80 1002:73bf; do
    recording=$work/platform-${adapter%:*}.json
    export ORVEL_DISPLAY=1 ORVEL_WINE_ADAPTER=$adapter
    "$source/dev" host --record "Z:$recording" >"$work/out" 2>"$work/errors"
    "$source/dev" host --json >"$work/platform.json" 2>>"$work/errors"
    "$source/dev" host --record "Z:$work/identified.json" --force --record-identifiers >"$work/out" 2>>"$work/errors"
    "$source/dev" host inventory --json >"$work/inventory.json" 2>>"$work/errors"
    unset ORVEL_DISPLAY ORVEL_WINE_ADAPTER
    "$source/dev" host --machine "Z:$recording" --json >"$work/replayed.json" 2>>"$work/errors"
    "$source/dev" host inventory --machine "Z:$work/identified.json" --json >"$work/replayed-inventory.json" 2>>"$work/errors"
    check "$adapter: the adapter is recorded" json_is "$recording" '.dxgi.adapters[0].VendorId' "$((0x${adapter%:*}))"
    check "$adapter: replayed, it gives what the platform gives" is_same "$work/platform.json" "$work/replayed.json"
    check "$adapter: the inventory lists its device" json_is "$work/inventory.json" '.cards[0].instance_id.status' '"known"'
    check "$adapter: replayed, it has the platform's inventory" \
        is_same_inventory "$work/inventory.json" "$work/replayed-inventory.json"
done

[ $failures -eq 0 ] || cat "$work/errors"
echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
