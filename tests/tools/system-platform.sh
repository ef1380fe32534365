#!/usr/bin/env bash
# system-platform.sh SOURCE: tests the product with Wine's own WMI, DXGI and registry, which describe an Intel adapter on a virtual
# display. Only OpenCL, for which Wine has no driver, is simulated.
set -euo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cat >"$work/machine.json" <<'END'
{
  "name": "Wine's own platform",
  "wmi": {"rows": "system"},
  "dxgi": "system",
  "registry": "system",
  "opencl": {
    "platforms": [
      {
        "devices": [
          {
            "type": "gpu",
            "CL_DEVICE_NAME": "Intel(R) HD Graphics 530",
            "CL_DEVICE_VENDOR_ID": "0x8086",
            "CL_DEVICE_MAX_COMPUTE_UNITS": 24,
            "CL_DEVICE_MAX_CLOCK_FREQUENCY": 1150,
            "CL_DEVICE_MAX_CONSTANT_ARGS": 8
          }
        ]
      }
    ]
  }
}
END
ORVEL_DISPLAY=1 ORVEL_WINE_ADAPTER=8086:1912 "$source/dev" host --machine "$work/machine.json" --json >"$work/out" 2>"$work/err" ||
    { cat "$work/err" "$work/out"; exit 1; }

failures=0
checks=0
is() {
    checks=$((checks + 1))
    local value
    value=$(jq -c "$1" "$work/out")
    if [ "$value" != "$2" ]; then
        failures=$((failures + 1))
        echo "FAILED: $1 is $value, not $2"
    fi
}
is '.cards | length' 1
is '.thrown' null
is '.cards[0].CardName' '"Intel(R) HD Graphics 530"'
is '.cards[0].DeviceId' '"1912"'
is '.cards[0].AdapterRam' 4095
is '.cards[0].MemorySize' 4095
is '.cards[0].MemoryType' '"UNKNOWN"'
is '.cards[0].MemoryClockMax == 0' true
is '.cards[0].MemoryBandwidth == 0' true
is '.cards[0].Cores' 24
is '.cards[0].AvailabilityStatus' '"RunningFullPower"'
is '.cards[0].UserConfig' false
warnings='["Failed to get ConfigManagerUserConfig from WMI"]' # Wine's WMI has this property since version 10
[ "$(/usr/lib/wine/wine64 --version | sed 's/^wine-\([0-9]*\).*/\1/')" -lt 10 ] || warnings='[]'
is '[.log[] | select(.severity == "warning") | .message]' "$warnings"
is '.live.wmi' 0
echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
