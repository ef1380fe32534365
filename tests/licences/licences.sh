#!/usr/bin/env bash
# The licences: the list of what others have written against what is in each package, the texts, and the sentence on the project's own.
# licences.sh SOURCE BUILD
set -uo pipefail
source=$1
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"
list=$source/licenses/components.txt

# The programs and DLLs that each script puts into its package.
binaries() { grep -oE '\$build/[^"]+\.(dll|exe|node)' "$source/cmake/$1" | grep -v '\$dll' | sed 's|^\$build/||' | sort -u; }
simulated() { sed -n 's/^for dll in \(.*\); do$/\1/p' "$source/cmake/make-package.sh" | tr ' ' '\n' | sed 's|.*|bin/simulation/&.dll|'; }
joined() { paste -sd, -; }
zip=$({ binaries make-package.sh; simulated; } | joined)
npm=$(binaries make-node-package.sh | joined)
wheel=$(binaries make-python-package.sh | joined)

agrees() { "$source/tests/licences/linked.py" "$source" "$build" "$@"; }
check "the zip contains 13 binaries" [ "$(tr -cd , <<<"$zip" | wc -c)" -eq 12 ]
check "the list has what is linked into the zip's binaries" agrees "$list" "zip=$zip"
check "the list has what is linked into the npm package's" agrees "$list" "npm=$npm"
check "the list has what is linked into the wheel's" agrees "$list" "wheel=$wheel"

# notices MESSAGE SED: an edit of the list is reported.
notices() {
    sed -E "$2" "$list" >"$work/list"
    if agrees "$work/list" "wheel=$wheel" >"$work/reported"; then echo "not noticed" && return 1; fi
    grep -E -- "$1" "$work/reported" || { cat "$work/reported" && return 1; }
}
check "a component without a row is noticed" notices 'contains .*/nlohmann/.*, of which .* knows nothing' '/^nlohmann-json/d'
check "a runtime without a row is noticed" notices 'contains .*/libstdc\+\+\.a, of which .* knows nothing' '/^gcc-runtime/d'
check "a component that a row keeps from a package is noticed" notices 'contains nlohmann-json, and .* says that it does not' \
    '/^nlohmann-json/s/,wheel//'
check "a component that is not there is noticed" notices 'says that it contains cli11, and it does not' '/^cli11/s/zip/zip,wheel/'

for package in zip npm wheel; do
    check "every licence text of the $package is there" "$source/cmake/copy-licences.sh" "$source" "$build" $package "$work/$package"
    check "no licence text of the $package is empty" [ -z "$(find "$work/$package" -size -40c)" ]
done
says() { tr '\n' ' ' <"$source/$1" | grep -qF "$(sed 1d "$source/licenses/project.txt")"; }
for readme in README.md cmake/package/README.md bindings/node/README.md bindings/python/README.md; do
    check "$readme has the sentence on the licence" says $readme
done
missing_text() {
    mkdir -p "$work/other/licenses"
    cp "$source/licenses/project.txt" "$work/other/licenses/"
    echo "unknown / zip no-such-package" >"$work/other/licenses/components.txt"
    if "$source/cmake/copy-licences.sh" "$work/other" "$build" zip "$work/none" 2>"$work/missing"; then return 1; fi
    grep -F "no-such-package of licenses/components.txt is not there" "$work/missing"
}
check "a missing licence text is an error" missing_text

echo "$((checks - failures)) of $checks checks of the licences passed"
[ $failures -eq 0 ]
