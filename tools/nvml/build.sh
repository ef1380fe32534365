#!/usr/bin/env bash
# build.sh SOURCE PROGRAM: builds the comparison with a real NVML for the computer that builds it.
set -euo pipefail
source=$1
program=$2
mkdir -p "$(dirname "$program")"
exec g++ -std=c++20 -O1 -Wall -Wextra -I"$source/src" -I"$source/inventory" -o "$program" "$source/tools/nvml/Nvml.cpp" \
    "$source"/inventory/sources/{Nvml,DriverReading}.cpp "$source/inventory/model/Properties.cpp" -ldl
