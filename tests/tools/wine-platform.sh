#!/usr/bin/env bash
# wine-platform.sh SOURCE BUILD WINE: tests the product without simulation. Wine's own WMI, DXGI and registry describe an Intel
# adapter on a virtual display, and Mesa's OpenCL reports the processor as a GPU.
set -uo pipefail
source=$1
build=$2
wine=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"
json_is() { [ "$(jq -c "$2" "$work/$1")" = "$3" ] || { echo "$2 is $(jq -c "$2" "$work/$1"), not $3"; return 1; }; }

# --- WMI ----------------------------------------------------------------------------------------------------------------------

# Wine's LIKE supports a % inside a pattern since version 10. In earlier versions, Intel's query finds no row.
version=$("$wine" --version | sed 's/^wine-\([0-9]*\).*/\1/')
ORVEL_DISPLAY=1 ORVEL_WINE_ADAPTER=8086:1912 "$source/dev" host --json >"$work/display.json" 2>"$work/errors"
ORVEL_DISPLAY=1 ORVEL_WINE_ADAPTER=8086:1912 "$source/dev" host --doctor --json >"$work/doctor.json" 2>>"$work/errors"
intel_end='[.log[] | select(.message == "Unexpected error occurred: invalid stod argument")] | length'
if [ "$version" -ge 10 ]; then
    check "Intel's run finds the adapter, and ends because no OpenCL device has its name" json_is display.json "$intel_end" 1
    check "--doctor reports that no OpenCL device has the adapter's name" json_is doctor.json \
        '.checks[] | select(.name == "opencl-intel") | .status' '"limits"'
else
    check "Intel's run finds no adapter, and does not query OpenCL" json_is display.json "$intel_end" 0
fi
check "there is no card without an OpenCL device of its name" json_is display.json '.cards' '[]'

# --- OpenCL -------------------------------------------------------------------------------------------------------------------

export RUSTICL_ENABLE=llvmpipe RUSTICL_DEVICE_TYPE=gpu
clinfo --raw >"$work/clinfo" 2>>"$work/errors"
"$wine" "$build/bin/orvel-print-opencl-devices.exe" 2>>"$work/errors" | tr -d '\r' >"$work/opencl.json"

# expected PROPERTY: the values that clinfo prints, one line per device.
expected() { sed -n "s/^\[.*\] *$1  *//p" "$work/clinfo" | sed 's/ *$//'; }
# has_same PROPERTY: OpenCLWrapper reads the same value from each device as clinfo. A vendor id of 0 is the same text in any base.
has_same() { diff <(expected "$1") <(jq -r ".devices[].$1" "$work/opencl.json"); }
check "the platform has a GPU" json_is opencl.json '.devices | length' 1
for property in CL_DEVICE_NAME CL_DEVICE_VENDOR_ID CL_DEVICE_MAX_CLOCK_FREQUENCY CL_DEVICE_MAX_COMPUTE_UNITS CL_DEVICE_MAX_CONSTANT_ARGS; do
    check "OpenCLWrapper and clinfo read the same $property" has_same $property
done
platforms=$(sed -n 's/^#PLATFORMS *//p' "$work/clinfo")
empty=$(grep -c '^\[.*\]  *#DEVICES  *0$' "$work/clinfo")
check "OpenCLWrapper finds the platforms that clinfo finds" json_is opencl.json .platforms "$platforms"
check "a platform without a device is logged once" json_is opencl.json \
    '[.log[] | select(. == "Failed to get Open CL devices")] | length' "$empty"
check "nothing else is logged" json_is opencl.json '[.log[] | select(. != "Failed to get Open CL devices")]' '[]'

[ $failures -eq 0 ] || cat "$work/errors"
echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
