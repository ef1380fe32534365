#!/usr/bin/env bash
# vendor.sh SOURCE BUILD WINE: adds a vendor with WMI as its only source as docs/adding-a-vendor.md describes, then omits each edit
# of an existing file in turn.
set -uo pipefail
source "$1/tests/newcomer/newcomer.sh"
files=$source/tests/newcomer/vendor

new_copy
cp -r "$files"/{src,tests} "$copy/"
jq '.name = "Example desktop" | .wmi.classes.Win32_VideoController[0] |= (.Name = "Example Graphics 1"
    | .PNPDeviceID = "PCI\\VEN_FFFE&DEV_0001&SUBSYS_00021043&REV_01\\3&11583659&0&10")' "$source/machines/intel-laptop.json" \
    >"$copy/machines/example-desktop.json"

insert src/vendors/Vendors.h before-last '^};' '    {.Name = "Example",
     .Manufacturer = "Example",
     .PciId = "FFFE",
     .BeginsRun = "",
     .DriverDlls = {},
     .NeedsModules = true,
     .KnownMemory = Vendor::Memory::Named},'
run=src/run/GraphicCardEnumeration.cpp
insert $run after '^#include "vendors/amd/AMD.h"' '#include "vendors/example/Example.h"'
sed -i 's/{"NVIDIA", Create<Nvidia>}/&, {"Example", Create<Example>}/' "$copy/$run"
insert src/CMakeLists.txt after '^    vendors/BaseGraphicCard.cpp' '    vendors/example/Example.cpp'
insert tests/CMakeLists.txt before '^    vendors/intel/IntelTest.cpp' '    vendors/example/ExampleTest.cpp'
insert machines/README.md before '^\| `hybrid-laptop` ' '| `example-desktop` | A desktop whose vendor has no interface of its own. |'
# The vendor's column of the table: WMI's values, and "none" for every other property that not all vendors have.
table=properties/properties.toml
keep $table
python3 - "$copy/$table" <<'END'
import re, sys
cells = {"CardName": '"WMI Win32_VideoController.Name"\nExample.reader = "BaseGraphicCard::GetAdapterName"',
         "DeviceId": '"WMI Win32_VideoController.PNPDeviceID"', "SubsystemId": '"WMI Win32_VideoController.PNPDeviceID"',
         "DriverReleaseDate": '"WMI Win32_VideoController.DriverDate"\nExample.reader = "BaseGraphicCard::GetDriverReleaseDate"'}
file = open(sys.argv[1], encoding="utf-8").read()
file = file.replace('vendors = ["Intel", "NVIDIA", "AMD"]', 'vendors = ["Intel", "NVIDIA", "AMD", "Example"]')
head, *entries = re.split(r"(?m)^(?=\[properties\.)", file)
for i, entry in enumerate(entries):
    name = re.match(r"\[properties\.(\w+)", entry)[1]
    if name == "Manufacturer":
        entries[i] = entry.rstrip() + '\nExample.always = "Example"\n\n'
    elif "\nevery." not in entry:
        entries[i] = entry.rstrip() + f"\nExample.source = {cells.get(name, chr(34) + 'none' + chr(34))}\n\n"
open(sys.argv[1], "w", encoding="utf-8").write((head + "".join(entries)).rstrip() + "\n")
END

check "./dev generate" "$copy/dev" generate
tests=(enumeration faults nvidia amd other-client)
targets=("${tests[@]/#/orvel-}")
check "the copy builds" build_targets program orvel-test-runner stand-in-nvml "${targets[@]/%/-tests}"
check "./dev accept" "$copy/dev" accept
leaves_others() { diff -r -x example-desktop.json "$source/machines/expected" "$copy/machines/expected"; }
check "the results of other vendors' machines do not change" leaves_others
check "the tests of the property table pass" bash "$copy/tests/properties/generate.sh" "$copy"
for test in "${tests[@]}"; do check "the tests $test pass" run_tests "$test"; done
check "the command-line tool's tests pass" bash "$copy/tests/tools/command-line-tool.sh" "$wine" "$copy/build/bin" "$copy"
check "the documents' tests pass" bash "$copy/tests/docs/docs.sh" "$copy" "$copy/build" "$wine"

program() { (cd "$copy/build/bin" && "$wine" orvel-graphic-cards.exe --machine example-desktop "$@" --json </dev/null 2>/dev/null); }
explains() { program --explain | jq -e '.cards[0][] | select(.field == "DeviceId") | .source | startswith("WMI ")'; }
check "--explain names the vendor's source" explains
is_sound() { program --doctor | jq -e '[.vendors[] | select(.name == "Example") | .status] == ["ok"]'; }
check "--doctor finds the vendor's card" is_sound

does_not_build() { build_targets "$@" 2>&1; }
check_table() { "$copy/properties/generate.py" --check; }
check_docs() { bash "$copy/tests/docs/docs.sh" "$copy" "$copy/build" "$wine"; }
check "an omitted description of the vendor is detected" says_so src/vendors/Vendors.h does_not_build orvel-graphic-cards-enumeration
check "an omitted factory is detected" says_so $run does_not_build orvel-graphic-cards-enumeration
check "an omitted column of the table is detected" says_so $table check_table
check "an omitted row for the machine is detected" says_so machines/README.md check_docs
finish
