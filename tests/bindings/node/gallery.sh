#!/usr/bin/env bash
# The npm package on every simulated machine: gallery.sh SOURCE BUILD WINE
set -uo pipefail
source=$1
build=$2
wine=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"
source "$source/tests/bindings/node/node.sh"

package=$("$source/cmake/make-node-package.sh" "$source" "$build" "$work/dist") || exit 1
install_into "$work/app" "$package" || exit 1
with_koffi "$work/app"
cp "$source"/tests/bindings/node/{gallery.test,worker}.mjs "$work/app/"

# document MACHINE TIMEOUT FILE: what the tool prints.
document() {
    (cd "$build/bin" && "$wine" orvel-graphic-cards.exe inventory --json --machine "$(windows_path "$1")" --timeout "$2" </dev/null) >"$3"
}
mkdir "$work/documents"
count=0
shopt -s nullglob
for machine in "$source"/machines/*.json "$source"/tests/inventory/machines/*.json; do
    document=$work/documents/$((++count)).json
    timeout=60000
    if jq -e 'has("hang")' "$machine" >"$work/hangs"; then timeout=2000; fi
    check "the tool prints the inventory of ${machine#"$source/"}" document "$machine" $timeout "$document"
    jq -n --arg file "$(windows_path "$machine")" --arg document "$(windows_path "$document")" --argjson timeout $timeout \
        '{$file, $document, $timeout}' >>"$work/machines"
done
jq -s 'sort_by(-.timeout)' "$work/machines" >"$work/machines.json" # what hangs goes on hanging, so it comes last
ORVEL_MACHINES=$(windows_path "$work/machines.json")
export ORVEL_MACHINES
for release in 18 22; do
    check "Node.js $release has the tool's inventory on every machine" node $release "$work/app" gallery.test.mjs
done

echo "$((checks - failures)) of $checks checks of the machines passed"
[ $failures -eq 0 ]
