#!/usr/bin/env bash
# copy-licences.sh SOURCE BUILD PACKAGE FOLDER: copies the licence texts of a package's components, and the project's own statement
# as project.txt. PACKAGE is one of the words in licenses/components.txt.
set -euo pipefail
source=$1
build=$2
package=$3
folder=$4

# text_file TEXT: the file that an entry of the list refers to.
text_file() {
    local file
    for file in "$build/deps/npm/node_modules/$1" "/usr/share/doc/$1/copyright" "$build/deps/plog/usr/share/doc/$1/copyright"; do
        [ -f "$file" ] && echo "$file" && return
    done
    echo "$1 of licenses/components.txt is not there" >&2
    return 1
}

mkdir -p "$folder"
sed 1d "$source/licenses/project.txt" >"$folder/project.txt"
while read -r component _ packages text; do
    [[ ,$packages, == *,$package,* ]] || continue
    file=$(text_file "$text")
    cp "$file" "$folder/$component.txt"
done < <(sed '/^#/d' "$source/licenses/components.txt")
