#!/usr/bin/env bash
# make-late-binding.sh DEFINITION OUTPUT: writes, as assembler, a pointer for each function that a DLL exports under a C or
# GCC name.
#
# A call of an imported function uses the pointer `__imp_NAME`. Here these pointers are ordinary data, which the program fills
# after it has loaded the DLL. A delay-load table would do the same, but newer linkers put it into the read-only data, where
# mingw's helper cannot write.
set -euo pipefail

names=$(sed -n '0,/^EXPORTS/d; s/^ *\([A-Za-z_][A-Za-z0-9_]*\).*/\1/p' "$1")
cat >"$2" <<END
    .section .rdata,"dr"
    .globl lateNames
lateNames:
$(awk '{ print "    .asciz \"" $0 "\"" }' <<<"$names")
    .byte 0

    .data
    .balign 8
    .globl lateFunctions
lateFunctions:
$(awk '{ print "    .globl __imp_" $0 "\n__imp_" $0 ":\n    .quad 0" }' <<<"$names")
END
