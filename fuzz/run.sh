#!/usr/bin/env bash
# run.sh BUILD OPTION…: runs every fuzz target of a native build with these options of the fuzzer, on the seeds here.
# What it finds beyond them is kept in BUILD/corpus, inputs that fail in BUILD/failing.
set -euo pipefail

build=$1
shift
seeds=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/seeds
mkdir -p "$build/failing"
for folder in "$seeds"/*/; do
    target=$(basename "$folder")
    corpus=$build/corpus/$target
    mkdir -p "$corpus"
    echo "== $target"
    if ! "$build/fuzz-$target" -max_len=512 -artifact_prefix="$build/failing/$target-" "$@" "$corpus" "$folder" \
        >"$build/fuzz-$target.log" 2>&1; then
        cat "$build/fuzz-$target.log"
        exit 1
    fi
    tail -n 1 "$build/fuzz-$target.log"
done
