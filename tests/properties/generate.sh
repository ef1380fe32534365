#!/usr/bin/env bash
# generate.sh SOURCE: checks that the generated files match the property table and the public headers, and that errors in the
# table are reported.
set -uo pipefail
source=$1
export LC_ALL=C.UTF-8
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"

definition_is_generated() {
    "$source/cmake/make-msvc-exports.sh" "$source/include" | diff -q - "$source/src/abi/MsvcExports.def" ||
        { echo "src/abi/MsvcExports.def is not as the public headers have it: run ./dev generate"; return 1; }
}
check "the generated files match properties/properties.toml" "$source/properties/generate.py" --check
check "the MSVC names match the headers" definition_is_generated

# names_mistake MESSAGE FILE SED: after this edit of the file in a copy, the generator fails with this message.
names_mistake() {
    cp -r "$source"/{properties,include,src,tools,docs} "$work/"
    sed -i -E "$3" "$work/$2"
    cmp -s "$work/$2" "$source/$2" && { echo "the edit changes nothing"; return 1; }
    if "$work/properties/generate.py" --check 2>"$work/mistake"; then
        echo "not noticed"
        return 1
    fi
    grep -F -- "$1" "$work/mistake" || { cat "$work/mistake"; return 1; }
}
table=properties/properties.toml
notices() { check "the mistake is reported: $1" names_mistake "$@"; }
notices "docs/properties.md is not as" docs/properties.md '/^\| `BusId`/d'
notices "src/record/GraphicCardInfo.cpp is not as" src/record/GraphicCardInfo.cpp '/ReleaseText\(ChipName\)/d'
notices "has 0 of the regions" tools/FieldSources.cpp '/Made from/d'
notices "BusId: no about" $table '/^\[properties.BusId\]/,/^$/{/^about/d}'
notices "BusId: abuot is no key" $table '/^\[properties.BusId\]/,/^$/{s/^about/abuot/}'
notices "BusId: NVIDIA: a source, or \"none\", is missing" $table '/^\[properties.BusId\]/,/^$/{/^NVIDIA.source/d}'
notices "BusId: Nvidia names no vendor" $table '/^\[properties.BusId\]/,/^$/{s/^NVIDIA/Nvidia/}'
notices "BusId: NVIDIA: reader NvapiClient::GetBus is no operation" $table 's/"NvapiClient::GetBusId"/"NvapiClient::GetBus"/'
notices "reader GetAvailabilityCode is no operation" $table 's/BaseGraphicCard::(GetAvailabilityCode)/\1/'
notices "reader AvailabilityName is no operation" $table 's/BaseGraphicCard::GetAvailabilityCode/AvailabilityName/'
notices "CurrentRefreshRate: about does not say \"hertz\"" $table 's/refresh rate in hertz/refresh rate/'
notices "unit \"furlongs\" is not in [units]" $table 's/^unit = "hertz"/unit = "furlongs"/'
notices "UserConfig: type \"boolean\" is not one of" $table 's/^type = "bool"/type = "boolean"/'
notices "in_docs does not name ADL_Overdrive5_CurrentActivity_Get" $table 's/`ADL_Overdrive5_CurrentActivity_Get`, //'
notices "BusId: AMD: no source in src/vendors/amd/ sets it" src/vendors/amd/AMD.cpp 's/card\.BusId = /const int busId = /'
notices "PixelFillRate: AMD: src/vendors/amd/ sets it" src/vendors/amd/AMD.cpp 's/( *)card\.BusId = .*/&\n\1card.PixelFillRate = 1;/'

echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
