#!/usr/bin/env bash
# prose.sh SOURCE: tests the word search of the prose linter.
set -uo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
source "$source/tests/support/checks.sh"

printf '# a comment\n\n\\bcolou?rful\\b\tplain\nby mistake\tin error\n' >words.txt
printf '# a comment\nColorful message.\n' >exempt.txt
search() { perl "$source/cmake/prose-words.pl" "${words:-words.txt}" exempt.txt "$@"; }
# finds TEXT FINDINGS: the search fails and prints exactly these lines.
finds() {
    printf '%b' "$1" >text.md
    if search text.md >found.txt; then
        echo "no failure"
        return 1
    fi
    same found.txt <(printf '%b' "$2")
}
passes() {
    printf '%b' "$1" >text.md
    search text.md
}
refuses() { ! search "${2:-text.md}" 2>error.txt && grep -F -- "$1" error.txt; }

check "a word is reported with its file, line and replacement" finds 'plain\na colorful text\n' 'text.md:2: colorful -> plain\n'
check "case does not matter" finds 'COLOURFUL\n' 'text.md:1: COLOURFUL -> plain\n'
check "every occurrence is reported" finds 'colorful by mistake\ncolorful\n' \
    'text.md:1: colorful -> plain\ntext.md:1: by mistake -> in error\ntext.md:2: colorful -> plain\n'
check "a phrase is found across a line break" finds 'done by\nmistake\n' 'text.md:1: by mistake -> in error\n'
check "a phrase is found across the lines of a comment" finds '    /// done by\n    /// mistake\n' \
    'text.md:1: by mistake -> in error\n'
check "a part of a word is not reported" passes 'discolorfully\n'
check "an exempt text is not reported" passes 'The log has "Colorful message." here.\n'
check "other text on the line of an exempt text is reported" finds '"Colorful message." is colorful\n' \
    'text.md:1: colorful -> plain\n'
check "an exempt text applies in its exact form only" finds 'colorful message.\n' 'text.md:1: colorful -> plain\n'
check "a clean text passes" passes 'plain\n'
check "a missing file is an error" refuses "absent.txt" absent.txt
words=$work/no-tab.txt
echo 'colorful plain' >no-tab.txt
check "a rule without a replacement is an error" refuses "no tab in: colorful plain"
words=$source/cmake/prose-words.txt
check "the project's word list is valid" passes 'plain\n'
check "the project's word list allows \"stand-in\" and \"there is none\"" passes 'A stand-in where there is none.\n'

echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
