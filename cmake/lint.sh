#!/usr/bin/env bash
# lint.sh PROJECT BUILD: runs the prose linter, clang-format on all sources, clang-tidy on all but the tests with the
# commands of the cross-build, and cppcheck on everything that is built. Any finding fails.
set -euo pipefail

project=$1
lint=$2/lint
mkdir -p "$lint/cppcheck"

"$project/cmake/lint-prose.sh" "$project"

(cd "$project" && git ls-files -z '*.cpp' '*.h' '*.c' | xargs -0 clang-format --dry-run --Werror --ferror-limit=1) ||
    { echo "Run ./dev format." >&2 && exit 1; }

# Translates GCC's commands for clang: adds the target and the C++ library's folders, and removes unknown options.
library=$(x86_64-w64-mingw32-g++-posix -xc++ -E -v - </dev/null 2>&1 | sed -n 's/^ \(.*include\/c++.*\)$/-isystem \1/p' | tr '\n' ' ')
jq --arg library "$library" --arg project "$project/" '[.[]
    | select(.file | ltrimstr($project) | test("^(bench|cmake|inventory|src|simulation|tools|wmi-client/src|(tests/)?fallback)/[^.]*[.]cpp$"))
    | .command |= (sub("^[^ ]+"; "clang++ --target=x86_64-w64-mingw32 " + $library) | gsub("-fno-canonical-system-headers|-Wshadow=local|-Werror|-Winvalid-pch|-include [^ ]*cmake_pch[^ ]*"; ""))]' \
    "$2/compile_commands.json" >"$lint/compile_commands.json"
# With its own limit of 225,000 states of a function, the analyzer takes half of the time and finds no more.
analyzer=(--extra-arg=-Xclang --extra-arg=-analyzer-config --extra-arg=-Xclang --extra-arg=max-nodes=50000)
jq -r '[.[].file] | unique[]' "$lint/compile_commands.json" |
    xargs -P "$(nproc)" -n 4 clang-tidy -p "$lint" --quiet --config-file="$project/.clang-tidy" "${analyzer[@]}" \
        2> >(sed '/^[0-9]* warnings\? generated[.]$/d' >&2)

cd "$project"
cppcheck --quiet --error-exitcode=1 -j "$(nproc)" --language=c++ --std=c++20 --platform=win64 --inline-suppr \
    --enable=warning,performance,portability --library=windows --cppcheck-build-dir="$lint/cppcheck" \
    -D_WIN32 -D_WIN64 -D__MINGW32__ -I include -I src -I inventory -I wmi-client/include -I simulation -I simulation/include -I tools -I fuzz -I tests \
    --suppressions-list=cmake/cppcheck-suppressions.txt bindings cmake inventory src wmi-client tools fallback simulation bench fuzz tests
