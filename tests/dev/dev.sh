#!/usr/bin/env bash
# dev.sh SOURCE: tests how ./dev exits when it cannot continue.
set -uo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"

# A project that consists of ./dev only, and a PATH with the tools that it needs and stand-ins for those that change the system.
mkdir -p "$work/project" "$work/bin"
cp "$source/dev" "$work/project/"
for tool in bash sh dirname cat grep cut awk mkdir rm find basename realpath flock printf cp cmp; do
    ln -s "$(command -v $tool)" "$work/bin/$tool"
done
stand_in() { printf '#!/bin/sh\n%s\n' "$2" >"$work/bin/$1" && chmod +x "$work/bin/$1"; }
stand_in cmake "echo cmake >>'$work/called'; exit 1"
stand_in ninja "echo ninja >>'$work/called'; exit 1"

dev() {
    rm -rf "$work/called" "$work/project/build"
    status=0
    PATH=$work/bin ORVEL_FIXED_ADDRESSES=1 "$work/project/dev" "$@" >"$work/out" 2>"$work/err" || status=$?
}
ends_with() { [ "$status" -eq "$1" ] || { echo "status $status" && cat "$work/err"; }; }
says() { grep -qF -- "$1" "$work/err" || { cat "$work/err"; return 1; }; }
says_once() { [ "$(grep -cF -- "$1" "$work/err")" -eq 1 ] || { cat "$work/err"; return 1; }; }
builds_nothing() { [ ! -e "$work/called" ] || { cat "$work/called"; return 1; }; }

stand_in dpkg-query 'for package; do case $package in ninja-build|jq|-*|*Status*) ;; *) echo installed ;; esac; done'
stand_in id 'echo 1000'
dev build
check "without root and sudo ./dev ends with status 1" ends_with 1
check "without root and sudo ./dev names the missing packages, once" says_once "installing ninja-build jq"
check "without root and sudo ./dev reports that it needs root" says "needs root, and there is no sudo"
check "without root and sudo ./dev builds nothing" builds_nothing

stand_in sudo 'exit 100'
dev build
check "when the packages cannot be installed ./dev ends with status 1" ends_with 1
check "when the packages cannot be installed ./dev names them" says "these packages cannot be installed: ninja-build jq"
check "when the packages cannot be installed ./dev builds nothing" builds_nothing

if [ ! -d /usr/include/plog ]; then
    stand_in dpkg-query 'for package; do case $package in -*|*Status*) ;; *) echo installed ;; esac; done'
    stand_in apt-get 'exit 100'
    dev build
    check "when plog cannot be fetched ./dev ends with status 1" ends_with 1
    check "when plog cannot be fetched ./dev names its package" says "the package libplog-dev is not installed and cannot be fetched"
    check "when plog cannot be fetched ./dev builds nothing" builds_nothing
fi

mkdir -p "$work/project/cmake"
cp -r "$source/cmake/npm" "$work/project/cmake/"
stand_in npm 'echo "npm $*" >>"$NPM_CALLS"; exit 1'
export NPM_CALLS=$work/npm-calls
dev bindings
check "when npm packages cannot be fetched ./dev ends with status 1" ends_with 1
check "when npm packages cannot be fetched ./dev names their list" says \
    "the packages of cmake/npm/package-lock.json cannot be fetched from the npm registry"
check "when npm packages cannot be fetched ./dev builds nothing" builds_nothing
check "npm runs no script of a package" grep -qE '^npm ci .*--ignore-scripts' "$NPM_CALLS"

dev test --release sid
check "an unknown release ends ./dev with status 1" ends_with 1
check "the error for an unknown release names it and the known releases" says '--release takes bookworm or trixie, not "sid"'
dev nonsense
check "an unknown command ends ./dev with status 2" ends_with 2

echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
