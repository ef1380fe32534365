#!/usr/bin/env bash
# run.sh BUILD CORPUS OPTION…: runs every fuzz target of a native build with these options of the fuzzer, on the seeds here and
# on the folder CORPUS, where new inputs are kept; "" keeps none. Inputs that fail go to BUILD/failing.
set -euo pipefail

build=$1
kept=$2
shift 2
forgotten=$(mktemp -d)
trap 'rm -rf "$forgotten"' EXIT
seeds=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/seeds
mkdir -p "$build/failing"
for folder in "$seeds"/*/; do
    target=$(basename "$folder")
    corpus=${kept:-$forgotten}/$target
    mkdir -p "$corpus"
    echo "== $target"
    if ! "$build/fuzz-$target" -max_len=512 -artifact_prefix="$build/failing/$target-" "$@" "$corpus" "$folder" \
        >"$build/fuzz-$target.log" 2>&1; then
        cat "$build/fuzz-$target.log"
        exit 1
    fi
    tail -n 1 "$build/fuzz-$target.log"
done
