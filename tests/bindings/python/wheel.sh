#!/usr/bin/env bash
# The Python wheel: its contents, metadata and types, and its module with a library of the same C interface that is compiled for this
# system. wheel.sh SOURCE BUILD
set -uo pipefail
source=$1
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"
tests=$source/tests/bindings/python
module=orvel_graphic_cards_inventory
library=orvel-graphic-cards-inventory.dll
python=/usr/bin/python3 # Debian's, which has Debian's modules
export PYTHONDONTWRITEBYTECODE=1 PIP_DISABLE_PIP_VERSION_CHECK=1

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
wheel=$("$source/cmake/make-python-package.sh" "$source" "$build" "$work/dist") || exit 1

# --- contents and metadata ----------------------------------------------------------------------------------------------------

# install_into FOLDER: pip checks the wheel's name, tag and checksums.
install_into() {
    $python -m pip install --quiet --no-index --no-deps --no-compile --platform win_amd64 --only-binary :all: --target "$1" "$wheel"
}
app=$work/app
check "pip installs the wheel for 64-bit Windows" install_into "$app"
cannot_install() { if $python -m pip install --quiet --no-index --no-deps --target "$work/here" "$wheel"; then return 1; fi; }
check "pip does not install it on another system" cannot_install

information=$app/${module}-$version.dist-info
says() { grep -qxF -- "$2" "$information/$1" || { cat "$information/$1"; return 1; }; }
module_files_are() { diff <(cd "$app/$module" && find . -type f | sort) <(printf './%s\n' "$@" | sort); }
same_library() { cmp "$app/$module/$library" <(x86_64-w64-mingw32-strip -o "$work/stripped" "$build/bin/$library" && cat "$work/stripped"); }
export SOURCE_DATE_EPOCH=946684800 # of the package's copy
# Newer versions of setuptools put them into a folder.
licences_are() { diff <(find "$information" -name '*.txt' ! -name top_level.txt -printf '%f\n' | sort) <(printf '%s.txt\n' "$@" | sort); }
mapfile -t licences < <(awk '!/^#/ && $3 ~ /wheel/ { print $1 }' "$source/licenses/components.txt")
has_statement() { tr '\n' ' ' <"$information/METADATA" | grep -qF "$(sed 1d "$source/licenses/project.txt")"; }

check "the module contains nothing but what it needs" module_files_are __init__.py card.py library.py py.typed $library
check "the DLL is the build's" same_library
check "the tag is that of any Python 3 for 64-bit Windows" says WHEEL "Tag: py3-none-win_amd64"
check "it is installed as what is for one platform" says WHEEL "Root-Is-Purelib: false"
check "the version is the project's" says METADATA "Version: $version"
check "the licence is the project's" says METADATA "License: $(sed -n 1p "$source/licenses/project.txt")"
check "the description has the sentence on the licence" has_statement
check "the licence texts are those of what the DLL contains" licences_are project "${licences[@]}"
check "building it twice gives the same bytes" cmp "$wheel" \
    "$("$source/cmake/make-python-package.sh" "$source" "$build" "$work/again")"

# --- types --------------------------------------------------------------------------------------------------------------------

# typed FILE: mypy also reports each "type: ignore" without a mistake.
typed() { (cd "$app" && $python -m mypy --strict --cache-dir "$work/mypy" "$tests/$1"); }
check "a program has the right types" typed program.py
check "the types notice mistakes" typed wrong_types.py
check "the package itself has the right types" bash -c "cd '$app' && $python -m mypy --strict --cache-dir '$work/mypy' -p $module"

# --- the module ---------------------------------------------------------------------------------------------------------------

# with_library FOLDER OPTIONS…: a copy of the installation whose library is compiled for this system with these options.
with_library() {
    cp -r "$app" "$1"
    gcc -shared -fPIC -Wall -Wextra -Werror -I "$source/include" "${@:2}" "$source/tests/bindings/FakeInventory.c" -o "$1/$module/$library"
}
# runs FOLDER CLASS: a class of tests with the package of a folder.
runs() { PYTHONPATH=$1 $python "$tests/module_tests.py" "$2"; }

check "a library of the same interface is compiled" with_library "$work/working"
check "the module asks the library, and reports its failures" runs "$work/working" Working
check "a library of another major version is compiled" with_library "$work/newer" -DFAKE_VERSION=20000
check "a library of another major version is refused" runs "$work/newer" Newer
cp -r "$app" "$work/missing"
rm "$work/missing/$module/$library"
check "a missing library is reported" runs "$work/missing" Missing
check "on another system the import works, and every function says what it needs" runs "$app" Elsewhere

echo "$((checks - failures)) of $checks checks of the wheel passed"
[ $failures -eq 0 ]
