#!/usr/bin/env bash
# make-msvc-exports.sh INCLUDE: prints the module-definition file that exports every public operation under its MSVC name, in
# addition to its GCC name.
#
# clang names each operation of the public headers for both ABIs. Where the ABIs differ by more than the name (a constructor
# returns its object; an exception must be translated) the MSVC name refers to a separate entry point.
set -euo pipefail
include=$1

# One line per public operation of a class: its kind, its name, its mangled name.
operations() {
    printf '#include "%s.h"\n' "$1" | # not the header itself: as the main file it would warn about its pragma
        clang++ --target="$2" -U_MSC_VER -std=c++20 -I"$include" -x c++ -fsyntax-only -Xclang -ast-dump=json - |
        jq -r --arg class "$1" '.. | objects | select(.kind == "CXXRecordDecl" and .name == $class and .completeDefinition)
            | .inner[]? | select(.kind | test("^CXX(Method|Constructor|Destructor)Decl$"))
            | select(.isImplicit != true and .explicitlyDeleted != true) | [.kind, .name, .mangledName] | @tsv'
}

cat <<'END'
; Made from the public headers by ./dev generate.
EXPORTS
END
for class in GraphicCardEnumeration GraphicCardInfo; do
    paste <(operations "$class" x86_64-pc-windows-msvc) <(operations "$class" x86_64-w64-windows-gnu | cut -f3) |
        while IFS=$'\t' read -r kind name msvc gcc; do
            case $kind,$name in
            CXXConstructorDecl,*) gcc=${class}_MsvcConstructor ;;
            CXXDestructorDecl,*) msvc=${msvc/'??_D'/'??1'} && msvc=${msvc/%XXZ/@XZ} ;; # the complete-object destructor
            *,QueryGraphicCards) gcc=${class}_Msvc$name ;;
            *,__autoclassinit2) printf '    "%s" = ZeroFillObject\n' "$gcc" && gcc=ZeroFillObject ;; # one body, four names
            esac
            printf '    "%s" = %s\n' "$msvc" "$gcc"
        done
done
