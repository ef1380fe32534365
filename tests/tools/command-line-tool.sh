#!/usr/bin/env bash
# command-line-tool.sh WINE BIN SOURCE: tests the command-line tool as users run it: options, wrong input, missing DLLs.
set -uo pipefail
wine=$1
bin=$2
source=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
checks=0

# run ARGS…: runs the program, and stores its exit status, standard output and standard error.
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
fits_80_columns() { ! awk 'length > 80' "$work/out" | grep .; }
has_no_carriage_return() { ! grep -q $'\r' "$work/out"; }
json_is() { [ "$(jq -c "$1" "$work/out")" = "$2" ]; }

# refused NAME TEXT PART…: a machine file with this text is refused in one line that contains every part.
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
check "--help lists the options" prints "--machine"
check "--help fits 80 columns" fits_80_columns
run --version
check "--version exits with 0" exits_with 0
check "--version prints the version" prints "orvel-graphic-cards $(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")"

run --nonsense
check "an unknown option exits with 2" exits_with 2
check "an unknown option is named" says --nonsense
check "an unknown option is reported in one line" is_one_line
check "an unknown option prints nothing" is_silent
run stray
check "a stray argument exits with 2" exits_with 2
run --machine
check "--machine without a file exits with 2" exits_with 2

run --machine "$work/none.json"
check "a missing machine file exits with 2" exits_with 2
check "a missing machine file is named" says none.json
check "a missing machine file is reported in one line" is_one_line
check "the error for a missing machine file names --list-machines" says --list-machines

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
check "properties are grouped" prints "Clocks and rates"
check "values have units" prints "1150 MHz"
check "lines end without a carriage return" has_no_carriage_return
check "without --log standard error is empty" is_quiet

run --machine "$machine" --json
check "JSON exits with 0" exits_with 0
check "JSON names schema and machine" json_is '[.schema, .machine]' '[1,"Laptop with Intel UHD Graphics 620"]'
properties=$(python3 "$source/properties/generate.py" --count)
check "JSON has every property of a card" json_is '[.cards[] | length]' "[$properties]"
check "JSON keeps the record's order" json_is '.cards[0] | keys_unsorted | [.[0], .[13], .[48]]' \
    '["AvailabilityCode","CardName","AdapterStatus"]'
check "JSON has the trace and the open resources" json_is '[(.trace | length > 10), .live.wmi, .live.dxgi]' '[true,0,0]'
check "JSON lists the violations of a driver's rules" json_is .violations '{"count":0,"texts":[]}'
check "JSON has null if nothing was thrown" json_is .thrown null

run --machine "$machine" --json --log
check "--log writes lines to standard error" says "error orvel::shared::enumeration::"
check "--log does not change standard output" json_is .schema 1

jq '.wmi.failures = [{"contains": "SELECT Speed", "status": "0x80041001"}]' "$machine" >"$work/throws.json"
run --machine "$work/throws.json" --json
check "a thrown status exits with 4" exits_with 4
check "a thrown status is reported" says "0x80041001"
check "a thrown status is in the JSON" json_is .thrown '{"type":"long","value":-2147217407}'

jq '.wmi.classes.Win32_PhysicalMemory[].SMBIOSMemoryType = 34' "$source/machines/amd-desktop.json" >"$work/ddr5.json"
run --machine "$work/ddr5.json" --json
check "an infinite number is a text" json_is '.cards[0].MemoryBandwidth' '"Infinity"'

# Windows before Vista has no desktop composition, so it is not queried.
old_windows='HKCU\Software\Wine\AppDefaults\orvel-old-windows.exe'
cp "$bin/orvel-graphic-cards.exe" "$bin/orvel-old-windows.exe"
"$wine" reg add "$old_windows" /v Version /d winxp64 /f >/dev/null 2>&1 </dev/null
"$wine" "$bin/orvel-old-windows.exe" --machine intel-laptop --json >"$work/out" 2>/dev/null </dev/null
"$wine" reg delete "$old_windows" /f >/dev/null 2>&1 </dev/null
rm "$bin/orvel-old-windows.exe"
check "before Windows Vista composition is off and not queried" json_is \
    '[.cards[0].IsAeroEnabled, ([.trace[] | select(startswith("dwm"))] | length)]' '[false,0]'

# --- the other views ----------------------------------------------------------------------------------------------------------

is_the_same_as() { diff "$work/out" "$1"; }
has_no_colours() { ! grep -q $'\x1b' "$work/out"; }
lacks() { [[ $out != *"$1"* ]]; }
names_every_machine() {
    diff <(grep '^[a-z]' "$work/out" | sort) <(cd "$source/machines" && printf '%s\n' *.json | sed 's/\.json$//' | sort)
}

run --machine workstation
check "a shipped machine has a short name" prints "Card 3: AMD Radeon RX 6800 XT"
check "the text fits 80 columns" fits_80_columns
check "text that is not written to a terminal has no colours" has_no_colours
check "the text ends with a summary" prints "3 cards, 0 warnings, 6 errors"
check "with cards, runs that ended are not explained" lacks --doctor
run --machine ddr5-desktop
check "a run without cards exits with 0" exits_with 0
cp "$work/out" "$work/no-cards"
cat >"$work/out" <<'END'
No graphics card was enumerated.
    Intel                 The machine's memory has a type without a known
                          transfer rate, usually DDR5 or LPDDR5.
    NVIDIA                Windows or the driver reported an unknown code: an
                          adapter without availability in WMI (a disabled or
                          incompletely installed device, or an NVIDIA card that
                          WMI does not list), or a memory type newer than the
                          table, such as DDR5.
    AMD                   AMD's driver interfaces (ADL, ADLX) are missing or do
                          not start; this is normal without an AMD card.
Run with --doctor to see what is missing on this computer.

0 cards, 0 warnings, 7 errors
END
check "without cards, each run that ended is explained" is_the_same_as "$work/no-cards"
run --machine "$work/throws.json"
check "without cards, a thrown status is explained" prints "The WMI query for the memory modules"
run --machine workstation
check "a missing value is \"not available\"" prints "not available"
run --machine workstation --brief
check "--brief omits values that are not available" lacks "not available"
check "--brief keeps available values" prints "NVIDIA GeForce RTX 3060"
run --list-machines
check "--list-machines exits with 0" exits_with 0
check "--list-machines names every shipped machine" names_every_machine

run --machine workstation
cp "$work/out" "$work/expected"
run --machine workstation --output "$work/report.txt"
check "--output leaves standard output empty" is_silent
cp "$work/report.txt" "$work/out"
check "--output writes what would have been printed" is_the_same_as "$work/expected"
check "--output leaves no temporary file" [ ! -e "$work/report.txt.part" ]
run --machine workstation --output "$work/no/such/folder/report.txt"
check "a file that cannot be written exits with 2" exits_with 2
check "a file that cannot be written is named" says report.txt
mkdir "$work/folder"
run --machine workstation --output "$work/folder"
check "--output does not replace a folder" exits_with 2
check "a failed output leaves no temporary file" [ ! -e "$work/folder.part" ]

run --machine workstation --explain
check "--explain exits with 0" exits_with 0
check "--explain shows the source of a value" prints "source: NVAPI NvAPI_GPU_GetFullName"
check "--explain shows the log line of a missing value" prints "reason: log: Failed to get graphics card serial number"
check "--explain fits 80 columns" fits_80_columns
run --machine workstation --explain --json
check "--explain --json has every property of every card" json_is '[.cards[] | length] | unique' "[$properties]"
check "--explain --json names a source for each" json_is '[.cards[][] | select(.source == "")] | length' 0
check "--explain --json has a reason if and only if a value is not available" json_is \
    '[.cards[][] | select((.reason == null) != .available)] | length' 0
for file in "$source"/machines/*.json; do
    run --machine "$file" --explain --json
    check "what ends a run on $(basename "$file") is explained" json_is '[.ended[] | select(.meaning == "")] | length' 0
done
cause_is() { # MACHINE MESSAGE CAUSE
    run --machine "$1" --explain --json
    json_is "[.ended[] | select(.message | startswith(\"$2\")) | .cause] | unique" "[\"$3\"]"
}
check "unsupported memory is reported as the cause" cause_is ddr5-desktop "Argument out of range" \
    "the memory has SMBIOS type 34, for which the library has no transfer factor"
check "unsupported memory also ends NVIDIA's run" cause_is ddr5-desktop "invalid unordered_map" \
    "the memory has SMBIOS type 34, for which the library has no name"
jq '.wmi.classes.Win32_PhysicalMemory[].SMBIOSMemoryType = 16' "$source/machines/workstation.json" >"$work/sgram.json"
check "memory with a name but no transfer factor ends Intel's run" cause_is "$work/sgram.json" "Argument out of range" \
    "the memory has SMBIOS type 16, for which the library has no transfer factor"
run --machine "$work/sgram.json" --doctor --json
check "the impact of such memory is on Intel's cards, not NVIDIA's" json_is \
    '[.status, (.checks[] | select(.name == "memory-type") | .status, .impact)]' \
    '[1,"limits","Intel'"'"'s cards are not enumerated, and MemoryBandwidth of AMD'"'"'s cards is infinite"]'

jq '.wmi.classes.Win32_VideoController[] |= if .PNPDeviceID | contains("1002") then .DriverVersion = null
    elif .PNPDeviceID | contains("10DE") then .DriverVersion = "" else . end' \
    "$source/machines/workstation.json" >"$work/reasons.json"
run --machine "$work/reasons.json" --explain --json
check "a reason is taken from the card's own lines" json_is \
    '[.cards[] | .[] | select(.field == "DriverVersion") | .reason]' \
    '[null,"the source returned no value, or exactly this one","log: Failed to get driver version from WMI"]'
jq '.wmi.classes.Win32_VideoController[] |= if .Name | contains("Arc") then .DriverVersion = null else .DriverVersion = "" end' \
    "$source/machines/intel-desktop.json" >"$work/reasons.json"
run --machine "$work/reasons.json" --explain --json
check "a reason is not taken from another card of the vendor" json_is \
    '[.cards[] | .[] | select(.field == "DriverVersion") | .reason] | unique | length' 2
check "an adapter that OpenCL does not list is reported as the cause" cause_is intel-laptop-no-opencl-driver "invalid stod" \
    "OpenCL lists no Intel device with WMI's name: \\\"Intel(R) UHD Graphics 620\\\""
check "an OpenCL loader that cannot be loaded is reported as the cause" cause_is server "Failed to load opencl.dll" \
    "opencl.dll cannot be loaded, error 1114"
check "a missing NVIDIA card is reported as the cause" cause_is intel-laptop "Failed to initialize NVAPI" \
    "WMI lists no NVIDIA card"
check "a missing NVIDIA driver is reported as the cause" cause_is nvidia-missing-driver \
    "Failed to initialize NVAPI" "WMI lists an NVIDIA card, but nvapi64.dll cannot be loaded, error 1114"
jq '.wmi.classes.Win32_VideoController[0].Availability = null' "$source/machines/intel-laptop.json" >"$work/disabled.json"
check "the last warning before the end is reported as the cause" cause_is "$work/disabled.json" "invalid unordered_map" \
    "the last warning before it: \\\"Failed to get Availability from WMI\\\""
jq '.wmi.classes.Win32_VideoController[] |= (select(.PNPDeviceID | contains("8086")).DriverVersion = null) | .nvml = {"nvmlInit_v2": 9}' \
    "$source/machines/workstation.json" >"$work/two.json"
run --machine "$work/two.json" --explain --json
check "a warning of another vendor's run is not the cause" json_is \
    '[.ended[] | select(.message | startswith("Failed to initialize NVML")) | .cause | startswith("nvml.dll is ")]' '[true]'

run --explain --doctor
check "two views at once are refused" exits_with 2

run --machine workstation --doctor --json
check "--doctor exits with 0 if nothing is missing" exits_with 0
check "--doctor's checks have stable names" json_is '[.checks[].name] | join(" ")' \
    '"com wmi-namespace wmi-bios wmi-video-controller wmi-physical-memory memory-type opencl.dll opencl-intel nvml.dll nvapi64.dll atiadlxx.dll amdadlx64.dll dxgi registry-pci registry-video library"'
run --machine intel-laptop --doctor --json
check "a vendor's library is not needed without its card" json_is \
    '[.status, (.checks[] | select(.status == "not-needed") | .name)]' '[0,"nvapi64.dll","atiadlxx.dll","amdadlx64.dll"]'
run --machine nvidia-missing-driver --doctor --json
check "a missing driver limits the records" json_is \
    '[.status, (.checks[] | select(.status == "limits") | .name)]' '[1,"nvapi64.dll"]'
check "--doctor exits with 1 if something limits the records" exits_with 1
run --machine ddr5-desktop --doctor --json
check "unsupported memory limits the records" json_is \
    '[.status, (.checks[] | select(.status == "limits") | .name)]' '[1,"memory-type"]'
run --machine intel-laptop-no-opencl-driver --doctor --json
check "an Intel adapter that OpenCL does not list limits the records" json_is \
    '[.status, (.checks[] | select(.status == "limits") | .name, .detail)]' \
    '[1,"opencl-intel","\"Intel(R) UHD Graphics 620\""]'
run --machine server --doctor
check "--doctor exits with 2 if the OpenCL loader is missing" exits_with 2
check "a missing OpenCL loader is reported with what provides it" prints "any vendor's display driver"
check "--doctor prints its verdict as a sentence" prints "Nothing can be enumerated."

# vendor_words MACHINE WORDS: the states of Intel, NVIDIA and AMD.
vendor_words() {
    run --machine "$1" --doctor --json
    check "--doctor's words for the vendors of $1" json_is \
        '[(.vendors[] | select(.name == ("Intel", "NVIDIA", "AMD"))).status] | join(" ")' "\"$2\""
}
vendor_words workstation "ok ok ok"
vendor_words intel-laptop "ok no-card no-card"
vendor_words nvidia-missing-driver "ok no-driver no-card"
vendor_words amd-missing-driver "no-card no-card no-driver"
vendor_words intel-laptop-no-opencl-driver "no-opencl-device no-card no-card"
vendor_words intel-missing-driver "no-opencl no-card no-card"
vendor_words ddr5-desktop "unsupported-memory-type unsupported-memory-type no-card"
vendor_words amd-desktop-ddr5 "no-card no-card ok"
vendor_words "$work/sgram.json" "unsupported-memory-type ok ok"
jq '.wmi.failures = [{"contains": "Win32_Bios", "status": "0x80041001"}]' "$source/machines/workstation.json" >"$work/no-bios.json"
vendor_words "$work/no-bios.json" "no-wmi ok no-wmi"
jq 'del(.wmi)' "$source/machines/workstation.json" >"$work/no-wmi.json"
vendor_words "$work/no-wmi.json" "no-wmi no-wmi no-wmi"
jq 'del(.dxgi)' "$source/machines/workstation.json" >"$work/no-dxgi.json"
vendor_words "$work/no-dxgi.json" "no-dxgi ok no-dxgi"
jq '.dxgi.factory = "0x80004005"' "$source/machines/workstation.json" >"$work/refused-dxgi.json"
vendor_words "$work/refused-dxgi.json" "no-dxgi ok no-dxgi"
run --machine ddr5-desktop --doctor
check "--doctor's text also contains the words" prints "unsupported-memory-type"
# A vendor is ok if and only if the machine's reviewed records contain one of its cards.
for machine_file in "$source"/machines/*.json; do
    name=$(basename "$machine_file" .json)
    run --machine "$name" --doctor --json
    check "--doctor's words agree with the records of $name" json_is \
        '[.vendors[] | select(.status == "ok") | .name | ascii_downcase] | sort' \
        "$(jq -c '[.cards[].Manufacturer | ascii_downcase] | unique' "$source/machines/expected/$name.json")"
done

mkdir "$work/bin"
cp "$bin"/*.exe "$bin"/orvel-*.dll "$work/bin/"
bin_folder=$bin
bin=$work/bin
run --json
check "without any nvml.dll the exit status is 3" exits_with 3
check "the missing nvml.dll is named" says "nvml.dll"
check "the missing nvml.dll is reported in one line" is_one_line
check "a program without its library prints nothing" is_silent
cp "$bin_folder/stand-in-driver/nvml.dll" "$work/bin/" # an old version, without nvmlDeviceGetSerial
mkdir "$work/bin/fallback"
cp "$bin_folder/fallback/nvml.dll" "$work/bin/fallback/"
run --json
check "with an old nvml.dll the program runs on the substitute" exits_with 0
run --doctor --json
check "--doctor reports that the substitute is used, and why" json_is \
    '.checks[] | select(.name == "nvml.dll") | [.status, (.path | test("fallback")), .detail]' \
    '["found",true,"the one found is older and lacks nvmlDeviceGetSerial; using the substitute"]'
rm -r "$work/bin/fallback"
cp "$bin_folder/fallback/nvml.dll" "$work/bin/"
run --json
check "with the substitute nvml.dll beside it the program runs on this computer" exits_with 0
check "on this computer JSON has no machine and no trace" json_is '[.machine, has("trace")]' '[null,false]'
check "the log reports that there is no NVIDIA driver" json_is \
    '[.log[] | select(.message == "Unexpected error occurred: Failed to initialize NVAPI. Status code: -2")] | length' 1
rm "$work/bin/orvel-shared-wmi-client.dll"
run
check "a missing sibling library is named" says orvel-shared-wmi-client.dll
run --doctor --json
check "--doctor works where the library cannot be loaded" exits_with 2
check "--doctor reports that the library cannot be loaded" json_is '.checks[] | select(.name == "library") | .status' '"stops"'
check "no vendor has records without the library" json_is '[.vendors[].status] | unique' '["no-library"]'
rm "$work/bin/orvel-graphic-cards-enumeration.dll"
run
check "a missing library exits with 3" exits_with 3
check "a missing library is named" says orvel-graphic-cards-enumeration.dll
run --machine "$machine"
check "a missing simulation exits with 3" exits_with 3
check "a missing simulation is named" says orvel-simulation.dll

echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
