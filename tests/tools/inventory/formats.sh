#!/usr/bin/env bash
# Reads the formats of the inventory with promtool, Debian's Python with its parsers, and jq. formats.sh WINE BUILD SOURCE
set -uo pipefail
wine=$1
build=$2
source=$3
export LC_ALL=C.UTF-8
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"
promtool=$build/deps/prometheus/usr/bin/promtool
mkdir "$work/documents"

# Documents written by hand, and the one of this platform.
for document in "$source"/tests/tools/inventory/documents/*.json; do
    for format in openmetrics ndjson csv; do
        (cd "$build/bin" && "$wine" orvel-format-document.exe $format <"$document") \
            >"$work/documents/$(basename "$document" .json).$format"
    done
done
for format in openmetrics ndjson csv; do
    check "the command writes $format" "$wine" "$build/bin/orvel-graphic-cards.exe" inventory --format $format \
        --output "Z:$work/documents/platform.$format"
done

for metrics in "$work"/documents/*.openmetrics; do
    check "promtool accepts $(basename "$metrics")" "$promtool" check metrics <"$metrics"
done
cp "$work/documents/hostile.openmetrics" "$work/broken"
echo 'orvel_graphics_cards{ 1' >>"$work/broken"
refused() { ! "$promtool" check metrics <"$work/broken"; }
check "promtool refuses a broken line" refused
check "Python reads every format back" /usr/bin/python3 "$source/tests/tools/inventory/readers.py" "$work/documents"
check "a Prometheus scrapes the metrics, in both of their formats" /usr/bin/python3 "$source/tests/tools/inventory/scrape.py" \
    "$build/deps/prometheus/usr/bin/prometheus" "$work/documents/hostile.openmetrics" 2
check "jq reads NDJSON" jq -es 'length == 2 and .[0].vendor_id == 4318' "$work/documents/hostile.ndjson"

echo "$((checks - failures)) of $checks checks of the formats passed"
[ $failures -eq 0 ]
