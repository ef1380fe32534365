# Shared by property.sh and vendor.sh: a copy of the tree, to which an example is added as the guide describes. The arguments are
# SOURCE BUILD WINE. The copy stays in BUILD/newcomer/NAME, so that the next run builds faster.
export LC_ALL=C.UTF-8
source=$1
build=$2
wine=$3
name=$(basename "$0" .sh)
copy=$build/newcomer/$name
original=$build/newcomer/$name-original
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"

# Copies the current tree and the fetched dependencies. Build results in the copy stay for the next run.
new_copy() {
    mkdir -p "$copy/build"
    find "$copy" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} +
    tar -C "$source" --exclude=./build --exclude=./dist -cf - . | tar -C "$copy" -xf -
    ln -sfn "$build/deps" "$copy/build/deps"
    ln -sfn "${WINEPREFIX:-$build/wine}" "$copy/build/wine"
    rm -rf "$original"
    mkdir "$original"
}

# keep FILE: saves the original of a file that is about to be edited.
edited=()
keep() {
    edited+=("$1")
    mkdir -p "$original/$(dirname "$1")"
    cp -p "$copy/$1" "$original/$1"
}

# insert FILE before|after|before-last PATTERN TEXT: lines beside the first line, or before the last one, that the regular
# expression matches.
insert() {
    keep "$1"
    python3 - "$copy/$1" "${@:2}" <<'END' || exit 1
import re, sys
file, where, pattern, text = sys.argv[1:]
lines = open(file, encoding="utf-8").read().splitlines(keepends=True)
places = [i for i, line in enumerate(lines) if re.search(pattern, line)] or sys.exit(f"no line matches {pattern} in {file}")
lines.insert(places[-1 if where == "before-last" else 0] + (where == "after"), text + "\n")
open(file, "w", encoding="utf-8").writelines(lines)
END
}

# append FILE TEXT
append() {
    keep "$1"
    printf '%s\n' "$2" >>"$copy/$1"
}

# build_targets TARGET…
build_targets() {
    [ -f "$copy/build/build.ninja" ] ||
        cmake -S "$copy" -B "$copy/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$copy/cmake/Toolchain-mingw64.cmake" || return 1
    ninja -C "$copy/build" --quiet "$@"
}

# run_tests NAME ARGS…: the tests of orvel-NAME-tests.dll.
run_tests() { (cd "$copy/build/bin" && "$wine" orvel-test-runner.exe "orvel-$1-tests.dll" "${@:2}" </dev/null); }

# says_so FILE COMMAND…: without the edit of the file the command fails, and its output names the file.
says_so() {
    local file=$1
    cp "$copy/$file" "$work/edited"
    cp "$original/$file" "$copy/$file"
    if "${@:2}" >"$work/said" 2>&1; then
        echo "nothing fails without the edit of $file"
        cp "$work/edited" "$copy/$file"
        return 1
    fi
    cp "$work/edited" "$copy/$file"
    grep -F -- "$file" "$work/said" || { tail -20 "$work/said"; return 1; }
}

finish() {
    echo "$name: ${#edited[@]} edits, $((checks - failures)) passed, $failures failed"
    exit $((failures > 0))
}
