#!/usr/bin/env bash
# The comparison with a real NVML, run with a fake one: nvml.sh SOURCE
set -uo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"
program=$work/orvel-nvml
"$source/tools/nvml/build.sh" "$source" "$program" || exit 1
gcc -shared -fPIC -Wall -Werror -o "$work/fake.so" "$source/tests/nvml/FakeNvml.c" || exit 1

# ends STATUS TEXT COMMAND…: the command ends with this status, and its standard error has this text.
ends() {
    local expected=$1 text=$2 status=0
    shift 2
    "$@" >"$work/out" 2>"$work/err" || status=$?
    [ "$status" -eq "$expected" ] && grep -qF -- "$text" "$work/err" || { cat "$work/err"; echo "status $status"; return 1; }
}

check "without a library, the status is 3" ends 3 "No NVIDIA driver on this computer" "$program" "$work/none.so"
check "a driver that does not start counts as no driver" ends 3 "nvmlInit_v2 returns 9" env FAKE_NVML_INIT=9 "$program" "$work/fake.so"
check "values that change between the two readings differ" \
    ends 1 "core_count of bus 1 differs" env FAKE_NVML_UNSTEADY=1 "$program" "$work/fake.so"
check "the reader agrees with the driver" ends 0 "28 of 28 values agree" "$program" "$work/fake.so"
value() { [ "$(jq -c "$1" "$work/out")" = "$2" ] || { jq -c "$1" "$work/out"; return 1; }; }
check "the section lists the missing functions" value '.nvml.missing | contains(["nvmlDeviceGetSerial", "nvmlDeviceGetEccMode"])' true
check "the section has the driver's version" value .nvml.nvmlSystemGetDriverVersion '"596.72"'
check "the section has the values" value '.nvml.devices[0].nvmlDeviceGetMemoryInfo.total' 25757220864
check "the section has the values of an argument" value '.nvml.devices[0].nvmlDeviceGetTemperatureThreshold' '{"0":98,"1":95,"3":89}'
check "the section has the refusals" value '.nvml.devices[1].nvmlDeviceGetMemoryInfo' '{"status":15}'

echo "$((checks - failures)) of $checks checks of the comparison passed"
[ $failures -eq 0 ]
