#!/usr/bin/env bash
# docs.sh SOURCE BUILD WINE: checks the links, commands, paths, tables and programs in the documents.
set -uo pipefail
source=$1
build=$2
wine=$3
export LC_ALL=C.UTF-8
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$source" || exit 1
source "$source/tests/support/checks.sh"
holds() { grep -qF -- "$2" "$1" || { echo "no \"$2\" in $1"; return 1; }; }

documents=(README.md SECURITY.md CHANGELOG.md CONTRIBUTING.md docs/*.md machines/README.md simulation/README.md)

# prose FILE: a document without its fenced blocks.
prose() { awk '/^ *```/ { fenced = !fenced; next } !fenced' "$1"; }

# blocks FILE LANGUAGE: writes the fenced blocks of exactly this language, without their indentation, to files and names them.
blocks() {
    awk -v language="$2" -v stem="$work/$(echo "$1-$2" | tr -c 'a-zA-Z0-9\n' _)" '
        /^ *```/ {
            if (fenced) { fenced = wanted = 0; next }
            fenced = 1
            match($0, /`/)
            indentation = RSTART - 1
            wanted = substr($0, RSTART + 3) == language
            if (wanted) { name = stem "-" ++count; printf "" >name; print name }
            next
        }
        wanted { print substr($0, indentation + 1) >name }' "$1"
}

# spans FILE: the texts in backticks of a document's prose, one a line.
spans() { prose "$1" | { grep -oE '`[^`]+`' || true; } | sed 's/^`//; s/`$//'; }

# anchors FILE: the link targets of a document's headings.
anchors() {
    prose "$1" | sed -n 's/^##* //p' | tr '[:upper:]' '[:lower:]' | sed "s/[^a-z0-9 _-]//g; s/ /-/g"
}

# --- links --------------------------------------------------------------------------------------------------------------------

resolves() {
    local file=${2%%#*} anchor=
    [[ $2 == *#* ]] && anchor=${2#*#}
    if [ -n "$file" ]; then file=$(dirname "$1")/$file; else file=$1; fi
    [ -e "$file" ] || { echo "no $file"; return 1; }
    [ -z "$anchor" ] || anchors "$file" | grep -qxF -- "$anchor" || { echo "no #$anchor in $file"; return 1; }
}
for document in "${documents[@]}"; do
    while IFS= read -r link; do
        [[ $link == http* || $link == mailto:* ]] || check "$document: link $link" resolves "$document" "$link"
    done < <(prose "$document" | grep -oE '\]\([^)]+\)' | sed 's/^](//; s/)$//')
done
for document in docs/*.md; do
    [ "$document" = docs/README.md ] || check "README.md or another document links to $document" \
        grep -qE "\]\((docs/)?$(basename "$document")[)#]" README.md CONTRIBUTING.md docs/*.md
done

# --- commands and paths -------------------------------------------------------------------------------------------------------

./dev help >"$work/usage"
is_command() { grep -qE "^  $1( |$)" "$work/usage"; }
has_option() { grep -qE "\"$1[\",]" tools/Options.cpp; }
is_machine() { [[ $1 == *NAME* || $1 == *FILE* || $1 == my-* ]] || [ -f "$1" ] || [ -f "machines/$1.json" ]; }
for document in "${documents[@]}"; do
    mapfile -t scripts < <(blocks "$document" sh)
    { spans "$document"; cat "${scripts[@]}" /dev/null; } | grep -oE '\./dev [^#]*' | sort -u >"$work/commands"
    while IFS= read -r line; do
        read -ra words <<<"$line"
        check "$document: $line" is_command "${words[1]}"
        [ "${words[1]}" = host ] || continue
        for ((i = 2; i < ${#words[@]}; i++)); do
            case ${words[i]} in
            --machine)
                i=$((i + 1))
                check "$document: machine ${words[i]}" is_machine "${words[i]}"
                ;;
            --*) check "$document: option ${words[i]}" has_option "${words[i]}" ;;
            esac
        done
    done <"$work/commands"
done

folders=$(git ls-tree -d --name-only HEAD 2>/dev/null || find . -maxdepth 1 -type d -name '[a-z]*' ! -name build ! -name dist -printf '%f\n')
folders=$(printf '%s\ndocs\n' "$folders" | sed 's/\./\\./g' | sort -u | paste -sd'|')
exists() { compgen -G "$1" >/dev/null; }
for document in "${documents[@]}"; do
    while IFS= read -r path; do check "$document: path $path" exists "$path"; done < <(
        spans "$document" | grep -E "^(($folders)/[^ ]*|[A-Za-z.]+\.(md|json|txt))$" | grep -v 'NAME' | sort -u
    )
done

# --- messages and machines ----------------------------------------------------------------------------------------------------

sed -nE 's/^    \{RunFailure::[A-Za-z]+, "([^"]*)"\},$/\1/p' src/formulas/RunFailure.cpp >"$work/messages"
check "there are messages that end a run" test -s "$work/messages"
while IFS= read -r message; do check "docs/messages.md explains \"$message\"" holds docs/messages.md "$message"; done <"$work/messages"

check "docs/messages.md lists the doctor's checks in their order" same \
    <(sed -n '/^## What `--doctor`/,/^## Why/s/^| `\([^`]*\)` .*/\1/p' docs/messages.md) \
    <("$wine" "$build/bin/orvel-graphic-cards.exe" --machine workstation --doctor --json </dev/null 2>/dev/null | jq -r '.checks[].name')

check "docs/messages.md lists the doctor's words for vendors" same \
    <(sed -n '/^## Why a vendor/,$s/^| `\([^`]*\)` .*/\1/p' docs/messages.md | sort) \
    <(sed -n 's/^constexpr VendorState::Word [A-Za-z]* = {"\([^"]*\)".*/\1/p' tools/VendorStates.cpp | sort)

check "machines/README.md lists every machine and nothing else" same \
    <(sed -nE 's/^\| `([^`]*)` \|.*/\1/p' machines/README.md | sort) \
    <(find machines -maxdepth 1 -name '*.json' -printf '%f\n' | sed 's/\.json$//' | sort)

# --- programs -----------------------------------------------------------------------------------------------------------------

compile() {
    x86_64-w64-mingw32-g++-posix -std=c++17 -Wall -Wextra -Werror -fsyntax-only -Iinclude -Isimulation/include \
        -isystem "$build/deps/include" -x c++ "$1"
}
for block in $(blocks docs/hosting.md "cpp complete"); do
    check "docs/hosting.md: $(basename "$block") compiles" compile "$block"
    count=$((${count:-0} + 1))
done
check "docs/hosting.md has a complete program" test "${count:-0}" -gt 0

# Fragments of programs: their includes go to the top, the rest into a function with an enumeration as a variable.
for document in "${documents[@]}"; do
    for block in $(blocks "$document" cpp); do
        {
            printf '#include <cstdio>\n#include <windows.h>\n#include <objbase.h>\n'
            printf '#include "GraphicCardEnumeration.h"\n#include "GraphicCardInfo.h"\n#include "GraphicCardLog.h"\n'
            grep '^#include' "$block"
            printf 'using namespace orvel::shared::enumeration;\nvoid Host(GraphicCardEnumeration& cards);\n'
            printf 'void Host(GraphicCardEnumeration& cards)\n{\n(void)cards;\n{\n'
            grep -v '^#include' "$block"
            printf '}\n}\n'
        } >"$block.cpp"
        check "$document: $(basename "$block") compiles" compile "$block.cpp"
    done
    for block in $(blocks "$document" json); do check "$document: $(basename "$block") is JSON" jq -e . "$block"; done
done

# --- command-line tool --------------------------------------------------------------------------------------------------------

# Runs every command of the shell blocks that starts the command-line tool or copies a machine, in order, with the built program.
mkdir "$work/place"
ln -s "$source/machines" "$work/place/machines"
printf '#!/bin/sh\nshift\nexec "%s" "%s" "$@"\n' "$wine" "$build/bin/orvel-graphic-cards.exe" >"$work/place/dev"
chmod +x "$work/place/dev"
runs() {
    local status=0
    (cd "$work/place" && sh -c "$1") </dev/null || status=$?
    [ "$status" -eq 0 ] || [[ $1 == *--doctor* && $status -le 2 ]]
}
for document in "${documents[@]}"; do
    mapfile -t scripts < <(blocks "$document" sh)
    while IFS= read -r line; do check "$document: $line runs" runs "$line"; done < <(
        cat "${scripts[@]}" /dev/null | sed 's/ *#.*//' | grep -E '^(\./dev host|cp )'
    )
done

# A text block that starts with a command ("$ ./dev host ...") shows exactly what the command prints.
shown=0
for block in $(blocks README.md text); do
    line=$(sed -n '1s/^\$ //p' "$block")
    [ -n "$line" ] || continue
    check "README.md: the output of $line" same <(tail -n +2 "$block") \
        <(cd "$work/place" && sh -c "$line" </dev/null 2>/dev/null | tr -d '\r')
    shown=$((shown + 1))
done
check "README.md shows the program's output" test "$shown" -gt 0

echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
