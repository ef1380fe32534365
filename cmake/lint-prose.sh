#!/usr/bin/env bash
# lint-prose.sh PROJECT: checks the spelling (codespell) and the words (prose-words.txt) of all texts. Any finding fails.
set -euo pipefail
cd "$1"

# All tracked texts, as git pathspecs, except the lists of this check.
checked=(. ':!cmake/prose-words.txt' ':!cmake/prose-exempt.txt')
mapfile -d '' -t files < <(git ls-files -z -- "${checked[@]}")

failed=0
codespell --ignore-words cmake/prose-spelling.txt -- "${files[@]}" || failed=1
perl cmake/prose-words.pl cmake/prose-words.txt cmake/prose-exempt.txt "${files[@]}" || failed=1
exit $failed
