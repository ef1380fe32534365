#!/usr/bin/env bash
# run.sh BUILD CORPUS OPTION…: runs every fuzz target of a native build with these fuzzer options, on the seeds of this folder
# and on the folder CORPUS, which also receives new inputs; with "", new inputs are discarded. Failing inputs go to
# BUILD/failing.
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
