#!/usr/bin/env bash
# lint-prose.sh PROJECT: checks the spelling (codespell) and the words (prose-words.txt) of all texts. Any finding fails.
set -euo pipefail
cd "$1"

# The tracked files that are checked, as git pathspecs. Add a folder when its texts are clean.
checked=(
    '*.md' ':!docs/adding-a-vendor.md' ':!docs/architecture.md' ':!docs/properties.md'
    dev .ci .github CMakeLists.txt CMakePresets.json
    cmake ':!cmake/prose-words.txt' ':!cmake/prose-exempt.txt'
    examples ports
    include ':!include/GraphicCardInfo.h'
)
mapfile -d '' -t files < <(git ls-files -z -- "${checked[@]}")

failed=0
codespell --ignore-words cmake/prose-spelling.txt -- "${files[@]}" || failed=1
perl cmake/prose-words.pl cmake/prose-words.txt cmake/prose-exempt.txt "${files[@]}" || failed=1
exit $failed
