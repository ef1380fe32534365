#!/usr/bin/env bash
# property.sh SOURCE BUILD WINE: adds a property as docs/adding-a-property.md describes, then omits each of the edits in turn.
set -uo pipefail
source "$1/tests/newcomer/newcomer.sh"

new_copy
append properties/properties.toml '
[properties.VideoProcessor]
type = "const char*"
group = "Identity"
label = "Video processor"
about = '"'"'Name of the processor of the video controller in WMI; only Intel reports it, "" otherwise.'"'"'
Intel.source = "WMI Win32_VideoController.VideoProcessor"
"NVIDIA, AMD".source = "none"'
insert src/vendors/intel/Intel.cpp after '^    card.AdapterStatus = ' '    ReadText(client, L"VideoProcessor", card.VideoProcessor);'
insert tests/record/GraphicCardInfoTest.cpp after '^    "const char\* AdapterStatus",' '    "const char* VideoProcessor",'
insert tests/vendors/intel/IntelTest.cpp after '^        "wmi get Status",' '        "wmi get VideoProcessor",'
insert machines/workstation.json before '"AdapterDACType": "Internal",' '          "VideoProcessor": "Intel(R) UHD Graphics Family",'
insert tests/faults/WmiFaults.cpp before '^    if \(property == "AdapterDACType"\)' \
    '    if (property == "VideoProcessor") {
        return vendor == intel ? Other(intel, {"VideoProcessor"}) : Nothing();
    }'

check "./dev generate" "$copy/dev" generate
tests=(orvel-enumeration-tests orvel-faults-tests)
check "the copy builds" build_targets "${tests[@]}" orvel-test-runner program
check "./dev accept" "$copy/dev" accept
has_value() { jq -e '.cards[] | select(.Manufacturer == "Intel") | .VideoProcessor == "Intel(R) UHD Graphics Family"' "$1"; }
check "the record has the property's value" has_value "$copy/machines/expected/workstation.json"
check "the tests of the property table pass" bash "$copy/tests/properties/generate.sh" "$copy"
check "the enumeration's tests pass" run_tests enumeration
check "the fault tests pass" run_tests faults --test-suite-exclude=soak

build_and_run() { build_targets "orvel-$1-tests" && run_tests "$@"; }
check_table() { "$copy/properties/generate.py" --check; }
check "an omitted table entry is detected" says_so properties/properties.toml check_table
check "an omitted change of the enumerator is detected" says_so src/vendors/intel/Intel.cpp check_table
check "an omitted entry in the record's test is detected" says_so tests/record/GraphicCardInfoTest.cpp build_and_run enumeration \
    "--test-case=*order and types*"
check "an omitted change of the order of calls is detected" says_so tests/vendors/intel/IntelTest.cpp build_and_run enumeration
check "an omitted value of the machine is detected" says_so machines/workstation.json run_tests faults "--test-case=The sweeps cover*"
check "an omitted effect of the fault is detected" says_so tests/faults/WmiFaults.cpp build_and_run faults "--test-case=WMI without*"
finish
