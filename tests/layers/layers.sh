#!/usr/bin/env bash
# layers.sh SOURCE: checks that each folder includes only the folders that it may.
set -uo pipefail
source=$1
export LC_ALL=C.UTF-8
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"

# From the bottom to the top. Vendors never include one another.
layers=(src/formulas src/interfaces src/platform wmi-client src/system include src/record src/vendors
    src/vendors/intel src/vendors/nvidia src/vendors/amd src/run src/abi)

# The inventory's own layers. It shares only the layers of the library that are independent of the record.
inventory_layers=(inventory/model inventory/sources inventory/matching inventory/json inventory/snapshot inventory/interface)

# The other folders, with the folders that each may include besides itself.
declare -A around=(
    [simulation]="src/formulas src/platform simulation/include"
    [fallback]=""
    [tools]="${layers[*]} simulation/include tools/recorder"
    [tools/recorder]="${layers[*]} inventory/model inventory/sources inventory/snapshot"
    [tools/nvml]="src/interfaces ${inventory_layers[*]}"
    [bindings]="src/formulas src/platform include tools"
    [bench]="${layers[*]} simulation/include tools"
    [tests]="${layers[*]} ${inventory_layers[*]} simulation simulation/include tools tools/recorder"
    [fuzz]="src/formulas src/interfaces inventory/matching src/vendors/intel src/vendors/nvidia src/vendors/amd"
)

# may_include LAYER: the layers below it.
may_include() {
    local layer
    for layer in "${layers[@]}"; do
        [ "$layer" != "$1" ] || return 0
        [[ $1 == src/vendors/* && $layer == src/vendors/* ]] || printf '%s ' "$layer"
    done
}
for layer in "${layers[@]}"; do around[$layer]=$(may_include "$layer"); done
below="src/formulas src/interfaces src/platform include"
for layer in "${inventory_layers[@]}"; do
    around[$layer]=$below
    below+=" $layer"
done
around[simulation/include]=""

# folder_of FILE: the innermost of these folders that contains the file.
folder_of() {
    local folder=${1%/*}
    while [[ $folder == */* && ! -v around[$folder] ]]; do folder=${folder%/*}; done
    echo "$folder"
}

# file_of FILE INCLUDE: the file that an include in quotes refers to; empty for an external header.
file_of() {
    local root
    for root in "${1%/*}" "${1%%/*}" src include wmi-client/include wmi-client/src simulation/include tools simulation inventory bench tests; do
        [ -f "$root/$2" ] && echo "$root/$2" && return
    done
}

# wrong_includes: the includes of the working directory's files that violate the rules.
wrong_includes() {
    local file line include target from to
    while IFS=: read -r file line include; do
        target=$(file_of "$file" "$include")
        [ -n "$target" ] || continue
        from=$(folder_of "$file")
        to=$(folder_of "$target")
        [[ $from == "$to" || " ${around[$from]} " == *" $to "* ]] ||
            echo "$file:$line: includes \"$include\" of $to, but $from may include only: ${around[$from]:-itself}"
    done < <(grep -rnE '^#include "' --include='*.h' --include='*.cpp' --include='*.c' "$@" |
        sed -E 's/^([^:]*:[^:]*):#include "([^"]*)".*/\1:\2/')
}

includes_are_right() {
    local wrong
    wrong=$(wrong_includes "$@")
    [ -z "$wrong" ] || { echo "$wrong"; return 1; }
}

# --- the check itself, on files created for it -----------------------------------------------------------------------------------

mkdir -p "$work"/src/{formulas,run,vendors/{intel,amd}} "$work"/{tools,simulation}
cd "$work" || exit 1
touch src/formulas/Sum.h src/run/Run.h src/vendors/amd/Amd.h tools/Tool.h
# finds FILE INCLUDE: a file with this include is reported.
finds() {
    echo "#include \"$2\"" >"$1"
    [[ $(wrong_includes src tools simulation) == "$1:1: includes \"$2\" "* ]] || { wrong_includes src tools simulation; return 1; }
    rm "$1"
}
echo '#include "formulas/Sum.h"' >src/run/Run.cpp
check "an include of a lower layer is accepted" includes_are_right src
check "an include of a higher layer is reported" finds src/formulas/Sum.cpp run/Run.h
check "an include of another vendor is reported" finds src/vendors/intel/Intel.cpp vendors/amd/Amd.h
check "an include of the tools in the simulation is reported" finds simulation/Simulation.cpp Tool.h

# --- the project --------------------------------------------------------------------------------------------------------------

cd "$source" || exit 1
check "no folder includes a higher layer" includes_are_right src include inventory wmi-client simulation fallback tools bindings bench tests fuzz

echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
